#include "image/image_internal.h"

#include <vximage.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

// Through memcpy, which compiles to plain loads and stores at any alignment.
template <typename Word, typename Change>
void changeWords(unsigned char *at, std::size_t count, Change change) {
    for (std::size_t i = 0; i < count; ++i) {
        Word word;
        std::memcpy(&word, at + i * sizeof word, sizeof word);
        word = change(word);
        std::memcpy(at + i * sizeof word, &word, sizeof word);
    }
}

void swapShorts(unsigned char *at, std::size_t count) {
    changeWords<std::uint16_t>(at, count, [](std::uint16_t word) {
        return static_cast<std::uint16_t>(word << 8 | word >> 8);
    });
}

void exchangeHalves(unsigned char *at, std::size_t count) {
    changeWords<std::uint32_t>(at, count,
                               [](std::uint32_t word) { return word << 16 | word >> 16; });
}

std::size_t wordsIn(int byteCount, std::size_t wordBytes) {
    return byteCount > 0 ? static_cast<std::size_t>(byteCount) / wordBytes : 0;
}

}  // namespace

void vxSwapShorts(void *data, int byteCount) {
    swapShorts(static_cast<unsigned char *>(data), wordsIn(byteCount, 2));
}

// In two passes over blocks that stay in the nearest cache: each pass is made of operations that
// the machine does on many words at once, where a reversal of four bytes is not one of them.
void vxSwapLongs(void *data, int byteCount) {
    constexpr std::size_t kBlock = 1024;
    auto *at = static_cast<unsigned char *>(data);
    for (std::size_t left = wordsIn(byteCount, 4); left != 0;) {
        const std::size_t count = std::min(left, kBlock);
        swapShorts(at, 2 * count);
        exchangeHalves(at, count);
        at += 4 * count;
        left -= count;
    }
}

void vxImageSwapHeader(VxImage *image) {
    auto *header = reinterpret_cast<unsigned char *>(image);
    constexpr int kLongs = offsetof(VxImage, minValue);  // 16-bit words up to here
    constexpr int kName = offsetof(VxImage, name);
    vxSwapShorts(header, kLongs);
    vxSwapLongs(header + kLongs, kName - kLongs);
    vxSwapLongs(header + offsetof(VxImage, colormap), sizeof image->colormap);
}
