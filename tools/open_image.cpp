#include "open_image.h"

#include "input_file.h"
#include "report.h"

#include <utility>

namespace tool {

namespace {

thread_local std::string collected;

void collect(char *text) {
    // The first message names the cause; what follows it are consequences.
    if (collected.empty()) collected = text;
}

}  // namespace

void collectImageMessages() {
    vxImageSetErrorHandler(collect);
}

std::string imageMessage(const char *otherwise) {
    std::string message = std::exchange(collected, {});
    return message.empty() ? otherwise : message;
}

VxUniqueImage openImage(const std::string &path) {
    vx::File file = openRegularFile(path);
    VxUniqueImage image(vxImageOpenFd(file.get(), "r"));
    if (image == nullptr) throw Error(path, imageMessage("not an image"));
    file.release();
    return image;
}

int elementBytesOf(const VxImage *image) {
    return image->type & 0xFF;
}

bool isVerbatim(const VxImage *image) {
    return (image->type & 0xFF00) == VX_IMAGE_VERBATIM;
}

int widestVerbatimRow(int elementBytes) {
    return elementBytes == 1 ? VX_IMAGE_MAX_ONE_BYTE_ROW : VX_IMAGE_MAX_TWO_BYTE_ROW;
}

std::string headerFault(const VxImage *image) {
    const int bytes = elementBytesOf(image);
    if (bytes != 1 && bytes != 2) {
        return "has elements of " + std::to_string(bytes) + " bytes, where only 1 and 2 will do";
    }
    if (image->type >> 8 > VX_IMAGE_RUN_LENGTH >> 8) {
        return "is stored neither verbatim nor run-length encoded";
    }
    if (image->dimension < 1 || image->dimension > 3) {
        return "has the dimension " + std::to_string(image->dimension) +
               ", where only 1, 2 and 3 will do";
    }
    if (image->xSize == 0 || image->ySize == 0 || image->zSize == 0) return "holds no elements";
    if ((image->dimension < 2 && image->ySize > 1) || (image->dimension < 3 && image->zSize > 1)) {
        return "has the dimension " + std::to_string(image->dimension) +
               ", by which some of its rows cannot be reached";
    }
    if (isVerbatim(image) && image->xSize > widestVerbatimRow(bytes)) {
        return "has rows of " + std::to_string(image->xSize) + " elements, of which only " +
               std::to_string(widestVerbatimRow(bytes)) + " can be read";
    }
    return {};
}

}  // namespace tool
