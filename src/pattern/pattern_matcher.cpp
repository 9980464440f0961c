// Running a subject against a compiled pattern.
//
// Only yes or no is asked for, so the matcher takes all ways through a pattern at once: it goes
// over the elements one by one and keeps the set of positions of the subject that can be reached
// so far. Each element costs about the same whatever the set, and nothing is tried twice.

#include "pattern/byte_mask.h"
#include "pattern/pattern_compiler.h"
#include "pattern/position_set.h"
#include "platform/code_page.h"

#include <cstring>

namespace {

using vx::CodePage;

constexpr std::size_t kLongestSubject = 510;  // a line feed and a zero byte are put behind it

unsigned byteAt(const char *at) {
    return static_cast<unsigned char>(*at);
}

// A lead byte counts as the first half of a character whatever follows, in code but not in step.
unsigned codeAt(const CodePage &page, const char *at) {
    return page.isLead(at[0]) ? byteAt(at) * 256 + byteAt(at + 1) : byteAt(at);
}

int vxPatternElementLength(const CodePage &page, const char *element) {
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

// A subject as it is matched: with a line feed behind it, of which $ is the place. kDouble tells
// whether the code page has characters of two bytes.
template <std::size_t kWords, bool kDouble>
class Subject {
public:
    using Set = PositionSet<kWords>;

    Subject(const CodePage &page, const char *text, std::size_t length)
        : page_(page), all_(Set::upTo(length)) {
        std::memcpy(bytes_, text, length);
        bytes_[length] = '\n';
        if constexpr (kDouble) findDoubles(length);
        lineFeeds_ = holdingByte('\n');
    }

    bool matches(const char *form) const {
        Set reached = all_;  // a match may begin anywhere
        int index = 0;
        while (form[index] != '\0') {
            const bool repeated = form[index] == '*';
            if (repeated) ++index;
            if (index >= kPatternLimit) return false;
            const char *element = form + index;
            const int length = vxPatternElementLength(page_, element);
            if (index + length > kPatternLimit) return false;
            reached = repeated ? repeat(reached, element) : pass(reached, element);
            if (reached.isEmpty()) return false;
            index += length;
            if constexpr (!kDouble) index = passPlainRun(reached, form, index);
        }
        return !reached.isEmpty();
    }

private:
    static constexpr std::size_t kSize = kWords * 64;

    void findDoubles(std::size_t length) {
        for (std::size_t i = 0; i < length; ++i) {
            const char *at = reinterpret_cast<const char *>(bytes_) + i;
            if (page_.isLead(*at)) seconds_[i] = bytes_[i + 1];
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

    // Where a character with this code is.
    Set holdingCode(unsigned code) const {
        if constexpr (!kDouble) return holdingByte(code);
        return code < 256 ? holdingByte(code) & holding(seconds_, 0)
                          : holdingByte(code / 256) & holding(seconds_, code % 256);
    }

    // Where a character of a list is, among these positions at least.
    Set holdingAny(const char *list, std::size_t length, const Set &among) const {
        Set found;
        std::size_t only = 0;
        if (!kDouble && among.isOne(only)) {
            if (std::memchr(list, bytes_[only], length) != nullptr) found.insert(only);
            return found;
        }
        for (std::size_t i = 0; i < length; i += list[i] != '\0' ? page_.step(list + i) : 1)
            found = found | holdingCode(codeAt(page_, list + i));
        return found;
    }

    // Where an element matches, among these positions at least.
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

    static bool isAnchor(const char *element) { return *element == '^' || *element == '$'; }

    // Reached behind one match of an element.
    Set pass(const Set &reached, const char *element) const {
        const Set matched = reached & matching(element, reached);
        if (isAnchor(element)) return matched;
        if (!kDouble || *element == '?') return matched.movedBy(1);
        return matched.without(doubles_).movedBy(1) | (matched & doubles_).movedBy(2);
    }

    // Passes a run of single characters from the only position that is reached, if there is but
    // one, as there mostly is behind the first of them: no sets are needed for that. Gives the
    // index of the element behind the run.
    int passPlainRun(Set &reached, const char *form, int index) const {
        std::size_t only = 0;
        if (form[index] != 'c' || !reached.isOne(only)) return index;
        for (; index < kPatternLimit - 1 && form[index] == 'c'; index += 2, ++only) {
            if (bytes_[only] != byteAt(form + index + 1) || bytes_[only] == 0) {
                reached = {};
                return index;
            }
        }
        reached = {};
        reached.insert(only);
        return index;
    }

    // Reached behind any number of matches. A long run may be given back in part byte by byte, so
    // every byte up to its end counts, second halves of characters too.
    Set repeat(const Set &reached, const char *element) const {
        if (isAnchor(element)) return reached;
        const Set matched = matching(element, all_);
        if (!kDouble || *element == '?' || (matched & doubles_).isEmpty()) {
            return reached.closedUnder(matched);
        }
        return closedUnderCharacters(reached, matched);
    }

    // Bit by bit, as a step from one place may lead to the next or to the one behind it; but
    // without a branch on what is reached, and with what leaves a word carried into the next.
    Set closedUnderCharacters(const Set &from, const Set &matched) const {
        Set closed;
        std::uint64_t carriedReached = 0;
        std::uint64_t carriedHalves = 0;
        for (std::size_t i = 0; i < kWords; ++i) {
            const std::uint64_t steps = matched.word(i);
            const std::uint64_t doubles = doubles_.word(i);
            std::uint64_t reached = from.word(i) | carriedReached;
            std::uint64_t halves = carriedHalves;
            const std::uint64_t open = reached & steps;
            for (std::uint64_t bit = open & (~open + 1); bit != 0; bit <<= 1) {
                const std::uint64_t taken = reached & steps & bit;
                const std::uint64_t two = taken & doubles;
                reached |= (taken ^ two) << 1 | two << 2;
                halves |= two << 1;
            }
            const std::uint64_t last = reached & steps;
            carriedReached = (last & ~doubles) >> 63 | (last & doubles) >> 62;
            carriedHalves = (last & doubles) >> 63;
            closed.word(i) = reached | halves;
        }
        return closed;
    }

    const CodePage &page_;
    unsigned char bytes_[kSize] = {};
    unsigned char seconds_[kDouble ? kSize : 1] = {};  // the other half of the code of a lead byte
    Set all_;                                          // up to the line feed
    Set lineFeeds_;
    Set doubles_;  // where characters of two bytes begin
};

template <std::size_t kWords>
bool matches(const char *subject, std::size_t length, const char *form) {
    const CodePage &page = vx::currentCodePage();
    return page.number() == 0 ? Subject<kWords, false>(page, subject, length).matches(form)
                              : Subject<kWords, true>(page, subject, length).matches(form);
}

}  // namespace

int vxMatchPattern(const char *subject, const char *compiled) {
    const std::size_t length = ::strnlen(subject, kLongestSubject + 1);
    if (length > kLongestSubject) return 0;
    // A file name mostly fits one word, all else eight.
    const bool answer = length + 2 <= 64 ? matches<1>(subject, length, compiled)
                                         : matches<8>(subject, length, compiled);
    return answer ? 1 : 0;
}
