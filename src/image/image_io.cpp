// What the rest of the module builds on: file calls with a cached position, the row buffer, and the
// texts and words that callers set.

#include "image/image_internal.h"
#include "platform/code_page.h"
#include "platform/files.h"

#include <vximage.h>

#include <cassert>
#include <cstdint>
#include <cstdlib>

using namespace vx;

namespace {

// Updates the cached position after a transfer. After a short one it is unknown, and so it is at
// the end of what 32 bits can hold.
int trackOffset(VxImage *image, int transferred, int count) {
    const std::uint64_t end = std::uint64_t{image->fileOffset} + static_cast<unsigned>(count);
    const bool known =
        transferred == count && image->fileOffset != kNoPosition && end < kNoPosition;
    image->fileOffset = known ? static_cast<std::uint32_t>(end) : kNoPosition;
    return transferred;
}

}  // namespace

bool vx::moveTo(VxImage *image, std::uint32_t position) {
    if (position == image->fileOffset && position != kNoPosition) return true;
    const bool reached = seekFile(image->file, position);
    image->fileOffset = reached ? position : kNoPosition;
    return reached;
}

long vxImageFileSeek(VxImage *image, std::uint32_t position) {
    return moveTo(image, position) ? static_cast<long>(position) : -1;
}

int vxImageFileRead(VxImage *image, void *buffer, int count) {
    assert(count >= 0);
    const int got = readFile(image->file, buffer, static_cast<unsigned>(count));
    return trackOffset(image, got, count);
}

int vxImageFileWrite(VxImage *image, void *buffer, int count) {
    assert(count >= 0);
    const int put = writeFile(image->file, buffer, static_cast<unsigned>(count));
    return trackOffset(image, put, count);
}

std::uint16_t *vxImageAllocRowBuffer(VxImage *image) {
    // The end mark needs its own 2 bytes: the longest encoded row has 2 * xSize + 1 elements.
    const std::size_t bytes = ((std::size_t{image->xSize} >> 6) + image->xSize) * 4 + 2;
    return static_cast<std::uint16_t *>(std::malloc(bytes));
}

void vxImageSetName(VxImage *image, const char *text) {
    copyPrefix(image->name, text, VX_IMAGE_MAX_NAME);
    image->name[VX_IMAGE_MAX_NAME] = '\0';
}

void vxImageSetColormap(VxImage *image, std::uint32_t value) {
    image->colormap = value;
}
