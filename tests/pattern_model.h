// The matcher of patterns by its definition.

#ifndef VX_TESTS_PATTERN_MODEL_H
#define VX_TESTS_PATTERN_MODEL_H

#include "platform/code_page.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

// One way after the other, the longest run of each repeat first. The lists of the form lie within
// its buffer.
class PatternDefinition {
public:
    PatternDefinition(const std::string &subject, const char *form)
        : page_(vx::currentCodePage()),
          subject_(subject + "\n"),
          form_(form),
          failed_((subject_.size() + 1) * kFormRoom) {}

    bool matches() const {
        for (std::size_t start = 0; start < subject_.size(); ++start) {
            if (matchAt(start, form_) >= 0) return true;
        }
        return false;
    }

    // The element behind another one; the same for what is no element.
    static const char *behind(const char *element) {
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
    // A form, and the longest list that begins at its end.
    static constexpr std::size_t kFormRoom = 1024;

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
        for (; *element != '\0'; element = behind(element)) {
            if (*element == '*') return matchRepeat(position, element + 1);
            if (!matchElement(position, element)) return -1;
        }
        return static_cast<int>(position);
    }
    int matchRepeat(std::size_t position, const char *element) const {
        std::size_t end = position;
        for (std::size_t next = end; matchElement(next, element) && next != end;)
            end = next;
        for (std::size_t e = end + 1; e-- > position;) {
            const std::size_t way = e * kFormRoom + static_cast<std::size_t>(element - form_);
            if (failed_[way]) continue;
            const int result = matchAt(e, behind(element));
            if (result >= 0) return result;
            failed_[way] = true;
        }
        return -1;
    }

    const vx::CodePage &page_;
    std::string subject_;
    const char *form_;
    mutable std::vector<bool> failed_;  // from here on, a second time: no need to try again
};

#endif
