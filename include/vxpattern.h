/*
 * vxpattern.h: matching text against wildcards.
 *
 * A wildcard is compiled once, into a plain byte string in the caller's buffer. Any number of
 * subjects can then be matched against it:
 *
 *     char pattern[VX_PATTERN_SIZE];
 *     if (vxCompileWildcard("*.[is]gi", pattern) && vxMatchPattern("wood.sgi", pattern)) ...
 *
 *   *         any bytes, or none, up to the end of the line
 *   ?         any one byte except a line feed
 *   [abc]     one character of the list; ^ has no meaning in it
 *   [~abc]    one character that is neither in the list nor a line feed
 *   [a-c]     a range, if both ends are letters or digits and the first end is the lesser one;
 *             any other - is a member. After an escape or a range, a further - reuses the last
 *             plain character that was followed by -
 *   \c        the character c without any other meaning; \n and \t are line feed and tab
 *   other     that character; case counts
 *
 * Three rules surprise. A * is short for ?*, the byte any number of times, so \* matches any number
 * of question marks and [*] matches a question mark or a star. A ] right after [ closes the list.
 * A trailing \ escapes the implicit end anchor: foo\ matches "foo$" followed by anything.
 *
 * The subject counts as one line: the match begins at its start and ends at a line feed or at its
 * end. A subject of several lines matches if its first line does.
 *
 * In a double-byte code page a character of two bytes is one character in a list or as itself, and
 * two bytes to * and ?. If an end of a range is such a character, only the first bytes of the two
 * ends count, as signed values. The values above the first end's, up to the second's, become bytes
 * of the list, where one may combine with the byte after it. The second end is not a member.
 *
 * A lead byte takes the byte after it, whatever that is. Outside a list, a lead byte before a byte
 * that is not a trail byte makes a wildcard that matches nothing, and so does a lead byte at the
 * end. The exceptions are ! * and ? after a lead byte: what such a wildcard matches is unspecified.
 */
#ifndef VXPATTERN_H
#define VXPATTERN_H

#include "vxexports.h"

VX_BEGIN_C

/* Bytes of a buffer for a compiled pattern. */
enum { VX_PATTERN_SIZE = 514 };

/*
 * Compiles a wildcard into `compiled`, a buffer of VX_PATTERN_SIZE bytes. All of them are written:
 * the pattern, then zeros. It contains no pointers and may be copied. It is valid until the code
 * page changes. Any number of threads may match against it at once.
 *
 * Returns 1, or 0 if the wildcard is rejected and the buffer must not be used. Rejected are a list
 * without its ], a list of more than 255 bytes, a wildcard whose bytes plus stars are more than
 * 509, and one whose pattern has more than 512 bytes. Cost in bytes: the two anchors 2; a list its
 * members, ranges written out, plus 2; * 2; ? 1; any other character its length plus 1.
 */
VX_API int vxCompileWildcard(const char *wildcard, char *compiled);

/*
 * Returns 1 if a text matches a compiled pattern, else 0. A text of more than 510 bytes matches
 * nothing. Nothing is allocated. The time is bounded: no pattern makes a short text slow.
 */
VX_API int vxMatchPattern(const char *subject, const char *compiled);

VX_END_C

#endif
