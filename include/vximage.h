/*
 * vximage.h: raster images in the SGI image file format.
 *
 * An image is zSize planes of ySize rows of xSize elements. An element takes one or two bytes in
 * the file, and rows are stored verbatim or run-length encoded. Whatever the file holds, a row
 * crosses this interface as an array of xSize unsigned 16-bit elements. Rows are named by y,
 * counted from 0 at the bottom of the picture, and by the plane z.
 *
 *     VxImage *image = vxImageOpen("wood.sgi", "r");
 *     if (image != NULL) {
 *         uint16_t *row = vxImageAllocRowBuffer(image);
 *         for (int y = 0; y < image->ySize; ++y) vxImageGetRow(image, row, y, 0);
 *         free(row);
 *         vxImageClose(image);
 *     }
 *
 * The file
 *
 *     position   length
 *     0          108      header: the first fields of VxImage, in their order
 *     108        44       zero
 *     152        360      not written; zero in a new file
 *     512        T        run-length: start of each row in the file, unsigned 32-bit
 *     512 + T    T        run-length: stored bytes of each row, signed 32-bit, -1 for none
 *     512 + 2T   rest     run-length: the rows, in the order in which they were put
 *     512        rest     verbatim: the rows, planes one behind the other
 *
 * T is 4 * ySize * zSize, and the tables are indexed by z * ySize + y. A run-length row is a
 * sequence of packets of elements, each as wide as the image's elements:
 *
 *     count             1 to 126 (127 is read too): the next element, count times
 *     0x80 + count      as many elements as count says follow
 *     0                 end of the row
 *
 * Byte order. The published format is big-endian. This library writes the order of the host
 * and reads both, telling them apart by the magic number. Other programs read the published
 * order only: for files that they are to read, call vxImageUsePublishedOrder right after
 * opening for writing.
 *
 * Errors are reported by number: a message of the catalogue "vxmsg" goes to the handler that
 * vxImageSetErrorHandler has set, or else to vxMessageReport with severity 6. Each function
 * names the messages it reports; after a message it returns its own failure result.
 *
 * Limits. Positions in a file are 32 bits wide: a row that would lie at or behind 4 GiB can
 * be neither put nor got, and is reported like one that falls short. Rows are read up to 32768
 * one-byte or 16383 two-byte elements when stored verbatim, and up to 32767 stored bytes when
 * run-length encoded; wider ones can be put and not got.
 *
 * A handle serves one thread at a time; two handles are independent.
 */
#ifndef VXIMAGE_H
#define VXIMAGE_H

#include "vxexports.h"

#include <stdint.h>

VX_BEGIN_C

enum {
    VX_IMAGE_READ = 1,        /* rows may be read */
    VX_IMAGE_WRITE = 2,       /* rows may be written */
    VX_IMAGE_EOF = 16,        /* the pixel stream has come to the last row */
    VX_IMAGE_ERROR = 32,      /* a row of the pixel stream or of a flush failed */
    VX_IMAGE_READWRITE = 128, /* never set: there is no mode for both directions */

    VX_IMAGE_MAGIC = 474,
    VX_IMAGE_VERBATIM = 0x0000,   /* storage: the high byte of `type`, ... */
    VX_IMAGE_RUN_LENGTH = 0x0100, /* ... combined with bytes per element, the low byte */
    VX_IMAGE_FILE_HEAD = 512      /* bytes before the rows or tables */
};

/*
 * The handle of an open image. Callers read its fields, and work pixelsLeft and nextPixel of
 * the pixel stream; the rest is the library's. The fields up to `colormap` are the header of
 * the file, unchecked when it is read but for the magic and the end of the name.
 */
typedef struct VxImage {
    uint16_t magic;      /* 474 */
    uint16_t type;       /* storage in the high byte, bytes per element (1 or 2) in the low one */
    uint16_t dimension;  /* 1: one row; 2: y counts; 3: y and z count */
    uint16_t xSize;      /* elements in a row */
    uint16_t ySize;      /* rows in a plane */
    uint16_t zSize;      /* planes */
    uint32_t minValue;   /* smallest element written; 10000000 before the first */
    uint32_t maxValue;   /* largest element written; 0 before the first */
    uint32_t wasteBytes; /* stored bytes of run-length rows that later ones replaced */
    char name[80];       /* terminated text */
    uint32_t colormap;   /* the caller's word */

    int32_t file;        /* descriptor */
    uint16_t flags;      /* VX_IMAGE_READ and so on */
    uint16_t byteSwap;   /* not 0: the file's byte order is the reverse of the host's */
    uint16_t x;          /* 0 after open and each row seek, 1 once the stream wrote its last row */
    int16_t y, z;        /* row last sought, and the stream's current row */
    int16_t pixelsLeft;  /* elements of the stream before the next call */
    uint16_t *nextPixel; /* cursor of the stream */
    uint16_t *pixelBuffer; /* row of the stream; null until first used */
    uint16_t *rowBuffer;   /* rows on their way between file and caller */
    uint32_t fileOffset;   /* known position in the file; all ones when none is known */
    uint32_t appendOffset; /* run-length: where the next row goes */
    uint32_t *rowStarts;   /* run-length: the tables, in the host's order */
    int32_t *rowSizes;
} VxImage;

/* ---- Opening and closing -------------------------------------------------------------- */

/*
 * Opens an image by name. A mode that begins with "w" creates; every other first letter opens an
 * existing file, for reading if it is "r". A second letter "+" is refused.
 *
 * Creating takes more arguments, each an unsigned int of which the low 16 bits count: `type`,
 * the dimension, xSize, then ySize if the dimension is above 1, then zSize if it is above 2.
 *
 *     vxImageOpen("a.sgi", "w", VX_IMAGE_RUN_LENGTH | 1, 3, 640, 480, 3);
 *
 * The handle's `dimension` follows from the sizes: 3 if zSize is not 1, else 2 if ySize is not
 * 1, else 1. An existing file is written over in place and is not cut; it keeps its old tail
 * when the new image is shorter. The name of a new image is the catalogue's message 20364.
 *
 * The result is ended with vxImageClose. Null on failure, after one of these messages, with all
 * that was taken released again and the file closed:
 *
 *   20360  no memory for the handle            20367  no image; the number found instead of 474
 *   20361  mode with a "+"                     20368  no memory for the row tables, or more
 *   20363  cannot create; the name                    than 0x3FFFF000 bytes each
 *   20365  short write of the header           20369  the file ends before the end of the starts
 *   20366  short read of the header            20370  the file ends before the end of the sizes
 *                                              20371  no memory for a row; xSize
 *
 * A file that cannot be opened for reading gives null without a message. With a null name
 * descriptor 0 is the file.
 */
VX_API VxImage *vxImageOpen(const char *name, const char *mode, ...);

/*
 * The same on an open descriptor, at its current position. It has to be one that can seek: of a
 * pipe the header is read or written, and each row fails, or the tables of a run-length image do.
 * vxImageClose closes it; when opening fails it stays open and the caller's. A negative one gives
 * message 20363 with a null name when creating, and no message otherwise.
 */
VX_API VxImage *vxImageOpenFd(int file, const char *mode, ...);

/*
 * Ends a handle: flushes it, writes header and tables if it was opened for writing, releases
 * everything and closes the descriptor. A written file is complete only after this.
 *
 * The result is 0, or that of the system's close if it was not 0, after message 20355; the handle
 * is gone in both cases. When the header or a table cannot be written whole or reached (20352,
 * 20353, 20354) the result is -1 and the handle lives on: the caller may try again.
 */
VX_API int vxImageClose(VxImage *image);

/*
 * Brings a half-filled row of the pixel stream and the row tables to the file; the header
 * follows at close. Elements not filled yet are those of the row before, or zeros in the first.
 *
 * The result is 0, also for a handle opened for reading. -1 when the row failed (VX_IMAGE_ERROR is
 * set) or a table could not be written whole (20356, 20357).
 */
VX_API int vxImageFlush(VxImage *image);

/* ---- Rows ----------------------------------------------------------------------------- */

/*
 * Writes a row of xSize elements; `row` is unchanged on return. y does not count in dimension 1,
 * and z not below dimension 3. Rows may be put in any order and again. In a one-byte image
 * the low 8 bits of each element are stored.
 *
 * The result is xSize. -1 for a handle opened for reading, and after these messages: 20372 row out
 * of range, 20373 bad `dimension` (of a file taken over for reading and writing), 20377 short write
 * or a place that cannot be reached, 20378 and 20379 bad `type`. minValue and maxValue count the
 * row even if writing it failed; in a one-byte run-length image they count whole elements, in a
 * one-byte verbatim one the stored 8 bits.
 */
VX_API int vxImagePutRow(VxImage *image, uint16_t *row, int y, int z);

/*
 * Reads a row into xSize elements. The rules for y and z are those of vxImagePutRow.
 *
 * The result is xSize. -1 for a handle opened for writing and for a run-length row that was never
 * written, and after these messages: 20372 row out of range, 20373 bad `dimension`, 20374
 * and 20382 bad storage, 20381 bad element width, 20380 for a row that is not whole in the
 * file or cannot be reached, is beyond the limits above or is damaged: one that expands to more
 * than xSize elements, or whose packets run past its stored bytes.
 *
 * A stored row that ends early reads as zeros from there, and one without an end mark is good
 * when all xSize elements are there. Nothing but a damaged row changes `row` before it fails.
 */
VX_API int vxImageGetRow(VxImage *image, uint16_t *row, int y, int z);

/* 1 when y or z is out of range, else 0. A negative number is. */
VX_API int vxImageBadRow(VxImage *image, unsigned y, unsigned z);

/*
 * Moves to a row: notes y and z and seeks to where the row lies in the file, for a run-length row
 * never written to the start of the file. The result is the position, or -1: 20372 for a row out
 * of range (nothing is noted then), 20373 and 20374 for a bad `dimension` or storage, no message
 * for a position of 2^32 - 1 or more and for a seek that the system refused.
 */
VX_API long vxImageSeekRow(VxImage *image, unsigned y, unsigned z);

/*
 * The stored bytes of the run-length row in the handle's y and z, -1 if it was never written. 0
 * when `dimension` is not 1, 2 or 3, for a row out of range and for a verbatim image.
 */
VX_API int32_t vxImageRowSize(VxImage *image);

/*
 * Books a new run-length row of `size` bytes at appendOffset. A row out of range and a verbatim
 * image do nothing.
 */
VX_API void vxImageSetRowSize(VxImage *image, int32_t size, unsigned y, unsigned z);

/*
 * Room for a row, as new memory that the caller releases with free: ((xSize >> 6) + xSize) * 4
 * bytes and 2 more, which also holds the longest encoded row. Null without memory.
 */
VX_API uint16_t *vxImageAllocRowBuffer(VxImage *image);

/* ---- The pixel stream ----------------------------------------------------------------- */

/*
 * The stream walks an image element by element: rows ascending, planes ascending. The step of an
 * element is the caller's own:
 *
 *     reading   if (--image->pixelsLeft >= 0) value = *image->nextPixel++;
 *               else value = vxImageFillPixels(image);
 *     writing   if (--image->pixelsLeft >= 0) *image->nextPixel++ = value;
 *               else vxImageDrainPixels(image, value);
 *
 * A seek or a row call in between moves the stream to that row.
 */

/*
 * Loads the next row and returns its first element, 0 to 65535. -1 for a handle opened for
 * writing, without memory for the row (20358), and when the row fails (VX_IMAGE_ERROR). With the
 * last row the result is -1 as well and VX_IMAGE_EOF is set: the row is loaded, nextPixel is at
 * its first element, and pixelsLeft is xSize - 1. A further call loads row 0 of the last plane.
 * Rows count as 1 below dimension 2, planes below dimension 3. Other failures set pixelsLeft to 0.
 * Rows and planes up to 32767 and widths up to 32768 are reached.
 */
VX_API int vxImageFillPixels(VxImage *image);

/*
 * Writes the row that is full, if any, and stores the low 16 bits of `value` as the first element
 * of the next one. The result is `value`; -1 for a handle opened for reading, without memory
 * for the row (20359), and when the row failed (VX_IMAGE_ERROR is set, and the value is stored).
 * The last row stays in memory until a flush or the close.
 *
 * A value behind the last element of the image is not stored: the last row is written, VX_IMAGE_EOF
 * is set (and VX_IMAGE_ERROR when that row failed, which is given up then: the close does not try
 * again), the result is -1, and it is -1 for every further call until a seek or a row call moves
 * the stream. No row is written then that the image has no place for.
 */
VX_API int32_t vxImageDrainPixels(VxImage *image, int32_t value);

/* ---- Name and colormap ---------------------------------------------------------------- */

/* Copies at most 79 bytes, never half a character, and terminates. */
VX_API void vxImageSetName(VxImage *image, const char *text);

VX_API void vxImageSetColormap(VxImage *image, uint32_t value);

/* ---- The row codec -------------------------------------------------------------------- */

/*
 * Encodes `count` elements as a run-length row and returns its length with the end mark, in
 * elements of the output. Widths are bytes per element, 1 or 2; from 2 to 1 the low 8 bits of
 * each element are stored, while runs are told by whole elements. `output` has room for
 * 2 * count + 1 elements, more than any row takes. A width that is neither 1 nor 2: message
 * 20375 with both widths, result 0, nothing written.
 */
VX_API int vxImageRleEncode(const void *input, int inputWidth, void *output, int outputWidth,
                            int count);

/*
 * Decodes one row up to its end mark. A bad width gives message 20376 with both widths, and
 * nothing is written. Neither the input nor the output has a bound here: the caller knows
 * that the row has an end mark and how far it expands. vxImageGetRow is safe with any file.
 */
VX_API void vxImageRleDecode(const void *input, int inputWidth, void *output, int outputWidth);

/* ---- The file below ------------------------------------------------------------------- */

/*
 * Moves the descriptor to a position unless it is known to be there. The result is the position,
 * or what the system's seek returned: -1 on failure, after which no position is known.
 */
VX_API long vxImageFileSeek(VxImage *image, uint32_t position);

/*
 * Read and write `count` bytes at the current position. The result is the number of bytes
 * transferred, or -1. After anything but `count` no position is known.
 */
VX_API int vxImageFileRead(VxImage *image, void *buffer, int count);
VX_API int vxImageFileWrite(VxImage *image, void *buffer, int count);

/* ---- Byte order ----------------------------------------------------------------------- */

/*
 * Reverse the bytes of each 16-bit or 32-bit word of `byteCount` bytes at any address. Bytes
 * behind the last whole word stay; a count below one word does nothing.
 */
VX_API void vxSwapShorts(void *data, int byteCount);
VX_API void vxSwapLongs(void *data, int byteCount);

/* Reverses the words of the header, in the handle. Twice gives back what was. */
VX_API void vxImageSwapHeader(VxImage *image);

/*
 * Makes a new image a big-endian file, as other programs expect it. To be called right after
 * opening for writing, before the first row; header and tables follow at close.
 */
static inline void vxImageUsePublishedOrder(VxImage *image) {
    const uint16_t one = 1;
    image->byteSwap = *(const unsigned char *)&one;
}

/* ---- Errors --------------------------------------------------------------------------- */

/* Takes the text of an error; it is good until the handler returns. */
typedef void (*VxImageErrorHandler)(char *text);

/*
 * Sets the handler of all image errors of the process; null sends them to vxMessageReport
 * again. The slot is not locked: set it before other threads work on images.
 */
VX_API void vxImageSetErrorHandler(VxImageErrorHandler handler);

/* Reports a message of the catalogue with its arguments. */
VX_API void vxImageError(int id, ...);

VX_END_C

#endif
