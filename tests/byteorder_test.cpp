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
};

constexpr Layout kLayouts[] = {{220, "2"},
                               {221, "4"},
                               {222, "8"},
                               {259, "3x4"},
                               {260, "3x4"},
                               {223, "2x2, 20x4, skip 12, 3x4"},
                               {224, "2, skip 2, 12x4"},
                               {225, "4, 2"},
                               {226, "6x4, 2"},
                               {227, "2"},
                               {228, "2, skip 238, 2"},
                               {229, "2, skip 2, 15x4, 2"},
                               {230, "11x4, 2"},
                               {231, "11x4, 2"},
                               {232, "11x4"},
                               {233, "10x4, 2, skip 6, 9x8"},
                               {234, "11x4, 2"},
                               {235, "11x4, 2"},
                               {236, "11x4"},
                               {237, "16x4, 2"},
                               {238, "18x4, 2"},
                               {239, "18x4"},
                               {240, "13x4, 2, skip 2, 9x8"},
                               {241, "2, skip 2, 18x4, 2, skip 2, 9x8"},
                               {242, "2, skip 2, 19x4, 2"},
                               {243, "2, skip 2, 20x4, 2"},
                               {244, "2, skip 2, 20x4"},
                               {245, "2x2, 14x4"},
                               {246, "6x4"},
                               {247, "9x4"},
                               {248, "6x4"},
                               {249, "3x4"},
                               {250, "6x4"},
                               {251, "3x4"},
                               {252, "2, skip 2, 4x4, 5x2"},
                               {253, "4x2, 4, 2"},
                               {254, "8x2, 3x4"},
                               {255, "8x2, 3x4"},
                               {256, "2, skip 2, 9x4"},
                               {257, "6x4"},
                               {258, "11x4"}};

using Bytes = std::vector<unsigned char>;
using Converter = void (*)(void *);

Converter converter(int ordinal) {
    return reinterpret_cast<Converter>(const_cast<void *>(vxExportAddress(ordinal)));
}

// Reverses a record in the plainest way.
void reversePlainly(const char *fields, Bytes::iterator at) {
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
}

TEST(ByteOrder, EachConverterReversesItsFieldsAndNothingElse) {
    constexpr int kGuard = 64;
    for (const Layout &layout : kLayouts) {
        SCOPED_TRACE(layout.ordinal);
        for (int start = kGuard; start < kGuard + 16; ++start) {
            Bytes before(300 + 2 * kGuard);
            std::iota(before.begin(), before.end(), static_cast<unsigned char>(start));
            Bytes expected = before;
            reversePlainly(layout.fields, expected.begin() + start);
            Bytes actual = before;
            converter(layout.ordinal)(actual.data() + start);
            EXPECT_EQ(actual, expected);
            converter(layout.ordinal)(actual.data() + start);
            EXPECT_EQ(actual, before);
        }
    }
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
