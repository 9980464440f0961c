// The lists and tables: long random runs compared with models, also out of memory; the order of
// their hooks, and the hash of an address.

#include "data_rows.h"
#include "faults.h"
#include "fuzz/models/container_model.h"
#include "random_text.h"

#include <vxtyped.h>

#include <concepts>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <ranges>
#include <string>

namespace {

// What the algorithms of the standard library require.
template <typename T>
constexpr bool isContainer() {
    static_assert(std::ranges::forward_range<const T> && std::ranges::common_range<T>);
    static_assert(std::same_as<std::ranges::range_value_t<T>, typename T::value_type>);
    static_assert(std::same_as<decltype(std::declval<T &>().cend()), typename T::const_iterator>);
    static_assert(std::convertible_to<typename T::iterator, typename T::const_iterator>);
    return std::is_nothrow_move_constructible_v<T> && std::is_nothrow_move_assignable_v<T>;
}

template <typename List>
constexpr bool isList() {
    static_assert(std::ranges::random_access_range<const List>);
    return isContainer<List>() && std::sortable<typename List::iterator>;
}

static_assert(isList<VxOwningList<int>>() && isContainer<VxOwningTable<int>>());
static_assert(isList<VxPointerList<int>>() && isContainer<VxPointerTable<int>>());
static_assert(isList<VxPointerList<const int>>() && isContainer<VxPointerTable<const int>>());

struct OneBucket : BoxedTable {
    OneBucket() : BoxedTable(1) {}
    bool append(const Boxed &boxed) { return insert(boxed); }
};

// Has one element, which is lost if that cannot be copied.
template <typename Container>
struct Nested : Container {
    explicit Nested(int v, const faults::SuspendFaults & = {}) {
        EXPECT_TRUE(this->append(Boxed(v)));
    }
    friend int value(const Nested &nested) {
        return nested.begin() == nested.end() ? -1 : value(*nested.begin());
    }
};

// As many nulls as the number. Null is an element, and yet a sign of a copy that failed elsewhere.
struct Nulls : VxPointerList<int> {
    explicit Nulls(int v, const faults::SuspendFaults & = {}) {
        while (length() < v)
            EXPECT_TRUE(append(nullptr));
    }
    friend int value(const Nulls &nulls) { return nulls.length(); }
};

template <typename Model>
class EveryContainer : public testing::Test {};
using Models =
    testing::Types<ListModel<BoxedList>, ListModel<VxOwningList<Nested<BoxedList>>>,
                   ListModel<VxOwningList<Nested<OneBucket>>>, ListModel<VxOwningList<Nulls>>,
                   ListModel<VxPointerList<int>>, ListModel<VxPointerList<const int>>,
                   TableModel<BoxedTable>, TableModel<VxOwningTable<int>>,
                   TableModel<VxPointerTable<int>>, TableModel<VxPointerTable<const int>>>;
TYPED_TEST_SUITE(EveryContainer, Models);

TYPED_TEST(EveryContainer, DoesWhatItsModelDoes) {
    Random random;
    TypeParam run;
    for (int step = 0; step < 10000; ++step)
        ASSERT_TRUE(run.change(std::ref(random)) && run.complete) << "step " << step;
}

TYPED_TEST(EveryContainer, StaysAsItWasOutOfMemory) {
    const int before = faults::blocksOut();
    faults::failEach(faults::kMemory, [before](bool) {
        Random random;
        {
            TypeParam run;
            for (int step = 0; step < 60; ++step)
                ASSERT_TRUE(run.change(std::ref(random))) << "step " << step;
            EXPECT_TRUE(faults::disarm() || run.complete);
        }
        EXPECT_EQ(faults::blocksOut(), before);
    });
}

#ifndef NDEBUG
template <typename List, typename Table>
void expectAssertions() {
    List list;
    EXPECT_TRUE(list.append(element<List>(7)));
    list.swap(5, 5);  // touches no slot
    EXPECT_DEATH(list.swap(0, 1), "");
    EXPECT_DEATH(static_cast<void>(list.set(-1, element<List>(0))), "");
    EXPECT_DEATH(static_cast<void>(list.insert(2, element<List>(0))), "");
    EXPECT_DEATH(list.remove(0, 2), "");
    EXPECT_DEATH(static_cast<void>(*list.end()), "");
    EXPECT_DEATH(*Table().begin(), "");
}

TEST(ContainersDeathTest, AssertTheirLimits) {
    expectAssertions<VxOwningList<int>, VxOwningTable<int>>();
    expectAssertions<VxPointerList<int>, VxPointerTable<int>>();
    expectAssertions<VxPointerList<const int>, VxPointerTable<const int>>();
}
#endif

// What the hooks of the containers below did.
std::string hookLog;

std::string logOf(auto &&action) {
    hookLog.clear();
    action();
    return hookLog;
}

constexpr unsigned numbers[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};

// Owns numbers except 9. Each hook logs one word: its owner, what it did, and with which number.
template <typename Base>
struct Logging : Base {
    template <typename... Arguments>
    explicit Logging(char owner, Arguments... arguments) : Base(arguments...), name(owner) {}
    Logging(const Logging &source) : Base(source), name('b') {}
    Logging &operator=(const Logging &source) {
        Base::operator=(source);
        return *this;
    }
    ~Logging() override { this->empty(); }

    unsigned log(char what, const void *which) {
        const unsigned v = *static_cast<const unsigned *>(which);
        hookLog += std::string({name, what}) + std::to_string(v) + ' ';
        return v;
    }
    void *copyElement(const void *given) override {
        const unsigned v = log('+', given);
        return v == 9 ? nullptr : new unsigned(v);
    }
    void destroyElement(void *stored) override {
        log('-', stored);
        delete static_cast<unsigned *>(stored);
    }

    char name;
};

struct LoggedList : Logging<VxArrayList> {
    using Logging::Logging;
    using VxArrayList::append;
    using VxArrayList::insert;
    using VxArrayList::set;
};

TEST(OwningList, RunsItsHooksInOrder) {
    LoggedList list('a');
    LoggedList more('m');
    for (int i = 0; i < 8; ++i)
        list.append(numbers + i);
    more.append(numbers + 7);
    more.append(numbers + 8);
    EXPECT_EQ(logOf([&] { list.set(1, numbers + 6); }), "a-1 a+6 ");
    EXPECT_EQ(logOf([&] { list.insert(1, more); }), "a+7 a+8 ");
    EXPECT_EQ(logOf([&] { list.append(more); }), "a+7 a+8 ");
    EXPECT_EQ(logOf([&] { list.remove(10, 2); }), "a-7 a-8 ");
    EXPECT_EQ(logOf([&] { list.swap(0, 2); }), "");
    EXPECT_EQ(logOf([&] { list.remove(1, 3); }), "a-7 a-0 a-6 ");
    EXPECT_EQ(logOf([&] { list.remove(1, 6); }), "a-2 a-3 a-4 a-5 a-6 a-7 ");
    EXPECT_EQ(logOf([&] { LoggedList copy(more); }), "m+7 m+8 b-7 b-8 ");
    EXPECT_EQ(logOf([&] { list = more; }), "a-8 m+7 m+8 ");
    const LoggedList &self = list;
    EXPECT_EQ(logOf([&] { list = self; }), "");
    EXPECT_EQ(logOf([&] { list.empty(); }), "a-7 a-8 ");
}

// Its hashes are 0 to 3.
struct LoggedTable : Logging<VxHashTable> {
    using Logging::Logging;
    using VxHashTable::copyObjects;
    using VxHashTable::has;
    using VxHashTable::insert;
    using VxHashTable::remove;

    unsigned int hashElement(const void *given) override { return log('#', given) & 3U; }
    short equalElements(const void *given, const void *stored) override {
        return log('=', stored) == *static_cast<const unsigned *>(given) ? -2 : 0;  // not 0 is yes
    }
};

TEST(OwningTable, RunsItsHooksInOrder) {
    LoggedTable table('a', 10);
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(nullptr), 0); }), "");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(numbers + 1), 1); }), "a#1 a+1 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(numbers + 5), 1); }), "a#5 a=1 a+5 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(numbers + 1), 0); }), "a#1 a=1 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.insert(numbers + 9), 0); }), "a#9 a=1 a=5 a+9 ");
    EXPECT_EQ(logOf([&] { EXPECT_NE(table.has(numbers + 5), nullptr); }), "a#5 a=1 a=5 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.remove(numbers + 9), 0); }), "a#9 a=1 a=5 ");
    EXPECT_EQ(logOf([&] { EXPECT_EQ(table.remove(numbers + 1), 1); }), "a#1 a=1 a-1 ");

    LoggedTable other('o', 2);
    other.insert(numbers + 1);
    EXPECT_EQ(logOf([&] { other.insert(numbers + 3); }),
              "o#3 o+3 ");  // its bucket, but not its hash
    EXPECT_EQ(logOf([&] { LoggedTable copy(other); }), "o+1 o+3 b-1 b-3 ");
    EXPECT_EQ(logOf([&] { table.copyObjects(other); }), "a-5 o+1 o+3 ");
    EXPECT_EQ(logOf([&] { table = other; }), "a-1 a-3 o+1 o+3 ");
    const LoggedTable &self = table;
    EXPECT_EQ(logOf([&] { table = self; }), "");
    EXPECT_EQ(logOf([&] { table.empty(); }), "a-1 a-3 ");
    faults::failEach(faults::kMemory, [&other](bool) {
        LoggedTable wide('w', 50);
        wide.copyObjects(other);
        EXPECT_EQ(wide.getNumElements(), faults::disarm() ? 0 : 2);
    });
}

TEST(PointerTables, FoldAnAddress) {
    for (const DataRow &row : dataRows("containers.txt", "hashes")) {
        const auto *address = reinterpret_cast<const void *>(std::stoul(row[0], nullptr, 0));
        EXPECT_EQ(VxPHashTable::hash(address), std::stoul(row[1])) << row[0];
    }
}

TEST(PointerTables, SpreadAddressesOfTheHeap) {
    for (const DataRow &row : dataRows("containers.txt", "distances")) {
        VxPointerTable<char> table(1009);
        for (std::uintptr_t i = 0; i < 1000; ++i)
            table.insert(reinterpret_cast<char *>(0x55d0c0a3f2a0 + i * std::stoul(row[0])));
        EXPECT_GT(table.getNumUsedBuckets(), 450) << row[0];  // 634 with random hashes
    }
}

TEST(Buckets, AreAPrimeNumberAndAtLeastEightyThree) {
    for (const DataRow &row : dataRows("containers.txt", "buckets"))
        EXPECT_EQ(vxNumBuckets(std::stoi(row[0])), std::stoi(row[1]));
    struct Derived : VxPHashTable {};
    struct ConstDerived : VxCPHashTable {};
    EXPECT_EQ(Derived().getNumBuckets(), 83);
    EXPECT_EQ(ConstDerived().getNumBuckets(), 83);
}

}  // namespace
