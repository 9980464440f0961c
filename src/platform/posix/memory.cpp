#include "platform/memory.h"

#include <cstring>

namespace vx {

const void *findBytes(const char *text, std::size_t size, const char *pattern, std::size_t length) {
    return ::memmem(text, size, pattern, length);
}

const void *findLastByte(const char *text, char byte, std::size_t size) {
    return ::memrchr(text, byte, size);
}

}  // namespace vx
