// The string: sharing and detaching, growth, searches, order, numbers, and long random runs
// compared with std::string.

#include "data_rows.h"
#include "fuzz/models/string_model.h"
#include "platform/code_page.h"

#include <vxstring.h>
#include <vxtyped.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using std::string_literals::operator""s;

// The capacity of a body, which precedes its text: length, capacity.
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
    EXPECT_STREQ(body(VxString(static_cast<const char *>(nullptr))), "");
    EXPECT_EQ(text(VxString('\0')), "\0"s);
    EXPECT_EQ(text(VxString('\xE9')), "\xE9");
    EXPECT_NE(body(VxString()), body(VxString()));  // bodies of their own
    for (const int value : {0, -5, INT_MAX, INT_MIN})
        EXPECT_EQ(text(VxString(value)), std::to_string(value));
    for (const DataRow &row : dataRows("string.txt", "doubles"))
        EXPECT_EQ(text(VxString(std::stod(row[0]))), row[1]);
    EXPECT_EQ(text(made("a\0b"s)), "a\0b"s);
    EXPECT_EQ(text("a" + VxString("b") + "c"), "abc");
    EXPECT_TRUE(VxString() == static_cast<const char *>(nullptr));
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
        copy[0] = 'z';  // no longer shared: written in place
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
    sharer += VxString("y");  // keeps the hint
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
    before.setMemoryHint(kHint);  // for both, and lost with the body
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

TEST(String, TheByteAtTheEndCannotBeWritten) {
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
    StringModel run;
    for (int step = 0; step < 40000; ++step) {
        run.change([&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); });
        ASSERT_EQ(run.difference(), "") << "step " << step;
    }
}

TEST(String, ChangesTheCaseOfLettersOnly) {
    for (int byte = 0; byte < 256; ++byte) {
        const auto all = [](int each) { return std::string(40, static_cast<char>(each)); };
        const bool isUpper = byte >= 'A' && byte <= 'Z';
        const bool isLower = byte >= 'a' && byte <= 'z';
        EXPECT_EQ(text(made(all(byte)).toUpper()), all(isLower ? byte - 32 : byte));
        EXPECT_EQ(text(made(all(byte)).toLower()), all(isUpper ? byte + 32 : byte));
    }
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
        std::string in = textOf(random() % 70);
        std::string what = textOf(random() % 5);
        if (round % 16 == 0) {
            // A long pattern with a period, after many that differ a little.
            what = repeated(textOf(1 + random() % 9), 200 + random() % 400);
            if (random() % 2 == 0) what[random() % what.size()] = 'b';
            in.clear();
            for (int i = 0; i < 12; ++i) {
                in += what.substr(random() % 4, 1 + random() % 800);
                if (random() % 2 == 0) in[random() % in.size()] = 'b';
            }
            in += what;
        }
        const std::size_t from = random() % (in.size() + 3);
        int search = 0;
        for (const auto &[found, expected] : searches(in, what, textOf(1)[0], from))
            ASSERT_EQ(found, expected) << round << " search " << search++;
    }
}

TEST(StringSearch, FindsLongPatternsAcrossStretches) {
    for (const unsigned length : {2U, 255U, 256U, 257U, 513U, 3000U}) {
        std::string pattern(length, 'A');
        pattern.back() = 'B';
        // Also at the first place of the second stretch, and after places that differ in their last
        // byte only, are equal in that one only, or in none.
        for (const unsigned at : {0U, 1U, 1000U, 2048U, 2049U - length % 2049U, length}) {
            for (const char before : {'a', 'b', '-'}) {
                const auto place = static_cast<int>(at);
                std::string in = std::string(at, before) + mapped(pattern, vx::lowered);
                EXPECT_EQ(made(in).findC(made(pattern), 0), place) << length;
                in += "-";
                EXPECT_EQ(made(in).findC(made(pattern), 0), place) << length;
                in[in.size() - 2] = 'c';
                for (const int start : {0, place, place + 1, place + 2, INT_MAX})
                    EXPECT_EQ(made(in).findC(made(pattern), start), -1) << length;
            }
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

// The results of all comparisons, and what they are for two orders of the values: that of the
// named ones, and the total one.
template <typename Left, typename Right>
std::vector<int> relations(const Left &one, const Right &other) {
    const auto order = one <=> other;
    return {one<other, one <= other, one> other, one >= other, one == other, one != other,
            order<0, order> 0};
}

std::vector<int> expected(int named, int total) {
    return {named<0, named <= 0, named> 0, named >= 0, total == 0, total != 0, total<0, total> 0};
}

struct Named {
    VxString name;
    int number;
    auto operator<=>(const Named &) const = default;
};

TEST(StringOrder, ComparesSignedBytesAndTheTerminator) {
    std::vector<DataRow> rows = dataRows("string.txt", "order");
    const std::string tail(600, 'z');  // where the texts agree again
    rows.push_back({"c" + tail, "d" + tail, "-1", "-1"});
    for (const DataRow &row : rows) {
        const std::string &left = row[0];
        const std::string &right = row[1];
        const int order = std::stoi(row[2]);
        // After equal text of any length: stretches are compared at once.
        for (const std::size_t length : {0U, 5U, 63U, 64U, 500U, 1023U, 2000U}) {
            const std::string head(length, 'q');
            const VxString one = made(head + left);
            const VxString other = made(head + right);
            ASSERT_EQ(one.compare(other), order) << left << " " << right << length;
            ASSERT_EQ(other.compare(one), -order);
            ASSERT_EQ(one.compareC(other), std::stoi(row[3]));
            // Sets, tables and values of several members keep apart what compare does not.
            const bool same = left == right;
            const int total = order != 0 ? order : one.length() - other.length();
            EXPECT_EQ(relations(one, other), expected(order, total));
            EXPECT_EQ(relations(std::pair(one, 1), std::pair(other, 1)), expected(total, total));
            EXPECT_EQ(relations(std::vector{one}, std::vector{other}), expected(total, total));
            EXPECT_EQ(relations(Named{one, 1}, Named{other, 1}), expected(total, total));
            EXPECT_EQ(VxStringLess()(one, other), total < 0);
            EXPECT_EQ(std::hash<VxString>()(one) == std::hash<VxString>()(other), same);
            VxOwningTable<VxString> table;
            table.insert(one);
            EXPECT_EQ(table.has(other) != nullptr, same);
            const VxString cut(body(other));
            EXPECT_EQ(relations(one, body(other)), relations(one, cut));
            EXPECT_EQ(relations(body(other), one), relations(cut, one));
        }
    }
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
    EXPECT_EQ(static_cast<double>(VxString("1.25")), 1.25);
}

}  // namespace
