#include "platform/code_page.h"

#include "platform/code_page_tables.h"

#include <cctype>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <langinfo.h>

namespace vx {

namespace {

struct CharacterSet {
    const char *name;
    const CodePage *page;
};

constexpr CharacterSet kDoubleByteSets[] = {
    {"SHIFT_JIS", &kPage932},   {"SJIS", &kPage932},   {"CP932", &kPage932},
    {"WINDOWS-31J", &kPage932}, {"GBK", &kPage936},    {"GB2312", &kPage936},
    {"CP936", &kPage936},       {"EUC-KR", &kPage949}, {"UHC", &kPage949},
    {"CP949", &kPage949},       {"BIG5", &kPage950},   {"CP950", &kPage950},
};

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

// The C library calls every digit beyond ASCII a letter.
bool isDoubleLetter(unsigned code) {
    const std::wint_t wide = wideOf(code);
    return std::iswalpha(wide) != 0 && !isFullWidthDigit(wide);
}

}  // namespace

const CodePage &currentCodePage() {
    const char *name = nl_langinfo(CODESET);
    // By far the most frequent: UTF-8, and ANSI_X3.4-1968 of a process that never set a locale.
    if (name[0] == 'A' || std::strcmp(name, "UTF-8") == 0) return kSingleByte;
    for (const CharacterSet &set : kDoubleByteSets) {
        if (std::strcmp(name, set.name) == 0) return *set.page;
    }
    return kSingleByte;
}

bool isLetter(unsigned code) {
    return isByte(code) ? isByteOf(code, std::isalpha) : isDoubleLetter(code);
}

bool isDigit(unsigned code) {
    return isByte(code) ? isByteOf(code, std::isdigit) : isFullWidthDigit(wideOf(code));
}

}  // namespace vx
