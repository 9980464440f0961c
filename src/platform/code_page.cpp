// Text taken character by character, the same on every system.

#include "platform/code_page.h"

#include <cstring>

namespace vx {

namespace {

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

int characterLength(const char *text, std::size_t limit) {
    if (limit == 0) return -1;
    if (*text == '\0') return 0;
    const CodePage &page = currentCodePage();
    if (!page.isLead(*text)) return 1;
    return limit >= 2 && page.isTrail(text[1]) ? 2 : -1;
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
