// What lists, tables and strings do when the n-th allocation fails, for every n, once and from then
// on; and which members allocate at all. The linker puts the functions below in front of the
// allocator.

#include <vxstring.h>
#include <vxtyped.h>

#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace {

int allocations;    // since the count began
int failFrom = -1;  // the first allocation that fails, -1 for none
bool failsForGood;  // the ones behind it too

bool fails() {
    const int number = allocations++;
    return failFrom >= 0 && (failsForGood ? number >= failFrom : number == failFrom);
}

}  // namespace

extern "C" {
void *__real_malloc(std::size_t size);
void *__real_realloc(void *block, std::size_t size);
void *__real__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t &tag);
void *__real__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t &tag);

void *__wrap_malloc(std::size_t size) {
    return fails() ? nullptr : __real_malloc(size);
}
void *__wrap_realloc(void *block, std::size_t size) {
    return fails() ? nullptr : __real_realloc(block, size);
}
void *__wrap__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t &tag) {
    return fails() ? nullptr : __real__ZnamRKSt9nothrow_t(size, tag);
}
void *__wrap__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t &tag) {
    return fails() ? nullptr : __real__ZnwmRKSt9nothrow_t(size, tag);
}
}

namespace {

int countIn(const std::function<void()> &action) {
    allocations = 0;
    failFrom = -1;
    action();
    return allocations;
}

// Runs an action on a fresh subject for each allocation that can fail. It tells whether it did
// all that it had to, and checks what it finds otherwise.
void failEach(const std::function<bool()> &attempt) {
    for (const bool forGood : {false, true}) {
        int n = 0;
        for (;; ++n) {
            ASSERT_LT(n, 1000);
            allocations = 0;
            failFrom = n;
            failsForGood = forGood;
            const bool whole = attempt();
            const bool reached = allocations > n;
            failFrom = -1;
            if (!reached) {
                EXPECT_TRUE(whole);
                break;
            }
        }
        EXPECT_GT(n, 0);  // something was allocated at all
    }
}

// What an attempt starts from is there in any case.
template <typename Subject, typename... Arguments>
Subject withMemory(const Arguments &...arguments) {
    const int kept = std::exchange(failFrom, -1);
    const int count = allocations;
    Subject subject(arguments...);
    failFrom = kept;
    allocations = count;
    return subject;
}

using Texts = VxOwningList<std::string>;
using TextTable = VxOwningTable<std::string>;

TEST(OutOfMemory, ListsStayAsTheyWere) {
    Texts five;
    for (const char *text : {"a", "b", "c", "d", "e"})
        five.append(text);
    failEach([&five] {
        Texts list = withMemory<Texts>(five);
        const bool one = list.insert(2, "x");
        EXPECT_EQ(list.length(), one ? 6 : 5);
        EXPECT_EQ(list[2], one ? "x" : "c");
        const int before = list.length();
        const bool all = list.append(five);
        EXPECT_EQ(list.length(), all ? before + 5 : before);
        list.remove(1, list.length() - 1);  // shrinks, or goes on in the old slots
        EXPECT_EQ(list.length(), 1);
        EXPECT_EQ(list[0], "a");
        const Texts copy(list);
        EXPECT_TRUE(copy.length() == 0 || copy[0] == "a");
        return one && all && copy.length() == 1;
    });
    int cell = 0;
    failEach([&cell] {
        VxPointerList<int> list;
        bool whole = true;
        for (int i = 0; i < 20; ++i)
            whole &= list.append(&cell);
        VxPointerList<int> copy;
        copy = list;
        EXPECT_TRUE(copy.length() == 0 || copy.length() == list.length());
        copy.remove(0, copy.length());
        return whole && list.length() == 20;
    });
}

TEST(OutOfMemory, TablesStayAsTheyWereAndCopiesAreWholeOrEmpty) {
    const std::vector<std::string> words = {"ash", "beech", "fir", "oak", "pine", "yew"};
    failEach([&words] {
        TextTable table(3);
        int inserted = 0;
        for (const std::string &word : words)
            inserted += table.insert(word) ? 1 : 0;
        EXPECT_EQ(table.getNumElements(), inserted);
        const TextTable copy(table);
        TextTable wide(50);
        wide.copyObjects(table);
        for (const TextTable *it : {&copy, static_cast<const TextTable *>(&wide)}) {
            const int n = it->getNumElements();
            EXPECT_TRUE(n == 0 || n == inserted) << n;
            for (const std::string &word : *it)
                EXPECT_NE(table.has(word), nullptr);
        }
        const int kept = copy.getNumElements() + wide.getNumElements();
        wide = withMemory<TextTable>(5);
        const bool revived = wide.getNumBuckets() == 5;
        const bool planted = wide.insert("elm");
        EXPECT_EQ(wide.has("elm") != nullptr, planted);
        return inserted == 6 && kept == 12 && revived;
    });
    int cells[6];
    failEach([&cells] {
        VxPointerTable<int> table(3);
        int inserted = 0;
        for (int &cell : cells)
            inserted += table.insert(&cell) ? 1 : 0;
        EXPECT_EQ(table.getNumElements(), inserted);
        VxPointerTable<int> copy(table);
        VxPointerTable<int> wide(50);
        wide.copyObjects(table);
        for (const int n : {copy.getNumElements(), wide.getNumElements()})
            EXPECT_TRUE(n == 0 || n == inserted) << n;
        return inserted == 6 && copy.getNumElements() + wide.getNumElements() == 12;
    });
}

TEST(OutOfMemory, StringsStayAsTheyWere) {
    failEach([] {
        const VxString made("abc");
        EXPECT_TRUE(vxStringView(made) == "abc" || vxStringView(made).empty());
        EXPECT_STREQ(made, std::string(vxStringView(made)).c_str());

        const VxString text = withMemory<VxString>("abc");
        const VxString piece = withMemory<VxString>("defgh");
        const std::vector<std::pair<std::function<void(VxString &)>, const char *>> changes = {
            {[&](VxString &s) { s += piece; }, "abcdefgh"},
            {[&](VxString &s) { s.set(1, 1, piece); }, "adefghc"},
            {[](VxString &s) { s.toUpper(); }, "ABC"},
            {[](VxString &s) { s[1] = 'x'; }, "axc"},
            {[](VxString &s) { s.setLengthHint(50); }, "abc"}};
        bool whole = vxStringView(made) == "abc";
        for (const auto &[change, result] : changes) {
            VxString changed(text);
            change(changed);
            const bool done = vxStringView(changed) == result;
            EXPECT_TRUE(done || vxStringView(changed) == "abc") << vxStringView(changed);
            EXPECT_EQ(vxStringView(text), "abc");  // no sharer is written to
            change(changed);                       // and the string can still be used
            EXPECT_STREQ(changed, std::string(vxStringView(changed)).c_str());
            whole = whole && done;
        }
        VxString vacant = text.get(1);  // a string that had to do without a body
        EXPECT_TRUE(vxStringView(vacant) == "bc" || vxStringView(vacant).empty());
        whole = whole && vacant.length() == 2;
        vacant.setMemoryHint(VxString::kDoubleRoom);
        failFrom = -1;
        vacant += piece;
        EXPECT_TRUE(vxStringView(vacant).ends_with("defgh"));
        return whole;
    });
}

TEST(Allocations, NoneForReadingAStringOrSharingIt) {
    const VxString text("some text with an Needle");
    const VxString same("some text with an Needle");
    const VxString pattern("needle");
    EXPECT_EQ(countIn([&] {
                  VxString copy(text);
                  VxString other(copy);
                  other = text;
                  const VxString sum = text + VxString(text.get(0, 0));  // the one that is made
                  EXPECT_EQ(copy.findC(pattern, 0), 18);
                  EXPECT_EQ(other.find(pattern, 0), -1);
                  EXPECT_EQ(text.findNotInSetC(pattern, 0) + text.compareC(same), 3);
                  EXPECT_TRUE(text == same && text <= same && text.hash() == same.hash());
                  EXPECT_EQ(text[3], 'e');
                  EXPECT_EQ(text.getInt(0), 0);
                  EXPECT_EQ(vxStringView(sum).size(), 24U);
              }),
              1);
    EXPECT_EQ(countIn([&] { VxString(text).toUpper(); }), 1);
    EXPECT_EQ(countIn([&] { VxString("abc"); }), 1);
}

}  // namespace
