// The multibyte code page of the process and the text functions that follow it.
//
// The page is the system's at the time of each call: 932, 936, 949 or 950 where the character set
// of the LC_CTYPE locale is one of these; on Windows, the page of _setmbcp. Any other set, UTF-8
// included, is a single-byte page, in which all functions here work on plain bytes.
//
// In a double-byte page a lead byte and a trail byte together are one character. A lead byte
// without a trail byte is an invalid sequence. All functions here step over it as one byte, so
// that none of them runs past the terminator.

#ifndef VX_PLATFORM_CODE_PAGE_H
#define VX_PLATFORM_CODE_PAGE_H

#include <array>
#include <cstddef>

namespace vx {

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

    // Is there a character of two bytes at this place of a terminated text?
    constexpr bool isDouble(const char *at) const { return isLead(at[0]) && isTrail(at[1]); }

    // Bytes to the next character. REQUIRES: *at is not the terminator.
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

// The longest character of any page, in bytes.
inline constexpr std::size_t kMaxCharacterBytes = 2;

// Bytes of the character at the start of a text of at most `limit` bytes: 1 or 2. It is 0 if the
// text is empty, and -1 if the sequence is invalid.
int characterLength(const char *text, std::size_t limit);

// Classes of character codes: a single byte, or lead byte x 256 + trail byte. They are those of
// the LC_CTYPE locale, but a digit is a decimal digit of either width and never a letter. A lead
// byte alone and two bytes that are not a character have no class.
bool isLetter(unsigned code);
bool isDigit(unsigned code);
inline bool isLetterOrDigit(unsigned code) {
    return isLetter(code) || isDigit(code);
}

// The other case of a byte. Only A to Z and a to z have one, in every page, so compilers turn a
// loop over a text into vector code.
constexpr char lowered(char byte) {
    const bool isUpper = static_cast<unsigned char>(byte - 'A') < 26;
    return static_cast<char>(byte | (isUpper ? 0x20 : 0));
}
constexpr char uppered(char byte) {
    const bool isLower = static_cast<unsigned char>(byte - 'a') < 26;
    return static_cast<char>(byte & (isLower ? ~0x20 : ~0));
}

// The first occurrence of a single-byte character, which may be the terminator; null without one.
const char *findCharacter(const char *text, char character);

// The last occurrence of a single-byte character other than the terminator; null without one.
const char *findLastCharacter(const char *text, char character);

// Order of two texts by the codes of their characters: negative, 0 or positive.
int compareText(const char *left, const char *right);

// Bytes of the complete characters among the first `limit` bytes of a text.
std::size_t prefixLength(const char *text, std::size_t limit);

// Copies complete characters into `limit` bytes and clears the rest of them. A text that reaches
// the limit is not terminated.
void copyPrefix(char *to, const char *from, std::size_t limit);

// Splits a text in place: terminates the next piece between runs of the separator and returns it,
// null when none is left. `rest` is the text at first and keeps the position from call to call.
char *splitNext(char *&rest, char separator);

}  // namespace vx

#endif
