// Run-length rows by their definition, one step at a time.

#ifndef VX_TESTS_ROW_MODEL_H
#define VX_TESTS_ROW_MODEL_H

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

using Elements = std::vector<unsigned>;

inline Elements encodedPlainly(const Elements &row, unsigned mask) {
    Elements out;
    std::size_t at = 0;
    while (at < row.size()) {
        const std::size_t start = at;
        at += 2;
        while (at < row.size() && !(row[at - 2] == row[at - 1] && row[at - 1] == row[at]))
            ++at;
        at -= 2;
        for (std::size_t i = start; i < at; ++i) {
            if ((i - start) % 126 == 0) {
                out.push_back(0x80 + static_cast<unsigned>(std::min<std::size_t>(126, at - i)));
            }
            out.push_back(row[i] & mask);
        }
        const unsigned value = row[at];
        std::size_t length = 0;
        while (at < row.size() && row[at] == value)
            ++at, ++length;
        for (; length != 0; length -= std::min<std::size_t>(126, length)) {
            out.push_back(static_cast<unsigned>(std::min<std::size_t>(126, length)));
            out.push_back(value & mask);
        }
    }
    out.push_back(0);
    return out;
}

// The `count` elements of a stored row, or nullopt if a packet breaks a bound.
inline std::optional<Elements> decodedPlainly(const Elements &stored, std::size_t count) {
    Elements row;
    for (std::size_t at = 0; at < stored.size();) {
        const unsigned head = stored[at++];
        const std::size_t length = head & 0x7F;
        if (length == 0) break;
        const bool literal = (head & 0x80) != 0;
        const std::size_t taken = literal ? length : 1;
        if (row.size() + length > count || at + taken > stored.size()) return std::nullopt;
        for (std::size_t i = 0; i < length; ++i)
            row.push_back(stored[literal ? at + i : at]);
        at += taken;
    }
    row.resize(count);
    return row;
}

#endif
