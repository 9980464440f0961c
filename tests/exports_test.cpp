// The surface of the library against its two lists: what leaves it, and under which ordinals.

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

// The declaration behind a decorated name, as the demangler of the platform writes it, and whose
// member it is.
std::string declaration(const std::string &decorated, std::string &owner) {
    static const std::regex kForm(
        R"(\?(?:\?(_?\w)|(\w+)@)(\w+)@@(?:6B@|SA|[AIMQ]([AB])E)(@?)(.*))");
    static const std::regex kType(R"((\?A|[AP][AB]|)(?:V(\w+)@@?|W4(\w+)@1@|([DFHINX])))");
    static const std::map<std::string, std::string> kWords = {
        {"D", "char"},       {"F", "short"},
        {"H", "int"},        {"I", "unsigned int"},
        {"N", "double"},     {"X", "void"},
        {"?A", ""},          {"AA", "&"},
        {"AB", " const&"},   {"PA", "*"},
        {"PB", " const*"},   {"MemoryHint", "VxString::MemoryHint"},
        {"operator4", "="},  {"operator8", "=="},
        {"operator9", "!="}, {"operatorA", "[]"},
        {"operatorH", "+"},  {"operatorM", "<"},
        {"operatorN", "<="}, {"operatorO", ">"},
        {"operatorP", ">="}, {"operatorY", "+="}};
    const auto word = [&owner](const std::string &code) {
        const auto found = kWords.find(code);
        return code == "0" || code == "1" ? owner : found != kWords.end() ? found->second : code;
    };
    std::smatch form;
    if (!std::regex_match(decorated, form, kForm)) return "";
    owner = form[3];
    const std::string code = form[1];
    if (code == "_7") return "vtable for " + owner;

    std::vector<std::string> types;
    const std::string coded = form[6];
    for (std::sregex_iterator it(coded.begin(), coded.end(), kType), end; it != end; ++it)
        types.push_back(word((*it)[2].str() + (*it)[3].str() + (*it)[4].str()) + word((*it)[1]));
    std::string member = form[2];
    if (code == "0" || code == "_F") member = owner;
    if (code == "1") member = "~" + owner;
    if (code == "B") member = "operator " + types[0];
    if (member.empty()) member = "operator" + word("operator" + code);
    std::string parameters;
    for (std::size_t i = form[5].length() == 0 ? 1 : 0; i < types.size(); ++i)
        parameters += (parameters.empty() ? "" : ", ") + types[i];
    if (parameters == "void") parameters.clear();
    return owner + "::" + member + "(" + parameters + ")" + (form[4] == "B" ? " const" : "");
}

TEST(Exports, DecoratedNamesAreThoseOfTheirSymbols) {
    std::map<std::string, int> members;
    for (const Export &entry : exportTable()) {
        if (entry.decorated.empty()) continue;
        char *plain = abi::__cxa_demangle(entry.symbol.c_str(), nullptr, nullptr, nullptr);
        ASSERT_NE(plain, nullptr) << entry.symbol;
        std::string owner;
        EXPECT_EQ(declaration(entry.decorated, owner), plain) << entry.decorated;
        members[owner] += entry.decorated.starts_with("??_7") ? 0 : 1;
        std::free(plain);
    }
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

// The list that the table is made from, against the numbers that callers know.
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
    int expected = 100;
    for (const Export &entry : exportTable()) {
        EXPECT_EQ(entry.ordinal, expected++);
        if (entry.decorated.empty()) wanted.insert(entry.symbol);
    }
    EXPECT_EQ(expected, 496);
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
