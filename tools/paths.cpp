// The lists of the store: shown, and edited where the store keeps them.

#include "commands.h"
#include "report.h"

#include <vxsearchpath.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

namespace {

// What the library reads back of a stored list: what lies beyond would be lost.
constexpr std::uint32_t kMostEntries = 128;
constexpr std::size_t kLongestEntry = 259;

const char *categoryName(int category) {
    return category == VX_CATEGORY_TEXTURES ? "texture" : "web";
}

const char *levelName(int level) {
    static const char *const names[] = {"merged", "user", "machine", "environment"};
    return names[level];
}

// The root is an empty text in a list.
const char *shown(const char *entry) {
    return *entry == '\0' ? "/" : entry;
}

bool isDirectory(const char *path) {
    struct stat status;
    return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

// The level that an entry of the merged list comes from.
int originOf(int category, const char *entry) {
    for (const int level : {VX_LEVEL_ENVIRONMENT, VX_LEVEL_MACHINE, VX_LEVEL_USER}) {
        const VxSearchPath *list = vxPathStoreGet(category, level);
        for (std::uint32_t i = 0; list != nullptr && i < list->count; ++i) {
            if (std::strcmp(list->entries[i], entry) == 0) return level;
        }
    }
    return VX_LEVEL_MERGED;
}

VxSearchPath *listOf(LevelList where) {
    VxSearchPath *list = vxPathStoreGet(where.category, where.level);
    if (list == nullptr) throw std::bad_alloc();
    return list;
}

// ---- Showing

void printList(LevelList where) {
    const VxSearchPath *list = listOf(where);
    std::printf("%s, %s%s\n", categoryName(where.category), levelName(where.level),
                list->count == 0 ? ": no directories" : "");
    for (std::uint32_t i = 0; i < list->count; ++i) {
        const char *directory = shown(list->entries[i]);
        std::printf("%4u  %s", i, printable(directory).c_str());
        if (where.level == VX_LEVEL_MERGED) {
            std::printf("  (%s)", levelName(originOf(where.category, list->entries[i])));
        }
        std::printf("%s\n", isDirectory(directory) ? "" : "  no such directory");
    }
}

// The length of the UTF-8 character at the start of a text, or 0 if there is none.
std::size_t characterLength(const char *text) {
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    if (first < 0x80) return 1;
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
    }
    const bool overlong = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xF0 && byte(1) < 0x90);
    const bool beyond = (first == 0xED && byte(1) > 0x9F) || (first == 0xF4 && byte(1) > 0x8F);
    return overlong || beyond ? 0 : length;
}

// A JSON string. A byte that is no UTF-8 becomes \udcXX, from which Python's os.fsencode makes the
// byte again.
std::string jsonString(const char *text) {
    std::string json = "\"";
    char escaped[8];
    while (*text != '\0') {
        const std::size_t length = characterLength(text);
        const auto byte = static_cast<unsigned char>(*text);
        if (length == 0 || byte < ' ') {
            std::snprintf(escaped, sizeof escaped, "\\u%04x", length == 0 ? 0xDC00U | byte : byte);
            json += escaped;
        } else {
            if (byte == '"' || byte == '\\') json += '\\';
            json.append(text, length);
        }
        text += length == 0 ? 1 : length;
    }
    return json + '"';
}

void printJsonList(LevelList where) {
    const VxSearchPath *list = listOf(where);
    std::printf("  {\"category\": \"%s\", \"level\": \"%s\", \"directories\": [",
                categoryName(where.category), levelName(where.level));
    for (std::uint32_t i = 0; i < list->count; ++i) {
        const char *directory = shown(list->entries[i]);
        const int level = where.level == VX_LEVEL_MERGED
                              ? originOf(where.category, list->entries[i])
                              : where.level;
        std::printf("%s\n    {\"path\": %s, \"level\": \"%s\", \"exists\": %s}", i == 0 ? "" : ",",
                    jsonString(directory).c_str(), levelName(level),
                    isDirectory(directory) ? "true" : "false");
    }
    std::printf("%s]}", list->count == 0 ? "" : "\n  ");
}

// ---- Editing

// The canonical form of a directory, as the list would store it. A relative one is taken from the
// current directory.
std::string canonical(const std::string &directory) {
    std::string path = directory;
    if (vxPathIsAbsolute(path.c_str()) == 0) path = std::filesystem::current_path() / path;
    // A dot at the end goes away only with a separator behind it.
    if (path.ends_with('.')) path += '/';
    path.resize(std::strlen(vxPathNormalize(path.data())));
    return path;
}

// The folder of the registry file of a level, as vxsearchpath.h tells it.
std::string registryFolder(int level) {
    const auto variable = [](const char *name) -> std::string {
        const char *value = std::getenv(name);
        return value == nullptr ? "" : value;
    };
    if (std::string folder = variable("VX_REGISTRY_DIR"); !folder.empty()) return folder;
    if (level == VX_LEVEL_MACHINE) return "/etc/vxutil";
    if (std::string folder = variable("XDG_CONFIG_HOME"); !folder.empty()) {
        return folder + "/vxutil";
    }
    return variable("HOME") + "/.config/vxutil";
}

// The lists are written when the process ends, too late to say that it failed: so whoever may not
// write there is told now.
void checkRights(int level) {
    const std::filesystem::path folder = registryFolder(level);
    std::filesystem::path place = folder;
    std::error_code ignored;
    while (!std::filesystem::exists(place, ignored) && place.has_relative_path())
        place = place.parent_path();
    if (place.empty()) place = ".";
    const std::filesystem::path file =
        folder / (level == VX_LEVEL_USER ? "user.reg" : "machine.reg");
    if (access(place.c_str(), W_OK | X_OK) != 0) throw systemTrouble(file);
    if (!std::filesystem::exists(file, ignored)) return;
    if (!std::filesystem::is_regular_file(file, ignored)) throw Trouble(file, "is no regular file");
    if (access(file.c_str(), R_OK | W_OK) != 0) throw systemTrouble(file);
}

// The position of an entry that is named by its directory or by a position.
std::uint32_t positionOf(const VxSearchPath *list, const std::string &entry) {
    const bool number = entry.find_first_not_of("0123456789") == std::string::npos;
    if (number && entry.size() < 10) {
        const unsigned long position = std::stoul(entry);
        if (position < list->count) return static_cast<std::uint32_t>(position);
    }
    const std::string directory = canonical(entry);
    for (std::uint32_t i = 0; !number && i < list->count; ++i) {
        if (directory == list->entries[i]) return i;
    }
    throw Trouble(entry, "is not in the list");
}

void checkEntry(const std::string &directory, const std::string &path) {
    if (directory.find(';') != std::string::npos) {
        throw Trouble(directory, "a directory with a semicolon cannot be kept in a list");
    }
    if (path.empty()) throw Trouble(directory, "the root cannot be kept in a list");
    if (path.size() > kLongestEntry) {
        throw Trouble(directory, "is longer than the 259 bytes that a list keeps");
    }
}

int misplaced(unsigned position, const VxSearchPath *list) {
    complain(std::to_string(position),
             "no such position in a list of " + std::to_string(list->count));
    return kUsage;
}

// Lets the merged list be made anew from what was changed.
int changed(LevelList where, VxSearchPath *list) {
    vxPathStoreSet(where.category, where.level, list);
    return kDone;
}

}  // namespace

int listPaths(const std::vector<int> &categories, int level, bool json) {
    const char *separator = "[\n";
    for (const int category : categories) {
        if (json) {
            std::fputs(separator, stdout);
            printJsonList({category, level});
            separator = ",\n";
        } else {
            printList({category, level});
        }
    }
    if (json) std::puts("\n]");
    return kDone;
}

int addPath(LevelList where, const std::string &directory, std::optional<unsigned> position) {
    checkRights(where.level);
    VxSearchPath *list = listOf(where);
    const std::string path = canonical(directory);
    checkEntry(directory, path);
    if (position.value_or(0) > list->count) return misplaced(*position, list);
    if (list->count >= kMostEntries) {
        throw Trouble(directory, "the list is full: it keeps 128 directories");
    }
    if (vxSearchPathIndexOf(list, path.c_str()) >= 0) {
        throw Trouble(directory, "is in the list already");
    }
    if (vxSearchPathInsert(list, position.value_or(list->count), path.c_str()) == 0) {
        throw std::bad_alloc();
    }
    return changed(where, list);
}

int removePath(LevelList where, const std::string &entry) {
    checkRights(where.level);
    VxSearchPath *list = listOf(where);
    vxSearchPathRemove(list, positionOf(list, entry));
    return changed(where, list);
}

int movePath(LevelList where, const std::string &entry, unsigned position) {
    checkRights(where.level);
    VxSearchPath *list = listOf(where);
    if (position >= list->count) return misplaced(position, list);
    std::uint32_t at = positionOf(list, entry);
    for (; at < position; ++at)
        vxSearchPathSwap(list, at, at + 1);
    for (; at > position; --at)
        vxSearchPathSwap(list, at, at - 1);
    return changed(where, list);
}

}  // namespace tool
