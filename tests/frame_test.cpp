// The surface of the library as a whole, and the messages of its sibling.

#include <vxexports.h>
#include <vxframework.h>

#include <cstdarg>
#include <cstdio>
#include <dlfcn.h>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>
#include <string>

namespace {

std::map<int, std::string> exportTable() {
    std::map<int, std::string> table;
    std::ifstream file(VX_TEST_DATA "/../../frame/exports.txt");
    for (std::string line; std::getline(file, line);) {
        int ordinal = 0;
        std::string symbol;
        if (std::istringstream(line) >> ordinal >> symbol) {
            EXPECT_TRUE(table.emplace(ordinal, symbol).second) << line;
        }
    }
    return table;
}

TEST(Frame, OrdinalsLeadToTheirSymbols) {
    const std::map<int, std::string> table = exportTable();
    EXPECT_GE(table.size(), 44U);
    for (int ordinal = -1; ordinal < 600; ++ordinal) {
        const auto entry = table.find(ordinal);
        const void *expected =
            entry != table.end() ? ::dlsym(RTLD_DEFAULT, entry->second.c_str()) : nullptr;
        EXPECT_EQ(vxExportAddress(ordinal), expected) << ordinal;
        EXPECT_EQ(expected != nullptr, entry != table.end()) << ordinal;
    }
}

TEST(Frame, NothingElseLeavesTheLibrary) {
    std::set<std::string> expected = {"vxExportAddress"};
    for (const auto &[ordinal, symbol] : exportTable())
        expected.insert(symbol);
    std::set<std::string> found;
    FILE *symbols = ::popen("nm -D --defined-only --format=just-symbols " VX_LIBRARY, "r");
    ASSERT_NE(symbols, nullptr);
    for (char line[512]; std::fgets(line, sizeof line, symbols) != nullptr;) {
        found.insert(std::string(line, std::string_view(line).find('\n')));
    }
    ::pclose(symbols);
    EXPECT_EQ(found, expected);
}

std::string formatted(const char *catalogue, int id, ...) {
    va_list arguments;
    va_start(arguments, id);
    std::string text = vxMessageFormat(arguments, catalogue, id);
    va_end(arguments);
    return text;
}

TEST(Messages, HaveATextWithTheirArguments) {
    std::set<std::string> texts;
    for (int id = 20352; id <= 20382; ++id)
        texts.insert(vxMessageText("vxmsg", id));
    texts.insert(vxMessageText("vxmsg", 4912));
    EXPECT_EQ(texts.size(), 32U);  // all there, all different
    EXPECT_NE(formatted("vxmsg", 20363, "a.sgi").find("\"a.sgi\""), std::string::npos);
    EXPECT_NE(formatted("vxmsg", 20363, nullptr).find("(null)"), std::string::npos);
    EXPECT_NE(formatted("vxmsg", 20376, 3, 1).find("3 and 1"), std::string::npos);
    EXPECT_NE(formatted("vxmsg", 4912, 4096).find("4096"), std::string::npos);
    EXPECT_LT(formatted("vxmsg", 20363, std::string(100000, 'x').c_str()).size(), 8192U);
    for (const char *catalogue : {"vxmsg", "other", static_cast<const char *>(nullptr)}) {
        EXPECT_NE(formatted(catalogue, 77, 1).find("77"), std::string::npos);
        EXPECT_NE(std::string(vxMessageText(catalogue, 77)).find("77"), std::string::npos);
    }
}

TEST(Messages, AReportIsOneLine) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(vxMessageReport("two\nlines", 6, 0), 0);
    EXPECT_EQ(vxMessageReport("vxmsg", 5, 4912, 64), 0);
    vxMessageReport(nullptr, 6, 0);
    const std::string lines = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 3) << lines;
    EXPECT_NE(lines.find("two lines\n"), std::string::npos);
    EXPECT_NE(lines.find("64 bytes\n"), std::string::npos);
}

}  // namespace
