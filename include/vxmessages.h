/*
 * vxmessages.h: the messages of the library, each with its number, name and text.
 *
 * Messages report the failures of image files and pools. They form the catalogue "vxmsg", which
 * libvxframework holds in English (see vxframework.h). The numbers and their arguments never
 * change; a product may bring texts of its own. The conversions in a text are those of printf and
 * show the arguments of the message: %d is an int, %s a text that may be null.
 *
 * vximage.h and vxpool.h name the messages that each function reports.
 */
#ifndef VXMESSAGES_H
#define VXMESSAGES_H

/* The catalogue that all messages of the library belong to. */
#define VX_MESSAGE_CATALOGUE "vxmsg"

/* The severities of reports. */
enum {
    VX_SEVERITY_FATAL = 5, /* the process ends */
    VX_SEVERITY_ERROR = 6  /* an operation failed */
};

/*
 * All messages, as X(number, name, text) in ascending order. Define X to make a table of them.
 *
 * A pool reports VX_MESSAGE_POOL_OUT_OF_MEMORY with severity VX_SEVERITY_FATAL. Failures of images
 * have the severity VX_SEVERITY_ERROR. Two numbers are not failures: the library never reports
 * VX_MESSAGE_IMAGE_OPEN_FAILED, and the text of VX_MESSAGE_IMAGE_DEFAULT_NAME names a new image.
 */
/* clang-format off */
#define VX_MESSAGES(X) \
    X(4912, VX_MESSAGE_POOL_OUT_OF_MEMORY, "out of memory: a pool asked for a block of %d bytes") \
    X(20352, VX_MESSAGE_IMAGE_CLOSE_HEADER_FAILED, "closing an image: cannot write the header") \
    X(20353, VX_MESSAGE_IMAGE_CLOSE_STARTS_FAILED, "closing an image: cannot write the row starts") \
    X(20354, VX_MESSAGE_IMAGE_CLOSE_SIZES_FAILED, "closing an image: cannot write the row sizes") \
    X(20355, VX_MESSAGE_IMAGE_CLOSE_FAILED, "closing an image: cannot close the file") \
    X(20356, VX_MESSAGE_IMAGE_FLUSH_STARTS_FAILED, "flushing an image: cannot write the row starts") \
    X(20357, VX_MESSAGE_IMAGE_FLUSH_SIZES_FAILED, "flushing an image: cannot write the row sizes") \
    X(20358, VX_MESSAGE_IMAGE_FILL_OUT_OF_MEMORY, "out of memory: cannot read an image pixel by pixel") \
    X(20359, VX_MESSAGE_IMAGE_DRAIN_OUT_OF_MEMORY, "out of memory: cannot write an image pixel by pixel") \
    X(20360, VX_MESSAGE_IMAGE_HANDLE_OUT_OF_MEMORY, "out of memory: no handle for an image") \
    X(20361, VX_MESSAGE_IMAGE_READ_WRITE_MODE, "cannot open an image for both reading and writing") \
    X(20362, VX_MESSAGE_IMAGE_OPEN_FAILED, "cannot open an image") \
    X(20363, VX_MESSAGE_IMAGE_CREATE_FAILED, "cannot create the image \"%s\"") \
    X(20364, VX_MESSAGE_IMAGE_DEFAULT_NAME, "untitled") \
    X(20365, VX_MESSAGE_IMAGE_CREATE_HEADER_FAILED, "creating an image: cannot write the header") \
    X(20366, VX_MESSAGE_IMAGE_HEADER_TRUNCATED, "opening an image: the header is incomplete") \
    X(20367, VX_MESSAGE_IMAGE_BAD_MAGIC, "opening an image: not an SGI image (magic %d)") \
    X(20368, VX_MESSAGE_IMAGE_TABLES_OUT_OF_MEMORY, "out of memory: no row tables for an image") \
    X(20369, VX_MESSAGE_IMAGE_STARTS_TRUNCATED, "opening an image: the table of row starts is incomplete") \
    X(20370, VX_MESSAGE_IMAGE_SIZES_TRUNCATED, "opening an image: the table of row sizes is incomplete") \
    X(20371, VX_MESSAGE_IMAGE_ROW_OUT_OF_MEMORY, "out of memory: no buffer for image rows of %d elements") \
    X(20372, VX_MESSAGE_IMAGE_ROW_OUT_OF_RANGE, "the image has no such row") \
    X(20373, VX_MESSAGE_IMAGE_BAD_DIMENSION, "the dimension of an image must be 1, 2 or 3") \
    X(20374, VX_MESSAGE_IMAGE_BAD_STORAGE, "the storage of an image must be verbatim or run-length") \
    X(20375, VX_MESSAGE_IMAGE_ENCODE_BAD_WIDTH, "encoding a row: %d and %d bytes per element; each must be 1 or 2") \
    X(20376, VX_MESSAGE_IMAGE_DECODE_BAD_WIDTH, "decoding a row: %d and %d bytes per element; each must be 1 or 2") \
    X(20377, VX_MESSAGE_IMAGE_ROW_WRITE_FAILED, "writing an image: cannot write a complete row") \
    X(20378, VX_MESSAGE_IMAGE_WRITE_BAD_WIDTH, "writing an image: its elements must be 1 or 2 bytes wide") \
    X(20379, VX_MESSAGE_IMAGE_WRITE_BAD_STORAGE, "writing an image: its storage must be verbatim or run-length") \
    X(20380, VX_MESSAGE_IMAGE_ROW_READ_FAILED, "reading an image: a row is damaged or incomplete") \
    X(20381, VX_MESSAGE_IMAGE_READ_BAD_WIDTH, "reading an image: its elements must be 1 or 2 bytes wide") \
    X(20382, VX_MESSAGE_IMAGE_READ_BAD_STORAGE, "reading an image: its storage must be verbatim or run-length")
/* clang-format on */

/* The numbers by name. */
enum {
#define VX_MESSAGE_NUMBER(number, name, text) name = (number),
    VX_MESSAGES(VX_MESSAGE_NUMBER)
#undef VX_MESSAGE_NUMBER
};

#endif
