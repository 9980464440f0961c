// The two lists of the caller's pointers. They differ in the constness of what they hold, which
// the slots do not know.

#include "containers/slot_array.h"

namespace {

template <typename Grow>
void insertPointer(VxSlotArray &array, int index, const void *element, Grow grow) {
    if (slots::makeRoom(array, index, 1, grow)) array.slots[index] = const_cast<void *>(element);
}

template <typename Grow>
void insertAll(VxSlotArray &array, int index, const VxSlotArray &list, Grow grow) {
    assert(&array != &list);
    if (!slots::makeRoom(array, index, list.count, grow)) return;
    for (int i = 0; i < list.count; ++i)
        array.slots[index + i] = list.slots[i];
}

template <typename Shrink>
void removeRange(VxSlotArray &array, int first, int n, Shrink shrink) {
    if (n == 0) return;
    assert(first >= 0 && n > 0 && n <= array.count - first);
    array.count -= n;
    if (slots::isSparse(array)) {
        shrink(first, n);
    } else {
        slots::closeGap(array, first, n);
    }
}

void shrinkArray(VxSlotArray &array, int first, int n) {
    const int capacity = slots::shrunkCapacity(array);
    void **fresh = slots::allocate(capacity);
    if (fresh != nullptr) {
        slots::moveTo(fresh, capacity, array, first, n);
    } else {
        slots::closeGap(array, first, n);
    }
}

void assignArray(VxSlotArray &array, const VxSlotArray &source) {
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
    insertPointer(array_, index, element, [this](int at, int n) { grow(at, n); });
}

void VxPArrayList::insert(int index, const VxPArrayList &list) {
    insertAll(array_, index, list.array_, [this](int at, int n) { grow(at, n); });
}

void VxPArrayList::append(const VxPArrayList &list) {
    insert(array_.count, list);
}

void VxPArrayList::remove(int first, int n) {
    removeRange(array_, first, n, [this](int at, int gone) { shrink(at, gone); });
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
    insertPointer(array_, index, element, [this](int at, int n) { grow(at, n); });
}

void VxCPArrayList::insert(int index, const VxCPArrayList &list) {
    insertAll(array_, index, list.array_, [this](int at, int n) { grow(at, n); });
}

void VxCPArrayList::append(const VxCPArrayList &list) {
    insert(array_.count, list);
}

void VxCPArrayList::remove(int first, int n) {
    removeRange(array_, first, n, [this](int at, int gone) { shrink(at, gone); });
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
