// Path text: tables, and the one-pass normalisation against its definition step by step.

#include "searchpath/path_text.h"

#include "data_rows.h"
#include "fuzz/models/path_model.h"
#include "system.h"

#include <vxhandles.h>

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <utility>

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

TEST(PathText, NormalizeDoesWhatItsDefinitionSays) {
    std::mt19937 random(1);
    for (const auto &[page, alphabet] :
         {std::pair{"C", "/././..a\\C:"}, {"C", "///..."}, {"ja_JP.SJIS", "/\\.\x83\\a.."}}) {
        const InLocale locale(page);
        for (int i = 0; i < 200000; ++i) {
            std::string text;
            for (std::size_t length = random() % 24; text.size() < length;)
                text += alphabet[random() % std::strlen(alphabet)];
            ASSERT_EQ(normalized(text), normalizedPlainly(text)) << text;
        }
    }
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
    for (const DataRow &row : dataRows("path_text.txt", "join")) {
        const char *dir = orNull(row[0]), *file = orNull(row[1]), *joined = orNull(row[2]);
        EXPECT_STREQ(VxUniqueText(vxPathJoin(dir, file, nullptr)).get(), joined);
        char out[32];
        EXPECT_EQ(vxPathJoin(dir, file, out), joined != nullptr ? out : nullptr);
        EXPECT_STREQ(joined != nullptr ? out : nullptr, joined);
        // In place of the directory, or of the file where there is none.
        std::strcpy(out, dir != nullptr ? dir : file);
        EXPECT_STREQ(vxPathJoin(out, dir != nullptr ? file : out, out), joined);
    }
}

}  // namespace
