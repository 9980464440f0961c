#include "platform/codepage.h"

#include <cstring>
#include <langinfo.h>

namespace platform {

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

int mblen(const char *text, std::size_t limit) {
    if (limit == 0) return -1;
    if (*text == '\0') return 0;
    const CodePage &page = currentCodePage();
    if (!page.isLead(*text)) return 1;
    return limit >= 2 && page.isTrail(text[1]) ? 2 : -1;
}

const char *_mbschr(const char *text, char character) {
    const CodePage &page = currentCodePage();
    // No single-byte character below the lowest trail byte can be half of another one.
    if (page.number() == 0 || !page.isTrail(character)) return std::strchr(text, character);
    for (; *text != '\0'; text += page.step(text)) {
        if (*text == character && !page.isDouble(text)) return text;
    }
    return nullptr;
}

const char *_mbsrchr(const char *text, char character) {
    const CodePage &page = currentCodePage();
    if (!page.isTrail(character)) return std::strrchr(text, character);
    const char *last = nullptr;
    for (; *text != '\0'; text += page.step(text)) {
        if (*text == character) last = text;
    }
    return last;
}

int _mbscmp(const char *left, const char *right) {
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

std::size_t lengthWithin(const char *text, std::size_t limit) {
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

char *_mbsnbcpy(char *to, const char *from, std::size_t limit) {
    const std::size_t length = lengthWithin(from, limit);
    std::memcpy(to, from, length);
    std::memset(to + length, 0, limit - length);
    return to;
}

char *_mbstok(char *text, char separator, char **rest) {
    if (text == nullptr) text = *rest;
    while (*text == separator)
        ++text;
    if (*text == '\0') {
        *rest = text;
        return nullptr;
    }
    char *end = const_cast<char *>(_mbschr(text, separator));
    if (end == nullptr) {
        *rest = text + std::strlen(text);
    } else {
        *end = '\0';
        *rest = end + 1;
    }
    return text;
}

}  // namespace platform
