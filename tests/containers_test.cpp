// The lists and tables: long random runs compared with models, the order of their hooks, the hash
// of an address, and what the typed classes add.

#include "fuzz/models/container_model.h"

#include <vxtyped.h>

#include <concepts>
#include <cstdint>
#include <gtest/gtest.h>
#include <iterator>
#include <ranges>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

template <typename List>
class EveryList : public testing::Test {};
using Lists = testing::Types<VxOwningList<int>, VxPointerList<int>, VxPointerList<const int>>;
TYPED_TEST_SUITE(EveryList, Lists);

TYPED_TEST(EveryList, DoesWhatAVectorDoes) {
    std::mt19937 random(20);
    ListModel<TypeParam> run;
    for (int step = 0; step < 10000; ++step)
        ASSERT_TRUE(run.change(chooser(random)) && run.complete) << "step " << step;
}

template <typename Table>
class EveryTable : public testing::Test {};
using Tables = testing::Types<VxOwningTable<int>, VxPointerTable<int>, VxPointerTable<const int>>;
TYPED_TEST_SUITE(EveryTable, Tables);

TYPED_TEST(EveryTable, DoesWhatASetInBucketsDoes) {
    std::mt19937 random(21);
    TableModel<TypeParam> run;
    for (int step = 0; step < 10000; ++step)
        ASSERT_TRUE(run.change(chooser(random)) && run.complete) << "step " << step;
}

template <typename T>
concept Container = std::ranges::forward_range<const T> && std::ranges::common_range<T> &&
                    std::same_as < std::ranges::range_value_t<T>,
typename T::value_type >
    &&std::same_as<decltype(std::declval<T &>().cend()), typename T::const_iterator>
        &&std::convertible_to<typename T::iterator, typename T::const_iterator>
            &&std::is_nothrow_move_constructible_v<T> &&std::is_nothrow_move_assignable_v<T>;

TYPED_TEST(EveryList, HasIteratorsOfRandomAccess) {
    static_assert(Container<TypeParam> && std::ranges::random_access_range<const TypeParam>);
    static_assert(std::sortable<typename TypeParam::iterator>);
    TypeParam list;
    for (const int v : {3, 4, 5})
        EXPECT_TRUE(list.append(element<TypeParam>(v)));
    typename TypeParam::const_iterator it = list.begin();
    EXPECT_EQ(value(*it++), 3);
    EXPECT_EQ(value(*it--), 4);
    EXPECT_TRUE(it == list.begin() && it < list.end() && list.cend() - it == 3);
    EXPECT_EQ(value(it[2]) + value(*(1 + it)) + value(*(list.end() - 1)), 5 + 4 + 5);
}

TYPED_TEST(EveryTable, HasForwardIterators) {
    static_assert(Container<TypeParam>);
    TypeParam table(vxNumBuckets(3));
    EXPECT_TRUE(table.insert(element<TypeParam>(3)));
    auto it = table.begin();
    EXPECT_EQ(value(*it++), 3);
    EXPECT_TRUE(it == table.cend() && it != table.begin());
}

#ifndef NDEBUG
TYPED_TEST(EveryList, AssertsItsLimits) {
    TypeParam list;
    EXPECT_TRUE(list.append(element<TypeParam>(7)));
    list.swap(5, 5);  // touches no slot
    EXPECT_DEATH(list.swap(0, 1), "");
    EXPECT_DEATH(static_cast<void>(list.set(-1, element<TypeParam>(0))), "");
    EXPECT_DEATH(static_cast<void>(list.insert(2, element<TypeParam>(0))), "");
    EXPECT_DEATH(list.remove(0, 2), "");
    EXPECT_DEATH(static_cast<void>(*list.end()), "");
}

TYPED_TEST(EveryTable, AssertsThatAWalkHasNotEnded) {
    EXPECT_DEATH(*TypeParam().begin(), "");
}
#endif

// What the hooks of the containers below did.
std::string hookLog;

std::string logOf(auto &&action) {
    hookLog.clear();
    action();
    return hookLog;
}

// Owns numbers. Each hook logs one word: its owner, what it did, and with which number.
template <typename Base>
class Logging : public Base {
public:
    template <typename... Arguments>
    explicit Logging(char name, Arguments... arguments) : Base(arguments...), name_(name) {}
    Logging(const Logging &source) : Base(source), name_('b') {}
    Logging &operator=(const Logging &source) {
        Base::operator=(source);
        return *this;
    }
    ~Logging() override { this->empty(); }

protected:
    int log(char what, const void *which) {
        const int v = *static_cast<const int *>(which);
        hookLog += std::string({name_, what}) + std::to_string(v) + ' ';
        return v;
    }
    void *copyElement(const void *given) override {
        const int v = log('+', given);
        return v == 666 ? nullptr : new int(v);
    }
    void destroyElement(void *stored) override {
        log('-', stored);
        delete static_cast<int *>(stored);
    }

private:
    char name_;
};

struct LoggedList : Logging<VxArrayList> {
    using Logging::Logging;
    using VxArrayList::append;
    using VxArrayList::insert;
    void set(int i, int v) { VxArrayList::set(i, &v); }
    void append(int v) { VxArrayList::append(&v); }
};

TEST(OwningList, RunsItsHooksInOrder) {
    LoggedList list('a');
    LoggedList more('m');
    for (const int v : {7, 8})
        more.append(v);
    for (int v = 0; v < 8; ++v)
        list.append(v);
    EXPECT_EQ(logOf([&] { list.set(1, 9); }), "a-1 a+9 ");
    EXPECT_EQ(logOf([&] { list.insert(1, more); }), "a+7 a+8 ");
    EXPECT_EQ(logOf([&] { list.append(more); }), "a+7 a+8 ");
    EXPECT_EQ(logOf([&] { list.remove(10, 2); }), "a-7 a-8 ");
    EXPECT_EQ(logOf([&] { list.swap(0, 2); }), "");
    EXPECT_EQ(logOf([&] { list.remove(1, 3); }), "a-7 a-0 a-9 ");
    EXPECT_EQ(logOf([&] { list.remove(1, 6); }), "a-2 a-3 a-4 a-5 a-6 a-7 ");
    EXPECT_EQ(logOf([&] { LoggedList copy(more); }), "m+7 m+8 b-7 b-8 ");
    EXPECT_EQ(logOf([&] { list = more; }), "a-8 m+7 m+8 ");
    const LoggedList &self = list;
    EXPECT_EQ(logOf([&] { list = self; }), "");
    EXPECT_EQ(logOf([&] { list.empty(); }), "a-7 a-8 ");
}

// The hash of a number repeats from `spread` on.
class LoggedTable : public Logging<VxHashTable> {
public:
    LoggedTable(int buckets, int spread, char name) : Logging(name, buckets), spread_(spread) {}
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
    LoggedTable table(10, 4, 'a');  // 1, 5 and 9 have one hash
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(nullptr), 0); }), "");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(1), 1); }), "a#1 a+1 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(5), 1); }), "a#5 a=1 a+5 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(1), 0); }), "a#1 a=1 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(666), 0); }), "a#666 a+666 ");
    EXPECT_EQ(logOf([&] { EXPECT_TRUE(table.has(5)); }), "a#5 a=1 a=5 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.remove(9), 0); }), "a#9 a=1 a=5 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.remove(1), 1); }), "a#1 a=1 a-1 ");

    LoggedTable other(3, 1000, 'o');
    other.insert(2);
    EXPECT_EQ(logOf([&] { other.insert(5); }), "o#5 o+5 ");  // its bucket, but not its hash
    EXPECT_EQ(logOf([&] { LoggedTable copy(other); }), "o+2 o+5 b-2 b-5 ");
    EXPECT_EQ(logOf([&] { table.copyObjects(other); }), "a-5 o+2 o+5 ");
    EXPECT_EQ(logOf([&] { table = other; }), "a-2 a-5 o+2 o+5 ");
    const LoggedTable &self = table;
    EXPECT_EQ(logOf([&] { table = self; }), "");
    EXPECT_EQ(logOf([&] { table.empty(); }), "a-2 a-5 ");
}

TEST(PointerTables, HaveEightyThreeBucketsUnlessAsked) {
    struct Derived : VxPHashTable {};
    struct ConstDerived : VxCPHashTable {};
    EXPECT_EQ(Derived().getNumBuckets(), 83);
    EXPECT_EQ(ConstDerived().getNumBuckets(), 83);
}

TEST(PointerTables, FoldAnAddress) {
    constexpr std::uintptr_t kAddressAndHash[][2] = {{0, 0},
                                                     {0x1000, 1024},
                                                     {0x4000, 1},
                                                     {0x4000000, 4},
                                                     {3, 0},
                                                     {0x3ffc, 4095},
                                                     {0x3ffc000, 4095},
                                                     {0xffffffff, 252},
                                                     {0x100000000, 80},
                                                     {0x55d0c0a3f2ad, 2706}};
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

// Numbers that differ by a multiple of `modulus` are the same.
struct Modulo {
    unsigned operator()(int n) const { return static_cast<unsigned>(n % modulus); }
    bool operator()(int n, int m) const { return (n - m) % modulus == 0; }
    int modulus = 1;
};

TEST(OwningTable, TakesTheFunctorsOfItsSource) {
    VxOwningTable<int, Modulo, Modulo> source(7, Modulo{10}, Modulo{10});
    EXPECT_TRUE(source.insert(3));
    std::vector<VxOwningTable<int, Modulo, Modulo>> tables(3);
    tables.push_back(source);
    tables[0] = source;
    tables[1].copyObjects(source);
    tables[2] = std::move(source);
    EXPECT_TRUE(source.insert(5) && !source.insert(15));  // and leaves them there
    for (auto &table : tables) {
        EXPECT_FALSE(table.insert(13));
        EXPECT_EQ(*table.has(23), 3);
    }
}

TEST(OwningContainers, AreCopiedByTwoReaders) {
    const VxOwningList<std::string> list = VxOwningList<std::string>();
    const VxOwningTable<std::string> table(3);
    const auto read = [&] {
        EXPECT_EQ(VxOwningList<std::string>(list).length(), 0);
        EXPECT_EQ(VxOwningTable<std::string>(table).getNumBuckets(), 3);
    };
    const std::jthread other(read);
    read();
}

TEST(NumBuckets, AreThePrimesAbove) {
    EXPECT_EQ(vxNumBuckets(-1), 83);
    EXPECT_EQ(vxNumBuckets(84), 89);
    EXPECT_EQ(vxNumBuckets(1000), 1009);
    EXPECT_EQ(vxNumBuckets(1009), 1009);
    EXPECT_EQ(vxNumBuckets(2147483647), 2147483647);
}

}  // namespace
