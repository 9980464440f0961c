/*
 * vxtext.h: parts of file names, lines of text files, classes of characters, and streams that pin
 * the numeric locale.
 *
 * Text is in the multibyte code page of the process. No function takes the second byte of a
 * double-byte character for a separator. Only \ can be such a byte; . / : and white space cannot.
 */
#ifndef VXTEXT_H
#define VXTEXT_H

#include "vxexports.h"

#include <stdio.h>

VX_BEGIN_C

/* ---- File names ----------------------------------------------------------------------- */

/*
 * Six functions that work on the text of a name and access no file. They share one static buffer of
 * 256 bytes for their results: the next call of any of them, on any thread, overwrites it. Results
 * are cut at 255 bytes, or at 254 if the cut would split a character. A null name gives null and
 * leaves the buffer unchanged.
 *
 * A name may be the result of an earlier call, as in vxFileStripExtension(vxFileBaseName(path)). An
 * extension may not.
 *
 *   name           Strip     Extension  BaseName   Directory  Replace with null
 *   maps\oak.sgi   maps\oak  sgi        oak.sgi    maps       maps\oak
 *   v1.2/oak       v1                   oak        v1.2       v1.2/oak
 *   d:oak.sgi      d:oak     sgi        oak.sgi    d:         d:oak
 *   .hidden                  hidden     .hidden    .
 *   x\y/oak.sgi    x\y/oak   sgi        y/oak.sgi  x          x\y/oak
 */

/* Returns the name up to its last dot, in whatever component. Returns the complete name if there
 * is no dot or its index is above 255. */
VX_API const char *vxFileStripExtension(const char *name);

/* Returns the text after the last dot. Returns the empty text if there is no dot, or if a \ or /
 * follows it. */
VX_API const char *vxFileExtension(const char *name);

/* Returns the name, a dot and the extension. The dot is added whatever the name ends in, and for an
 * empty extension too. A null extension adds nothing. */
VX_API const char *vxFileAddExtension(const char *name, const char *extension);

/*
 * Removes the text from the last dot of the last component, dot included, and appends a dot and the
 * extension. A null extension appends nothing. The last component begins at the last / after the
 * last \ of the name, else at that \. Without a \ it begins at the last /, else at the start. A
 * dot at an index above 255 is ignored.
 */
VX_API const char *vxFileReplaceExtension(const char *name, const char *extension);

/* Returns the text after the last \, else after the last /, else after the last colon, else the
 * complete name. So a / is part of the result if there is a \ before it. */
VX_API const char *vxFileBaseName(const char *name);

/*
 * Returns the text before the last \, else before the last /, else up to and including the last
 * colon, else ".". A \ or / at an index above 255 and a colon at an index above 254 are ignored.
 * "/file" gives the empty text.
 */
VX_API const char *vxFileDirectory(const char *name);

/* ---- Lines ---------------------------------------------------------------------------- */

/* Writes the byte 10 and returns the result of putc: 10, or EOF on failure. */
VX_API int vxWriteNewline(FILE *stream);

/*
 * Reads a line as fgets does, up to `size` - 1 bytes, and removes all line feeds and carriage
 * returns from its end. A longer line is returned in pieces. A size of 1 reads nothing and always
 * gives the empty text; a size of 0 or less gives null. Returns `buffer`. Returns null where fgets
 * does, at the end of the file or if reading fails, with the buffer as fgets left it.
 */
VX_API char *vxReadLine(char *buffer, int size, FILE *stream);

/* As vxReadLine, but removes white space from both ends. A line of white space gives the empty
 * text. */
VX_API char *vxReadTrimmedLine(char *buffer, int size, FILE *stream);

/* Remove white space from the end, or from the start, of a text in place. White space is what
 * isspace accepts in the current locale: always blank, tab, line feed, vertical tab, form feed and
 * carriage return. */
VX_API void vxTrimRight(char *text);
VX_API void vxTrimLeft(char *text);

/* ---- Classes of characters ------------------------------------------------------------ */

/*
 * Return the length of the character at the start of a text, 1 or 2 bytes, if it is a digit, a
 * letter, or either. Return 0 for any other character, at the terminator and for a lead byte
 * without a trail byte. So the result is also the step to the next character.
 *
 * For one byte, isdigit, isalpha and isalnum decide. Double-byte digits are the full-width digits.
 * Double-byte letters are the letters of every script in the locale, ideographs and kana included.
 * A code page with characters of more than two bytes, such as UTF-8, is handled byte by byte.
 */
VX_API int vxCharIsDigit(const char *character);
VX_API int vxCharIsAlpha(const char *character);
VX_API int vxCharIsAlnum(const char *character);

/* ---- Streams that pin the numeric locale ---------------------------------------------- */

/*
 * Opens a stream with fopen and sets the numeric locale (LC_NUMERIC) of the process to "C" until
 * vxStreamClose closes the stream. So printf and scanf use a decimal point in every locale. Returns
 * null if fopen fails, with no other effect.
 *
 * The locale belongs to the process: all threads see the change, and calls of these two functions
 * must not overlap. Close streams in the reverse order of opening; otherwise the last one to close
 * restores the "C" that it found. If fclose closes a pinned stream, the locale stays pinned, and
 * its saved locale is inherited by the next stream at that address.
 *
 * Streams that are still open when the library is unloaded stay open, and the locale stays "C".
 *
 * Out of memory for the entry of a stream, the process ends: it writes "out of memory" to stderr
 * and calls exit(1). Out of memory for the name of the locale, vxStreamClose restores nothing.
 */
VX_API FILE *vxStreamOpen(const char *path, const char *mode);

/*
 * Restores the numeric locale from before vxStreamOpen, then closes the stream. Returns the result
 * of fclose: 0, or EOF on failure. The stream is closed either way. If vxStreamOpen did not open
 * the stream, it is closed and the locale does not change.
 */
VX_API int vxStreamClose(FILE *stream);

VX_END_C

#endif
