// Image handles: opening, closing, and the file below them.

#include "image/image_internal.h"
#include "platform/code_page.h"
#include "platform/files.h"

#include <vxframework.h>
#include <vximage.h>

#include <cassert>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kBlockBytes = 152;  // what is read and written at the start of a file
constexpr std::size_t kHeaderBytes = offsetof(VxImage, file);
static_assert(kHeaderBytes == 108 && offsetof(VxImage, name) == 24);

constexpr std::uint32_t kMinValueOfNothing = 10000000;

// Both tables are read by one call, which transfers no more than 0x7FFFF000 bytes here.
constexpr std::uint64_t kMaxTableBytes = 0x3FFFF000;

bool writeHeader(int file, const VxImage *image, bool swapped) {
    // The run-time fields of the handle are nobody's business: zeros stand in their place.
    union {
        VxImage image;
        unsigned char bytes[kBlockBytes];
    } block;
    std::memset(&block, 0, sizeof block);
    std::memcpy(&block, image, kHeaderBytes);
    if (swapped) vxImageSwapHeader(&block.image);
    return vx::writeFile(file, &block, kBlockBytes) == kBlockBytes;
}

// ---- Opening

struct Creation {
    std::uint16_t type, x, y, z;
};

// All of them in one function: a va_list that was handed on is spent.
Creation takeArguments(va_list arguments) {
    const auto next = [&] { return static_cast<std::uint16_t>(va_arg(arguments, unsigned)); };
    Creation creation = {next(), 0, 1, 1};
    const unsigned dimension = next();
    creation.x = next();
    if (dimension > 1) creation.y = next();
    if (dimension > 2) creation.z = next();
    return creation;
}

bool create(VxImage *image, const char *name, va_list arguments) {
    if (name != nullptr) {
        image->file = vx::File::openForWriting(name).release();
    }
    if (image->file < 0) {
        vxImageError(20363, name);
        return false;
    }
    const Creation creation = takeArguments(arguments);
    image->magic = VX_IMAGE_MAGIC;
    image->type = creation.type;
    image->xSize = creation.x;
    image->ySize = creation.y;
    image->zSize = creation.z;
    image->dimension = 1;
    if (image->ySize != 1) image->dimension = 2;
    if (image->zSize != 1) image->dimension = 3;
    image->minValue = kMinValueOfNothing;
    vxImageSetName(image, vxMessageText("vxmsg", 20364));
    if (writeHeader(image->file, image, false)) return true;
    vxImageError(20365);
    return false;
}

bool readHeader(VxImage *image, const char *name) {
    if (name != nullptr) image->file = vx::File::openForReading(name).release();
    if (image->file < 0) return false;
    unsigned char block[kBlockBytes];
    if (vx::readFile(image->file, block, kBlockBytes) != kBlockBytes) {
        vxImageError(20366);
        return false;
    }
    std::memcpy(image, block, kHeaderBytes);
    image->name[sizeof image->name - 1] = '\0';
    constexpr std::uint16_t kSwappedMagic = (VX_IMAGE_MAGIC & 0xFF) << 8 | VX_IMAGE_MAGIC >> 8;
    if (image->magic == kSwappedMagic) {
        image->byteSwap = 1;
        vxImageSwapHeader(image);
    }
    if (image->magic == VX_IMAGE_MAGIC) return true;
    vxImageError(20367, static_cast<int>(image->magic));
    return false;
}

// The tables share one block, the sizes behind the starts, as they do in the file.
bool allocateTables(VxImage *image) {
    const std::size_t bytes = tableBytesOf(image);
    image->rowStarts = static_cast<std::uint32_t *>(std::malloc(bytes != 0 ? 2 * bytes : 1));
    if (image->rowStarts == nullptr) {
        vxImageError(20368);
        return false;
    }
    image->rowSizes = reinterpret_cast<std::int32_t *>(image->rowStarts) + bytes / 4;
    return true;
}

bool createTables(VxImage *image) {
    if (!allocateTables(image)) return false;
    const std::size_t bytes = tableBytesOf(image);
    std::memset(image->rowStarts, 0, bytes);
    std::memset(image->rowSizes, 0xFF, bytes);
    return true;
}

// A header may ask for any size: the tables are looked for in the file before there is room made.
bool readTables(VxImage *image) {
    const auto bytes = static_cast<long>(tableBytesOf(image));
    const std::int64_t behindHead = vx::fileLength(image->file) - VX_IMAGE_FILE_HEAD;
    if (behindHead < 2 * bytes) {
        vxImageError(behindHead < bytes ? 20369 : 20370);
        return false;
    }
    if (!allocateTables(image)) return false;
    const auto count = static_cast<int>(2 * bytes);
    int got = -1;
    if (vx::seekFile(image->file, VX_IMAGE_FILE_HEAD)) {
        got = vx::readFile(image->file, image->rowStarts, static_cast<unsigned>(count));
    }
    if (got != count) {
        vxImageError(got < bytes ? 20369 : 20370);
        return false;
    }
    if (image->byteSwap != 0) vxSwapLongs(image->rowStarts, count);
    return true;
}

bool prepare(VxImage *image, bool creating) {
    if (storageOf(image) == kRunLength) {
        if (tableBytesOf(image) > kMaxTableBytes) {
            vxImageError(20368);
            return false;
        }
        if (!(creating ? createTables(image) : readTables(image))) return false;
        image->appendOffset =
            static_cast<std::uint32_t>(VX_IMAGE_FILE_HEAD + 2 * tableBytesOf(image));
    }
    image->rowBuffer = vxImageAllocRowBuffer(image);
    if (image->rowBuffer == nullptr) {
        vxImageError(20371, static_cast<int>(image->xSize));
        return false;
    }
    image->fileOffset = kNoPosition;
    vxImageFileSeek(image, VX_IMAGE_FILE_HEAD);
    return true;
}

void release(VxImage *image) {
    std::free(image->pixelBuffer);
    std::free(image->rowBuffer);
    std::free(image->rowStarts);  // and rowSizes in the same block
    std::free(image);
}

// With a name the file is opened by it, else it is the descriptor given.
VxImage *openImage(const char *name, int file, const char *mode, va_list arguments) {
    assert(mode != nullptr);
    auto *image = static_cast<VxImage *>(std::calloc(1, sizeof(VxImage)));
    if (image == nullptr) {
        vxImageError(20360);
        return nullptr;
    }
    if (mode[0] != '\0' && mode[1] == '+') {
        vxImageError(20361);
        release(image);
        return nullptr;
    }
    const bool creating = mode[0] == 'w';
    image->file = name == nullptr ? file : -1;
    image->flags = mode[0] == 'r' ? VX_IMAGE_READ : VX_IMAGE_WRITE;
    const bool opened = creating ? create(image, name, arguments) : readHeader(image, name);
    if (opened && prepare(image, creating)) return image;
    if (name != nullptr && image->file >= 0) vx::closeFile(image->file);
    release(image);
    return nullptr;
}

// ---- Closing

// Swapped for the write and back again: in memory a table is always in the host's order.
bool writeTable(VxImage *image, void *table) {
    const auto bytes = static_cast<int>(tableBytesOf(image));
    if (image->byteSwap != 0) vxSwapLongs(table, bytes);
    const bool whole = vxImageFileWrite(image, table, bytes) == bytes;
    if (image->byteSwap != 0) vxSwapLongs(table, bytes);
    return whole;
}

// Writes both tables; on a short write reports the message of the one that fell short.
bool writeTables(VxImage *image, int startsMessage, int sizesMessage) {
    int failed = 0;
    if (vxImageFileSeek(image, VX_IMAGE_FILE_HEAD) < 0 || !writeTable(image, image->rowStarts)) {
        failed = startsMessage;
    } else if (!writeTable(image, image->rowSizes)) {
        failed = sizesMessage;
    }
    if (failed == 0) return true;
    vxImageError(failed);
    return false;
}

bool writeHeaderAndTables(VxImage *image) {
    const bool reached = vxImageFileSeek(image, 0) >= 0;
    image->fileOffset = kNoPosition;
    if (!reached || !writeHeader(image->file, image, image->byteSwap != 0)) {
        vxImageError(20352);
        return false;
    }
    return storageOf(image) != kRunLength || writeTables(image, 20353, 20354);
}

bool hasPendingRow(const VxImage *image) {
    return image->pixelBuffer != nullptr && image->nextPixel > image->pixelBuffer;
}

}  // namespace

VxImage *vxImageOpen(const char *name, const char *mode, ...) {
    va_list arguments;
    va_start(arguments, mode);
    VxImage *image = openImage(name, 0, mode, arguments);
    va_end(arguments);
    return image;
}

VxImage *vxImageOpenFd(int file, const char *mode, ...) {
    va_list arguments;
    va_start(arguments, mode);
    VxImage *image = openImage(nullptr, file, mode, arguments);
    va_end(arguments);
    return image;
}

int vxImageFlush(VxImage *image) {
    if ((image->flags & VX_IMAGE_WRITE) == 0) return 0;
    if (hasPendingRow(image) &&
        vxImagePutRow(image, image->pixelBuffer, image->y, image->z) != image->xSize) {
        image->flags |= VX_IMAGE_ERROR;
        return -1;
    }
    if (storageOf(image) != kRunLength) return 0;
    return writeTables(image, 20356, 20357) ? 0 : -1;
}

int vxImageClose(VxImage *image) {
    vxImageFlush(image);
    if ((image->flags & VX_IMAGE_WRITE) != 0 && !writeHeaderAndTables(image)) return -1;
    const int result = vx::closeFile(image->file);
    if (result != 0) vxImageError(20355);
    release(image);
    return result;
}

std::uint16_t *vxImageAllocRowBuffer(VxImage *image) {
    // The end mark needs its own 2 bytes: the longest encoded row has 2 * xSize + 1 elements.
    const std::size_t bytes = ((std::size_t{image->xSize} >> 6) + image->xSize) * 4 + 2;
    return static_cast<std::uint16_t *>(std::malloc(bytes));
}

void vxImageSetName(VxImage *image, const char *text) {
    vx::copyPrefix(image->name, text, sizeof image->name - 1);
    image->name[sizeof image->name - 1] = '\0';
}

void vxImageSetColormap(VxImage *image, std::uint32_t value) {
    image->colormap = value;
}

long vxImageFileSeek(VxImage *image, std::uint32_t position) {
    if (position == image->fileOffset && position != kNoPosition) return position;
    const bool reached = vx::seekFile(image->file, position);
    image->fileOffset = reached ? position : kNoPosition;
    return reached ? static_cast<long>(position) : -1;
}

namespace {

int noteTransfer(VxImage *image, int transferred, int count) {
    const std::uint64_t behind = std::uint64_t{image->fileOffset} + static_cast<unsigned>(count);
    const bool known =
        transferred == count && image->fileOffset != kNoPosition && behind < kNoPosition;
    image->fileOffset = known ? static_cast<std::uint32_t>(behind) : kNoPosition;
    return transferred;
}

}  // namespace

int vxImageFileRead(VxImage *image, void *buffer, int count) {
    assert(count >= 0);
    return noteTransfer(image, vx::readFile(image->file, buffer, static_cast<unsigned>(count)),
                        count);
}

int vxImageFileWrite(VxImage *image, void *buffer, int count) {
    assert(count >= 0);
    return noteTransfer(image, vx::writeFile(image->file, buffer, static_cast<unsigned>(count)),
                        count);
}
