// Code pages: which bytes make a character in each, their classes, and text taken character by
// character.

#include "platform/code_page.h"

#include "data_rows.h"
#include "system.h"

#include <vxtext.h>

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

TEST(CodePage, CharactersHaveClassesAndLengths) {
    for (const char *page : {"C", "de_DE.ISO-8859-1", "ja_JP.SJIS"}) {
        const InLocale locale(page);
        for (const DataRow &row : dataRows("code_page.txt", std::string("classes ") + page)) {
            const char *at = row[0].c_str();
            const int digit = vxCharIsDigit(at), letter = vxCharIsAlpha(at);
            const DataRow found{row[0], std::to_string(digit), std::to_string(letter),
                                std::to_string(vxCharIsAlnum(at))};
            EXPECT_EQ(found, row);
            const unsigned first = static_cast<unsigned char>(at[0]);
            const bool isDouble = vx::currentCodePage().isDouble(at);
            const unsigned code = isDouble ? first << 8 | static_cast<unsigned char>(at[1]) : first;
            EXPECT_EQ(vx::isDigit(code), digit != 0) << code;
            EXPECT_EQ(vx::isLetter(code), letter != 0) << code;
        }
    }
}

TEST(CodePage, HalfACharacterIsNeitherFoundNorCopiedNorCompared) {
    for (const DataRow &row : dataRows("code_page.txt", "found")) {
        const InLocale page(row[0].c_str());
        const char *found = vx::findCharacter(row[2].c_str(), row[1].c_str()[0]);
        EXPECT_EQ(found != nullptr ? found : "none", row[3]);
    }
    const InLocale page("ja_JP.SJIS");
    for (const DataRow &row : dataRows("code_page.txt", "order")) {
        EXPECT_EQ(vx::compareText(row[0].c_str(), row[1].c_str()), std::stoi(row[2])) << row[0];
        EXPECT_EQ(vx::compareText(row[1].c_str(), row[0].c_str()), -std::stoi(row[2])) << row[0];
    }
    for (const DataRow &row : dataRows("code_page.txt", "prefixes")) {
        std::string buffer = "########";
        vx::copyPrefix(buffer.data(), row[0].c_str(), row[1].size());
        EXPECT_EQ(buffer, row[1] + std::string(8 - row[1].size(), '#'));
    }
}

TEST(CodePage, TextSplitsAtSeparators) {
    char text[] = ";;a\x83\\;;b";
    char *rest = text;
    EXPECT_STREQ(vx::splitNext(rest, ';'), "a\x83\\");
    EXPECT_STREQ(vx::splitNext(rest, ';'), "b");
    EXPECT_EQ(vx::splitNext(rest, ';'), nullptr);
    EXPECT_EQ(vx::splitNext(rest, ';'), nullptr);
}

}  // namespace
