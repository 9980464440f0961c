// File names, lines and characters in single-byte and double-byte pages.

#include "data_rows.h"
#include "in_locale.h"

#include <vxtext.h>

#include <clocale>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

// The character of page 932 whose bytes are 83 5C, the second one a backslash.
#define SO "\x83\\"

// ---- File names

TEST(FileNames, AreTakenApart) {
    for (const char *page : {"C", "ja_JP.SJIS"}) {
        const InLocale locale(page);
        for (const DataRow &row : dataRows("text.txt", std::string("parts ") + page)) {
            const char *name = row[0].c_str();
            SCOPED_TRACE(name);
            EXPECT_EQ(vxFileStripExtension(name), row[1]);
            EXPECT_EQ(vxFileExtension(name), row[2]);
            EXPECT_EQ(vxFileBaseName(name), row[3]);
            EXPECT_EQ(vxFileDirectory(name), row[4]);
            EXPECT_EQ(vxFileReplaceExtension(name, nullptr), row[5]);
            EXPECT_EQ(vxFileAddExtension(name, nullptr), row[0]);
            EXPECT_EQ(vxFileReplaceExtension(name, "x"), row[5] + ".x");
            EXPECT_EQ(vxFileAddExtension(name, ""), row[0] + ".");
        }
    }
}

TEST(FileNames, NullLeavesTheBufferAlone) {
    const char *kept = vxFileBaseName("a/kept");
    for (const char *(*function)(const char *) :
         {vxFileStripExtension, vxFileExtension, vxFileBaseName, vxFileDirectory}) {
        EXPECT_EQ(function(nullptr), nullptr);
    }
    EXPECT_EQ(vxFileAddExtension(nullptr, "x"), nullptr);
    EXPECT_EQ(vxFileReplaceExtension(nullptr, "x"), nullptr);
    EXPECT_STREQ(kept, "kept");
    // All share one buffer, and a result may be the next name.
    EXPECT_EQ(vxFileStripExtension(vxFileBaseName("dir/file.txt")), kept);
    EXPECT_STREQ(kept, "file");
    EXPECT_STREQ(vxFileDirectory(vxFileAddExtension("a/b", "c")), "a");
    EXPECT_STREQ(vxFileExtension(vxFileAddExtension("a/b", "c")), "c");
}

TEST(FileNames, AreCutAt255Bytes) {
    const auto x = [](std::size_t count) { return std::string(count, 'x'); };
    const auto is = [](const char *text, const std::string &expected) {
        EXPECT_EQ(std::string(text), expected);
    };
    is(vxFileStripExtension(x(300).c_str()), x(255));
    is(vxFileStripExtension((x(300) + ".d").c_str()), x(255));
    is(vxFileStripExtension((x(256) + ".d").c_str()), x(255));
    is(vxFileStripExtension((x(255) + ".d").c_str()), x(255));
    is(vxFileStripExtension((x(254) + ".d").c_str()), x(254));
    is(vxFileReplaceExtension((x(256) + ".d").c_str(), "y"), x(255));
    is(vxFileReplaceExtension((x(250) + ".d").c_str(), "yyyyyy"), x(250) + ".yyyy");
    is(vxFileReplaceExtension((x(253) + ".d").c_str(), "y"), x(253) + ".y");
    is(vxFileAddExtension(x(254).c_str(), "y"), x(254) + ".");
    is(vxFileAddExtension(x(255).c_str(), "y"), x(255));
    is(vxFileExtension(("a." + x(300)).c_str()), x(255));
    is(vxFileBaseName(("a/" + x(300)).c_str()), x(255));
    for (const char separator : {'\\', '/'}) {
        is(vxFileDirectory((x(255) + separator + "f").c_str()), x(255));
        is(vxFileDirectory((x(256) + separator + "f").c_str()), ".");
    }
    is(vxFileDirectory((x(254) + ":f").c_str()), x(254) + ":");
    is(vxFileDirectory((x(255) + ":f").c_str()), ".");
    is(vxFileDirectory(("a:/" + x(253) + "\\f").c_str()), "a:");
    const InLocale page("ja_JP.SJIS");
    is(vxFileStripExtension((x(254) + SO).c_str()), x(254));
    is(vxFileStripExtension((x(253) + SO "x").c_str()), x(253) + SO);
    is(vxFileAddExtension((x(251) + SO).c_str(), SO), x(251) + SO ".");
}

// ---- Lines

class Lines : public testing::Test {
protected:
    ~Lines() override { std::fclose(file_); }
    void hold(const std::string &text) {
        std::fwrite(text.data(), 1, text.size(), file_);
        std::rewind(file_);
    }
    FILE *file_ = std::tmpfile();
    char buffer_[16] = "left";
};

TEST_F(Lines, LoseTheirEnds) {
    hold("a\nb \r\nc\r\r\n\n\r\nin\rside\nlonger than its buffer\n" + std::string("\0x\n", 3) +
         "last");
    for (const char *expected :
         {"a", "b ", "c", "", "", "in\rside", "longer than its", " buffer", "", "last"}) {
        ASSERT_EQ(vxReadLine(buffer_, sizeof buffer_, file_), buffer_);
        EXPECT_STREQ(buffer_, expected);
    }
    EXPECT_EQ(vxReadLine(buffer_, sizeof buffer_, file_), nullptr);
    EXPECT_EQ(vxReadTrimmedLine(buffer_, sizeof buffer_, file_), nullptr);
    EXPECT_STREQ(buffer_, "last");
    EXPECT_NE(std::feof(file_), 0);
}

TEST_F(Lines, AreTrimmed) {
    hold("\t two words \r\n   \n\nx\n       no end at       all ");
    for (const char *expected : {"two words", "", "", "x", "no end a", "t       all"}) {
        ASSERT_EQ(vxReadTrimmedLine(buffer_, sizeof buffer_, file_), buffer_);
        EXPECT_STREQ(buffer_, expected);
    }
}

TEST_F(Lines, AreEndedByALineFeed) {
    EXPECT_EQ(vxWriteNewline(file_), '\n');
    std::rewind(file_);
    EXPECT_EQ(std::fgetc(file_), '\n');
    EXPECT_EQ(std::fgetc(file_), EOF);
    FILE *full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    std::setbuf(full, nullptr);
    EXPECT_EQ(vxWriteNewline(full), EOF);
    std::fclose(full);
}

TEST(Trimming, TakesWhiteSpaceOffOneSide) {
    for (const char *page : {"C", "ja_JP.SJIS"}) {
        const InLocale locale(page);
        for (const DataRow &row : dataRows("text.txt", std::string("trims ") + page)) {
            std::string left = row[0];
            std::string right = row[0];
            vxTrimLeft(left.data());
            vxTrimRight(right.data());
            EXPECT_EQ(left.c_str(), row[1]);
            EXPECT_EQ(right.c_str(), row[2]);
        }
    }
}

// ---- Characters

TEST(Characters, HaveClassesAndLengths) {
    for (const char *page : {"C", "de_DE.ISO-8859-1", "ja_JP.SJIS"}) {
        const InLocale locale(page);
        for (const DataRow &row : dataRows("text.txt", std::string("classes ") + page)) {
            const char *at = row[0].c_str();
            SCOPED_TRACE(testing::PrintToString(at));
            EXPECT_EQ(vxCharIsDigit(at), std::stoi(row[1]));
            EXPECT_EQ(vxCharIsAlpha(at), std::stoi(row[2]));
            EXPECT_EQ(vxCharIsAlnum(at), std::stoi(row[3]));
        }
    }
}

}  // namespace
