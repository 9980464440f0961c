/*
 * vxhandles.h: C++ owners for what the plain functions hand out, and whole pictures in one call.
 * Header only.
 *
 *     VxUniqueText        text to be released with free
 *     VxUniqueImage       an image of vxImageOpen or vxImageOpenFd
 *     VxUniqueSearchPath  a list of vxSearchPathCreate
 *     VxUniqueStream      a stream of vxStreamOpen
 *     VxUniqueSampleTable a table of vxSampleTableMake
 *     VxUniquePool        a pool of vxPoolMake
 *
 * Each is a std::unique_ptr: it can be moved but not copied, null means nothing is owned, and get
 * gives the pointer that the plain functions take.
 *
 *     VxSearchPath *list = vxPathStoreGet(VX_CATEGORY_TEXTURES, VX_LEVEL_MERGED);
 *     const VxUniqueText path(vxSearchPathResolve(list, "wood.sgi", nullptr, 0));
 *     const std::optional<VxPicture> picture = vxPictureRead(path.get());
 *     if (picture) use(picture->row(0, 0), picture->width);
 *
 * Give an owner only what the caller has to release. Not owned by the caller: a list of
 * vxPathStoreGet, a text that a function built in the caller's own buffer, and results in static
 * buffers (vxFindFile, the file-name functions).
 *
 * The functions of this header throw nothing. When there is no memory they return null, false or
 * an empty optional.
 */
#ifndef VXHANDLES_H
#define VXHANDLES_H

#include "vximage.h"
#include "vxmessages.h"
#include "vxpool.h"
#include "vxsampling.h"
#include "vxsearchpath.h"
#include "vxtext.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace vx::detail {

// Writes the first 152 bytes of the file: the header and zeros.
inline bool writeImageHeader(VxImage *image) {
    constexpr int kBlockBytes = 152;
    static_assert(sizeof(VxImage) >= kBlockBytes && offsetof(VxImage, file) < kBlockBytes);
    VxImage block{};
    std::memcpy(&block, image, offsetof(VxImage, file));
    if (image->byteSwap != 0) vxImageSwapHeader(&block);
    if (vxImageFileSeek(image, 0) == 0 &&
        vxImageFileWrite(image, &block, kBlockBytes) == kBlockBytes)
        return true;
    vxImageError(VX_MESSAGE_IMAGE_CLOSE_HEADER_FAILED);
    return false;
}

// After a failure of vxImageClose on an image that is being written, the caller cannot tell whether
// the handle is still valid. So the file is completed here, and then the handle closed as one for
// reading: that always ends it.
inline bool finishImage(VxImage *image) {
    bool complete = true;
    if ((image->flags & VX_IMAGE_WRITE) != 0) {
        complete = vxImageFlush(image) == 0;
        if (!complete && image->pixelBuffer != nullptr) {
            image->nextPixel = image->pixelBuffer;  // gives the pending row up
            vxImageFlush(image);
        }
        complete = writeImageHeader(image) && complete;
        image->flags = VX_IMAGE_READ;
    }
    return vxImageClose(image) == 0 && complete;
}

struct Deleter {
    void operator()(char *text) const { std::free(text); }
    void operator()(VxImage *image) const { finishImage(image); }
    void operator()(VxSearchPath *list) const { vxSearchPathFree(list); }
    void operator()(std::FILE *stream) const { vxStreamClose(stream); }
    void operator()(VxSampleTable *table) const {
        vxSampleTableRelease(table);
        delete table;
    }
    void operator()(VxPool *pool) const {
        vxPoolDestroy(pool);
        delete pool;
    }
};

}  // namespace vx::detail

/* ---- Owners --------------------------------------------------------------------------- */

/*
 * Text from vxPathJoin and vxSearchPathResolve with a null `out`, and from vxSearchPathToString.
 */
using VxUniqueText = std::unique_ptr<char, vx::detail::Deleter>;

/*
 * An image. The destructor completes the file of an image being written, as vxImageFinish does, but
 * drops the result. It always releases the image and its descriptor, even if the file could not be
 * completed: then only a message of the image functions says so.
 */
using VxUniqueImage = std::unique_ptr<VxImage, vx::detail::Deleter>;

using VxUniqueSearchPath = std::unique_ptr<VxSearchPath, vx::detail::Deleter>;

/*
 * A stream with a pinned numeric locale. The destructor drops the result of vxStreamClose. After
 * writing, call vxStreamClose(stream.release()) and check the result.
 *
 * Close streams in the reverse order of their opening, as owners in nested scopes do. To open the
 * next file in the same owner, call reset() first: reset(vxStreamOpen(...)) opens before it closes.
 */
using VxUniqueStream = std::unique_ptr<std::FILE, vx::detail::Deleter>;

/* A sample table in memory of its own, so that samplers stay valid when the owner is moved. */
using VxUniqueSampleTable = std::unique_ptr<VxSampleTable, vx::detail::Deleter>;

/* Fills a new table; the arguments are those of vxSampleTableInit. Null without memory. */
inline VxUniqueSampleTable vxSampleTableMake(int gridSize, float size, int doubleY, float jitter,
                                             int square) {
    VxUniqueSampleTable table(new (std::nothrow) VxSampleTable{});
    if (table == nullptr ||
        vxSampleTableInit(table.get(), gridSize, size, doubleY, jitter, square) == 0)
        return nullptr;
    return table;
}

/* A pool in memory of its own. The destructor invalidates all its elements. */
using VxUniquePool = std::unique_ptr<VxPool, vx::detail::Deleter>;

/* An empty pool; the arguments are those of vxPoolInit. Null without memory. */
inline VxUniquePool vxPoolMake(int elementSize, int elementsPerBlock) {
    VxUniquePool pool(new (std::nothrow) VxPool);
    if (pool != nullptr) vxPoolInit(pool.get(), elementSize, elementsPerBlock);
    return pool;
}

/* ---- Closing images ------------------------------------------------------------------- */

/*
 * Completes and closes an image. True if everything reached the file: the pending row of the pixel
 * stream, the row tables, the header, and what the system reports at close. False otherwise, and
 * for null. Rows that failed before do not count: vxImagePutRow has reported them.
 *
 * The image is released in both cases, so there is no second try. Messages: those of vxImageFlush,
 * CLOSE_HEADER_FAILED and CLOSE_FAILED.
 */
[[nodiscard]] inline bool vxImageFinish(VxUniqueImage image) {
    return image != nullptr && vx::detail::finishImage(image.release());
}

/*
 * Closes an image and leaves its file incomplete: nothing more is written. For a caller that gives
 * up and removes the file. Null is ignored.
 */
inline void vxImageDiscard(VxUniqueImage image) {
    if (image != nullptr) image->flags = VX_IMAGE_READ;
}

/* ---- Whole pictures ------------------------------------------------------------------- */

/*
 * All elements of an image, in the order of a verbatim file: planes one after another, the rows of
 * a plane from the bottom of the picture to the top, the elements of a row from left to right.
 * Element x of row y of plane z is elements[(z * height + y) * width + x].
 */
struct VxPicture {
    int width = 0;                       /* elements in a row */
    int height = 0;                      /* rows in a plane */
    int planes = 0;                      /* 1 for grey, 3 for red, green and blue, as a rule */
    int elementBytes = 1;                /* in the file. 1: elements are 0 to 255; 2: 0 to 65535 */
    std::vector<std::uint16_t> elements; /* width * height * planes */

    /* The `width` elements of a row. REQUIRES: y below height and z below planes, neither
     * negative. */
    std::uint16_t *row(int y, int z) { return elements.data() + start(y, z); }
    const std::uint16_t *row(int y, int z) const { return elements.data() + start(y, z); }

    bool operator==(const VxPicture &) const = default;

private:
    std::ptrdiff_t start(int y, int z) const {
        return (std::ptrdiff_t{z} * height + y) * std::ptrdiff_t{width};
    }
};

/* The most elements that vxPictureRead accepts by default; they take 512 MiB of memory. */
inline constexpr std::uint64_t kVxMaxPictureElements = std::uint64_t{1} << 28;

namespace vx::detail {

// Memory grows with the rows that the file holds, not with the sizes that its header claims.
inline bool readRows(VxImage *image, std::uint64_t total, VxPicture &picture) {
    std::vector<std::uint16_t> &elements = picture.elements;
    for (int z = 0; z < picture.planes; ++z) {
        for (int y = 0; y < picture.height; ++y) {
            const std::size_t end = elements.size() + image->xSize;
            if (elements.capacity() < end) elements.reserve(std::min<std::size_t>(total, 2 * end));
            elements.resize(end);
            if (vxImageGetRow(image, picture.row(y, z), y, z) < 0) return false;
        }
    }
    return true;
}

inline std::uint64_t elementCount(const VxPicture &picture) {
    const auto wide = [](int size) { return static_cast<std::uint64_t>(size); };
    return wide(picture.width) * wide(picture.height) * wide(picture.planes);
}

inline bool isWritable(const VxPicture &picture) {
    const auto fits = [](int size) { return size >= 1 && size <= 0xFFFF; };
    return fits(picture.width) && fits(picture.height) && fits(picture.planes) &&
           (picture.elementBytes == 1 || picture.elementBytes == 2) &&
           picture.elements.size() == elementCount(picture);
}

}  // namespace vx::detail

/*
 * Reads all rows of an image opened for reading, which stays open. Below dimension 2 the height is
 * 1, below dimension 3 there is one plane.
 *
 * Empty if a row cannot be read: vxImageGetRow has reported why, except for a row that was never
 * written and an image opened for writing. Also empty, without a message, for null, for an image
 * without elements or with more than maxElements, and without memory.
 *
 * Safe with any file. Memory grows with the rows that are read, whatever sizes the header claims. A
 * small run-length file can expand to a very large picture: maxElements is the limit for that.
 */
inline std::optional<VxPicture> vxPictureRead(VxImage *image,
                                              std::uint64_t maxElements = kVxMaxPictureElements) {
    if (image == nullptr) return std::nullopt;
    VxPicture picture;
    picture.width = image->xSize;
    picture.height = image->dimension < 2 ? 1 : image->ySize;
    picture.planes = image->dimension < 3 ? 1 : image->zSize;
    picture.elementBytes = image->type & 0xFF;
    const std::uint64_t total = vx::detail::elementCount(picture);
    if (total == 0 || total > maxElements) return std::nullopt;
#ifdef __cpp_exceptions
    try {
#endif
        if (!vx::detail::readRows(image, total, picture)) return std::nullopt;
#ifdef __cpp_exceptions
    } catch (const std::bad_alloc &) {
        return std::nullopt;
    }
#endif
    return picture;
}

/*
 * The same by name. Also empty when the image cannot be opened: vxImageOpen has reported why,
 * except for a file that cannot be opened for reading. Null is not a name.
 */
inline std::optional<VxPicture> vxPictureRead(const char *path,
                                              std::uint64_t maxElements = kVxMaxPictureElements) {
    const VxUniqueImage image(path != nullptr ? vxImageOpen(path, "r") : nullptr);
    return vxPictureRead(image.get(), maxElements);
}

/*
 * Writes a picture to a file in the byte order that other programs read. `storage` is
 * VX_IMAGE_RUN_LENGTH or VX_IMAGE_VERBATIM. In a one-byte picture the low 8 bits of each element
 * are stored. Rows beyond VX_IMAGE_MAX_ONE_BYTE_ROW, VX_IMAGE_MAX_TWO_BYTE_ROW or
 * VX_IMAGE_MAX_STORED_ROW are written, but cannot be read.
 *
 * True if the file is complete. False after a message of vxImageOpen, vxImagePutRow or
 * vxImageFinish; the file is incomplete then. False with no file touched for a null path, a
 * size outside 1 to 65535, an elementBytes other than 1 and 2, and another number of elements than
 * the sizes say. An older file of this name is written over in place, as vxImageOpen does it.
 */
[[nodiscard]] inline bool vxPictureWrite(const char *path, const VxPicture &picture,
                                         unsigned storage = VX_IMAGE_RUN_LENGTH) {
    if (path == nullptr || !vx::detail::isWritable(picture)) return false;
    VxUniqueImage image(
        vxImageOpen(path, "w", storage | static_cast<unsigned>(picture.elementBytes), 3U,
                    static_cast<unsigned>(picture.width), static_cast<unsigned>(picture.height),
                    static_cast<unsigned>(picture.planes)));
    if (image == nullptr) return false;
    vxImageUseBigEndian(image.get());
    for (int z = 0; z < picture.planes; ++z) {
        for (int y = 0; y < picture.height; ++y) {
            auto *row = const_cast<std::uint16_t *>(picture.row(y, z));  // which is only read
            if (vxImagePutRow(image.get(), row, y, z) >= 0) continue;
            vxImageDiscard(std::move(image));
            return false;
        }
    }
    return vxImageFinish(std::move(image));
}

#endif
