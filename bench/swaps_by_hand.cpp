#include "swaps_by_hand.h"

#include <cstdint>
#include <cstring>

namespace {

void hand16(unsigned char *at) {
    std::uint16_t word;
    std::memcpy(&word, at, sizeof word);
    word = __builtin_bswap16(word);
    std::memcpy(at, &word, sizeof word);
}

void hand32(unsigned char *at) {
    std::uint32_t word;
    std::memcpy(&word, at, sizeof word);
    word = __builtin_bswap32(word);
    std::memcpy(at, &word, sizeof word);
}

void hand64(unsigned char *at) {
    std::uint64_t word;
    std::memcpy(&word, at, sizeof word);
    word = __builtin_bswap64(word);
    std::memcpy(at, &word, sizeof word);
}

}  // namespace

void hand249(void *record) {
    auto *at = static_cast<unsigned char *>(record);
    for (int i = 0; i < 3; ++i)
        hand32(at + i * 4);
}

void hand252(void *record) {
    auto *at = static_cast<unsigned char *>(record);
    hand16(at);
    for (int i = 0; i < 4; ++i)
        hand32(at + 4 + i * 4);
    for (int i = 0; i < 5; ++i)
        hand16(at + 20 + i * 2);
}

void hand229(void *record) {
    auto *at = static_cast<unsigned char *>(record);
    hand16(at);
    for (int i = 0; i < 15; ++i)
        hand32(at + 4 + i * 4);
    hand16(at + 64);
}

void hand241(void *record) {
    auto *at = static_cast<unsigned char *>(record);
    hand16(at);
    for (int i = 0; i < 18; ++i)
        hand32(at + 4 + i * 4);
    hand16(at + 76);
    for (int i = 0; i < 9; ++i)
        hand64(at + 80 + i * 8);
}
