// The string: sharing and separating, growth, searches, order, numbers, and long random runs
// against std::string.

#include "data_rows.h"
#include "platform/code_page.h"
#include "string_run.h"

#include <vxstring.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using std::string_literals::operator""s;

// The capacity of a body, which lies before its text: length, capacity.
int capacity(const VxString &string) {
    struct Body {
        char *data;
        int length, capacity;
    };
    const Body *rep = nullptr;
    std::memcpy(&rep, static_cast<const void *>(&string), sizeof rep);
    return rep->capacity;
}

constexpr auto kHint = VxString::kDoubleRoom;

TEST(String, IsMadeOfTextBytesAndNumbers) {
    EXPECT_EQ(text(VxString()), "");
    EXPECT_EQ(text(VxString(static_cast<const char *>(nullptr))), "");
    EXPECT_STREQ(body(VxString(static_cast<const char *>(nullptr))), "");
    EXPECT_EQ(text(VxString('\0')), "\0"s);
    EXPECT_EQ(text(VxString('\xE9')), "\xE9");
    EXPECT_EQ(text(VxString("abc")), "abc");
    EXPECT_NE(body(VxString()), body(VxString()));  // bodies of their own
    for (const int value : {0, -5, INT_MAX, INT_MIN})
        EXPECT_EQ(text(VxString(value)), std::to_string(value));
    for (const DataRow &row : dataRows("string.txt", "doubles"))
        EXPECT_EQ(text(VxString(std::stod(row[0]))), row[1]);
    EXPECT_EQ(text(made("a\0b"s)), "a\0b"s);
}

TEST(String, SharesUntilOneIsWrittenTo) {
    VxString s("abc");
    const VxString t = s;
    VxString u;
    u = t;
    EXPECT_EQ(body(s), body(t));
    EXPECT_EQ(body(u), body(t));
    EXPECT_EQ(body(s + VxString()), body(s));
    s += VxString();
    EXPECT_EQ(body(s), body(t));

    const std::vector<void (*)(VxString &)> writers = {
        [](VxString &x) { x += VxString("d"); }, [](VxString &x) { x.set(0, 1, VxString("x")); },
        [](VxString &x) { x.toUpper(); },        [](VxString &x) { x.toLower(); },
        [](VxString &x) { x[0] = 'y'; },         [](VxString &x) { x[3]; },
        [](VxString &x) { x.setLengthHint(9); }, [](VxString &x) { x.set(1, 1, x.get(0)); }};
    for (const auto write : writers) {
        VxString copy(t);
        write(copy);
        EXPECT_NE(body(copy), body(t));
        EXPECT_EQ(text(t), "abc");
        const char *own = body(copy);
        copy[0] = 'z';  // alone now: written in place
        EXPECT_EQ(body(copy), own);
    }
    u.setLengthHint(3);
    EXPECT_EQ(body(u), body(t));
    EXPECT_NE(body(t.get(0)), body(t));
    const VxString &self = u;
    u = self;
    EXPECT_EQ(body(u), body(t));
}

TEST(String, GrowsByTheHint) {
    VxString exact("ab");
    exact += VxString("c");
    EXPECT_EQ(capacity(exact), 3);

    VxString doubling("ab");
    doubling.setMemoryHint(kHint);
    const int expected[][2] = {{1, 6}, {3, 6}, {1, 14}};
    for (const auto &[added, room] : expected) {
        doubling += made(std::string(static_cast<std::size_t>(added), 'x'));
        EXPECT_EQ(capacity(doubling), room);
    }
    VxString sharer(doubling);
    sharer += VxString("y");  // takes the hint along
    EXPECT_EQ(capacity(sharer), 16);
    sharer += VxString("123456789");
    EXPECT_EQ(capacity(sharer), 34);
    VxString written(doubling);
    written[0] = 'w';  // does not
    EXPECT_EQ(capacity(written), 7);
    written += VxString("y");
    EXPECT_EQ(capacity(written), 8);

    VxString hinted("ab");
    VxString before(hinted);
    before.setMemoryHint(kHint);  // of both, and gone with the body
    hinted.setLengthHint(100);
    EXPECT_EQ(capacity(hinted), 100);
    hinted.setLengthHint(50);
    EXPECT_EQ(capacity(hinted), 50);
    hinted += VxString("c");
    EXPECT_EQ(capacity(hinted), 50);
    before.set(2, 0, VxString("cd"));
    EXPECT_EQ(capacity(before), 8);
    before.set(0, 4, VxString());
    EXPECT_EQ(text(before), "");
    EXPECT_EQ(capacity(before), 8);
    before.set(0, 0, VxString("123456789"));
    EXPECT_EQ(capacity(before), 18);
    hinted += made(std::string(50, 'd'));
    EXPECT_EQ(capacity(hinted), 53);
}

TEST(String, TheByteAtTheEndIsNobodys) {
    VxString s("ab");
    VxString t("cd");
    s[2] = 'x';
    EXPECT_EQ(text(s), "ab");
    EXPECT_EQ(body(s)[2], '\0');
    EXPECT_EQ(t[2], '\0');
    EXPECT_EQ(&s[2], &t[2]);
    s[1] = '\0';
    EXPECT_EQ(s.length(), 2);
    const VxString &constant = s;
    EXPECT_EQ(constant[2], '\0');
}

TEST(String, DoesWhatStdStringDoes) {
    std::mt19937 random(22);
    StringRun run;
    for (int step = 0; step < 40000; ++step) {
        run.change([&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); });
        ASSERT_EQ(run.difference(), "") << "step " << step;
    }
}

TEST(String, ChangesTheCaseOfLettersOnly) {
    std::string all;
    std::string upper;
    std::string lower;
    for (int byte = 0; byte < 256; ++byte) {
        const auto isBetween = [byte](int first, int last) {
            return byte >= first && byte <= last;
        };
        all += static_cast<char>(byte);
        upper += static_cast<char>(isBetween('a', 'z') ? byte - 32 : byte);
        lower += static_cast<char>(isBetween('A', 'Z') ? byte + 32 : byte);
    }
    EXPECT_EQ(text(made(all).toUpper()), upper);
    EXPECT_EQ(text(made(all).toLower()), lower);
    EXPECT_EQ(text(made("aZ[`{@\xE9\0z"s).toUpper()), "AZ[`{@\xE9\0Z"s);
    EXPECT_EQ(text(made("aZ[`{@\xC9\0Z"s).toLower()), "az[`{@\xC9\0z"s);
}

// ---- Searches

TEST(StringSearch, FindsWhatStdStringFinds) {
    std::mt19937 random(23);
    const auto textOf = [&](std::size_t n) {
        std::string result;
        while (result.size() < n)
            result += "aAbB\0\xE9zZ"s[random() % 8];
        return result;
    };
    for (int round = 0; round < 4000; ++round) {
        // Now and then longer than what is folded at a time.
        const std::string in = textOf(round % 50 == 0 ? random() % 9000 : random() % 70);
        const std::string what = textOf(random() % 5);
        const std::size_t from = random() % (in.size() + 3);
        int search = 0;
        for (const auto &[found, expected] : searches(in, what, textOf(1)[0], from))
            ASSERT_EQ(found, expected) << round << " search " << search++;
    }
}

TEST(StringSearch, FindsLongPatternsAcrossStretches) {
    for (const std::size_t length : {1U, 300U, 511U, 512U, 513U, 1500U, 3000U}) {
        std::string pattern(length, 'A');
        pattern.back() = 'B';
        for (const std::size_t at : {0U, 1U, 1000U, 1535U, 2047U, 2048U, 5000U}) {
            std::string in(at, 'a');  // every place up to the match agrees nearly to the end
            in += mapped(pattern, vx::lowered);
            EXPECT_EQ(made(in).findC(made(pattern), 0), static_cast<int>(at)) << length;
            in.pop_back();
            EXPECT_EQ(made(in).findC(made(pattern), 0), -1) << length;
            for (const int start : {static_cast<int>(in.size()), INT_MAX})
                EXPECT_EQ(made(in).findC(made(pattern), start), -1) << length;
        }
    }
}

TEST(StringSearch, FindsBytesOfEitherCaseAcrossStretches) {
    for (const std::size_t at : {0U, 2046U, 2047U, 2048U, 2049U, 5000U}) {
        for (const auto &[one, other] : {std::pair('k', 'K'), std::pair('K', 'k')}) {
            std::string in(6000, '-');
            in[at] = one;
            in[at + 1] = other;
            const auto place = static_cast<int>(at);
            EXPECT_EQ(made(in).findC('k', 0, 0), place);
            EXPECT_EQ(made(in).findC('k', place + 1, 0), place + 1);
            EXPECT_EQ(made(in).findC('K', place + 2, 0), -1);
            EXPECT_EQ(made(in).findC('K', 0, 1), place + 1);
            EXPECT_EQ(made(in).findC('K', 6000 - place - 1, 1), place);
            EXPECT_EQ(made(in).findC('k', 6000 - place, 1), -1);
        }
    }
}

// ---- Order, hash, numbers ---------------------------------------------------------------------

TEST(StringOrder, ComparesSignedBytesAndTheTerminator) {
    std::vector<DataRow> rows = dataRows("string.txt", "order");
    const std::string tail(600, 'z');  // where the texts agree again
    rows.push_back({"c" + tail, "d" + tail, "-1", "-1"});
    for (const DataRow &row : rows) {
        const std::string &left = row[0];
        const std::string &right = row[1];
        const int order = std::stoi(row[2]);
        // Behind equal text of any length: stretches are compared at once.
        for (const std::size_t length : {0U, 5U, 63U, 64U, 500U, 1023U, 2000U}) {
            const std::string head(length, 'q');
            const VxString one = made(head + left);
            const VxString other = made(head + right);
            ASSERT_EQ(one.compare(other), order) << left << " " << right << length;
            ASSERT_EQ(other.compare(one), -order);
            ASSERT_EQ(one.compareC(other), std::stoi(row[3]));
            const bool same = left == right;
            EXPECT_EQ(one == other, same ? 1 : 0);
            EXPECT_EQ(one != other, same ? 0 : 1);
            EXPECT_EQ(one < other, order < 0 ? 1 : 0);
            EXPECT_EQ(one <= other, order <= 0 ? 1 : 0);
            EXPECT_EQ(one > other, order > 0 ? 1 : 0);
            EXPECT_EQ(one >= other, order >= 0 ? 1 : 0);
        }
    }
}

TEST(StringOrder, TakesLiteralsOnEitherSide) {
    const VxString s("b");
    EXPECT_TRUE(s == "b" && "b" == s && s != "bc" && "a" != s);
    EXPECT_TRUE(s < "c" && s <= "b" && s > "a" && s >= "b");
    EXPECT_TRUE("a" < s && "b" <= s && "\x7F" > s && "b" >= s);
    EXPECT_FALSE("c" < s || s < "\x80" || made("b\0c"s) == "b");
    EXPECT_EQ(text("a" + s + "c"), "abc");
    EXPECT_TRUE(VxString() == static_cast<const char *>(nullptr));
}

#ifndef NDEBUG
TEST(String, AssertsItsLimits) {
    VxString s("abc");
    EXPECT_DEATH(s[4], "");
    EXPECT_DEATH(s.get(2, 2), "");
    EXPECT_DEATH(s.set(0, 1, s), "");
    EXPECT_DEATH(s.getInt(-1), "");
}
#endif

TEST(StringHash, IsThatOfSignedBytesUpToTheFirstNul) {
    for (const DataRow &row : dataRows("string.txt", "hash"))
        EXPECT_EQ(made(row[0]).hash(), std::stoul(row[1], nullptr, 0)) << row[0];
}

TEST(StringNumbers, AreReadLikeStrtolAndStrtod) {
    int end = -1;
    for (const DataRow &row : dataRows("string.txt", "integers")) {
        const VxString read = made(row[0]);
        const int start = std::stoi(row[1]);
        EXPECT_EQ(read.getInt(start, end), std::stoi(row[2])) << row[0];
        EXPECT_EQ(end, std::stoi(row[3])) << row[0];
        EXPECT_EQ(read.getInt(start), std::stoi(row[2]));
    }
    EXPECT_EQ(VxString("1.5e3x").getDouble(0, end), 1500.0);
    EXPECT_EQ(end, 5);
    EXPECT_EQ(VxString("x1.5").getDouble(1, end), 1.5);
    EXPECT_EQ(end, 4);
    EXPECT_EQ(VxString("x").getDouble(0, end), 0.0);
    EXPECT_EQ(end, 0);
    EXPECT_EQ(static_cast<int>(VxString("17")), 17);
    EXPECT_EQ(static_cast<double>(VxString("0.25")), 0.25);
}

}  // namespace
