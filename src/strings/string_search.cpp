// Searching, comparing and reading numbers: nothing here changes a string.

#include "platform/code_page.h"

#include <vxstring.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

using vx::lowered;
using vx::uppered;

std::size_t size(int n) {
    return static_cast<std::size_t>(n);
}

// The index of what a search of the C library came up with.
int indexIn(const char *text, const void *found) {
    return found == nullptr ? -1 : static_cast<int>(static_cast<const char *>(found) - text);
}

// ---- Searching --------------------------------------------------------------------------------

// A pattern and a stretch of text are folded side by side on the stack, so that the search itself
// is the C library's. Of a longer pattern only the head is searched for.
constexpr int kFoldedPattern = 512;
constexpr int kFoldedText = 2048;

void fold(char *to, const char *from, int n) {
    for (int i = 0; i < n; ++i)
        to[i] = lowered(from[i]);
}

bool equalFolded(const char *one, const char *other, int n) {
    for (int i = 0; i < n; ++i) {
        if (lowered(one[i]) != lowered(other[i])) return false;
    }
    return true;
}

// The first place from `start` on where n bytes of text hold the folded pattern.
int findFolded(const char *text, int n, int start, const char *pattern, int length) {
    char folded[kFoldedText];
    while (n - start >= length) {
        const int stretch = std::min(n - start, kFoldedText);
        fold(folded, text + start, stretch);
        const int at = indexIn(folded, memmem(folded, size(stretch), pattern, size(length)));
        if (at >= 0) return start + at;
        start += stretch - length + 1;  // a match may begin in this stretch and end in the next
    }
    return -1;
}

class ByteSet {
public:
    explicit ByteSet(std::string_view bytes) {
        for (const char byte : bytes)
            add(byte);
    }

    static ByteSet ofBothCases(std::string_view bytes) {
        ByteSet set({});
        for (const char byte : bytes) {
            set.add(lowered(byte));
            set.add(uppered(byte));
        }
        return set;
    }

    // How many bytes of a text from `start` on are members (1), or are none (0).
    int span(std::string_view text, int start, unsigned char membership) const {
        const int n = static_cast<int>(text.size());
        int i = start;
        // Eight at a time, so that one branch serves eight look-ups.
        for (; n - i >= 8; i += 8) {
            unsigned int strangers = 0;
            for (int j = 0; j < 8; ++j)
                strangers |=
                    static_cast<unsigned int>(members_[index(text[size(i + j)])] ^ membership);
            if (strangers != 0) break;
        }
        while (i < n && members_[index(text[size(i)])] == membership)
            ++i;
        return i - start;
    }

private:
    static std::size_t index(char byte) { return static_cast<unsigned char>(byte); }
    void add(char byte) { members_[index(byte)] = 1; }

    std::array<unsigned char, 256> members_{};  // 0 or 1
};

// ---- Comparing --------------------------------------------------------------------------------

// Moves `i` behind a stretch of n bytes if that is equal.
template <int kStretch>
bool skipEqual(const char *one, const char *other, int n, int &i) {
    if (n - i < kStretch || std::memcmp(one + i, other + i, kStretch) != 0) return false;
    i += kStretch;
    return true;
}

// The same with ever smaller stretches, of sizes that the compiler knows and so compares in line.
template <int kStretch>
void skipHalves(const char *one, const char *other, int n, int &i) {
    skipEqual<kStretch>(one, other, n, i);
    if constexpr (kStretch > 1) skipHalves<kStretch / 2>(one, other, n, i);
}

// The index of the first of n bytes that differ, n if none do. The C library compares fast but does
// not tell where; so it gets long stretches, and then the halves of the one that differs.
int firstDifference(const char *one, const char *other, int n) {
    constexpr int kStretch = 512;
    if (*one != *other) return 0;
    int i = 0;
    while (skipEqual<kStretch>(one, other, n, i))
        continue;
    skipHalves<kStretch / 2>(one, other, n, i);
    return i;
}

int firstFoldedDifference(const char *one, const char *other, int n) {
    constexpr int kStretch = 64;  // as compilers turn into vector code
    int i = 0;
    for (; n - i >= kStretch; i += kStretch) {
        char differences = 0;
        for (int j = 0; j < kStretch; ++j)
            differences |= static_cast<char>(lowered(one[i + j]) ^ lowered(other[i + j]));
        if (differences != 0) break;
    }
    while (i < n && lowered(one[i]) == lowered(other[i]))
        ++i;
    return i;
}

int difference(char one, char other) {
    return static_cast<signed char>(one) - static_cast<signed char>(other);
}

}  // namespace

int VxString::find(char byte, int start, short backward) const {
    assert(start >= 0);
    if (start >= rep_->length) return -1;
    const char *text = rep_->data;
    const std::size_t n = size(rep_->length - start);
    return indexIn(text,
                   backward != 0 ? memrchr(text, byte, n) : std::memchr(text + start, byte, n));
}

int VxString::findC(char byte, int start, short backward) const {
    assert(start >= 0);
    const char low = lowered(byte);
    const char high = uppered(byte);
    if (low == high) return find(byte, start, backward);
    // In stretches, so that a search for the one case does not run far past the other.
    const char *text = rep_->data;
    int n = 0;
    if (backward != 0) {
        for (int end = rep_->length - start; end > 0; end -= n) {
            n = std::min(end, kFoldedText);
            const int one = indexIn(text, memrchr(text + end - n, low, size(n)));
            const int from = one >= 0 ? one : end - n;
            const int other = indexIn(text, memrchr(text + from, high, size(end - from)));
            if (one >= 0 || other >= 0) return std::max(one, other);
        }
    } else {
        for (int at = start; at < rep_->length; at += n) {
            n = std::min(rep_->length - at, kFoldedText);
            const int one = indexIn(text, std::memchr(text + at, low, size(n)));
            const int end = one >= 0 ? one : at + n;
            const int other = indexIn(text, std::memchr(text + at, high, size(end - at)));
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
    return indexIn(text, memmem(text + start, size(rep_->length - start), pattern.rep_->data,
                                size(pattern.rep_->length)));
}

int VxString::findC(const VxString &pattern, int start) const {
    assert(start >= 0);
    const int length = pattern.rep_->length;
    if (length == 0) return find('\0', start, 0);
    if (start >= rep_->length || length > rep_->length - start) return -1;
    const int headLength = std::min(length, kFoldedPattern);
    char head[kFoldedPattern];
    fold(head, pattern.rep_->data, headLength);

    const char *text = rep_->data;
    const int end = rep_->length - (length - headLength);  // a head behind it has no room
    for (int at = start; (at = findFolded(text, end, at, head, headLength)) >= 0; ++at) {
        if (equalFolded(text + at + headLength, pattern.rep_->data + headLength,
                        length - headLength)) {
            return at;
        }
    }
    return -1;
}

int VxString::findInSet(const VxString &set, int start) const {
    assert(start >= 0);
    return ByteSet(vxStringView(set)).span(vxStringView(*this), start, 1);
}

int VxString::findNotInSet(const VxString &set, int start) const {
    assert(start >= 0);
    return ByteSet(vxStringView(set)).span(vxStringView(*this), start, 0);
}

int VxString::findInSetC(const VxString &set, int start) const {
    assert(start >= 0);
    return ByteSet::ofBothCases(vxStringView(set)).span(vxStringView(*this), start, 1);
}

int VxString::findNotInSetC(const VxString &set, int start) const {
    assert(start >= 0);
    return ByteSet::ofBothCases(vxStringView(set)).span(vxStringView(*this), start, 0);
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

// In both orders the NUL behind the shorter text takes part.

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

short VxString::operator<(const VxString &other) const {
    return compare(other) < 0 ? 1 : 0;
}

short VxString::operator<=(const VxString &other) const {
    return compare(other) <= 0 ? 1 : 0;
}

short VxString::operator>(const VxString &other) const {
    return compare(other) > 0 ? 1 : 0;
}

short VxString::operator>=(const VxString &other) const {
    return compare(other) >= 0 ? 1 : 0;
}

// ---- Numbers ------------------------------------------------------------------------------

int VxString::getInt(int start) const {
    int end = 0;
    return getInt(start, end);
}

int VxString::getInt(int start, int &end) const {
    assert(start >= 0 && start <= rep_->length);
    char *unused = nullptr;
    const long value = std::strtol(rep_->data + start, &unused, 10);
    end = indexIn(rep_->data, unused);
    // A long may be wider than what the result can hold.
    return static_cast<int>(std::clamp<long>(value, INT_MIN, INT_MAX));
}

double VxString::getDouble(int start) const {
    int end = 0;
    return getDouble(start, end);
}

double VxString::getDouble(int start, int &end) const {
    assert(start >= 0 && start <= rep_->length);
    char *unused = nullptr;
    const double value = std::strtod(rep_->data + start, &unused);
    end = indexIn(rep_->data, unused);
    return value;
}
