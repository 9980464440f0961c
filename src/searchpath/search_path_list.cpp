// Ordered lists of directories.
//
// A search takes its one buffer by `longest`. Changes that may make it wrong clear it instead of
// looking at all entries; the next search works it out.

#include "searchpath/search_path_list.h"

#include "platform/code_page.h"
#include "platform/files.h"
#include "searchpath/path_text.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace {

constexpr std::uint32_t kMinCapacity = 4;
constexpr std::size_t kMinDirectoryBytes = 257;
constexpr std::size_t kMaxEntryLength = 0x7FFFFFFF;  // the limit of `longest`

char **newEntries(std::size_t capacity) {
    assert(capacity != 0);
    return static_cast<char **>(std::calloc(capacity, sizeof(char *)));
}

void freeEntries(char **entries, std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; ++i)
        std::free(entries[i]);
    std::free(entries);
}

char *copyText(const char *text) {
    const std::size_t size = std::strlen(text) + 1;
    auto *copy = static_cast<char *>(std::malloc(size));
    if (copy != nullptr) std::memcpy(copy, text, size);
    return copy;
}

// Copies of the first `count` texts in an array of `capacity` slots, or null without memory.
char **copyEntries(char **entries, std::uint32_t count, std::size_t capacity) {
    char **copies = newEntries(capacity);
    for (std::uint32_t i = 0; copies != nullptr && i < count; ++i) {
        copies[i] = copyText(entries[i]);
        if (copies[i] != nullptr) continue;
        freeEntries(copies, i);
        copies = nullptr;
    }
    return copies;
}

// Takes the next directory between semicolons, which is not empty; an empty view at the end.
std::string_view nextSegment(const char *&text) {
    while (*text == ';')
        ++text;
    const char *end = vx::findCharacter(text, ';');
    if (end == nullptr) end = text + std::strlen(text);
    const std::string_view segment(text, static_cast<std::size_t>(end - text));
    text = end;
    return segment;
}

std::uint32_t countSegments(const char *text) {
    std::uint32_t count = 0;
    while (!nextSegment(text).empty())
        ++count;
    return count;
}

// A directory to be normalised, after the current directory if there is one given. Null without
// memory.
char *newDirectory(std::string_view current, std::string_view path, std::string_view after) {
    const std::string_view before = current.empty() ? "" : "/";
    const std::size_t length = current.size() + before.size() + path.size() + after.size();
    if (length > kMaxEntryLength) return nullptr;
    auto *text = static_cast<char *>(std::malloc(length + 1));
    if (text == nullptr) return nullptr;
    char *end = text;
    for (const std::string_view part : {current, before, path, after})
        end += part.copy(end, part.size());
    *end = '\0';
    return text;
}

// Fills a list whose array has room for every segment; false without memory.
bool appendSegments(VxSearchPath *list, const char *text, bool *isComplete) {
    std::unique_ptr<char, decltype(&std::free)> current(nullptr, std::free);
    for (;;) {
        const std::string_view segment = nextSegment(text);
        if (segment.empty()) return true;
        // A semicolon has no part in what makes a path absolute.
        const bool isAbsolute = vxPathIsAbsolute(segment.data()) != 0;
        if (!isAbsolute && current == nullptr) {
            current.reset(vx::currentDirectory(kMinDirectoryBytes));
        }
        if (!isAbsolute && current == nullptr) {
            *isComplete = false;
            continue;
        }
        const bool isDrive = segment.size() == 2 && vx::hasDrivePrefix(segment.data());
        char *directory =
            newDirectory(isAbsolute ? "" : current.get(), segment, isDrive ? "./" : "/");
        if (directory == nullptr) return false;
        list->longest = std::max(list->longest, static_cast<std::int32_t>(std::strlen(directory)));
        list->entries[list->count++] = vxPathNormalize(directory);
    }
}

// Moves the entries to an array of another size; false without memory.
bool resize(VxSearchPath *list, std::uint32_t capacity) {
    char **entries = newEntries(capacity);
    if (entries == nullptr) return false;
    std::memcpy(entries, list->entries, list->count * sizeof(char *));
    std::free(list->entries);
    list->entries = entries;
    list->capacity = capacity;
    return true;
}

}  // namespace

VxSearchPath *vx::createSearchPath(const char *text, bool *isComplete) {
    *isComplete = true;
    auto *list = static_cast<VxSearchPath *>(std::calloc(1, sizeof(VxSearchPath)));
    if (list == nullptr) return nullptr;
    if (text == nullptr) text = "";
    list->capacity = std::max(countSegments(text), kMinCapacity);
    list->entries = newEntries(list->capacity);
    if (list->entries != nullptr && appendSegments(list, text, isComplete)) return list;
    vxSearchPathFree(list);
    return nullptr;
}

VxSearchPath *vxSearchPathCreate(const char *text) {
    bool isComplete;
    return vx::createSearchPath(text, &isComplete);
}

void vxSearchPathFree(VxSearchPath *list) {
    if (list == nullptr) return;
    freeEntries(list->entries, list->count);
    std::free(list);
}

bool vx::copySearchPath(VxSearchPath *destination, const VxSearchPath *source) {
    if (destination == nullptr || source == nullptr || destination == source) return false;
    char **entries = copyEntries(source->entries, source->count, source->capacity);
    if (entries == nullptr) return false;
    freeEntries(destination->entries, destination->count);
    *destination = {source->count, source->capacity, entries, source->longest};
    return true;
}

void vxSearchPathCopy(VxSearchPath *destination, const VxSearchPath *source) {
    vx::copySearchPath(destination, source);
}

int vxSearchPathCount(const VxSearchPath *list) {
    assert(list != nullptr);
    return static_cast<int>(list->count);
}

const char *vxSearchPathGet(const VxSearchPath *list, std::uint32_t index) {
    return list != nullptr && index < list->count ? list->entries[index] : nullptr;
}

int vxSearchPathIndexOf(const VxSearchPath *list, const char *path) {
    if (list == nullptr || vxPathIsAbsolute(path) == 0) return -1;
    for (std::uint32_t i = 0; i < list->count; ++i) {
        if (vx::comparePaths(list->entries[i], path) == 0) return static_cast<int>(i);
    }
    return -1;
}

char *vxSearchPathToString(const VxSearchPath *list) {
    assert(list != nullptr);
    std::size_t size = list->count == 0 ? 1 : 0;
    for (std::uint32_t i = 0; i < list->count; ++i)
        size += std::strlen(list->entries[i]) + 1;
    auto *text = static_cast<char *>(std::malloc(size));
    if (text == nullptr) return nullptr;
    char *end = text;
    for (std::uint32_t i = 0; i < list->count; ++i) {
        if (i != 0) *end++ = ';';
        const std::string_view entry = list->entries[i];
        end += entry.copy(end, entry.size());
    }
    *end = '\0';
    return text;
}

int vxSearchPathInsert(VxSearchPath *list, std::uint32_t index, const char *path) {
    if (list == nullptr || vxPathIsAbsolute(path) == 0 || index > list->count ||
        vxSearchPathIndexOf(list, path) >= 0) {
        return 0;
    }
    if (list->count == list->capacity && !resize(list, list->capacity * 2)) return 0;
    char *text = newDirectory("", path, "/");
    if (text == nullptr) return 0;
    vxPathNormalize(text);

    std::memmove(list->entries + index + 1, list->entries + index,
                 (list->count - index) * sizeof(char *));
    list->entries[index] = text;
    ++list->count;
    if (list->longest != 0) {
        list->longest = std::max(list->longest, static_cast<std::int32_t>(std::strlen(text)));
    }
    return 1;
}

// All copies are made first, since nothing after that can fail. Then the destination's own texts
// replace the copies that they equal.
bool vx::prependSearchPath(VxSearchPath *destination, const VxSearchPath *source) {
    if (destination == nullptr || source == nullptr) return true;
    const std::uint32_t capacity = std::max(destination->count + source->count, kMinCapacity);
    char **entries = copyEntries(source->entries, source->count, capacity);
    if (entries == nullptr) return false;
    char **const own = destination->entries;
    char **const ownEnd = own + destination->count;
    for (std::uint32_t i = 0; i < source->count; ++i) {
        char **same = std::find_if(own, ownEnd, [&](const char *text) {
            return text != nullptr && vx::compareText(text, entries[i]) == 0;
        });
        if (same == ownEnd) continue;
        std::free(entries[i]);
        entries[i] = std::exchange(*same, nullptr);
    }
    char **const end = std::copy_if(own, ownEnd, entries + source->count,
                                    [](const char *text) { return text != nullptr; });
    std::free(own);
    const bool isLongestKnown = destination->longest != 0 && source->longest != 0;
    *destination = {static_cast<std::uint32_t>(end - entries), capacity, entries,
                    isLongestKnown ? std::max(destination->longest, source->longest) : 0};
    return true;
}

void vxSearchPathPrepend(VxSearchPath *destination, const VxSearchPath *source) {
    vx::prependSearchPath(destination, source);
}

void vxSearchPathRemove(VxSearchPath *list, std::uint32_t index) {
    if (list == nullptr || index >= list->count) return;
    std::free(list->entries[index]);
    std::memmove(list->entries + index, list->entries + index + 1,
                 (list->count - index - 1) * sizeof(char *));
    list->entries[--list->count] = nullptr;
    if (list->capacity > kMinCapacity && list->count < list->capacity / 4) {
        resize(list, list->capacity / 2);  // without memory the larger array stays
    }
    list->longest = 0;
}

void vxSearchPathSwap(VxSearchPath *list, std::uint32_t one, std::uint32_t other) {
    if (list == nullptr || one >= list->count || other >= list->count) return;
    std::swap(list->entries[one], list->entries[other]);
}
