// Rows between a caller's array and the file.

#include "image/image_internal.h"

#include <vximage.h>

#include <algorithm>
#include <cstdint>

using namespace vx;

namespace {

bool isFor(const VxImage *image, unsigned direction) {
    return (image->flags & (direction | VX_IMAGE_READWRITE)) != 0;
}

bool isVerbatim(const VxImage *image) {
    return storageOf(image) == kVerbatim;
}

bool isElementWidthValid(const VxImage *image) {
    return elementBytesOf(image) == 1 || elementBytesOf(image) == 2;
}

void clampRow(const VxImage *image, int &y, int &z) {
    if (image->dimension < 3) z = 0;
    if (image->dimension < 2) y = 0;
}

std::size_t tableIndex(const VxImage *image, unsigned y, unsigned z) {
    if (image->dimension == 1) return 0;
    return image->dimension == 2 ? y : std::size_t{z} * image->ySize + y;
}

// y and z of the handle are 16 bits of an unsigned number.
std::size_t selectedIndex(const VxImage *image) {
    return tableIndex(image, static_cast<std::uint16_t>(image->y),
                      static_cast<std::uint16_t>(image->z));
}

// Signed words, because the baseline instructions of x86-64 find the extremes of eight signed words
// at a time, but not of unsigned ones. Each lane has its own extremes, so that no element waits for
// the one before.
void updateMinMax(VxImage *image, const std::uint16_t *row, std::uint16_t mask) {
    constexpr std::uint16_t kBias = 0x8000;
    constexpr std::size_t kLanes = 32;
    std::int16_t low[kLanes];
    std::int16_t high[kLanes];
    std::fill_n(low, kLanes, std::int16_t{0x7FFF});
    std::fill_n(high, kLanes, std::int16_t{-0x8000});
    const std::size_t width = image->xSize;
    const auto update = [&](std::size_t lane, std::uint16_t element) {
        const auto biased = static_cast<std::int16_t>((element & mask) ^ kBias);
        low[lane] = std::min(low[lane], biased);
        high[lane] = std::max(high[lane], biased);
    };
    std::size_t i = 0;
    for (; i + kLanes <= width; i += kLanes) {
        for (std::size_t lane = 0; lane < kLanes; ++lane)
            update(lane, row[i + lane]);
    }
    for (; i < width; ++i)
        update(0, row[i]);
    if (width == 0) return;
    const std::int16_t min = *std::min_element(low, low + kLanes);
    const std::int16_t max = *std::max_element(high, high + kLanes);
    image->minValue = std::min(image->minValue, static_cast<std::uint32_t>(min + kBias));
    image->maxValue = std::max(image->maxValue, static_cast<std::uint32_t>(max + kBias));
}

// Stores the row in the handle. False after a message if the header allows no such row.
bool selectRow(VxImage *image, unsigned y, unsigned z) {
    if (vxImageBadRow(image, y, z) != 0) return reportFailure(VX_MESSAGE_IMAGE_ROW_OUT_OF_RANGE);
    image->x = 0;
    image->y = static_cast<std::int16_t>(y);
    image->z = static_cast<std::int16_t>(z);
    if (storageOf(image) > kRunLength) return reportFailure(VX_MESSAGE_IMAGE_BAD_STORAGE);
    if (image->dimension >= 1 && image->dimension <= 3) return true;
    return reportFailure(VX_MESSAGE_IMAGE_BAD_DIMENSION);
}

// Seeks to the selected row. False, without a message, if its position cannot be reached.
bool seekToSelected(VxImage *image) {
    const std::uint64_t index = selectedIndex(image);
    const std::uint64_t position =
        isVerbatim(image) ? VX_IMAGE_FILE_HEAD + index * image->xSize * elementBytesOf(image)
                          : image->rowStarts[index];
    // Reduced to 32 bits it would be the position of another row.
    if (position > VX_IMAGE_MAX_POSITION) return false;
    return moveTo(image, static_cast<std::uint32_t>(position));
}

// A position that cannot be reached counts as a short write.
bool writeSelected(VxImage *image, void *bytes, int count) {
    return (seekToSelected(image) && vxImageFileWrite(image, bytes, count) == count) ||
           reportFailure(VX_MESSAGE_IMAGE_ROW_WRITE_FAILED);
}

bool putVerbatim(VxImage *image, std::uint16_t *row) {
    const int bytes = static_cast<int>(elementBytesOf(image)) * image->xSize;
    if (elementBytesOf(image) == 1) {
        std::copy_n(row, image->xSize, reinterpret_cast<std::uint8_t *>(image->rowBuffer));
    } else if (image->byteSwap != 0) {
        // Into the buffer, so that the caller's row is never seen swapped.
        swapShorts(image->rowBuffer, row, bytes);
    } else {
        return writeSelected(image, row, bytes);
    }
    return writeSelected(image, image->rowBuffer, bytes);
}

bool putRunLength(VxImage *image, const std::uint16_t *row, unsigned y, unsigned z) {
    const int elementBytes = static_cast<int>(elementBytesOf(image));
    const int size =
        elementBytes * vxImageRleEncode(row, 2, image->rowBuffer, elementBytes, image->xSize);
    const std::uint64_t end = std::uint64_t{image->appendOffset} + static_cast<unsigned>(size);
    if (end > VX_IMAGE_MAX_POSITION) return reportFailure(VX_MESSAGE_IMAGE_ROW_WRITE_FAILED);
    vxImageSetRowSize(image, size, y, z);
    if (elementBytes == 2 && image->byteSwap != 0) vxSwapShorts(image->rowBuffer, size);
    return writeSelected(image, image->rowBuffer, size);
}

// Reads the bytes of a row into the row buffer, which has room for any row within these limits.
bool readSelected(VxImage *image, int count, int maxCount) {
    return count <= maxCount && vxImageFileRead(image, image->rowBuffer, count) == count;
}

bool getVerbatim(VxImage *image, std::uint16_t *row) {
    if (elementBytesOf(image) == 1) {
        if (!readSelected(image, image->xSize, VX_IMAGE_MAX_ONE_BYTE_ROW)) return false;
        std::copy_n(reinterpret_cast<const std::uint8_t *>(image->rowBuffer), image->xSize, row);
        return true;
    }
    const int bytes = 2 * image->xSize;
    if (!readSelected(image, bytes, 2 * VX_IMAGE_MAX_TWO_BYTE_ROW)) return false;
    if (image->byteSwap != 0) {
        swapShorts(row, image->rowBuffer, bytes);
    } else {
        std::copy_n(image->rowBuffer, image->xSize, row);
    }
    return true;
}

bool getRunLength(VxImage *image, std::uint16_t *row, std::int32_t size) {
    const int elementBytes = static_cast<int>(elementBytesOf(image));
    const int longest = (2 * image->xSize + 1) * elementBytes;  // of any encoding of this width
    if (size < 0 || !readSelected(image, size, std::min<int>(longest, VX_IMAGE_MAX_STORED_ROW))) {
        return false;
    }
    const auto stored = static_cast<std::size_t>(size);
    if (elementBytes == 1) {
        return decodeRow(reinterpret_cast<const std::uint8_t *>(image->rowBuffer), stored, row,
                         image->xSize);
    }
    if (image->byteSwap != 0) vxSwapShorts(image->rowBuffer, size);
    return decodeRow(image->rowBuffer, stored / 2, row, image->xSize);
}

bool putRow(VxImage *image, std::uint16_t *row, int y, int z) {
    if (!isFor(image, VX_IMAGE_WRITE)) return false;
    if (storageOf(image) > kRunLength) return reportFailure(VX_MESSAGE_IMAGE_WRITE_BAD_STORAGE);
    if (!isElementWidthValid(image)) return reportFailure(VX_MESSAGE_IMAGE_WRITE_BAD_WIDTH);
    updateMinMax(image, row, isVerbatim(image) && elementBytesOf(image) == 1 ? 0xFF : 0xFFFF);
    clampRow(image, y, z);
    const auto rowNumber = static_cast<unsigned>(y), plane = static_cast<unsigned>(z);
    if (!selectRow(image, rowNumber, plane)) return false;
    return isVerbatim(image) ? putVerbatim(image, row) : putRunLength(image, row, rowNumber, plane);
}

bool getRow(VxImage *image, std::uint16_t *row, int y, int z) {
    if (!isFor(image, VX_IMAGE_READ)) return false;
    clampRow(image, y, z);
    const bool selected = selectRow(image, static_cast<unsigned>(y), static_cast<unsigned>(z));
    const bool reached = selected && seekToSelected(image);
    if (storageOf(image) > kRunLength) return reportFailure(VX_MESSAGE_IMAGE_READ_BAD_STORAGE);
    if (!isElementWidthValid(image)) return reportFailure(VX_MESSAGE_IMAGE_READ_BAD_WIDTH);
    if (!selected) return false;  // after a message
    const std::int32_t size = vxImageRowSize(image);
    if (reached && (size & 0xFFFF) == 0xFFFF) return false;  // never written
    const bool complete =
        reached && (isVerbatim(image) ? getVerbatim(image, row) : getRunLength(image, row, size));
    return complete || reportFailure(VX_MESSAGE_IMAGE_ROW_READ_FAILED);
}

}  // namespace

int vxImageBadRow(VxImage *image, unsigned y, unsigned z) {
    return y >= image->ySize || z >= image->zSize ? 1 : 0;
}

long vxImageSeekRow(VxImage *image, unsigned y, unsigned z) {
    const bool reached = selectRow(image, y, z) && seekToSelected(image);
    return reached ? static_cast<long>(image->fileOffset) : -1;
}

std::int32_t vxImageRowSize(VxImage *image) {
    const unsigned y = static_cast<std::uint16_t>(image->y);
    const unsigned z = static_cast<std::uint16_t>(image->z);
    if (image->dimension < 1 || image->dimension > 3 || image->rowSizes == nullptr ||
        vxImageBadRow(image, y, z) != 0) {
        return 0;
    }
    return image->rowSizes[selectedIndex(image)];
}

void vxImageSetRowSize(VxImage *image, std::int32_t size, unsigned y, unsigned z) {
    if (vxImageBadRow(image, y, z) != 0 || image->rowSizes == nullptr) return;
    const std::size_t index = tableIndex(image, y, z);
    image->rowStarts[index] = image->appendOffset;
    if (image->rowSizes[index] != -1) {
        image->wasteBytes += static_cast<std::uint32_t>(image->rowSizes[index]);
    }
    image->rowSizes[index] = size;
    image->appendOffset += static_cast<std::uint32_t>(size);
}

int vxImagePutRow(VxImage *image, std::uint16_t *row, int y, int z) {
    return putRow(image, row, y, z) ? image->xSize : -1;
}

int vxImageGetRow(VxImage *image, std::uint16_t *row, int y, int z) {
    return getRow(image, row, y, z) ? image->xSize : -1;
}
