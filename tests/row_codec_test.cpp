// The row codec: some rows to the byte, every length of runs and literals against a model, and all
// pairs of widths.

#include "row_model.h"

#include <vximage.h>

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

std::vector<std::uint8_t> packed(const Elements &elements, int width) {
    std::vector<std::uint8_t> bytes;
    for (const unsigned element : elements) {
        for (int i = 0; i < width; ++i)
            bytes.push_back(static_cast<std::uint8_t>(element >> 8 * i));
    }
    return bytes;
}

Elements unpacked(const std::vector<std::uint8_t> &bytes, int width, std::size_t count) {
    Elements elements(count);
    for (std::size_t i = 0; i < count; ++i) {
        std::memcpy(&elements[i], &bytes[i * static_cast<std::size_t>(width)],
                    static_cast<std::size_t>(width));
    }
    return elements;
}

Elements encoded(const Elements &row, int in = 1, int out = 1) {
    const std::vector<std::uint8_t> input = packed(row, in);
    std::vector<std::uint8_t> output((2 * row.size() + 1) * static_cast<std::size_t>(out));
    const int length =
        vxImageRleEncode(input.data(), in, output.data(), out, static_cast<int>(row.size()));
    return unpacked(output, out, static_cast<std::size_t>(length));
}

Elements decoded(const Elements &stored, int in, int out, std::size_t count) {
    const std::vector<std::uint8_t> input = packed(stored, in);
    std::vector<std::uint8_t> output(count * static_cast<std::size_t>(out));
    vxImageRleDecode(input.data(), in, output.data(), out);
    return unpacked(output, out, count);
}

TEST(RowCodec, KnownRows) {
    const std::pair<Elements, Elements> cases[] = {
        {{4}, {1, 4, 0}},
        {{4, 5, 5}, {0x81, 4, 2, 5, 0}},
        {Elements(130, 7), {126, 7, 4, 7, 0}},
        {{6, 6, 6, 6, 2, 1, 8, 8, 8, 8, 4, 7}, {4, 6, 0x82, 2, 1, 4, 8, 1, 4, 1, 7, 0}},
    };
    for (const auto &[row, stored] : cases) {
        EXPECT_EQ(encoded(row), stored);
        EXPECT_EQ(encoded(row, 2, 2), stored);
    }
    EXPECT_EQ(encoded({0x105, 0x105, 0x205, 0x205, 0x305}, 2, 1),
              (Elements{0x83, 5, 5, 5, 1, 5, 1, 5, 0}));
    EXPECT_EQ(encoded(Elements(5, 0x8000), 2, 2), (Elements{5, 0x8000, 0}));
    EXPECT_EQ(decoded({0x557F, 3, 0xAB80}, 2, 2, 127), Elements(127, 3));
}

TEST(RowCodec, EveryLengthAndPairOfWidths) {
    std::mt19937 random(2);
    std::vector<Elements> rows;
    for (std::size_t length = 0; length <= 400; ++length) {
        Elements run(length, 0x1FF), literal;
        for (std::size_t i = 0; i < length; ++i)
            literal.push_back(static_cast<unsigned>(i * 259) & 0xFFFF);
        rows.push_back(run);
        rows.push_back(literal);
        run.push_back(1);  // a run and one element
        rows.push_back(run);
        run.insert(run.end(), literal.begin(), literal.end());
        rows.push_back(run);
        Elements mixed;
        for (std::size_t i = 0; i < length; ++i)
            mixed.push_back(static_cast<unsigned>(random() % 3));
        rows.push_back(mixed);
    }
    for (const Elements &wide : rows) {
        for (const int in : {1, 2}) {
            Elements row = wide;
            for (unsigned &element : row)
                element &= in == 1 ? 0xFF : 0xFFFF;
            for (const int out : {1, 2}) {
                const Elements stored = encoded(row, in, out);
                ASSERT_EQ(stored, encodedPlainly(row, out == 1 ? 0xFF : 0xFFFF));
                for (const int back : {1, 2}) {
                    Elements expected = row;
                    for (unsigned &element : expected)
                        element &= out == 1 || back == 1 ? 0xFF : 0xFFFF;
                    ASSERT_EQ(decoded(stored, out, back, row.size()), expected);
                }
            }
        }
    }
}

TEST(WordSwap, ReversesCompleteWordsOnly) {
    const auto check = [](void (*swap)(void *, int), std::size_t word) {
        for (std::size_t offset = 0; offset < 4; ++offset) {
            for (int count = -1; count <= 70; ++count) {
                std::vector<std::uint8_t> bytes(80), expected;
                for (std::size_t i = 0; i < bytes.size(); ++i)
                    bytes[i] = static_cast<std::uint8_t>(i);
                expected = bytes;
                for (std::size_t i = 0; count > 0 && i < static_cast<std::size_t>(count) / word;
                     ++i) {
                    std::reverse(&expected[offset + i * word], &expected[offset + (i + 1) * word]);
                }
                swap(&bytes[offset], count);
                ASSERT_EQ(bytes, expected) << word << " " << offset << " " << count;
            }
        }
    };
    check(vxSwapShorts, 2);
    check(vxSwapLongs, 4);
}

}  // namespace
