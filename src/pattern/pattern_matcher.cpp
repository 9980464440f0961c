// Runs a subject against a compiled pattern.
//
// The answer is only yes or no, so the matcher follows all paths through a pattern at once. It
// takes the elements one by one and keeps the set of subject positions reached so far. Each
// element costs about the same whatever the set, and no path is tried twice.

#include "pattern/byte_mask.h"
#include "pattern/pattern_compiler.h"
#include "pattern/position_set.h"
#include "platform/code_page.h"

#include <cstring>
#include <utility>

namespace vx {

namespace {

constexpr std::size_t kMaxSubject = 510;  // a line feed and a zero byte are put after it

unsigned byteAt(const char *at) {
    return static_cast<unsigned char>(*at);
}

// A lead byte counts as the first half of a character whatever follows, in code but not in step.
unsigned codeAt(const CodePage &page, const char *at) {
    return page.isLead(at[0]) ? byteAt(at) * 256 + byteAt(at + 1) : byteAt(at);
}

int elementLength(const CodePage &page, const char *element) {
    switch (element[0]) {
        case '[':
        case '!':
            return static_cast<int>(byteAt(element + 1)) + 2;
        case '^':
        case '$':
        case '?':
        case '*':
            return 1;
        case 'c':
            return element[1] != '\0' ? 1 + static_cast<int>(page.step(element + 1)) : 1;
        default:
            return 0;
    }
}

bool isAnchor(const char *element) {
    return *element == '^' || *element == '$';
}

// A subject as it is matched: with a line feed after it, which is the place of $. kMultibyte
// selects the code for pages with characters of two bytes.
template <std::size_t kWords, bool kMultibyte>
class Subject {
public:
    using Set = PositionSet<kWords>;

    Subject(const CodePage &page, const char *text, std::size_t length)
        : page_(page), all_(Set::upTo(length)) {
        std::memcpy(bytes_, text, length);
        bytes_[length] = '\n';
        if constexpr (kMultibyte) findDoubles(length);
        lineFeeds_ = holdingByte('\n');
    }

    bool matches(const char *program) const {
        Set reached = all_;  // a match may begin anywhere
        int index = 0;
        while (program[index] != '\0') {
            const bool repeated = program[index] == '*';
            if (repeated) ++index;
            if (index >= kMaxProgramBytes) return false;
            const char *element = program + index;
            const int length = elementLength(page_, element);
            if (index + length > kMaxProgramBytes) return false;
            reached = repeated ? repeat(reached, element) : advance(reached, element);
            if (reached.isEmpty()) return false;
            index += length;
            if constexpr (!kMultibyte) index = matchLiterals(reached, program, index);
        }
        return !reached.isEmpty();
    }

private:
    static constexpr std::size_t kSize = kWords * 64;

    void findDoubles(std::size_t length) {
        for (std::size_t i = 0; i < length; ++i) {
            const char *at = reinterpret_cast<const char *>(bytes_) + i;
            if (page_.isLead(*at)) trailBytes_[i] = bytes_[i + 1];
            if (page_.isDouble(at)) doubles_.insert(i);
        }
    }

    static Set holding(const unsigned char *bytes, unsigned byte) {
        Set set;
        for (std::size_t i = 0; i < kWords; ++i)
            set.word(i) = byteMask(bytes + i * 64, static_cast<unsigned char>(byte));
        return set;
    }

    Set holdingByte(unsigned byte) const { return holding(bytes_, byte); }

    // The places of a character with this code.
    Set holdingCode(unsigned code) const {
        if constexpr (!kMultibyte) return holdingByte(code);
        return code < 256 ? holdingByte(code) & holding(trailBytes_, 0)
                          : holdingByte(code / 256) & holding(trailBytes_, code % 256);
    }

    // The places of the characters of a list. Those outside `among` may be missing.
    Set holdingAny(const char *list, std::size_t length, const Set &among) const {
        Set found;
        std::size_t only = 0;
        if (!kMultibyte && among.isSingleton(only)) {
            if (std::memchr(list, bytes_[only], length) != nullptr) found.insert(only);
            return found;
        }
        for (std::size_t i = 0; i < length; i += list[i] != '\0' ? page_.step(list + i) : 1)
            found = found | holdingCode(codeAt(page_, list + i));
        return found;
    }

    // Where an element matches. Places outside `among` may be wrong.
    Set matching(const char *element, const Set &among) const {
        switch (element[0]) {
            case '^':
                return Set::upTo(0);
            case '$':
                return lineFeeds_;
            case '?':
                return all_.without(lineFeeds_);
            case 'c':
                return holdingCode(codeAt(page_, element + 1)) & all_;
            case '[':
                return holdingAny(element + 2, byteAt(element + 1), among) & all_;
            case '!':
                return all_.without(lineFeeds_)
                    .without(holdingAny(element + 2, byteAt(element + 1), among));
            default:
                return {};
        }
    }

    // Reached after one match of an element.
    Set advance(const Set &reached, const char *element) const {
        const Set matched = reached & matching(element, reached);
        if (isAnchor(element)) return matched;
        if (!kMultibyte || *element == '?') return matched.shiftedBy(1);
        return matched.without(doubles_).shiftedBy(1) | (matched & doubles_).shiftedBy(2);
    }

    // Matches a run of single characters without sets where only one position is reached, as is
    // usual after the first of them. Returns the index of the element after the run.
    int matchLiterals(Set &reached, const char *program, int index) const {
        std::size_t only = 0;
        if (program[index] != 'c' || !reached.isSingleton(only)) return index;
        reached = {};
        for (; index < kMaxProgramBytes - 1 && program[index] == 'c'; index += 2, ++only) {
            if (bytes_[only] != byteAt(program + index + 1) || bytes_[only] == 0) return index;
        }
        reached.insert(only);
        return index;
    }

    // Reached after any number of matches.
    Set repeat(const Set &reached, const char *element) const {
        if (isAnchor(element)) return reached;
        const Set matched = matching(element, all_);
        if (!kMultibyte || *element == '?' || (matched & doubles_).isEmpty()) {
            return reached.closure(matched);
        }
        return closureOfCharacters(reached, matched);
    }

    // A run may be given back in part, byte by byte, so the second halves of its characters are
    // reached too. But the run does not continue from there.
    Set closureOfCharacters(const Set &reached, const Set &matched) const {
        std::size_t end = kSize;  // of the last two characters that were taken, at first of none
        std::size_t earlierEnd = kSize;
        const Set taken = matched.filtered([&](std::size_t at) {
            if (!reached.contains(at) && at != end && at != earlierEnd) return false;
            earlierEnd = std::exchange(end, doubles_.contains(at) ? at + 2 : at + 1);
            return true;
        });
        return reached | taken.shiftedBy(1) | (taken & doubles_).shiftedBy(2);
    }

    const CodePage &page_;
    unsigned char bytes_[kSize] = {};
    unsigned char trailBytes_[kMultibyte ? kSize : 1] = {};  // each at the place of its lead byte
    Set all_;                                                // up to the line feed
    Set lineFeeds_;
    Set doubles_;  // where characters of two bytes begin
};

template <std::size_t kWords>
bool matches(const char *subject, std::size_t length, const char *program) {
    const CodePage &page = currentCodePage();
    return page.number() == 0 ? Subject<kWords, false>(page, subject, length).matches(program)
                              : Subject<kWords, true>(page, subject, length).matches(program);
}

}  // namespace

}  // namespace vx

int vxMatchPattern(const char *subject, const char *compiled) {
    const std::size_t length = ::strnlen(subject, vx::kMaxSubject + 1);
    if (length > vx::kMaxSubject) return 0;
    // Most file names fit into one word. Any subject fits into eight.
    const bool answer = length + 2 <= 64 ? vx::matches<1>(subject, length, compiled)
                                         : vx::matches<8>(subject, length, compiled);
    return answer ? 1 : 0;
}
