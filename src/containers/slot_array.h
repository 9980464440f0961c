// The slots of a list as raw memory. A change moves each slot at most once, together with its
// neighbours, and runs no code of the elements.

#ifndef VX_CONTAINERS_SLOT_ARRAY_H
#define VX_CONTAINERS_SLOT_ARRAY_H

#include <vxarraylist.h>

#include <limits>

namespace vx::slots {

using detail::SlotArray;

// Open a gap of n slots before `index`. `count` has risen by n already; it exceeds the capacity in
// grow, but not in openGap. If grow fails, the capacity stays below the count: memory ran out, or
// the list would exceed the largest capacity.
void grow(SlotArray &array, int index, int n);
void openGap(SlotArray &array, int index, int n);

// Raises the count by n and opens the gap. On failure nothing has changed.
inline bool makeRoom(SlotArray &array, int index, int n) {
    assert(index >= 0 && index <= array.count);
    if (n > std::numeric_limits<int>::max() - array.count) return false;
    array.count += n;
    if (array.count <= array.capacity) {
        openGap(array, index, n);
        return true;
    }
    grow(array, index, n);
    if (array.count <= array.capacity) return true;
    array.count -= n;
    return false;
}

// Removes n slots at `first`. `count` has fallen by n already.
void closeGap(SlotArray &array, int first, int n);

// Does a removal that left this count ask for a smaller capacity?
inline bool isSparse(const SlotArray &array) {
    return array.count < array.capacity >> 2;
}

// Slots without content; null out of memory.
struct Storage {
    void **slots;
    int capacity;
};

// The storage to shrink to.
Storage allocateSmaller(const SlotArray &array);

// Like closeGap, into other storage. Without any, the slots stay where they are.
void moveTo(Storage storage, SlotArray &array, int first, int n);

// Gives an array without storage the count and capacity of the source, and slots without
// content. False out of memory; the array is empty then.
bool allocateLike(const SlotArray &source, SlotArray &array);

// The same, with the pointers of the source.
void copy(const SlotArray &source, SlotArray &array);

// Frees the slots and clears the fields.
void release(SlotArray &array);

}  // namespace vx::slots

#endif
