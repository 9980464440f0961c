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
#include <set>
#include <span>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using vx::RegistryValue;

constexpr auto kRoot = vx::RegistryRoot::kUser;
constexpr const char *kPath = "HKEY_CURRENT_USER\\K";
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

// The values of a key by a plain list.
class Model {
public:
    explicit Model(std::span<const RegistryValue> values) : values_(values.begin(), values.end()) {}
    void set(const RegistryValue &value) {
        const auto isSame = [&](const RegistryValue &other) {
            return vx::foldedName(other.name) == vx::foldedName(value.name);
        };
        const auto first = std::ranges::find_if(values_, isSame);
        if (first == values_.end()) {
            values_.push_back(value);
        } else {
            *first = value;
        }
    }
    void removeFirst(std::size_t count) {
        values_.erase(values_.begin(), values_.begin() + static_cast<std::ptrdiff_t>(count));
    }
    std::size_t size() const { return values_.size(); }
    // Is there nothing too long for the walk along a list?
    bool areShort() const {
        return std::ranges::all_of(values_, [](const RegistryValue &value) {
            return value.name.size() < 16 && value.data.size() < 261;
        });
    }
    // A value that was removed and set again keeps its place in the file, so the order is open.
    std::multiset<std::string> shown() const {
        std::multiset<std::string> all;
        for (const RegistryValue &value : values_)
            all.insert(vx::foldedName(value.name) + '=' + std::to_string(value.type) + ':' +
                       value.data);
        return all;
    }

private:
    std::vector<RegistryValue> values_;
};

Model valuesOf(const char *path) {
    vx::Registry registry(kRoot);
    return Model(vx::RegistryKey(registry, path).values());
}

void change(vx::RegistryKey &key, Model &model, FuzzedDataProvider &changes) {
    static const char *const kNames[] = {"a", "A", "", "b\"\\", "0", "hex"};
    static constexpr unsigned kTypes[] = {1, 1, 2, 3, 4, 7, 0, 0xFFFFFFFF};
    while (changes.remaining_bytes() > 0) {
        if (changes.ConsumeIntegralInRange(0, 3) == 0) {
            const auto count = changes.ConsumeIntegralInRange<std::size_t>(0, model.size());
            key.removeFirst(count);
            model.removeFirst(count);
            continue;
        }
        std::string name = changes.PickValueInArray(kNames);
        if (changes.ConsumeBool()) name += changes.ConsumeRandomLengthString(8);
        std::erase_if(name, [](char byte) { return static_cast<unsigned char>(byte) < 0x20; });
        RegistryValue value{name, changes.PickValueInArray(kTypes),
                            changes.ConsumeRandomLengthString(60)};
        if (value.type == vx::kRegistryText && changes.ConsumeBool()) value.data += '\0';
        key.set(value);
        model.set(value);
    }
}

std::string readList() {
    vx::Registry registry(kRoot);
    return vx::readRegistryList(registry, kKey);
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
    {
        vx::Registry registry(kRoot);
        CHECK(vx::writeRegistryList(registry, kKey, list) == vx::SaveResult::kSaved);
    }
    const std::string read = readList();
    CHECK(!fits || (read == joined.substr(0, joined.size() - (joined.empty() ? 0 : 1))));
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
    const bool isGood = parsed.parse(file);
    Model model = valuesOf(kKey);
    const auto other = valuesOf(kOther).shown();
    CHECK(isGood || (model.size() == 0 && other.empty()));
    CHECK(!isGood || parsed.values(kPath).empty() ||
          parsed.textWith(kPath, parsed.values(kPath)) == file);
    {
        vx::Registry registry(kRoot);
        vx::RegistryKey key(registry, kKey);
        change(key, model, changes);
        CHECK(key.save() == vx::SaveResult::kSaved);
    }
    CHECK(valuesOf(kKey).shown() == model.shown());
    CHECK(valuesOf(kOther).shown() == other);
    CHECK(fs::exists(folder() / "user.reg.damaged") == !isGood);
    CHECK(isGood || bytesOf("user.reg.damaged") == file);
    CHECK(!fs::exists(folder() / "user.reg.new"));

    const std::string text = readList();
    if (!text.empty() && model.areShort()) writeAndReadList(text.c_str());
    return 0;
}
