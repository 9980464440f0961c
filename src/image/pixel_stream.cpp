// The pixel stream: an image element by element, through a buffer of one row. The step of an
// element is the caller's own; what stands here runs once a row.

#include "image/image_internal.h"

#include <vximage.h>

#include <algorithm>
#include <cstdint>

namespace {

// Kept in the field x, which every row seek sets to 0, so that a seek takes the stream up again.
constexpr std::uint16_t kEnded = 1;

bool allocateRow(VxImage *image, int message) {
    image->pixelBuffer = vxImageAllocRowBuffer(image);
    image->nextPixel = image->pixelBuffer;
    if (image->pixelBuffer != nullptr) {
        // A row that is never filled reaches the file as it is.
        std::fill_n(image->pixelBuffer, image->xSize, std::uint16_t{0});
        return true;
    }
    vxImageError(message);
    return false;
}

// Moves to the next row; at the end of the image flags that and stays in the last plane. What the
// dimension does not count is one, whatever a file says of its size.
bool advance(VxImage *image) {
    const int rows = image->dimension < 2 ? 1 : image->ySize;
    const int planes = image->dimension < 3 ? 1 : image->zSize;
    image->y = static_cast<std::int16_t>(image->y + 1);
    if (image->y != rows) return true;
    image->y = 0;
    image->z = static_cast<std::int16_t>(image->z + 1);
    if (image->z != planes) return true;
    image->flags |= VX_IMAGE_EOF;
    image->z = static_cast<std::int16_t>(planes - 1);
    return false;
}

// The caller's step has counted pixelsLeft below 0. It counts on from 0 after a failure, so that
// no number of steps makes it positive again.
int fail(VxImage *image) {
    image->pixelsLeft = 0;
    return -1;
}

}  // namespace

int vxImageFillPixels(VxImage *image) {
    if ((image->flags & VX_IMAGE_READ) == 0) return -1;
    if (image->pixelBuffer == nullptr && !allocateRow(image, 20358)) return fail(image);
    const int got = vxImageGetRow(image, image->pixelBuffer, image->y, image->z);
    image->nextPixel = image->pixelBuffer;
    image->pixelsLeft = static_cast<std::int16_t>(got - 1);
    if (image->pixelsLeft < 0) {
        if (image->pixelsLeft == -1) {
            image->flags |= VX_IMAGE_EOF;
            if ((image->flags & VX_IMAGE_READWRITE) != 0) {
                image->flags &= static_cast<std::uint16_t>(~VX_IMAGE_READ);
            }
        } else {
            image->flags |= VX_IMAGE_ERROR;
        }
        return fail(image);
    }
    return advance(image) ? *image->nextPixel++ : -1;
}

std::int32_t vxImageDrainPixels(VxImage *image, std::int32_t value) {
    if ((image->flags & VX_IMAGE_WRITE) == 0) return -1;
    if (image->x == kEnded) return fail(image);
    std::int64_t held = 0;
    std::int64_t written = 0;
    if (image->pixelBuffer == nullptr) {
        if (!allocateRow(image, 20359)) return fail(image);
    } else if (image->nextPixel > image->pixelBuffer) {
        held = image->nextPixel - image->pixelBuffer;
        written = vxImagePutRow(image, image->pixelBuffer, image->y, image->z);
        if (!advance(image)) {
            // That was the last row. Nothing is pending now, and no further value has a place.
            if (written != held) image->flags |= VX_IMAGE_ERROR;
            image->nextPixel = image->pixelBuffer;
            image->x = kEnded;
            return fail(image);
        }
    }
    image->pixelsLeft = static_cast<std::int16_t>(image->xSize - 1);
    image->pixelBuffer[0] = static_cast<std::uint16_t>(value);
    image->nextPixel = image->pixelBuffer + 1;
    if (written != held) {
        image->flags |= VX_IMAGE_ERROR;
        return -1;
    }
    return value;
}
