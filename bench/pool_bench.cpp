// Pools beside malloc, the pools of the standard library and those of Boost.

#include <vxpool.h>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <malloc.h>
#include <memory_resource>
#include <numeric>
#include <random>
#include <vector>

#if __has_include(<boost/pool/pool.hpp>)
#include <boost/pool/pool.hpp>
#define VX_BENCH_BOOST 1
#endif

namespace {

constexpr int kSize = 48;
constexpr int kPerBlock = 1000;
constexpr std::size_t kElements = 100000;
constexpr std::size_t kManyElements = 1000000;

// Memory stays with the process in all of them: its page faults are not what is compared.
[[maybe_unused]] const int keepMemory =
    mallopt(M_MMAP_THRESHOLD, 1 << 30) + mallopt(M_TRIM_THRESHOLD, 1 << 30);

struct Vx {
    VxPool pool;
    Vx() { vxPoolInit(&pool, kSize, kPerBlock); }
    ~Vx() { vxPoolDestroy(&pool); }
    void *take() { return vxPoolAlloc(&pool); }
    void give(void *element) { vxPoolFree(&pool, element); }
    void drop(std::vector<void *> &) { vxPoolDestroy(&pool); }
    void startAnew(const std::vector<void *> &) { vxPoolRecycle(&pool); }
};

struct Malloc {
    static void *take() { return std::malloc(kSize); }
    static void give(void *element) { std::free(element); }
    static void drop(std::vector<void *> &elements) {
        for (void *element : elements)
            std::free(element);
    }
};

struct Pmr {
    std::pmr::unsynchronized_pool_resource pool;
    void *take() { return pool.allocate(kSize); }
    void give(void *element) { pool.deallocate(element, kSize); }
    void drop(std::vector<void *> &) { pool.release(); }
};

template <typename Pool>
void fillAndDrop(benchmark::State &state) {
    std::vector<void *> elements(kElements);
    Pool pool;
    while (state.KeepRunningBatch(kElements)) {
        for (void *&element : elements)
            element = pool.take();
        benchmark::ClobberMemory();
        pool.drop(elements);
    }
}

std::vector<std::size_t> shuffled(std::size_t count) {
    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::shuffle(order.begin(), order.end(), std::mt19937(1));
    return order;
}

template <typename Pool>
void freeAndTake(benchmark::State &state) {
    const std::vector<std::size_t> order = shuffled(kElements);
    std::vector<void *> elements(kElements);
    Pool pool;
    for (void *&element : elements)
        element = pool.take();
    while (state.KeepRunningBatch(kElements)) {
        for (const std::size_t i : order) {
            pool.give(elements[i]);
            elements[i] = pool.take();
        }
    }
    pool.drop(elements);
}

// All elements are done with, in no order; the same number is taken again.
template <typename Pool>
void startAnew(benchmark::State &state) {
    std::vector<void *> elements(kManyElements);
    Pool pool;
    for (void *&element : elements)
        element = pool.take();
    std::shuffle(elements.begin(), elements.end(), std::mt19937(1));
    while (state.KeepRunningBatch(kManyElements)) {
        pool.startAnew(elements);
        for (std::size_t i = 0; i < kManyElements; ++i)
            benchmark::DoNotOptimize(pool.take());
    }
}

BENCHMARK_TEMPLATE(fillAndDrop, Vx);
BENCHMARK_TEMPLATE(fillAndDrop, Malloc);
BENCHMARK_TEMPLATE(fillAndDrop, Pmr);
BENCHMARK_TEMPLATE(freeAndTake, Vx);
BENCHMARK_TEMPLATE(freeAndTake, Malloc);
BENCHMARK_TEMPLATE(freeAndTake, Pmr);
BENCHMARK_TEMPLATE(startAnew, Vx);

#ifdef VX_BENCH_BOOST
struct Boost {
    boost::pool<> pool{kSize};
    void *take() { return pool.malloc(); }
    void give(void *element) { pool.free(element); }
    void drop(std::vector<void *> &) { pool.purge_memory(); }
    void startAnew(const std::vector<void *> &elements) {
        for (void *element : elements)
            pool.free(element);
    }
};

BENCHMARK_TEMPLATE(fillAndDrop, Boost);
BENCHMARK_TEMPLATE(freeAndTake, Boost);
BENCHMARK_TEMPLATE(startAnew, Boost);
#endif

// The price of any call into a shared library, which header-only pools do not pay.
void emptyCall(benchmark::State &state) {
    VxPool pool;
    vxPoolInit(&pool, kSize, kPerBlock);
    for (auto _ : state)
        vxPoolFree(&pool, nullptr);
}
BENCHMARK(emptyCall);

}  // namespace
