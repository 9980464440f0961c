/*
 * vxtext.h: file names taken apart, lines of text files, classes of characters, and streams that
 * pin the numeric locale.
 *
 * Text is in the multibyte code page of the process. The second byte of a double-byte character is
 * never taken for a dot, a separator or white space, though it may have the value of one.
 */
#ifndef VXTEXT_H
#define VXTEXT_H

#include "vxexports.h"

#include <stdio.h>

VX_BEGIN_C

/* ---- File names ----------------------------------------------------------------------- */

/*
 * Six functions that work on the text of a name alone. Each answers in one static buffer of 256
 * bytes that they share: the next call of any of them, from whatever thread, overwrites it. Text
 * is cut at 255 bytes, or at 254 where the 255th is only half of a character. A null name gives
 * null and leaves the buffer alone.
 *
 * A name may itself be the result of an earlier call, as in
 * vxFileStripExtension(vxFileBaseName(path)); an extension may not.
 *
 *   name           Strip     Extension  BaseName   Directory  Replace with null
 *   dir\file.txt   dir\file  txt        file.txt   dir        dir\file
 *   dir.d/file     dir                  file       dir.d      dir.d/file
 *   c:file.txt     c:file    txt        file.txt   c:         c:file
 *   .profile                 profile    .profile   .
 *   a\b/c.d        a\b/c     d          b/c.d      a          a\b/c
 */

/* The name up to its last dot, wherever that dot is; the whole name when the dot lies at an
 * index above 255 or there is none. */
VX_API const char *vxFileStripExtension(const char *name);

/* What follows the last dot; the empty text without a dot, or with a \ or / behind it. */
VX_API const char *vxFileExtension(const char *name);

/* The name, a dot and the extension. The dot is added whatever the name ends in, and for an empty
 * extension; a null extension adds nothing. */
VX_API const char *vxFileAddExtension(const char *name, const char *extension);

/*
 * The name with what follows the last dot of its last component, that dot included, replaced by a
 * dot and the extension; with a null extension by nothing. The last component begins at the last /
 * behind the last \ of the name. With no / behind
 * that \ it begins at the \. A dot at an index above 255 is not seen.
 */
VX_API const char *vxFileReplaceExtension(const char *name, const char *extension);

/* What follows the last \, else the last /, else the last colon, else the whole name. So a / is
 * part of the component where there is a \ before it. */
VX_API const char *vxFileBaseName(const char *name);

/*
 * What precedes the last \, else the last /, else the last colon, which stays on; else ".". A \
 * or / at an index above 255, or a colon at one above 254, is passed over. "/file" gives the empty
 * text.
 */
VX_API const char *vxFileDirectory(const char *name);

/* ---- Lines ---------------------------------------------------------------------------- */

/* Writes the byte 10; gives what putc gives: 10, or EOF on failure. */
VX_API int vxWriteNewline(FILE *stream);

/*
 * Reads a line as fgets does, up to `size` - 1 bytes (a size of 1 reads nothing and is always the
 * empty text), and takes all line feeds and carriage returns off its end. A line too long for that
 * comes in pieces. A size of 0 or less gives null. Returns `buffer`, or null at the end of the file
 * or on a read error, with the buffer as fgets left it.
 */
VX_API char *vxReadLine(char *buffer, int size, FILE *stream);

/* vxReadLine, and then white space off both ends. A line of white space is the empty text. */
VX_API char *vxReadTrimmedLine(char *buffer, int size, FILE *stream);

/* Take white space off the end, or off the start, of a text, in place. White space is what the
 * locale says (isspace): always blank, tab, line feed, vertical tab, form feed, carriage return. */
VX_API void vxTrimRight(char *text);
VX_API void vxTrimLeft(char *text);

/* ---- Classes of characters ------------------------------------------------------------ */

/*
 * The length in bytes, 1 or 2, of the character at a place in a text when it is a digit, a letter,
 * or either; else 0, also at the terminator and at a lead byte without a trail byte. So the
 * result serves as an answer and as the step to the next character.
 *
 * One byte is judged by isdigit, isalpha and isalnum. Of the double-byte characters the full-width
 * digits are digits, and letters are those of every script that the locale calls so, ideographs
 * and kana included. A code page with characters of more than two bytes, UTF-8 first of all, is
 * taken byte by byte.
 */
VX_API int vxCharIsDigit(const char *character);
VX_API int vxCharIsAlpha(const char *character);
VX_API int vxCharIsAlnum(const char *character);

/* ---- Streams that pin the numeric locale ---------------------------------------------- */

/*
 * fopen that sets the numeric locale (LC_NUMERIC) of the process to "C" until the stream is
 * closed by vxStreamClose, so that printf and scanf use a point for decimals whatever the user's
 * locale says. Null when fopen fails, with no other effect.
 *
 * The locale belongs to the process: all threads see the change, and opening and closing must not
 * overlap. Streams are closed in the reverse order of their opening; otherwise the last one to
 * close brings back the "C" that it found. A pinned stream that was closed by fclose leaves the
 * locale pinned and its note behind, which the next stream at the same address takes over.
 *
 * Streams that are still open when the library is unloaded stay open, and the locale stays "C".
 *
 * When there is no memory for the note of a stream the process ends: "out of memory" on the
 * standard error stream, and exit(1). Without memory for the name of the locale, the close brings
 * nothing back.
 */
VX_API FILE *vxStreamOpen(const char *path, const char *mode);

/*
 * Brings the numeric locale back to what it was when the stream was opened, then closes the
 * stream. Returns what fclose returns: 0, or EOF on failure, and the stream is gone either way. A
 * stream that vxStreamOpen did not open is closed and the locale left alone.
 */
VX_API int vxStreamClose(FILE *stream);

VX_END_C

#endif
