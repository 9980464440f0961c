// Ordered lists of directories.
//
// `longest` lets a walk along a list allocate one buffer. Operations that cannot be sure of it
// set it to 0, for the next walk to find out, rather than scan.

#include "searchpath/search_path_list.h"

#include "platform/code_page.h"
#include "platform/files.h"
#include "searchpath/path_text.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::uint32_t kMinCapacity = 4;
constexpr std::size_t kMinDirectoryRoom = 257;
constexpr std::size_t kLongestEntry = 0x7FFFFFFF;  // what `longest` can tell

char **newEntries(std::size_t capacity) {
    assert(capacity != 0);
    return static_cast<char **>(std::calloc(capacity, sizeof(char *)));
}

char *copyOf(const char *text) {
    const std::size_t size = std::strlen(text) + 1;
    auto *copy = static_cast<char *>(std::malloc(size));
    return copy != nullptr ? static_cast<char *>(std::memcpy(copy, text, size)) : nullptr;
}

void freeEntries(char **entries, std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; ++i)
        std::free(entries[i]);
    std::free(entries);
}

// What stands between two semicolons.
struct Segment {
    const char *text;
    std::size_t length;
};

// Takes the next segment that is not empty; false at the end.
bool nextSegment(const char *&text, Segment &segment) {
    while (*text == ';')
        ++text;
    if (*text == '\0') return false;
    const char *end = vx::findCharacter(text, ';');
    if (end == nullptr) end = text + std::strlen(text);
    segment = {text, static_cast<std::size_t>(end - text)};
    text = end;
    return true;
}

std::uint32_t countSegments(const char *text) {
    std::uint32_t count = 0;
    for (Segment segment; nextSegment(text, segment);)
        ++count;
    return count;
}

bool isAbsolute(const Segment &segment) {
    // A colon or separator that makes a path absolute is never the terminator's place.
    const char first[3] = {segment.text[0], segment.length > 1 ? segment.text[1] : '\0', '\0'};
    return vxPathIsAbsolute(first) != 0;
}

// The directory of a segment, not yet normalised: with a trailing slash, and behind the current
// directory when it is relative. Null when there is no memory.
char *directoryOf(const Segment &segment, const char *current) {
    const bool drive = segment.length == 2 && hasDrivePrefix(segment.text);
    const std::size_t before = current != nullptr ? std::strlen(current) + 1 : 0;
    const char *behind = drive ? "./" : "/";
    const std::size_t length = before + segment.length + std::strlen(behind);
    auto *text = length <= kLongestEntry ? static_cast<char *>(std::malloc(length + 1)) : nullptr;
    if (text == nullptr) return nullptr;
    if (current != nullptr) {
        std::memcpy(text, current, before - 1);
        text[before - 1] = '/';
    }
    std::memcpy(text + before, segment.text, segment.length);
    std::strcpy(text + before + segment.length, behind);
    return text;
}

// Fills a list whose array has room for every segment; false when there is no memory.
bool appendSegments(VxSearchPath *list, const char *text, const char *current) {
    for (Segment segment; nextSegment(text, segment);) {
        const bool absolute = isAbsolute(segment);
        if (!absolute && current == nullptr) continue;
        char *directory = directoryOf(segment, absolute ? nullptr : current);
        if (directory == nullptr) return false;
        list->longest = std::max(list->longest, static_cast<std::int32_t>(std::strlen(directory)));
        list->entries[list->count++] = vxPathNormalize(directory);
    }
    return true;
}

bool grow(VxSearchPath *list) {
    char **larger = newEntries(std::size_t{list->capacity} * 2);
    if (larger == nullptr) return false;
    std::memcpy(larger, list->entries, list->count * sizeof(char *));
    std::free(list->entries);
    list->entries = larger;
    list->capacity *= 2;
    return true;
}

void shrink(VxSearchPath *list) {
    const std::uint32_t capacity = list->capacity / 2;
    char **smaller = newEntries(capacity);
    if (smaller == nullptr) return;
    std::memcpy(smaller, list->entries, capacity * sizeof(char *));
    std::free(list->entries);
    list->entries = smaller;
    list->capacity = capacity;
}

// The first remaining text that equals this one, taken out of its slot; null when there is none.
char *takeEqual(char **remaining, std::uint32_t count, const char *text) {
    for (std::uint32_t i = 0; i < count; ++i) {
        if (remaining[i] == nullptr || vx::compareText(remaining[i], text) != 0) continue;
        char *taken = remaining[i];
        remaining[i] = nullptr;
        return taken;
    }
    return nullptr;
}

bool owns(const VxSearchPath *list, const char *text) {
    return std::find(list->entries, list->entries + list->count, text) !=
           list->entries + list->count;
}

// Fills `merged` with the source's texts, those of `remaining` where one is equal and copies
// elsewhere, then with what remains. Returns how many there are, or -1 without memory.
std::int64_t merge(char **merged, char **remaining, const VxSearchPath *destination,
                   const VxSearchPath *source) {
    std::int64_t filled = 0;
    for (std::uint32_t i = 0; i < source->count; ++i) {
        char *text = takeEqual(remaining, destination->count, source->entries[i]);
        if (text == nullptr) text = copyOf(source->entries[i]);
        if (text == nullptr) {
            // The destination still has its texts; only the copies go.
            while (filled-- != 0) {
                if (!owns(destination, merged[filled])) std::free(merged[filled]);
            }
            return -1;
        }
        merged[filled++] = text;
    }
    for (std::uint32_t i = 0; i < destination->count; ++i) {
        if (remaining[i] != nullptr) merged[filled++] = remaining[i];
    }
    return filled;
}

}  // namespace

VxSearchPath *vxSearchPathCreate(const char *text) {
    auto *list = static_cast<VxSearchPath *>(std::calloc(1, sizeof(VxSearchPath)));
    if (list == nullptr) return nullptr;
    if (text == nullptr) text = "";
    list->capacity = std::max(countSegments(text), kMinCapacity);
    list->entries = newEntries(list->capacity);
    char *current = vx::currentDirectory(kMinDirectoryRoom);
    // Without a current directory relative entries are dropped, but not for want of memory.
    const bool starved = current == nullptr && errno == ENOMEM;
    if (list->entries == nullptr || starved || !appendSegments(list, text, current)) {
        vxSearchPathFree(list);
        list = nullptr;
    }
    std::free(current);
    return list;
}

void vxSearchPathFree(VxSearchPath *list) {
    if (list == nullptr) return;
    freeEntries(list->entries, list->count);
    std::free(list);
}

bool searchPathCopy(VxSearchPath *destination, const VxSearchPath *source) {
    if (destination == nullptr || source == nullptr || destination == source) return false;
    char **entries = newEntries(source->capacity);
    if (entries == nullptr) return false;
    for (std::uint32_t i = 0; i < source->count; ++i) {
        entries[i] = copyOf(source->entries[i]);
        if (entries[i] == nullptr) {
            freeEntries(entries, i);
            return false;
        }
    }
    freeEntries(destination->entries, destination->count);
    *destination = {source->count, source->capacity, entries, source->longest};
    return true;
}

void vxSearchPathCopy(VxSearchPath *destination, const VxSearchPath *source) {
    searchPathCopy(destination, source);
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
        if (vxPathCompare(list->entries[i], path) == 0) return static_cast<int>(i);
    }
    return -1;
}

char *vxSearchPathToString(const VxSearchPath *list) {
    assert(list != nullptr);
    if (list->count == 0) return copyOf("");
    std::size_t size = 0;
    for (std::uint32_t i = 0; i < list->count; ++i)
        size += std::strlen(list->entries[i]) + 1;
    auto *text = static_cast<char *>(std::malloc(size));
    if (text == nullptr) return nullptr;
    char *end = text;
    for (std::uint32_t i = 0; i < list->count; ++i) {
        const std::size_t length = std::strlen(list->entries[i]);
        std::memcpy(end, list->entries[i], length);
        end[length] = ';';
        end += length + 1;
    }
    end[-1] = '\0';
    return text;
}

int vxSearchPathInsert(VxSearchPath *list, std::uint32_t index, const char *path) {
    if (list == nullptr || vxPathIsAbsolute(path) == 0 || index > list->count ||
        vxSearchPathIndexOf(list, path) >= 0) {
        return 0;
    }
    if (list->count == list->capacity && !grow(list)) return 0;
    const std::size_t length = std::strlen(path);
    auto *text = length < kLongestEntry ? static_cast<char *>(std::malloc(length + 2)) : nullptr;
    if (text == nullptr) return 0;
    std::memcpy(text, path, length);
    std::strcpy(text + length, "/");
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

bool searchPathPrepend(VxSearchPath *destination, const VxSearchPath *source) {
    if (destination == nullptr || source == nullptr) return true;
    const std::uint32_t capacity = std::max(destination->count + source->count, kMinCapacity);
    char **merged = newEntries(capacity);
    char **remaining = newEntries(capacity);
    std::int64_t count = -1;
    if (merged != nullptr && remaining != nullptr) {
        std::memcpy(remaining, destination->entries, destination->count * sizeof(char *));
        count = merge(merged, remaining, destination, source);
    }
    std::free(remaining);
    if (count < 0) {
        std::free(merged);
        return false;
    }
    std::free(destination->entries);
    const bool known = destination->longest != 0 && source->longest != 0;
    *destination = {static_cast<std::uint32_t>(count), capacity, merged,
                    known ? std::max(destination->longest, source->longest) : 0};
    return true;
}

void vxSearchPathPrepend(VxSearchPath *destination, const VxSearchPath *source) {
    searchPathPrepend(destination, source);
}

void vxSearchPathRemove(VxSearchPath *list, std::uint32_t index) {
    if (list == nullptr || index >= list->count) return;
    std::free(list->entries[index]);
    std::memmove(list->entries + index, list->entries + index + 1,
                 (list->count - index - 1) * sizeof(char *));
    list->entries[--list->count] = nullptr;
    if (list->capacity > kMinCapacity && list->count < list->capacity / 4) shrink(list);
    list->longest = 0;
}

void vxSearchPathSwap(VxSearchPath *list, std::uint32_t one, std::uint32_t other) {
    if (list == nullptr || one >= list->count || other >= list->count) return;
    std::swap(list->entries[one], list->entries[other]);
}
