// The three lists: hooks, capacities, walks, copies, and long random runs compared with
// std::vector.

#include "fuzz/models/container_model.h"

#include <vxtyped.h>

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace {

using V = std::vector<int>;

// The fields of a list, after its pointer to the virtual table.
struct Fields {
    const void *table;
    int count, capacity;
    void **slots;
};

Fields fields(const auto &list) {
    Fields result;
    std::memcpy(&result, static_cast<const void *>(&list), sizeof result);
    return result;
}

template <typename List>
class EveryList : public testing::Test {};
using Lists = testing::Types<VxOwningList<int>, VxPointerList<int>, VxPointerList<const int>>;
TYPED_TEST_SUITE(EveryList, Lists);

TYPED_TEST(EveryList, GrowsToPowersOfTwoAndShrinksBelowAQuarter) {
    TypeParam grown;
    EXPECT_EQ(fields(grown).slots, nullptr);
    for (const int capacity : {1, 2, 4, 4, 8}) {
        EXPECT_TRUE(grown.append(element<TypeParam>(7)));
        EXPECT_EQ(fields(grown).capacity, capacity);
    }
    EXPECT_TRUE(grown.append(TypeParam()) && grown.append(listOf<TypeParam>(30)));
    EXPECT_EQ(fields(grown).capacity, 64);
    constexpr int kBeforeCountAfter[][3] = {{1, 0, 1},  {2, 0, 2},   {4, 0, 2}, {4, 1, 4},
                                            {8, 2, 8},  {8, 1, 4},   {8, 0, 2}, {64, 16, 64},
                                            {64, 3, 8}, {64, 15, 32}};
    for (const auto &[before, count, after] : kBeforeCountAfter) {
        TypeParam list = listOf<TypeParam>(before);
        static_cast<void>(list.set(0, element<TypeParam>(7)));  // in a full list
        ASSERT_EQ(fields(list).capacity, before);
        list.remove(count / 2, before - count);
        EXPECT_EQ(fields(list).capacity, after) << before << " to " << count;
        list.empty();
        EXPECT_EQ(fields(list).slots, nullptr);
        EXPECT_EQ(fields(list).capacity, 0);
        list.swap(0, 0);  // touches no slot
    }
}

TYPED_TEST(EveryList, CopiesHaveTheCapacityOfTheirSourceAndMovesItsSlots) {
    TypeParam list = listOf<TypeParam>(8);
    list.remove(3, 5);
    TypeParam assigned = listOf<TypeParam>(20);
    assigned = list;
    EXPECT_EQ(fields(assigned).capacity, 8);
    EXPECT_EQ(fields(TypeParam(list)).capacity, 8);
    list.remove(0, 3);
    EXPECT_EQ(fields(TypeParam(list)).capacity, 2);

    void **const slots = fields(assigned).slots;
    TypeParam moved(std::move(assigned));
    TypeParam &self = list = std::move(moved);
    list = std::move(self);
    EXPECT_EQ(fields(list).slots, slots);
}

#ifndef NDEBUG
TYPED_TEST(EveryList, AssertsItsLimits) {
    TypeParam list = listOf<TypeParam>(3);
    EXPECT_DEATH(list.swap(0, 3), "");
    EXPECT_DEATH(static_cast<void>(list.set(-1, element<TypeParam>(0))), "");
    EXPECT_DEATH(static_cast<void>(list.insert(4, element<TypeParam>(0))), "");
    EXPECT_DEATH(list.remove(2, 2), "");
    EXPECT_DEATH(static_cast<void>(*list.end()), "");
}
#endif

// The iterators of each class, which the typed classes do not use.
template <typename Iterator, typename ConstIterator, typename List>
void walkBothWays(List list, int (*valueOf)(const void *)) {
    Iterator it(list);
    V seen;
    for (it.reset(0); it.isValid() != 0;)
        seen.push_back(valueOf(it.postInc()));
    EXPECT_EQ(it.getIndex(), 3);
    for (it.reset(1); it.isValid() != 0;)
        seen.push_back(valueOf(it.postDec()));
    EXPECT_EQ(it.getIndex(), -1);
    EXPECT_EQ(seen, V({0, 1, 2, 2, 1, 0}));
    Iterator other(list);
    EXPECT_EQ((other = it, other.getIndex()), -1);
    EXPECT_EQ(std::as_const(other).getList(), &list);
    ConstIterator constWalk(list);
    EXPECT_EQ(valueOf(constWalk.postInc()) + valueOf(constWalk.postDec()), 1);
    EXPECT_EQ(valueOf(constWalk.postInc()), 0);
    EXPECT_EQ(constWalk.isValid(), 1);

    it.reset(-3);  // any number but 0 is the end
    ConstIterator constIt(it);
    EXPECT_EQ(valueOf(constIt.getElem()), 2);
    EXPECT_EQ(valueOf(it.getElem()), 2);
    EXPECT_EQ(it.isValid(), 1);
    EXPECT_EQ(it.getList()->length(), 3);
    list.remove(2, 1);
    EXPECT_EQ(it.isValid(), 0);
    EXPECT_EQ(constIt.isValid(), 0);
    const List none;
    ConstIterator noneIt(none);
    noneIt.reset(1);
    EXPECT_EQ(noneIt.getIndex(), -1);
    EXPECT_EQ(constIt.assign(noneIt).getList(), &none);
    EXPECT_EQ(constIt.assign(it).getIndex(), 2);
    EXPECT_EQ((noneIt = it, noneIt.getList()), &list);
}

TEST(ListIterators, WalkBothWays) {
    walkBothWays<VxArrayListIterator, VxArrayListConstIterator>(
        listOf<VxOwningList<int>>(3), [](const void *e) { return *static_cast<const int *>(e); });
    const auto cell = [](const void *e) { return value(static_cast<const int *>(e)); };
    walkBothWays<VxPArrayListIterator, VxPArrayListConstIterator>(listOf<VxPointerList<int>>(3),
                                                                  cell);
    walkBothWays<VxCPArrayListIterator, VxCPArrayListConstIterator>(
        listOf<VxPointerList<const int>>(3), cell);
}

// The protected members of the base, which the typed lists hide.
template <typename Base>
struct Opened : Base {
    using Base::append;
    using Base::get;
};

TEST(ListIterators, GiveReferencesToSlotsOfPointers) {
    Opened<VxPArrayList> list;
    Opened<VxCPArrayList> constants;
    for (const int n : {1, 2}) {
        list.append(listOf<VxPointerList<int>>(n));
        constants.append(listOf<VxPointerList<const int>>(n));
    }
    VxPArrayListIterator it(list);
    it.postInc() = &cells[40];
    it.getElem() = &cells[41];
    VxCPArrayListIterator constIt(constants);
    constIt.reset(1);
    constIt.postDec() = &cells[50];
    for (const auto &[at, cell, constCell] : {std::array{0, 40, 0}, {1, 41, 0}, {2, 1, 50}}) {
        EXPECT_EQ(list.get(at), &cells[cell]);
        EXPECT_EQ(constants.get(at), &cells[constCell]);
    }
}

TYPED_TEST(EveryList, DoesWhatAVectorDoes) {
    std::mt19937 random(20);
    ListModel<TypeParam> run;
    for (int step = 0; step < 20000; ++step) {
        const auto below = [&](int n) {
            return static_cast<int>(random() % static_cast<unsigned>(n));
        };
        ASSERT_TRUE(run.change(below)) << "step " << step;
        ASSERT_LE(fields(run.list).count, fields(run.list).capacity);
    }
}

struct Logged : Logging<VxArrayList> {
    using Logging::Logging;
    using VxArrayList::append;
    using VxArrayList::insert;
    void set(int i, int v) { VxArrayList::set(i, &v); }
    void append(int v) { VxArrayList::append(&v); }
};

TEST(OwningList, RunsItsHooksInOrder) {
    Logged list('a');
    Logged more('m');
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
    EXPECT_EQ(logOf([&] { list.remove(99, 0); }), "");
    EXPECT_EQ(logOf([&] { list.remove(1, 6); }), "a-2 a-3 a-4 a-5 a-6 a-7 ");
    EXPECT_EQ(logOf([&] { Logged copy(more); }), "m+7 m+8 b-7 b-8 ");
    EXPECT_EQ(logOf([&] { list = more; }), "a-8 m+7 m+8 ");
    const Logged &self = list;
    EXPECT_EQ(logOf([&] { list = self; }), "");
    EXPECT_EQ(logOf([&] { list.empty(); }), "a-7 a-8 ");
}

}  // namespace
