// Patterns: programs to the byte, answers, limits, and the matcher against its definition.

#include "data_rows.h"
#include "fuzz/models/pattern_model.h"
#include "in_locale.h"
#include "pattern/pattern_compiler.h"
#include "platform/code_page.h"

#include <vxpattern.h>

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

// A program in a buffer that detects writes after its end.
struct Program {
    Program() { std::memset(bytes + VX_PATTERN_SIZE, '#', kGuard); }
    ~Program() {
        EXPECT_EQ(std::string(bytes + VX_PATTERN_SIZE, kGuard), std::string(kGuard, '#'));
    }
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    // Nothing of the old contents is left.
    int compile(const std::string &wildcard) {
        std::memset(bytes, '#', VX_PATTERN_SIZE);
        const int result = vxCompileWildcard(wildcard.c_str(), bytes);
        EXPECT_TRUE(result == 0 || std::count(bytes, bytes + VX_PATTERN_SIZE, '#') == 0);
        return result;
    }
    int compileSource(const std::string &source, int start = 0, int delimiter = 0) {
        return vx::compilePattern(source.c_str(), start, delimiter, bytes);
    }
    int matches(const std::string &subject) const { return vxMatchPattern(subject.c_str(), bytes); }

    // Compares with a field of a row, and answers with those after it.
    void compareWithRow(const DataRow &row, std::size_t field) const {
        const std::string expected = row[field] + '\0';
        EXPECT_EQ(std::string(bytes, expected.size()), expected);
        for (std::size_t i = field + 1; i < row.size(); i += 2)
            EXPECT_EQ(matches(row[i + 1]), row[i] == "yes") << row[i + 1];
    }

    static constexpr std::size_t kGuard = 64;
    char bytes[VX_PATTERN_SIZE + kGuard] = {};
};

TEST(Patterns, HaveTheseProgramsAndAnswers) {
    for (const char *page : {"C", "de_DE.ISO-8859-1", "ja_JP.SJIS"}) {
        const InLocale locale(page);
        for (const DataRow &row : dataRows("pattern.txt", page)) {
            SCOPED_TRACE(row[1]);
            Program program;
            if (row[0] == "wildcard") {
                EXPECT_EQ(program.compile(row[1]), 1);
                program.compareWithRow(row, 2);
                continue;
            }
            const int result = std::stoi(row[4]);
            EXPECT_EQ(program.compileSource(row[1], std::stoi(row[2]), std::stoi(row[3])), result);
            if (result >= 0) program.compareWithRow(row, 5);
        }
    }
}

TEST(Patterns, ProgramsAreBounded) {
    for (const DataRow &row : dataRows("pattern.txt", "limits")) {
        const std::string text = row[1] + std::string(std::stoul(row[3]), row[2][0]) + row[4];
        SCOPED_TRACE(text);
        Program program;
        EXPECT_EQ(row[0] == "source" ? program.compileSource(text) : program.compile(text),
                  std::stoi(row[5]));
        EXPECT_TRUE(row[6] == "-" || program.matches(text) == (row[6] == "yes"));
    }
}

TEST(Patterns, DamagedProgramsAreNotFollowed) {
    for (const DataRow &row : dataRows("pattern.txt", "damaged")) {
        Program program;
        std::strcpy(program.bytes, row[0].c_str());
        EXPECT_EQ(program.matches(""), row[1] == "yes") << row[0];
    }
    const std::string subject(510, 'a');
    std::vector<char> endless(VX_PATTERN_SIZE, '?');
    for (std::size_t i = 0; i < endless.size(); i += 2)
        endless[i] = '*';
    endless.back() = '[';
    EXPECT_EQ(vxMatchPattern(subject.c_str(), endless.data()), 0);
    const std::string list = std::string(300, '?') + "[\xFF" + std::string(255, 'a') + '\0';
    EXPECT_EQ(vxMatchPattern(subject.c_str(), list.c_str()), 0) << "a list past the limit";
}

TEST(Patterns, SubjectsHaveALimit) {
    Program program;
    program.compile("*b");
    for (const std::size_t length : {61U, 62U, 63U, 64U, 126U, 127U, 509U, 510U, 511U, 100000U}) {
        const std::string subject(length - 1, 'a');
        EXPECT_EQ(program.matches(subject + "b"), length <= 510) << length;
        EXPECT_EQ(program.matches(subject + "a"), 0) << length;
    }
    // A run of characters of two bytes that passes from one word of a set into the next.
    const InLocale page("ja_JP.SJIS");
    Program run;
    run.compileSource("^x*[\x83\\]*y$");
    for (std::size_t start = 56; start < 66; ++start) {
        const std::string subject = std::string(start, 'x') + "\x83\\\x83\\\x83\\\x83\\";
        EXPECT_EQ(run.matches(subject + "y"), 1) << start;
        EXPECT_EQ(run.matches(subject + "\\y"), 0) << start;
    }
}

// Tried one after the other, the paths through these would take practically forever.
TEST(Patterns, NoInputStalls) {
    const auto repeated = [](const char *text, int count) {
        std::string all;
        while (count-- != 0)
            all += text;
        return all;
    };
    Program program;
    program.compile(repeated("*a", 120) + "b");
    EXPECT_EQ(program.matches(std::string(510, 'a')), 0);
    EXPECT_EQ(program.matches(std::string(509, 'a') + "b"), 1);
    const InLocale page("ja_JP.SJIS");
    ASSERT_GE(program.compileSource(repeated("\x83\\*[~x]*", 60) + "x"), 0);
    EXPECT_EQ(program.matches(repeated("\x83\\", 255)), 0);
}

// ---- The matcher against its definition

std::mt19937 engine;

std::string randomText(const std::string &alphabet, std::size_t max) {
    std::string text;
    for (std::size_t length = engine() % (max + 1); text.size() < length;)
        text += alphabet[engine() % alphabet.size()];
    return text;
}

// Elements as the compiler makes them, and some that it never makes.
std::string randomProgram(const std::string &alphabet, std::size_t stars) {
    std::string program = engine() % 2 == 0 ? "^" : "";
    for (std::size_t elements = 1 + engine() % 6; elements != 0; --elements) {
        if (engine() % 3 == 0 && stars != 0) {
            --stars;
            program += '*';
        }
        const char opcode = "^$?cc[!c[x"[engine() % 10];
        program += opcode;
        const std::string operand = randomText(alphabet, opcode == 'c' ? 2 : 5);
        if (opcode == '[' || opcode == '!') program += static_cast<char>(operand.size());
        if (opcode == '[' || opcode == '!' || opcode == 'c') program += operand;
    }
    return program;
}

// One in sixteen subjects fills more than one word of a set, and as many sources reach the limit.
void compareWithDefinition(const std::string &alphabet) {
    int matched = 0;
    for (int i = 0; i < 40000; ++i) {
        Program program;
        const int maxStars = i % 16 == 0 ? 2 : 4;  // the definition is slow
        const std::string start(i % 16 == 0 ? 55 + engine() % 80 : 0, alphabet[0]);
        const std::string fill(i % 16 == 1 ? 245 + engine() % 15 : 0, 'a');
        const std::string source = fill + randomText(alphabet + "*?[]-*~\\^$", 9);
        if (std::count(source.begin(), source.end(), '*') > maxStars) continue;
        if (i % 3 == 0) {
            const int result = program.compileSource(source);
            if (result < 0) continue;
            EXPECT_EQ(result, static_cast<int>(source.size()));
        } else if (i % 3 == 1) {
            if (program.compile(source) == 0) continue;
        } else {
            const std::string made = randomProgram(alphabet, static_cast<std::size_t>(maxStars));
            std::memcpy(program.bytes, made.c_str(), made.size() + 1);
        }
        const std::string subject = start + randomText(alphabet + "?*", 12);
        const bool expected = PatternDefinition(subject, program.bytes).matches();
        ASSERT_EQ(program.matches(subject), expected)
            << i << " " << testing::PrintToString(program.bytes) << " on "
            << testing::PrintToString(subject);
        matched += expected ? 1 : 0;
    }
    EXPECT_GT(matched, 4000);
}

TEST(Patterns, MatcherDoesWhatItsDefinitionSays) {
    compareWithDefinition("ab");
    compareWithDefinition("aab\nn$^\xFF");
    for (const char *name : {"ja_JP.SJIS", "zh_CN.GBK", "zh_TW.BIG5"}) {
        const InLocale locale(name);
        ASSERT_NE(vx::currentCodePage().number(), 0);
        compareWithDefinition("\x83\\");
        compareWithDefinition("\x81\xA1\x41 a");
        compareWithDefinition("\x83\x81[\nc!\x5B\x02");
    }
}

}  // namespace
