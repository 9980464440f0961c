#include "pattern/pattern_compiler.h"

#include "platform/code_page.h"

#include <vxtext.h>

#include <algorithm>
#include <cstring>

namespace {

using vx::CodePage;

constexpr int kScratchSize = 512;  // of the source that a wildcard becomes
constexpr int kLongestList = 255;  // what a length byte can tell

int byteAt(const char *text, int position) {
    return static_cast<unsigned char>(text[position]);
}

// A lead byte makes a character with whatever byte is behind it, but for the terminator.
bool isPair(const CodePage &page, const char *at) {
    return page.isLead(at[0]) && at[1] != '\0';
}

int codeAt(const CodePage &page, const char *text, int position) {
    const int first = byteAt(text, position);
    return isPair(page, text + position) ? first * 256 + byteAt(text, position + 1) : first;
}

int stepAt(const CodePage &page, const char *text, int position) {
    return static_cast<int>(page.step(text + position));
}

// Stores a code in one or two bytes, or drops it when it would begin behind the limit.
bool vxPatternEmit(int value, char *out, int &position, int limit) {
    if (position > limit) return false;
    if (value > 255) out[position++] = static_cast<char>(value >> 8);
    out[position++] = static_cast<char>(value);
    return true;
}

// The code of the next character, escaped or not. The position is left on its last byte.
int vxPatternReadChar(const CodePage &page, const char *source, int &position) {
    if (source[position] == '\\') {
        if (source[position + 1] == '\0') return '\\';
        ++position;
        if (source[position] == 'n') return '\n';
        if (source[position] == 't') return '\t';
    }
    const int code = codeAt(page, source, position);
    if (isPair(page, source + position)) ++position;
    return code;
}

// Moves the previous element up by one byte and puts the repeat before it.
void vxPatternInsertStar(char *out, int &position, int previous) {
    for (int from = position - 1; from >= previous; --from) {
        int to = from + 1;
        vxPatternEmit(byteAt(out, from), out, to, kPatternLimit);
    }
    out[previous] = '*';
    ++position;
}

// What lies between the ends of a range, and its upper end. Where an end is a double-byte
// character only the first bytes count, as signed values.
void emitRange(const CodePage &page, const char *low, const char *high, char *out, int &position,
               int limit) {
    const bool isDouble = page.isDouble(low) || page.isDouble(high);
    const auto endOf = [&](const char *at) {
        return isDouble ? int{static_cast<signed char>(*at)} : byteAt(at, 0);
    };
    for (int value = endOf(low) + 1; value <= endOf(high); ++value)
        vxPatternEmit(value, out, position, limit);
}

// Is there a range between two characters.
bool isRange(const CodePage &page, const char *low, const char *high) {
    return *high != '\0' && vxCharIsAlnum(low) != 0 && vxCharIsAlnum(high) != 0 &&
           codeAt(page, low, 0) < codeAt(page, high, 0);
}

// The members of a list up to its terminator. `low` is the last plain character that had a dash
// behind it, at first the byte before the list, which is no end of a range.
void vxPatternCompileList(const CodePage &page, char terminator, const char *source, int &position,
                          char *out, int &outPosition, int limit) {
    int low = position - 1;
    while (source[position] != terminator && source[position] != '\0') {
        const int step = stepAt(page, source, position);
        if (source[position] == '\\') {
            vxPatternEmit(vxPatternReadChar(page, source, position), out, outPosition, limit);
        } else if (source[position] != '-') {
            vxPatternEmit(codeAt(page, source, position), out, outPosition, limit);
            if (source[position + step] == '-') low = position;
        } else if (const char *high = source + position + 1; isRange(page, source + low, high)) {
            emitRange(page, source + low, high, out, outPosition, limit);
            position += stepAt(page, high, 0);
        } else {
            vxPatternEmit('-', out, outPosition, limit);
        }
        position += step;
    }
}

// A list from its [ to its ], where the position is left. False when the list is not closed or
// longer than its length byte can tell.
bool vxPatternCompileSet(const CodePage &page, const char *source, int &position, char *out,
                         int &outPosition) {
    ++position;
    const bool negated = source[position] == '~';
    if (negated) ++position;
    vxPatternEmit(negated ? '!' : '[', out, outPosition, kPatternLimit);
    const int lengthAt = outPosition;
    vxPatternEmit(0, out, outPosition, kPatternLimit);
    const int first = outPosition;
    vxPatternCompileList(page, ']', source, position, out, outPosition, kPatternLimit);
    const int length = outPosition - first;
    if (source[position] != ']' || length > kLongestList) return false;
    out[lengthAt] = static_cast<char>(length);
    return true;
}

bool canRepeat(char opcode) {
    return opcode != '^' && opcode != '$' && opcode != '*';
}

// Stars stand in the source once more; none of them is half of a character.
bool fitsScratch(const char *wildcard) {
    const std::size_t length = ::strnlen(wildcard, kScratchSize);
    const auto stars = std::count(wildcard, wildcard + length, '*');
    return length + static_cast<std::size_t>(stars) + 3 <= kScratchSize;
}

}  // namespace

int vxPatternCompile(const char *source, int start, int delimiter, char *out) {
    const CodePage &page = vx::currentCodePage();
    int position = start;
    int end = 0;       // of the form so far
    int previous = 0;  // where its last element begins
    for (; byteAt(source, position) != delimiter && source[position] != '\0'; ++position) {
        if (end > kPatternLimit) return -1;  // the closing zero would have no place
        int element = end;
        const char byte = source[position];
        if (byte == '?' || (byte == '^' && position == start) ||
            (byte == '$' && byteAt(source, position + 1) == delimiter)) {
            vxPatternEmit(byte, out, end, kPatternLimit);
        } else if (byte == '[') {
            if (!vxPatternCompileSet(page, source, position, out, end)) return -1;
        } else if (byte == '*' && position != start) {
            if (!canRepeat(out[previous])) return -1;
            vxPatternInsertStar(out, end, previous);
            element = previous;
        } else {
            vxPatternEmit('c', out, end, kPatternLimit);
            vxPatternEmit(vxPatternReadChar(page, source, position), out, end, kPatternLimit);
        }
        previous = element;
    }
    if (byteAt(source, position) != delimiter) return -1;
    return vxPatternEmit(0, out, end, kPatternLimit) ? position : -1;
}

void vxWildcardToPattern(const char *wildcard, char *out) {
    *out++ = '^';
    for (; *wildcard != '\0'; ++wildcard) {
        if (*wildcard == '*') *out++ = '?';
        *out++ = *wildcard;
    }
    *out++ = '$';
    *out = '\0';
}

int vxCompileWildcard(const char *wildcard, char *compiled) {
    if (!fitsScratch(wildcard)) return 0;
    char source[kScratchSize] = {};
    vxWildcardToPattern(wildcard, source);
    // A lone lead byte can make an element of what is no element to the matcher, and send it past
    // the end of the form. It finds zeros there.
    std::memset(compiled, 0, VX_PATTERN_SIZE);
    return vxPatternCompile(source, 0, 0, compiled) >= 0 ? 1 : 0;
}
