// The compiled form of a pattern, a program for the matcher, and the compiler of pattern source.
//
// A program is a sequence of elements and a closing zero byte. An element begins with an opcode:
//
//   ^  $  ?     anchors at the start and at a line feed; any byte except a line feed
//   *           the next element, any number of times
//   c           a character of one or two bytes, which matches itself
//   [  !        a length byte and that many bytes of characters: one of them; none of them
//
// Source text has the elements ^ (at its start), $ (at its end), ?, [list], [~list] and single
// characters. A * after an element repeats it. A \ makes the next character a literal.

#ifndef VX_PATTERN_PATTERN_COMPILER_H
#define VX_PATTERN_PATTERN_COMPILER_H

#include <vxpattern.h>

namespace vx {

// Bytes of a program before its closing zero. A store may begin at this index but not after it.
inline constexpr int kMaxProgramBytes = 512;

// Compiles source text from index `start` up to a delimiter, a byte value, into a buffer of
// VX_PATTERN_SIZE bytes. Returns the index of the delimiter in the source. Returns -1 for source
// that is rejected: a repeat of an anchor or of a repeat, an unclosed list or one of more than 255
// bytes, a program that is too long, or a text that ends before the delimiter.
int compilePattern(const char *source, int start, int delimiter, char *program);

}  // namespace vx

#endif
