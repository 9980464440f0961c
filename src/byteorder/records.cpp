// The record converters, compiled from their layouts. Each becomes straight code without a loop or
// a table at run time.

#include <vxbyteorder.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

// memcpy compiles to plain loads and stores at any alignment.
template <typename Word, typename Reverse>
void reverse(void *value, Reverse reverseWord) {
    Word word;
    std::memcpy(&word, value, sizeof word);
    word = reverseWord(word);
    std::memcpy(value, &word, sizeof word);
}

template <int width>
void reverseField(void *field) {
    static_assert(width == 2 || width == 4 || width == 8);
    if constexpr (width == 2) {
        reverse<std::uint16_t>(field, [](std::uint16_t word) { return __builtin_bswap16(word); });
    } else if constexpr (width == 4) {
        reverse<std::uint32_t>(field, [](std::uint32_t word) { return __builtin_bswap32(word); });
    } else {
        reverse<std::uint64_t>(field, [](std::uint64_t word) { return __builtin_bswap64(word); });
    }
}

// A stretch of a layout: `count` fields of `width` bytes, or a gap of `width` bytes.
struct Stretch {
    int width;
    int count;

    constexpr int bytes() const { return count == 0 ? width : count * width; }
};

constexpr Stretch x2{2, 1};
constexpr Stretch x4{4, 1};
constexpr Stretch x8{8, 1};

constexpr Stretch operator*(int count, Stretch field) {
    return {field.width, count};
}

constexpr Stretch skip(int bytes) {
    return {bytes, 0};
}

template <int width, std::size_t... i>
void reverseFields(unsigned char *fields, std::index_sequence<i...>) {
    (reverseField<width>(fields + i * width), ...);
}

template <Stretch stretch>
void reverseStretch(unsigned char *&at) {
    reverseFields<stretch.width>(at, std::make_index_sequence<stretch.count>());
    at += stretch.bytes();
}

template <Stretch... layout>
void reverseRecord(void *record) {
    auto *at = static_cast<unsigned char *>(record);
    (reverseStretch<layout>(at), ...);
}

}  // namespace

void vxSwap2(void *value) {
    reverseField<2>(value);
}

void vxSwap4(void *value) {
    reverseField<4>(value);
}

void vxSwap8(void *value) {
    reverseField<8>(value);
}

void vxSwapVector3(void *vector) {
    reverseRecord<3 * x4>(vector);
}

void vxSwapVector3Alt(void *vector) {
    reverseRecord<3 * x4>(vector);
}

#define VX_RECORD(ordinal, ...)                \
    void vxSwapRecord##ordinal(void *record) { \
        reverseRecord<__VA_ARGS__>(record);    \
    }
#define VX_SAME_RECORD(ordinal, other) \
    void vxSwapRecord##ordinal(void *record) __attribute__((alias("vxSwapRecord" #other)));
#include "record_layouts.inc"
#undef VX_RECORD
#undef VX_SAME_RECORD
