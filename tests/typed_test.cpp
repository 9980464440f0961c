// The typed lists and tables, with the algorithms of the language and with elements that cannot
// always be copied.

#include <vxtyped.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <ranges>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

static_assert(std::ranges::random_access_range<VxOwningList<int>>);
static_assert(std::sortable<VxPointerList<const int>::iterator>);
static_assert(std::ranges::forward_range<VxOwningTable<int>>);
static_assert(std::ranges::forward_range<VxPointerTable<int>>);

// Counts itself, and refuses to be copied when the budget is spent.
struct Widget {
    explicit Widget(int number) : id(number) { ++alive; }
    Widget(const Widget &other) : id(other.id) {
        if (budget-- == 0) throw std::runtime_error("no more copies");
        ++alive;
    }
    Widget &operator=(const Widget &) = default;
    ~Widget() { --alive; }
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
}

TEST(OwningContainers, EndEveryElementAndLeaveNothingHalfCopied) {
    {
        VxOwningList<Widget> list;
        VxOwningTable<Widget, WidgetHash> table(7);
        for (int id = 0; id < 5; ++id) {
            list.append(Widget(id));
            EXPECT_TRUE(table.insert(Widget(id)));
            EXPECT_FALSE(table.insert(Widget(id)));
        }
        EXPECT_GT(table.getNumUsedBuckets(), 3);  // all bits of the hash count
        Widget::budget = 0;
        EXPECT_FALSE(list.append(Widget(9)));
        Widget::budget = 0;
        EXPECT_FALSE(list.set(0, list[1]));
        Widget::budget = 0;
        EXPECT_FALSE(table.insert(Widget(9)));
        Widget::budget = -1;
        EXPECT_EQ(ids(VxOwningTable<Widget, WidgetHash>(table)).size(), 5U);
        const VxOwningList<Widget> more(list);
        Widget::budget = 3;
        EXPECT_FALSE(list.insert(2, more));
        Widget::budget = 3;
        EXPECT_EQ(VxOwningList<Widget>(list).length(), 0);
        Widget::budget = 3;
        EXPECT_EQ((VxOwningTable<Widget, WidgetHash>(table)).getNumElements(), 0);
        VxOwningTable<Widget, WidgetHash> wide(100);
        Widget::budget = 3;
        EXPECT_EQ(wide.copyObjects(table).getNumElements(), 0);
        Widget::budget = -1;
        EXPECT_EQ(ids(list), (std::vector<int>{0, 1, 2, 3, 4}));
        EXPECT_EQ(ids(VxOwningList<Widget>(list)), ids(list));
        EXPECT_EQ(ids(VxOwningTable<Widget, WidgetHash>(table)), ids(table));
        EXPECT_EQ(wide.copyObjects(table).getNumElements(), 5);
        EXPECT_EQ(wide.has(Widget(3))->id, 3);
        EXPECT_TRUE(wide.remove(Widget(3)));
        EXPECT_EQ(wide.has(Widget(3)), nullptr);
    }
    EXPECT_EQ(Widget::alive, 0);
}

TEST(PointerContainers, ServeTheAlgorithms) {
    const std::string words[] = {"pear", "fig", "plum"};
    VxPointerList<const std::string> list;
    for (const std::string &word : words)
        EXPECT_TRUE(list.append(&word));
    const auto byPointee = [](const std::string *one, const std::string *other) {
        return *one < *other;
    };
    const auto first = [&list] { return std::as_const(list)[0]->c_str(); };
    std::sort(list.begin(), list.end(), byPointee);
    EXPECT_STREQ(first(), "fig");
    std::reverse(list.begin(), list.end());
    EXPECT_STREQ(first(), "plum");
    std::ranges::sort(list, byPointee);
    EXPECT_STREQ(first(), "fig");
    list[0] = &words[2];
    EXPECT_EQ(std::ranges::count(std::as_const(list), &words[2]), 2);
}

TEST(PointerContainers, TellANullFromNothing) {
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
