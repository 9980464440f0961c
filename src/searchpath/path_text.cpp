// Path text. `/` and `.` are trail bytes of no code page, so plain searches for them are exact;
// only a backslash may be half of a double-byte character.

#include "searchpath/path_text.h"

#include "platform/code_page.h"

#include <vxsearchpath.h>

#include <cstdlib>
#include <cstring>

namespace {

bool isSeparator(char byte) {
    return byte == '/' || byte == '\\';
}

// Bytes are ordered as signed ones, whatever char is here.
int signedByte(char byte) {
    return static_cast<signed char>(byte);
}

char *dropTrailingSeparators(char *path) {
    std::size_t length = std::strlen(path);
    while (length != 0 && isSeparator(path[length - 1]))
        --length;
    path[length] = '\0';
    return path;
}

void collapseSlashRuns(char *path) {
    char *to = path;
    for (const char *from = path; *from != '\0'; ++from) {
        if (from[0] != '/' || from[1] != '/') *to++ = *from;
    }
    *to = '\0';
}

void dropDotComponents(char *path) {
    char *to = path;
    for (const char *from = path; *from != '\0';) {
        if (std::strncmp(from, "/./", 3) == 0) {
            from += 2;
        } else {
            *to++ = *from++;
        }
    }
    *to = '\0';
}

// Takes out each component with the "/../" behind it, in one pass with the text so far as a stack.
// A "/../" with nothing before it but others like it has no component to take: such a climb above
// the start is kept in the climbing prefix, and dropped at the end.
void resolveParentComponents(char *path) {
    char *to = path;
    char *climbed = path;  // end of the climbing prefix
    const char *from = path;
    while (*from != '\0') {
        if (std::strncmp(from, "/../", 4) != 0) {
            *to++ = *from++;
        } else if (to == climbed) {
            std::memmove(to, from, 3);
            climbed = to += 3;
            from += 3;
        } else {
            while (to != climbed && *--to != '/') {
            }
            // The component stood at the start without a slash: the one behind it goes too.
            from += *to == '/' ? 3 : 4;
        }
    }
    *to = '\0';
    char *rest = path;
    while (std::strncmp(rest, "/../", 4) == 0)
        rest += 3;
    std::memmove(path, rest, std::strlen(rest) + 1);
}

}  // namespace

bool vx::hasDrivePrefix(const char *path) {
    return path[0] != '\0' && path[1] == ':' && vx::isLetter(static_cast<unsigned char>(path[0]));
}

void vx::convertSeparators(char *path) {
    const vx::CodePage &page = vx::currentCodePage();
    for (; *path != '\0'; path += page.step(path)) {
        if (*path == '\\') *path = '/';
    }
}

int vxPathIsAbsolute(const char *path) {
    if (path == nullptr) return 0;
    return isSeparator(path[0]) || vx::hasDrivePrefix(path) ? 1 : 0;
}

bool vx::isNetworkPath(const char *path) {
    return path[0] == '\\' && path[1] == '\\' && path[2] != '\\';
}

int vx::comparePaths(const char *entry, const char *path) {
    while (*entry != '\0' && *path != '\0' &&
           (*entry == *path || (isSeparator(*entry) && isSeparator(*path)))) {
        ++entry;
        ++path;
    }
    if (*entry != '\0') return signedByte(*entry) - signedByte(*path);
    if (!isSeparator(*path)) return -signedByte(*path);
    while (isSeparator(*path))
        ++path;
    return *path == '\0' ? 0 : -'/';
}

char *vxPathNormalize(char *path) {
    if (vx::isNetworkPath(path)) return dropTrailingSeparators(path);
    vx::convertSeparators(path);
    collapseSlashRuns(path);
    dropDotComponents(path);
    resolveParentComponents(path);
    if (vx::hasDrivePrefix(path) && std::strcmp(path + 2, "/") == 0) return path;
    std::size_t length = std::strlen(path);
    while (length != 0 && path[length - 1] == '/')
        --length;
    path[length] = '\0';
    return path;
}

char *vxPathJoin(const char *dir, const char *file, char *out) {
    if (file == nullptr) return nullptr;
    const bool alone = vxPathIsAbsolute(file) != 0;
    if (!alone && vxPathIsAbsolute(dir) == 0) return nullptr;
    const std::size_t dirLength = alone ? 0 : std::strlen(dir);
    const std::size_t fileLength = std::strlen(file);
    if (out == nullptr) {
        out = static_cast<char *>(std::malloc(dirLength + fileLength + 2));
        if (out == nullptr) return nullptr;
    }
    char *end = out;
    if (!alone) {
        std::memmove(end, dir, dirLength);  // `out` may be `dir`
        end += dirLength;
        *end++ = '/';
    }
    std::memmove(end, file, fileLength + 1);
    return vxPathNormalize(out);
}
