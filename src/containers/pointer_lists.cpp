// The two lists of the caller's pointers. They differ in the constness of what they hold, which
// the slots do not know.

#include "containers/slot_array.h"

namespace slots = vx::slots;
using vx::slots::SlotArray;

namespace {

void insertPointer(SlotArray &array, int index, const void *element) {
    if (slots::makeRoom(array, index, 1)) array.slots[index] = const_cast<void *>(element);
}

void insertAll(SlotArray &array, int index, const SlotArray &list) {
    assert(&array != &list);
    if (!slots::makeRoom(array, index, list.count)) return;
    for (int i = 0; i < list.count; ++i)
        array.slots[index + i] = list.slots[i];
}

void shrinkArray(SlotArray &array, int first, int n) {
    slots::moveTo(slots::allocateSmaller(array), array, first, n);
}

void removeRange(SlotArray &array, int first, int n) {
    if (n == 0) return;
    assert(first >= 0 && n > 0 && n <= array.count - first);
    array.count -= n;
    if (slots::isSparse(array)) {
        shrinkArray(array, first, n);
    } else {
        slots::closeGap(array, first, n);
    }
}

// Releases the old slots first, so that the new ones may take their memory.
void assignArray(SlotArray &array, const SlotArray &source) {
    if (&array == &source) return;
    slots::release(array);
    slots::copy(source, array);
}

}  // namespace

VxPArrayList::VxPArrayList() = default;

VxPArrayList::VxPArrayList(const VxPArrayList &source) {
    slots::copy(source.array_, array_);
}

VxPArrayList::~VxPArrayList() {
    slots::release(array_);
}

VxPArrayList &VxPArrayList::operator=(const VxPArrayList &source) {
    assignArray(array_, source.array_);
    return *this;
}

void VxPArrayList::insert(int index, void *element) {
    insertPointer(array_, index, element);
}

void VxPArrayList::insert(int index, const VxPArrayList &list) {
    insertAll(array_, index, list.array_);
}

void VxPArrayList::append(const VxPArrayList &list) {
    insertAll(array_, array_.count, list.array_);
}

void VxPArrayList::remove(int first, int n) {
    removeRange(array_, first, n);
}

void VxPArrayList::empty() {
    slots::release(array_);
}

void VxPArrayList::grow(int index, int n) {
    slots::grow(array_, index, n);
}

void VxPArrayList::shrink(int first, int n) {
    shrinkArray(array_, first, n);
}

VxCPArrayList::VxCPArrayList() = default;

VxCPArrayList::VxCPArrayList(const VxCPArrayList &source) {
    slots::copy(source.array_, array_);
}

VxCPArrayList::~VxCPArrayList() {
    slots::release(array_);
}

VxCPArrayList &VxCPArrayList::operator=(const VxCPArrayList &source) {
    assignArray(array_, source.array_);
    return *this;
}

void VxCPArrayList::insert(int index, const void *element) {
    insertPointer(array_, index, element);
}

void VxCPArrayList::insert(int index, const VxCPArrayList &list) {
    insertAll(array_, index, list.array_);
}

void VxCPArrayList::append(const VxCPArrayList &list) {
    insertAll(array_, array_.count, list.array_);
}

void VxCPArrayList::remove(int first, int n) {
    removeRange(array_, first, n);
}

void VxCPArrayList::empty() {
    slots::release(array_);
}

void VxCPArrayList::grow(int index, int n) {
    slots::grow(array_, index, n);
}

void VxCPArrayList::shrink(int first, int n) {
    shrinkArray(array_, first, n);
}
