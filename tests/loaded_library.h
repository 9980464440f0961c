// The library, loaded and unloaded by a test that is not linked to it; and the values of its store.

#ifndef VX_TESTS_LOADED_LIBRARY_H
#define VX_TESTS_LOADED_LIBRARY_H

#include "data_rows.h"
#include "system.h"

#include <vxsearchpath.h>

#include <cstdlib>
#include <string>

// A function of the library, by its ordinal.
#define VX_BIND(ordinal, name) reinterpret_cast<decltype(&(name))>(address(ordinal))

// The library while it is loaded.
class Library {
public:
    Library() : handle_(loadLibrary(VX_LIBRARY)) {
        EXPECT_NE(handle_, nullptr);
        find_ = reinterpret_cast<decltype(find_)>(symbolOf(handle_, "vxExportAddress"));
    }
    ~Library() { EXPECT_TRUE(unloadLibrary(handle_, VX_LIBRARY)) << "still loaded"; }
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;

    VxSearchPath *get(int category, int level) const {
        return VX_BIND(270, vxPathStoreGet)(category, level);
    }
    int set(int category, int level, VxSearchPath *list) const {
        return VX_BIND(269, vxPathStoreSet)(category, level, list);
    }
    std::string text(int category, int level) const {
        char *text = VX_BIND(108, vxSearchPathToString)(get(category, level));
        std::string result = text;
        std::free(text);
        return result;
    }
    void insert(VxSearchPath *list, unsigned index, const char *path) const {
        VX_BIND(100, vxSearchPathInsert)(list, index, path);
    }

    void *address(int ordinal) const { return const_cast<void *>(find_(ordinal)); }

private:
    void *handle_;
    decltype(&vxExportAddress) find_;
};

// ---- The store

inline constexpr char kTextures[] = "Software\\Meridane\\Vandermire\\Texture Paths";
inline constexpr char kWebs[] = "Software\\Meridane\\Vandermire\\Photometric Web Paths";

// The fields of a row after its first one, each with a line end.
inline std::string linesOf(const DataRow &row) {
    std::string lines;
    for (std::size_t i = 1; i < row.size(); ++i)
        lines += row[i] + "\n";
    return lines;
}

#endif
