// The body of a string, its sharing, and everything that changes text.

#include "platform/codepage.h"

#include <vxstring.h>

#include <charconv>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// The longest text; a body with it still has a size that fits an int.
constexpr int kMaxLength = INT_MAX - 64;

// What operator[] refers to where there is no byte to be written.
char scrapByte;

// Copies between blocks that do not overlap. Pieces of text are mostly short, and for these two
// moves that may meet in the middle are done before a call of memcpy has begun.
void copyBytes(char *to, const char *from, int n) {
    const auto size = static_cast<std::size_t>(n);
    if (n > 16) {
        std::memcpy(to, from, size);
    } else if (n >= 8) {
        std::uint64_t head;
        std::uint64_t tail;
        std::memcpy(&head, from, 8);
        std::memcpy(&tail, from + size - 8, 8);
        std::memcpy(to, &head, 8);
        std::memcpy(to + size - 8, &tail, 8);
    } else {
        for (std::size_t i = 0; i < size; ++i)
            to[i] = from[i];
    }
}

}  // namespace

// ---- Bodies ---------------------------------------------------------------------------------

VxString::VxStringRep *VxString::VxStringRep::make(char const *text, int length, int capacity) {
    if (capacity > kMaxLength) return nullptr;
    const std::size_t size = sizeof(VxStringRep) + static_cast<std::size_t>(capacity) + 1;
    auto *rep = static_cast<VxStringRep *>(std::malloc(size));
    if (rep == nullptr) return nullptr;
    rep->data = reinterpret_cast<char *>(rep + 1);
    rep->length = length;
    rep->capacity = capacity;
    rep->memoryHint = kExactRoom;
    rep->refCount = 1;
    if (text != nullptr && length > 0) copyBytes(rep->data, text, length);
    rep->data[length] = '\0';
    return rep;
}

// The body of strings that could not have one of their own. Nothing ever writes to it, its
// counter included, so that it serves all threads.
VxString::VxStringRep *VxString::VxStringRep::empty() {
    static char text[1];
    static VxStringRep rep{text, 0, 0, kExactRoom, 0};
    return &rep;
}

void VxString::unref() {
    if (rep_->refCount != 0 && --rep_->refCount == 0) std::free(rep_);
}

// Makes the string the only owner of its body. False without memory.
bool VxString::separate() {
    if (rep_->refCount == 1) return true;
    VxStringRep *own = VxStringRep::make(rep_->data, rep_->length, rep_->length);
    if (own == nullptr) return false;
    unref();
    rep_ = own;
    return true;
}

void VxString::makeUnique() {
    separate();
}

// The capacity of a body that must grow to hold a text.
int VxString::VxStringRep::grownCapacity(int needed) const {
    if (memoryHint == kExactRoom) return needed;
    return needed <= kMaxLength / 2 ? 2 * needed : kMaxLength;
}

// Gives the string a body of its own that holds `needed` bytes, with the present text and hint.
// False without memory.
bool VxString::regrow(int needed) {
    const int capacity = rep_->grownCapacity(needed);
    VxStringRep *grown = nullptr;
    if (rep_->refCount == 1) {
        const std::size_t size = sizeof(VxStringRep) + static_cast<std::size_t>(capacity) + 1;
        grown = static_cast<VxStringRep *>(std::realloc(rep_, size));
        if (grown == nullptr) return false;
        grown->data = reinterpret_cast<char *>(grown + 1);
        grown->capacity = capacity;
    } else {
        grown = VxStringRep::make(rep_->data, rep_->length, capacity);
        if (grown == nullptr) return false;
        grown->memoryHint = rep_->memoryHint;
        unref();
    }
    rep_ = grown;
    return true;
}

// ---- Making -----------------------------------------------------------------------------------

void VxString::adopt(VxStringRep *rep) {
    rep_ = rep != nullptr ? rep : VxStringRep::empty();
}

VxString::VxString() {
    adopt(VxStringRep::make(nullptr, 0, 0));
}

VxString::VxString(char byte) {
    adopt(VxStringRep::make(&byte, 1, 1));
}

VxString::VxString(char const *text) {
    const std::size_t length = text != nullptr ? std::strlen(text) : 0;
    const int n = length <= kMaxLength ? static_cast<int>(length) : INT_MAX;
    adopt(VxStringRep::make(text, n, n));
}

VxString::VxString(char const *text, int n) {
    assert(n >= 0);
    adopt(VxStringRep::make(text, n, n));
}

VxString::VxString(int value) {
    char digits[16];
    const auto length = std::to_chars(digits, digits + sizeof digits, value).ptr - digits;
    adopt(VxStringRep::make(digits, static_cast<int>(length), static_cast<int>(length)));
}

VxString::VxString(double value) {
    char text[64];
    const int length = std::snprintf(text, sizeof text, "%-.*g", 15, value);
    adopt(VxStringRep::make(text, length, length));
}

VxString VxString::get(int start) const {
    return get(start, rep_->length - start);
}

VxString VxString::get(int start, int n) const {
    assert(start >= 0 && n >= 0 && n <= rep_->length - start);
    return VxString(rep_->data + start, n);
}

VxString::operator int() const {
    return getInt(0);
}

VxString::operator double() const {
    return getDouble(0);
}

// ---- Changing ---------------------------------------------------------------------------------

VxString &VxString::operator+=(VxString const &other) {
    const int added = other.rep_->length;
    const int length = rep_->length;
    if (added == 0 || added > kMaxLength - length) return *this;
    if ((length + added > rep_->capacity || rep_->refCount != 1) && !regrow(length + added)) {
        return *this;
    }
    // Read only now: the other string may be this one.
    copyBytes(rep_->data + length, other.rep_->data, added);
    rep_->length = length + added;
    rep_->data[length + added] = '\0';
    return *this;
}

VxString VxString::operator+(VxString const &other) const {
    VxString sum(*this);
    sum += other;
    return sum;
}

char &VxString::operator[](int index) {
    assert(index >= 0 && index <= rep_->length);
    if (index < rep_->length && separate()) return rep_->data[index];
    if (index == rep_->length) separate();
    scrapByte = rep_->data[index];
    return scrapByte;
}

VxString &VxString::set(int start, int n, VxString const &text) {
    assert(this != &text && start >= 0 && n >= 0 && n <= rep_->length - start);
    const int added = text.rep_->length;
    const int kept = rep_->length - n;
    if (added > kMaxLength - kept || !separate()) return *this;

    const int length = kept + added;
    const auto tail = static_cast<std::size_t>(kept - start);
    if (length > rep_->capacity) {
        VxStringRep *grown = VxStringRep::make(nullptr, 0, rep_->grownCapacity(length));
        if (grown == nullptr) return *this;
        grown->memoryHint = rep_->memoryHint;
        copyBytes(grown->data, rep_->data, start);
        std::memcpy(grown->data + start + added, rep_->data + start + n, tail);
        unref();
        rep_ = grown;
    } else if (added != n) {
        std::memmove(rep_->data + start + added, rep_->data + start + n, tail);
    }
    copyBytes(rep_->data + start, text.rep_->data, added);
    rep_->length = length;
    rep_->data[length] = '\0';
    return *this;
}

VxString &VxString::toUpper() {
    if (!separate()) return *this;
    char *const text = rep_->data;
    const int length = rep_->length;
    for (int i = 0; i < length; ++i)
        text[i] = platform::uppered(text[i]);
    return *this;
}

VxString &VxString::toLower() {
    if (!separate()) return *this;
    char *const text = rep_->data;
    const int length = rep_->length;
    for (int i = 0; i < length; ++i)
        text[i] = platform::lowered(text[i]);
    return *this;
}

void VxString::setMemoryHint(MemoryHint hint) {
    if (rep_->refCount != 0) rep_->memoryHint = hint;
}

void VxString::setLengthHint(int n) {
    if (n <= rep_->length) return;
    VxStringRep *roomy = VxStringRep::make(rep_->data, rep_->length, n);
    if (roomy == nullptr) return;
    unref();
    rep_ = roomy;
}
