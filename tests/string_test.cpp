// The string: changes, searches, comparisons and numbers at random and in tables, against models.

#include "data_rows.h"
#include "fuzz/models/string_model.h"
#include "random_text.h"

#include <vxstring.h>

#include <climits>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using std::string_literals::operator""s;

TEST(String, IsMadeOfTextAndNumbers) {
    EXPECT_EQ(text(VxString()), "");
    EXPECT_STREQ(body(VxString(static_cast<const char *>(nullptr))), "");
    EXPECT_TRUE(VxString() == static_cast<const char *>(nullptr));
    EXPECT_NE(body(VxString()), body(VxString()));  // bodies of their own
    EXPECT_EQ(text("a" + VxString("b") + "c"), "abc");
    for (const int value : {0, -5, INT_MAX, INT_MIN})
        EXPECT_EQ(text(VxString(value)), std::to_string(value));
    for (const DataRow &row : dataRows("string.txt", "doubles"))
        EXPECT_EQ(text(VxString(std::stod(row[0]))), row[1]);
}

TEST(String, SharesGrowsAndChangesLikeItsModel) {
    Random random;
    StringModel run;
    for (int step = 0; step < 40000; ++step) {
        run.change(random);
        ASSERT_EQ(run.difference(), "") << "step " << step;
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

// ---- Searches -----------------------------------------------------------------------------------

class StringSearch : public testing::Test {
protected:
    std::string textOf(std::size_t n) { return random.text("aAbB\0\xE9zZ"s, n); }

    // All searches, from a place and from anywhere.
    void search(const std::string &in, const std::string &what, std::size_t place) {
        const char byte = what.empty() || random(2) == 0 ? textOf(1)[0] : what[0];
        for (const std::size_t from : {place, random(in.size() + 3)}) {
            ASSERT_EQ(searchDifference(in, what, byte, from), "")
                << "from " << from << " of " << in.size() << " for " << what.size();
        }
    }

    Random random;
};

TEST_F(StringSearch, FindsWhatStdStringFinds) {
    for (int round = 0; round < 4000; ++round)
        search(textOf(random(70U)), textOf(random(5U)), 0);
}

TEST_F(StringSearch, FindsPeriodicPatternsAfterSimilarOnes) {
    for (int round = 0; round < 250; ++round) {
        // Many short periods, or about two long ones.
        const bool isShort = random(2) == 0;
        const std::string unit =
            isShort ? textOf(1 + random(9U)) : std::string(130 + random(9U), 'a') + 'z';
        std::string what = repeated(unit, isShort ? 200 + random(400U) : 2 * unit.size() - 2);
        // Wrong bytes as far apart as the pattern is long.
        std::string run = repeated(unit, 3 * what.size());
        const std::size_t wrong = random(9U);
        run[wrong] = run[wrong + what.size()] = '-';
        search(run, what, 0);

        if (random(2) == 0) what[random(what.size())] = 'b';
        std::string in;
        for (int i = 0; i < 12; ++i) {
            in += what.substr(random(4U), 1 + random(800U));
            if (random(2) == 0) in[random(in.size())] = 'b';
        }
        search(in + what, what, 0);
    }
}

// The library takes long texts in stretches of 2048 bytes, and long patterns in another way than
// short ones. What it must not find differs in the last byte only.
TEST_F(StringSearch, FindsPatternsOfAnyLengthAcrossStretches) {
    for (const std::size_t length : {1U, 2U, 255U, 256U, 257U, 513U, 3000U}) {
        const std::string pattern = std::string(length - 1, 'A') + 'B';
        for (const std::size_t at :
             std::vector<std::size_t>{0, 1, 1000, 2047, 2048, 2049 - length % 2049}) {
            for (const char around : {'a', 'b', '-'}) {
                for (const std::size_t rest : {0U, 1U, 2047U, 5000U}) {
                    std::string in = std::string(at, around) + lower(pattern);
                    in += std::string(rest, around);
                    search(in, pattern, 0);
                    search(in, lower(pattern), at);
                    in[at + length - 1] = 'c';
                    search(in, pattern, 0);
                }
            }
        }
    }
}

// ---- Order, hash, numbers -----------------------------------------------------------------------

TEST(StringOrder, IsThatOfSignedBytesForEveryOperatorAndLength) {
    for (const DataRow &row : dataRows("string.txt", "order")) {
        EXPECT_EQ(made(row[0]).compare(made(row[1])), std::stoi(row[2])) << row[0];
        EXPECT_EQ(made(row[0]).compareC(made(row[1])), std::stoi(row[3])) << row[0];
        // Between equal texts of any length: stretches are compared at once.
        for (const std::size_t length : {0U, 5U, 63U, 64U, 500U, 1023U, 2000U}) {
            for (const std::size_t rest : {0U, 600U}) {
                const std::string head(length, 'q');
                const std::string tail(rest, 'Z');
                ASSERT_EQ(comparisonDifference(head + row[0] + tail, head + row[1] + tail), "")
                    << row[0] << " " << row[1] << " " << length;
            }
        }
    }
}

TEST(StringHash, IsThatOfSignedBytesUpToTheFirstNul) {
    for (const DataRow &row : dataRows("string.txt", "hash"))
        EXPECT_EQ(made(row[0]).hash(), std::stoul(row[1], nullptr, 0)) << row[0];
}

TEST(StringNumbers, AreReadLikeStrtolAndStrtod) {
    for (const DataRow &row : dataRows("string.txt", "numbers"))
        EXPECT_EQ(numberDifference(row[0], std::stoi(row[1])), "") << row[0];
}

}  // namespace
