// The slots of a list as raw memory: room is made and closed by at most one block move for each
// side of the gap, and no element code runs here.

#ifndef VX_CONTAINERS_SLOT_ARRAY_H
#define VX_CONTAINERS_SLOT_ARRAY_H

#include <vxarraylist.h>

#include <limits>

namespace slots {

// Makes room for n slots before `index` when `count` has risen by n already and is above the
// capacity. Without memory, or beyond the greatest capacity, nothing changes.
void grow(VxSlotArray &array, int index, int n);

// Moves the slots from `index` on up by n, within the capacity; `count` has risen by n already.
void openGap(VxSlotArray &array, int index, int n);

// Moves the slots behind n removed ones down; `count` has fallen by n already.
void closeGap(VxSlotArray &array, int first, int n);

// Does a removal that left this count ask for less capacity, and for how much.
inline bool isSparse(const VxSlotArray &array) {
    return array.count < array.capacity >> 2;
}
int shrunkCapacity(const VxSlotArray &array);

// New slots without content, or null.
void **allocate(int capacity);

// Replaces the slots by new ones that leave out n removed ones; `count` has fallen by n already.
void moveTo(void **fresh, int capacity, VxSlotArray &array, int first, int n);

// A new array with the count and capacity of the source and slots without content; false
// without memory, and `array` is then empty. `array` has no storage before.
bool allocateLike(const VxSlotArray &source, VxSlotArray &array);

// The same with the source's pointers in the slots.
bool copy(const VxSlotArray &source, VxSlotArray &array);

// Frees the storage: count and capacity 0, slots null.
void release(VxSlotArray &array);

// Raises the count by n and makes room before `index`, by the list's own grow where the capacity
// does not do. False when there is none: the list is as it was.
template <typename Grow>
bool makeRoom(VxSlotArray &array, int index, int n, Grow grow) {
    assert(index >= 0 && index <= array.count);
    if (n > std::numeric_limits<int>::max() - array.count) return false;
    array.count += n;
    if (array.count <= array.capacity) {
        openGap(array, index, n);
        return true;
    }
    grow(index, n);
    if (array.count <= array.capacity) return true;
    array.count -= n;
    return false;
}

}  // namespace slots

#endif
