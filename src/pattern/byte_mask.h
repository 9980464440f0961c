// The places of a byte among 64 bytes, as a word with one bit for each.

#ifndef VX_PATTERN_BYTE_MASK_H
#define VX_PATTERN_BYTE_MASK_H

#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vx {

inline std::uint64_t byteMask(const unsigned char *bytes, unsigned char byte) {
    std::uint64_t mask = 0;
#if defined(__SSE2__)
    const __m128i wanted = _mm_set1_epi8(static_cast<char>(byte));
    for (unsigned i = 0; i < 64; i += 16) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes + i));
        const int equal = _mm_movemask_epi8(_mm_cmpeq_epi8(block, wanted));
        mask |= std::uint64_t{static_cast<unsigned>(equal)} << i;
    }
#else
    for (unsigned i = 0; i < 64; ++i)
        mask |= std::uint64_t{bytes[i] == byte} << i;
#endif
    return mask;
}

}  // namespace vx

#endif
