/*
 * vxstring.h: byte strings that share their text until one of them changes it.
 *
 * A VxString is a pointer to a counted body. Copying and assigning step the counter, at any
 * length; the first write through one of the sharers separates it, by giving it a body of its
 * own. Text is counted in bytes, may hold NUL bytes, and always has one more NUL behind it.
 * No member looks at multibyte characters as units.
 *
 * Which calls separate, and which pointers go stale
 *
 *     separate         +=  set  toUpper  toLower  setLengthHint  operator[] of a string that is
 *                      not const, even when it only reads
 *     never copy       copy, =, length, reading operator[], the conversion to const char *,
 *                      all searches, comparisons and number readers, setMemoryHint
 *     always copy      get
 *
 *     += with an empty text and setLengthHint at or below the length change nothing at all.
 *
 *     The pointer from the conversion to const char * and a std::string_view are good until the
 *     string is next changed, assigned to or freed; of these, reading s[i] of a string that is not
 *     const counts as a change, since it may separate. A reference from operator[] is good as long,
 *     and nothing is stored through it once the string was copied: the copies would change too.
 *     Reading in a loop goes through a const string or the pointer, so that nothing separates.
 *
 * Growth. A body that must grow takes exactly the room it needs or, when its memory hint is not
 * 0, twice that, as far as the limit below allows. For text built of many pieces set the hint or,
 * when the length is known, setLengthHint.
 *
 * Indices and lengths are ints (an index of another integer type is ambiguous between operator[]
 * and the conversion to a pointer) and are not tested in release builds; a debug build asserts the
 * limits that stand as REQUIRES. Outside them nothing is defined. Members that are not inline
 * assert only in a debug build of the library, whatever the build of the caller.
 *
 * Beside a string, a const char * stands for the text up to its NUL: s == "a", "a" < s, s + "b".
 * The three conversions make some other lines ambiguous, which are written
 *
 *     if (s)  !s       if (s.length() != 0)
 *     s == 'c'  s + 'c'  s + 1        s == VxString('c')  s + VxString('c')  s + VxString(1)
 *     s == 17                         s.getInt(0) == 17
 *     stream << s                     stream << vxStringView(s)
 *
 * and a call with variable arguments, such as printf, gets static_cast<const char *>(s).
 *
 * Without memory, or beyond 2^31 - 65 bytes, a new string is the empty text and a change does
 * not happen: the string stays as it was, and a reference from operator[] is then to a byte
 * that belongs to no string.
 *
 * Threads. The counter is a plain integer. Strings that share a body serve one thread at a time
 * together, even when each thread only copies or frees its own; strings with bodies of their own
 * are independent. Any number of threads may search and compare a string that none changes,
 * copies or frees.
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
    // How a body grows. Any value other than 0 counts as kDoubleRoom.
    enum MemoryHint : int { kExactRoom = 0, kDoubleRoom = 1 };

    // The empty text, in a body of its own.
    VxString();

    // Shares the other's body.
    VX_INLINE VxString(const VxString &other) : rep_(other.rep_) { ref(); }

    // One byte, also if it is 0.
    VxString(char byte);

    // The text up to its NUL; null counts as the empty text.
    VxString(const char *text);

    // The number in decimal.
    VxString(int value);

    // The number as printf writes it for "%.15g": at most 15 significant digits, with the decimal
    // point of the LC_NUMERIC locale.
    VxString(double value);

    VX_INLINE ~VxString() { leave(); }

    // Shares the other's body. Nothing changes if it is shared already.
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): a string shares its body with itself
    VX_INLINE VxString &operator=(const VxString &other) {
        if (rep_ != other.rep_) {
            leave();
            rep_ = other.rep_;
            ref();
        }
        return *this;
    }

    VX_INLINE int length() const { return rep_->length; }

    // The text with its NUL, never null. It belongs to the string.
    VX_INLINE operator const char *() const { return rep_->data; }

    // getInt(0) and getDouble(0).
    operator int() const;
    operator double() const;

    // Appends. The string may be appended to itself.
    VxString &operator+=(const VxString &other);

    // Both texts in a new string. With an empty right side it shares this string's body.
    VxString operator+(const VxString &other) const;

    // The byte at an index; the one at length() is 0. REQUIRES: 0 <= index <= length().
    VX_INLINE char operator[](int index) const {
        assert(index >= 0 && index <= rep_->length);
        return rep_->data[index];
    }

    // The byte itself, after separating. At length() it is a byte that all strings of all threads
    // share and that is 0 after each such call: what is stored there reaches no string. A NUL
    // stored below does not change the length. REQUIRES: 0 <= index <= length().
    char &operator[](int index);

    // A new string with a body of its own: the bytes from `start` to the end, or n of them.
    // REQUIRES: start >= 0, n >= 0, start + n <= length().
    VxString get(int start) const;
    VxString get(int start, int n) const;

    // Replaces n bytes from `start` on by a text: overwrites, or deletes (empty text), or inserts
    // (n of 0). REQUIRES: limits as for get; `text` is another object, which may share the body.
    VxString &set(int start, int n, const VxString &text);

    // Change the letters A to Z and a to z; other bytes stay.
    VxString &toUpper();
    VxString &toLower();

    // Sets how the body grows. It does not separate: all sharers of the body are affected. A
    // string that separates by += takes the hint along; by any other way it has hint 0.
    void setMemoryHint(MemoryHint hint);

    // Makes room for exactly n bytes of text, with hint 0, in a new body, also when there is more
    // room already. At or below the length nothing changes.
    void setLengthHint(int n);

    // ---- Searching -----------------------------------------------------------------------
    //
    // Positions count from the beginning of the text. Names that end in C fold A to Z to a to z
    // on both sides. REQUIRES for all: start >= 0.

    // The first such byte from `start` on or, when `backward` is not 0, the last one that lies
    // before the last `start` bytes of the text: 0 searches all of it, 1 leaves the last byte
    // out. -1 if there is none.
    //
    //     VxString("abca").find('a', 1, 0) == 3
    //     VxString("abca").find('a', 1, 1) == 0
    int find(char byte, int start, short backward) const;
    int findC(char byte, int start, short backward) const;

    // The first place from `start` on where the text holds the pattern whole, -1 if none. An empty
    // pattern is found at the first NUL byte inside the text, so in ordinary text nowhere.
    int find(const VxString &pattern, int start) const;
    int findC(const VxString &pattern, int start) const;

    // How many bytes from `start` on are, one behind the other, in the set or not in the set. A
    // length, no position: the run ends at start + result. 0 for a start at or above length().
    // The C forms take both cases of each letter of the set.
    //
    //     VxString("aabbc").findInSet("ab", 1) == 3
    //     VxString("aabbc").findNotInSet("c", 1) == 3
    int findInSet(const VxString &set, int start) const;
    int findNotInSet(const VxString &set, int start) const;
    int findInSetC(const VxString &set, int start) const;
    int findNotInSetC(const VxString &set, int start) const;

    // ---- Comparing -----------------------------------------------------------------------

    // The hash of the text up to its first NUL: the one of P. J. Weinberger in the form that ELF
    // symbol tables use, with signed bytes. Computed at each call.
    unsigned int hash() const;

    // 0, or the difference of the first two bytes that differ, as signed chars: -255 to 255. The
    // NUL behind the shorter text takes part. So bytes from 0x80 up sort before the end of a text
    // and before all others, and a text compares equal to itself with more behind a NUL.
    int compare(const VxString &other) const;
    int compareC(const VxString &other) const;

    // == and != go by length and all bytes, the others by compare.
    VX_INLINE short operator==(const VxString &other) const { return equals(other) ? 1 : 0; }
    VX_INLINE short operator!=(const VxString &other) const { return equals(other) ? 0 : 1; }
    short operator<(const VxString &other) const;
    short operator<=(const VxString &other) const;
    short operator>(const VxString &other) const;
    short operator>=(const VxString &other) const;

    // ---- Numbers -------------------------------------------------------------------------
    //
    // The decimal number at an index, as strtol and strtod read it: leading white space and a sign
    // are taken. `end` is the index of the first byte not used. With nothing to convert the result
    // is 0 and `end` equals `start`. getDouble takes what else strtod takes, as "inf", "nan" and
    // "0x1p3", and the decimal point of the locale. getInt gives the nearest limit for a number
    // beyond 32 bits. REQUIRES: 0 <= start <= length().
    int getInt(int start) const;
    int getInt(int start, int &end) const;
    double getDouble(int start) const;
    double getDouble(int start, int &end) const;

private:
    // The body. Its text lies behind it in the same block.
    struct VxStringRep {
        char *data;    // never null; data[length] is 0
        int length;    // bytes of text
        int capacity;  // bytes of text there is room for
        MemoryHint memoryHint;
        int refCount;  // strings that share the body; 0: any number do, and it stays for ever

        static VxStringRep *make(const char *text, int length, int capacity);
        static VxStringRep *empty();
        int grownCapacity(int needed) const;
    };

    // The first n bytes of a text; NUL bytes with a null text.
    VxString(const char *text, int n);

    VX_INLINE void ref() {
        if (rep_->refCount != 0) ++rep_->refCount;
    }
    void unref();
    void makeUnique();

    // unref, without a call while there are other sharers.
    void leave() {
        if (rep_->refCount > 1) {
            --rep_->refCount;
        } else {
            unref();
        }
    }
    void adopt(VxStringRep *rep);
    bool separate();
    bool regrow(int needed);
    VxString &appendLong(const VxString &other);
    bool equals(const VxString &other) const {
        return rep_ == other.rep_ || (rep_->length == other.rep_->length &&
                                      std::memcmp(rep_->data, other.rep_->data,
                                                  static_cast<std::size_t>(rep_->length)) == 0);
    }

    VxStringRep *rep_;

    friend VxString vxStringFrom(std::string_view text);
};

/*
 * Views. The view of a string points into it, NUL bytes included, and is good as long as the
 * pointer from its conversion to const char *. The other way the text is copied.
 */
inline std::string_view vxStringView(const VxString &string) {
    return {static_cast<const char *>(string), static_cast<std::size_t>(string.length())};
}

inline VxString vxStringFrom(std::string_view text) {
    // A text that is too long counts as one that there is no memory for.
    if (text.size() > 0x7fffffbf) return VxString();
    return VxString(text.data(), static_cast<int>(text.size()));
}

/*
 * The operators with a text that ends with its NUL; null counts as the empty text. They agree with
 * those of two strings. == copies nothing.
 */
inline bool operator==(const VxString &string, const char *text) {
    return vxStringView(string) == (text != nullptr ? text : "");
}
inline std::weak_ordering operator<=>(const VxString &string, const char *text) {
    return string.compare(VxString(text)) <=> 0;
}
inline VxString operator+(const VxString &string, const char *text) {
    return string + VxString(text);
}
inline VxString operator+(const char *text, const VxString &string) {
    return VxString(text) + string;
}

#endif
