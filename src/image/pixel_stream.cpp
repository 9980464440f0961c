// The pixel stream: an image element by element, through a buffer of one row. Callers take the step
// from element to element themselves; the functions here run once per row.

#include "image/image_internal.h"

#include <vximage.h>

#include <algorithm>
#include <cstdint>

using namespace vx;

namespace {

// The value of x when all rows are written. Every row seek sets x to 0, so the stream can continue
// after a seek.
constexpr std::uint16_t kEnded = 1;

bool allocateRow(VxImage *image, int message) {
    image->pixelBuffer = vxImageAllocRowBuffer(image);
    image->nextPixel = image->pixelBuffer;
    if (image->pixelBuffer == nullptr) return reportFailure(message);
    // A flush may write the row before it is full.
    std::fill_n(image->pixelBuffer, image->xSize, std::uint16_t{0});
    return true;
}

// Moves to the next row. At the end of the image it sets VX_IMAGE_EOF and stays in the last plane.
// Sizes that the dimension does not count are 1 here, whatever the file says.
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

// The caller's step has counted pixelsLeft down to -1 or below. It starts at 0 again, because after
// 32768 more steps the number would wrap, and the step would use nextPixel.
int fail(VxImage *image) {
    image->pixelsLeft = 0;
    return -1;
}

}  // namespace

int vxImageFillPixels(VxImage *image) {
    if ((image->flags & VX_IMAGE_READ) == 0) return fail(image);
    if (image->pixelBuffer == nullptr && !allocateRow(image, VX_MESSAGE_IMAGE_FILL_OUT_OF_MEMORY)) {
        return fail(image);
    }
    const int got = vxImageGetRow(image, image->pixelBuffer, image->y, image->z);
    image->nextPixel = image->pixelBuffer;
    if (got == 0) {
        image->flags |= VX_IMAGE_EOF;
        if ((image->flags & VX_IMAGE_READWRITE) != 0) {
            image->flags &= static_cast<std::uint16_t>(~VX_IMAGE_READ);
        }
        return fail(image);
    }
    image->pixelsLeft = static_cast<std::int16_t>(got - 1);
    if (image->pixelsLeft < 0) {  // the row failed, or is too wide for the field
        image->flags |= VX_IMAGE_ERROR;
        return fail(image);
    }
    return advance(image) ? *image->nextPixel++ : -1;
}

std::int32_t vxImageDrainPixels(VxImage *image, std::int32_t value) {
    if ((image->flags & VX_IMAGE_WRITE) == 0 || image->x == kEnded) return fail(image);
    std::int64_t held = 0;
    std::int64_t written = 0;
    if (image->pixelBuffer == nullptr) {
        if (!allocateRow(image, VX_MESSAGE_IMAGE_DRAIN_OUT_OF_MEMORY)) return fail(image);
    } else if (image->nextPixel > image->pixelBuffer) {
        held = image->nextPixel - image->pixelBuffer;
        written = vxImagePutRow(image, image->pixelBuffer, image->y, image->z);
        if (written != held) image->flags |= VX_IMAGE_ERROR;
        if (!advance(image)) {
            // That was the last row: nothing is pending, and there is no place for another value.
            image->nextPixel = image->pixelBuffer;
            image->x = kEnded;
            return fail(image);
        }
    }
    image->pixelsLeft = static_cast<std::int16_t>(image->xSize - 1);
    image->pixelBuffer[0] = static_cast<std::uint16_t>(value);
    image->nextPixel = image->pixelBuffer + 1;
    return written == held ? value : -1;
}
