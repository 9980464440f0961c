// The string: sharing and separating, growth, searches, order, numbers, and long random runs
// against std::string.

#include "platform/codepage.h"

#include <vxstring.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

using std::string_literals::operator""s;

VxString vx(std::string_view text) {
    return vxStringFrom(text);
}

std::string text(const VxString &string) {
    return std::string(vxStringView(string));
}

const char *body(const VxString &string) {
    return string;
}

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
    constexpr struct {
        int value;
        const char *text;
    } kInts[] = {{0, "0"}, {-5, "-5"}, {INT_MAX, "2147483647"}, {INT_MIN, "-2147483648"}};
    for (const auto &row : kInts)
        EXPECT_EQ(text(VxString(row.value)), row.text);
    constexpr struct {
        double value;
        const char *text;
    } kDoubles[] = {{0.5, "0.5"},
                    {1.0, "1"},
                    {1e300, "1e+300"},
                    {-0.0, "-0"},
                    {1.0 / 3, "0.333333333333333"},
                    {HUGE_VAL, "inf"},
                    {-1.25e-7, "-1.25e-07"}};
    for (const auto &row : kDoubles)
        EXPECT_EQ(text(VxString(row.value)), row.text);
    EXPECT_EQ(text(vx("a\0b"s)), "a\0b"s);
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
        doubling += vx(std::string(static_cast<std::size_t>(added), 'x'));
        EXPECT_EQ(capacity(doubling), room);
    }
    VxString sharer(doubling);
    sharer += VxString("y");  // takes the hint along
    EXPECT_EQ(capacity(sharer), 16);
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

// Every operation that changes text, on strings that share bodies at random.
TEST(String, DoesWhatStdStringDoes) {
    std::mt19937 random(22);
    const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    constexpr int kStrings = 6;
    VxString strings[kStrings];
    std::string models[kStrings];
    for (int step = 0; step < 40000; ++step) {
        const int i = below(kStrings);
        const int j = below(kStrings);
        VxString &s = strings[i];
        std::string &m = models[i];
        const int n = s.length();
        const int start = below(n + 1);
        const int count = below(n - start + 1);
        const auto at = static_cast<std::size_t>(start);
        const auto many = static_cast<std::size_t>(count);
        switch (n > 200 ? 3 : below(9)) {
            case 0:
                s = strings[j];
                m = models[j];
                break;
            case 1:
                s += strings[j];
                m += std::string(models[j]);
                break;
            case 2:
                if (i == j) break;
                s.set(start, count, strings[j]);
                m.replace(at, many, models[j]);
                break;
            case 3:
                s.set(start, count, VxString());
                m.replace(at, many, "");
                break;
            case 4:
                s = strings[j] + VxString(static_cast<char>(step));
                m = models[j] + static_cast<char>(step);
                break;
            case 5:
                s = s.get(start, count);
                m = m.substr(at, many);
                break;
            case 6:
                s.setMemoryHint(below(2) == 0 ? kHint : VxString::kExactRoom);
                if (below(2) == 0) s.setLengthHint(n + below(20));
                break;
            case 7:
                below(2) == 0 ? s.toUpper() : s.toLower().toUpper();
                std::transform(m.begin(), m.end(), m.begin(), platform::uppered);
                break;
            default:
                if (start == n) break;
                s[start] = static_cast<char>(step);
                m[at] = static_cast<char>(step);
        }
        for (int k = 0; k < kStrings; ++k) {
            ASSERT_EQ(text(strings[k]), models[k]) << "step " << step << " string " << k;
            ASSERT_EQ(body(strings[k])[strings[k].length()], '\0');
        }
    }
}

TEST(String, ChangesTheCaseOfLettersOnly) {
    std::string all;
    std::string upper;
    std::string lower;
    for (int byte = 0; byte < 256; ++byte) {
        const auto widened = static_cast<unsigned>(static_cast<signed char>(byte));
        all += static_cast<char>(byte);
        upper += static_cast<char>(platform::_mbctoupper(widened));
        lower += static_cast<char>(platform::_mbctolower(widened));
    }
    EXPECT_EQ(text(vx(all).toUpper()), upper);
    EXPECT_EQ(text(vx(all).toLower()), lower);
    EXPECT_EQ(text(vx("aZ[`{@\xE9\0z"s).toUpper()), "AZ[`{@\xE9\0Z"s);
    EXPECT_EQ(text(vx("aZ[`{@\xC9\0Z"s).toLower()), "az[`{@\xC9\0z"s);
}

// ---- Searches against their plainest form -----------------------------------------------------

char fold(char byte, bool folding) {
    return folding && byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte;
}

int plainFind(const std::string &in, const std::string &pattern, std::size_t start, bool folding) {
    const auto same = [&](char a, char b) { return fold(a, folding) == fold(b, folding); };
    const std::string what = pattern.empty() ? std::string(1, '\0') : pattern;
    for (std::size_t i = start; i + what.size() <= in.size(); ++i) {
        if (std::equal(what.begin(), what.end(), in.begin() + static_cast<std::ptrdiff_t>(i), same))
            return static_cast<int>(i);
    }
    return -1;
}

int plainFindByte(const std::string &in, char byte, int start, bool backward, bool folding) {
    const int n = static_cast<int>(in.size());
    const int step = backward ? -1 : 1;
    for (int i = backward ? n - start - 1 : start; i >= 0 && i < n; i += step) {
        if (fold(in[static_cast<std::size_t>(i)], folding) == fold(byte, folding)) return i;
    }
    return -1;
}

int plainSpan(const std::string &in, const std::string &set, std::size_t start, bool member,
              bool folding) {
    std::size_t i = start;
    const auto isMember = [&](char byte) {
        return std::any_of(set.begin(), set.end(), [&](char other) {
            return byte == other || fold(byte, folding) == fold(other, folding);
        });
    };
    while (i < in.size() && isMember(in[i]) == member)
        ++i;
    return static_cast<int>(i - start);
}

TEST(StringSearch, FindsWhatThePlainestSearchFinds) {
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
        const VxString s = vx(in);
        const VxString pattern = vx(what);
        const auto from = random() % (in.size() + 3);
        const int start = static_cast<int>(from);
        ASSERT_EQ(s.find(pattern, start), plainFind(in, what, from, false)) << round;
        ASSERT_EQ(s.findC(pattern, start), plainFind(in, what, from, true)) << round;
        const char byte = textOf(1)[0];
        for (const short backward : std::initializer_list<short>{0, 1, -2}) {
            const bool back = backward != 0;
            ASSERT_EQ(s.find(byte, start, backward), plainFindByte(in, byte, start, back, false));
            ASSERT_EQ(s.findC(byte, start, backward), plainFindByte(in, byte, start, back, true));
        }
        ASSERT_EQ(s.findInSet(pattern, start), plainSpan(in, what, from, true, false));
        ASSERT_EQ(s.findNotInSet(pattern, start), plainSpan(in, what, from, false, false));
        ASSERT_EQ(s.findInSetC(pattern, start), plainSpan(in, what, from, true, true));
        ASSERT_EQ(s.findNotInSetC(pattern, start), plainSpan(in, what, from, false, true));
    }
}

TEST(StringSearch, FindsLongPatternsAcrossStretches) {
    for (const std::size_t length : {1U, 300U, 511U, 512U, 513U, 1500U, 3000U}) {
        std::string pattern(length, 'A');
        pattern.back() = 'B';
        for (const std::size_t at : {0U, 1U, 1000U, 1535U, 2047U, 2048U, 5000U}) {
            std::string in(at, 'a');  // every place up to the match agrees nearly to the end
            std::string tail = pattern;
            for (char &byte : tail)
                byte = fold(byte, true);
            in += tail;
            EXPECT_EQ(vx(in).findC(vx(pattern), 0), static_cast<int>(at)) << length;
            in.pop_back();
            EXPECT_EQ(vx(in).findC(vx(pattern), 0), -1) << length;
        }
    }
}

// ---- Order, hash, numbers ---------------------------------------------------------------------

TEST(StringOrder, ComparesSignedBytesAndTheTerminator) {
    const struct {
        std::string one, other;
        int order, folded;
    } kTable[] = {{"abc", "abd", -1, -1},     {"abc", "ab", 99, 99},
                  {"ab", "abc", -99, -99},    {"", "", 0, 0},
                  {"a", "a\0"s, 0, 0},        {"a", "a\xE9", 23, 23},
                  {"\x7F", "\x80", 255, 255}, {"aB", "Ab", 32, 0},
                  {"[", "a", -6, -6},         {"a\0b"s, "a\0c"s, -1, -1},
                  {"\xC9", "\xE9", -32, -32}};
    for (const auto &row : kTable) {
        // Behind equal text of any length: stretches are compared at once.
        for (const std::size_t length : {0U, 5U, 63U, 64U, 500U, 1023U, 2000U}) {
            const std::string head(length, 'q');
            const VxString one = vx(head + row.one);
            const VxString other = vx(head + row.other);
            ASSERT_EQ(one.compare(other), row.order) << row.one << " " << row.other << length;
            ASSERT_EQ(other.compare(one), -row.order);
            ASSERT_EQ(one.compareC(other), row.folded);
            const bool same = row.one == row.other;
            EXPECT_EQ(one == other, same ? 1 : 0);
            EXPECT_EQ(one != other, same ? 0 : 1);
            EXPECT_EQ(one < other, row.order < 0 ? 1 : 0);
            EXPECT_EQ(one <= other, row.order <= 0 ? 1 : 0);
            EXPECT_EQ(one > other, row.order > 0 ? 1 : 0);
            EXPECT_EQ(one >= other, row.order >= 0 ? 1 : 0);
        }
    }
}

TEST(StringHash, IsThatOfSignedBytesUpToTheFirstNul) {
    const struct {
        std::string text;
        unsigned int hash;
    } kTable[] = {{"", 0},
                  {"a", 97},
                  {"abc", 26499},
                  {"abc\0x"s, 26499},
                  {"\xE9", 0x0fffff19},
                  {"abcdefgh", 0x089abaa8},
                  {"abcdefghi", 0x09abaa69}};
    for (const auto &row : kTable)
        EXPECT_EQ(vx(row.text).hash(), row.hash) << row.text;
}

TEST(StringNumbers, AreReadLikeStrtolAndStrtod) {
    const struct {
        const char *text;
        int start, value, end;
    } kInts[] = {{"12ab", 0, 12, 2},
                 {" 42", 0, 42, 3},
                 {"ab", 0, 0, 0},
                 {"ab", 2, 0, 2},
                 {"x-7", 1, -7, 3},
                 {"2147483648", 0, INT_MAX, 10},
                 {"-99999999999999999999", 0, INT_MIN, 21}};
    for (const auto &row : kInts) {
        int end = -1;
        EXPECT_EQ(VxString(row.text).getInt(row.start, end), row.value) << row.text;
        EXPECT_EQ(end, row.end) << row.text;
        EXPECT_EQ(VxString(row.text).getInt(row.start), row.value);
    }
    int end = -1;
    EXPECT_EQ(VxString("1.5e3x").getDouble(0, end), 1500.0);
    EXPECT_EQ(end, 5);
    EXPECT_EQ(VxString("x").getDouble(0, end), 0.0);
    EXPECT_EQ(end, 0);
    EXPECT_EQ(static_cast<int>(VxString("17")), 17);
    EXPECT_EQ(static_cast<double>(VxString("0.25")), 0.25);
}

}  // namespace
