// Patterns: programs to the byte, answers, limits, and the matcher against its definition.

#include "data_rows.h"
#include "in_locale.h"
#include "pattern/pattern_compiler.h"
#include "pattern_model.h"
#include "platform/code_page.h"

#include <vxpattern.h>

#include <algorithm>
#include <clocale>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

namespace {

using namespace std::string_literals;

// A buffer for a program that detects writes after its end.
class Program {
public:
    Program() {
        std::memset(bytes_, 0, VX_PATTERN_SIZE);
        std::memset(bytes_ + VX_PATTERN_SIZE, '#', sizeof bytes_ - VX_PATTERN_SIZE);
    }
    ~Program() {
        for (std::size_t i = VX_PATTERN_SIZE; i < sizeof bytes_; ++i)
            EXPECT_EQ(bytes_[i], '#') << i;
    }
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;
    operator char *() { return bytes_; }
    bool is(const std::string &expected) const {
        return std::memcmp(bytes_, expected.c_str(), expected.size() + 1) == 0;
    }

private:
    char bytes_[VX_PATTERN_SIZE + 64];
};

int matchesWildcard(const std::string &wildcard, const std::string &subject) {
    Program program;
    std::memset(program, '#', VX_PATTERN_SIZE);  // the old contents do not matter
    EXPECT_EQ(vxCompileWildcard(wildcard.c_str(), program), 1) << wildcard;
    const std::size_t length = std::strlen(program);
    EXPECT_EQ(std::count(program + length, program + VX_PATTERN_SIZE, '\0'),
              static_cast<std::ptrdiff_t>(VX_PATTERN_SIZE - length));
    return vxMatchPattern(subject.c_str(), program);
}

// ---- Programs

TEST(Patterns, WildcardsHaveThesePrograms) {
    for (const char *page : {"C", "de_DE.ISO-8859-1", "ja_JP.SJIS"}) {
        const InLocale locale(page);
        for (const DataRow &row : dataRows("pattern.txt", std::string("programs ") + page)) {
            Program program;
            EXPECT_EQ(vxCompileWildcard(row[0].c_str(), program), 1) << row[0];
            EXPECT_TRUE(program.is(row[1])) << row[0] << " became " << static_cast<char *>(program);
        }
    }
}

TEST(Patterns, SourceHasThesePrograms) {
    for (const DataRow &row : dataRows("pattern.txt", "sources")) {
        Program program;
        EXPECT_EQ(vx::compilePattern(row[0].c_str(), std::stoi(row[1]), std::stoi(row[2]), program),
                  std::stoi(row[3]))
            << row[0];
        EXPECT_TRUE(program.is(row[4])) << row[0] << " became " << static_cast<char *>(program);
    }
    Program program;
    for (const char *refused : {"^*a", "a**", "a[b", "[", "[~", "[a\\", "a[b-"})
        EXPECT_EQ(vx::compilePattern(refused, 0, 0, program), -1) << refused;
    EXPECT_EQ(vx::compilePattern("ab", 0, '/', program), -1);
    EXPECT_EQ(vx::compilePattern("a$*/", 0, '/', program), 3);
    EXPECT_EQ(vx::compilePattern("a$/*", 0, '*', program), 3);
    const InLocale page("ja_JP.SJIS");
    EXPECT_EQ(vx::compilePattern("a\x83\0x", 0, 0, program), 2);  // nothing after the end is read
    EXPECT_TRUE(program.is("cac\x83"));
    EXPECT_EQ(vx::compilePattern("[\x83\0]", 0, 0, program), -1);
}

TEST(Patterns, ProgramsAreBounded) {
    const auto compile = [](const std::string &source) {
        Program program;
        return vx::compilePattern(source.c_str(), 0, 0, program);
    };
    const std::string most(256, 'a');
    EXPECT_EQ(compile(most), 256);
    EXPECT_EQ(compile(most + "?"), -1);
    EXPECT_EQ(compile(most.substr(1) + "??"), 257);
    EXPECT_EQ(compile(most + "a"), -1);
    // Stars, lists and characters of two bytes at and after the limit.
    for (std::size_t length = 250; length < 260; ++length) {
        for (const char *end : {"*", "?*", "[abc]", "[~abc]*", "[]", "\x83\\", "?\x83\\*"}) {
            for (const char *name : {"C", "ja_JP.SJIS"}) {
                const InLocale locale(name);
                const std::string source = std::string(length, 'a') + end;
                const int result = compile(source);
                EXPECT_TRUE(result == -1 || result == static_cast<int>(source.size()));
                EXPECT_EQ(compile(source + std::string(300, '?') + "*?*?*"), -1);
            }
        }
    }
    Program program;
    EXPECT_EQ(vxCompileWildcard(("[" + std::string(255, 'a') + "]").c_str(), program), 1);
    EXPECT_EQ(vxMatchPattern("a", program), 1);
    EXPECT_EQ(vxCompileWildcard(("[" + std::string(256, 'a') + "]").c_str(), program), 0);
    EXPECT_EQ(vxCompileWildcard(std::string(255, 'a').c_str(), program), 1);
    EXPECT_EQ(vxMatchPattern(std::string(255, 'a').c_str(), program), 1);
    EXPECT_EQ(vxMatchPattern(std::string(254, 'a').c_str(), program), 0);
    EXPECT_EQ(vxCompileWildcard(std::string(509, '?').c_str(), program), 1);
    EXPECT_EQ(vxCompileWildcard(std::string(510, '?').c_str(), program), 0);
    EXPECT_EQ(vxCompileWildcard((std::string(507, '?') + "*").c_str(), program), 1);
    EXPECT_EQ(vxCompileWildcard((std::string(508, '?') + "*").c_str(), program), 0);
    EXPECT_EQ(vxCompileWildcard(std::string(5000, '*').c_str(), program), 0);
}

// ---- Answers

TEST(Patterns, WildcardsMatch) {
    for (const char *page : {"C", "ja_JP.SJIS"}) {
        const InLocale locale(page);
        for (const DataRow &row : dataRows("pattern.txt", std::string("answers ") + page))
            EXPECT_EQ(matchesWildcard(row[0], row[1]), std::stoi(row[2]))
                << row[0] << " " << row[1];
    }
}

TEST(Patterns, SourceMatchesAnywhere) {
    for (const char *page : {"C", "ja_JP.SJIS"}) {
        const InLocale locale(page);
        for (const DataRow &row : dataRows("pattern.txt", std::string("source answers ") + page)) {
            Program program;
            EXPECT_GE(vx::compilePattern(row[0].c_str(), 0, 0, program), 0);
            EXPECT_EQ(vxMatchPattern(row[1].c_str(), program), std::stoi(row[2]))
                << row[0] << " " << row[1];
        }
    }
}

TEST(Patterns, DamagedProgramsAreNotFollowed) {
    const std::pair<const char *, int> cases[] = {
        {"x", 0}, {"c", 0}, {"^c\nc", 0}, {"*x", 0}, {"*", 1}, {"**", 1}, {"[", 0}, {"!", 0},
    };
    for (const auto &[bytes, result] : cases) {
        Program program;
        std::strcpy(program, bytes);
        EXPECT_EQ(vxMatchPattern("", program), result) << bytes;
    }
    Program program;
    std::memset(program, '?', VX_PATTERN_SIZE);
    EXPECT_EQ(vxMatchPattern(std::string(510, 'a').c_str(), program), 0);  // without an end
    std::memcpy(program + 300, "[\xFF", 2);
    EXPECT_EQ(vxMatchPattern(std::string(510, '?').c_str(), program), 0);  // a list past the end
    const std::string list = std::string(300, '?') + "[\xFF" + std::string(255, 'a') + '\0';
    EXPECT_EQ(vxMatchPattern(std::string(510, 'a').c_str(), list.c_str()),
              0);  // and an end after it
}

TEST(Patterns, SubjectsHaveALimit) {
    for (const std::size_t length : {61U, 62U, 63U, 64U, 126U, 127U, 509U, 510U}) {
        const std::string subject(length, 'a');
        EXPECT_EQ(matchesWildcard("*a", subject), 1) << length;
        EXPECT_EQ(matchesWildcard("*b", subject), 0) << length;
        EXPECT_EQ(matchesWildcard("*b", subject.substr(1) + "b"), 1) << length;
    }
    EXPECT_EQ(matchesWildcard("*", std::string(511, 'a')), 0);
    EXPECT_EQ(matchesWildcard("*", std::string(100000, 'a')), 0);
    // A run of characters of two bytes, which passes from one word of a set into the next.
    const InLocale page("ja_JP.SJIS");
    Program program;
    ASSERT_GE(vx::compilePattern("^x*[\x83\\]*y$", 0, 0, program), 0);
    for (std::size_t start = 56; start < 66; ++start) {
        const std::string subject = std::string(start, 'x') + "\x83\\\x83\\\x83\\\x83\\";
        EXPECT_EQ(vxMatchPattern((subject + "y").c_str(), program), 1) << start;
        EXPECT_EQ(vxMatchPattern((subject + "\\y").c_str(), program), 0) << start;
    }
}

TEST(Patterns, NoInputStalls) {
    std::string stars;
    for (int i = 0; i < 120; ++i)
        stars += "*a";
    // Tried one after the other, the paths through these would take practically forever.
    EXPECT_EQ(matchesWildcard(stars + "b", std::string(510, 'a')), 0);
    EXPECT_EQ(matchesWildcard(stars, std::string(510, 'a')), 1);
    const InLocale page("ja_JP.SJIS");
    std::string source, subject;
    for (int i = 0; i < 60; ++i)
        source += "\x83\\*[~x]*";
    for (int i = 0; i < 255; ++i)
        subject += "\x83\\";
    Program program;
    ASSERT_GE(vx::compilePattern((source + "x").c_str(), 0, 0, program), 0);
    EXPECT_EQ(vxMatchPattern(subject.c_str(), program), 0);
}

// ---- The matcher against its definition

class Random {
public:
    explicit Random(unsigned seed) : engine_(seed) {}
    std::size_t below(std::size_t bound) { return engine_() % bound; }
    std::string text(const std::string &alphabet, std::size_t most) {
        std::string text;
        for (std::size_t length = below(most + 1); text.size() < length;)
            text += alphabet[below(alphabet.size())];
        return text;
    }
    // Elements as the compiler makes them, and some that it never makes.
    std::string program(const std::string &alphabet, std::size_t elements, std::size_t stars) {
        std::string program = below(2) == 0 ? "^" : "";
        while (elements-- != 0) {
            if (below(3) == 0 && stars != 0) {
                --stars;
                program += '*';
            }
            const char opcode = "^$?cc[!c[x"[below(below(9) == 0 ? 10 : 9)];
            program += opcode;
            if (opcode == 'c') program += alphabet[below(alphabet.size())];
            if (opcode == 'c' && below(3) == 0) program += alphabet[below(alphabet.size())];
            if (opcode == '[' || opcode == '!') {
                const std::string list = text(alphabet, 5);
                program += static_cast<char>(list.size()) + list;
            }
        }
        return program;
    }

private:
    std::mt19937 engine_;
};

void compareWithDefinition(unsigned seed, const std::string &alphabet) {
    Random random(seed);
    int matched = 0;
    for (int i = 0; i < 40000; ++i) {
        Program program;
        const std::size_t kind = random.below(3);
        const bool isLong = random.below(16) == 0;  // for subjects of more than one word
        const std::size_t stars = isLong ? 2 : 4;   // the definition is slow
        const std::string source = random.text(alphabet + "*?[]-*~\\^$", 9);
        if (std::count(source.begin(), source.end(), '*') > static_cast<long>(stars)) continue;
        if (kind == 0) {
            if (vx::compilePattern(source.c_str(), 0, 0, program) < 0) continue;
        } else if (kind == 1) {
            if (vxCompileWildcard(source.c_str(), program) == 0) continue;
        } else {
            const std::string made = random.program(alphabet, 1 + random.below(6), stars);
            std::memcpy(program, made.c_str(), made.size() + 1);  // an empty list holds a zero byte
        }
        const std::string subject =
            (isLong ? std::string(55 + random.below(80), alphabet[0]) : "") +
            random.text(alphabet + "?*", 12);
        const bool expected = PatternDefinition(subject, program).matches();
        ASSERT_EQ(vxMatchPattern(subject.c_str(), program), expected ? 1 : 0)
            << i << " " << testing::PrintToString(static_cast<char *>(program)) << " on "
            << testing::PrintToString(subject);
        matched += expected ? 1 : 0;
    }
    EXPECT_GT(matched, 4000);
}

TEST(Patterns, MatcherDoesWhatItsDefinitionSays) {
    compareWithDefinition(1, "ab");
    compareWithDefinition(2, "aab\nn$^\xFF");
}

TEST(Patterns, MatcherDoesTheSameInDoubleByteLocales) {
    for (const char *name : {"ja_JP.SJIS", "zh_CN.GBK", "zh_TW.BIG5"}) {
        const InLocale locale(name);
        ASSERT_NE(vx::currentCodePage().number(), 0);
        compareWithDefinition(3, "\x83\\");
        compareWithDefinition(4, "\x81\xA1\x41 a");
        compareWithDefinition(5, "\x83\x81[\nc!\x5B\x02");
    }
}

}  // namespace
