// Code pages: which bytes make a character in each, and text taken character by character.

#include "platform/code_page.h"

#include "data_rows.h"
#include "in_locale.h"

#include <gtest/gtest.h>
#include <string>

namespace {

// Whether a byte is in a range. Two bytes for each: the first and the last.
bool isIn(const std::string &ranges, int byte) {
    bool found = false;
    for (std::size_t i = 0; i < ranges.size(); i += 2)
        found |= byte >= static_cast<unsigned char>(ranges[i]) &&
                 byte <= static_cast<unsigned char>(ranges[i + 1]);
    return found;
}

TEST(CodePage, CharactersHaveTheirBytes) {
    for (const DataRow &row : dataRows("code_page.txt", "pages")) {
        const InLocale locale(row[0].c_str());
        EXPECT_EQ(vx::currentCodePage().number(), std::stoi(row[1])) << row[0];
        EXPECT_EQ(vx::characterLength("", vx::kMaxCharacterBytes), 0);
        for (int code = 0x100; code <= 0xFFFF; ++code) {
            const int lead = code >> 8, trail = code & 0xFF;
            const char bytes[] = {static_cast<char>(lead), static_cast<char>(trail)};
            const int length = !isIn(row[2], lead) ? 1 : isIn(row[3], trail) ? 2 : -1;
            ASSERT_EQ(vx::characterLength(bytes, 2), length) << row[0] << ' ' << code;
            ASSERT_EQ(vx::characterLength(bytes, 1), length == 1 ? 1 : -1) << row[0] << ' ' << code;
        }
    }
}

// The character whose two bytes are 83 5C, the second one a backslash.
#define SO "\x83\\"

TEST(CodePage, HalfACharacterIsNeitherFoundNorCopiedNorCompared) {
    EXPECT_STREQ(vx::findCharacter(SO "x", '\\'), "\\x");
    const InLocale page("ja_JP.SJIS");
    EXPECT_STREQ(vx::findCharacter(SO "\\x", '\\'), "\\x");
    EXPECT_EQ(vx::findCharacter(SO, '\\'), nullptr);
    EXPECT_STREQ(vx::findCharacter("a" SO, '\0'), "");

    EXPECT_EQ(vx::compareText(SO "a", SO "a"), 0);
    EXPECT_LT(vx::compareText("\xB1", SO), 0);  // 00B1 before 835C
    EXPECT_LT(vx::compareText(SO, SO "a"), 0);
    EXPECT_GT(vx::compareText("b", "a" SO), 0);

    char buffer[] = "########";
    vx::copyPrefix(buffer, "ab" SO "c", 3);
    EXPECT_EQ(std::string(buffer, 4), std::string("ab\0#", 4));
    vx::copyPrefix(buffer, "ab" SO "c", 4);
    EXPECT_STREQ(buffer, "ab" SO "####");
}

TEST(CodePage, TextSplitsAtSeparators) {
    char text[] = ";;a" SO ";;b;";
    char *rest = text;
    EXPECT_STREQ(vx::splitNext(rest, ';'), "a" SO);
    EXPECT_STREQ(vx::splitNext(rest, ';'), "b");
    EXPECT_EQ(vx::splitNext(rest, ';'), nullptr);
    EXPECT_EQ(vx::splitNext(rest, ';'), nullptr);
}

TEST(CodePage, CodesHaveClasses) {
    const InLocale page("ja_JP.SJIS");
    for (const DataRow &row : dataRows("code_page.txt", "classes")) {
        const auto code = static_cast<unsigned>(std::stoul(row[0], nullptr, 16));
        EXPECT_EQ(vx::isLetter(code), row[1] == "letter") << row[0];
        EXPECT_EQ(vx::isDigit(code), row[1] == "digit") << row[0];
        EXPECT_EQ(vx::isLetterOrDigit(code), row[1] != "neither") << row[0];
    }
}

}  // namespace
