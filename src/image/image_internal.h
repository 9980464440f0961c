// What the sources of the image code share.

#ifndef VX_IMAGE_IMAGE_INTERNAL_H
#define VX_IMAGE_IMAGE_INTERNAL_H

#include <vximage.h>

#include <cstddef>
#include <cstdint>

// A position that is never the place of anything: no position is known.
inline constexpr std::uint32_t kNoPosition = 0xFFFFFFFF;

// Storage and bytes per element are the two bytes of `type`.
inline constexpr unsigned kVerbatim = 0;
inline constexpr unsigned kRunLength = 1;
inline unsigned storageOf(const VxImage *image) {
    return image->type >> 8;
}
inline unsigned elementBytesOf(const VxImage *image) {
    return image->type & 0xFFU;
}

// The length in bytes of one of the two row tables.
inline std::uint64_t tableBytesOf(const VxImage *image) {
    return std::uint64_t{image->ySize} * image->zSize * sizeof(std::uint32_t);
}

// Decodes a stored row of bytes or 16-bit words into exactly `elements` elements; what the row
// does not tell is zero. False, with the row in whatever state, when it asks for more elements
// than these or for more words than `storedElements`. Nothing outside the two arrays is touched.
bool decodeRow(const std::uint8_t *stored, std::size_t storedElements, std::uint16_t *row,
               std::size_t elements);
bool decodeRow(const std::uint16_t *stored, std::size_t storedElements, std::uint16_t *row,
               std::size_t elements);

#endif
