// Path text: tables, and the one-pass normalisation against its definition step by step.

#include "searchpath/path_text.h"

#include "data_rows.h"
#include "in_locale.h"

#include <vxsearchpath.h>

#include <clocale>
#include <cstdlib>
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

// The definition: each step on the whole text, from the front again after each change.
std::string normalizedPlainly(std::string text) {
    if (vxPathIsUnc(text.c_str()) != 0) {
        while (!text.empty() && (text.back() == '/' || text.back() == '\\'))
            text.pop_back();
        return text;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
        const bool lead =
            MB_CUR_MAX > 1 && ((byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC));
        if (lead && next >= 0x40 && next != 0x7F && next <= 0xFC) {
            ++i;
        } else if (byte == '\\') {
            text[i] = '/';
        }
    }
    std::size_t at;
    while ((at = text.find("//")) != std::string::npos)
        text.erase(at, 1);
    while ((at = text.find("/./")) != std::string::npos)
        text.erase(at, 2);
    for (;;) {
        std::size_t start = 0;
        while (text.compare(start, 3, "/..") == 0)
            start += 3;
        at = text.find("/../", start);
        if (at == std::string::npos) break;
        const std::size_t slash = at == 0 ? std::string::npos : text.rfind('/', at - 1);
        const std::size_t component = slash == std::string::npos ? 0 : slash + 1;
        text.erase(component, at + 4 - component);
    }
    while (text.compare(0, 4, "/../") == 0)
        text.erase(0, 3);
    if (text.size() == 3 && std::isalpha(text[0]) != 0 && text.substr(1) == ":/") return text;
    while (!text.empty() && text.back() == '/')
        text.pop_back();
    return text;
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
        EXPECT_EQ(vxPathCompare(row[0].c_str(), row[1].c_str()), std::stoi(row[2]))
            << row[0] << " " << row[1];
}

TEST(PathText, Kinds) {
    for (const auto &kind : {vxPathIsAbsolute, vxPathIsRelative, vxPathIsUnc})
        EXPECT_EQ(kind(nullptr), 0);
    for (const DataRow &row : dataRows("path_text.txt", "kinds")) {
        const char *path = row[0].c_str();
        EXPECT_EQ(vxPathIsAbsolute(path), std::stoi(row[1])) << path;
        EXPECT_EQ(vxPathIsRelative(path), std::stoi(row[2])) << path;
        EXPECT_EQ(vxPathIsUnc(path), std::stoi(row[3])) << path;
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
