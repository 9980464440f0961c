// The functions of code pages, in single-byte pages and in page 932, where a trail byte may be a
// backslash.

#include "platform/code_page.h"

#include "in_locale.h"

#include <clocale>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

using vx::compareText;
using vx::copyPrefix;
using vx::currentCodePage;
using vx::findCharacter;
using vx::kMaxCharacterBytes;

class InPage932 : public testing::Test {
protected:
    void SetUp() override { ASSERT_NE(std::setlocale(LC_CTYPE, "ja_JP.SJIS"), nullptr); }
    void TearDown() override { std::setlocale(LC_CTYPE, "C"); }
};

// The character whose two bytes are 83 5C.
#define SO "\x83\\"

TEST(CodePage, IsSingleByteInOtherLocales) {
    for (const char *name : {"C", "C.UTF-8"}) {
        ASSERT_NE(std::setlocale(LC_CTYPE, name), nullptr);
        EXPECT_EQ(currentCodePage().number(), 0);
        EXPECT_EQ(vx::characterLength(SO, kMaxCharacterBytes), 1);
        EXPECT_STREQ(findCharacter(SO "x", '\\'), "\\x");
    }
    std::setlocale(LC_CTYPE, "C");
}

TEST(CodePage, DoubleByteCharactersHaveTheirBytes) {
    const struct {
        const char *locale;
        int number;
        const char *leads, *trails;  // pairs of first and last
    } pages[] = {{"ja_JP.SJIS", 932, "\x81\x9F\xE0\xFC", "\x40\x7E\x80\xFC"},
                 {"zh_CN.GBK", 936, "\x81\xFE", "\x40\x7E\x80\xFE"},
                 {"ko_KR.EUC-KR", 949, "\x81\xFE", "\x41\x5A\x61\x7A\x81\xFE"},
                 {"zh_TW.BIG5", 950, "\x81\xFE", "\x40\x7E\xA1\xFE"}};
    const auto holds = [](const char *pairs, int byte) {
        bool inside = false;
        for (; *pairs != '\0'; pairs += 2)
            inside |= byte >= static_cast<unsigned char>(pairs[0]) &&
                      byte <= static_cast<unsigned char>(pairs[1]);
        return inside;
    };
    for (const auto &page : pages) {
        const InLocale locale(page.locale);
        EXPECT_EQ(currentCodePage().number(), page.number);
        EXPECT_EQ(vx::characterLength("", kMaxCharacterBytes), 0);
        for (int code = 0x100; code <= 0xFFFF; ++code) {
            const int lead = code >> 8, trail = code & 0xFF;
            const char bytes[] = {static_cast<char>(lead), static_cast<char>(trail)};
            const int length = !holds(page.leads, lead) ? 1 : holds(page.trails, trail) ? 2 : -1;
            ASSERT_EQ(vx::characterLength(bytes, kMaxCharacterBytes), length)
                << page.locale << ' ' << code;
            ASSERT_EQ(vx::characterLength(bytes, 1), length == 1 ? 1 : -1) << code;
        }
    }
}

TEST_F(InPage932, SearchesNeverMatchHalfACharacter) {
    EXPECT_STREQ(findCharacter(SO "\\x", '\\'), "\\x");
    EXPECT_EQ(findCharacter(SO, '\\'), nullptr);
    EXPECT_STREQ(findCharacter("a" SO, '\0'), "");
}

TEST_F(InPage932, ComparesByCharacterCode) {
    EXPECT_EQ(compareText(SO "a", SO "a"), 0);
    EXPECT_LT(compareText("\xB1", SO), 0);  // code B1 against 835C, though byte B1 is above byte 83
    EXPECT_LT(compareText(SO, SO "a"), 0);
    EXPECT_GT(compareText("b", "a" SO), 0);
}

TEST_F(InPage932, CopiesWholeCharactersAndFillsUp) {
    char buffer[8];
    std::memset(buffer, '#', sizeof buffer);
    copyPrefix(buffer, "ab" SO "c", 3);
    EXPECT_EQ(std::string(buffer, 4), std::string("ab\0#", 4));
    copyPrefix(buffer, "ab" SO "c", 4);
    EXPECT_EQ(std::string(buffer, 5), "ab" SO "#");
}

TEST_F(InPage932, SplitsAtSeparators) {
    char text[] = ";;a" SO ";;b;";
    char *rest = text;
    EXPECT_STREQ(vx::splitNext(rest, ';'), "a" SO);
    EXPECT_STREQ(vx::splitNext(rest, ';'), "b");
    EXPECT_EQ(vx::splitNext(rest, ';'), nullptr);
    EXPECT_EQ(vx::splitNext(rest, ';'), nullptr);
}

TEST_F(InPage932, CodesHaveClasses) {
    struct Case {
        unsigned code;
        int alpha, digit;
    };
    for (const Case &test :
         {Case{'a', 1, 0}, Case{'7', 0, 1}, Case{'_', 0, 0}, Case{0x83, 0, 0}, Case{0x835C, 1, 0},
          Case{0x8258, 0, 1}, Case{0x8140, 0, 0}, Case{0x8320, 0, 0}}) {
        EXPECT_EQ(vx::isLetter(test.code), test.alpha) << test.code;
        EXPECT_EQ(vx::isDigit(test.code), test.digit) << test.code;
        EXPECT_EQ(vx::isLetterOrDigit(test.code), test.alpha | test.digit) << test.code;
    }
}

}  // namespace
