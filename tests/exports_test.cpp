// The surface of the library against its two lists: what leaves it, and under which ordinals.

#include <vxexports.h>

#include <cstdio>
#include <dlfcn.h>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Export {
    int ordinal = 0;
    std::string symbol;
    std::string decorated;
};

// The lines of a list that start with a digit or an underscore; all others are comments.
std::vector<std::string> linesOf(const char *name) {
    std::ifstream file(std::string(VX_FRAME_DIR "/") + name);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line[0] != '#') lines.push_back(line);
    }
    return lines;
}

std::vector<Export> exportTable() {
    std::vector<Export> table;
    for (const std::string &line : linesOf("exports.txt")) {
        Export entry;
        std::istringstream(line) >> entry.ordinal >> entry.symbol >> entry.decorated;
        table.push_back(entry);
    }
    return table;
}

TEST(Exports, DecoratedNamesAscendWithTheOrdinals) {
    const std::vector<Export> table = exportTable();
    int ordinal = 99;
    int named = 0;
    std::string last;
    for (const Export &entry : table) {
        EXPECT_GT(entry.ordinal, ordinal);
        ordinal = entry.ordinal;
        if (entry.decorated.empty()) continue;
        EXPECT_GT(entry.decorated, last);
        last = entry.decorated;
        ++named;
    }
    EXPECT_LE(ordinal, 495);
    EXPECT_EQ(named, 276);
}

TEST(Exports, EachOrdinalIsItsSymbol) {
    for (const Export &entry : exportTable()) {
        const void *address = dlsym(RTLD_DEFAULT, entry.symbol.c_str());
        ASSERT_NE(address, nullptr) << entry.symbol;
        EXPECT_EQ(vxExportAddress(entry.ordinal), address) << entry.symbol;
    }
    for (const int ordinal : {-1, 0, 99, 496, 65636})
        EXPECT_EQ(vxExportAddress(ordinal), nullptr);
}

// The list that the table is made from, against the numbers that callers know.
TEST(Exports, PlainFunctionsHaveTheNumbersThatCallersUse) {
    std::ifstream file(VX_TEST_DATA "/plain_functions.txt");
    int functions = 0;
    for (std::string line; std::getline(file, line);) {
        int ordinal = 0;
        std::string name;
        if (!(std::istringstream(line) >> ordinal >> name)) continue;
        EXPECT_EQ(vxExportAddress(ordinal), dlsym(RTLD_DEFAULT, name.c_str())) << line;
        EXPECT_NE(vxExportAddress(ordinal), nullptr) << line;
        ++functions;
    }
    EXPECT_EQ(functions, 120);
}

TEST(Exports, NothingElseLeavesTheLibrary) {
    std::set<std::string> wanted{"vxExportAddress"};
    for (const Export &entry : exportTable())
        EXPECT_TRUE(wanted.insert(entry.symbol).second) << entry.symbol;
    for (const std::string &symbol : linesOf("abi_symbols.txt"))
        EXPECT_TRUE(wanted.insert(symbol).second) << symbol;

    std::set<std::string> found;
    FILE *nm = popen("nm -D --defined-only -P " VX_LIBRARY, "r");
    ASSERT_NE(nm, nullptr);
    char line[512];
    while (std::fgets(line, sizeof line, nm) != nullptr)
        found.insert(std::string(line).substr(0, std::string(line).find(' ')));
    ASSERT_EQ(pclose(nm), 0);
    EXPECT_EQ(found, wanted);
}

}  // namespace
