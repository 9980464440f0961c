// Elements that nobody may touch, told to AddressSanitizer; nothing in other builds.

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

inline void poison(const void *memory, std::size_t size) {
    __asan_poison_memory_region(memory, size);
}

inline void unpoison(const void *memory, std::size_t size) {
    __asan_unpoison_memory_region(memory, size);
}
#else
inline void poison(const void *, std::size_t) {}
inline void unpoison(const void *, std::size_t) {}
#endif

#endif
