// The pattern matcher by its definition.

#ifndef VX_FUZZ_MODELS_PATTERN_MODEL_H
#define VX_FUZZ_MODELS_PATTERN_MODEL_H

#include "platform/code_page.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

// Tries one path after the other, the longest run of each repeat first. REQUIRES: the lists of the
// program end within its buffer.
class PatternDefinition {
public:
    PatternDefinition(const std::string &subject, const char *program)
        : page_(vx::currentCodePage()),
          subject_(subject + "\n"),
          program_(program),
          failed_((subject_.size() + 1) * kProgramBytes) {}

    bool matches() const {
        for (std::size_t start = 0; start < subject_.size(); ++start) {
            if (matchAt(start, program_) >= 0) return true;
        }
        return false;
    }

    // The element after another one; the same address if it is not an element.
    static const char *next(const char *element) {
        switch (*element) {
            case '[':
            case '!':
                return element + byteAt(element + 1) + 2;
            case 'c':
                return element + 1 + length(element + 1);
            default:
                return element + (std::strchr("^$?*", *element) != nullptr && *element != '\0');
        }
    }

private:
    // A program, and the longest list that begins at its end.
    static constexpr std::size_t kProgramBytes = 1024;

    static unsigned byteAt(const char *at) { return static_cast<unsigned char>(*at); }
    unsigned code(const char *at) const {
        return page_.isLead(*at) ? byteAt(at) * 256 + byteAt(at + 1) : byteAt(at);
    }
    static std::size_t length(const char *at) {
        const int length = vx::characterLength(at, vx::kMaxCharacterBytes);
        return length < 0 ? 1 : static_cast<std::size_t>(length);
    }
    bool contains(unsigned wanted, const char *list) const {
        const char *end = list + 1 + byteAt(list);
        for (const char *at = list + 1; at < end; at += std::max<std::size_t>(length(at), 1)) {
            if (code(at) == wanted) return true;
        }
        return false;
    }
    bool matchElement(std::size_t &position, const char *element) const {
        const char *at = subject_.c_str() + position;
        if (*at == '\0') return false;
        const std::size_t step = length(at);
        switch (*element) {
            case '^':
                return position == 0;
            case '$':
                return *at == '\n';
            case '?':
                ++position;
                return *at != '\n';
            case 'c':
                position += step;
                return code(at) == code(element + 1);
            case '[':
                position += step;
                return contains(code(at), element + 1);
            case '!':
                position += step;
                return *at != '\n' && !contains(code(at), element + 1);
            default:
                return false;
        }
    }
    int matchAt(std::size_t position, const char *element) const {
        for (; *element != '\0'; element = next(element)) {
            if (*element == '*') return matchRepeat(position, element + 1);
            if (!matchElement(position, element)) return -1;
        }
        return static_cast<int>(position);
    }
    int matchRepeat(std::size_t position, const char *element) const {
        std::size_t end = position;
        for (std::size_t runEnd = end; matchElement(runEnd, element) && runEnd != end;)
            end = runEnd;
        for (std::size_t e = end + 1; e-- > position;) {
            const std::size_t path =
                e * kProgramBytes + static_cast<std::size_t>(element - program_);
            if (failed_[path]) continue;
            const int result = matchAt(e, next(element));
            if (result >= 0) return result;
            failed_[path] = true;
        }
        return -1;
    }

    const vx::CodePage &page_;
    std::string subject_;
    const char *program_;
    mutable std::vector<bool> failed_;  // paths known to fail: each element at each position
};

#endif
