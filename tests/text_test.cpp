// File names and lines in single-byte and double-byte pages.

#include "data_rows.h"
#include "fuzz/models/text_model.h"
#include "random_text.h"
#include "system.h"

#include <vxtext.h>

#include <cstdio>
#include <gtest/gtest.h>
#include <string>

namespace {

TEST(FileNames, AreTakenApart) {
    for (const char *page : {"C", "ja_JP.SJIS"}) {
        const InLocale locale(page);
        for (const DataRow &row : dataRows("text.txt", std::string("parts ") + page)) {
            const char *name = row[0].c_str();
            const DataRow parts{name,
                                vxFileStripExtension(name),
                                vxFileExtension(name),
                                vxFileBaseName(name),
                                vxFileDirectory(name),
                                vxFileReplaceExtension(name, nullptr)};
            EXPECT_EQ(parts, row);
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
    EXPECT_EQ(vxFileDirectory("a/b"), kept);
}

// Names that are short, or near the limit of 255 bytes. \x83\\ is one character in page 932, \x81@
// is its blank.
TEST(Texts, AreTreatedAsTheModelSays) {
    const std::string pieces[] = {"a",  "5",  ".",  "/",  "\\",     ":",     " ",    "\t",
                                  "\n", "\v", "\f", "\r", "\x83\\", "\x81@", "\x83", "\xA0"};
    Random random;
    for (const char *page : {"C", "ja_JP.SJIS"}) {
        const InLocale locale(page);
        for (std::size_t i = 0; i < 8000; ++i) {
            std::string name = random.text(pieces, random(5U) + random(7U));
            if (i % 4 == 0) name.insert(name.size() / 2, 244 + random(20U), 'x');
            if (i % 16 == 0) name += std::string(random(300U), 'y');
            const std::string ending = random.text(pieces, random(i % 8 + 1));
            ASSERT_EQ(text_model::fileNameDifference(name, ending), "") << page;
            std::string text = random.text(pieces, random(21U));
            ASSERT_EQ(text_model::trimDifference(text), "") << page;
            ASSERT_TRUE(text_model::hasConsistentClasses(text)) << page << ' ' << text;
            if (i % 8 < 2) text.insert(text.size() / 2, 1, '\0');
            if (text.empty()) continue;
            FILE *stream = streamOf(text);
            const std::size_t size = 2 + random(20U);
            ASSERT_EQ(text_model::lineDifference(text, stream, size, i % 2 == 0), "") << text;
        }
    }
}

TEST(Lines, AreEndedByALineFeed) {
    FILE *file = std::fopen("newline", "wb+");
    EXPECT_EQ(vxWriteNewline(file), '\n');
    std::rewind(file);
    EXPECT_EQ(std::fgetc(file), '\n');
    EXPECT_EQ(std::fgetc(file), EOF);
    std::fclose(file);
    std::string text = "x";
    FILE *unwritable = streamOf(text);
    EXPECT_EQ(vxWriteNewline(unwritable), EOF);
    std::fclose(unwritable);
}

}  // namespace
