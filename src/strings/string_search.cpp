// Searching, comparing and reading numbers: nothing here changes a string.

#include "platform/code_page.h"
#include "platform/memory.h"

#include <vxstring.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

using vx::lowered;
using vx::uppered;

std::size_t toSize(int n) {
    return static_cast<std::size_t>(n);
}

std::size_t toIndex(char byte) {
    return static_cast<unsigned char>(byte);
}

// The index of what a search of the C library returned.
int indexIn(const char *text, const void *found) {
    return found == nullptr ? -1 : static_cast<int>(static_cast<const char *>(found) - text);
}

// How many of n bytes are equal up to the first difference, ignoring case.
int countEqualFolded(const char *one, const char *other, int n) {
    int i = 0;
    while (i < n && lowered(one[i]) == lowered(other[i]))
        ++i;
    return i;
}

// ---- Searching, ignoring case -----------------------------------------------------------------

// A short pattern and stretches of the text are folded on the stack, so that the C library can
// search them. Its search prepares each call, at small cost only for patterns up to this length.
constexpr int kShortPattern = 256;
constexpr int kFoldedText = 2048;

// The first place from `start` on where n bytes of text hold the pattern.
int findShort(const char *text, int n, int start, const char *pattern, int length) {
    char foldedPattern[kShortPattern];
    std::transform(pattern, pattern + length, foldedPattern, lowered);
    char folded[kFoldedText];
    while (n - start >= length) {
        const int stretch = std::min(n - start, kFoldedText);
        std::transform(text + start, text + start + stretch, folded, lowered);
        const void *found = vx::findBytes(folded, toSize(stretch), foldedPattern, toSize(length));
        if (found != nullptr) return start + indexIn(folded, found);
        start += stretch - length + 1;  // a match may begin in this stretch and end in the next
    }
    return -1;
}

// Where the largest suffix of the pattern begins, and its period, in the order of bytes or in the
// reverse order.
std::pair<int, int> maximalSuffix(const char *pattern, int length, bool isReversed) {
    int start = 0;
    int period = 1;
    int other = 1;  // the start of a suffix that may be larger
    int equal = 0;  // bytes in which it equals the largest so far
    while (other + equal < length) {
        const char largest = lowered(pattern[start + equal]);
        const char found = lowered(pattern[other + equal]);
        ++equal;
        if (found == largest) {
            if (equal < period) continue;
            other += equal;
        } else if ((found < largest) != isReversed) {
            other += equal;
            period = other - start;
        } else {
            start = other++;
            period = 1;
        }
        equal = 0;
    }
    return {start, period};
}

// How far to the next place where a byte of the text can be the last one of the pattern.
std::array<int, 256> shiftsByLastByte(const char *pattern, int length) {
    std::array<int, 256> shifts;
    shifts.fill(length);
    for (int i = 0; i < length; ++i)
        shifts[toIndex(lowered(pattern[i]))] = length - 1 - i;
    for (char letter = 'A'; letter <= 'Z'; ++letter)
        shifts[toIndex(letter)] = shifts[toIndex(lowered(letter))];
    return shifts;
}

// The same as findShort by the two-way algorithm of Crochemore and Perrin: in linear time for any
// pattern, and in constant space. The pattern is split where its largest suffix begins. The right
// part is compared first: if its byte k differs, none of the next k places can match. If only the
// left part differs, the period of the pattern gives the next place.
int findLong(const char *text, int n, int start, const char *pattern, int length) {
    const std::array<int, 256> shifts = shiftsByLastByte(pattern, length);
    const auto nextWithLastByte = [&](int at) {
        while (n - at >= length && shifts[toIndex(text[at + length - 1])] > 0)
            at += shifts[toIndex(text[at + length - 1])];
        return at;
    };
    int at = nextWithLastByte(start);
    if (n - at < length) return -1;  // spares the split

    const auto [split, period] =
        std::max(maximalSuffix(pattern, length, false), maximalSuffix(pattern, length, true));
    const bool isPeriodic = countEqualFolded(pattern, pattern + period, split) == split;
    int known = 0;  // so many bytes from `at` on are equal to the pattern's, by its period
    while (n - at >= length) {
        const int from = std::max(split, known);
        const int end = from + countEqualFolded(text + at + from, pattern + from, length - from);
        if (end < length) {
            at = nextWithLastByte(at + end - split + 1);
            known = 0;
        } else if (countEqualFolded(text + at, pattern, split) == split) {
            return at;
        } else if (isPeriodic) {
            at += period;
            known = length - period;
        } else {
            at = nextWithLastByte(at + std::max(split, length - split) + 1);
        }
    }
    return -1;
}

class ByteSet {
public:
    explicit ByteSet(std::string_view bytes, bool isOfBothCases = false) {
        for (const char byte : bytes) {
            members_[toIndex(isOfBothCases ? lowered(byte) : byte)] = 1;
            members_[toIndex(isOfBothCases ? uppered(byte) : byte)] = 1;
        }
    }

    // How many consecutive bytes of a text from `start` on are members (1), or not members (0).
    int span(std::string_view text, int start, unsigned char membership) const {
        assert(start >= 0);
        const int n = static_cast<int>(text.size());
        int i = start;
        // Eight at a time, so that one branch serves eight look-ups.
        for (; n - i >= 8; i += 8) {
            unsigned int mismatch = 0;
            for (int j = 0; j < 8; ++j)
                mismatch |=
                    static_cast<unsigned int>(members_[toIndex(text[toSize(i + j)])] ^ membership);
            if (mismatch != 0) break;
        }
        while (i < n && members_[toIndex(text[toSize(i)])] == membership)
            ++i;
        return i - start;
    }

private:
    std::array<unsigned char, 256> members_{};  // 0 or 1
};

// ---- Comparing --------------------------------------------------------------------------------

// Moves `i` past a stretch of n bytes if it is equal.
template <int kStretch>
bool skipEqual(const char *one, const char *other, int n, int &i) {
    if (n - i < kStretch || std::memcmp(one + i, other + i, kStretch) != 0) return false;
    i += kStretch;
    return true;
}

// The same with halved stretches down to one byte. The compiler knows their sizes and compares them
// inline.
template <int kStretch>
void skipHalves(const char *one, const char *other, int n, int &i) {
    skipEqual<kStretch>(one, other, n, i);
    if constexpr (kStretch > 1) skipHalves<kStretch / 2>(one, other, n, i);
}

// The index of the first of n bytes that differ, n if none do. The C library compares fast but does
// not report the place, so it compares long stretches, then halves of the one that differs.
// Inlined, as a call would cost short texts half of their time again.
[[gnu::always_inline]] inline int firstDifference(const char *one, const char *other, int n) {
    constexpr int kStretch = 512;
    if (*one != *other) return 0;
    int i = 0;
    while (skipEqual<kStretch>(one, other, n, i))
        continue;
    skipHalves<kStretch / 2>(one, other, n, i);
    return i;
}

// The same, ignoring case. Most of an equal text is equal in case, too.
int firstFoldedDifference(const char *one, const char *other, int n) {
    constexpr int kStretch = 64;  // compilers turn such a loop into vector code
    int i = firstDifference(one, other, n);
    for (; n - i >= kStretch; i += kStretch) {
        char differences = 0;
        for (int j = 0; j < kStretch; ++j)
            differences |= static_cast<char>(lowered(one[i + j]) ^ lowered(other[i + j]));
        if (differences != 0) break;
    }
    return i + countEqualFolded(one + i, other + i, n - i);
}

int difference(char one, char other) {
    return static_cast<signed char>(one) - static_cast<signed char>(other);
}

}  // namespace

int VxString::find(char byte, int start, short backward) const {
    assert(start >= 0);
    if (start >= rep_->length) return -1;
    const char *text = rep_->data;
    const std::size_t n = toSize(rep_->length - start);
    return indexIn(
        text, backward != 0 ? vx::findLastByte(text, byte, n) : std::memchr(text + start, byte, n));
}

int VxString::findC(char byte, int start, short backward) const {
    assert(start >= 0);
    const char low = lowered(byte);
    const char high = uppered(byte);
    if (low == high) return find(byte, start, backward);
    // In stretches, so that a search for one case does not run far past the other case.
    const char *text = rep_->data;
    int n = 0;
    if (backward != 0) {
        for (int end = rep_->length - start; end > 0; end -= n) {
            n = std::min(end, kFoldedText);
            const int one = indexIn(text, vx::findLastByte(text + end - n, low, toSize(n)));
            const int from = one >= 0 ? one : end - n;
            const int other =
                indexIn(text, vx::findLastByte(text + from, high, toSize(end - from)));
            if (one >= 0 || other >= 0) return std::max(one, other);
        }
    } else {
        for (int at = start; at < rep_->length; at += n) {
            n = std::min(rep_->length - at, kFoldedText);
            const int one = indexIn(text, std::memchr(text + at, low, toSize(n)));
            const int end = one >= 0 ? one : at + n;
            const int other = indexIn(text, std::memchr(text + at, high, toSize(end - at)));
            if (one >= 0 || other >= 0) return other >= 0 ? other : one;
        }
    }
    return -1;
}

int VxString::find(const VxString &pattern, int start) const {
    assert(start >= 0);
    if (pattern.rep_->length == 0) return find('\0', start, 0);
    if (start >= rep_->length) return -1;
    const char *text = rep_->data;
    return indexIn(text, vx::findBytes(text + start, toSize(rep_->length - start),
                                       pattern.rep_->data, toSize(pattern.rep_->length)));
}

int VxString::findC(const VxString &pattern, int start) const {
    assert(start >= 0);
    const int length = pattern.rep_->length;
    if (length == 0) return find('\0', start, 0);
    if (length > rep_->length - start) return -1;
    const auto search = length <= kShortPattern ? findShort : findLong;
    return search(rep_->data, rep_->length, start, pattern.rep_->data, length);
}

int VxString::findInSet(const VxString &set, int start) const {
    return ByteSet(set.view()).span(view(), start, 1);
}

int VxString::findNotInSet(const VxString &set, int start) const {
    return ByteSet(set.view()).span(view(), start, 0);
}

int VxString::findInSetC(const VxString &set, int start) const {
    return ByteSet(set.view(), true).span(view(), start, 1);
}

int VxString::findNotInSetC(const VxString &set, int start) const {
    return ByteSet(set.view(), true).span(view(), start, 0);
}

unsigned int VxString::hash() const {
    unsigned int h = 0;
    for (const char *at = rep_->data; *at != '\0'; ++at) {
        h = (h << 4) + static_cast<unsigned int>(static_cast<signed char>(*at));
        const unsigned int g = h & 0xf0000000U;
        h ^= g >> 24 ^ g;  // nothing when g is 0
    }
    return h;
}

// Both comparisons include the NUL after the shorter text.

int VxString::compare(const VxString &other) const {
    if (rep_ == other.rep_) return 0;
    const int n = std::min(rep_->length, other.rep_->length) + 1;
    const int at = firstDifference(rep_->data, other.rep_->data, n);
    return at == n ? 0 : difference(rep_->data[at], other.rep_->data[at]);
}

int VxString::compareC(const VxString &other) const {
    if (rep_ == other.rep_) return 0;
    const int n = std::min(rep_->length, other.rep_->length) + 1;
    const int at = firstFoldedDifference(rep_->data, other.rep_->data, n);
    return at == n ? 0 : difference(lowered(rep_->data[at]), lowered(other.rep_->data[at]));
}

// ---- Numbers ------------------------------------------------------------------------------

int VxString::getInt(int start, int &end) const {
    assert(start >= 0 && start <= rep_->length);
    char *stop = nullptr;
    const long value = std::strtol(rep_->data + start, &stop, 10);
    end = indexIn(rep_->data, stop);
    // A long may hold more than an int.
    return static_cast<int>(std::clamp<long>(value, INT_MIN, INT_MAX));
}

double VxString::getDouble(int start, int &end) const {
    assert(start >= 0 && start <= rep_->length);
    char *stop = nullptr;
    const double value = std::strtod(rep_->data + start, &stop);
    end = indexIn(rep_->data, stop);
    return value;
}
