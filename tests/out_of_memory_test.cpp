// What strings do when the n-th allocation fails, for every n, once and from then on; and which
// members allocate at all.

#include "faults.h"

#include <vxstring.h>

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <vector>

namespace {

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
