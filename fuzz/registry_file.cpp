// The registry over a file of any bytes: what is set is there when the file is read again, nothing
// else changes, and a file that is none is set aside as it was. Input: a byte that tells how many
// bytes of changes come behind it, and then the file.

#include "platform/posix/registry_file.h"

#include "fuzz/fuzz.h"
#include "platform/registry.h"
#include "searchpath/registry_list.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <fuzzer/FuzzedDataProvider.h>
#include <iterator>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using vx::HKEY;
using vx::RegistryValue;

constexpr auto kRoot = vx::HKEY_CURRENT_USER;
constexpr const char *kKey = "K";
constexpr const char *kOther = "Other";

const fs::path &folder() {
    static const fs::path path = [] {
        std::string name = fs::temp_directory_path() / "vxfuzzXXXXXX";
        CHECK(::mkdtemp(name.data()) != nullptr);
        ::setenv("VX_REGISTRY_DIR", name.c_str(), 1);
        ::setenv("A", "/a;b", 1);  // for %A%
        return fs::path(name);
    }();
    return path;
}

std::string bytesOf(const char *name) {
    std::ifstream file(folder() / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool sameName(const std::string &one, const std::string &other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(), [](char a, char b) {
        const auto lowered = [](char c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; };
        return lowered(a) == lowered(b);
    });
}

// The values of a key beside those of the registry, where a removed one keeps its place.
class Values {
public:
    void read(const char *path) {
        HKEY key = nullptr;
        if (vx::RegOpenKeyExA(kRoot, path, vx::KEY_READ, &key) != 0) return;
        static std::vector<char> name(1 << 16), data(1 << 16);
        for (unsigned index = 0;; ++index) {
            auto nameSize = static_cast<unsigned>(name.size());
            auto dataSize = static_cast<unsigned>(data.size());
            RegistryValue value;
            const int result =
                vx::RegEnumValueA(key, index, name.data(), &nameSize, &value.type,
                                  reinterpret_cast<unsigned char *>(data.data()), &dataSize);
            if (result != 0) {
                CHECK(result == vx::ERROR_NO_MORE_ITEMS);
                break;
            }
            value.name.assign(name.data(), nameSize);
            value.data.assign(data.data(), dataSize);
            values_.push_back({value, false});
        }
        CHECK(vx::RegCloseKey(key) == 0);
    }
    void set(HKEY key, const RegistryValue &value) {
        const auto *bytes = reinterpret_cast<const unsigned char *>(value.data.data());
        const bool writable = std::none_of(value.name.begin(), value.name.end(), [](char c) {
            return static_cast<unsigned char>(c) < 0x20;
        });
        CHECK(vx::RegSetValueExA(key, value.name.c_str(), value.type, bytes,
                                 static_cast<unsigned>(value.data.size())) ==
              (writable ? 0 : vx::ERROR_INVALID_PARAMETER));
        if (!writable) return;
        bool placed = false;
        for (Entry &entry : values_) {
            if (!sameName(entry.value.name, value.name)) continue;
            const bool same = entry.value.type == value.type && entry.value.data == value.data;
            if (!placed && !same) entry.value = value;
            entry.removed = placed;
            placed = true;
        }
        if (!placed) values_.push_back({value, false});
    }
    void remove(HKEY key, const std::string &name) {
        bool found = false;
        for (Entry &entry : values_) {
            if (entry.removed || !sameName(entry.value.name, name)) continue;
            entry.removed = found = true;
        }
        CHECK(vx::RegDeleteValueA(key, name.c_str()) == (found ? 0 : vx::ERROR_FILE_NOT_FOUND));
    }
    // Is there nothing too long for the walk along a list.
    bool areShort() const {
        return std::all_of(values_.begin(), values_.end(), [](const Entry &entry) {
            return entry.removed || (entry.value.name.size() < 16 && entry.value.data.size() < 261);
        });
    }
    std::vector<std::string> told() const {
        std::vector<std::string> all;
        for (const Entry &entry : values_) {
            if (entry.removed) continue;
            all.push_back(entry.value.name + '=' + std::to_string(entry.value.type) + ':' +
                          entry.value.data);
        }
        return all;
    }

private:
    struct Entry {
        RegistryValue value;
        bool removed;
    };
    std::vector<Entry> values_;
};

std::vector<std::string> valuesOf(const char *path) {
    Values values;
    values.read(path);
    return values.told();
}

void change(HKEY key, Values &values, FuzzedDataProvider &changes) {
    static const char *const kNames[] = {"a", "A", "", "b\"\\", "0", "hex"};
    static constexpr unsigned kTypes[] = {1, 1, 2, 3, 4, 7, 0, 0xFFFFFFFF};
    while (changes.remaining_bytes() > 0) {
        std::string name = changes.PickValueInArray(kNames);
        if (changes.ConsumeBool()) name += changes.ConsumeRandomLengthString(8);
        name.erase(std::min(name.find('\0'), name.size()));
        if (changes.ConsumeIntegralInRange(0, 3) == 0) {
            values.remove(key, name);
            continue;
        }
        RegistryValue value{name, changes.PickValueInArray(kTypes),
                            changes.ConsumeRandomLengthString(60)};
        if (value.type == vx::REG_SZ && changes.ConsumeBool()) value.data += '\0';
        values.set(key, value);
    }
}

// The texts of a list are written and come back, repeated ones once, where all of them can be read:
// no more than 128 of 259 bytes, without references to variables.
void writeAndReadList(const char *text) {
    VxSearchPath *list = vxSearchPathCreate(text);
    std::vector<std::string> expected;
    bool fits = list->count <= 128;
    for (unsigned i = 0; i < list->count; ++i) {
        const std::string entry = vxSearchPathGet(list, i);
        fits = fits && entry.size() < 260 && entry.find('%') == std::string::npos;
        if (std::find(expected.begin(), expected.end(), entry) == expected.end()) {
            expected.push_back(entry);
        }
    }
    std::string joined;
    for (const std::string &entry : expected)
        joined += entry + ";";
    vxRegistryWriteList(kRoot, kKey, list);
    bool failed = false;
    char *read = vxRegistryReadList(kRoot, kKey, ';', &failed);
    CHECK(!failed);
    CHECK(!fits || (read == nullptr ? expected.empty() : read + std::string(";") == joined));
    std::free(read);
    vxSearchPathFree(list);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0) return 0;
    const std::size_t changing = std::min<std::size_t>(data[0], size - 1);
    FuzzedDataProvider changes(data + 1, changing);
    const std::string file(reinterpret_cast<const char *>(data) + 1 + changing,
                           size - 1 - changing);
    for (const auto &entry : fs::directory_iterator(folder()))
        fs::remove(entry);
    std::ofstream(folder() / "user.reg", std::ios::binary) << file;

    vx::RegistryFile parsed;
    const bool sound = parsed.parse(file);
    CHECK(!sound || parsed.text() == file);
    Values values;
    values.read(kKey);
    const auto before = values.told();
    const auto other = valuesOf(kOther);
    CHECK(sound || (before.empty() && other.empty()));

    HKEY key = nullptr;
    CHECK(vx::RegCreateKeyExA(kRoot, kKey, vx::KEY_WRITE, &key) == 0);
    change(key, values, changes);
    CHECK(vx::RegCloseKey(key) == 0);
    CHECK(valuesOf(kKey) == values.told());
    CHECK(valuesOf(kOther) == other);
    CHECK(fs::exists(folder() / "user.reg.damaged") == !sound);
    CHECK(sound || bytesOf("user.reg.damaged") == file);
    CHECK(!fs::exists(folder() / "user.reg.new"));

    bool failed = false;
    char *text = vxRegistryReadList(kRoot, kKey, ';', &failed);
    if (text != nullptr && values.areShort()) writeAndReadList(text);
    std::free(text);
    return 0;
}
