// Searches in bytes for which some C libraries have fast functions.

#ifndef VX_PLATFORM_MEMORY_H
#define VX_PLATFORM_MEMORY_H

#include <cstddef>

namespace vx {

// The first place where the bytes of a pattern occur, or null.
const void *findBytes(const char *text, std::size_t size, const char *pattern, std::size_t length);

// The last place of a byte, or null.
const void *findLastByte(const char *text, char byte, std::size_t size);

}  // namespace vx

#endif
