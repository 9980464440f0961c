// Every converter against its layout read at run time, byte by byte, at any alignment.

#include "data_rows.h"

#include <vxbyteorder.h>

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <numeric>
#include <set>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;
using Converter = void (*)(void *);

Converter converter(int ordinal) {
    return reinterpret_cast<Converter>(const_cast<void *>(vxExportAddress(ordinal)));
}

std::vector<DataRow> layouts() {
    return dataRows("byteorder.txt", "layouts");
}

// Reverses a record in the plainest way. The fields follow the ordinal.
void reversePlainly(const DataRow &layout, Bytes::iterator at) {
    for (std::size_t i = 1; i < layout.size(); ++i) {
        int count = 1;
        int width = 0;
        const char *field = layout[i].c_str();
        if (std::sscanf(field, "skip%d", &width) == 1) {
            at += width;
            continue;
        }
        if (std::sscanf(field, "%dx%d", &count, &width) != 2) {
            count = 1;
            width = std::stoi(field);
        }
        for (; count != 0; --count, at += width)
            std::reverse(at, at + width);
    }
}

TEST(ByteOrder, EachConverterReversesItsFieldsAndNothingElse) {
    constexpr int kGuard = 64;
    for (const DataRow &layout : layouts()) {
        SCOPED_TRACE(layout[0]);
        const Converter convert = converter(std::stoi(layout[0]));
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
}

TEST(ByteOrder, ThreePairsAreOneFunction) {
    EXPECT_EQ(vxExportAddress(230), vxExportAddress(234));
    EXPECT_EQ(vxExportAddress(231), vxExportAddress(235));
    EXPECT_EQ(vxExportAddress(232), vxExportAddress(236));
    std::set<const void *> addresses;
    const std::vector<DataRow> all = layouts();
    for (const DataRow &layout : all)
        addresses.insert(vxExportAddress(std::stoi(layout[0])));
    EXPECT_EQ(addresses.size(), all.size() - 3);
}

}  // namespace
