// The compiled form of a pattern, and the way from source text to it.
//
// A form is a sequence of elements and a closing zero byte. An element begins with an opcode:
//
//   ^  $  ?     anchors at the start and at a line feed; any byte but a line feed
//   *           the element behind it, any number of times
//   c           one character, in its one or two bytes
//   [  !        a length byte and as many bytes of characters: one of them; none of them
//
// Source text has the elements ^ (at its start), $ (at its end), ?, [list], [~list] and single
// characters, and a * behind an element repeats it. A \ takes the meaning from what follows.

#ifndef VX_PATTERN_PATTERN_COMPILER_H
#define VX_PATTERN_PATTERN_COMPILER_H

#include <vxpattern.h>

// Bytes of a form before its closing zero. A store may begin at this index but not behind it.
inline constexpr int kPatternLimit = 512;

// Compiles source text from an index to a delimiter, a byte value, into a buffer of VX_PATTERN_SIZE
// bytes. Gives the index of the delimiter in the source, or -1 when the source is refused: a
// repeat of an anchor or of a repeat, an open list or one of more than 255 bytes, a form too long,
// or the end of the text where another delimiter was asked for.
int vxPatternCompile(const char *source, int start, int delimiter, char *out);

// Puts a wildcard into the words of pattern source: anchored at both ends, * as ?*. The output
// needs room for the wildcard, its stars once more and 3 bytes.
void vxWildcardToPattern(const char *wildcard, char *out);

#endif
