#include "platform/memory.h"

#include <string_view>

namespace vx {

namespace {

const char *placeIn(const char *text, std::size_t index) {
    return index != std::string_view::npos ? text + index : nullptr;
}

}  // namespace

const void *findBytes(const char *text, std::size_t size, const char *pattern, std::size_t length) {
    return placeIn(text, std::string_view(text, size).find({pattern, length}));
}

const void *findLastByte(const char *text, char byte, std::size_t size) {
    return placeIn(text, std::string_view(text, size).rfind(byte));
}

}  // namespace vx
