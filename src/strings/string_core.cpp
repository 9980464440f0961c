// The body of a string, its sharing, and all that changes text.

#include "platform/code_page.h"

#include <vxstring.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// The longest text. The size of its body still fits an int.
constexpr int kMaxLength = INT_MAX - 64;

// What operator[] refers to if there is no byte to write.
char scratchByte;

// Copies n bytes, sizeof(Unit) <= n <= 2 * sizeof(Unit), by two moves that may overlap.
template <typename Unit>
void copyEnds(char *to, const char *from, std::size_t n) {
    Unit head;
    Unit tail;
    std::memcpy(&head, from, sizeof head);
    std::memcpy(&tail, from + n - sizeof tail, sizeof tail);
    std::memcpy(to, &head, sizeof head);
    std::memcpy(to + n - sizeof tail, &tail, sizeof tail);
}

// Pieces of text are mostly short. Up to this length, copying inline is faster than a call.
constexpr int kShort = 16;

void copyShort(char *to, const char *from, int length) {
    const auto n = static_cast<std::size_t>(length);
    if (n >= 8) {
        copyEnds<std::uint64_t>(to, from, n);
    } else if (n >= 4) {
        copyEnds<std::uint32_t>(to, from, n);
    } else if (n >= 2) {
        copyEnds<std::uint16_t>(to, from, n);
    } else if (n == 1) {
        std::memcpy(to, from, 1);
    }
}

// Copies between blocks that do not overlap.
void copyBytes(char *to, const char *from, int length) {
    if (length <= kShort) {
        copyShort(to, from, length);
    } else {
        std::memcpy(to, from, static_cast<std::size_t>(length));
    }
}

}  // namespace

// ---- Bodies ---------------------------------------------------------------------------------

VxString::VxStringRep *VxString::VxStringRep::make(const char *text, int length, int capacity) {
    if (capacity > kMaxLength) return nullptr;
    const std::size_t size = sizeof(VxStringRep) + static_cast<std::size_t>(capacity) + 1;
    auto *rep = static_cast<VxStringRep *>(std::malloc(size));
    if (rep == nullptr) return nullptr;
    rep->data = reinterpret_cast<char *>(rep + 1);
    rep->length = length;
    rep->capacity = capacity;
    rep->memoryHint = kExactRoom;
    rep->refCount = 1;
    if (text != nullptr) {
        copyBytes(rep->data, text, length);
    } else {
        std::memset(rep->data, 0, static_cast<std::size_t>(length));
    }
    rep->data[length] = '\0';
    return rep;
}

// The body of strings for which there was no memory. Nothing writes to it, not even to its count,
// so all threads can share it.
VxString::VxStringRep *VxString::VxStringRep::empty() {
    static char text[1];
    static VxStringRep rep{text, 0, 0, kExactRoom, 0};
    return &rep;
}

void VxString::unref() {
    if (rep_->refCount != 0 && --rep_->refCount == 0) std::free(rep_);
}

// Makes the string the only owner of its body. False if out of memory.
bool VxString::detach() {
    if (rep_->refCount == 1) return true;
    VxStringRep *own = VxStringRep::make(rep_->data, rep_->length, rep_->length);
    if (own == nullptr) return false;
    unref();
    rep_ = own;
    return true;
}

void VxString::makeUnique() {
    detach();
}

// Gives the string a body of its own for `needed` bytes, with its text and hint. False if out of
// memory.
bool VxString::regrow(int needed) {
    const int doubled = needed <= kMaxLength / 2 ? 2 * needed : kMaxLength;
    const int capacity = rep_->memoryHint == kExactRoom ? needed : doubled;
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

// ---- Construction ---------------------------------------------------------------------------

void VxString::adopt(VxStringRep *rep) {
    rep_ = rep != nullptr ? rep : VxStringRep::empty();
}

VxString::VxString() : VxString(nullptr, 0) {}

VxString::VxString(char byte) : VxString(&byte, 1) {}

VxString::VxString(const char *text) {
    const std::size_t length = text != nullptr ? std::strlen(text) : 0;
    const int n = length <= kMaxLength ? static_cast<int>(length) : INT_MAX;
    adopt(VxStringRep::make(text, n, n));
}

VxString::VxString(const char *text, int n) {
    assert(n >= 0);
    adopt(VxStringRep::make(text, n, n));
}

VxString::VxString(int value) {
    char digits[32];
    const auto length = std::to_chars(digits, digits + sizeof digits, value).ptr - digits;
    adopt(VxStringRep::make(digits, static_cast<int>(length), static_cast<int>(length)));
}

VxString::VxString(double value) {
    char text[64];
    const int length = std::snprintf(text, sizeof text, "%-.*g", 15, value);
    adopt(VxStringRep::make(text, length, length));
}

VxString VxString::get(int start, int count) const {
    assert(start >= 0 && count >= 0 && count <= rep_->length - start);
    return VxString(rep_->data + start, count);
}

// ---- Changes ----------------------------------------------------------------------------------

VxString &VxString::operator+=(const VxString &other) {
    VxStringRep *const rep = rep_;
    const int added = other.rep_->length;
    const int length = rep->length;
    if (added > kShort || added > rep->capacity - length || rep->refCount != 1) {
        return appendSlow(other);
    }
    char *const end = rep->data + length;
    rep->length = length + added;
    end[added] = '\0';
    copyShort(end, other.rep_->data, added);
    return *this;
}

// Not inlined, so that appending short pieces stays cheap.
[[gnu::noinline]] VxString &VxString::appendSlow(const VxString &other) {
    const int added = other.rep_->length;
    const int length = rep_->length;
    if (added == 0 || added > kMaxLength - length) return *this;
    if ((length + added > rep_->capacity || rep_->refCount != 1) && !regrow(length + added)) {
        return *this;
    }
    // Read after regrow, because the other string may be this one.
    copyBytes(rep_->data + length, other.rep_->data, added);
    rep_->length = length + added;
    rep_->data[length + added] = '\0';
    return *this;
}

VxString VxString::operator+(const VxString &other) const {
    VxString sum(*this);
    sum += other;
    return sum;
}

char &VxString::operator[](int index) {
    assert(index >= 0 && index <= rep_->length);
    if (detach() && index < rep_->length) return rep_->data[index];
    scratchByte = rep_->data[index];
    return scratchByte;
}

VxString &VxString::set(int start, int count, const VxString &replacement) {
    assert(this != &replacement);
    assert(start >= 0 && count >= 0 && count <= rep_->length - start);
    const int added = replacement.rep_->length;
    const int kept = rep_->length - count;
    if (added > kMaxLength - kept || !detach()) return *this;

    const int length = kept + added;
    if (length > rep_->capacity && !regrow(length)) return *this;
    char *const at = rep_->data + start;
    if (added != count)
        std::memmove(at + added, at + count, static_cast<std::size_t>(kept - start));
    copyBytes(at, replacement.rep_->data, added);
    rep_->length = length;
    rep_->data[length] = '\0';
    return *this;
}

VxString &VxString::toUpper() {
    if (detach()) std::transform(rep_->data, rep_->data + rep_->length, rep_->data, vx::uppered);
    return *this;
}

VxString &VxString::toLower() {
    if (detach()) std::transform(rep_->data, rep_->data + rep_->length, rep_->data, vx::lowered);
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
