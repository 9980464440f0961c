/*
 * vximage.h: reads and writes SGI image files.
 *
 * A picture has zSize planes, a plane has ySize rows, and a row has xSize elements. The file holds
 * one or two bytes per element, and its rows are verbatim or run-length encoded. In memory a row is
 * always an array of xSize uint16_t. Values are not scaled: an element of one byte reads as 0 to
 * 255. A row is named by y, counted from 0 at the bottom of the picture, and by its plane z.
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
 *     512 + 2T   rest     run-length: the rows, in the order in which they were written
 *     512        rest     verbatim: the rows, one plane after the other
 *
 * T is 4 * ySize * zSize, and the tables are indexed by z * ySize + y. A run-length row is a
 * sequence of packets of elements, each as wide as the image's elements:
 *
 *     count             1 to 126 (127 is read too): the next element, count times
 *     0x80 + count      count elements follow
 *     0                 end of the row
 *
 * Byte order. Other programs read big-endian files only. A new file is in the byte order of the
 * machine, unless the caller asks for a big-endian one with vxImageUseBigEndian. Both orders can be
 * read; the magic number shows which one a file has.
 *
 * Errors. A function that fails reports a message and then returns its failure result. The message
 * goes to the handler set by vxImageSetErrorHandler. Without a handler it goes to vxMessageReport
 * with severity VX_SEVERITY_ERROR. vxmessages.h lists the messages; the comments here leave out
 * their prefix VX_MESSAGE_IMAGE_.
 *
 * Limits. Positions in a file have 32 bits. A row that starts after VX_IMAGE_MAX_POSITION cannot be
 * written or read, and is reported as a short write or read. Nor can a run-length row be written
 * that would end after it. Rows beyond VX_IMAGE_MAX_ONE_BYTE_ROW, VX_IMAGE_MAX_TWO_BYTE_ROW or
 * VX_IMAGE_MAX_STORED_ROW can be written but not read.
 *
 * Use a handle from one thread at a time. Separate handles are independent.
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
    VX_IMAGE_ERROR = 32,      /* the stream or a flush could not read or write a row */
    VX_IMAGE_READWRITE = 128, /* never set: there is no mode for both directions */

    VX_IMAGE_MAGIC = 474,
    VX_IMAGE_VERBATIM = 0x0000,   /* storage: the high byte of `type`, ... */
    VX_IMAGE_RUN_LENGTH = 0x0100, /* ... combined with bytes per element, the low byte */
    VX_IMAGE_FILE_HEAD = 512,     /* bytes before the rows or tables */

    VX_IMAGE_MAX_SIDE = 65535,         /* elements of a row, rows of a plane, planes */
    VX_IMAGE_MAX_NAME = 79,            /* bytes of a name */
    VX_IMAGE_MAX_ONE_BYTE_ROW = 32768, /* elements of a verbatim row that can be read, ... */
    VX_IMAGE_MAX_TWO_BYTE_ROW = 16383, /* ... by bytes per element */
    VX_IMAGE_MAX_STORED_ROW = 32767    /* stored bytes of a run-length row that can be read */
};

/* The last position that can be reached in a file; too large for an enumerator in C. */
#define VX_IMAGE_MAX_POSITION 0xFFFFFFFEU

/*
 * The handle of an open image. Callers read its fields, and change pixelsLeft and nextPixel in
 * the steps of the pixel stream. All other changes are the library's, except where a comment says
 * otherwise. The fields up to `colormap` are the header of the file. Opening checks the magic
 * number and terminates the name; it does not check the other fields.
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
    uint16_t byteSwap;   /* not 0: the byte order of the file is not that of the machine */
    uint16_t x;          /* 0 after open and each row seek, 1 once the stream wrote its last row */
    int16_t y, z;        /* the row of the last seek, which is the next row of the stream */
    int16_t pixelsLeft;  /* elements of the stream before the next call */
    uint16_t *nextPixel; /* cursor of the stream */
    uint16_t *pixelBuffer; /* row of the stream; null until first used */
    uint16_t *rowBuffer;   /* rows on their way between file and caller */
    uint32_t fileOffset;   /* known position in the file; all ones when none is known */
    uint32_t appendOffset; /* run-length: where the next row is written */
    uint32_t *rowStarts;   /* run-length: the tables, in the byte order of the machine */
    int32_t *rowSizes;
} VxImage;

/* ---- Opening and closing -------------------------------------------------------------- */

/*
 * Opens an image by name. The first letter of the mode decides: "w" creates a file, "r" opens an
 * existing file for reading, and any other letter opens an existing file as if for writing (see
 * vxImageOpenFd). A "+" after the first letter is refused.
 *
 * Creating takes more arguments of type unsigned int, reduced to 16 bits: `type`, the dimension,
 * xSize, then ySize if the dimension is above 1, then zSize if it is above 2.
 *
 *     vxImageOpen("a.sgi", "w", VX_IMAGE_RUN_LENGTH | 1, 3, 640, 480, 3);
 *
 * The handle's `dimension` is 3 unless zSize is 1, otherwise 2 unless ySize is 1, otherwise 1,
 * whatever dimension was given. An existing file is overwritten in place without being truncated:
 * if the new image is shorter, the old bytes after its end remain. A new image is named after the
 * text of the message DEFAULT_NAME.
 *
 * Close the result with vxImageClose. On failure it is null after one of these messages; everything
 * is released, and the file is closed:
 *
 *   HANDLE_OUT_OF_MEMORY
 *   READ_WRITE_MODE         the mode has a "+"
 *   CREATE_FAILED           the argument is the name
 *   CREATE_HEADER_FAILED    short write
 *   HEADER_TRUNCATED        short read
 *   BAD_MAGIC               the argument is the magic number found
 *   TABLES_OUT_OF_MEMORY    also for tables of more than 0x3FFFF000 bytes each
 *   STARTS_TRUNCATED        the file ends before the end of the row starts
 *   SIZES_TRUNCATED         the file ends before the end of the row sizes
 *   ROW_OUT_OF_MEMORY       the argument is xSize
 *
 * A file that cannot be opened for reading gives null without a message; errno then has the reason.
 * After a message errno is unspecified. With a null name the file is descriptor 0.
 */
VX_API VxImage *vxImageOpen(const char *name, const char *mode, ...);

/*
 * The same for an open descriptor, at its current position. The descriptor has to be seekable: on a
 * pipe the header works, but every row (or the row tables) fails. vxImageClose closes it. If
 * opening fails, it stays open and belongs to the caller. A negative descriptor gives
 * CREATE_FAILED with a null name when creating, and no message otherwise; errno is unchanged.
 *
 * A first letter other than "r" and "w" is of use here only: with a descriptor for both directions
 * it changes an image in place. New run-length rows would then overwrite the stored ones, because
 * appendOffset starts right after the tables. Before writing the first row, set it to the length of
 * the file. (vxImageOpen opens the file read-only, so that nothing can be written.)
 */
VX_API VxImage *vxImageOpenFd(int file, const char *mode, ...);

/*
 * Ends a handle: flushes it, writes header and tables if it was opened for writing, releases
 * everything and closes the descriptor. A written file is complete only after this.
 *
 * The result is 0, or that of the system's close if it was not 0, after CLOSE_FAILED; the handle is
 * gone in both cases. The result is -1 if the header or a table could not be written
 * (CLOSE_HEADER_FAILED, CLOSE_STARTS_FAILED, CLOSE_SIZES_FAILED). The handle then stays valid, and
 * the caller may try again. With a pipe, or a file opened by name with mode "a", each try fails:
 * set `flags` to VX_IMAGE_READ, and the next close only releases the handle and the descriptor.
 * The system's close may return -1 too: only a message tells the two cases apart. In C++ use
 * vxImageFinish of vxhandles.h, which always ends the handle.
 *
 * The result does not show whether the pending row of a pixel stream could be written. To learn
 * that, call vxImageFlush first.
 */
VX_API int vxImageClose(VxImage *image);

/*
 * Writes the pending row of the pixel stream, full or partly filled, and the row tables to the
 * file; the header follows at close. Elements not yet filled are those of the row before, or zeros
 * in the first row. The row remains pending: the next flush and the close write it again, and a
 * run-length row then wastes the bytes of its earlier copy.
 *
 * The result is 0, also for a handle opened for reading. It is -1 if the row failed
 * (VX_IMAGE_ERROR is set) or a table could not be written (FLUSH_STARTS_FAILED,
 * FLUSH_SIZES_FAILED).
 */
VX_API int vxImageFlush(VxImage *image);

/* ---- Rows ----------------------------------------------------------------------------- */

/*
 * Writes a row of xSize elements; `row` is unchanged on return. y is ignored in dimension 1, and z
 * in dimensions 1 and 2. Rows may be written in any order, and more than once. In a one-byte image
 * the low 8 bits of each element are stored.
 *
 * The result is xSize. It is -1 for a handle opened for reading, and after these messages:
 * ROW_OUT_OF_RANGE; BAD_DIMENSION (of an existing file); ROW_WRITE_FAILED for a short write and a
 * position that cannot be reached; WRITE_BAD_WIDTH and WRITE_BAD_STORAGE for a bad `type`. minValue
 * and maxValue include the row even if writing it failed. They count 16 bits of each element, but
 * in a one-byte verbatim image the 8 bits stored.
 */
VX_API int vxImagePutRow(VxImage *image, uint16_t *row, int y, int z);

/*
 * Reads a row into xSize elements. y and z are treated as in vxImagePutRow.
 *
 * The result is xSize. It is -1 for a handle opened for writing, for a run-length row that nobody
 * has written, and after these messages: ROW_OUT_OF_RANGE, BAD_DIMENSION, BAD_STORAGE followed by
 * READ_BAD_STORAGE, READ_BAD_WIDTH, and ROW_READ_FAILED. The last one is for a row that is
 * incomplete in the file, cannot be reached, exceeds the limits above or is damaged: its packets
 * expand to more than xSize elements or run past its stored bytes.
 *
 * If a stored row ends early, the missing elements read as zeros. A row without an end mark is
 * valid if it has all xSize elements. A call that fails leaves `row` unchanged, except on a
 * damaged row.
 */
VX_API int vxImageGetRow(VxImage *image, uint16_t *row, int y, int z);

/* Returns 1 if y or z is out of range (negative values are), else 0. */
VX_API int vxImageBadRow(VxImage *image, unsigned y, unsigned z);

/*
 * Moves to a row: stores y and z in the handle and seeks to the row's position in the file, or to
 * the start of the file if no run-length row was written there. The result is the position. It is
 * -1 after ROW_OUT_OF_RANGE (y and z are not stored then), BAD_DIMENSION and BAD_STORAGE, and
 * without a message for a position above VX_IMAGE_MAX_POSITION and a seek that the system refused.
 * Where a long has 32 bits, a position of 2 GiB or more is returned as the same 32 bits.
 */
VX_API long vxImageSeekRow(VxImage *image, unsigned y, unsigned z);

/*
 * The stored bytes of the run-length row at the handle's y and z, or -1 if there is none yet. 0 for
 * a verbatim image, a row out of range and a bad `dimension`.
 */
VX_API int32_t vxImageRowSize(VxImage *image);

/*
 * Records a new run-length row of `size` bytes at appendOffset. Does nothing for a row out of range
 * and for a verbatim image.
 */
VX_API void vxImageSetRowSize(VxImage *image, int32_t size, unsigned y, unsigned z);

/*
 * Allocates a row buffer of ((xSize >> 6) + xSize) * 4 + 2 bytes, enough for the longest encoded
 * row too. The caller releases it with free. Null if out of memory.
 */
VX_API uint16_t *vxImageAllocRowBuffer(VxImage *image);

/* ---- The pixel stream ----------------------------------------------------------------- */

/*
 * The stream visits all elements of an image: ascending in a row, then by rows, then by planes.
 * Callers write the step from one element to the next themselves:
 *
 *     reading   if (--image->pixelsLeft >= 0) value = *image->nextPixel++;
 *               else value = vxImageFillPixels(image);
 *     writing   if (--image->pixelsLeft >= 0) *image->nextPixel++ = value;
 *               else vxImageDrainPixels(image, value);
 *
 * A seek or a row call in between moves the stream to that row.
 *
 * The stream serves rows of up to 32768 elements, and rows and planes 0 to 32767. If xSize is
 * larger, the first row fails when it is read. When written, each value goes to a row of its own,
 * and from the second value on each call fails.
 *
 * On a handle opened for the other direction every step gives -1, however often it is taken.
 */

/*
 * Loads the next row and returns its first element, 0 to 65535. The result is -1 for a handle
 * opened for writing, if out of memory (FILL_OUT_OF_MEMORY), and if the row failed (VX_IMAGE_ERROR
 * is set). pixelsLeft is 0 after each of these failures.
 *
 * With the last row the result is -1, too, and VX_IMAGE_EOF is set: the row is loaded, nextPixel is
 * at its first element, and pixelsLeft is xSize - 1. So steps give all its elements but the last,
 * which is then at nextPixel. A further call loads row 0 of the last plane. Dimension 1 has one
 * row, and dimensions 1 and 2 have one plane.
 */
VX_API int vxImageFillPixels(VxImage *image);

/*
 * Writes the row that was filled, if any, and starts the next one with the low 16 bits of `value`.
 * The result is `value`. It is -1 for a handle opened for reading, if out of memory
 * (DRAIN_OUT_OF_MEMORY), and if the row failed; then VX_IMAGE_ERROR is set, and the value is
 * stored. The last row stays in memory until a flush or the close.
 *
 * If the image is full, the last row is written, VX_IMAGE_EOF is set, `value` is discarded and the
 * result is -1. It stays -1, without another write, until a seek or a row call moves the stream. If
 * that last row failed, VX_IMAGE_ERROR is set, too; neither a flush nor the close tries it again.
 */
VX_API int32_t vxImageDrainPixels(VxImage *image, int32_t value);

/* ---- Name and colormap ---------------------------------------------------------------- */

/* Copies up to VX_IMAGE_MAX_NAME bytes, never half a character, and terminates. */
VX_API void vxImageSetName(VxImage *image, const char *text);

VX_API void vxImageSetColormap(VxImage *image, uint32_t value);

/* ---- The row codec -------------------------------------------------------------------- */

/*
 * Encodes `count` elements as a run-length row and returns its length with the end mark, in
 * elements of the output. Widths are bytes per element, 1 or 2. From 2 to 1 only the
 * low 8 bits are stored, but only elements equal in all 16 bits form a run. `output` must have room
 * for 2 * count + 1 elements, more than any row takes. A width other than 1 or 2 gives
 * ENCODE_BAD_WIDTH with both widths and the result 0, and nothing is written.
 */
VX_API int vxImageRleEncode(const void *input, int inputWidth, void *output, int outputWidth,
                            int count);

/*
 * Decodes one row up to its end mark. A width other than 1 or 2 gives DECODE_BAD_WIDTH with both
 * widths, and nothing is written. There are no bounds: the caller must know that the row has an end
 * mark and that `output` has room for all its elements. For a row of a file use vxImageGetRow,
 * which is safe with any file.
 */
VX_API void vxImageRleDecode(const void *input, int inputWidth, void *output, int outputWidth);

/* ---- The file below ------------------------------------------------------------------- */

/*
 * Moves the descriptor to a position unless it is known to be there. The result is the position,
 * or -1 if the system's seek failed; then no position is known. Where a long has 32 bits, a
 * position of 2 GiB or more is returned as the same 32 bits.
 */
VX_API long vxImageFileSeek(VxImage *image, uint32_t position);

/*
 * Read and write `count` bytes at the current position. The result is the number of bytes
 * transferred, or -1. If it is not `count`, no position is known afterwards.
 */
VX_API int vxImageFileRead(VxImage *image, void *buffer, int count);
VX_API int vxImageFileWrite(VxImage *image, void *buffer, int count);

/* ---- Byte order ----------------------------------------------------------------------- */

/*
 * Reverse the bytes of each 16-bit or 32-bit word in `byteCount` bytes at any address. Bytes after
 * the last complete word are unchanged; a count below one word does nothing.
 */
VX_API void vxSwapShorts(void *data, int byteCount);
VX_API void vxSwapLongs(void *data, int byteCount);

/* Reverses the words of the header, in the handle. A second call restores it. */
VX_API void vxImageSwapHeader(VxImage *image);

/*
 * Makes a new image a big-endian file, as other programs expect it. Call it right after opening
 * for writing, before the first row; header and tables follow at close.
 */
static inline void vxImageUseBigEndian(VxImage *image) {
    const uint16_t one = 1;
    image->byteSwap = *(const unsigned char *)&one;
}

/* ---- Errors --------------------------------------------------------------------------- */

/* Takes the text of a message, which is valid until the handler returns. */
typedef void (*VxImageErrorHandler)(char *text);

/*
 * Sets the handler for the image errors of the process; null sends them to vxMessageReport again.
 * The handler runs on the thread whose call fails, before that call returns. There is no lock: set
 * the handler before other threads work on images.
 */
VX_API void vxImageSetErrorHandler(VxImageErrorHandler handler);

/* Reports a message of vxmessages.h with its arguments. */
VX_API void vxImageError(int id, ...);

VX_END_C

#endif
