// Pools in random use against a model, and every failure.

#include "data_rows.h"
#include "faults.h"
#include "fuzz/models/pool_model.h"
#include "system.h"

#include <vxpool.h>

#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

void *allocWithoutMemory(VxPool *pool) {
    faults::arm(faults::kMemory);
    void *element = vxPoolAlloc(pool);
    faults::disarm();
    return element;
}

TEST(Pool, DoesWhatItsModelDoesAndAsksForMemoryOncePerBlock) {
    for (const int size : {1, 8, 12, 17, 48, 520}) {
        SCOPED_TRACE(size);
        std::mt19937 random(static_cast<unsigned>(size));
        const auto below = [&](int n) { return static_cast<int>(random() % unsigned(n)); };
        const int blocksOut = faults::blocksOut();
        {
            PoolModel run(size);
            for (int step = 0; step < 20000; ++step) {
                ASSERT_TRUE(!run.needsMemory() || allocWithoutMemory(&run.pool) == nullptr);
                const int made = run.blocksMade();
                faults::resetCounts();
                run.change(below);
                ASSERT_EQ(faults::count(faults::kMemory), run.blocksMade() - made);
                ASSERT_EQ(run.difference(), "") << step;
            }
        }
        EXPECT_EQ(faults::blocksOut(), blocksOut);
    }
}

TEST(Pool, AsksForNoMoreMemoryThanABlockCanHave) {
    for (const DataRow &row : dataRows("pool.txt", "blocks")) {
        VxPool pool;
        vxPoolInit(&pool, std::stoi(row[0]), std::stoi(row[1]));
        pool.totalElements = std::stoi(row[2]);
        EXPECT_EQ(allocWithoutMemory(&pool), nullptr);
        EXPECT_EQ(faults::count(faults::kMemory), std::stoi(row[3])) << row[0] << ' ' << row[1];
        EXPECT_EQ(vxPoolSize(&pool), pool.totalElements == 0 ? int{sizeof pool} : INT32_MAX);
    }
}

TEST(PoolDeathTest, ARunWithoutMemoryEndsTheProcess) {
    for (const DataRow &row : dataRows("pool.txt", "runs")) {
        VxPool pool;
        vxPoolInit(&pool, std::stoi(row[0]), 10);
        const auto allocate = [&] {
            if (row[2] == "1") faults::arm(faults::kMemory);
            vxPoolAllocBlock(&pool, std::stoi(row[1]));
        };
        EXPECT_EXIT(allocate(), endedByAbort(), "fatal: .*\\W" + row[3] + "\\W");
    }
}

}  // namespace
