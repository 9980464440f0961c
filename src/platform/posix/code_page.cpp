#include "platform/code_page.h"

#include <cctype>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <langinfo.h>

namespace vx {

namespace {

using Range = CodePage::Range;

constexpr Range kLeads932[] = {{0x81, 0x9F}, {0xE0, 0xFC}};
constexpr Range kTrails932[] = {{0x40, 0x7E}, {0x80, 0xFC}};
constexpr Range kLeadsOfOthers[] = {{0x81, 0xFE}};
constexpr Range kTrails936[] = {{0x40, 0x7E}, {0x80, 0xFE}};
constexpr Range kTrails949[] = {{0x41, 0x5A}, {0x61, 0x7A}, {0x81, 0xFE}};
constexpr Range kTrails950[] = {{0x40, 0x7E}, {0xA1, 0xFE}};

constexpr CodePage kSingleByte;
constexpr CodePage kPage932{932, kLeads932, kTrails932};
constexpr CodePage kPage936{936, kLeadsOfOthers, kTrails936};
constexpr CodePage kPage949{949, kLeadsOfOthers, kTrails949};
constexpr CodePage kPage950{950, kLeadsOfOthers, kTrails950};

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

// The code of the character at a place, and the step over it.
unsigned characterAt(const CodePage &page, const char *&at) {
    const auto first = static_cast<unsigned char>(*at);
    if (!page.isDouble(at)) {
        ++at;
        return first;
    }
    const auto second = static_cast<unsigned char>(at[1]);
    at += 2;
    return first * 256U + second;
}

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

const CodePage &currentCodePage() {
    const char *name = nl_langinfo(CODESET);
    // By far the most frequent: UTF-8, and ANSI_X3.4-1968 of a process that never set a locale.
    if (name[0] == 'A' || std::strcmp(name, "UTF-8") == 0) return kSingleByte;
    for (const CharacterSet &set : kDoubleByteSets) {
        if (std::strcmp(name, set.name) == 0) return *set.page;
    }
    return kSingleByte;
}

int characterLength(const char *text, std::size_t limit) {
    if (limit == 0) return -1;
    if (*text == '\0') return 0;
    const CodePage &page = currentCodePage();
    if (!page.isLead(*text)) return 1;
    return limit >= 2 && page.isTrail(text[1]) ? 2 : -1;
}

bool isLetter(unsigned code) {
    return isByte(code) ? isByteOf(code, std::isalpha) : isDoubleLetter(code);
}

bool isDigit(unsigned code) {
    return isByte(code) ? isByteOf(code, std::isdigit) : isFullWidthDigit(wideOf(code));
}

const char *findCharacter(const char *text, char character) {
    const CodePage &page = currentCodePage();
    // No single-byte character below the lowest trail byte can be half of another one.
    if (page.number() == 0 || !page.isTrail(character)) return std::strchr(text, character);
    for (; *text != '\0'; text += page.step(text)) {
        if (*text == character && !page.isDouble(text)) return text;
    }
    return nullptr;
}

const char *findLastCharacter(const char *text, char character) {
    const CodePage &page = currentCodePage();
    if (!page.isTrail(character)) return std::strrchr(text, character);
    const char *last = nullptr;
    for (; *text != '\0'; text += page.step(text)) {
        if (*text == character) last = text;
    }
    return last;
}

int compareText(const char *left, const char *right) {
    const CodePage &page = currentCodePage();
    if (page.number() == 0) return std::strcmp(left, right);
    unsigned one = 0;
    unsigned other = 0;
    do {
        one = characterAt(page, left);
        other = characterAt(page, right);
    } while (one == other && one != 0);
    return one < other ? -1 : one > other;
}

std::size_t prefixLength(const char *text, std::size_t limit) {
    const CodePage &page = currentCodePage();
    if (page.number() == 0) return ::strnlen(text, limit);
    std::size_t length = 0;
    while (length < limit && text[length] != '\0') {
        const std::size_t step = page.step(text + length);
        if (length + step > limit) break;
        length += step;
    }
    return length;
}

void copyPrefix(char *to, const char *from, std::size_t limit) {
    const std::size_t length = prefixLength(from, limit);
    std::memcpy(to, from, length);
    std::memset(to + length, 0, limit - length);
}

char *splitNext(char *&rest, char separator) {
    char *piece = rest;
    while (*piece == separator)
        ++piece;
    rest = piece;
    if (*piece == '\0') return nullptr;
    if (auto *end = const_cast<char *>(findCharacter(piece, separator)); end != nullptr) {
        *end = '\0';
        rest = end + 1;
    } else {
        rest += std::strlen(piece);
    }
    return piece;
}

}  // namespace vx
