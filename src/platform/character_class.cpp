#include "platform/character_class.h"

#include "platform/codepage.h"

#include <cctype>
#include <cwchar>
#include <cwctype>

namespace platform {

namespace {

// The wide character of a double-byte code, WEOF for a code that has none.
std::wint_t wideOf(unsigned code) {
    const char bytes[] = {static_cast<char>(code >> 8), static_cast<char>(code)};
    std::mbstate_t state{};
    wchar_t wide = 0;
    if (std::mbrtowc(&wide, bytes, sizeof bytes, &state) != sizeof bytes) return WEOF;
    return static_cast<std::wint_t>(wide);
}

bool isFullWidthDigit(std::wint_t wide) {
    return wide >= 0xFF10 && wide <= 0xFF19;
}

bool isByte(unsigned code) {
    return code <= 255;
}

// The C library calls every digit beyond ASCII a letter.
bool isDoubleLetter(unsigned code) {
    const std::wint_t wide = wideOf(code);
    return std::iswalpha(wide) != 0 && !isFullWidthDigit(wide);
}

bool isByteOf(unsigned code, int (*isOfClass)(int)) {
    return !currentCodePage().isLead(static_cast<char>(code)) &&
           isOfClass(static_cast<int>(code)) != 0;
}

}  // namespace

int _ismbcalpha(unsigned code) {
    return (isByte(code) ? isByteOf(code, std::isalpha) : isDoubleLetter(code)) ? 1 : 0;
}

int _ismbcdigit(unsigned code) {
    return (isByte(code) ? isByteOf(code, std::isdigit) : isFullWidthDigit(wideOf(code))) ? 1 : 0;
}

int _ismbcalnum(unsigned code) {
    return _ismbcalpha(code) | _ismbcdigit(code);
}

}  // namespace platform
