// The multibyte code page of the process and the text services that follow it.
//
// The page is that of the LC_CTYPE locale at the time of each call: 932, 936, 949 or 950 where
// the locale's character set is one of these, else a single-byte page, UTF-8 included, in which
// all services work on plain bytes.
//
// In a double-byte page a lead byte and a trail byte together are one character. A lead byte
// without a trail byte behind it is an invalid sequence; all services here step over it as one
// byte, so that none of them runs past the terminator.

#ifndef VX_PLATFORM_CODEPAGE_H
#define VX_PLATFORM_CODEPAGE_H

#include <array>
#include <cstddef>

namespace platform {

class CodePage {
public:
    struct Range {
        unsigned char first, last;
    };
    template <std::size_t kLeads, std::size_t kTrails>
    constexpr CodePage(int number, const Range (&leads)[kLeads], const Range (&trails)[kTrails])
        : number_(number) {
        for (const Range &range : leads)
            mark(range, kLead);
        for (const Range &range : trails)
            mark(range, kTrail);
    }
    constexpr CodePage() = default;

    constexpr int number() const { return number_; }  // 0 for a single-byte page
    constexpr bool isLead(char byte) const { return (kinds_[index(byte)] & kLead) != 0; }
    constexpr bool isTrail(char byte) const { return (kinds_[index(byte)] & kTrail) != 0; }

    // Is there a character of two bytes at this place of a terminated text.
    constexpr bool isDouble(const char *at) const { return isLead(at[0]) && isTrail(at[1]); }

    // How far it is to the next character; not to be asked at the terminator.
    constexpr std::size_t step(const char *at) const { return isDouble(at) ? 2 : 1; }

private:
    static constexpr unsigned char kLead = 1;
    static constexpr unsigned char kTrail = 2;

    static constexpr std::size_t index(char byte) { return static_cast<unsigned char>(byte); }
    constexpr void mark(const Range &range, unsigned char kind) {
        for (unsigned byte = range.first; byte <= range.last; ++byte) {
            kinds_[byte] = static_cast<unsigned char>(kinds_[byte] | kind);
        }
    }

    int number_ = 0;
    std::array<unsigned char, 256> kinds_{};
};

const CodePage &currentCodePage();

// The greatest length of a character in bytes, for the second argument of mblen.
inline constexpr std::size_t __mb_cur_max = 2;

// Byte length of the character at a place of which at most `limit` bytes count: 1 or 2, 0 at the
// terminator, -1 for an invalid sequence.
int mblen(const char *text, std::size_t limit);

// The other case of a character code. Only A to Z and a to z have one, in every page; all other
// codes come back as they are, a byte of 0x80 or above widened as a signed char among them.
constexpr unsigned _mbctolower(unsigned character) {
    return character - 'A' < 26 ? character + ('a' - 'A') : character;
}
constexpr unsigned _mbctoupper(unsigned character) {
    return character - 'a' < 26 ? character - ('a' - 'A') : character;
}

// The low byte of what these two give for a byte widened as a signed char. Being the same in every
// page it can be taken in a loop over a text, which compilers turn into vector code.
constexpr char lowered(char byte) {
    const bool isUpper = static_cast<unsigned char>(byte - 'A') < 26;
    return static_cast<char>(byte | (isUpper ? 0x20 : 0));
}
constexpr char uppered(char byte) {
    const bool isLower = static_cast<unsigned char>(byte - 'a') < 26;
    return static_cast<char>(byte & (isLower ? ~0x20 : ~0));
}

// The first occurrence of a single-byte character, which may be the terminator; null without one.
const char *_mbschr(const char *text, char character);

// The last occurrence of a single-byte character other than the terminator; null without one.
const char *_mbsrchr(const char *text, char character);

// Order of two texts by the codes of their characters: negative, 0 or positive.
int _mbscmp(const char *left, const char *right);

// The bytes of the whole characters among the first `limit` bytes of a text.
std::size_t lengthWithin(const char *text, std::size_t limit);

// Copies at most `limit` bytes, never half a character, and fills what is left of those bytes
// with zeros. A text that reaches the limit is not terminated.
char *_mbsnbcpy(char *to, const char *from, std::size_t limit);

// Splits a text in place: terminates the next piece between runs of the separator and returns it,
// null when none is left. `text` is null but for the first call; `rest` keeps the position, so
// that nothing is shared between callers.
char *_mbstok(char *text, char separator, char **rest);

}  // namespace platform

#endif
