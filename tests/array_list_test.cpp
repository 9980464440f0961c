// The three lists: hooks, capacities, walks, copies, and long random runs against std::vector.

#include <vxarraylist.h>

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

int cells[1000];  // what the lists of pointers point to: cell v stands for the value v

// Typed by hand, as a user would; hooks leave a line each in a log that all lists share.
std::string hookLog;

class Owner : public VxArrayList {
public:
    using Iterator = VxArrayListIterator;
    using ConstIterator = VxArrayListConstIterator;

    explicit Owner(char name = 'a') : name_(name) {}
    Owner(const Owner &source) : VxArrayList(source), name_('b') {}
    Owner &operator=(const Owner &source) {
        VxArrayList::operator=(source);
        return *this;
    }
    ~Owner() override { empty(); }
    int at(int i) const { return *static_cast<const int *>(get(i)); }
    void set(int i, int v) { VxArrayList::set(i, &v); }
    void insert(int i, int v) { VxArrayList::insert(i, &v); }
    void insert(int i, const Owner &list) { VxArrayList::insert(i, list); }
    void append(int v) { VxArrayList::append(&v); }
    void append(const Owner &list) { VxArrayList::append(list); }
    static int value(const void *element) { return *static_cast<const int *>(element); }

protected:
    void *copyElement(const void *element) override { return new int(log("+", value(element))); }
    void destroyElement(void *stored) override {
        log("-", value(stored));
        delete static_cast<int *>(stored);
    }

private:
    int log(const char *what, int v) {
        hookLog += std::string(1, name_) + what + std::to_string(v) + ' ';
        return v;
    }
    char name_;
};

template <typename Base, typename ListIterator, typename ListConstIterator>
class Pointers : public Base {
public:
    using Iterator = ListIterator;
    using ConstIterator = ListConstIterator;

    int at(int i) const { return value(Base::get(i)); }
    void set(int i, int v) { Base::set(i, &cells[v]); }
    void insert(int i, int v) { Base::insert(i, &cells[v]); }
    void insert(int i, const Pointers &list) { Base::insert(i, list); }
    void append(int v) { Base::append(&cells[v]); }
    void append(const Pointers &list) { Base::append(list); }
    static int value(const void *element) {
        return static_cast<int>(static_cast<const int *>(element) - cells);
    }
    using Base::get;
};

using PList = Pointers<VxPArrayList, VxPArrayListIterator, VxPArrayListConstIterator>;
using CPList = Pointers<VxCPArrayList, VxCPArrayListIterator, VxCPArrayListConstIterator>;

// The fields, as they lie behind the table of virtual members.
struct Fields {
    const void *table;
    int count, capacity;
    void **slots;
};

template <typename List>
Fields fields(const List &list) {
    Fields result;
    std::memcpy(&result, static_cast<const void *>(&list), sizeof result);
    return result;
}

template <typename List>
std::vector<int> values(const List &list) {
    std::vector<int> all;
    for (int i = 0; i < list.length(); ++i)
        all.push_back(list.at(i));
    return all;
}

template <typename List>
List listOf(int n) {
    List list;
    for (int i = 0; i < n; ++i)
        list.append(i);
    return list;
}

using V = std::vector<int>;

template <typename List>
class EveryList : public testing::Test {};
using Lists = testing::Types<Owner, PList, CPList>;
TYPED_TEST_SUITE(EveryList, Lists);

TYPED_TEST(EveryList, GrowsToPowersOfTwo) {
    TypeParam list;
    EXPECT_EQ(fields(list).slots, nullptr);
    for (const int capacity : {1, 2, 4, 4, 8}) {
        list.append(7);
        EXPECT_EQ(fields(list).capacity, capacity);
    }
    TypeParam other;
    other.insert(0, list);
    EXPECT_EQ(fields(other).capacity, 8);
    other.append(TypeParam());
    EXPECT_EQ(fields(other).capacity, 8);

    TypeParam roomy = listOf<TypeParam>(8);
    roomy.remove(2, 6);
    roomy.insert(1, listOf<TypeParam>(5));
    EXPECT_EQ(fields(roomy).capacity, 8);
    roomy.insert(2, listOf<TypeParam>(30));  // two doublings at once, with elements on both sides
    EXPECT_EQ(fields(roomy).capacity, 64);
}

TYPED_TEST(EveryList, ShrinksBelowAQuarter) {
    constexpr struct {
        int before, count, after;
    } kTable[] = {{1, 0, 1}, {2, 0, 2}, {4, 0, 2},    {4, 1, 4},    {8, 2, 8},
                  {8, 1, 4}, {8, 0, 2}, {64, 16, 64}, {64, 15, 32}, {64, 3, 8}};
    for (const auto &row : kTable) {
        TypeParam list = listOf<TypeParam>(row.before);
        ASSERT_EQ(fields(list).capacity, row.before);
        list.remove(row.count / 2, row.before - row.count);
        EXPECT_EQ(fields(list).capacity, row.after) << row.before << " to " << row.count;
        list.empty();
        EXPECT_EQ(fields(list).slots, nullptr);
        EXPECT_EQ(fields(list).capacity, 0);
    }
}

TYPED_TEST(EveryList, CopiesHaveTheCapacityOfTheirSource) {
    TypeParam list = listOf<TypeParam>(8);
    list.remove(3, 5);
    const TypeParam copy(list);
    TypeParam assigned = listOf<TypeParam>(20);
    assigned = list;
    list.set(0, 9);
    for (const TypeParam *it : {&copy, static_cast<const TypeParam *>(&assigned)}) {
        EXPECT_EQ(values(*it), V({0, 1, 2}));
        EXPECT_EQ(fields(*it).capacity, 8);
    }
    const TypeParam &self = assigned;
    assigned = self;
    EXPECT_EQ(values(assigned), V({0, 1, 2}));

    TypeParam vacant = listOf<TypeParam>(2);
    vacant.remove(0, 2);
    EXPECT_EQ(fields(TypeParam(vacant)).capacity, 2);
}

TYPED_TEST(EveryList, WalksBothWays) {
    TypeParam list = listOf<TypeParam>(3);
    typename TypeParam::Iterator it(list);
    V seen;
    for (it.reset(0); it.isValid() != 0;)
        seen.push_back(TypeParam::value(it.postInc()));
    EXPECT_EQ(it.getIndex(), 3);
    for (it.reset(1); it.isValid() != 0;)
        seen.push_back(TypeParam::value(it.postDec()));
    EXPECT_EQ(it.getIndex(), -1);
    EXPECT_EQ(seen, V({0, 1, 2, 2, 1, 0}));

    it.reset(-3);  // any number but 0 is the end
    typename TypeParam::ConstIterator constIt(it);
    EXPECT_EQ(TypeParam::value(constIt.getElem()), 2);
    EXPECT_EQ(constIt.getList(), &list);
    list.remove(2, 1);
    EXPECT_EQ(it.isValid(), 0);
    EXPECT_EQ(constIt.isValid(), 0);
    const TypeParam none;
    typename TypeParam::ConstIterator noneIt(none);
    EXPECT_EQ(noneIt.isValid(), 0);
    noneIt.reset(1);
    EXPECT_EQ(noneIt.getIndex(), -1);
    EXPECT_EQ(constIt.assign(noneIt).getList(), &none);
    EXPECT_EQ((noneIt = it, noneIt.getList()), &list);
}

TYPED_TEST(EveryList, DoesWhatAVectorDoes) {
    std::mt19937 random(20);
    const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    TypeParam list;
    V model;
    for (int step = 0; step < 20000; ++step) {
        const int n = list.length();
        const int at = below(n + 1);
        const int value = below(1000);
        const int action = below(n == 0 ? 5 : 8);
        if (action == 0) {
            list.append(value);
            model.push_back(value);
        } else if (action < 3) {
            list.insert(at, value);
            model.insert(model.begin() + at, value);
        } else if (action == 3) {
            const TypeParam more = listOf<TypeParam>(below(6));
            const V all = values(more);
            list.insert(at, more);
            model.insert(model.begin() + at, all.begin(), all.end());
        } else if (action == 4) {
            const int gone = below(below(40) == 0 ? n - at + 1 : std::min(n - at, 9) + 1);
            list.remove(at, gone);
            model.erase(model.begin() + at, model.begin() + at + gone);
        } else if (action == 5) {
            list.set(at % n, value);
            model[static_cast<std::size_t>(at % n)] = value;
        } else {
            list.swap(at % n, value % n);
            std::swap(model[static_cast<std::size_t>(at % n)],
                      model[static_cast<std::size_t>(value % n)]);
        }
        ASSERT_EQ(values(list), model) << "step " << step;
        const Fields now = fields(list);
        ASSERT_LE(now.count, now.capacity);
        ASSERT_EQ(now.capacity & (now.capacity - 1), 0);
    }
}

TEST(OwningList, RunsItsHooksInOrder) {
    Owner list;
    Owner more('m');
    for (const int v : {7, 8})
        more.append(v);
    for (int v = 0; v < 8; ++v)
        list.append(v);
    const auto logOf = [](auto &&action) {
        hookLog.clear();
        action();
        return hookLog;
    };
    EXPECT_EQ(logOf([&] { list.set(1, 9); }), "a-1 a+9 ");
    EXPECT_EQ(logOf([&] { list.insert(1, more); }), "a+7 a+8 ");
    EXPECT_EQ(logOf([&] { list.swap(0, 2); }), "");
    EXPECT_EQ(logOf([&] { list.remove(1, 3); }), "a-7 a-0 a-9 ");
    EXPECT_EQ(logOf([&] { list.remove(99, 0); }), "");
    EXPECT_EQ(logOf([&] { list.remove(1, 6); }), "a-2 a-3 a-4 a-5 a-6 a-7 ");
    EXPECT_EQ(logOf([&] { Owner copy(more); }), "m+7 m+8 b-7 b-8 ");
    EXPECT_EQ(logOf([&] { list = more; }), "a-8 m+7 m+8 ");
    EXPECT_EQ(logOf([&] { list.empty(); }), "a-7 a-8 ");
    EXPECT_EQ(logOf([&] { list.empty(); }), "");
}

TEST(PointerLists, GiveReferencesToTheirSlots) {
    PList list = listOf<PList>(3);
    VxPArrayListIterator it(list);
    it.postInc() = &cells[40];
    it.getElem() = &cells[41];
    list.get(2) = nullptr;
    EXPECT_EQ(list.at(0), 40);
    EXPECT_EQ(list.at(1), 41);
    EXPECT_EQ(list.get(2), nullptr);

    CPList constants = listOf<CPList>(2);
    VxCPArrayListIterator constIt(constants);
    constIt.reset(1);
    constIt.postDec() = &cells[50];
    constants.get(0) = &cells[51];
    EXPECT_EQ(values(constants), V({51, 50}));
}

}  // namespace
