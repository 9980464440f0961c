#include "containers/slot_array.h"

#include <cstdlib>
#include <cstring>

namespace vx::slots {

namespace {

// The next power of two does not fit in an int.
constexpr int kMaxCapacity = 1 << 30;

std::size_t bytes(int n) {
    return static_cast<std::size_t>(n) * sizeof(void *);
}

void **allocate(int capacity) {
    return static_cast<void **>(std::malloc(bytes(capacity)));
}

// memcpy does not take null pointers, not even for no bytes.
void copySlots(void **to, void *const *from, int n) {
    if (n > 0) std::memcpy(to, from, bytes(n));
}

}  // namespace

void openGap(SlotArray &array, int index, int n) {
    const int after = array.count - index - n;
    if (after > 0) std::memmove(array.slots + index + n, array.slots + index, bytes(after));
}

void grow(SlotArray &array, int index, int n) {
    if (array.count > kMaxCapacity) return;
    int capacity = array.capacity;
    while (capacity < array.count)
        capacity = capacity == 0 ? 1 : capacity * 2;

    const int after = array.count - index - n;
    if (after == 0) {
        // No slot moves, so the allocator may extend the block in place.
        auto *extended = static_cast<void **>(std::realloc(array.slots, bytes(capacity)));
        if (extended == nullptr) return;
        array.slots = extended;
    } else {
        void **fresh = allocate(capacity);
        if (fresh == nullptr) return;
        copySlots(fresh, array.slots, index);
        copySlots(fresh + index + n, array.slots + index, after);
        std::free(array.slots);
        array.slots = fresh;
    }
    array.capacity = capacity;
}

void closeGap(SlotArray &array, int first, int n) {
    const int after = array.count - first;
    if (after > 0) std::memmove(array.slots + first, array.slots + first + n, bytes(after));
}

Storage allocateSmaller(const SlotArray &array) {
    // Ends at 2 at the latest: no count is below 2 >> 2.
    int capacity = array.capacity >> 1;
    while (capacity != 1 && array.count < capacity >> 2)
        capacity >>= 1;
    return {allocate(capacity), capacity};
}

void moveTo(Storage storage, SlotArray &array, int first, int n) {
    if (storage.slots == nullptr) {
        closeGap(array, first, n);
        return;
    }
    copySlots(storage.slots, array.slots, first);
    copySlots(storage.slots + first, array.slots + first + n, array.count - first);
    std::free(array.slots);
    array.slots = storage.slots;
    array.capacity = storage.capacity;
}

bool allocateLike(const SlotArray &source, SlotArray &array) {
    if (source.capacity > 0) {
        array.slots = allocate(source.capacity);
        if (array.slots == nullptr) return false;
    }
    array.count = source.count;
    array.capacity = source.capacity;
    return true;
}

void copy(const SlotArray &source, SlotArray &array) {
    if (allocateLike(source, array)) copySlots(array.slots, source.slots, source.count);
}

void release(SlotArray &array) {
    std::free(array.slots);
    array = {};
}

}  // namespace vx::slots
