// Pools in random use against a model, and every failure.

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

// Replaces the framework's function and prints the arguments of a report.
int vxMessageReport(const char *catalogue, int severity, int messageId, ...) {
    va_list arguments;
    va_start(arguments, messageId);
    std::fprintf(stderr, "%s %d %d %d\n", catalogue, severity, messageId, va_arg(arguments, int));
    va_end(arguments);
    return 0;
}

namespace {

constexpr int kHeaderBytes = sizeof(VxPoolBlock);
constexpr int kRecordBytes = sizeof(VxPool);

bool refusesWithoutMemory(VxPool *pool) {
    faults::arm(faults::kMemory, 1, true, faults::Effect::kRefuse);
    const void *element = vxPoolAlloc(pool);
    faults::disarm();
    return element == nullptr;
}

// A pool beside a model that knows only what the calls return. Each element in use is filled with a
// byte of its own.
class ModelledPool {
public:
    ModelledPool(int elementSize, int perBlock) : size_(elementSize), perBlock_(perBlock) {
        vxPoolInit(&pool_, elementSize, perBlock);
    }
    ModelledPool(const ModelledPool &) = delete;
    ModelledPool &operator=(const ModelledPool &) = delete;
    ~ModelledPool() { vxPoolDestroy(&pool_); }

    void alloc() {
        const bool reuses = !freed_.empty();
        const bool needsBlock = !reuses && !hasRoom() && perBlock_ > 0;
        const bool needsMemory = needsBlock && retired_.empty();
        if (needsMemory) {
            const VxPool before = pool_;
            ASSERT_TRUE(refusesWithoutMemory(&pool_));
            ASSERT_EQ(std::memcmp(&pool_, &before, sizeof pool_), 0);
        }
        faults::resetCounts();
        auto *element = static_cast<char *>(vxPoolAlloc(&pool_));
        ASSERT_EQ(faults::count(faults::kMemory), needsMemory ? 1 : 0);
        if (reuses) {
            ASSERT_EQ(element, freed_.back());
            freed_.pop_back();
        } else if (needsBlock) {
            startBlock(element);
        } else if (hasRoom()) {
            ASSERT_EQ(element, current_ + size_ * used_++);
        } else {
            ASSERT_EQ(element, nullptr);
            return;
        }
        take(element);
    }

    void allocRun(int count) {
        auto *run = static_cast<char *>(vxPoolAllocBlock(&pool_, count));
        ASSERT_EQ(run != nullptr, count > 0);
        if (count > 0) blocks_.emplace(run, count);
        for (int i = 0; i < count; ++i)
            take(run + size_ * i);
    }

    void freeOne(std::size_t which) {
        if (live_.empty() || size_ < static_cast<int>(sizeof(void *))) return;
        const auto it = std::next(live_.begin(), static_cast<int>(which % live_.size()));
        verify(*it);
        vxPoolFree(&pool_, it->first);
        freed_.push_back(it->first);
        live_.erase(it);
    }

    void setBlockCount(int perBlock) {
        vxPoolSetBlockCount(&pool_, perBlock);
        perBlock_ = perBlock;
    }

    void recycle() {
        forgetElements();
        vxPoolRecycle(&pool_);
        retired_.merge(blocks_);
    }

    void destroy() {
        forgetElements();
        vxPoolDestroy(&pool_);
        blocks_.clear();
        retired_.clear();
    }

    void verifySize() const {
        const int blocks = static_cast<int>(blocks_.size() + retired_.size());
        int elements = 0;
        for (const Blocks *list : {&blocks_, &retired_}) {
            for (const auto &[first, count] : *list)
                elements += count;
        }
        ASSERT_EQ(pool_.blockCount, blocks);
        ASSERT_EQ(pool_.totalElements, elements);
        ASSERT_EQ(vxPoolSize(&pool_), elements * size_ + blocks * kHeaderBytes + kRecordBytes);
    }

private:
    using Blocks = std::map<char *, int>;  // by first element: how many each was made for

    bool hasRoom() const {
        return current_ != nullptr && used_ < std::min(blocks_.at(current_), perBlock_);
    }

    void startBlock(char *element) {
        if (retired_.empty()) {
            blocks_.emplace(element, perBlock_);
        } else {
            auto block = retired_.extract(element);
            ASSERT_FALSE(block.empty()) << "not the start of a retired block";
            blocks_.insert(std::move(block));
        }
        current_ = element;
        used_ = 1;
    }

    void take(char *element) {
        EXPECT_TRUE(live_.emplace(element, ++fills_).second) << "handed out twice";
        std::memset(element, static_cast<int>(fills_), static_cast<std::size_t>(size_));
    }

    void verify(const std::pair<char *const, unsigned char> &entry) const {
        const auto size = static_cast<std::size_t>(size_);
        EXPECT_EQ(std::string(entry.first, size),
                  std::string(size, static_cast<char>(entry.second)));
    }

    void forgetElements() {
        for (const auto &entry : live_)
            verify(entry);
        live_.clear();
        freed_.clear();
        current_ = nullptr;
    }

    VxPool pool_;
    int size_;
    int perBlock_;
    Blocks blocks_;
    Blocks retired_;
    char *current_ = nullptr;
    int used_ = 0;  // elements of the current block
    std::map<char *, unsigned char> live_;
    std::vector<char *> freed_;
    unsigned fills_ = 0;
};

void runAgainstModel(int size) {
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
            model.setBlockCount(static_cast<int>(random() % 12) - 1);
        } else if (choice < 398) {
            model.recycle();
        } else {
            model.destroy();
        }
        model.verifySize();
    }
}

TEST(Pool, RandomUseAgainstAModel) {
    for (const int size : {1, 8, 12, 17, 48, 520}) {
        SCOPED_TRACE(size);
        const int blocks = faults::blocksOut();
        runAgainstModel(size);
        EXPECT_EQ(faults::blocksOut(), blocks);
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
    EXPECT_EQ(vxPoolSize(&forgotten), kRecordBytes);
    EXPECT_NE(vxPoolAlloc(&forgotten), nullptr);
    EXPECT_EQ(forgotten.blockCount, 1);
    for (int twice = 0; twice < 2; ++twice) {
        vxPoolDestroy(&forgotten);
        vxPoolDestroy(&pool);
        EXPECT_EQ(vxPoolSize(&pool), kRecordBytes);
    }
}

TEST(Pool, AsksForNoMoreMemoryThanABlockCanHave) {
    const struct {
        int size, perBlock;
        int totalElements;  // as if that many had been made
        int requests;
    } cases[] = {
        {0, 4, 0, 0},
        {-8, 4, 0, 0},
        {INT32_MIN, INT32_MIN, 0, 0},
        {8, 0, 0, 0},
        {8, -1, 0, 0},
        {65536, 32768, 0, 0},
        {INT32_MAX, 3, 0, 0},
        {16, 0x8000000, 0, 0},
        {8, INT32_MAX, 0, 0},
        {INT32_MAX - 15, 1, 0, 0},
        {INT32_MAX - 16, 1, 0, 1},
        {48, 4, INT32_MAX - 3, 0},
        {48, 4, INT32_MAX - 4, 1},
    };
    for (const auto &test : cases) {
        SCOPED_TRACE(testing::Message() << test.size << " x " << test.perBlock);
        VxPool pool;
        vxPoolInit(&pool, test.size, test.perBlock);
        pool.totalElements = test.totalElements;
        EXPECT_TRUE(refusesWithoutMemory(&pool));
        EXPECT_EQ(faults::count(faults::kMemory), test.requests);
        EXPECT_EQ(vxPoolSize(&pool), test.totalElements == 0 ? kRecordBytes : INT32_MAX);
    }
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
        {0, 4, false, "^vxmsg 5 4912 0\n$"},
        {-8, 4, false, "^vxmsg 5 4912 0\n$"},
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
