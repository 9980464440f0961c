// Run-length rows by their definition, one step at a time, and the codec of the library on elements
// of all widths.

#ifndef VX_FUZZ_ROW_MODEL_H
#define VX_FUZZ_ROW_MODEL_H

#include <vximage.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

using Elements = std::vector<unsigned>;

inline Elements masked(Elements row, unsigned mask) {
    for (unsigned &element : row)
        element &= mask;
    return row;
}

// With only the bits of the mask stored; all bits decide what is a run.
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

// Of the exact size, so that AddressSanitizer guards the end.
template <typename T>
std::unique_ptr<T[]> arrayOf(const Elements &elements) {
    auto array = std::make_unique<T[]>(elements.size());
    std::transform(elements.begin(), elements.end(), array.get(),
                   [](unsigned element) { return static_cast<T>(element); });
    return array;
}

template <typename In, typename Out>
Elements encodedByLibrary(const Elements &row) {
    const auto input = arrayOf<In>(row);
    const auto output = arrayOf<Out>(Elements(2 * row.size() + 1));
    const int length = vxImageRleEncode(input.get(), sizeof(In), output.get(), sizeof(Out),
                                        static_cast<int>(row.size()));
    return Elements(output.get(), output.get() + length);
}

template <typename In, typename Out>
Elements decodedByLibrary(const Elements &stored, std::size_t count) {
    const auto input = arrayOf<In>(stored);
    const auto output = arrayOf<Out>(Elements(count, 0x5A5A));
    vxImageRleDecode(input.get(), sizeof(In), output.get(), sizeof(Out));
    return Elements(output.get(), output.get() + count);
}

// Whether the library encodes a row, and decodes it to elements of both widths, as the model does.
template <typename In, typename Out>
bool codecAgrees(const Elements &row) {
    const unsigned mask = sizeof(Out) == 1 ? 0xFF : 0xFFFF;
    const Elements stored = encodedByLibrary<In, Out>(row);
    return stored == encodedPlainly(row, mask) &&
           decodedByLibrary<Out, std::uint16_t>(stored, row.size()) == masked(row, mask) &&
           decodedByLibrary<Out, std::uint8_t>(stored, row.size()) == masked(row, 0xFF);
}

#endif
