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

// The fields come after the ordinal.
void compareWithLayout(const void *converter, const DataRow &layout) {
    const auto convert = reinterpret_cast<void (*)(void *)>(const_cast<void *>(converter));
    for (int start = 64; start < 80; ++start) {
        Bytes before(428);  // also 64 bytes on either side that no converter touches
        std::iota(before.begin(), before.end(), static_cast<unsigned char>(start));
        Bytes expected = before;
        auto field = expected.begin() + start;
        for (std::size_t i = 1; i < layout.size(); ++i) {
            const int width = layout[i].back() - '0';
            for (int count = std::stoi(layout[i]); count != 0; --count, field += width)
                std::reverse(field, field + width);
        }
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
