// The exports of the library against its two lists: which symbols, and under which ordinals.

#include "data_rows.h"

#include <vxexports.h>

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"  // false alarms in <regex> with sanitizers
#endif

#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
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

// The class of a symbol, and its member without parameters; no member for a virtual table.
std::pair<std::string, std::string> classAndMember(const std::string &symbol) {
    char *plain = abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, nullptr);
    const std::string text = plain != nullptr ? plain : "";
    std::free(plain);
    const std::size_t colons = text.find("::");
    if (colons == std::string::npos) return {text.substr(text.rfind(' ') + 1), ""};
    const std::string member = text.substr(colons + 2);
    return {text.substr(0, colons), member.substr(0, member.find('('))};
}

TEST(Exports, TheTableIsCompleteAndInOrder) {
    int ordinal = 100;
    std::string last;
    std::map<std::string, int> members;
    for (const Export &entry : exportTable()) {
        EXPECT_EQ(entry.ordinal, ordinal++);
        if (entry.decorated.empty()) continue;
        EXPECT_GT(entry.decorated, last);
        last = entry.decorated;
        const auto [owner, member] = classAndMember(entry.symbol);
        members[owner] += member.empty() ? 0 : 1;
        // Constructors, destructors, operators and tables have a code for a name.
        const std::string name = entry.decorated.starts_with("??") ? "" : "?" + member + "@";
        EXPECT_EQ(entry.decorated.find(name), 0U) << entry.symbol;
        EXPECT_NE(entry.decorated.find(owner + "@@"), std::string::npos) << entry.symbol;
    }
    EXPECT_EQ(ordinal, 496);
    std::map<std::string, int> wanted;
    for (const DataRow &row : dataRows("exports.txt", "members"))
        wanted[row[0]] = std::stoi(row[1]);
    EXPECT_EQ(members, wanted);
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

// The list from which the table is made, against the numbers that callers use.
TEST(Exports, PlainFunctionsHaveTheNumbersThatCallersUse) {
    const std::vector<DataRow> functions = dataRows("exports.txt", "functions");
    for (const DataRow &row : functions) {
        const void *address = vxExportAddress(std::stoi(row[0]));
        EXPECT_NE(address, nullptr) << row[1];
        EXPECT_EQ(address, dlsym(RTLD_DEFAULT, row[1].c_str())) << row[1];
    }
    EXPECT_EQ(functions.size(), 120U);
}

TEST(Exports, HeadersDeclareThePlainFunctionsOfTheTable) {
    std::set<std::string> declared;
    const std::regex declaration("VX_API [^;(]*?(vx[A-Z]\\w*)\\(");
    for (const auto &header : std::filesystem::directory_iterator(VX_FRAME_DIR "/../../include")) {
        if (header.path().filename() == "vxframework.h") continue;  // the sibling library's
        std::ifstream file(header.path());
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        for (std::sregex_iterator at(text.begin(), text.end(), declaration), end; at != end; ++at)
            declared.insert((*at)[1]);
    }
    std::set<std::string> wanted{"vxExportAddress"};
    for (const Export &entry : exportTable()) {
        if (entry.decorated.empty()) wanted.insert(entry.symbol);
    }
    EXPECT_EQ(declared, wanted);
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
