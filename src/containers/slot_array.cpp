#include "containers/slot_array.h"

#include <cstdlib>
#include <cstring>

namespace slots {

namespace {

constexpr int kMaxCapacity = 1 << 30;

std::size_t bytes(int n) {
    return static_cast<std::size_t>(n) * sizeof(void *);
}

// Null pointers come only with no slots to move, which memcpy does not allow for.
void copySlots(void **to, void *const *from, int n) {
    if (n > 0) std::memcpy(to, from, bytes(n));
}

}  // namespace

void **allocate(int capacity) {
    return static_cast<void **>(std::malloc(bytes(capacity)));
}

void grow(VxSlotArray &array, int index, int n) {
    if (array.count > kMaxCapacity) return;
    int capacity = array.capacity;
    while (capacity < array.count)
        capacity = capacity == 0 ? 1 : capacity * 2;

    const int behind = array.count - index - n;
    if (behind == 0) {
        // Nothing moves, so that the allocator may extend the block where it lies.
        auto *extended = static_cast<void **>(std::realloc(array.slots, bytes(capacity)));
        if (extended == nullptr) return;
        array.slots = extended;
    } else {
        void **fresh = allocate(capacity);
        if (fresh == nullptr) return;
        copySlots(fresh, array.slots, index);
        copySlots(fresh + index + n, array.slots + index, behind);
        std::free(array.slots);
        array.slots = fresh;
    }
    array.capacity = capacity;
}

void openGap(VxSlotArray &array, int index, int n) {
    const int behind = array.count - index - n;
    if (behind > 0) {
        std::memmove(array.slots + index + n, array.slots + index, bytes(behind));
    }
}

void closeGap(VxSlotArray &array, int first, int n) {
    const int behind = array.count - first;
    if (behind > 0) std::memmove(array.slots + first, array.slots + first + n, bytes(behind));
}

int shrunkCapacity(const VxSlotArray &array) {
    int capacity = array.capacity >> 1;
    while (capacity != 1 && array.count < capacity >> 2)
        capacity >>= 1;
    return capacity;
}

void moveTo(void **fresh, int capacity, VxSlotArray &array, int first, int n) {
    copySlots(fresh, array.slots, first);
    copySlots(fresh + first, array.slots + first + n, array.count - first);
    std::free(array.slots);
    array.slots = fresh;
    array.capacity = capacity;
}

bool allocateLike(const VxSlotArray &source, VxSlotArray &array) {
    if (source.capacity > 0) {
        array.slots = allocate(source.capacity);
        if (array.slots == nullptr) return false;
    }
    array.count = source.count;
    array.capacity = source.capacity;
    return true;
}

bool copy(const VxSlotArray &source, VxSlotArray &array) {
    if (!allocateLike(source, array)) return false;
    copySlots(array.slots, source.slots, source.count);
    return true;
}

void release(VxSlotArray &array) {
    std::free(array.slots);
    array = {};
}

}  // namespace slots
