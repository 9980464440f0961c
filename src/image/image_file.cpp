// Opening, flushing and closing an image.

#include "image/image_internal.h"
#include "platform/files.h"

#include <vxframework.h>
#include <vximage.h>

#include <cassert>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

using namespace vx;

namespace {

constexpr int kBlockBytes = 152;  // what is read and written at the start of a file
constexpr std::size_t kHeaderBytes = offsetof(VxImage, file);
static_assert(kHeaderBytes == 108 && offsetof(VxImage, name) == 24);
static_assert(sizeof(VxImage::name) == VX_IMAGE_MAX_NAME + 1);

constexpr std::uint32_t kInitialMinValue = 10000000;

// Both tables are read by one call, which transfers at most 0x7FFFF000 bytes on some systems.
constexpr std::uint64_t kMaxTableBytes = 0x3FFFF000;

bool writeHeader(int file, const VxImage *image, bool swapped) {
    // Zeros replace the run-time fields: no address of the process may reach the file.
    union {
        VxImage image;
        unsigned char bytes[kBlockBytes];
    } block;
    std::memset(&block, 0, sizeof block);
    std::memcpy(&block, image, kHeaderBytes);
    if (swapped) vxImageSwapHeader(&block.image);
    return writeFile(file, &block, kBlockBytes) == kBlockBytes;
}

// ---- Opening

// Takes all arguments at once: after the return the callers must not take more from the list.
void takeArguments(VxImage *image, va_list arguments) {
    const auto next = [&] { return static_cast<std::uint16_t>(va_arg(arguments, unsigned)); };
    image->type = next();
    const unsigned dimension = next();
    image->xSize = next();
    image->ySize = dimension > 1 ? next() : std::uint16_t{1};
    image->zSize = dimension > 2 ? next() : std::uint16_t{1};
}

bool create(VxImage *image, const char *name, va_list arguments) {
    if (image->file < 0) return reportFailure(VX_MESSAGE_IMAGE_CREATE_FAILED, name);
    takeArguments(image, arguments);
    image->magic = VX_IMAGE_MAGIC;
    image->dimension = image->zSize != 1 ? 3 : image->ySize != 1 ? 2 : 1;
    image->minValue = kInitialMinValue;
    vxImageSetName(image, vxMessageText(VX_MESSAGE_CATALOGUE, VX_MESSAGE_IMAGE_DEFAULT_NAME));
    if (writeHeader(image->file, image, false)) return true;
    return reportFailure(VX_MESSAGE_IMAGE_CREATE_HEADER_FAILED);
}

bool readHeader(VxImage *image) {
    if (image->file < 0) return false;
    unsigned char block[kBlockBytes];
    if (readFile(image->file, block, kBlockBytes) != kBlockBytes) {
        return reportFailure(VX_MESSAGE_IMAGE_HEADER_TRUNCATED);
    }
    std::memcpy(image, block, kHeaderBytes);
    image->name[VX_IMAGE_MAX_NAME] = '\0';
    constexpr std::uint16_t kSwappedMagic = (VX_IMAGE_MAGIC & 0xFF) << 8 | VX_IMAGE_MAGIC >> 8;
    if (image->magic == kSwappedMagic) {
        image->byteSwap = 1;
        vxImageSwapHeader(image);
    }
    if (image->magic == VX_IMAGE_MAGIC) return true;
    return reportFailure(VX_MESSAGE_IMAGE_BAD_MAGIC, static_cast<int>(image->magic));
}

// The tables share one block, the sizes after the starts, as they do in the file.
bool allocateTables(VxImage *image) {
    const std::size_t bytes = tableBytesOf(image);
    image->rowStarts = static_cast<std::uint32_t *>(std::malloc(bytes != 0 ? 2 * bytes : 1));
    if (image->rowStarts == nullptr) return reportFailure(VX_MESSAGE_IMAGE_TABLES_OUT_OF_MEMORY);
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

// `got` bytes of both tables are there, fewer than needed.
bool reportTruncated(const VxImage *image, std::int64_t got) {
    return reportFailure(got < static_cast<std::int64_t>(tableBytesOf(image))
                             ? VX_MESSAGE_IMAGE_STARTS_TRUNCATED
                             : VX_MESSAGE_IMAGE_SIZES_TRUNCATED);
}

// A header may ask for any size: nothing is allocated before the file is known to be long enough.
bool readTables(VxImage *image) {
    const auto bytes = static_cast<int>(2 * tableBytesOf(image));
    const std::int64_t available = fileLength(image->file) - VX_IMAGE_FILE_HEAD;
    if (available < bytes) return reportTruncated(image, available);
    if (!allocateTables(image)) return false;
    int got = -1;
    if (seekFile(image->file, VX_IMAGE_FILE_HEAD)) {
        got = readFile(image->file, image->rowStarts, static_cast<unsigned>(bytes));
    }
    if (got != bytes) return reportTruncated(image, got);
    if (image->byteSwap != 0) vxSwapLongs(image->rowStarts, bytes);
    return true;
}

// The row tables, if the image has any, and the row buffer.
bool allocateBuffers(VxImage *image, bool creating) {
    if (storageOf(image) == kRunLength) {
        if (tableBytesOf(image) > kMaxTableBytes) {
            return reportFailure(VX_MESSAGE_IMAGE_TABLES_OUT_OF_MEMORY);
        }
        if (!(creating ? createTables(image) : readTables(image))) return false;
        image->appendOffset =
            static_cast<std::uint32_t>(VX_IMAGE_FILE_HEAD + 2 * tableBytesOf(image));
    }
    image->rowBuffer = vxImageAllocRowBuffer(image);
    if (image->rowBuffer != nullptr) return true;
    return reportFailure(VX_MESSAGE_IMAGE_ROW_OUT_OF_MEMORY, static_cast<int>(image->xSize));
}

void release(VxImage *image) {
    std::free(image->pixelBuffer);
    std::free(image->rowBuffer);
    std::free(image->rowStarts);  // and rowSizes in the same block
    std::free(image);
}

// With a name the file is opened by it, else it is the descriptor given.
VxImage *openImage(const char *name, int descriptor, const char *mode, va_list arguments) {
    assert(mode != nullptr);
    std::unique_ptr<VxImage, decltype(&release)> image(
        static_cast<VxImage *>(std::calloc(1, sizeof(VxImage))), release);
    if (image == nullptr) {
        vxImageError(VX_MESSAGE_IMAGE_HANDLE_OUT_OF_MEMORY);
        return nullptr;
    }
    if (mode[0] != '\0' && mode[1] == '+') {
        vxImageError(VX_MESSAGE_IMAGE_READ_WRITE_MODE);
        return nullptr;
    }
    const bool creating = mode[0] == 'w';
    File own;
    if (name != nullptr) own = creating ? File::openForWriting(name) : File::openForReading(name);
    image->file = name != nullptr ? own.get() : descriptor;
    image->flags = mode[0] == 'r' ? VX_IMAGE_READ : VX_IMAGE_WRITE;
    const bool opened = creating ? create(image.get(), name, arguments) : readHeader(image.get());
    if (!opened || !allocateBuffers(image.get(), creating)) return nullptr;
    image->fileOffset = kNoPosition;
    vxImageFileSeek(image.get(), VX_IMAGE_FILE_HEAD);
    own.release();
    return image.release();
}

// ---- Closing

// Swapped for the write and back again: in memory a table is always in the host's order.
bool writeTable(VxImage *image, void *table) {
    const auto bytes = static_cast<int>(tableBytesOf(image));
    if (image->byteSwap != 0) vxSwapLongs(table, bytes);
    const bool complete = vxImageFileWrite(image, table, bytes) == bytes;
    if (image->byteSwap != 0) vxSwapLongs(table, bytes);
    return complete;
}

// Writes both tables, and reports the given message of the one that fails.
bool writeTables(VxImage *image, int startsMessage, int sizesMessage) {
    if (vxImageFileSeek(image, VX_IMAGE_FILE_HEAD) < 0 || !writeTable(image, image->rowStarts)) {
        return reportFailure(startsMessage);
    }
    return writeTable(image, image->rowSizes) || reportFailure(sizesMessage);
}

bool writeHeaderAndTables(VxImage *image) {
    const bool reached = vxImageFileSeek(image, 0) >= 0;
    image->fileOffset = kNoPosition;
    if (!reached || !writeHeader(image->file, image, image->byteSwap != 0)) {
        return reportFailure(VX_MESSAGE_IMAGE_CLOSE_HEADER_FAILED);
    }
    return storageOf(image) != kRunLength ||
           writeTables(image, VX_MESSAGE_IMAGE_CLOSE_STARTS_FAILED,
                       VX_MESSAGE_IMAGE_CLOSE_SIZES_FAILED);
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
    const bool written = writeTables(image, VX_MESSAGE_IMAGE_FLUSH_STARTS_FAILED,
                                     VX_MESSAGE_IMAGE_FLUSH_SIZES_FAILED);
    return written ? 0 : -1;
}

int vxImageClose(VxImage *image) {
    vxImageFlush(image);
    if ((image->flags & VX_IMAGE_WRITE) != 0 && !writeHeaderAndTables(image)) return -1;
    const int result = closeFile(image->file);
    if (result != 0) vxImageError(VX_MESSAGE_IMAGE_CLOSE_FAILED);
    release(image);
    return result;
}
