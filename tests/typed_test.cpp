// The typed lists and tables, with the standard algorithms and with elements that cannot always be
// copied.

#include <vxtyped.h>

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <ranges>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

template <typename T>
concept Container = std::ranges::forward_range<const T> && std::ranges::common_range<T> &&
                    std::same_as < std::ranges::range_value_t<T>,
typename T::value_type >
    &&std::same_as<decltype(std::declval<T &>().cend()), typename T::const_iterator>
        &&std::convertible_to<typename T::iterator, typename T::const_iterator>
            &&std::is_nothrow_move_constructible_v<T> &&std::is_nothrow_move_assignable_v<T>;
static_assert(Container<VxOwningList<int>> && Container<VxPointerList<const int>>);
static_assert(Container<VxOwningTable<int>> && Container<VxPointerTable<int>>);
static_assert(std::ranges::random_access_range<VxOwningList<int>>);
static_assert(std::sortable<VxPointerList<const int>::iterator>);

// Counts itself, hides its address, and throws when a copy exceeds the budget.
struct Widget {
    explicit Widget(int number) : id(number) { ++alive; }
    Widget(const Widget &other) : id(other.id) {
        if (budget-- == 0) throw std::runtime_error("no more copies");
        ++alive;
    }
    Widget &operator=(const Widget &) = default;
    ~Widget() { --alive; }
    void operator&() const = delete;
    bool operator==(const Widget &other) const { return id == other.id; }

    int id;
    static inline int alive = 0;
    static inline int budget = -1;
};

struct WidgetHash {
    unsigned long operator()(const Widget &widget) const {
        return static_cast<unsigned long>(widget.id) << 40;  // above the lower 32 bits
    }
};

std::vector<int> ids(const auto &widgets) {
    std::vector<int> all;
    for (const Widget &widget : widgets)
        all.push_back(widget.id);
    return all;
}

// Numbers that differ by a multiple of `modulus` are the same.
struct Modulo {
    unsigned operator()(int n) const { return static_cast<unsigned>(n % modulus); }
    bool operator()(int n, int m) const { return (n - m) % modulus == 0; }
    int modulus = 1;
};

TEST(OwningList, ServesTheAlgorithms) {
    VxOwningList<std::string> list;
    for (const char *word : {"pear", "fig", "plum"})
        EXPECT_TRUE(list.append(word));
    std::sort(list.begin(), list.end());
    EXPECT_TRUE(list.set(1, list[2]));  // from the list itself
    EXPECT_EQ(std::vector<std::string>(list.begin(), list.end()),
              (std::vector<std::string>{"fig", "plum", "plum"}));
    const auto &constant = list;
    EXPECT_EQ(std::ranges::count(constant, "plum"), 2);
    EXPECT_EQ((constant.end() - 1)->size(), 4U);
    VxOwningList<std::string>::const_iterator it = list.begin();
    EXPECT_EQ(*it++, "fig");
    EXPECT_EQ(*it--, "plum");
    EXPECT_TRUE(it == list.begin() && it < list.end() && list.cend() - it == 3);
}

TEST(OwningContainers, DestroyEveryElementAndUndoIncompleteCopies) {
    {
        using List = VxOwningList<Widget>;
        using Table = VxOwningTable<Widget, WidgetHash>;
        List list;
        Table table(7);
        for (int id = 0; id < 5; ++id) {
            EXPECT_TRUE(list.append(Widget(id)));
            EXPECT_TRUE(table.insert(Widget(id)));
            EXPECT_FALSE(table.insert(Widget(id)));
        }
        EXPECT_GT(table.getNumUsedBuckets(), 3);  // all bits of the hash count
        List other;
        Table wide(100);
        VxOwningList<List> lists;
        VxOwningList<Table> tables;
        // Each copies five elements, or one where the budget is 0.
        const std::pair<int, std::function<bool()>> changes[] = {
            {0, [&] { return list.append(Widget(9)); }},
            {0, [&] { return list.set(0, list[1]); }},
            {0, [&] { return table.insert(Widget(9)); }},
            {3, [&] { return List(list).length() > 0; }},
            {3, [&] { return (other = list).length() > 0; }},
            {3, [&] { return lists.append(list); }},
            {3, [&] { return tables.append(table); }},
            {3, [&] { return Table(table).getNumElements() > 0; }},
            {3, [&] { return wide.copyObjects(table).getNumElements() > 0; }},
            {3, [&, more = list] { return list.insert(2, more); }}};
        for (const auto &[budget, change] : changes) {
            Widget::budget = budget;
            EXPECT_FALSE(change());
            Widget::budget = -1;
            EXPECT_EQ(ids(list), (std::vector<int>{0, 1, 2, 3, 4}));
            EXPECT_EQ(table.getNumElements(), 5);
            EXPECT_EQ(lists.length() + tables.length(), 0);
        }
        EXPECT_EQ(ids(List(list)), ids(list));
        EXPECT_EQ(wide.copyObjects(table).getNumElements(), 5);
        EXPECT_TRUE(lists.append(list) && tables.append(wide));
        EXPECT_EQ(tables[0].has(Widget(3))->id, 3);
    }
    EXPECT_EQ(Widget::alive, 0);
}

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
    std::thread other(read);
    read();
    other.join();
}

TEST(PointerContainers, ServeTheAlgorithms) {
    const std::string words[] = {"pear", "fig", "plum"};
    VxPointerList<const std::string> list;
    for (const std::string &word : words)
        EXPECT_TRUE(list.append(&word));
    std::ranges::sort(list, {}, [](const std::string *word) { return *word; });
    EXPECT_EQ(*std::as_const(list)[0], "fig");
    std::reverse(list.begin(), list.end());
    EXPECT_EQ(*list.cbegin()[0], "plum");
    list[2] = &words[2];
    EXPECT_EQ(std::ranges::count(std::as_const(list), &words[2]), 2);
}

TEST(PointerContainers, DistinguishNullFromAbsent) {
    int cell = 0;
    VxPointerTable<int> table(vxNumBuckets(3));
    table.insert(&cell);
    EXPECT_FALSE(table.has(nullptr));
    EXPECT_TRUE(table.insert(nullptr));
    EXPECT_FALSE(table.insert(nullptr));
    EXPECT_TRUE(table.has(nullptr));
    EXPECT_EQ(std::ranges::distance(table), 2);
    EXPECT_TRUE(table.begin() == table.begin() && table.begin() != ++table.begin());
    EXPECT_TRUE(table.remove(nullptr));
    EXPECT_FALSE(table.remove(nullptr));
}

TEST(NumBuckets, AreThePrimesAbove) {
    EXPECT_EQ(vxNumBuckets(-1), 83);
    EXPECT_EQ(vxNumBuckets(84), 89);
    EXPECT_EQ(vxNumBuckets(1000), 1009);
    EXPECT_EQ(vxNumBuckets(1009), 1009);
    EXPECT_EQ(vxNumBuckets(2147483647), 2147483647);
}

}  // namespace
