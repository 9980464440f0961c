// Pools under random use against a model, and each way to fail.

#include "faults.h"
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
#include <string>
#include <utility>
#include <vector>

// In front of the framework's: shows what a report was made of.
int vxMessageReport(const char *catalogue, int severity, int messageId, ...) {
    va_list arguments;
    va_start(arguments, messageId);
    std::fprintf(stderr, "%s %d %d %d\n", catalogue, severity, messageId, va_arg(arguments, int));
    va_end(arguments);
    return 0;
}

namespace {

char *firstElement(VxPoolBlock *block) {
    return reinterpret_cast<char *>(block + 1);
}

// A pool beside a model that knows which element comes next. Each element that is out is filled
// with a byte of its own.
struct ModelledPool {
    VxPool pool;
    std::size_t size;
    std::map<char *, unsigned char> live = {};
    std::vector<char *> freed = {};
    VxPoolBlock *current = nullptr;
    int used = 0;  // elements of the current block
    int blocks = 0;
    unsigned fills = 0;

    ModelledPool(int elementSize, int perBlock) : size(static_cast<std::size_t>(elementSize)) {
        vxPoolInit(&pool, elementSize, perBlock);
    }
    ModelledPool(const ModelledPool &) = delete;
    ModelledPool &operator=(const ModelledPool &) = delete;
    ~ModelledPool() { vxPoolDestroy(&pool); }

    char *currentElement() const {
        return firstElement(current) + size * static_cast<std::size_t>(used);
    }

    void alloc() {
        char *expected = nullptr;
        bool newBlock = false;
        if (!freed.empty()) {
            expected = freed.back();
            freed.pop_back();
        } else if (pool.elementsPerBlock < 1) {
            EXPECT_EQ(vxPoolAlloc(&pool), nullptr);
            return;
        } else {
            if (current == nullptr ||
                used >= std::min(current->elementCount, pool.elementsPerBlock)) {
                current = pool.spareBlocks;
                used = 0;
                newBlock = current == nullptr;
            }
            if (!newBlock) expected = currentElement();
            ++used;
        }
        const int before = faults::count(faults::kMemory);
        auto *element = static_cast<char *>(vxPoolAlloc(&pool));
        ASSERT_EQ(faults::count(faults::kMemory) - before, newBlock ? 1 : 0);
        if (newBlock) {
            ++blocks;
            current = pool.blocks;
            expected = firstElement(current);
        }
        ASSERT_EQ(element, expected);
        take(element);
    }

    void allocRun(int count) {
        auto *run = static_cast<char *>(vxPoolAllocBlock(&pool, count));
        ASSERT_EQ(run, count > 0 ? firstElement(pool.blocks) : nullptr);
        if (count > 0) ++blocks;
        for (int i = 0; i < count; ++i)
            take(run + size * static_cast<std::size_t>(i));
    }

    void take(char *element) {
        EXPECT_TRUE(live.emplace(element, ++fills).second) << "handed out twice";
        std::memset(element, static_cast<int>(fills), size);
    }

    void verify(const std::pair<char *const, unsigned char> &entry) const {
        EXPECT_EQ(std::string(entry.first, size),
                  std::string(size, static_cast<char>(entry.second)));
    }

    void freeOne(std::size_t which) {
        if (live.empty()) return;
        const auto it = std::next(live.begin(), static_cast<int>(which % live.size()));
        verify(*it);
        vxPoolFree(&pool, it->first);
        freed.push_back(it->first);
        live.erase(it);
    }

    void startAnew(void (*end)(VxPool *)) {
        for (const auto &entry : live)
            verify(entry);
        live.clear();
        freed.clear();
        current = nullptr;
        end(&pool);
        if (end == vxPoolDestroy) blocks = 0;
    }

    // The counts are those of the blocks on the two lists, and no block has got lost.
    void verifyCounts() const {
        int elements = 0;
        int found = 0;
        for (const VxPoolBlock *list : {pool.blocks, pool.spareBlocks}) {
            for (; list != nullptr; list = list->next, ++found)
                elements += list->elementCount;
        }
        ASSERT_EQ(found, blocks);
        ASSERT_EQ(pool.blockCount, blocks);
        ASSERT_EQ(pool.totalElements, elements);
        ASSERT_EQ(vxPoolSize(&pool), elements * pool.elementSize + blocks * 16 + 48);
    }
};

TEST(Pool, RandomUseAgainstAModel) {
    for (const int size : {8, 12, 17, 48, 520}) {
        SCOPED_TRACE(size);
        std::mt19937 random(static_cast<unsigned>(size));
        ModelledPool model(size, 5);
        for (int step = 0; step < 20000 && !testing::Test::HasFailure(); ++step) {
            const auto choice = random() % 400;
            if (choice < 220) {
                model.alloc();
            } else if (choice < 345) {
                model.freeOne(random());
            } else if (choice < 370) {
                model.allocRun(static_cast<int>(random() % 9) - 1);
            } else if (choice < 390) {
                vxPoolSetBlockCount(&model.pool, static_cast<int>(random() % 12) - 1);
            } else {
                model.startAnew(choice < 398 ? vxPoolRecycle : vxPoolDestroy);
            }
            model.verifyCounts();
        }
    }
}

TEST(Pool, RetiredBlocksComeBackOldestFirstAndForgottenOnesDoNot) {
    VxPool pool;
    vxPoolInit(&pool, 24, 1);
    void *const oldest = vxPoolAlloc(&pool);
    void *const newest = vxPoolAlloc(&pool);
    vxPoolFree(&pool, oldest);
    vxPoolFree(&pool, nullptr);
    vxPoolRecycle(&pool);
    EXPECT_EQ(vxPoolAlloc(&pool), oldest);
    EXPECT_EQ(vxPoolAlloc(&pool), newest);

    VxPool forgotten = pool;
    vxPoolReset(&forgotten);
    EXPECT_EQ(vxPoolSize(&forgotten), 48);
    EXPECT_NE(vxPoolAlloc(&forgotten), nullptr);
    EXPECT_EQ(forgotten.blockCount, 1);
    for (int twice = 0; twice < 2; ++twice) {
        vxPoolDestroy(&forgotten);
        vxPoolDestroy(&pool);
        EXPECT_EQ(vxPoolSize(&pool), 48);
    }
}

TEST(Pool, IsUnchangedWhenThereIsNoMemory) {
    VxPool pool;
    vxPoolInit(&pool, 16, 1);
    for (const bool behindARun : {false, true}) {
        EXPECT_NE(vxPoolAlloc(&pool), nullptr);
        if (behindARun) vxPoolAllocBlock(&pool, 4);
        const VxPool before = pool;
        faults::arm(faults::kMemory, 1, true, faults::Effect::kRefuse);
        EXPECT_EQ(vxPoolAlloc(&pool), nullptr);
        faults::disarm();
        EXPECT_EQ(std::memcmp(&pool, &before, sizeof pool), 0);
        EXPECT_NE(vxPoolAlloc(&pool), nullptr);
    }
    vxPoolDestroy(&pool);
}

TEST(Pool, RefusesWhatNoBlockCanBe) {
    for (const auto &[size, perBlock] : {std::pair{0, 4},
                                         {-8, 4},
                                         {INT32_MIN, INT32_MIN},
                                         {8, 0},
                                         {8, -1},
                                         {65536, 32768},
                                         {INT32_MAX, 3},
                                         {16, 0x8000000},
                                         {8, INT32_MAX},
                                         {INT32_MAX - 15, 1}}) {
        SCOPED_TRACE(testing::Message() << size << " x " << perBlock);
        VxPool pool;
        vxPoolInit(&pool, size, perBlock);
        faults::resetCounts();
        EXPECT_EQ(vxPoolAlloc(&pool), nullptr);
        EXPECT_EQ(faults::count(faults::kMemory), 0);
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
        if (test.noMemory) faults::arm(faults::kMemory, 1, true, faults::Effect::kRefuse);
        EXPECT_EXIT(vxPoolAllocBlock(&pool, test.count), testing::KilledBySignal(SIGABRT),
                    test.report);
        faults::disarm();
    }
}

TEST(Pool, PoisonsWhatIsNotHandedOut) {
#ifdef VX_POISON
    const auto poisoned = [](const char *element) {
        return __asan_address_is_poisoned(element) + __asan_address_is_poisoned(element + 23);
    };
    VxPool pool;
    vxPoolInit(&pool, 24, 2);
    auto *element = static_cast<char *>(vxPoolAlloc(&pool));
    auto *run = static_cast<char *>(vxPoolAllocBlock(&pool, 2));
    vxPoolFree(&pool, run);
    EXPECT_EQ(poisoned(element), 0);
    EXPECT_EQ(poisoned(element + 24), 2);
    EXPECT_EQ(poisoned(run), 2);
    EXPECT_EQ(poisoned(run + 24), 0);
    vxPoolAlloc(&pool);
    EXPECT_EQ(poisoned(run), 0);
    vxPoolRecycle(&pool);
    EXPECT_EQ(poisoned(element), 2);
    EXPECT_EQ(poisoned(run + 24), 2);
    vxPoolDestroy(&pool);
#else
    GTEST_SKIP() << "a build with AddressSanitizer shows it";
#endif
}

}  // namespace
