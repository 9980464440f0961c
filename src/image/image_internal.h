// What the sources of the image module share.

#ifndef VX_IMAGE_IMAGE_INTERNAL_H
#define VX_IMAGE_IMAGE_INTERNAL_H

#include <vximage.h>
#include <vxmessages.h>

#include <cstddef>
#include <cstdint>

namespace vx {

// The value of fileOffset after a failed transfer or seek: the next seek reaches the system.
inline constexpr std::uint32_t kNoPosition = VX_IMAGE_MAX_POSITION + 1;

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

// Reports a message; the result is the failure of the function that calls it.
template <typename... Arguments>
bool reportFailure(int message, Arguments... arguments) {
    vxImageError(message, arguments...);
    return false;
}

// Seeks, unless the file is at that position. False if the system refuses; no position is known
// then.
bool moveTo(VxImage *image, std::uint32_t position);

// vxSwapShorts from one place to another; the two may be the same.
void swapShorts(void *to, const void *from, int byteCount);

// Decodes a stored row of bytes or 16-bit words into exactly `elements` elements; those missing at
// its end become zero. False, with the row in an undefined state, if it asks for more elements than
// that or for more words than `storedElements`. Nothing outside the two arrays is touched.
template <typename Stored>
bool decodeRow(const Stored *stored, std::size_t storedElements, std::uint16_t *row,
               std::size_t elements);

}  // namespace vx

#endif
