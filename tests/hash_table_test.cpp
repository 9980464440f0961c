// The three tables: hooks, the order of walks, copies, figures, and long random runs against a set.

#include <vxhashtable.h>

#include <gtest/gtest.h>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

using V = std::vector<int>;

// A table of ints whose hash is the number itself up to `spread`, from where it repeats. Hooks
// leave a line each in a log that all tables share.
std::string hookLog;

class Numbers : public VxHashTable {
public:
    using ConstIterator = VxHashTableConstIterator;

    explicit Numbers(int numBuckets, int spread = 1000, char name = 'a')
        : VxHashTable(numBuckets), spread_(spread), name_(name) {}
    Numbers(const Numbers &source) : VxHashTable(source), spread_(source.spread_), name_('b') {}
    Numbers &operator=(const Numbers &source) {
        VxHashTable::operator=(source);
        return *this;
    }
    ~Numbers() override { empty(); }
    void copyObjects(const Numbers &source) { VxHashTable::copyObjects(source); }
    short insert(int v) { return VxHashTable::insert(&v); }
    short remove(int v) { return VxHashTable::remove(&v); }
    bool has(int v) const {
        const void *stored = VxHashTable::has(&v);
        return stored != nullptr && value(stored) == v;
    }
    using VxHashTable::insert;
    static int value(const void *element) { return *static_cast<const int *>(element); }

protected:
    unsigned int hashElement(const void *given) override {
        log("#", given);
        return static_cast<unsigned int>(value(given) % spread_);
    }
    short equalElements(const void *given, const void *stored) override {
        log("=", stored);
        return value(given) == value(stored) ? -2 : 0;  // any number but 0 is yes
    }
    void *copyElement(const void *element) override {
        log("+", element);
        return value(element) == kRefused ? nullptr : new int(value(element));
    }
    void destroyElement(void *stored) override {
        log("-", stored);
        delete static_cast<int *>(stored);
    }

public:
    static constexpr int kRefused = 666;

private:
    void log(const char *what, const void *element) {
        hookLog += std::string(1, name_) + what + std::to_string(value(element)) + ' ';
    }
    int spread_;
    char name_;
};

alignas(16) int cells[4096];  // cell v stands for the value v

template <typename Base, typename Iterator>
class Pointers : public Base {
public:
    using ConstIterator = Iterator;

    explicit Pointers(int numBuckets) : Base(numBuckets) {}
    Pointers() = default;
    void copyObjects(const Pointers &source) { Base::copyObjects(source); }
    short insert(int v) { return Base::insert(&cells[v]); }
    short remove(int v) { return Base::remove(&cells[v]); }
    bool has(int v) const { return Base::has(&cells[v]) == &cells[v]; }
    static int value(const void *element) {
        return static_cast<int>(static_cast<const int *>(element) - cells);
    }
    using Base::has;
    using Base::insert;
    using Base::remove;
};

using PTable = Pointers<VxPHashTable, VxPHashTableConstIterator>;
using CPTable = Pointers<VxCPHashTable, VxCPHashTableConstIterator>;

template <typename Table>
V walk(const Table &table) {
    V seen;
    typename Table::ConstIterator it(table);
    while (it.isValid() != 0)
        seen.push_back(Table::value(it.postInc()));
    return seen;
}

template <typename Table>
V walkBack(const Table &table) {
    V seen;
    typename Table::ConstIterator it(table);
    for (it.reset(1); it.isValid() != 0;)
        seen.insert(seen.begin(), Table::value(it.postDec()));
    return seen;
}

template <typename Table>
class EveryTable : public testing::Test {};
using Tables = testing::Types<Numbers, PTable, CPTable>;
TYPED_TEST_SUITE(EveryTable, Tables);

TYPED_TEST(EveryTable, HasBucketsAndNothingElseAtFirst) {
    for (const int asked : {0, -5, 1, 500}) {
        const TypeParam table(asked);
        EXPECT_EQ(table.getNumBuckets(), asked > 0 ? asked : 83);
        EXPECT_EQ(table.getNumElements(), 0);
        EXPECT_EQ(table.getNumUnusedBuckets(), table.getNumBuckets());
        EXPECT_EQ(table.getMeanUsedBucketLength(), 0.0);
        EXPECT_EQ(table.getVarianceUsedBucketLength(), 0.0);
        typename TypeParam::ConstIterator it(table);
        EXPECT_EQ(it.isValid(), 0);
        it.reset(1);
        EXPECT_EQ(it.isValid(), 0);
    }
}

TYPED_TEST(EveryTable, KeepsTheOrderOfInsertionInABucket) {
    TypeParam table(1);
    for (const int v : {5, 3, 9})
        EXPECT_EQ(table.insert(v), 1);
    EXPECT_EQ(table.insert(3), 0);
    EXPECT_EQ(walk(table), V({5, 3, 9}));
    EXPECT_EQ(walkBack(table), V({5, 3, 9}));
    EXPECT_EQ(table.remove(3), 1);
    EXPECT_EQ(table.remove(3), 0);
    EXPECT_EQ(walk(table), V({5, 9}));
    table.empty();
    EXPECT_EQ(table.getNumBuckets(), 1);
    EXPECT_EQ(table.insert(3), 1);
}

TYPED_TEST(EveryTable, CopiesWholeOrIntoOtherBuckets) {
    TypeParam source(40);
    for (int v = 0; v < 100; ++v)
        source.insert(v * 7 % 300);
    TypeParam copy(source);
    TypeParam assigned(7);
    assigned.insert(299);
    assigned = source;
    TypeParam alike(40);
    alike.copyObjects(source);
    for (TypeParam *it : {&copy, &assigned, &alike}) {
        EXPECT_EQ(it->getNumBuckets(), 40);
        EXPECT_EQ(walk(*it), walk(source));
        EXPECT_EQ(it->insert(900), 1);
        EXPECT_EQ(it->insert(7), 0);
    }
    TypeParam wide(500);
    wide.insert(299);
    wide.copyObjects(source);
    const TypeParam &self = wide;
    wide.copyObjects(self);
    EXPECT_EQ(wide.getNumBuckets(), 500);
    EXPECT_EQ(wide.getNumElements(), source.getNumElements());
    for (const int v : walk(source))
        EXPECT_TRUE(wide.has(v)) << v;
    TypeParam narrow(1);
    narrow.copyObjects(source);
    EXPECT_EQ(walk(narrow), walk(source));
}

TYPED_TEST(EveryTable, DoesWhatASetDoes) {
    std::mt19937 random(21);
    for (const int numBuckets : {1, 7, 83}) {
        TypeParam table(numBuckets);
        std::set<int> model;
        for (int step = 0; step < 4000; ++step) {
            const int v = static_cast<int>(random() % 300);
            if (random() % 2 == 0) {
                ASSERT_EQ(table.insert(v), model.insert(v).second ? 1 : 0);
            } else {
                ASSERT_EQ(table.remove(v), static_cast<short>(model.erase(v)));
            }
            ASSERT_EQ(table.has(v), model.count(v) == 1);
            if (step % 16 != 0) continue;
            const V seen = walk(table);
            ASSERT_EQ(std::set<int>(seen.begin(), seen.end()), model);
            ASSERT_EQ(seen.size(), model.size());
            ASSERT_EQ(walkBack(table), seen);
            ASSERT_EQ(table.getNumElements(), static_cast<int>(model.size()));
        }
    }
}

TEST(OwningTable, RunsItsHooksInOrder) {
    Numbers table(10, 4);  // 1, 5 and 9 have one hash, 11 shares a bucket with none
    const auto logOf = [](auto &&action) {
        hookLog.clear();
        action();
        return hookLog;
    };
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(nullptr), 0); }), "");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(1), 1); }), "a#1 a+1 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(5), 1); }), "a#5 a=1 a+5 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(1), 0); }), "a#1 a=1 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(666), 0); }), "a#666 a+666 ");
    EXPECT_EQ(logOf([&] { EXPECT_TRUE(table.has(5)); }), "a#5 a=1 a=5 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.remove(9), 0); }), "a#9 a=1 a=5 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.remove(1), 1); }), "a#1 a=1 a-1 ");
    EXPECT_EQ(logOf([&] { EXPECT_TRUE(table.has(5)); }), "a#5 a=5 ");

    Numbers other(3, 1000, 'o');  // one bucket of three, but hashes that differ
    other.insert(2);
    EXPECT_EQ(logOf([&] { other.insert(5); }), "o#5 o+5 ");
    EXPECT_EQ(logOf([&] { Numbers copy(other); }), "o+2 o+5 b-2 b-5 ");
    EXPECT_EQ(logOf([&] { table.copyObjects(other); }), "a-5 o+2 o+5 ");
    EXPECT_EQ(logOf([&] { table = other; }), "a-2 a-5 o+2 o+5 ");
    EXPECT_EQ(logOf([&] { table.empty(); }), "a-2 a-5 ");
}

TEST(OwningTable, CountsOverUsedBuckets) {
    Numbers table(10);
    for (const int v : {1, 2, 12, 3, 13, 23})
        table.insert(v);
    EXPECT_EQ(table.getNumUsedBuckets(), 3);
    EXPECT_EQ(table.getNumUnusedBuckets(), 7);
    EXPECT_DOUBLE_EQ(table.getMeanUsedBucketLength(), 2.0);
    EXPECT_DOUBLE_EQ(table.getVarianceUsedBucketLength(), 2.0 / 3.0);
}

TEST(OwningTable, IteratorsTakeOverAPlace) {
    Numbers table(83);
    table.insert(40);
    table.insert(41);
    VxHashTableIterator it(table);
    VxHashTableIterator other(it);
    EXPECT_EQ(Numbers::value(it.postInc()), 40);
    EXPECT_EQ(Numbers::value((other = it).getElem()), 41);
    other.postInc();
    EXPECT_EQ(other.isValid(), 0);
    other.reset(1);
    EXPECT_EQ(Numbers::value(other.postDec()), 41);
    EXPECT_EQ(Numbers::value(it.assign(other).getElem()), 40);
    EXPECT_EQ(it.getTable(), &table);
}

TEST(PointerTables, TakeNullLikeAnyOther) {
    PTable table;
    EXPECT_EQ(table.getNumBuckets(), 83);
    EXPECT_EQ(table.insert(nullptr), 1);
    EXPECT_EQ(table.insert(nullptr), 0);
    EXPECT_EQ(table.has(nullptr), nullptr);
    EXPECT_EQ(table.getNumElements(), 1);
    EXPECT_EQ(table.remove(nullptr), 1);
    EXPECT_EQ(table.remove(nullptr), 0);
}

unsigned int hashOf(std::uintptr_t address) {
    return VxPHashTable::hash(reinterpret_cast<const void *>(address));
}

TEST(PointerTables, FoldAnAddressOfThirtyTwoBits) {
    constexpr struct {
        std::uintptr_t address;
        unsigned int hash;
    } kTable[] = {{0, 0},         {0x1000, 1024},    {0x4000, 1},       {0x4000000, 4},   {3, 0},
                  {0x3ffc, 4095}, {0xffffffff, 252}, {0xfc000000, 252}, {0x3ffc000, 4095}};
    for (const auto &row : kTable)
        EXPECT_EQ(hashOf(row.address), row.hash) << std::hex << row.address;
}

TEST(PointerTables, SpreadAddressesOfTheHeap) {
    for (const unsigned stride : {4U, 8U, 16U, 24U, 32U, 48U, 64U, 80U, 96U, 112U, 128U, 4096U}) {
        PTable table(1009);
        for (std::uintptr_t i = 0; i < 1000; ++i)
            table.insert(reinterpret_cast<void *>(0x55d0c0a3f2a0 + i * stride));
        // Random hashes would use 634 buckets.
        EXPECT_GT(table.getNumUsedBuckets(), 450) << stride;
    }
    EXPECT_LE(hashOf(~std::uintptr_t{0}), 4095U);
}

}  // namespace
