// Record converters beside the same swaps by hand, both behind a call of a shared library, and
// swapping of word arrays beside swab and memcpy.

#include "swaps_by_hand.h"

#include <vxbyteorder.h>
#include <vximage.h>

#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstring>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kRecords = 64;

// ---- Records ------------------------------------------------------------------------------

template <void (*convert)(void *), std::size_t span>
void records(benchmark::State &state) {
    std::vector<unsigned char> memory(kRecords * (span + 8));
    while (state.KeepRunningBatch(kRecords)) {
        for (std::size_t i = 0; i < kRecords; ++i)
            convert(memory.data() + i * (span + 8));
        benchmark::ClobberMemory();
    }
}

BENCHMARK_TEMPLATE(records, vxSwapRecord249, 12);
BENCHMARK_TEMPLATE(records, hand249, 12);
BENCHMARK_TEMPLATE(records, vxSwapRecord252, 30);
BENCHMARK_TEMPLATE(records, hand252, 30);
BENCHMARK_TEMPLATE(records, vxSwapRecord229, 66);
BENCHMARK_TEMPLATE(records, hand229, 66);
BENCHMARK_TEMPLATE(records, vxSwapRecord241, 152);
BENCHMARK_TEMPLATE(records, hand241, 152);

// ---- Word arrays: bytes and misalignment --------------------------------------------------

template <void (*convert)(unsigned char *, unsigned char *, int)>
void words(benchmark::State &state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    std::vector<unsigned char> memory(2 * size + 128, 1);
    unsigned char *from = memory.data() + state.range(1);
    for (auto _ : state) {
        convert(from, from + size + 64, static_cast<int>(size));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void shorts(unsigned char *from, unsigned char *, int size) {
    vxSwapShorts(from, size);
}

void longs(unsigned char *from, unsigned char *, int size) {
    vxSwapLongs(from, size);
}

void bySwab(unsigned char *from, unsigned char *to, int size) {
    swab(from, to, size);
}

void byMemcpy(unsigned char *from, unsigned char *to, int size) {
    std::memcpy(to, from, static_cast<std::size_t>(size));
}

constexpr int kSmall = 4096;
constexpr int kLarge = 64 << 20;

BENCHMARK_TEMPLATE(words, shorts)->Args({kSmall, 0})->Args({kSmall, 1})->Args({kLarge, 0});
BENCHMARK_TEMPLATE(words, longs)->Args({kSmall, 0})->Args({kSmall, 1})->Args({kLarge, 0});
BENCHMARK_TEMPLATE(words, bySwab)->Args({kSmall, 0})->Args({kSmall, 1});
BENCHMARK_TEMPLATE(words, byMemcpy)->Args({kLarge, 0});

}  // namespace
