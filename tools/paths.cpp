// The lists of the store: shown, and edited where the store keeps them.

#include "candidate.h"
#include "commands.h"
#include "json.h"
#include "name_list.h"
#include "registry_files.h"
#include "report.h"

#include <vxsearchpath.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <set>
#include <sys/stat.h>

namespace tool {

namespace {

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

VxSearchPath *listOf(ListId where) {
    VxSearchPath *list = vxPathStoreGet(where.category, where.level);
    if (list == nullptr) throw std::bad_alloc();
    return list;
}

// ---- Showing

void printList(ListId where) {
    const VxSearchPath *list = listOf(where);
    std::printf("%s, %s%s\n", categoryName(where.category), levelName(where.level),
                list->count == 0 ? ": no directories" : "");
    for (std::uint32_t i = 0; i < list->count; ++i) {
        const char *directory = shown(list->entries[i]);
        std::printf("%4u  %s", i, printable(directory).c_str());
        if (where.level == VX_LEVEL_MERGED) {
            std::printf("  (%s)", levelName(originOf(where.category, list->entries[i])));
        }
        const std::string fault = whyNotSearchable(directory);
        std::printf("%s%s\n", fault.empty() ? "" : "  ", toned(Tone::kBad, fault).c_str());
    }
}

Json jsonList(ListId where) {
    const VxSearchPath *list = listOf(where);
    Json directories = Json::array();
    for (std::uint32_t i = 0; i < list->count; ++i) {
        const bool isMerged = where.level == VX_LEVEL_MERGED;
        Json directory;
        setText(directory, "path", shown(list->entries[i]));
        directory["level"] =
            levelName(isMerged ? originOf(where.category, list->entries[i]) : where.level);
        directory["exists"] = isDirectory(shown(list->entries[i]));
        const std::string fault = whyNotSearchable(shown(list->entries[i]));
        if (!fault.empty()) directory["fault"] = fault;
        directories.push_back(directory);
    }
    return {{"category", categoryName(where.category)},
            {"level", levelName(where.level)},
            {"directories", directories}};
}

bool checkList(ListId where) {
    const VxSearchPath *list = listOf(where);
    const std::string title =
        std::string(categoryName(where.category)) + ", " + levelName(where.level);
    const std::string place = " (" + title + ", position ";
    unsigned bad = 0;
    for (std::uint32_t i = 0; i < list->count; ++i) {
        const char *directory = shown(list->entries[i]);
        const std::string fault = whyNotSearchable(directory);
        if (fault.empty()) continue;
        printError(directory, fault + place + std::to_string(i) + ")");
        ++bad;
    }
    std::printf("%s: %u good, %u bad\n", title.c_str(), list->count - bad, bad);
    return bad == 0;
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
    throw Error(entry, "is not in the list");
}

// Text that begins and ends with a percent sign becomes the value of a variable, or will when
// there is one.
bool namesVariable(const std::string &path) {
    for (std::size_t from = path.find('%'); from != std::string::npos;) {
        const std::size_t to = path.find('%', from + 1);
        if (to != std::string::npos && to > from + 1) return true;
        from = to;
    }
    return false;
}

void checkEntry(const std::string &directory, const std::string &path) {
    if (namesVariable(path)) {
        throw Error(directory, "a directory with %NAME% in it cannot be kept in a list");
    }
    if (directory.find(';') != std::string::npos) {
        throw Error(directory, "a directory with a semicolon cannot be kept in a list");
    }
    if (path.empty()) throw Error(directory, "the root cannot be kept in a list");
    if (path.size() > VX_STORED_ENTRY_LENGTH) {
        throw Error(directory, "is longer than the " + std::to_string(int{VX_STORED_ENTRY_LENGTH}) +
                                   " bytes that a list keeps");
    }
}

void checkPosition(unsigned position, std::uint32_t end, const VxSearchPath *list) {
    if (position < end) return;
    throw Error(std::to_string(position),
                "no such position in a list of " + std::to_string(list->count));
}

// Adds a directory, which may come into being later.
void insert(VxSearchPath *list, unsigned place, const std::string &directory) {
    const std::string path = canonical(directory);
    checkEntry(directory, path);
    if (list->count >= VX_STORED_LIST_ENTRIES) {
        throw Error(directory, "the list is full: it keeps " +
                                   std::to_string(int{VX_STORED_LIST_ENTRIES}) + " directories");
    }
    if (vxSearchPathIndexOf(list, path.c_str()) >= 0) {
        throw Error(directory, "is in the list already");
    }
    if (vxSearchPathInsert(list, place, path.c_str()) == 0) throw std::bad_alloc();
    const std::string fault = whyNotSearchable(path);
    if (!fault.empty()) printError(directory, "warning: " + fault);
}

// The library writes its lists when a process ends, and says nothing when it cannot. So one process
// edits and ends, and this one starts anew to see what has become of the list.
[[noreturn]] void save(ListId where, VxSearchPath *list) {
    writeLists([&] { vxPathStoreSet(where.category, where.level, list); });
    std::vector<const char *> arguments = {"vxutil",
                                           "paths",
                                           "confirm",
                                           "--category",
                                           categoryName(where.category),
                                           "--level",
                                           levelName(where.level),
                                           "--"};
    arguments.insert(arguments.end(), list->entries, list->entries + list->count);
    arguments.push_back(nullptr);
    execSelf(arguments.data());
}

}  // namespace

int listPaths(const std::vector<int> &categories, int level, bool json) {
    Json lists = Json::array();
    for (const int category : categories) {
        if (json) {
            lists.push_back(jsonList({category, level}));
        } else {
            printList({category, level});
        }
    }
    if (json) printJson(lists);
    return reportUnreadableLists(level) ? kDone : kFailed;
}

int checkPaths(const std::vector<int> &categories, int level) {
    bool good = true;
    for (const int category : categories)
        good = checkList({category, level}) && good;
    return reportUnreadableLists(level) && good ? kDone : kFailed;
}

int exportPaths(ListId where, char separator) {
    const VxSearchPath *list = listOf(where);
    for (std::uint32_t i = 0; i < list->count; ++i) {
        const std::string directory = shown(list->entries[i]);
        if (directory.find(separator) != std::string::npos) {
            throw Error(directory, "has a line break in its name: use -0");
        }
        std::fwrite(directory.data(), 1, directory.size(), stdout);
        std::putchar(separator);
    }
    return reportUnreadableLists(where.level) ? kDone : kFailed;
}

int addPaths(ListId where, const std::vector<std::string> &directories,
             std::optional<unsigned> position) {
    VxSearchPath *list = listOf(where);
    unsigned place = position.value_or(list->count);
    checkPosition(place, list->count + 1, list);
    for (const std::string &directory : directories)
        insert(list, place++, directory);
    save(where, list);
}

int importPaths(ListId where, const std::string &file, char separator) {
    VxSearchPath *list = listOf(where);
    while (list->count != 0)
        vxSearchPathRemove(list, list->count - 1);
    forEachListedName(file, separator, [&](const std::string &directory) {
        if (!directory.empty()) insert(list, list->count, directory);
    });
    save(where, list);
}

int removePaths(ListId where, const std::vector<std::string> &entries) {
    VxSearchPath *list = listOf(where);
    std::set<std::uint32_t, std::greater<>> positions;  // those of the list as it is now
    for (const std::string &entry : entries)
        positions.insert(positionOf(list, entry));
    for (const std::uint32_t position : positions)
        vxSearchPathRemove(list, position);
    save(where, list);
}

int movePath(ListId where, const std::string &entry, unsigned position) {
    VxSearchPath *list = listOf(where);
    checkPosition(position, list->count, list);
    std::uint32_t at = positionOf(list, entry);
    for (; at < position; ++at)
        vxSearchPathSwap(list, at, at + 1);
    for (; at > position; --at)
        vxSearchPathSwap(list, at, at - 1);
    save(where, list);
}

int confirmPaths(ListId where, const std::vector<std::string> &wanted) {
    const VxSearchPath *list = listOf(where);
    if (std::equal(wanted.begin(), wanted.end(), list->entries, list->entries + list->count)) {
        return kDone;
    }
    throw Error(registryFile(where.level),
                "does not hold the edited list: another program has changed it meanwhile, or it "
                "cannot be written, with a full disk or its .lock closed to you");
}

}  // namespace tool
