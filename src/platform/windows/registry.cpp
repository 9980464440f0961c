// The registry of the system. A key is read when its object is made and opened again to be saved.
// There is no lock: of two processes that save a key, the last one decides what it holds.

#include "platform/registry.h"

#include <utility>
#include <windows.h>

namespace vx {

namespace {

constexpr REGSAM kReadWrite = KEY_READ | KEY_WRITE;

// A key while it is open. Without the right to open it, or without such a key, it is not.
class OpenKey {
public:
    OpenKey(HKEY root, const std::string &path, REGSAM access) {
        if (::RegOpenKeyExA(root, path.c_str(), 0, access, &key_) != ERROR_SUCCESS) key_ = nullptr;
    }
    ~OpenKey() {
        if (isOpen()) ::RegCloseKey(key_);
    }
    OpenKey(const OpenKey &) = delete;
    OpenKey &operator=(const OpenKey &) = delete;

    bool isOpen() const { return key_ != nullptr; }

    void create(HKEY root, const std::string &path) {
        if (::RegCreateKeyExA(root, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, kReadWrite,
                              nullptr, &key_, nullptr) != ERROR_SUCCESS) {
            key_ = nullptr;
        }
    }

    // A value as the system gives it. Without memory of its own, so a save that has begun
    // does not run out of memory.
    struct Fetched {
        char name[16];
        char data[260];
        DWORD nameSize = sizeof name, dataSize = sizeof data, type = 0;
    };

    // Fetches the value at an index. False after the last one, and for a value that is too long for
    // a search path: all who use these keys end there.
    bool fetch(DWORD index, Fetched &value) const {
        return ::RegEnumValueA(key_, index, value.name, &value.nameSize, nullptr, &value.type,
                               reinterpret_cast<BYTE *>(value.data),
                               &value.dataSize) == ERROR_SUCCESS;
    }

    bool remove(const char *name) { return ::RegDeleteValueA(key_, name) == ERROR_SUCCESS; }

    bool store(const RegistryValue &value) {
        return ::RegSetValueExA(key_, value.name.c_str(), 0, value.type,
                                reinterpret_cast<const BYTE *>(value.data.data()),
                                static_cast<DWORD>(value.data.size())) == ERROR_SUCCESS;
    }

private:
    HKEY key_ = nullptr;
};

}  // namespace

class Registry::Store {
public:
    explicit Store(RegistryRoot root)
        : root_(root == RegistryRoot::kUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE) {}

    std::vector<RegistryValue> values(const std::string &path) const {
        std::vector<RegistryValue> values;
        const OpenKey key(root_, path, KEY_READ);
        for (DWORD index = 0; key.isOpen(); ++index) {
            OpenKey::Fetched value;
            if (!key.fetch(index, value)) break;
            values.push_back(
                {{value.name, value.nameSize}, value.type, {value.data, value.dataSize}});
        }
        return values;
    }

    SaveResult save(const std::string &path, const std::vector<RegistryValue> &values) const {
        OpenKey key(root_, path, kReadWrite);
        if (!key.isOpen()) key.create(root_, path);
        if (!key.isOpen()) return SaveResult::kFailed;
        for (OpenKey::Fetched old; key.fetch(0, old) && key.remove(old.name);)
            old = {};
        bool isComplete = true;
        for (const RegistryValue &value : values)
            isComplete &= key.store(value);
        return isComplete ? SaveResult::kSaved : SaveResult::kFailed;
    }

private:
    HKEY root_;
};

Registry::Registry(RegistryRoot root) : store_(std::make_unique<Store>(root)) {}
Registry::~Registry() = default;

bool Registry::isReadable() const {
    return true;
}

RegistryKey::RegistryKey(Registry &registry, std::string path)
    : registry_(registry), path_(std::move(path)), values_(registry.store_->values(path_)) {}

SaveResult RegistryKey::save() {
    return registry_.store_->save(path_, values_);
}

}  // namespace vx
