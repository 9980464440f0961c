// The store of search paths with registry files and an environment of its own for each test.

#ifndef VX_TESTS_STORE_FIXTURE_H
#define VX_TESTS_STORE_FIXTURE_H

#include "loaded_library.h"
#include "scratch_folder.h"

inline std::string heading(const char *root, const char *key) {
    return std::string("[") + root + "\\" + key + "]\n";
}

class Store : public testing::Test, protected ScratchFolder {
protected:
    Store() {
        setVariable("VX_REGISTRY_DIR", path.c_str());
        setVariable("ROOT", "C:\\data");
        setVariable("ZOR_TEXTURE_PATH", nullptr);
        setVariable("ZOR_IES_PATH", nullptr);
    }
    void writeUser(const std::string &values) const {
        write("user.reg", "REGEDIT4\n\n" + heading("HKEY_CURRENT_USER", kTextures) + values);
    }
    void writeMachine(const std::string &values) const {
        write("machine.reg", "REGEDIT4\n" + heading("HKEY_LOCAL_MACHINE", kTextures) + values);
    }
    // Whether these are among the user's values.
    bool userHas(const std::string &values) const {
        return read("user.reg").find(values) != std::string::npos;
    }
};

#endif
