// The row codec, against its model. The first byte of the input selects the widths, the next two
// the length of the row. The rest is decoded as a stored row, and is encoded and decoded as a row.

#include "fuzz/fuzz.h"
#include "fuzz/models/row_model.h"
#include "image/image_internal.h"

#include <algorithm>

namespace {

template <typename T>
void decodeStored(const Elements &stored, std::size_t count) {
    const auto input = arrayOf<T>(stored);
    const auto row = arrayOf<std::uint16_t>(Elements(count, 0xABCD));
    const auto expected = decodedPlainly(stored, count);
    CHECK(vx::decodeRow(input.get(), stored.size(), row.get(), count) == expected.has_value());
    CHECK(!expected || std::equal(expected->begin(), expected->end(), row.get()));
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
        CHECK((codecAgrees<std::uint16_t, std::uint16_t>(elements)));
        CHECK((codecAgrees<std::uint16_t, std::uint8_t>(elements)));
    } else {
        decodeStored<std::uint8_t>(elements, count);
        CHECK((codecAgrees<std::uint8_t, std::uint8_t>(elements)));
        CHECK((codecAgrees<std::uint8_t, std::uint16_t>(elements)));
    }
    return 0;
}
