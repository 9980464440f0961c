// Finding a file along a list, along a category's merged list, or along plain text.

#include "platform/code_page.h"
#include "platform/files.h"
#include "searchpath/path_text.h"

#include <vxsearchpath.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

void findLongest(VxSearchPath *list) {
    for (std::uint32_t i = 0; i < list->count; ++i) {
        list->longest =
            std::max(list->longest, static_cast<std::int32_t>(std::strlen(list->entries[i])));
    }
}

// The entry under which the name is a regular file, or null. The name stands at one place of the
// buffer, and each entry is written so that it ends right before it.
const char *walk(const VxSearchPath *list, const char *name, char *buffer) {
    char *tail = buffer + list->longest;
    *tail = '/';
    std::strcpy(tail + 1, name);
    vx::convertSeparators(tail + 1);
    for (std::uint32_t i = 0; i < list->count; ++i) {
        const std::size_t length = std::strlen(list->entries[i]);
        std::memcpy(tail - length, list->entries[i], length);
        if (vx::isRegularFile(tail - length)) return list->entries[i];
    }
    return nullptr;
}

// The path that vxFindFile tested last, cut at 255 bytes.
char testedPath[256];

const char *testPath(const char *path) {
    vx::copyPrefix(testedPath, path, sizeof testedPath - 1);
    testedPath[sizeof testedPath - 1] = '\0';
    return vx::pathExists(testedPath) ? testedPath : nullptr;
}

const char *testJoined(const char *directory, const char *name) {
    vx::copyPrefix(testedPath, directory, sizeof testedPath - 1);
    testedPath[sizeof testedPath - 1] = '\0';
    const std::size_t length = std::strlen(testedPath);
    const std::size_t nameSize = std::strlen(name) + 1;
    if (length + 1 + nameSize <= sizeof testedPath) {
        testedPath[length] = '/';
        std::memcpy(testedPath + length + 1, name, nameSize);
    }
    return vx::pathExists(testedPath) ? testedPath : nullptr;
}

}  // namespace

const char *vxSearchPathFind(VxSearchPath *list, const char *name, int category) {
    if (list == nullptr || name == nullptr) return nullptr;
    if (vxPathIsAbsolute(name) != 0) return vx::isRegularFile(name) ? name : nullptr;
    if (list->longest == 0) findLongest(list);
    auto *buffer = static_cast<char *>(
        std::malloc(static_cast<std::size_t>(list->longest) + std::strlen(name) + 2));
    if (buffer == nullptr) return nullptr;
    const char *found = walk(list, name, buffer);
    std::free(buffer);
    if (found != nullptr || category == 0) return found;
    return vxSearchPathFind(vxPathStoreGet(category, VX_LEVEL_MERGED), name, 0);
}

char *vxSearchPathResolve(VxSearchPath *list, const char *name, char *out, int category) {
    return vxPathJoin(vxSearchPathFind(list, name, category), name, out);
}

const char *vxFindFile(const char *searchText, const char *name) {
    if (name == nullptr || *name == '\0') return nullptr;
    if (*name == '/' || *name == '\\') return testPath(name);
    if (searchText == nullptr) searchText = ".";
    auto *pieces = static_cast<char *>(std::malloc(std::strlen(searchText) + 1));
    if (pieces == nullptr) return nullptr;
    std::strcpy(pieces, searchText);
    const char *found = nullptr;
    char *rest = pieces;
    while (char *piece = found == nullptr ? vx::splitNext(rest, ';') : nullptr)
        found = testJoined(piece, name);
    std::free(pieces);
    return found != nullptr ? found : testPath(name);
}
