#include "pattern/pattern_compiler.h"

#include "platform/code_page.h"

#include <vxtext.h>

#include <algorithm>
#include <cstring>

namespace vx {

namespace {

constexpr int kScratchSize = 512;   // of the source that a wildcard becomes
constexpr int kMaxListBytes = 255;  // a length byte holds no more

int byteAt(const char *at) {
    return static_cast<unsigned char>(*at);
}

bool canRepeat(char opcode) {
    return opcode != '^' && opcode != '$' && opcode != '*';
}

class Compiler {
public:
    Compiler(const char *source, char *program) : start_(source), at_(source), program_(program) {}

    // Returns the place of the delimiter; null for source that is rejected.
    const char *compile(int delimiter) {
        int previous = 0;  // where the last element begins
        for (; byteAt(at_) != delimiter && *at_ != '\0'; ++at_) {
            if (end_ > kMaxProgramBytes) return nullptr;  // no room for the closing zero
            int element = end_;
            if (isOperator(delimiter)) {
                emit(*at_);
            } else if (*at_ == '[') {
                if (!compileList()) return nullptr;
            } else if (*at_ == '*' && at_ != start_) {
                if (!canRepeat(program_[previous])) return nullptr;
                insertStar(previous);
                element = previous;
            } else {
                emit('c');
                emit(readCharacter());
            }
            previous = element;
        }
        return byteAt(at_) == delimiter && emit(0) ? at_ : nullptr;
    }

private:
    // An element that is its own opcode.
    bool isOperator(int delimiter) const {
        return *at_ == '?' || (*at_ == '^' && at_ == start_) ||
               (*at_ == '$' && byteAt(at_ + 1) == delimiter);
    }

    // A lead byte makes a character with any byte after it except the terminator.
    bool isPair(const char *at) const { return page_.isLead(at[0]) && at[1] != '\0'; }

    int codeAt(const char *at) const {
        return isPair(at) ? byteAt(at) * 256 + byteAt(at + 1) : byteAt(at);
    }

    // Stores a code in one or two bytes. A store that would begin after the limit is dropped.
    bool emit(int value) {
        if (end_ > kMaxProgramBytes) return false;
        if (value > 255) program_[end_++] = static_cast<char>(value >> 8);
        program_[end_++] = static_cast<char>(value);
        return true;
    }

    // The element moves up by one byte and keeps its operands.
    void insertStar(int element) {
        char *opcode = program_ + element;
        std::memmove(opcode + 1, opcode, static_cast<std::size_t>(end_ - element));
        *opcode = '*';
        ++end_;
    }

    // Returns the code of a character, escaped or not, and stops at its last byte.
    int readCharacter() {
        if (*at_ == '\\') {
            if (at_[1] == '\0') return '\\';
            ++at_;
            if (*at_ == 'n') return '\n';
            if (*at_ == 't') return '\t';
        }
        const int code = codeAt(at_);
        if (isPair(at_)) ++at_;
        return code;
    }

    // From [ to ], where it stops. False for a list that is not closed or too long.
    bool compileList() {
        ++at_;
        const bool negated = *at_ == '~';
        if (negated) ++at_;
        emit(negated ? '!' : '[');
        const int lengthAt = end_;
        emit(0);
        const int first = end_;
        compileMembers();
        const int length = end_ - first;
        if (*at_ != ']' || length > kMaxListBytes) return false;
        program_[lengthAt] = static_cast<char>(length);
        return true;
    }

    // `low` is the last plain character before a dash. At first it is the byte before the list,
    // which cannot begin a range.
    void compileMembers() {
        const char *low = at_ - 1;
        while (*at_ != ']' && *at_ != '\0') {
            const std::size_t step = page_.step(at_);
            if (*at_ == '\\') {
                emit(readCharacter());
            } else if (*at_ != '-') {
                emit(codeAt(at_));
                if (at_[step] == '-') low = at_;
            } else if (const char *high = at_ + 1; isRange(low, high)) {
                emitRange(low, high);
                at_ += page_.step(high);
            } else {
                emit('-');
            }
            at_ += step;
        }
    }

    bool isRange(const char *low, const char *high) const {
        return *high != '\0' && vxCharIsAlnum(low) != 0 && vxCharIsAlnum(high) != 0 &&
               codeAt(low) < codeAt(high);
    }

    // The low end is a member already. Where an end is a double-byte character, only the first
    // bytes count, as signed values.
    void emitRange(const char *low, const char *high) {
        const bool isMultibyte = page_.isDouble(low) || page_.isDouble(high);
        const auto endOf = [&](const char *at) {
            return isMultibyte ? int{static_cast<signed char>(*at)} : byteAt(at);
        };
        for (int value = endOf(low) + 1; value <= endOf(high); ++value)
            emit(value);
    }

    const CodePage &page_ = currentCodePage();
    const char *start_;
    const char *at_;
    char *program_;
    int end_ = 0;  // of the program so far
};

// A star takes two bytes of source. It is never the second half of a character.
bool fitsScratch(const char *wildcard) {
    const std::size_t length = ::strnlen(wildcard, kScratchSize);
    const auto stars = std::count(wildcard, wildcard + length, '*');
    return length + static_cast<std::size_t>(stars) + 3 <= kScratchSize;
}

// Anchors a wildcard at both ends and writes * as ?*.
void wildcardToPattern(const char *wildcard, char *source) {
    *source++ = '^';
    for (; *wildcard != '\0'; ++wildcard) {
        if (*wildcard == '*') *source++ = '?';
        *source++ = *wildcard;
    }
    *source++ = '$';
    *source = '\0';
}

}  // namespace

int compilePattern(const char *source, int start, int delimiter, char *program) {
    const char *end = Compiler(source + start, program).compile(delimiter);
    return end != nullptr ? static_cast<int>(end - source) : -1;
}

}  // namespace vx

int vxCompileWildcard(const char *wildcard, char *compiled) {
    if (!vx::fitsScratch(wildcard)) return 0;
    char source[vx::kScratchSize];
    vx::wildcardToPattern(wildcard, source);
    // The matcher may read past the end of a program that has a lone lead byte. It finds zeros.
    std::memset(compiled, 0, VX_PATTERN_SIZE);
    return vx::compilePattern(source, 0, 0, compiled) >= 0 ? 1 : 0;
}
