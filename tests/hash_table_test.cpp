// The three tables: hooks, the order of walks, copies, statistics, and long random runs compared
// with a set.

#include "fuzz/models/container_model.h"

#include <vxtyped.h>

#include <gtest/gtest.h>
#include <random>
#include <utility>

namespace {

using V = std::vector<int>;

template <typename Table>
class EveryTable : public testing::Test {};
using Tables = testing::Types<VxOwningTable<int>, VxPointerTable<int>, VxPointerTable<const int>>;
TYPED_TEST_SUITE(EveryTable, Tables);

TYPED_TEST(EveryTable, HasBucketsAndNothingElseAtFirst) {
    for (const int asked : {0, -5, 1, 500}) {
        const TypeParam table(asked);
        EXPECT_EQ(table.getNumBuckets(), asked > 0 ? asked : 83);
        EXPECT_EQ(table.getNumElements(), 0);
        EXPECT_EQ(table.getNumUnusedBuckets(), table.getNumBuckets());
        EXPECT_EQ(table.getNumUsedBuckets(), 0);
        EXPECT_EQ(table.getMeanUsedBucketLength(), 0.0);
        EXPECT_EQ(table.getVarianceUsedBucketLength(), 0.0);
        EXPECT_EQ(values(table), V());
        EXPECT_EQ(valuesBack(table), V());
    }
}

TYPED_TEST(EveryTable, DoesWhatASetDoes) {
    std::mt19937 random(21);
    for (const int numBuckets : {1, 7, 83}) {
        TableModel<TypeParam> run(numBuckets);
        for (int step = 0; step < 4000; ++step) {
            const auto below = [&](int n) {
                return static_cast<int>(random() % static_cast<unsigned>(n));
            };
            ASSERT_TRUE(run.change(below)) << "step " << step;
            ASSERT_TRUE(step % 16 != 0 || run.agrees()) << "step " << step;
        }
    }
}

// The hash of a number repeats from `spread` on.
class Logged : public Logging<VxHashTable> {
public:
    Logged(int numBuckets, int spread, char name) : Logging(name, numBuckets), spread_(spread) {}
    int insert(int v) { return VxHashTable::insert(&v); }
    int remove(int v) { return VxHashTable::remove(&v); }
    bool has(int v) const { return VxHashTable::has(&v) != nullptr; }
    using VxHashTable::copyObjects;
    using VxHashTable::insert;

protected:
    unsigned int hashElement(const void *given) override {
        return static_cast<unsigned int>(log('#', given) % spread_);
    }
    short equalElements(const void *given, const void *stored) override {
        return log('=', stored) == *static_cast<const int *>(given) ? -2 : 0;  // not 0 is yes
    }

private:
    int spread_;
};

TEST(OwningTable, RunsItsHooksInOrder) {
    Logged table(10, 4, 'a');  // 1, 5 and 9 have one hash
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(nullptr), 0); }), "");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(1), 1); }), "a#1 a+1 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(5), 1); }), "a#5 a=1 a+5 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(1), 0); }), "a#1 a=1 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(666), 0); }), "a#666 a+666 ");
    EXPECT_EQ(logOf([&] { EXPECT_TRUE(table.has(5)); }), "a#5 a=1 a=5 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.remove(9), 0); }), "a#9 a=1 a=5 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.remove(1), 1); }), "a#1 a=1 a-1 ");
    EXPECT_EQ(logOf([&] { EXPECT_TRUE(table.has(5)); }), "a#5 a=5 ");

    Logged other(3, 1000, 'o');
    other.insert(2);
    EXPECT_EQ(logOf([&] { other.insert(5); }), "o#5 o+5 ");  // its bucket, but not its hash
    EXPECT_EQ(logOf([&] { Logged copy(other); }), "o+2 o+5 b-2 b-5 ");
    EXPECT_EQ(logOf([&] { table.copyObjects(other); }), "a-5 o+2 o+5 ");
    EXPECT_EQ(logOf([&] { table = other; }), "a-2 a-5 o+2 o+5 ");
    const Logged &self = table;
    EXPECT_EQ(logOf([&] { table = self; }), "");
    EXPECT_EQ(logOf([&] { table.empty(); }), "a-2 a-5 ");
}

TEST(OwningTable, CountsOverUsedBuckets) {
    VxOwningTable<int> table(10);  // the hash of an int is the int
    for (const int v : {1, 2, 12, 3, 13, 23})
        table.insert(v);
    EXPECT_EQ(table.getNumUsedBuckets(), 3);
    EXPECT_EQ(table.getNumUnusedBuckets(), 7);
    EXPECT_DOUBLE_EQ(table.getMeanUsedBucketLength(), 2.0);
    EXPECT_DOUBLE_EQ(table.getVarianceUsedBucketLength(), 2.0 / 3.0);

    VxHashTableIterator it(table);
    VxHashTableIterator other(it);
    it.postInc();
    EXPECT_EQ(other.assign(it).getElem(), it.getElem());
    EXPECT_EQ(*static_cast<int *>(it.getElem()), 2);
    EXPECT_EQ(it.getTable(), &table);
    EXPECT_EQ(std::as_const(it).getTable(), &table);
    EXPECT_EQ(*static_cast<const int *>(std::as_const(it).getElem()), 2);
    it.postDec();
    other = it;
    EXPECT_EQ(*static_cast<int *>(other.postDec()), 1);
    EXPECT_EQ(other.isValid(), 0);
#ifndef NDEBUG
    table.empty();
    EXPECT_DEATH(it.getElem(), "");
#endif
}

TEST(PointerTables, HaveEightyThreeBucketsWhenDerivedFrom) {
    struct Derived : VxPHashTable {};
    struct ConstDerived : VxCPHashTable {};
    EXPECT_EQ(Derived().getNumBuckets(), 83);
    EXPECT_EQ(ConstDerived().getNumBuckets(), 83);
}

TEST(PointerTables, FoldAnAddressOfThirtyTwoBits) {
    constexpr std::uintptr_t kAddressAndHash[][2] = {
        {0, 0},         {0x1000, 1024},    {0x4000, 1},       {0x4000000, 4},   {3, 0},
        {0x3ffc, 4095}, {0xffffffff, 252}, {0xfc000000, 252}, {0x3ffc000, 4095}};
    for (const auto &[address, hash] : kAddressAndHash)
        EXPECT_EQ(VxPHashTable::hash(reinterpret_cast<const void *>(address)), hash) << address;
}

TEST(PointerTables, SpreadAddressesOfTheHeap) {
    constexpr unsigned kMega = 1U << 20;
    for (const unsigned stride : {4U, 8U, 16U, 24U, 32U, 48U, 64U, 80U, 96U, 112U, 128U, 1040U,
                                  4096U, 8192U, 16384U, 65536U, 65552U, kMega, kMega + 16}) {
        VxPointerTable<char> table(1009);
        for (std::uintptr_t i = 0; i < 1000; ++i)
            table.insert(reinterpret_cast<char *>(0x55d0c0a3f2a0 + i * stride));
        // Random hashes would use 634 buckets.
        EXPECT_GT(table.getNumUsedBuckets(), 450) << stride;
    }
}

}  // namespace
