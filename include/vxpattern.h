/*
 * vxpattern.h: matching text against wildcards.
 *
 * A wildcard is compiled once, into a plain byte string in the caller's buffer, and any number of
 * subjects is then matched against that:
 *
 *     char pattern[VX_PATTERN_SIZE];
 *     if (vxCompileWildcard("*.[is]gi", pattern) && vxMatchPattern("wood.sgi", pattern)) ...
 *
 *   *         any bytes, also none, up to the end of the line
 *   ?         any one byte but a line feed
 *   [abc]     one character of the list; ^ has no meaning in it
 *   [~abc]    one character that is not in the list, and no line feed
 *   [a-c]     a range, where both ends are letters or digits and the first is the lesser one;
 *             anywhere else a - stands for itself. Behind an escaped character or the end
 *             of a range it goes on from the last plain character that had a - behind it
 *   \c        the character c, whatever it means elsewhere; \n and \t are line feed and tab
 *   other     that character; case counts
 *
 * Three things surprise. A * is short for ?*, the byte any number of times, so that \* stands for
 * any number of question marks and [*] for a question mark or a star. A ] right behind [ closes
 * the list. And a \ at the end of the wildcard takes the place of its end, so that anything may
 * follow in the subject behind a "$".
 *
 * The subject is taken as one line: the match begins at its start and ends at a line feed or at
 * its end. A subject with more lines matches when its first line does.
 *
 * In a double-byte code page a character of two bytes is one character to a list or as itself, and
 * two bytes to * and ?. Of a range with such an end only the first bytes count, as signed values:
 * those above the first end's, up to the second's, become bytes of the list, where one may join
 * the byte behind it; the last character is no member. A lead byte is taken together with the byte
 * behind it, whatever that is, so a wildcard that ends in a lone lead byte matches nothing.
 */
#ifndef VXPATTERN_H
#define VXPATTERN_H

#include "vxexports.h"

VX_BEGIN_C

/* Bytes of a buffer for a compiled pattern. */
enum { VX_PATTERN_SIZE = 514 };

/*
 * Compiles a wildcard into `compiled`, a buffer of VX_PATTERN_SIZE bytes that gets written as a
 * whole: the pattern, and zeros behind it. It holds no pointers, may be copied, and is good for
 * as long as the code page stays the same. Any number of threads may match against it at once.
 *
 * Returns 1, or 0 when the wildcard is refused and the buffer is not to be used: a list without
 * its ], a list of more than 255 bytes, a wildcard whose bytes plus stars are more than 509, and
 * one whose pattern has more than 512 bytes. Its two ends take two bytes; a list as many as its
 * members, ranges written out, and two more; * two bytes, ? one, any other character one more than
 * it has.
 */
VX_API int vxCompileWildcard(const char *wildcard, char *compiled);

/*
 * Does a text match a compiled pattern: 1 or 0. A text of more than 510 bytes matches nothing.
 * Nothing is allocated, and the time is bounded: no pattern makes a short text take long.
 */
VX_API int vxMatchPattern(const char *subject, const char *compiled);

VX_END_C

#endif
