// The run-length codec of rows.
//
// One template a direction serves every pair of element widths, so that the inner loops work at
// fixed widths.

#include "image/image_internal.h"

#include <vximage.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

constexpr std::size_t kLongestWritten = 126;  // elements in a packet; the format would allow 127
constexpr unsigned kLiteral = 0x80;

// ---- Encoding

template <typename In, typename Out>
Out *putLiterals(const In *from, const In *to, Out *out) {
    while (from != to) {
        const std::size_t count = std::min(static_cast<std::size_t>(to - from), kLongestWritten);
        *out++ = static_cast<Out>(kLiteral + count);
        for (std::size_t i = 0; i < count; ++i)
            out[i] = static_cast<Out>(from[i]);
        from += count;
        out += count;
    }
    return out;
}

template <typename In, typename Out>
Out *putRun(std::size_t length, In value, Out *out) {
    while (length != 0) {
        const std::size_t count = std::min(length, kLongestWritten);
        *out++ = static_cast<Out>(count);
        *out++ = static_cast<Out>(value);
        length -= count;
    }
    return out;
}

// The first of three equal neighbours at or behind `at`, or else the last two elements' first;
// `at` itself when fewer than three elements are left.
template <typename In>
const In *endOfStretch(const In *at, const In *end) {
    if (end - at < 3) return at;
    const In *third = at + 2;
    while (third != end && !(third[-2] == third[-1] && third[-1] == third[0]))
        ++third;
    return third - 2;
}

template <typename In>
const In *endOfRun(const In *at, const In *end) {
    const In value = *at++;
    while (at != end && *at == value)
        ++at;
    return at;
}

template <typename In, typename Out>
int encode(const void *input, void *output, int count) {
    const In *at = static_cast<const In *>(input);
    const In *const end = at + std::max(count, 0);
    Out *const begin = static_cast<Out *>(output);
    Out *out = begin;
    while (at != end) {
        const In *run = endOfStretch(at, end);
        out = putLiterals(at, run, out);
        at = endOfRun(run, end);
        out = putRun(static_cast<std::size_t>(at - run), *run, out);
    }
    *out++ = 0;
    return static_cast<int>(out - begin);
}

// ---- Decoding

// The two ends of a row that is read from a file. A caller of vxImageRleDecode vouches for its
// row instead, and pays for no test.
template <typename In, typename Out>
struct Bounds {
    static constexpr bool kChecked = true;
    const In *inEnd;
    Out *outEnd;

    bool atEnd(const In *in) const { return in == inEnd; }
    bool holds(const In *in, std::size_t take, const Out *out, std::size_t put) const {
        return take <= static_cast<std::size_t>(inEnd - in) &&
               put <= static_cast<std::size_t>(outEnd - out);
    }
};

template <typename In, typename Out>
struct NoBounds {
    static constexpr bool kChecked = false;
    bool atEnd(const In *) const { return false; }
    bool holds(const In *, std::size_t, const Out *, std::size_t) const { return true; }
};

// Decodes up to the end mark or the end of the stored row; null when a packet breaks a bound.
template <typename In, typename Out, template <typename, typename> class Limits>
Out *decode(const In *in, Out *out, const Limits<In, Out> &limits) {
    while (!limits.atEnd(in)) {
        const unsigned head = *in++;
        const std::size_t count = head & 0x7F;
        if (count == 0) break;
        if ((head & kLiteral) != 0) {
            if (!limits.holds(in, count, out, count)) return nullptr;
            for (std::size_t i = 0; i < count; ++i)
                out[i] = static_cast<Out>(in[i]);
            in += count;
        } else {
            if (!limits.holds(in, 1, out, count)) return nullptr;
            std::fill_n(out, count, static_cast<Out>(*in++));
        }
        out += count;
    }
    return out;
}

template <typename In>
bool decodeBounded(const In *stored, std::size_t storedElements, std::uint16_t *row,
                   std::size_t elements) {
    std::uint16_t *const end = row + elements;
    std::uint16_t *out =
        decode(stored, row, Bounds<In, std::uint16_t>{stored + storedElements, end});
    if (out == nullptr) return false;
    std::fill(out, end, std::uint16_t{0});
    return true;
}

template <typename In, typename Out>
void decodeUnbounded(const void *input, void *output) {
    decode(static_cast<const In *>(input), static_cast<Out *>(output), NoBounds<In, Out>{});
}

bool isWidth(int width) {
    return width == 1 || width == 2;
}

}  // namespace

int vxImageRleEncode(const void *input, int inputWidth, void *output, int outputWidth, int count) {
    if (!isWidth(inputWidth) || !isWidth(outputWidth)) {
        vxImageError(20375, inputWidth, outputWidth);
        return 0;
    }
    if (inputWidth == 1) {
        return outputWidth == 1 ? encode<std::uint8_t, std::uint8_t>(input, output, count)
                                : encode<std::uint8_t, std::uint16_t>(input, output, count);
    }
    return outputWidth == 1 ? encode<std::uint16_t, std::uint8_t>(input, output, count)
                            : encode<std::uint16_t, std::uint16_t>(input, output, count);
}

void vxImageRleDecode(const void *input, int inputWidth, void *output, int outputWidth) {
    if (!isWidth(inputWidth) || !isWidth(outputWidth)) {
        vxImageError(20376, inputWidth, outputWidth);
    } else if (inputWidth == 1) {
        outputWidth == 1 ? decodeUnbounded<std::uint8_t, std::uint8_t>(input, output)
                         : decodeUnbounded<std::uint8_t, std::uint16_t>(input, output);
    } else {
        outputWidth == 1 ? decodeUnbounded<std::uint16_t, std::uint8_t>(input, output)
                         : decodeUnbounded<std::uint16_t, std::uint16_t>(input, output);
    }
}

bool decodeRow(const std::uint8_t *stored, std::size_t storedElements, std::uint16_t *row,
               std::size_t elements) {
    return decodeBounded(stored, storedElements, row, elements);
}

bool decodeRow(const std::uint16_t *stored, std::size_t storedElements, std::uint16_t *row,
               std::size_t elements) {
    return decodeBounded(stored, storedElements, row, elements);
}
