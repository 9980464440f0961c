// The store of search paths with the registry of the system and an environment of its own for each
// test. Values are written as in registry files.

#ifndef VX_TESTS_STORE_FIXTURE_H
#define VX_TESTS_STORE_FIXTURE_H

#include "loaded_library.h"
#include "platform/posix/registry_file.h"

#include <iterator>

inline std::vector<vx::RegistryValue> parsed(const std::string &values) {
    vx::RegistryFile file;
    EXPECT_TRUE(file.parse("REGEDIT4\n[a]\n" + values)) << values;
    return file.values("a");
}

// A key that is made if it is missing.
class Key {
public:
    Key(HKEY root, const char *path) { ::RegCreateKeyA(root, path, &key_); }
    ~Key() { ::RegCloseKey(key_); }
    Key(const Key &) = delete;
    Key &operator=(const Key &) = delete;

    void set(const std::vector<vx::RegistryValue> &values) const {
        for (const vx::RegistryValue &value : values)
            ::RegSetValueExA(key_, value.name.c_str(), 0, value.type,
                             reinterpret_cast<const BYTE *>(value.data.data()),
                             static_cast<DWORD>(value.data.size()));
    }
    // As registry files have them, in the order of the system.
    std::string values() const {
        std::vector<vx::RegistryValue> values;
        char name[300], data[300];
        DWORD nameSize = sizeof name, dataSize = sizeof data, type = 0;
        for (DWORD i = 0; ::RegEnumValueA(key_, i, name, &nameSize, nullptr, &type,
                                          reinterpret_cast<BYTE *>(data), &dataSize) == 0;
             ++i) {
            values.push_back({{name, nameSize}, type, {data, dataSize}});
            nameSize = sizeof name;
            dataSize = sizeof data;
        }
        const std::string text = vx::RegistryFile().textWith("a", values);
        return text.substr(text.find("[a]\n") + 4);
    }

private:
    HKEY key_ = nullptr;
};

class Store : public testing::Test {
protected:
    Store() {
        clear();
        setVariable("ROOT", "C:\\data");
        setVariable("ZOR_TEXTURE_PATH", nullptr);
        setVariable("ZOR_IES_PATH", nullptr);
    }
    static void clear() {
        for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
            ::RegDeleteTreeA(root, "Software\\Meridane");
    }
    static void writeUser(const std::string &values) {
        ::RegDeleteTreeA(HKEY_CURRENT_USER, kTextures);
        Key(HKEY_CURRENT_USER, kTextures).set(parsed(values));
    }
    static void writeMachine(const std::string &values) {
        Key(HKEY_LOCAL_MACHINE, kTextures).set(parsed(values));
    }
    // Whether these are among the user's values.
    static bool userHas(const std::string &values) {
        return Key(HKEY_CURRENT_USER, kTextures).values().find(values) != std::string::npos;
    }
};

#endif
