// Every converter against the layout of its record, byte by byte, at any alignment.

#include "data_rows.h"

#include <vxbyteorder.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>
#include <set>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

// Reverses the fields of a record in the plainest way. They come after the ordinal.
void reversePlainly(const DataRow &layout, Bytes::iterator at) {
    for (std::size_t i = 1; i < layout.size(); ++i) {
        const int width = layout[i].back() - '0';
        for (int count = std::stoi(layout[i]); count != 0; --count, at += width)
            std::reverse(at, at + width);
    }
}

void compareWithLayout(const void *converter, const DataRow &layout) {
    const auto convert = reinterpret_cast<void (*)(void *)>(const_cast<void *>(converter));
    constexpr int kGuard = 64;
    for (int start = kGuard; start < kGuard + 16; ++start) {
        Bytes before(300 + 2 * kGuard);
        std::iota(before.begin(), before.end(), static_cast<unsigned char>(start));
        Bytes expected = before;
        reversePlainly(layout, expected.begin() + start);
        Bytes actual = before;
        convert(actual.data() + start);
        EXPECT_EQ(actual, expected);
        convert(actual.data() + start);
        EXPECT_EQ(actual, before);
    }
}

TEST(ByteOrder, EachConverterReversesItsFieldsAndNothingElse) {
    std::set<const void *> converters;
    for (const DataRow &row : dataRows("byteorder.txt", "layouts")) {
        SCOPED_TRACE(row[0]);
        const void *converter = vxExportAddress(std::stoi(row[0]));
        if (row[1] == "is") {
            EXPECT_EQ(converter, vxExportAddress(std::stoi(row[2])));
        } else {
            EXPECT_TRUE(converters.insert(converter).second) << "the function of another record";
            compareWithLayout(converter, row);
        }
    }
}

}  // namespace
