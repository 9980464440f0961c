// The row codec, against its model. The first byte of the input selects the widths, the next two
// the length of the row. The rest is decoded as a stored row, and is encoded and decoded as a row.

#include "fuzz/fuzz.h"
#include "image/image_internal.h"
#include "tests/row_model.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

// Of the exact size, so that AddressSanitizer guards the end.
template <typename T>
std::unique_ptr<T[]> arrayOf(const Elements &elements) {
    auto array = std::make_unique<T[]>(elements.size());
    std::transform(elements.begin(), elements.end(), array.get(),
                   [](unsigned element) { return static_cast<T>(element); });
    return array;
}

template <typename T>
void decodeStored(const Elements &stored, std::size_t count) {
    const auto input = arrayOf<T>(stored);
    const auto row = arrayOf<std::uint16_t>(Elements(count, 0xABCD));
    const auto expected = decodedPlainly(stored, count);
    CHECK(vx::decodeRow(input.get(), stored.size(), row.get(), count) == expected.has_value());
    CHECK(!expected || std::equal(expected->begin(), expected->end(), row.get()));
}

template <typename In, typename Out>
void thereAndBack(const Elements &row) {
    const auto input = arrayOf<In>(row);
    const auto room = arrayOf<Out>(Elements(2 * row.size() + 1));
    const int length = vxImageRleEncode(input.get(), sizeof(In), room.get(), sizeof(Out),
                                        static_cast<int>(row.size()));
    const unsigned mask = sizeof(Out) == 1 ? 0xFF : 0xFFFF;
    const Elements stored(room.get(), room.get() + length);
    CHECK(stored == encodedPlainly(row, mask));
    const auto exact = arrayOf<Out>(stored);
    const auto back = arrayOf<In>(row);
    std::fill_n(back.get(), row.size(), In{0x5A});
    vxImageRleDecode(exact.get(), sizeof(Out), back.get(), sizeof(In));
    for (std::size_t i = 0; i < row.size(); ++i)
        CHECK(back[i] == static_cast<In>(row[i] & mask));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 3) return 0;
    const bool wide = (data[0] & 1) != 0;
    const std::size_t count = data[1] * 4U + (data[2] & 3U);
    data += 3;
    size -= 3;
    Elements elements(data, data + size);
    if (wide) {
        elements.resize(size / 2);
        for (std::size_t i = 0; i < elements.size(); ++i)
            elements[i] = data[2 * i] | unsigned{data[2 * i + 1]} << 8;
        decodeStored<std::uint16_t>(elements, count);
        thereAndBack<std::uint16_t, std::uint16_t>(elements);
        thereAndBack<std::uint16_t, std::uint8_t>(elements);
    } else {
        decodeStored<std::uint8_t>(elements, count);
        thereAndBack<std::uint8_t, std::uint8_t>(elements);
        thereAndBack<std::uint8_t, std::uint16_t>(elements);
    }
    return 0;
}
