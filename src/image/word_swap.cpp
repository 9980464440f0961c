#include "image/image_internal.h"

#include <vximage.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

// Eight words at a time, in the compiler's own vectors: it does not find by itself how to reverse
// four bytes with what every machine of this kind can do.
using Shorts = std::uint16_t __attribute__((vector_size(16)));
using Longs = std::uint32_t __attribute__((vector_size(16)));

Shorts reversed(Shorts words) {
    return words << 8 | words >> 8;
}

Longs reversed(Longs words) {
    const auto halves = reinterpret_cast<Longs>(reversed(reinterpret_cast<Shorts>(words)));
    return halves << 16 | halves >> 16;
}

// Through memcpy, which compiles to plain loads and stores at any alignment. The words behind the
// last whole vector go through one as well.
template <typename Words>
void reverseWords(void *data, int byteCount, std::size_t wordBytes) {
    if (byteCount <= 0) return;
    auto *at = static_cast<unsigned char *>(data);
    std::size_t left = static_cast<std::size_t>(byteCount) / wordBytes * wordBytes;
    Words words = {};
    for (; left >= sizeof words; left -= sizeof words, at += sizeof words) {
        std::memcpy(&words, at, sizeof words);
        words = reversed(words);
        std::memcpy(at, &words, sizeof words);
    }
    std::memcpy(&words, at, left);
    words = reversed(words);
    std::memcpy(at, &words, left);
}

}  // namespace

void vxSwapShorts(void *data, int byteCount) {
    reverseWords<Shorts>(data, byteCount, 2);
}

void vxSwapLongs(void *data, int byteCount) {
    reverseWords<Longs>(data, byteCount, 4);
}

void vxImageSwapHeader(VxImage *image) {
    auto *header = reinterpret_cast<unsigned char *>(image);
    constexpr int kLongs = offsetof(VxImage, minValue);  // 16-bit words up to here
    constexpr int kName = offsetof(VxImage, name);
    vxSwapShorts(header, kLongs);
    vxSwapLongs(header + kLongs, kName - kLongs);
    vxSwapLongs(header + offsetof(VxImage, colormap), sizeof image->colormap);
}
