// Path text: tables, and the one-pass normalisation against its definition step by step.

#include "searchpath/path_text.h"

#include "data_rows.h"
#include "fuzz/models/path_model.h"
#include "in_locale.h"

#include <vxsearchpath.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

std::string normalized(std::string text) {
    EXPECT_EQ(vxPathNormalize(text.data()), text.data());
    return text.c_str();
}

TEST(PathText, Normalize) {
    for (const char *page : {"C", "ja_JP.SJIS"}) {
        const InLocale locale(page);
        for (const DataRow &row : dataRows("path_text.txt", std::string("normalize ") + page))
            EXPECT_EQ(normalized(row[0]), row[1]) << row[0];
    }
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
    for (const DataRow &row : dataRows("path_text.txt", "compare"))
        EXPECT_EQ(vx::comparePaths(row[0].c_str(), row[1].c_str()), std::stoi(row[2]))
            << row[0] << " " << row[1];
}

TEST(PathText, Kinds) {
    EXPECT_EQ(vxPathIsAbsolute(nullptr), 0);
    for (const DataRow &row : dataRows("path_text.txt", "kinds")) {
        const char *path = row[0].c_str();
        EXPECT_EQ(vxPathIsAbsolute(path), std::stoi(row[1])) << path;
        EXPECT_EQ(vx::isNetworkPath(path), row[2] == "1") << path;
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
        char inPlace[32];
        std::strcpy(inPlace, test.dir != nullptr ? test.dir : test.file);
        EXPECT_STREQ(vxPathJoin(inPlace, test.dir != nullptr ? test.file : inPlace, inPlace),
                     test.dir != nullptr || test.joined != nullptr ? test.joined : nullptr);
    }
}

}  // namespace
