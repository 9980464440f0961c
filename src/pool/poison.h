// Marks elements that nobody may touch for AddressSanitizer. Does nothing in other builds.

#ifndef VX_POOL_POISON_H
#define VX_POOL_POISON_H

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define VX_POISON 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VX_POISON 1
#endif
#endif

#ifdef VX_POISON
#include <sanitizer/asan_interface.h>
#endif

namespace vx {

#ifdef VX_POISON
// Not inlined: gcc would warn about new memory that is passed on before it is written.
[[gnu::noinline]] inline void poison(void *memory, std::size_t size) {
    __asan_poison_memory_region(memory, size);
}

inline void unpoison(void *memory, std::size_t size) {
    __asan_unpoison_memory_region(memory, size);
}
#else
inline void poison(void *, std::size_t) {}
inline void unpoison(void *, std::size_t) {}
#endif

}  // namespace vx

#endif
