#include "containers/uint_list.h"

#include <cstdlib>
#include <cstring>

VxUIntList::~VxUIntList() {
    empty();
}

bool VxUIntList::append(unsigned int value) {
    const int last = length();
    VxArrayList::append(&value);
    if (length() == last) return false;
    if (get(last) != nullptr) return true;
    remove(last, 1);
    return false;
}

bool VxUIntList::isWhole(int count) const {
    if (length() != count) return false;
    for (int i = 0; i < count; ++i) {
        if (get(i) == nullptr) return false;
    }
    return true;
}

void *VxUIntList::copyElement(const void *value) {
    // A copy of a list whose cell could not be had stays without it.
    if (value == nullptr) return nullptr;
    void *cell = std::malloc(sizeof(unsigned int));
    if (cell != nullptr) std::memcpy(cell, value, sizeof(unsigned int));
    return cell;
}

void VxUIntList::destroyElement(void *cell) {
    std::free(cell);
}
