// What lists, tables, strings and sample tables do when the n-th allocation fails, for every n,
// once and from then on; and which members allocate at all.

#include "faults.h"

#include <vxsampling.h>
#include <vxstring.h>
#include <vxtyped.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace {

// Runs an attempt for each allocation that can fail. It checks what it finds, and answers whether
// it got all that it asked for.
void failEach(const std::function<bool()> &attempt) {
    faults::strikeEach(faults::kMemory, faults::Effect::kRefuse, [&](bool) {
        const bool whole = attempt();
        EXPECT_TRUE(faults::disarm() || whole);
    });
}

// What an attempt starts from is there in any case.
template <typename Subject, typename... Arguments>
Subject withMemory(const Arguments &...arguments) {
    const faults::Pause pause;
    return Subject(arguments...);
}

TEST(OutOfMemory, ListsStayAsTheyWere) {
    using Texts = VxOwningList<std::string>;
    Texts five;
    for (const char *text : {"a", "b", "c", "d", "e"})
        EXPECT_TRUE(five.append(text));
    failEach([&five] {
        Texts list = withMemory<Texts>(five);
        const bool one = list.insert(2, "x");
        EXPECT_EQ(list[2], one ? "x" : "c");
        const int before = list.length();
        EXPECT_EQ(before, one ? 6 : 5);
        const bool all = list.append(five);
        EXPECT_EQ(list.length(), all ? before + 5 : before);
        const bool middle = list.insert(1, five);
        EXPECT_EQ(list.length(), before + (all ? 5 : 0) + (middle ? 5 : 0));
        EXPECT_EQ(list[1], middle ? "a" : "b");
        list.remove(1, list.length() - 1);  // shrinks, or keeps the old slots
        EXPECT_EQ(list[0], "a");
        const Texts copy(list);
        EXPECT_TRUE(copy.length() == 0 || copy[0] == "a");
        VxOwningList<Texts> lists;
        const bool nested = lists.append(five);
        EXPECT_EQ(lists.length(), nested ? 1 : 0);
        EXPECT_TRUE(!nested || lists[0].length() == 5);
        return one && all && middle && nested && copy.length() == 1;
    });
    failEach([] {
        VxPointerList<bool> list;
        bool complete = true;
        for (int i = 0; i < 20; ++i)
            complete &= list.append(&complete);
        VxPointerList<bool> copy;
        copy = list;
        EXPECT_TRUE(copy.length() == 0 || copy.length() == list.length());
        complete &= copy.length() == 20;
        copy.remove(0, copy.length() * 19 / 20);  // shrinks, or keeps the old slots
        EXPECT_TRUE(copy.length() == 0 || copy[0] == &complete);
        return complete;
    });
}

// A table, a copy and one in other buckets; elements are pointers or copies.
template <typename Table, typename Elements>
bool fillAndCopy(const Elements &elements) {
    Table table(3);
    int inserted = 0;
    for (const auto &element : elements)
        inserted += table.insert(element) ? 1 : 0;
    EXPECT_EQ(table.getNumElements(), inserted);
    const Table copy(table);
    Table wide(50);
    wide.copyObjects(table);
    for (const Table *it : {&copy, static_cast<const Table *>(&wide)}) {
        const int n = it->getNumElements();
        EXPECT_TRUE(n == 0 || n == inserted) << n;
        EXPECT_EQ(n, std::count_if(elements.begin(), elements.end(), [it](const auto &each) {
                      return static_cast<bool>(it->has(each));
                  }));
    }
    const int copied = copy.getNumElements() + wide.getNumElements();
    wide = withMemory<Table>(5);
    const bool planted = wide.insert(elements[0]);  // even in one that had no buckets before
    EXPECT_EQ(static_cast<bool>(wide.has(elements[0])), planted);
    return inserted == 6 && copied == 12 && planted;
}

TEST(OutOfMemory, TablesStayAsTheyWereAndCopiesAreCompleteOrEmpty) {
    const std::vector<std::string> words = {"ash", "beech", "fir", "oak", "pine", "yew"};
    failEach([&] { return fillAndCopy<VxOwningTable<std::string>>(words); });
    std::vector<const std::string *> pointers;
    for (const std::string &word : words)
        pointers.push_back(&word);
    failEach([&] { return fillAndCopy<VxPointerTable<const std::string>>(pointers); });
}

TEST(OutOfMemory, StringsStayAsTheyWere) {
    const VxString abc("abc");
    const VxString piece("defgh");
    const std::vector<std::tuple<std::function<void(VxString &)>, const char *, const char *>>
        changes = {{[&](VxString &s) { s += piece; }, "abcdefgh", "abc"},
                   {[&](VxString &s) { s.toLower() += piece; }, "abcdefgh", "abc"},
                   {[&](VxString &s) { s.set(1, 1, piece); }, "adefghc", "abc"},
                   {[](VxString &s) { s.toUpper(); }, "ABC", "abc"},
                   {[](VxString &s) { s[1] = 'x'; }, "axc", "abc"},
                   {[](VxString &s) { s = s.get(1); }, "bc", ""},
                   {[](VxString &s) { s.toLower(); }, "abc", "abc"},
                   {[](VxString &s) { s.setLengthHint(99); }, "abc", "abc"},
                   {[](VxString &s) { s[3] = 'x'; }, "abc", "abc"},
                   {[&](VxString &s) { s = s + piece; }, "abcdefgh", "abc"},
                   {[](VxString &s) { s = VxString(); }, "", ""},
                   {[](VxString &s) { s = VxString("12"); }, "12", ""},
                   {[](VxString &s) { s = VxString('1'); }, "1", ""},
                   {[](VxString &s) { s = VxString(12); }, "12", ""},
                   {[](VxString &s) { s = VxString(1.5); }, "1.5", ""},
                   {[](VxString &s) { s = vxStringFrom("12"); }, "12", ""}};
    for (const auto &row : changes) {
        failEach([&row, &abc, &piece] {
            const auto &[change, result, failing] = row;
            VxString changed(abc);
            change(changed);
            const std::string text(vxStringView(changed));
            EXPECT_TRUE(text == result || text == failing) << text;
            EXPECT_STREQ(changed, text.c_str());
            EXPECT_EQ(vxStringView(abc), "abc");  // no sharer is written to
            changed.setMemoryHint(VxString::kDoubleRoom);
            const faults::Pause pause;
            changed += piece;  // and the string can still be used
            EXPECT_EQ(std::string(vxStringView(changed)), text + "defgh");
            return text == result;
        });
    }
}

TEST(OutOfMemory, SampleTablesReleaseWhatTheyHad) {
    float sentinel = 0;
    faults::strikeEach(faults::kMemory, faults::Effect::kRefuse, [&](bool) {
        VxSampleTable table{};
        for (int set = 0; set < VX_SAMPLE_SETS; ++set)
            table.offsetX[set] = table.offsetY[set] = &sentinel;
        const int before = faults::blocksOut();
        const int filled = vxSampleTableInit(&table, 2, 1.0F, 0, 1.0F, 0);
        const int calls = faults::count(faults::kMemory);
        EXPECT_EQ(filled, faults::disarm() ? 0 : 1);
        EXPECT_EQ(faults::blocksOut() - before, filled != 0 ? 2 * VX_SAMPLE_SETS : 0);
        for (int set = 0; set < VX_SAMPLE_SETS && filled == 0; ++set) {
            float *const expected = 2 * set < calls ? nullptr : &sentinel;
            EXPECT_EQ(table.offsetX[set], expected) << set;
            EXPECT_EQ(table.offsetY[set], expected) << set;
        }
        EXPECT_EQ(table.sampleCount, 4);
        EXPECT_EQ(table.sampleWeight, 0.25F);
        if (filled == 0) return;
        vxSampleTableRelease(&table);
        vxSampleTableRelease(&table);
        EXPECT_EQ(faults::blocksOut(), before);
    });
}

TEST(OutOfMemory, AGridBeyondTheCountIsRefused) {
    VxSampleTable table{};
    for (const int grid : {46340, 46341, INT32_MAX}) {
        const bool counts = grid == 46340;
        faults::arm(faults::kMemory, 1, true, faults::Effect::kRefuse);
        EXPECT_EQ(vxSampleTableInit(&table, grid, 1.0F, 0, 1.0F, 0), 0);
        EXPECT_EQ(faults::disarm(), counts);
        EXPECT_EQ(table.sampleCount, counts ? grid * grid : 0);
    }
}

TEST(Allocations, NoneForReadingAStringOrSharingIt) {
    const VxString text("some text with a Needle");
    const VxString same("some text with a Needle");
    const VxString pattern("needle");
    faults::resetCounts();
    VxString copy(text);
    VxString other(copy);
    other = text;
    EXPECT_EQ(copy.findC(pattern, 0), 17);
    EXPECT_EQ(other.find(pattern, 0), -1);
    EXPECT_EQ(text.findNotInSetC(pattern, 0) + text.compareC(same), 3);
    EXPECT_TRUE(text == same && text <= same && text.hash() == same.hash());
    EXPECT_EQ(text[3] + vxStringView(copy)[3], 'e' + 'e');
    EXPECT_EQ(text.getInt(0), 0);
    EXPECT_EQ(faults::count(faults::kMemory), 0);
    copy.toUpper();
    EXPECT_EQ(faults::count(faults::kMemory), 1);
}

}  // namespace
