// File names, lines and characters in single-byte and double-byte pages.

#include "data_rows.h"
#include "fuzz/models/text_model.h"
#include "in_locale.h"

#include <vxtext.h>

#include <cstdio>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

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
            EXPECT_EQ(vxFileReplaceExtension(name, "x"), row[5] + ".x");
            EXPECT_EQ(vxFileAddExtension(name, ""), row[0] + ".");
        }
    }
}

TEST(FileNames, NullLeavesTheSharedBufferAlone) {
    const char *kept = vxFileBaseName("a/kept");
    for (const char *(*function)(const char *) :
         {vxFileStripExtension, vxFileExtension, vxFileBaseName, vxFileDirectory}) {
        EXPECT_EQ(function(nullptr), nullptr);
    }
    EXPECT_EQ(vxFileAddExtension(nullptr, "x"), nullptr);
    EXPECT_EQ(vxFileReplaceExtension(nullptr, "x"), nullptr);
    EXPECT_STREQ(kept, "kept");
    // A result may be the next name.
    EXPECT_EQ(vxFileStripExtension(vxFileBaseName("dir/file.txt")), kept);
    EXPECT_STREQ(kept, "file");
    EXPECT_STREQ(vxFileDirectory(vxFileAddExtension("a/b", "c")), "a");
    EXPECT_STREQ(vxFileExtension(vxFileAddExtension("a/b", "c")), "c");
}

std::mt19937 engine;

// Text from these pieces. \x83\\ is one character in page 932, \x81@ is its blank.
std::string randomText(std::size_t max) {
    static const char *const kPieces[] = {"a",      "5",     ".",    "/",   "\\", ":",
                                          " ",      "\t",    "\n",   "\v",  "\f", "\r",
                                          "\x83\\", "\x81@", "\x83", "\xA0"};
    std::string text;
    for (std::size_t count = engine() % (max + 1); count != 0; --count)
        text += kPieces[engine() % std::size(kPieces)];
    return text;
}

// Names that are short, or near the limit of 255 bytes.
TEST(Texts, AreTreatedAsTheModelSays) {
    for (const char *page : {"C", "ja_JP.SJIS"}) {
        const InLocale locale(page);
        for (std::size_t i = 0; i < 20000; ++i) {
            std::string name = randomText(4) + randomText(6);
            if (i % 4 == 0) name.insert(name.size() / 2, 244 + engine() % 20, 'x');
            if (i % 16 == 0) name += std::string(engine() % 300, 'y');
            ASSERT_EQ(text_model::fileNameDifference(name, randomText(i % 8)), "") << page;
            const std::string text = randomText(20);
            ASSERT_EQ(text_model::trimDifference(text), "") << page;
            ASSERT_TRUE(text_model::hasConsistentClasses(text)) << page << ' ' << text;
            ASSERT_EQ(text_model::lineDifference(text, 2 + engine() % 20, i % 2 == 0), "") << text;
        }
    }
}

TEST(Lines, AreReadIntoABuffer) {
    for (const DataRow &row : dataRows("text.txt", "lines")) {
        std::string text = row[1];
        FILE *file = ::fmemopen(text.data(), text.size(), "r");
        auto *read = row[0] == "trimmed" ? vxReadTrimmedLine : vxReadLine;
        char buffer[16] = "left";
        for (std::size_t i = 2; i < row.size(); ++i) {
            ASSERT_EQ(read(buffer, sizeof buffer, file), buffer);
            EXPECT_EQ(buffer, row[i]);
        }
        EXPECT_EQ(read(buffer, sizeof buffer, file), nullptr);
        EXPECT_EQ(buffer, row.back());
        EXPECT_NE(std::feof(file), 0);
        std::fclose(file);
    }
}

TEST(Lines, AreEndedByALineFeed) {
    char text[2] = {};
    FILE *file = ::fmemopen(text, sizeof text, "w");
    EXPECT_EQ(vxWriteNewline(file), '\n');
    std::fclose(file);
    EXPECT_STREQ(text, "\n");
    FILE *full = std::fopen("/dev/full", "w");
    std::setbuf(full, nullptr);
    EXPECT_EQ(vxWriteNewline(full), EOF);
    std::fclose(full);
}

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
