// The run-length codec of rows.
//
// A template per direction is compiled for every pair of element widths: no loop tests a width.

#include "image/image_internal.h"

#include <vximage.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

using namespace vx;

namespace {

constexpr std::size_t kMaxPacket = 126;  // elements in a packet; the format would allow 127
constexpr unsigned kLiteral = 0x80;

// A packet is moved in chunks of a fixed size where there is room for the longest packet in whole
// chunks, which is faster than its exact length.
constexpr std::size_t kChunk = 16;
constexpr std::size_t kChunkedPacket = 128;

// ---- Encoding

template <typename In, typename Out>
Out *putLiterals(const In *from, const In *to, Out *out) {
    while (from != to) {
        const std::size_t count = std::min(static_cast<std::size_t>(to - from), kMaxPacket);
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
        const std::size_t count = std::min(length, kMaxPacket);
        *out++ = static_cast<Out>(count);
        *out++ = static_cast<Out>(value);
        length -= count;
    }
    return out;
}

// The end of a literal: the first of three equal neighbours at or after `at`, or else the last
// element but one; `at` itself if fewer than three elements are left. No three equal neighbours
// contain two different ones, so the search steps over both.
template <typename In>
const In *literalEnd(const In *at, const In *end) {
    const auto count = static_cast<std::size_t>(end - at);
    if (count < 3) return at;
    std::size_t third = 2;
    while (third < count) {
        const bool equal = at[third - 1] == at[third];
        if (equal && at[third - 2] == at[third]) return at + third - 2;
        third += equal ? 1 : 2;
    }
    return end - 2;
}

// Four equal elements at a time, then one.
template <typename In>
const In *runEnd(const In *at, const In *end) {
    const In four[4] = {*at, *at, *at, *at};
    while (end - at >= 4 && std::memcmp(at, four, sizeof four) == 0)
        at += 4;
    while (at != end && *at == four[0])
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
        const In *run = literalEnd(at, end);
        out = putLiterals(at, run, out);
        at = runEnd(run, end);
        out = putRun(static_cast<std::size_t>(at - run), *run, out);
    }
    *out++ = 0;
    return static_cast<int>(out - begin);
}

// ---- Decoding

// The ends of a stored row from a file and of the caller's row.
template <typename In, typename Out>
struct Bounds {
    const In *inEnd;
    Out *outEnd;

    bool atEnd(const In *in) const { return in == inEnd; }
    bool holds(const In *in, std::size_t take, const Out *out, std::size_t put) const {
        return take <= static_cast<std::size_t>(inEnd - in) &&
               put <= static_cast<std::size_t>(outEnd - out);
    }
    // What a chunk writes after the end of its packet is overwritten by the next packets, or
    // cleared at the end.
    bool hasSlack(const In *in, std::size_t take, const Out *out) const {
        return holds(in, take, out, kChunkedPacket);
    }
    void clearRest(Out *out) const { std::fill(out, outEnd, Out{0}); }
};

// For vxImageRleDecode, whose caller vouches for the row.
template <typename In, typename Out>
struct NoBounds {
    bool atEnd(const In *) const { return false; }
    bool holds(const In *, std::size_t, const Out *, std::size_t) const { return true; }
    bool hasSlack(const In *, std::size_t, const Out *) const { return false; }
    void clearRest(Out *) const {}
};

template <typename In, typename Out, typename Limits>
bool copyLiteral(const In *in, Out *out, std::size_t count, const Limits &limits) {
    if (!limits.hasSlack(in, kChunkedPacket, out)) {
        if (!limits.holds(in, count, out, count)) return false;
        for (std::size_t i = 0; i < count; ++i)
            out[i] = static_cast<Out>(in[i]);
        return true;
    }
    for (std::size_t i = 0; i < count; i += kChunk) {
        In chunk[kChunk];
        std::memcpy(chunk, in + i, sizeof chunk);
        for (std::size_t k = 0; k < kChunk; ++k)
            out[i + k] = static_cast<Out>(chunk[k]);
    }
    return true;
}

template <typename In, typename Out, typename Limits>
bool fillRun(const In *in, Out *out, std::size_t count, const Limits &limits) {
    const bool slack = limits.hasSlack(in, 1, out);
    if (!slack && !limits.holds(in, 1, out, count)) return false;
    const auto value = static_cast<Out>(*in);
    if (!slack) {
        std::fill_n(out, count, value);
        return true;
    }
    for (std::size_t i = 0; i < count; i += kChunk)
        std::fill_n(out + i, kChunk, value);
    return true;
}

// Decodes up to the end mark or the end of the stored row; false if a packet breaks a bound.
template <typename In, typename Out, template <typename, typename> class Limits>
bool decode(const In *in, Out *out, const Limits<In, Out> &limits) {
    while (!limits.atEnd(in)) {
        const unsigned head = *in++;
        const std::size_t count = head & 0x7F;
        if (count == 0) break;
        if ((head & kLiteral) != 0) {
            if (!copyLiteral(in, out, count, limits)) return false;
            in += count;
        } else {
            if (!fillRun(in, out, count, limits)) return false;
            ++in;
        }
        out += count;
    }
    limits.clearRest(out);
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
        vxImageError(VX_MESSAGE_IMAGE_ENCODE_BAD_WIDTH, inputWidth, outputWidth);
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
        vxImageError(VX_MESSAGE_IMAGE_DECODE_BAD_WIDTH, inputWidth, outputWidth);
    } else if (inputWidth == 1) {
        outputWidth == 1 ? decodeUnbounded<std::uint8_t, std::uint8_t>(input, output)
                         : decodeUnbounded<std::uint8_t, std::uint16_t>(input, output);
    } else {
        outputWidth == 1 ? decodeUnbounded<std::uint16_t, std::uint8_t>(input, output)
                         : decodeUnbounded<std::uint16_t, std::uint16_t>(input, output);
    }
}

template <typename Stored>
bool vx::decodeRow(const Stored *stored, std::size_t storedElements, std::uint16_t *row,
                   std::size_t elements) {
    return decode(stored, row,
                  Bounds<Stored, std::uint16_t>{stored + storedElements, row + elements});
}

template bool vx::decodeRow(const std::uint8_t *, std::size_t, std::uint16_t *, std::size_t);
template bool vx::decodeRow(const std::uint16_t *, std::size_t, std::uint16_t *, std::size_t);
