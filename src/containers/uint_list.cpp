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
    // An entry without a cell cannot stay, because at() reads the cell of every entry.
    if (get(last) != nullptr) return true;
    remove(last, 1);
    return false;
}

void *VxUIntList::copyElement(const void *value) {
    void *cell = std::malloc(sizeof(unsigned int));
    if (cell != nullptr) std::memcpy(cell, value, sizeof(unsigned int));
    return cell;
}

void VxUIntList::destroyElement(void *cell) {
    std::free(cell);
}
