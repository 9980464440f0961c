// Path text: tables, and the one-pass normalisation against its definition step by step.

#include "searchpath/path_text.h"

#include "in_locale.h"
#include "path_model.h"

#include <vxsearchpath.h>

#include <clocale>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

// The character of page 932 whose bytes are 83 5C, the second one a backslash.
#define SO "\x83\\"

std::string normalized(std::string text) {
    EXPECT_EQ(vxPathNormalize(text.data()), text.data());
    return text.c_str();
}

TEST(PathText, Normalize) {
    const char *const cases[][2] = {
        {"C:\\a\\b\\", "C:/a/b"},
        {"C:/a/./b/", "C:/a/b"},
        {"x//y///z", "x/y/z"},
        {"C:/a/../b", "C:/b"},
        {"C:\\", "C:/"},
        {"C:/", "C:/"},
        {"C:", "C:"},
        {"C:./", "C:."},
        {"1:/", "1:"},
        {"/", ""},
        {"//", ""},
        {"/./", ""},
        {"/../", ""},
        {"", ""},
        {"/../x", "/x"},
        {"/a/../../x", "/x"},
        {"/a/../", ""},
        {"a/../", ""},
        {"a/../b", "b"},
        {"../x", "../x"},
        {"../../x", "x"},
        {"C:/../x", "x"},
        {"C:/a/../../b", "b"},
        {"/a/.", "/a/."},
        {"/a/..", "/a/.."},
        {"/..x/y/../z", "/..x/z"},
        {"/..x/../z", "/z"},
        {"\\\\srv\\share\\", "\\\\srv\\share"},
        {"\\\\srv/share/../x/", "\\\\srv/share/../x"},
        {"\\\\", ""},
        {"\\\\\\x", "/x"},
        {"//srv/x", "/srv/x"},
    };
    for (const auto &[text, expected] : cases)
        EXPECT_EQ(normalized(text), expected) << text;
    const InLocale page("ja_JP.SJIS");
    EXPECT_EQ(normalized("C:\\" SO "\\x\\"), "C:/" SO "/x");
    EXPECT_EQ(normalized("C:/" SO), "C:/" SO);
    EXPECT_EQ(normalized("C:/\x83/../x"), "C:/x");  // a lead byte alone is a byte
}

void compareWithDefinition(unsigned seed, const std::string &alphabet) {
    std::mt19937 random(seed);
    for (int i = 0; i < 200000; ++i) {
        std::string text;
        for (std::size_t length = random() % 24; text.size() < length;) {
            text += alphabet[random() % alphabet.size()];
        }
        ASSERT_EQ(normalized(text), normalizedPlainly(text)) << text;
    }
}

TEST(PathText, NormalizeDoesWhatItsDefinitionSays) {
    compareWithDefinition(1, "/././..a\\C:");
    compareWithDefinition(2, "///...");
    const InLocale page("ja_JP.SJIS");
    compareWithDefinition(3, "/\\.\x83\\a..");
}

TEST(PathText, NormalizeIsLinear) {
    std::string text;
    for (int i = 0; i < 400000; ++i)
        text += "a/../";  // a step for each would never end
    EXPECT_EQ(normalized(text), "");
}

TEST(PathText, Compare) {
    struct Case {
        const char *entry, *path;
        int order;
    };
    for (const Case &test :
         {Case{"C:/a", "C:\\a", 0}, Case{"C:/a", "C:/a/", 0}, Case{"C:/a", "C:/a//\\", 0},
          Case{"C:/a/", "C:/a", 47}, Case{"C:/a", "C:/a/b", -47}, Case{"C:/a", "C:/ab", -98},
          Case{"C:/a", "C:/A", 32}, Case{"C:/b", "C:/a", 1}, Case{"", "/", 0}, Case{"", "a", -97},
          Case{"C:/", "C:", 47}, Case{"\x80", "a", -128 - 97}, Case{"", "\xFF", 1}}) {
        EXPECT_EQ(vxPathCompare(test.entry, test.path), test.order)
            << test.entry << " " << test.path;
    }
}

TEST(PathText, Kinds) {
    struct Case {
        const char *path;
        int absolute, relative, network;
    };
    for (const Case &test :
         {Case{nullptr, 0, 0, 0}, Case{"", 0, 1, 0}, Case{"x", 0, 1, 0}, Case{"/", 1, 0, 0},
          Case{"\\x", 1, 0, 0}, Case{"C:", 1, 0, 0}, Case{"C:x", 1, 0, 0}, Case{"1:/x", 0, 1, 0},
          Case{"\\\\", 1, 0, 1}, Case{"\\\\s", 1, 0, 1}, Case{"\\\\\\", 1, 0, 0},
          Case{"//s", 1, 0, 0}, Case{"\\/s", 1, 0, 0}}) {
        EXPECT_EQ(vxPathIsAbsolute(test.path), test.absolute);
        EXPECT_EQ(vxPathIsRelative(test.path), test.relative);
        EXPECT_EQ(vxPathIsUnc(test.path), test.network);
    }
}

TEST(PathText, Join) {
    struct Case {
        const char *dir, *file, *joined;
    };
    for (const Case &test :
         {Case{"C:/a", "b\\c", "C:/a/b/c"}, Case{"C:/a", "/x", "/x"}, Case{nullptr, "/x/", "/x"},
          Case{"a", "b", nullptr}, Case{nullptr, "b", nullptr}, Case{"C:/a", "", "C:/a"},
          Case{"C:/a", nullptr, nullptr}, Case{"/", "b", "/b"}, Case{"C:/a", "../b", "C:/b"}}) {
        char *joined = vxPathJoin(test.dir, test.file, nullptr);
        EXPECT_STREQ(joined, test.joined);
        std::free(joined);
        char out[32];
        EXPECT_EQ(vxPathJoin(test.dir, test.file, out), test.joined != nullptr ? out : nullptr);
        EXPECT_STREQ(test.joined != nullptr ? out : nullptr, test.joined);
    }
}

}  // namespace
