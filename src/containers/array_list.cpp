// The list that owns its elements.

#include "containers/slot_array.h"

namespace slots = vx::slots;

VxArrayList::VxArrayList() = default;

VxArrayList::VxArrayList(const VxArrayList &source) {
    dup(source);
}

VxArrayList::~VxArrayList() {
    slots::release(array_);
}

VxArrayList &VxArrayList::operator=(const VxArrayList &source) {
    if (this != &source) {
        empty();
        dup(source);
    }
    return *this;
}

void VxArrayList::dup(const VxArrayList &source) {
    if (!slots::allocateLike(source.array_, array_)) return;
    // Hooks are not const, because a derived class may count or cache in them.
    auto &hooks = const_cast<VxArrayList &>(source);
    for (int i = 0; i < array_.count; ++i)
        array_.slots[i] = hooks.copyElement(source.array_.slots[i]);
}

void VxArrayList::set(int index, const void *element) {
    assert(array_.has(index));
    destroyElement(array_.slots[index]);
    array_.slots[index] = copyElement(element);
}

void VxArrayList::insert(int index, const void *element) {
    if (slots::makeRoom(array_, index, 1)) array_.slots[index] = copyElement(element);
}

void VxArrayList::insert(int index, const VxArrayList &list) {
    assert(this != &list);
    const int n = list.array_.count;
    if (!slots::makeRoom(array_, index, n)) return;
    for (int i = 0; i < n; ++i)
        array_.slots[index + i] = copyElement(list.array_.slots[i]);
}

void VxArrayList::append(const void *element) {
    insert(array_.count, element);
}

void VxArrayList::append(const VxArrayList &list) {
    insert(array_.count, list);
}

void VxArrayList::remove(int first, int n) {
    if (n == 0) return;
    assert(first >= 0 && n > 0 && n <= array_.count - first);
    // The count falls first, so hooks see the new length.
    array_.count -= n;
    if (slots::isSparse(array_)) {
        shrink(first, n);
        return;
    }
    for (int i = first; i < first + n; ++i)
        destroyElement(array_.slots[i]);
    slots::closeGap(array_, first, n);
}

void VxArrayList::empty() {
    for (int i = 0; i < array_.count; ++i)
        destroyElement(array_.slots[i]);
    slots::release(array_);
}

void VxArrayList::grow(int index, int n) {
    slots::grow(array_, index, n);
}

void VxArrayList::shrink(int first, int n) {
    // Allocated before the first element goes: failing then costs nothing but the unused slots.
    const slots::Storage smaller = slots::allocateSmaller(array_);
    for (int i = first; i < first + n; ++i)
        destroyElement(array_.slots[i]);
    slots::moveTo(smaller, array_, first, n);
}
