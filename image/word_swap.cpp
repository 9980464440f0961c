#include "image/image_internal.h"

#include <vximage.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

// Through memcpy, which compiles to plain loads and stores at any alignment.
template <typename Word, typename Swap>
void swapWords(void *data, int byteCount, Swap swap) {
    auto *at = static_cast<unsigned char *>(data);
    const std::size_t words =
        byteCount > 0 ? static_cast<std::size_t>(byteCount) / sizeof(Word) : 0;
    for (std::size_t i = 0; i < words; ++i) {
        Word word;
        std::memcpy(&word, at + i * sizeof word, sizeof word);
        word = swap(word);
        std::memcpy(at + i * sizeof word, &word, sizeof word);
    }
}

}  // namespace

void vxSwapShorts(void *data, int byteCount) {
    swapWords<std::uint16_t>(data, byteCount, [](std::uint16_t word) {
        return static_cast<std::uint16_t>(word << 8 | word >> 8);
    });
}

void vxSwapLongs(void *data, int byteCount) {
    swapWords<std::uint32_t>(data, byteCount, [](std::uint32_t word) {
        return word << 24 | (word << 8 & 0xFF0000U) | (word >> 8 & 0xFF00U) | word >> 24;
    });
}

void vxImageSwapHeader(VxImage *image) {
    auto *header = reinterpret_cast<unsigned char *>(image);
    constexpr int kLongs = offsetof(VxImage, minValue);  // 16-bit words up to here
    constexpr int kName = offsetof(VxImage, name);
    vxSwapShorts(header, kLongs);
    vxSwapLongs(header + kLongs, kName - kLongs);
    vxSwapLongs(header + offsetof(VxImage, colormap), sizeof image->colormap);
}
