// Tables of a test, kept in tests/data under a [heading]: a row a line, fields parted by blanks, a
// remark behind #. A field in quotes holds any bytes: \xHH, and \ before what means something.

#ifndef VX_TESTS_DATA_ROWS_H
#define VX_TESTS_DATA_ROWS_H

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

using DataRow = std::vector<std::string>;

// What is left of a field in quotes.
inline std::string quotedField(std::istream &line) {
    std::string field;
    for (char byte; line.get(byte) && byte != '"'; field += byte) {
        if (byte != '\\' || !line.get(byte) || byte != 'x') continue;
        char digits[3] = {};
        line.read(digits, 2);
        byte = static_cast<char>(std::stoi(digits, nullptr, 16));
    }
    return field;
}

inline std::vector<DataRow> dataRows(const std::string &file, const std::string &heading) {
    std::vector<DataRow> rows;
    std::ifstream in(VX_TEST_DATA "/" + file);
    bool found = false;
    for (std::string text; std::getline(in, text);) {
        if (text.starts_with('[')) {
            found = text == "[" + heading + "]";
            continue;
        }
        std::istringstream line(text);
        DataRow row;
        for (char byte; found && line >> byte && byte != '#';) {
            row.emplace_back();
            if (byte == '"') {
                row.back() = quotedField(line);
            } else {
                line.unget() >> row.back();
            }
        }
        if (!row.empty()) rows.push_back(row);
    }
    EXPECT_FALSE(rows.empty()) << "no [" << heading << "] in " << file;
    return rows;
}

#endif
