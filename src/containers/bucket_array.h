// What the three tables have in common: an array of lists, and figures about it.

#ifndef VX_CONTAINERS_BUCKET_ARRAY_H
#define VX_CONTAINERS_BUCKET_ARRAY_H

#include <vxhashtable.h>

#include <new>

namespace buckets {

inline constexpr int kDefaultNumber = 83;

// False without memory: there are no buckets then.
template <typename List>
bool make(VxBuckets<List> &in, int number) {
    in.elementBuckets = new (std::nothrow) List[static_cast<std::size_t>(number)];
    in.numBuckets = in.elementBuckets != nullptr ? number : 0;
    return in.elementBuckets != nullptr;
}

template <typename List>
void release(VxBuckets<List> &in) {
    delete[] in.elementBuckets;
    in = {};
}

template <typename List>
int countElements(const VxBuckets<List> &in) {
    int elements = 0;
    for (int i = 0; i < in.numBuckets; ++i)
        elements += in.slots(i).count;
    return elements;
}

template <typename List>
int countUsed(const VxBuckets<List> &in) {
    int used = 0;
    for (int i = 0; i < in.numBuckets; ++i)
        used += in.slots(i).count > 0;
    return used;
}

template <typename List>
double meanUsedLength(const VxBuckets<List> &in) {
    const int used = countUsed(in);
    return used == 0 ? 0.0 : static_cast<double>(countElements(in)) / used;
}

template <typename List>
double varianceUsedLength(const VxBuckets<List> &in) {
    const double mean = meanUsedLength(in);
    double sum = 0.0;
    int used = 0;
    for (int i = 0; i < in.numBuckets; ++i) {
        if (in.slots(i).count == 0) continue;
        const double distance = in.slots(i).count - mean;
        sum += distance * distance;
        ++used;
    }
    return used == 0 ? 0.0 : sum / used;
}

}  // namespace buckets

#endif
