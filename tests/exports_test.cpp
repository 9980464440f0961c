// The exports of the library against its two lists: which symbols, and under which ordinals.

#include "data_rows.h"

#include <vxexports.h>

#include <cstdio>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <set>
#include <string>

namespace {

// An ordinal, its symbol and, for a class member, its decorated name: see the list.
constexpr char kExports[] = "../../src/frame/exports.txt";

// Whether a symbol has a name in it, after the length of the name.
bool hasName(const std::string &symbol, const std::string &name) {
    return symbol.find(std::to_string(name.size()) + name) != std::string::npos;
}

// ?member@Class@@ and the types; constructors, operators and tables have a code for the member.
bool isNameOf(const std::string &decorated, const std::string &symbol) {
    const std::size_t owner = decorated.find("Vx");
    if (!hasName(symbol, decorated.substr(owner, decorated.find("@@") - owner))) return false;
    return decorated.starts_with("??") || hasName(symbol, decorated.substr(1, owner - 2));
}

TEST(Exports, HaveTheirOrdinals) {
    int ordinal = 100;
    std::string last;
    for (const DataRow &row : dataRows(kExports)) {
        SCOPED_TRACE(row[1]);
        const void *address = dlsym(RTLD_DEFAULT, row[1].c_str());
        EXPECT_NE(address, nullptr);
        EXPECT_EQ(row[0], std::to_string(ordinal));
        EXPECT_EQ(vxExportAddress(ordinal++), address);
        if (row.size() < 3) continue;
        EXPECT_LT(last, row[2]);
        EXPECT_TRUE(isNameOf(row[2], row[1])) << row[2];
        last = row[2];
    }
    EXPECT_EQ(ordinal, 496);
    for (const int none : {-1, 0, 99, 496, 65636})
        EXPECT_EQ(vxExportAddress(none), nullptr) << none;
    for (const DataRow &row : dataRows("exports.txt", "functions"))
        EXPECT_EQ(vxExportAddress(std::stoi(row[0])), dlsym(RTLD_DEFAULT, row[1].c_str()));
}

TEST(Exports, NothingElseLeavesTheLibrary) {
    std::set<std::string> wanted{"vxExportAddress"};
    for (const DataRow &row : dataRows(kExports))
        EXPECT_TRUE(wanted.insert(row[1]).second) << row[1];
    for (const DataRow &row : dataRows("../../src/frame/abi_symbols.txt"))
        EXPECT_TRUE(wanted.insert(row[0]).second) << row[0];

    std::set<std::string> found;
    FILE *nm = popen("nm -D --defined-only -P " VX_LIBRARY, "r");
    ASSERT_NE(nm, nullptr);
    char symbol[512];
    while (std::fscanf(nm, "%511s%*[^\n]", symbol) == 1)
        found.insert(symbol);
    ASSERT_EQ(pclose(nm), 0);
    EXPECT_EQ(found, wanted);
}

}  // namespace
