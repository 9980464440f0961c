// Every converter against its layout read at run time, byte by byte, at any alignment.

#include <vxbyteorder.h>

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <numeric>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Layout {
    int ordinal;
    const char *fields;
    int span;
};

constexpr Layout kLayouts[] = {
    {220, "2", 2},
    {221, "4", 4},
    {222, "8", 8},
    {259, "3x4", 12},
    {260, "3x4", 12},
    {223, "2x2, 20x4, skip 12, 3x4", 108},
    {224, "2, skip 2, 12x4", 52},
    {225, "4, 2", 6},
    {226, "6x4, 2", 26},
    {227, "2", 2},
    {228, "2, skip 238, 2", 242},
    {229, "2, skip 2, 15x4, 2", 66},
    {230, "11x4, 2", 46},
    {231, "11x4, 2", 46},
    {232, "11x4", 44},
    {233, "10x4, 2, skip 6, 9x8", 120},
    {234, "11x4, 2", 46},
    {235, "11x4, 2", 46},
    {236, "11x4", 44},
    {237, "16x4, 2", 66},
    {238, "18x4, 2", 74},
    {239, "18x4", 72},
    {240, "13x4, 2, skip 2, 9x8", 128},
    {241, "2, skip 2, 18x4, 2, skip 2, 9x8", 152},
    {242, "2, skip 2, 19x4, 2", 82},
    {243, "2, skip 2, 20x4, 2", 86},
    {244, "2, skip 2, 20x4", 84},
    {245, "2x2, 14x4", 60},
    {246, "6x4", 24},
    {247, "9x4", 36},
    {248, "6x4", 24},
    {249, "3x4", 12},
    {250, "6x4", 24},
    {251, "3x4", 12},
    {252, "2, skip 2, 4x4, 5x2", 30},
    {253, "4x2, 4, 2", 14},
    {254, "8x2, 3x4", 28},
    {255, "8x2, 3x4", 28},
    {256, "2, skip 2, 9x4", 40},
    {257, "6x4", 24},
    {258, "11x4", 44},
};

using Bytes = std::vector<unsigned char>;
using Converter = void (*)(void *);

Converter converter(int ordinal) {
    return reinterpret_cast<Converter>(const_cast<void *>(vxExportAddress(ordinal)));
}

// Reverses a record in the plainest way and returns its span.
std::ptrdiff_t reversePlainly(const char *fields, Bytes::iterator record) {
    auto at = record;
    std::istringstream list(fields);
    for (std::string field; std::getline(list >> std::ws, field, ',');) {
        int count = 1;
        int width = 0;
        if (std::sscanf(field.c_str(), "skip %d", &width) == 1) {
            at += width;
            continue;
        }
        if (std::sscanf(field.c_str(), "%dx%d", &count, &width) != 2) {
            count = 1;
            width = std::stoi(field);
        }
        for (; count != 0; --count, at += width)
            std::reverse(at, at + width);
    }
    return at - record;
}

TEST(ByteOrder, EachConverterReversesItsFieldsAndNothingElse) {
    constexpr int kGuard = 24;
    for (const Layout &layout : kLayouts) {
        SCOPED_TRACE(layout.ordinal);
        for (int shift = 0; shift < 16; ++shift) {
            Bytes before(static_cast<std::size_t>(layout.span + 2 * kGuard));
            std::iota(before.begin(), before.end(), static_cast<unsigned char>(shift * 7));
            Bytes expected = before;
            ASSERT_EQ(reversePlainly(layout.fields, expected.begin() + kGuard - shift),
                      layout.span);
            Bytes actual = before;
            converter(layout.ordinal)(&actual[static_cast<std::size_t>(kGuard - shift)]);
            EXPECT_EQ(actual, expected);
            converter(layout.ordinal)(&actual[static_cast<std::size_t>(kGuard - shift)]);
            EXPECT_EQ(actual, before);
        }
    }
}

TEST(ByteOrder, ValuesOfKnownBytes) {
    unsigned char bytes[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    vxSwap4(bytes + 1);
    EXPECT_EQ(Bytes(bytes, bytes + 10), (Bytes{0, 4, 3, 2, 1, 5, 6, 7, 8, 9}));
    vxSwap8(bytes + 1);
    EXPECT_EQ(Bytes(bytes, bytes + 10), (Bytes{0, 8, 7, 6, 5, 1, 2, 3, 4, 9}));
    vxSwap2(bytes + 8);
    EXPECT_EQ(Bytes(bytes, bytes + 10), (Bytes{0, 8, 7, 6, 5, 1, 2, 3, 9, 4}));
}

TEST(ByteOrder, ThreePairsAreOneFunction) {
    EXPECT_EQ(vxExportAddress(230), vxExportAddress(234));
    EXPECT_EQ(vxExportAddress(231), vxExportAddress(235));
    EXPECT_EQ(vxExportAddress(232), vxExportAddress(236));
    std::set<const void *> addresses;
    for (const Layout &layout : kLayouts)
        addresses.insert(vxExportAddress(layout.ordinal));
    EXPECT_EQ(addresses.size(), std::size(kLayouts) - 3);
}

}  // namespace
