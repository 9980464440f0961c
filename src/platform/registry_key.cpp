// What a key of the registry does before it is saved, the same on every system.

#include "platform/code_page.h"
#include "platform/registry.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace vx {

std::string foldedName(std::string_view name) {
    std::string folded(name);
    std::ranges::transform(folded, folded.begin(), lowered);
    return folded;
}

void RegistryKey::set(RegistryValue value) {
    if (places_.empty()) {
        for (std::size_t i = 0; i < values_.size(); ++i)
            places_.try_emplace(foldedName(values_[i].name), i);
    }
    const auto [place, isNew] = places_.try_emplace(foldedName(value.name), values_.size());
    if (isNew) {
        values_.push_back(std::move(value));
    } else {
        values_[place->second] = std::move(value);
    }
}

void RegistryKey::removeFirst(std::size_t count) {
    assert(count <= values_.size());
    values_.erase(values_.begin(), values_.begin() + static_cast<std::ptrdiff_t>(count));
    places_.clear();
}

}  // namespace vx
