// Pools under random use against a model, and each way to fail. Linked with --wrap for malloc.

#include "pool/poison.h"

#include <vxframework.h>
#include <vxpool.h>

#include <algorithm>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <random>
#include <utility>
#include <vector>

namespace {

bool mallocFails;
int mallocs;

}  // namespace

extern "C" {
void *__real_malloc(std::size_t size);

void *__wrap_malloc(std::size_t size) {
    ++mallocs;
    return mallocFails ? nullptr : __real_malloc(size);
}

// In front of the framework's: shows what a report was made of.
int vxMessageReport(const char *catalogue, int severity, int messageId, ...) {
    va_list arguments;
    va_start(arguments, messageId);
    std::fprintf(stderr, "%s %d %d %d\n", catalogue, severity, messageId, va_arg(arguments, int));
    va_end(arguments);
    return 0;
}
}

namespace {

constexpr int kHeader = sizeof(VxPoolBlock);
constexpr int kRecord = sizeof(VxPool);

char *firstElement(VxPoolBlock *block) {
    return reinterpret_cast<char *>(block + 1);
}

// A pool with the elements that are out, each filled with a byte of its own.
class ModelledPool {
public:
    ModelledPool(int size, int perBlock) : size_(static_cast<std::size_t>(size)) {
        vxPoolInit(&pool_, size, perBlock);
    }
    ~ModelledPool() { vxPoolDestroy(&pool_); }
    ModelledPool(const ModelledPool &) = delete;
    ModelledPool &operator=(const ModelledPool &) = delete;

    void alloc() {
        const bool expected = predictAlloc();
        const int mallocsBefore = mallocs;
        auto *element = static_cast<char *>(vxPoolAlloc(&pool_));
        ASSERT_EQ(element != nullptr, expected);
        EXPECT_EQ(mallocs - mallocsBefore, newBlocks_);
        held_ += newBlocks_;
        if (element != nullptr) take(element);
    }

    void allocRun(int count) {
        auto *run = static_cast<char *>(vxPoolAllocBlock(&pool_, count));
        ASSERT_EQ(run != nullptr, count > 0);
        held_ += count > 0 ? 1 : 0;
        for (int i = 0; i < count; ++i, run += size_)
            take(run);
    }

    void freeOne(std::size_t which) {
        if (live_.empty()) return;
        const auto it = std::next(live_.begin(), static_cast<int>(which % live_.size()));
        verify(*it);
        lastFreed_.push_back(it->first);
        vxPoolFree(&pool_, it->first);
        live_.erase(it);
    }

    void setBlockCount(int count) { vxPoolSetBlockCount(&pool_, count); }

    void recycle() {
        drop();
        vxPoolRecycle(&pool_);
        EXPECT_EQ(pool_.blocks, nullptr);
    }

    void destroy() {
        drop();
        vxPoolDestroy(&pool_);
        held_ = 0;
    }

    // The counts are those of the blocks on the two lists, and no block has got lost.
    void verifyCounts() const {
        int blocks = 0;
        int elements = 0;
        for (const VxPoolBlock *list : {pool_.blocks, pool_.spareBlocks}) {
            for (; list != nullptr; list = list->next) {
                ++blocks;
                elements += list->elementCount;
            }
        }
        EXPECT_EQ(blocks, held_);
        EXPECT_EQ(pool_.blockCount, held_);
        EXPECT_EQ(pool_.totalElements, elements);
        EXPECT_EQ(vxPoolSize(&pool_), elements * pool_.elementSize + held_ * kHeader + kRecord);
    }

private:
    // What the next vxPoolAlloc is to do: whether it gives an element, from a new block or not.
    bool predictAlloc() {
        newBlocks_ = 0;
        if (!lastFreed_.empty()) return true;
        if (used_ < std::min(current_, pool_.elementsPerBlock)) {
            ++used_;
            return true;
        }
        if (pool_.elementsPerBlock < 1) return false;
        newBlocks_ = pool_.spareBlocks == nullptr ? 1 : 0;
        current_ = newBlocks_ != 0 ? pool_.elementsPerBlock : pool_.spareBlocks->elementCount;
        used_ = 1;
        return true;
    }

    void take(char *element) {
        if (!lastFreed_.empty() && element == lastFreed_.back()) lastFreed_.pop_back();
        EXPECT_TRUE(liesInABlock(element));
        const auto fill = static_cast<unsigned char>(++fills_);
        EXPECT_TRUE(live_.emplace(element, fill).second) << "handed out twice";
        std::memset(element, fill, size_);
    }

    bool liesInABlock(const char *element) const {
        for (VxPoolBlock *block = pool_.blocks; block != nullptr; block = block->next) {
            const auto offset = reinterpret_cast<std::uintptr_t>(element) -
                                reinterpret_cast<std::uintptr_t>(firstElement(block));
            if (offset < size_ * static_cast<std::size_t>(block->elementCount))
                return offset % size_ == 0;
        }
        return false;
    }

    void verify(const std::pair<char *const, unsigned char> &entry) const {
        for (std::size_t i = 0; i < size_; ++i)
            ASSERT_EQ(static_cast<unsigned char>(entry.first[i]), entry.second) << "overwritten";
    }

    void drop() {
        for (const auto &entry : live_)
            verify(entry);
        live_.clear();
        lastFreed_.clear();
        current_ = used_ = 0;
    }

    VxPool pool_;
    std::size_t size_;
    std::map<char *, unsigned char> live_;
    std::vector<char *> lastFreed_;
    unsigned fills_ = 0;
    int held_ = 0;  // blocks
    int newBlocks_ = 0;
    int current_ = 0;  // elements of the current block, and how many of them are cut
    int used_ = 0;
};

TEST(Pool, RandomUseAgainstAModel) {
    for (const int size : {8, 12, 17, 48, 520}) {
        SCOPED_TRACE(size);
        std::mt19937 random(static_cast<unsigned>(size));
        ModelledPool pool(size, 5);
        for (int step = 0; step < 20000 && !testing::Test::HasFailure(); ++step) {
            const auto choice = random() % 100;
            if (choice < 55) {
                pool.alloc();
            } else if (choice < 86) {
                pool.freeOne(random());
            } else if (choice < 92) {
                pool.allocRun(static_cast<int>(random() % 9) - 1);
            } else if (choice < 97) {
                pool.setBlockCount(static_cast<int>(random() % 12) - 1);
            } else if (choice < 99) {
                pool.recycle();
            } else if (random() % 4 == 0) {
                pool.destroy();
            }
            pool.verifyCounts();
        }
    }
}

TEST(Pool, GivesTheLastFreedFirstAndTheOldestBlockFirst) {
    VxPool pool;
    vxPoolInit(&pool, 24, 3);
    EXPECT_EQ(vxPoolSize(&pool), 48);
    char *elements[7];
    for (char *&element : elements)
        element = static_cast<char *>(vxPoolAlloc(&pool));
    EXPECT_EQ(elements[1], elements[0] + 24);
    EXPECT_EQ(elements[2], elements[1] + 24);
    EXPECT_EQ(pool.blockCount, 3);
    EXPECT_EQ(firstElement(pool.blocks), elements[6]);

    vxPoolFree(&pool, elements[4]);
    vxPoolFree(&pool, nullptr);
    vxPoolFree(&pool, elements[1]);
    EXPECT_EQ(vxPoolAlloc(&pool), elements[1]);
    EXPECT_EQ(vxPoolAlloc(&pool), elements[4]);

    const int size = vxPoolSize(&pool);
    vxPoolRecycle(&pool);
    EXPECT_EQ(vxPoolSize(&pool), size);
    EXPECT_EQ(vxPoolAlloc(&pool), elements[0]);
    EXPECT_EQ(pool.blockCount, 3);

    VxPool forgotten = pool;
    vxPoolReset(&forgotten);
    EXPECT_EQ(vxPoolSize(&forgotten), 48);
    EXPECT_EQ(forgotten.blocks, nullptr);
    EXPECT_EQ(forgotten.spareBlocks, nullptr);
    EXPECT_NE(vxPoolAlloc(&forgotten), nullptr);
    vxPoolDestroy(&forgotten);
    vxPoolDestroy(&pool);
    vxPoolDestroy(&pool);
    EXPECT_EQ(vxPoolSize(&pool), 48);
}

TEST(Pool, ARunGoesInFrontAndTheCurrentBlockGoesOnBehindIt) {
    VxPool pool;
    vxPoolInit(&pool, 16, 100);
    auto *element = static_cast<char *>(vxPoolAlloc(&pool));
    for (int i = 1; i < 100; ++i) {
        auto *run = static_cast<char *>(vxPoolAllocBlock(&pool, 2));
        EXPECT_EQ(firstElement(pool.blocks), run);
        if (i % 3 == 0) vxPoolAllocBlock(&pool, 1);
        EXPECT_EQ(vxPoolAlloc(&pool), element + 16 * i);
    }
    EXPECT_EQ(pool.blockCount, 1 + 99 + 33);
    vxPoolDestroy(&pool);
}

TEST(Pool, IsUnchangedWhenThereIsNoMemory) {
    VxPool pool;
    vxPoolInit(&pool, 16, 1);
    for (const bool behindARun : {false, true}) {
        EXPECT_NE(vxPoolAlloc(&pool), nullptr);
        if (behindARun) vxPoolAllocBlock(&pool, 4);
        const VxPool before = pool;
        mallocFails = true;
        EXPECT_EQ(vxPoolAlloc(&pool), nullptr);
        mallocFails = false;
        EXPECT_EQ(std::memcmp(&pool, &before, sizeof pool), 0);
        EXPECT_NE(vxPoolAlloc(&pool), nullptr);
    }
    vxPoolDestroy(&pool);
}

TEST(Pool, RefusesWhatNoBlockCanBe) {
    const struct {
        int size;
        int perBlock;
    } cases[] = {{0, 4},
                 {-8, 4},
                 {INT32_MIN, INT32_MIN},
                 {8, 0},
                 {8, -1},
                 {65536, 32768},
                 {INT32_MAX, 3},
                 {16, 0x8000000},
                 {8, INT32_MAX},
                 {INT32_MAX - 15, 1}};
    for (const auto &test : cases) {
        SCOPED_TRACE(testing::Message() << test.size << " x " << test.perBlock);
        VxPool pool;
        vxPoolInit(&pool, test.size, test.perBlock);
        const int mallocsBefore = mallocs;
        EXPECT_EQ(vxPoolAlloc(&pool), nullptr);
        EXPECT_EQ(mallocs, mallocsBefore);
        EXPECT_EQ(vxPoolSize(&pool), 48);
    }
    VxPool full;
    vxPoolInit(&full, 48, 4);
    full.totalElements = INT32_MAX - 3;  // as if that many had been made
    EXPECT_EQ(vxPoolAlloc(&full), nullptr);
    EXPECT_EQ(vxPoolSize(&full), INT32_MAX);
}

TEST(PoolDeathTest, ARunWithoutMemoryEndsTheProcess) {
    const struct {
        int size;
        int count;
        bool noMemory;
        const char *report;
    } cases[] = {
        {24, 4, true, "^vxmsg 5 4912 112\n$"},
        {65536, 65536, false, "^vxmsg 5 4912 2147483647\n$"},
        {INT32_MAX - 15, 1, false, "^vxmsg 5 4912 2147483647\n$"},
        {0, 4, false, "^vxmsg 5 4912 16\n$"},
    };
    for (const auto &test : cases) {
        VxPool pool;
        vxPoolInit(&pool, test.size, 10);
        mallocFails = test.noMemory;
        EXPECT_EXIT(vxPoolAllocBlock(&pool, test.count), testing::KilledBySignal(SIGABRT),
                    test.report);
        mallocFails = false;
    }
}

TEST(Pool, PoisonsWhatIsNotHandedOut) {
#ifdef VX_POISON
    VxPool pool;
    vxPoolInit(&pool, 24, 2);
    auto *first = static_cast<char *>(vxPoolAlloc(&pool));
    EXPECT_EQ(__asan_region_is_poisoned(first, 24), nullptr);
    EXPECT_NE(__asan_address_is_poisoned(first + 24), 0);
    auto *run = static_cast<char *>(vxPoolAllocBlock(&pool, 2));
    EXPECT_EQ(__asan_region_is_poisoned(run, 48), nullptr);
    vxPoolFree(&pool, run);
    EXPECT_NE(__asan_address_is_poisoned(run), 0);
    EXPECT_NE(__asan_address_is_poisoned(run + 23), 0);
    EXPECT_EQ(__asan_address_is_poisoned(run + 24), 0);
    vxPoolAlloc(&pool);
    EXPECT_EQ(__asan_region_is_poisoned(run, 48), nullptr);
    vxPoolRecycle(&pool);
    EXPECT_NE(__asan_address_is_poisoned(first), 0);
    EXPECT_NE(__asan_address_is_poisoned(run + 47), 0);
    vxPoolDestroy(&pool);
#else
    GTEST_SKIP() << "a build with AddressSanitizer shows it";
#endif
}

}  // namespace
