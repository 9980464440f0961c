// The list of stored hashes of a bucket. Each slot points to a cell of its own.

#ifndef VX_CONTAINERS_UINT_LIST_H
#define VX_CONTAINERS_UINT_LIST_H

#include <vxarraylist.h>

class VxUIntList final : public VxArrayList {
public:
    VxUIntList() = default;
    VxUIntList(const VxUIntList &) = delete;
    VxUIntList &operator=(const VxUIntList &) = default;
    ~VxUIntList() override;

    unsigned int at(int index) const { return *static_cast<const unsigned int *>(get(index)); }

    // False out of memory; nothing is added then.
    bool append(unsigned int value);

protected:
    void *copyElement(const void *value) override;
    void destroyElement(void *cell) override;
};

#endif
