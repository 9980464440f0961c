// File names, lines and characters, in single-byte and double-byte pages.

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

struct Parts {
    const char *name, *strip, *extension, *base, *directory, *bare;
};

void expectParts(const Parts &parts) {
    SCOPED_TRACE(parts.name);
    EXPECT_STREQ(vxFileStripExtension(parts.name), parts.strip);
    EXPECT_STREQ(vxFileExtension(parts.name), parts.extension);
    EXPECT_STREQ(vxFileBaseName(parts.name), parts.base);
    EXPECT_STREQ(vxFileDirectory(parts.name), parts.directory);
    EXPECT_STREQ(vxFileReplaceExtension(parts.name, nullptr), parts.bare);
    EXPECT_STREQ(vxFileAddExtension(parts.name, nullptr), parts.name);
    const std::string bare = std::string(parts.bare) + ".x";
    EXPECT_STREQ(vxFileReplaceExtension(parts.name, "x"), bare.c_str());
    EXPECT_STREQ(vxFileAddExtension(parts.name, ""), (std::string(parts.name) + ".").c_str());
}

TEST(FileNames, AreTakenApart) {
    for (const Parts &parts : {
             Parts{"file.txt", "file", "txt", "file.txt", ".", "file"},
             Parts{"dir\\file.txt", "dir\\file", "txt", "file.txt", "dir", "dir\\file"},
             Parts{"dir.d/file", "dir", "", "file", "dir.d", "dir.d/file"},
             Parts{"a\\b/c.d", "a\\b/c", "d", "b/c.d", "a", "a\\b/c"},
             Parts{"a/b\\c.d", "a/b\\c", "d", "c.d", "a/b", "a/b\\c"},
             Parts{"c:file.txt", "c:file", "txt", "file.txt", "c:", "c:file"},
             Parts{"c:\\file", "c:\\file", "", "file", "c:", "c:\\file"},
             Parts{"c.d:file", "c", "d:file", "file", "c.d:", "c"},
             Parts{"\\file", "\\file", "", "file", "", "\\file"},
             Parts{".profile", "", "profile", ".profile", ".", ""},
             Parts{"file.", "file", "", "file.", ".", "file"},
             Parts{"dir.d\\", "dir", "", "", "dir.d", "dir.d\\"},
             Parts{"a\\b.c/d", "a\\b", "", "b.c/d", "a", "a\\b.c/d"},
             Parts{"a.b/c.d/e", "a.b/c", "", "e", "a.b/c.d", "a.b/c.d/e"},
             Parts{"", "", "", "", ".", ""},
         }) {
        expectParts(parts);
    }
    const InLocale page("ja_JP.SJIS");
    expectParts({"a\\" SO ".d", "a\\" SO, "d", SO ".d", "a", "a\\" SO});
    expectParts({SO, SO, "", SO, ".", SO});
    expectParts({"a.d" SO, "a", "d" SO, "a.d" SO, ".", "a"});
    expectParts({"a.d\x83", "a", "d\x83", "a.d\x83", ".", "a"});
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
    // One buffer for all, and a result is good as the next name.
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
    hold("a\nb\r\nc\r\r\n\n\r\nin\rside\nlonger than its buffer\n" + std::string("\0x\n", 3) +
         "last");
    for (const char *expected :
         {"a", "b", "c", "", "", "in\rside", "longer than its", " buffer", "", "last"}) {
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
    struct Case {
        const char *text, *left, *right;
    };
    const auto expectTrimmed = [](const Case &test) {
        std::string left = test.text;
        std::string right = test.text;
        vxTrimLeft(left.data());
        vxTrimRight(right.data());
        EXPECT_STREQ(left.c_str(), test.left);
        EXPECT_STREQ(right.c_str(), test.right);
    };
    for (const Case &test :
         {Case{"", "", ""}, Case{" \t\n\v\f\r ", "", ""}, Case{"a b", "a b", "a b"},
          Case{"  a b \t", "a b \t", "  a b"}, Case{" \xA0", "\xA0", " \xA0"}}) {
        expectTrimmed(test);
    }
    const InLocale page("ja_JP.SJIS");
    // The blank of two bytes is no white space, and a lead byte alone is no reason to stop.
    expectTrimmed({" \x81\x40 ", "\x81\x40 ", " \x81\x40"});
    expectTrimmed({" \x83 ", "\x83 ", " \x83"});
}

// ---- Characters

TEST(Characters, HaveClassesAndLengths) {
    struct Case {
        const char *at;
        int digit, alpha, alnum;
    };
    const auto expectClasses = [](const Case &test) {
        SCOPED_TRACE(testing::PrintToString(test.at));
        EXPECT_EQ(vxCharIsDigit(test.at), test.digit);
        EXPECT_EQ(vxCharIsAlpha(test.at), test.alpha);
        EXPECT_EQ(vxCharIsAlnum(test.at), test.alnum);
    };
    for (const Case &test : {Case{"5x", 1, 0, 1}, Case{"z", 0, 1, 1}, Case{"", 0, 0, 0},
                             Case{"_", 0, 0, 0}, Case{"\xE4", 0, 0, 0}}) {
        expectClasses(test);
    }
    {
        const InLocale latin("de_DE.ISO-8859-1");
        expectClasses({"\xE4", 0, 1, 1});
        expectClasses({"\xD7", 0, 0, 0});
    }
    const InLocale page("ja_JP.SJIS");
    expectClasses({SO, 0, 2, 2});          // a kana
    expectClasses({"\x82\x60", 0, 2, 2});  // a full-width A
    expectClasses({"\x82\x4F", 2, 0, 2});  // a full-width 0
    expectClasses({"\x81\x40", 0, 0, 0});  // a full-width blank
    expectClasses({"\xB1", 0, 1, 1});      // a half-width kana
    expectClasses({"\x83", 0, 0, 0});
    expectClasses({"\x83 ", 0, 0, 0});
    expectClasses({"\x85\x40", 0, 0, 0});  // no character
}

}  // namespace
