/*
 * vxstring.h: byte strings that share their text until one of them changes it.
 *
 * A VxString points to a body, which holds the text and a reference count. Copying and assigning
 * only step the count, so their cost does not depend on the length. The first change through a
 * string that shares its body detaches it: the string gets a body of its own. Lengths are in bytes.
 * Text may contain NUL bytes, and one more NUL always follows it. No member treats a multibyte
 * character as a unit.
 *
 * Sharing
 *
 *     these detach        +=  set  toUpper  toLower  setLengthHint, and operator[] of a non-const
 *                         string even if it only reads
 *     these copy no text  copy, =, length, operator[] of a const string, the conversion to
 *                         const char *, setMemoryHint, searches, comparisons with a VxString,
 *                         number readers
 *     these make a body   get; operator+, unless its right side is empty: then the sum shares the
 *                         body of the left side
 *
 *     += with an empty text and setLengthHint at or below the length change nothing.
 *
 * Pointers and references
 *
 *     The pointer from the conversion to const char *, and a std::string_view, are valid until the
 *     string is next changed, assigned to or destroyed. Reading s[i] of a non-const string counts
 *     as a change, because it may detach; to read in a loop use a const string or the pointer.
 *     A reference from operator[] is valid equally long. Do not write through it after copying the
 *     string: the copies would change too.
 *     A sum is a temporary, so const char *p = a + b dangles: write VxString sum = a + b.
 *
 * Growth. When text outgrows its body, the new body holds exactly the new length or, with a memory
 * hint other than 0, twice that, up to the limit below. To build text from many pieces, set the
 * hint, or call setLengthHint if the length is known.
 *
 * Limits. A debug build asserts the limits given as REQUIRES; a release build does not test them,
 * and behaviour outside them is undefined. Members that are not inline assert only if the library
 * itself is a debug build.
 *
 * Conversions. Indices and lengths are ints. An index of type std::ptrdiff_t (long on 64-bit
 * Linux) is ambiguous; other integer types convert to int. VxString(char) takes only the type char:
 * bool, short, signed char and unsigned char become decimal numbers. A const char * works next to a
 * string, as in s == "a", "a" < s, s + "b". Other expressions have no conversion, or are ambiguous
 * (some only warn with gcc):
 *
 *     Does not compile                        Write instead
 *     if (s)  !s  s && t                      if (s.length() != 0)
 *     s == 'c'  s < 'c'  s + 'c'  s + 1       s == VxString('c')  s + VxString(1)
 *     s == 17  s == 0                         s.getInt(0) == 17
 *     s[i], i a long or std::ptrdiff_t        s[static_cast<int>(i)]
 *     VxString(n)  s = n  s += n, n an        s = VxString(static_cast<int>(n)), or beyond an int
 *         unsigned, long, long long, size_t       s = vxStringFrom(std::to_string(n))
 *     long n = s  bool b = s  float f = s     s.getInt(0)  s.getDouble(0)
 *     std::string t = s  t = s  t += s        std::string t(vxStringView(s))  t += vxStringView(s)
 *     VxString(t)  s = t  s == t  s + t, t a  s = vxStringFrom(t)  vxStringView(s) == t
 *         std::string or std::string_view
 *     stream << s                             stream << vxStringView(s)
 *
 * std::string t(s) compiles, but takes the text only up to its first NUL.
 * Variable arguments, such as those of printf, need static_cast<const char *>(s).
 *
 * Out of memory, or beyond 2^31 - 65 bytes, a new string is empty and a change does not happen: the
 * string keeps its text, and operator[] returns a reference to a byte that no string uses.
 *
 * Threads. The reference count is a plain integer. Strings that share a body belong to one thread
 * at a time, even if each of them only copies or destroys strings. Strings with bodies of their own
 * are independent. Any number of threads may search, compare, view and get from a string while no
 * thread changes, copies, assigns or destroys it or a string that shares its body.
 *
 * For another thread make an unshared copy: VxString copy = s.get(0). Pass it by pointer or
 * reference, and do not copy it in this thread. To pass it by value, as std::thread does, would
 * share its body.
 */
#ifndef VXSTRING_H
#define VXSTRING_H

#include "vxexports.h"

#include <cassert>
#include <compare>
#include <cstring>
#include <string_view>

class VX_API VxString {
public:
    // How a body grows. Any value other than 0 has the effect of kDoubleRoom.
    enum MemoryHint : int { kExactRoom = 0, kDoubleRoom = 1 };

    // An empty string, with a body of its own.
    VxString();

    // Shares the other's body.
    VX_INLINE VxString(const VxString &other) : rep_(other.rep_) { ref(); }

    // One byte, which may be 0.
    VxString(char byte);

    // The text up to its NUL. Null gives an empty string.
    VxString(const char *text);

    // The number in decimal.
    VxString(int value);

    // The number as printf writes it for "%.15g": at most 15 significant digits, with the decimal
    // point of the LC_NUMERIC locale.
    VxString(double value);

    VX_INLINE ~VxString() { release(); }

    // Shares the other's body. If both share one already, nothing changes.
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): a string shares its body with itself
    VX_INLINE VxString &operator=(const VxString &other) {
        if (rep_ != other.rep_) {
            release();
            rep_ = other.rep_;
            ref();
        }
        return *this;
    }

    // Bytes of text.
    VX_INLINE int length() const { return rep_->length; }

    // The text with its NUL, never null. The string owns it.
    VX_INLINE operator const char *() const { return rep_->data; }

    // The same as getInt(0) and getDouble(0).
    VX_INLINE operator int() const { return getInt(0); }
    VX_INLINE operator double() const { return getDouble(0); }

    // Appends. A string may be appended to itself.
    VxString &operator+=(const VxString &other);

    // Both texts, one after the other. If `other` is empty, the result shares this string's body.
    VxString operator+(const VxString &other) const;

    // The byte at an index; 0 at length(). REQUIRES: 0 <= index <= length().
    VX_INLINE char operator[](int index) const {
        assert(index >= 0 && index <= rep_->length);
        return rep_->data[index];
    }

    // Detaches and returns a reference to the byte. Storing a NUL does not change the length. At
    // length() the reference is to one byte for all strings of all threads; each such call sets it
    // to 0, and writes there are lost. REQUIRES: 0 <= index <= length().
    char &operator[](int index);

    // A new string with a body of its own: `count` bytes at `start`, or all from `start` on.
    // REQUIRES: start >= 0, count >= 0, start + count <= length().
    VX_INLINE VxString get(int start) const { return get(start, rep_->length - start); }
    VxString get(int start, int count) const;

    // Substitutes `replacement` for the `count` bytes at `start`. An empty replacement deletes
    // them; a count of 0 inserts. REQUIRES: start >= 0, count >= 0, start + count <= length();
    // `replacement` is another object, which may share this body.
    VxString &set(int start, int count, const VxString &replacement);

    // Change the case of the letters A to Z; all other bytes stay.
    VxString &toUpper();
    VxString &toLower();

    // Sets how the body grows. This does not detach: it affects all strings that share the body. A
    // string that += detaches keeps the hint; detached in any other way it has hint 0.
    void setMemoryHint(MemoryHint hint);

    // Moves the text to a new body that holds exactly n bytes, with hint 0, even if the present
    // body holds more. Does nothing if n is at or below the length.
    void setLengthHint(int n);

    // ---- Searching -----------------------------------------------------------------------
    //
    // Positions count from the beginning of the text. The members whose names end in C ignore the
    // case of the letters A to Z. The time for a pattern is linear in the two lengths. REQUIRES for
    // all: start >= 0.

    // The first occurrence of the byte at or after `start`. If `backward` is not 0: the last one
    // that is not among the final `start` bytes of the text, so that 0 searches all of it and 1
    // leaves out the last byte. -1 if there is none.
    //
    //     VxString("abca").find('a', 1, 0) == 3
    //     VxString("abca").find('a', 1, 1) == 0
    int find(char byte, int start, short backward) const;
    int findC(char byte, int start, short backward) const;

    // The first occurrence of the pattern that begins at or after `start`, or -1. An empty pattern
    // is found at the first NUL byte inside the text, so in ordinary text never.
    int find(const VxString &pattern, int start) const;
    int findC(const VxString &pattern, int start) const;

    // The length of the run of bytes from `start` on that belong to the set, or that do not. This
    // is a length, not a position: the run ends at start + result. 0 for a start at or above
    // length(). The C forms take both cases of each letter of the set.
    //
    //     VxString("aabbc").findInSet("ab", 1) == 3
    //     VxString("aabbc").findNotInSet("c", 1) == 3
    int findInSet(const VxString &set, int start) const;
    int findNotInSet(const VxString &set, int start) const;
    int findInSetC(const VxString &set, int start) const;
    int findNotInSetC(const VxString &set, int start) const;

    // ---- Comparing -----------------------------------------------------------------------
    //
    // ==, !=, <=> and std::hash depend on all bytes and the length; <, <=, > and >= on compare.

    // The hash of the text up to its first NUL: the one of P. J. Weinberger in the form that ELF
    // symbol tables use, with signed bytes. Computed at each call.
    unsigned int hash() const;

    // The difference of the first two bytes that differ, as signed chars (-255 to 255), or 0. The
    // NUL after the shorter text is the last byte compared. So bytes from 0x80 up sort before the
    // end of a text and before all other bytes, and "a" compares equal to "a\0b".
    int compare(const VxString &other) const;
    int compareC(const VxString &other) const;

    // 1 if so, else 0.
    VX_INLINE short operator==(const VxString &other) const { return equals(other) ? 1 : 0; }
    VX_INLINE short operator!=(const VxString &other) const { return equals(other) ? 0 : 1; }
    VX_INLINE short operator<(const VxString &other) const { return compare(other) < 0 ? 1 : 0; }
    VX_INLINE short operator<=(const VxString &other) const { return compare(other) <= 0 ? 1 : 0; }
    VX_INLINE short operator>(const VxString &other) const { return compare(other) > 0 ? 1 : 0; }
    VX_INLINE short operator>=(const VxString &other) const { return compare(other) >= 0 ? 1 : 0; }

    // A total order: that of compare and, where compare returns 0, the shorter text first. It is
    // what std::pair, std::tuple, std::vector, std::array and a defaulted <=> use.
    friend std::strong_ordering operator<=>(const VxString &one, const VxString &other) {
        const int difference = one.compare(other);
        return difference != 0 ? difference <=> 0 : one.length() <=> other.length();
    }

    // ---- With text ending at its NUL -----------------------------------------------------
    //
    // The same results as for VxString(text), where null counts as "". All but == and != make that
    // string, which is empty when out of memory.
    friend bool operator==(const VxString &s, const char *text) {
        return s.view() == (text != nullptr ? text : "");
    }
    friend bool operator<(const VxString &s, const char *text) { return s < VxString(text); }
    friend bool operator<=(const VxString &s, const char *text) { return s <= VxString(text); }
    friend bool operator>(const VxString &s, const char *text) { return s > VxString(text); }
    friend bool operator>=(const VxString &s, const char *text) { return s >= VxString(text); }
    friend bool operator<(const char *text, const VxString &s) { return VxString(text) < s; }
    friend bool operator<=(const char *text, const VxString &s) { return VxString(text) <= s; }
    friend bool operator>(const char *text, const VxString &s) { return VxString(text) > s; }
    friend bool operator>=(const char *text, const VxString &s) { return VxString(text) >= s; }
    friend std::strong_ordering operator<=>(const VxString &s, const char *text) {
        return s <=> VxString(text);
    }
    friend VxString operator+(const VxString &s, const char *text) { return s + VxString(text); }
    friend VxString operator+(const char *text, const VxString &s) { return VxString(text) + s; }

    // ---- Numbers -------------------------------------------------------------------------
    //
    // The decimal number at an index, as strtol and strtod read it: they skip white space and take
    // a sign. `end` receives the index of the first byte after the number. If no number begins at
    // `start`, the result is 0 and `end` is `start`. getInt returns the nearest limit for a number
    // beyond 32 bits. getDouble takes all that strtod does, such as "inf", "nan" and "0x1p3", and
    // the decimal point of the locale. REQUIRES: 0 <= start <= length().
    VX_INLINE int getInt(int start) const {
        int end = 0;
        return getInt(start, end);
    }
    int getInt(int start, int &end) const;
    VX_INLINE double getDouble(int start) const {
        int end = 0;
        return getDouble(start, end);
    }
    double getDouble(int start, int &end) const;

private:
    // The body. Its text follows it in the same block.
    struct VxStringRep {
        char *data;    // never null; data[length] is 0
        int length;    // bytes of text
        int capacity;  // bytes of text that fit
        MemoryHint memoryHint;
        int refCount;  // strings that share the body; 0: uncounted, and never freed

        static VxStringRep *make(const char *text, int length, int capacity);
        static VxStringRep *empty();
    };

    // The first n bytes of a text; NUL bytes if `text` is null.
    VxString(const char *text, int n);

    VX_INLINE void ref() {
        if (rep_->refCount != 0) ++rep_->refCount;
    }
    void unref();
    void makeUnique();

    // unref, without a call while other strings share the body.
    void release() {
        if (rep_->refCount > 1) {
            --rep_->refCount;
        } else {
            unref();
        }
    }
    void adopt(VxStringRep *rep);
    bool detach();
    bool regrow(int needed);
    VxString &appendSlow(const VxString &other);
    std::string_view view() const { return {rep_->data, static_cast<std::size_t>(rep_->length)}; }
    bool equals(const VxString &other) const {
        return rep_ == other.rep_ || view() == other.view();
    }

    VxStringRep *rep_;

    friend VxString vxStringFrom(std::string_view text);
};

/*
 * < is not a strict weak order once one text ends where another has a NUL byte: "a" is equivalent
 * to "a\0b" and to "a\0c", which differ from each other. std::set<VxString>, std::map and std::sort
 * then lose or misplace texts. For text that may contain NUL bytes give them this comparator:
 *
 *     std::set<VxString, VxStringLess> keys;
 *     std::sort(texts.begin(), texts.end(), VxStringLess());
 */
struct VxStringLess {
    bool operator()(const VxString &one, const VxString &other) const {
        return (one <=> other) < 0;
    }
};

/*
 * The view of a string points into it, includes its NUL bytes, and is valid as long as the pointer
 * from the conversion to const char *. vxStringFrom copies the text.
 */
inline std::string_view vxStringView(const VxString &string) {
    return {static_cast<const char *>(string), static_cast<std::size_t>(string.length())};
}

inline VxString vxStringFrom(std::string_view text) {
    // A text beyond the limit is treated as out of memory.
    if (text.size() > 0x7fffffbf) return VxString();
    return VxString(text.data(), static_cast<int>(text.size()));
}

// For std::unordered_set, std::unordered_map and VxOwningTable. Equal strings have equal hashes.
template <>
struct std::hash<VxString> {
    std::size_t operator()(const VxString &string) const {
        return std::hash<std::string_view>()(vxStringView(string));
    }
};

#endif
