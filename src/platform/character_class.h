// Classes of characters in the code page of the process. A code is the byte of a single-byte
// character, or lead byte x 256 + trail byte. The classes are those of the LC_CTYPE locale, but a
// digit is a decimal digit of either width, and never a letter.

#ifndef VX_PLATFORM_CHARACTER_CLASS_H
#define VX_PLATFORM_CHARACTER_CLASS_H

namespace platform {

// 1 or 0. A lead byte alone, and two bytes that are no character, are of no class.
int _ismbcalpha(unsigned code);
int _ismbcdigit(unsigned code);
int _ismbcalnum(unsigned code);

}  // namespace platform

#endif
