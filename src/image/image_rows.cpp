// Rows between a caller's array and the file.

#include "image/image_internal.h"

#include <vximage.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

// How far rows are read.
constexpr int kWidestOneByteRow = 32768;
constexpr int kWidestTwoByteRow = 16383;
constexpr int kLongestStoredRow = 32767;

bool isFor(const VxImage *image, unsigned direction) {
    return (image->flags & (direction | VX_IMAGE_READWRITE)) != 0;
}

void clampRow(const VxImage *image, int &y, int &z) {
    if (image->dimension < 3) z = 0;
    if (image->dimension < 2) y = 0;
}

// Of a row in range. y and z of the handle are 16 bits of an unsigned number.
std::size_t tableIndex(const VxImage *image, unsigned y, unsigned z) {
    if (image->dimension == 1) return 0;
    return image->dimension == 2 ? y : std::size_t{z} * image->ySize + y;
}

// On signed words, which every machine of this kind takes eight at a time; unsigned ones it does
// not. The lanes have extremes of their own, so that no element waits for the one before.
void noteExtremes(VxImage *image, const std::uint16_t *row, std::uint16_t mask) {
    constexpr std::uint16_t kBias = 0x8000;
    constexpr std::size_t kLanes = 32;
    std::int16_t low[kLanes];
    std::int16_t high[kLanes];
    std::fill_n(low, kLanes, std::int16_t{0x7FFF});
    std::fill_n(high, kLanes, std::int16_t{-0x8000});
    const std::size_t width = image->xSize;
    const auto note = [&](std::size_t lane, std::uint16_t element) {
        const auto biased = static_cast<std::int16_t>((element & mask) ^ kBias);
        low[lane] = std::min(low[lane], biased);
        high[lane] = std::max(high[lane], biased);
    };
    std::size_t i = 0;
    for (; i + kLanes <= width; i += kLanes) {
        for (std::size_t lane = 0; lane < kLanes; ++lane)
            note(lane, row[i + lane]);
    }
    for (; i < width; ++i)
        note(0, row[i]);
    if (width == 0) return;
    const std::int16_t least = *std::min_element(low, low + kLanes);
    const std::int16_t most = *std::max_element(high, high + kLanes);
    image->minValue = std::min(image->minValue, static_cast<std::uint32_t>(least + kBias));
    image->maxValue = std::max(image->maxValue, static_cast<std::uint32_t>(most + kBias));
}

void copySwapped(std::uint16_t *to, const std::uint16_t *from, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = static_cast<std::uint16_t>(from[i] << 8 | from[i] >> 8);
    }
}

// Goes to where a row lies. A row out of range and a bad header have messages of their own; a place
// that cannot be reached, at 4 GiB or in a pipe, counts as a transfer that fell short.
bool reachRow(VxImage *image, int y, int z, int fellShort) {
    const auto row = static_cast<unsigned>(y), plane = static_cast<unsigned>(z);
    if (vxImageSeekRow(image, row, plane) >= 0) return true;
    const bool goodHeader = image->dimension >= 1 && image->dimension <= 3 &&
                            storageOf(image) <= kRunLength &&
                            (elementBytesOf(image) == 1 || elementBytesOf(image) == 2);
    if (goodHeader && vxImageBadRow(image, row, plane) == 0) vxImageError(fellShort);
    return false;
}

int writeWhole(VxImage *image, void *bytes, int count) {
    if (vxImageFileWrite(image, bytes, count) == count) return image->xSize;
    vxImageError(20377);
    return -1;
}

int putVerbatim(VxImage *image, std::uint16_t *row, int y, int z) {
    const int elementBytes = static_cast<int>(elementBytesOf(image));
    const std::size_t width = image->xSize;
    void *bytes = row;
    if (elementBytes == 1) {
        auto *narrow = reinterpret_cast<std::uint8_t *>(image->rowBuffer);
        for (std::size_t i = 0; i < width; ++i)
            narrow[i] = static_cast<std::uint8_t>(row[i]);
        bytes = narrow;
    } else if (image->byteSwap != 0) {
        // Into the buffer, so that the caller's row is never seen swapped.
        copySwapped(image->rowBuffer, row, width);
        bytes = image->rowBuffer;
    }
    if (!reachRow(image, y, z, 20377)) return -1;
    return writeWhole(image, bytes, elementBytes * image->xSize);
}

int putRunLength(VxImage *image, const std::uint16_t *row, int y, int z) {
    const int elementBytes = static_cast<int>(elementBytesOf(image));
    const int size =
        elementBytes * vxImageRleEncode(row, 2, image->rowBuffer, elementBytes, image->xSize);
    const bool inRange =
        vxImageBadRow(image, static_cast<unsigned>(y), static_cast<unsigned>(z)) == 0;
    if (inRange &&
        std::uint64_t{image->appendOffset} + static_cast<unsigned>(size) >= kNoPosition) {
        // The row would run past the positions that the tables can tell.
        vxImageError(20377);
        return -1;
    }
    vxImageSetRowSize(image, size, static_cast<unsigned>(y), static_cast<unsigned>(z));
    if (!reachRow(image, y, z, 20377)) return -1;
    if (elementBytes == 2 && image->byteSwap != 0) vxSwapShorts(image->rowBuffer, size);
    return writeWhole(image, image->rowBuffer, size);
}

// Reads the bytes of a row into the row buffer, which holds any row within these limits.
bool readWhole(VxImage *image, int count, int most) {
    return count <= most && vxImageFileRead(image, image->rowBuffer, count) == count;
}

bool getVerbatim(VxImage *image, std::uint16_t *row) {
    const std::size_t width = image->xSize;
    if (elementBytesOf(image) == 1) {
        if (!readWhole(image, image->xSize, kWidestOneByteRow)) return false;
        const auto *narrow = reinterpret_cast<const std::uint8_t *>(image->rowBuffer);
        for (std::size_t i = 0; i < width; ++i)
            row[i] = narrow[i];
        return true;
    }
    if (!readWhole(image, 2 * image->xSize, 2 * kWidestTwoByteRow)) return false;
    if (image->byteSwap != 0) {
        copySwapped(row, image->rowBuffer, width);
    } else {
        std::copy_n(image->rowBuffer, width, row);
    }
    return true;
}

bool getRunLength(VxImage *image, std::uint16_t *row, std::int32_t size) {
    const int elementBytes = static_cast<int>(elementBytesOf(image));
    const int longest = (2 * image->xSize + 1) * elementBytes;  // of any encoding of this width
    if (size < 0 || !readWhole(image, size, std::min(longest, kLongestStoredRow))) return false;
    if (elementBytes == 1) {
        return decodeRow(reinterpret_cast<const std::uint8_t *>(image->rowBuffer),
                         static_cast<std::size_t>(size), row, image->xSize);
    }
    if (image->byteSwap != 0) vxSwapShorts(image->rowBuffer, size);
    return decodeRow(image->rowBuffer, static_cast<std::size_t>(size) / 2, row, image->xSize);
}

}  // namespace

int vxImageBadRow(VxImage *image, unsigned y, unsigned z) {
    return y >= image->ySize || z >= image->zSize ? 1 : 0;
}

long vxImageSeekRow(VxImage *image, unsigned y, unsigned z) {
    if (vxImageBadRow(image, y, z) != 0) {
        vxImageError(20372);
        return -1;
    }
    image->x = 0;
    image->y = static_cast<std::int16_t>(y);
    image->z = static_cast<std::int16_t>(z);
    if (storageOf(image) > kRunLength) {
        vxImageError(20374);
        return -1;
    }
    if (image->dimension < 1 || image->dimension > 3) {
        vxImageError(20373);
        return -1;
    }
    const std::size_t index = tableIndex(image, y, z);
    if (storageOf(image) == kRunLength) return vxImageFileSeek(image, image->rowStarts[index]);
    const std::uint64_t position =
        VX_IMAGE_FILE_HEAD + std::uint64_t{index} * image->xSize * elementBytesOf(image);
    // Taken modulo 2^32 it would be the place of another row.
    if (position >= kNoPosition) return -1;
    return vxImageFileSeek(image, static_cast<std::uint32_t>(position));
}

std::int32_t vxImageRowSize(VxImage *image) {
    const unsigned y = static_cast<std::uint16_t>(image->y);
    const unsigned z = static_cast<std::uint16_t>(image->z);
    if (image->dimension < 1 || image->dimension > 3 || image->rowSizes == nullptr ||
        vxImageBadRow(image, y, z) != 0) {
        return 0;
    }
    return image->rowSizes[tableIndex(image, y, z)];
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
    if (!isFor(image, VX_IMAGE_WRITE)) return -1;
    clampRow(image, y, z);
    if (storageOf(image) > kRunLength) {
        vxImageError(20379);
        return -1;
    }
    if (elementBytesOf(image) != 1 && elementBytesOf(image) != 2) {
        vxImageError(20378);
        return -1;
    }
    const bool verbatim = storageOf(image) == kVerbatim;
    noteExtremes(image, row, verbatim && elementBytesOf(image) == 1 ? 0xFF : 0xFFFF);
    return verbatim ? putVerbatim(image, row, y, z) : putRunLength(image, row, y, z);
}

int vxImageGetRow(VxImage *image, std::uint16_t *row, int y, int z) {
    if (!isFor(image, VX_IMAGE_READ)) return -1;
    clampRow(image, y, z);
    const bool reached = reachRow(image, y, z, 20380);
    if (storageOf(image) > kRunLength) {
        vxImageError(20382);
        return -1;
    }
    if (elementBytesOf(image) != 1 && elementBytesOf(image) != 2) {
        vxImageError(20381);
        return -1;
    }
    if (!reached) return -1;
    bool whole = false;
    if (storageOf(image) == kVerbatim) {
        whole = getVerbatim(image, row);
    } else {
        const std::int32_t size = vxImageRowSize(image);
        if ((size & 0xFFFF) == 0xFFFF) return -1;  // never written
        whole = getRunLength(image, row, size);
    }
    if (whole) return image->xSize;
    vxImageError(20380);
    return -1;
}
