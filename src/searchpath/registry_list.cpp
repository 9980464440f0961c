#include "searchpath/registry_list.h"

#include "platform/code_page.h"
#include "platform/environment.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr unsigned kNameSize = 16;
constexpr unsigned kDataSize = 260;
constexpr std::size_t kMaxRecords = 128;

struct Value {
    char name[kNameSize];
    unsigned type;
    char data[kDataSize + 1];  // one more, for values that come without a terminator
};

bool fetch(vx::HKEY key, unsigned index, Value &value) {
    unsigned nameSize = kNameSize;
    unsigned dataSize = kDataSize;
    if (vx::RegEnumValueA(key, index, value.name, &nameSize, &value.type,
                          reinterpret_cast<unsigned char *>(value.data),
                          &dataSize) != vx::ERROR_SUCCESS) {
        return false;
    }
    value.data[dataSize] = '\0';
    return true;
}

struct Record {
    int number;
    char *text;
};

// New heap text, or null without memory.
char *expanded(const char *text) {
    try {
        return ::strdup(vx::expandEnvironment(text).c_str());
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

std::size_t gather(vx::HKEY key, Record *records, bool *failed) {
    std::size_t count = 0;
    Value value;
    for (unsigned index = 0; fetch(key, index, value); ++index) {
        if (value.type != vx::REG_SZ || count == kMaxRecords) continue;
        char *text = expanded(value.data);
        if (text == nullptr) {
            *failed = true;
            continue;
        }
        // As atoi, which leaves open what a number too large for an int gives.
        records[count++] = {static_cast<int>(std::strtol(value.name, nullptr, 10)), text};
    }
    return count;
}

int byNumber(const void *left, const void *right) {
    const int one = static_cast<const Record *>(left)->number;
    const int other = static_cast<const Record *>(right)->number;
    return one < other ? -1 : one > other;
}

int byText(const void *left, const void *right) {
    const int order = vx::compareText(static_cast<const Record *>(left)->text,
                                      static_cast<const Record *>(right)->text);
    return order != 0 ? order : byNumber(left, right);
}

// Of equal texts keeps the one with the lowest number, and orders what is left by number.
std::size_t withoutRepeats(Record *records, std::size_t count) {
    if (count == 0) return 0;
    std::qsort(records, count, sizeof *records, byText);
    std::size_t kept = 1;
    for (std::size_t i = 1; i < count; ++i) {
        if (vx::compareText(records[i].text, records[kept - 1].text) == 0) {
            std::free(records[i].text);
        } else {
            records[kept++] = records[i];
        }
    }
    std::qsort(records, kept, sizeof *records, byNumber);
    return kept;
}

// The texts with the separator between each two, as new heap text; releases the records.
char *join(const Record *records, std::size_t count, char separator) {
    std::size_t total = 0;
    for (std::size_t i = 0; i < count; ++i)
        total += std::strlen(records[i].text) + 1;
    auto *joined = count != 0 ? static_cast<char *>(std::malloc(total)) : nullptr;
    char *end = joined;
    for (std::size_t i = 0; i < count; ++i) {
        if (joined != nullptr) {
            const std::size_t length = std::strlen(records[i].text);
            std::memcpy(end, records[i].text, length);
            end[length] = separator;
            end += length + 1;
        }
        std::free(records[i].text);
    }
    if (joined != nullptr) end[-1] = '\0';
    return joined;
}

}  // namespace

char *vxRegistryReadList(vx::RootKey root, const char *key, char separator, bool *failed) {
    vx::HKEY open = nullptr;
    const int result = vx::RegOpenKeyExA(root, key, vx::KEY_READ, &open);
    *failed = result != vx::ERROR_SUCCESS && result != vx::ERROR_FILE_NOT_FOUND;
    if (result != vx::ERROR_SUCCESS) return nullptr;
    Record records[kMaxRecords];
    const std::size_t count = withoutRepeats(records, gather(open, records, failed));
    char *text = join(records, count, separator);
    if (text == nullptr && count != 0) *failed = true;
    vx::RegCloseKey(open);
    return text;
}

void vxRegistryWriteList(vx::RootKey root, const char *key, const VxSearchPath *list) {
    constexpr unsigned kAccess = vx::KEY_READ | vx::KEY_WRITE;
    vx::HKEY open = nullptr;
    if (vx::RegOpenKeyExA(root, key, kAccess, &open) != vx::ERROR_SUCCESS &&
        vx::RegCreateKeyExA(root, key, kAccess, &open) != vx::ERROR_SUCCESS) {
        return;
    }
    Value value;
    while (fetch(open, 0, value) && vx::RegDeleteValueA(open, value.name) == vx::ERROR_SUCCESS) {
    }
    for (std::uint32_t i = 0; i < list->count; ++i) {
        char name[kNameSize];
        std::snprintf(name, sizeof name, "%d", static_cast<int>(i));
        const char *text = list->entries[i];
        vx::RegSetValueExA(open, name, vx::REG_SZ, reinterpret_cast<const unsigned char *>(text),
                           static_cast<unsigned>(std::strlen(text) + 1));
    }
    vx::RegCloseKey(open);
}
