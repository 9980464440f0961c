// The lists and tables: long random runs compared with models, also out of memory; the order of
// their hooks, and the hash of an address.

#include "data_rows.h"
#include "faults.h"
#include "fuzz/models/container_model.h"

#include <vxtyped.h>

#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <utility>
#include <vector>

// Runs if a constructor throws; faults.cpp replaces the other forms.
void operator delete(void *block, const std::nothrow_t &) noexcept {
    ::operator delete(block);
}

namespace {

// A number in a block of its own. No fault strikes when it is made from a number; out of memory, a
// copy throws.
class Boxed {
public:
    explicit Boxed(int v, const faults::SuspendFaults & = {}) : box_(newBox(v)) {}
    Boxed(const Boxed &other) : box_(newBox(*other.box_)) {}
    Boxed(Boxed &&other) noexcept : box_(std::exchange(other.box_, nullptr)) {}
    Boxed &operator=(Boxed other) noexcept {
        std::swap(box_, other.box_);
        return *this;
    }
    ~Boxed() { std::free(box_); }
    void operator&() const = delete;
    bool operator==(const Boxed &other) const { return *box_ == *other.box_; }
    friend int value(const Boxed &boxed) { return *boxed.box_; }

private:
    static int *newBox(int v) {
        void *box = std::malloc(sizeof v);
        if (box == nullptr) throw std::bad_alloc();
        return new (box) int(v);
    }

    int *box_;
};

// Above the lower 32 bits.
struct HighHash {
    long long operator()(const Boxed &boxed) const { return value(boxed) * (1LL << 32); }
};

using BoxedList = VxOwningList<Boxed>;
using BoxedTable = VxOwningTable<Boxed, HighHash>;
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
                   TableModel<BoxedTable>, TableModel<VxPointerTable<int>>,
                   TableModel<VxPointerTable<const int>>>;
TYPED_TEST_SUITE(EveryContainer, Models);

TYPED_TEST(EveryContainer, DoesWhatItsModelDoes) {
    std::mt19937 random(20);
    TypeParam run;
    for (int step = 0; step < 10000; ++step)
        ASSERT_TRUE(run.change(chooser(random)) && run.complete) << "step " << step;
}

TYPED_TEST(EveryContainer, StaysAsItWasOutOfMemory) {
    const int before = faults::blocksOut();
    faults::failEach(faults::kMemory, [before](bool) {
        std::mt19937 random(22);
        {
            TypeParam run;
            for (int step = 0; step < 60; ++step)
                ASSERT_TRUE(run.change(chooser(random))) << "step " << step;
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

TEST(OwningTable, IsCopiedIntoOtherBucketsOrNotAtAll) {
    LoggedTable table(3, 1000, 't');
    for (int v = 0; v < 6; ++v)
        table.insert(v);
    faults::failEach(faults::kMemory, [&table](bool) {
        LoggedTable wide(50, 1000, 'w');
        wide.copyObjects(table);
        EXPECT_EQ(wide.getNumElements(), faults::disarm() ? 0 : 6);
    });
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
