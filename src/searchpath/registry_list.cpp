#include "searchpath/registry_list.h"

#include "platform/code_page.h"
#include "platform/environment.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <tuple>
#include <utility>

namespace vx {

namespace {

constexpr std::size_t kMaxNameLength = 15;
constexpr std::size_t kMaxDataBytes = VX_STORED_ENTRY_LENGTH + 1;

// The values before the first one that is too long. All after it count as not there.
std::span<const RegistryValue> readableValues(const RegistryKey &key) {
    const auto isTooLong = [](const RegistryValue &value) {
        return value.name.size() > kMaxNameLength || value.data.size() > kMaxDataBytes;
    };
    const auto values = key.values();
    return {values.begin(), std::ranges::find_if(values, isTooLong)};
}

struct Entry {
    int number;
    std::string text;
};

std::vector<Entry> readEntries(const RegistryKey &key) {
    std::vector<Entry> entries;
    for (const RegistryValue &value : readableValues(key)) {
        if (value.type != kRegistryText || entries.size() == VX_STORED_LIST_ENTRIES) continue;
        entries.push_back({static_cast<int>(std::strtol(value.name.c_str(), nullptr, 10)),
                           expandEnvironment(value.data.c_str())});
    }
    return entries;
}

// Keeps one entry per text, with the lowest of its numbers, in the order of the numbers.
void removeRepeats(std::vector<Entry> &entries) {
    std::ranges::sort(entries, [](const Entry &one, const Entry &other) {
        const int order = compareText(one.text.c_str(), other.text.c_str());
        return order != 0 ? order < 0 : one.number < other.number;
    });
    const auto isRepeat = [](const Entry &one, const Entry &next) { return one.text == next.text; };
    entries.erase(std::unique(entries.begin(), entries.end(), isRepeat), entries.end());
    std::ranges::stable_sort(entries, {}, &Entry::number);
}

}  // namespace

std::string readRegistryList(Registry &registry, const std::string &path) {
    std::vector<Entry> entries = readEntries(RegistryKey(registry, path));
    removeRepeats(entries);
    std::string text;
    for (const Entry &entry : entries)
        text += entry.text + ";";
    if (!text.empty()) text.pop_back();
    return text;
}

SaveResult writeRegistryList(Registry &registry, const std::string &path,
                             const VxSearchPath *list) {
    RegistryKey key(registry, path);
    key.removeFirst(readableValues(key).size());
    for (std::uint32_t i = 0; i < list->count; ++i) {
        const char *text = list->entries[i];
        key.set({std::to_string(i), kRegistryText, std::string(text, std::strlen(text) + 1)});
    }
    return key.save();
}

}  // namespace vx
