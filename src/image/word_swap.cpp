#include "image/image_internal.h"

#include <vximage.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

// Vectors of 16 bytes by the compiler's extension. With the baseline instructions of x86-64 it does
// not find a fast way to reverse four bytes by itself: swap the bytes of the halves, then the
// halves.
using Shorts = std::uint16_t __attribute__((vector_size(16)));
using Longs = std::uint32_t __attribute__((vector_size(16)));

Shorts reversed(Shorts words) {
    return words << 8 | words >> 8;
}

Longs reversed(Longs words) {
    const auto halves = reinterpret_cast<Longs>(reversed(reinterpret_cast<Shorts>(words)));
    return halves << 16 | halves >> 16;
}

// Through memcpy, which compiles to plain loads and stores at any alignment. The words after the
// last complete vector go through a vector as well.
template <typename Words>
void reverseWords(void *to, const void *from, int byteCount) {
    constexpr std::size_t kWordBytes = sizeof(Words{}[0]);
    if (byteCount <= 0) return;
    auto *out = static_cast<unsigned char *>(to);
    const auto *in = static_cast<const unsigned char *>(from);
    std::size_t left = static_cast<std::size_t>(byteCount) / kWordBytes * kWordBytes;
    Words words = {};
    for (; left >= sizeof words; left -= sizeof words, in += sizeof words, out += sizeof words) {
        std::memcpy(&words, in, sizeof words);
        words = reversed(words);
        std::memcpy(out, &words, sizeof words);
    }
    std::memcpy(&words, in, left);
    words = reversed(words);
    std::memcpy(out, &words, left);
}

}  // namespace

void vx::swapShorts(void *to, const void *from, int byteCount) {
    reverseWords<Shorts>(to, from, byteCount);
}

void vxSwapShorts(void *data, int byteCount) {
    reverseWords<Shorts>(data, data, byteCount);
}

void vxSwapLongs(void *data, int byteCount) {
    reverseWords<Longs>(data, data, byteCount);
}

void vxImageSwapHeader(VxImage *image) {
    auto *header = reinterpret_cast<unsigned char *>(image);
    constexpr int kLongs = offsetof(VxImage, minValue);  // 16-bit words up to here
    constexpr int kName = offsetof(VxImage, name);
    vxSwapShorts(header, kLongs);
    vxSwapLongs(header + kLongs, kName - kLongs);
    vxSwapLongs(header + offsetof(VxImage, colormap), sizeof image->colormap);
}
