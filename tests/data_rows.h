// Tables of a test, kept in tests/data under a [heading]: one row per line, with blanks between its
// fields and a remark after #. A field in quotes holds any bytes: \xHH, or any other byte after \.

#ifndef VX_TESTS_DATA_ROWS_H
#define VX_TESTS_DATA_ROWS_H

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

using DataRow = std::vector<std::string>;

// The rest of a field in quotes.
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

// The rows under a heading, or those before the first one.
inline std::vector<DataRow> dataRows(const std::string &file, const std::string &heading = "") {
    std::vector<DataRow> rows;
    std::ifstream in(VX_TEST_DATA "/" + file);
    std::string text;
    while (!heading.empty() && std::getline(in, text) && text != "[" + heading + "]")
        continue;
    while (std::getline(in, text) && !text.starts_with('[')) {
        std::istringstream line(text);
        DataRow row;
        for (char byte; line >> byte && byte != '#';) {
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

// The text of a field; null for a field of that name.
inline const char *orNull(const std::string &field) {
    return field == "null" ? nullptr : field.c_str();
}

#endif
