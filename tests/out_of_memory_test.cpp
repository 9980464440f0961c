// What lists, tables, strings and sample tables do when the n-th allocation fails, for every n,
// once and from then on; and which members allocate at all.

#include "faults.h"
#include "fuzz/models/container_model.h"

#include <vxsampling.h>
#include <vxstring.h>
#include <vxtyped.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

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

template <typename Model>
class EveryContainer : public testing::Test {};
using Models =
    testing::Types<ListModel<BoxedList>, ListModel<VxOwningList<Nested<BoxedList>>>,
                   ListModel<VxOwningList<Nested<OneBucket>>>, ListModel<VxPointerList<int>>,
                   ListModel<VxPointerList<const int>>, TableModel<BoxedTable>,
                   TableModel<VxPointerTable<int>>, TableModel<VxPointerTable<const int>>>;
TYPED_TEST_SUITE(EveryContainer, Models);

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

// Null is an element, and yet a sign of a copy that failed elsewhere.
TEST(OutOfMemory, AListOfNullsIsCopiedCompletelyOrNotAtAll) {
    VxPointerList<int> nulls;
    EXPECT_TRUE(nulls.append(nullptr) && nulls.append(nullptr));
    faults::failEach(faults::kMemory, [&](bool) {
        VxOwningList<VxPointerList<int>> list;
        const bool isCopied = list.append(nulls);
        EXPECT_EQ(isCopied, !faults::disarm());
        EXPECT_EQ(list.length(), isCopied ? 1 : 0);
        EXPECT_TRUE(!isCopied || list[0].length() == 2);
    });
}

TEST(OutOfMemory, ATableIsCopiedIntoOtherBucketsOrNotAtAll) {
    struct Opened : VxOwningTable<int> {
        using VxHashTable::copyObjects;
        using VxOwningTable::VxOwningTable;
    };
    Opened table(3);
    for (int v = 0; v < 6; ++v)
        table.insert(v);
    faults::failEach(faults::kMemory, [&table](bool) {
        Opened wide(50);
        wide.copyObjects(table);
        const int n = wide.getNumElements();
        EXPECT_TRUE(n == 6 || (faults::disarm() && n == 0)) << n;
    });
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
        faults::failEach(faults::kMemory, [&](bool) {
            const auto &[change, result, failing] = row;
            VxString changed(abc);
            change(changed);
            const std::string text(vxStringView(changed));
            EXPECT_TRUE(text == result || text == failing) << text;
            EXPECT_STREQ(changed, text.c_str());
            EXPECT_EQ(vxStringView(abc), "abc");  // no sharer is written to
            changed.setMemoryHint(VxString::kDoubleRoom);
            EXPECT_TRUE(faults::disarm() || text == result);
            changed += piece;  // and the string can still be used
            EXPECT_EQ(std::string(vxStringView(changed)), text + "defgh");
        });
    }
}

TEST(OutOfMemory, SampleTablesReleaseWhatTheyHad) {
    float sentinel = 0;
    faults::failEach(faults::kMemory, [&](bool) {
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
        faults::arm(faults::kMemory);
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
