// Patterns: programs to the byte, answers, limits, and the matcher against its definition.

#include "data_rows.h"
#include "fuzz/models/pattern_model.h"
#include "pattern/pattern_compiler.h"
#include "platform/code_page.h"
#include "random_text.h"
#include "system.h"

#include <vxpattern.h>

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

// A program in a buffer that detects writes after its end.
struct Program {
    int compile(const std::string &wildcard) {
        const int result = checked(vxCompileWildcard(wildcard.c_str(), bytes.data()));
        // Nothing of the old contents is left.
        EXPECT_TRUE(result == 0 || std::memchr(bytes.data(), '#', VX_PATTERN_SIZE) == nullptr);
        return result;
    }
    int compileSource(const std::string &source, int start = 0, int delimiter = 0) {
        return checked(vx::compilePattern(source.c_str(), start, delimiter, bytes.data()));
    }
    int checked(int result) const {
        EXPECT_EQ(std::string(bytes.data() + VX_PATTERN_SIZE, kGuard), std::string(kGuard, '#'));
        return result;
    }
    void set(const std::string &program) {
        bytes.assign(program.begin(), program.end());
        if (program.size() < VX_PATTERN_SIZE) bytes.resize(VX_PATTERN_SIZE);
    }
    int matches(const std::string &subject) const {
        return vxMatchPattern(subject.c_str(), bytes.data());
    }

    static constexpr std::size_t kGuard = 64;
    std::vector<char> bytes = std::vector<char>(VX_PATTERN_SIZE + kGuard, '#');
};

// A field with each {text n} in it written out.
std::string expanded(const std::string &field) {
    const std::size_t open = field.find('{');
    if (open == std::string::npos) return field;
    const std::size_t blank = field.find(' ', open), close = field.find('}', open);
    std::string all = field.substr(0, open);
    for (int n = std::stoi(field.substr(blank)); n > 0; --n)
        all += field.substr(open + 1, blank - open - 1);
    return all + expanded(field.substr(close + 1));
}

// Compares the programs of a table, and their answers to subjects.
void compareWithRows(const std::string &heading, const char *page = "C") {
    const InLocale locale(page);
    for (DataRow row : dataRows("pattern.txt", heading)) {
        SCOPED_TRACE(row[1]);
        std::transform(row.begin(), row.end(), row.begin(), expanded);
        Program program;
        std::size_t next = 2;
        if (row[0] == "wildcard") {
            EXPECT_EQ(program.compile(row[1]), row.size() > next ? 1 : 0);
        } else if (row[0] == "source") {
            const int result = program.compileSource(row[1], std::stoi(row[2]), std::stoi(row[3]));
            EXPECT_EQ(result, std::stoi(row[4]));
            next = 5;
        } else {
            program.set(row[1]);
        }
        if (next == row.size()) continue;
        const std::string expected = row[next] == "-" ? "" : row[next] + '\0';
        EXPECT_EQ(std::string(program.bytes.data(), expected.size()), expected);
        for (std::size_t i = next + 1; i < row.size(); i += 2)
            EXPECT_EQ(program.matches(row[i + 1]), row[i] == "yes") << row[i + 1];
    }
}

TEST(Patterns, HaveTheseProgramsAndAnswers) {
    for (const char *page : {"C", "de_DE.ISO-8859-1", "ja_JP.SJIS"})
        compareWithRows(page, page);
}

TEST(Patterns, ProgramsAndSubjectsHaveLimits) {
    compareWithRows("limits");
}

TEST(Patterns, DamagedProgramsAreNotFollowed) {
    compareWithRows("damaged");
}

TEST(Patterns, NoInputStalls) {
    for (const char *page : {"C", "ja_JP.SJIS"})
        compareWithRows(std::string("stalls ") + page, page);
}

// ---- The matcher against its definition

// Elements as the compiler makes them, and some that it never makes.
std::string randomProgram(Random &random, const std::string &alphabet, std::size_t stars) {
    std::string program = random(2) == 0 ? "^" : "";
    for (std::size_t elements = 1 + random(6U); elements != 0; --elements) {
        if (random(3) == 0 && stars != 0) {
            --stars;
            program += '*';
        }
        const char opcode = "^$?cc[!c[x"[random(10)];
        program += opcode;
        const std::string operand = random.text(alphabet, random(opcode == 'c' ? 3U : 6U));
        if (opcode == '[' || opcode == '!') program += static_cast<char>(operand.size());
        if (opcode == '[' || opcode == '!' || opcode == 'c') program += operand;
    }
    return program;
}

// One in sixteen subjects fills more than one word of a set, and as many sources reach the limit.
void compareWithDefinition(Random &random, const std::string &alphabet) {
    int matched = 0;
    for (int i = 0; i < 40000; ++i) {
        Program program;
        const int maxStars = i % 16 == 0 ? 2 : 4;  // the definition is slow
        const std::string start(i % 16 == 0 ? 55 + random(80U) : 0, alphabet[0]);
        const std::string fill(i % 16 == 1 ? 245 + random(15U) : 0, 'a');
        const std::string source = fill + random.text(alphabet + "*?[]-*~\\^$", random(10U));
        if (std::count(source.begin(), source.end(), '*') > maxStars) continue;
        if (i % 3 == 0) {
            const int result = program.compileSource(source);
            if (result < 0) continue;
            EXPECT_EQ(result, static_cast<int>(source.size()));
        } else if (i % 3 == 1) {
            if (program.compile(source) == 0) continue;
        } else {
            program.set(randomProgram(random, alphabet, static_cast<std::size_t>(maxStars)));
        }
        const std::string subject = start + random.text(alphabet + "?*", random(13U));
        const bool expected = PatternDefinition(subject, program.bytes.data()).matches();
        ASSERT_EQ(program.matches(subject), expected)
            << i << " " << testing::PrintToString(program.bytes.data()) << " on "
            << testing::PrintToString(subject);
        matched += expected ? 1 : 0;
    }
    EXPECT_GT(matched, 4000);
}

TEST(Patterns, MatcherDoesWhatItsDefinitionSays) {
    Random random;
    compareWithDefinition(random, "ab");
    compareWithDefinition(random, "aab\nn$^\xFF");
    for (const char *name : {"ja_JP.SJIS", "zh_CN.GBK", "zh_TW.BIG5"}) {
        const InLocale locale(name);
        ASSERT_NE(vx::currentCodePage().number(), 0);
        compareWithDefinition(random, "\x83\\");
        compareWithDefinition(random, "\x81\xA1\x41 a");
        compareWithDefinition(random, "\x83\x81[\nc!\x5B\x02");
    }
}

}  // namespace
