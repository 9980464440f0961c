// What the three tables share: an array of lists, and statistics about it.

#ifndef VX_CONTAINERS_BUCKETS_H
#define VX_CONTAINERS_BUCKETS_H

#include <vxhashtable.h>

#include <new>

namespace vx::buckets {

using detail::Buckets;

inline constexpr int kDefaultCount = 83;

inline int bucketCountOrDefault(int numBuckets) {
    return numBuckets > 0 ? numBuckets : kDefaultCount;
}

// False out of memory; there are no buckets then. New lists have no slots yet.
template <typename List>
bool make(Buckets<List> &in, int number) {
    in.elementBuckets = new (std::nothrow) List[static_cast<std::size_t>(number)];
    in.numBuckets = in.elementBuckets != nullptr ? number : 0;
    return in.elementBuckets != nullptr;
}

template <typename List>
void release(Buckets<List> &in) {
    delete[] in.elementBuckets;
    in = {};
}

// Appends to a list. False out of memory; nothing is added then.
template <typename List, typename Element>
bool append(List &bucket, Element element) {
    const int length = bucket.length();
    bucket.append(element);
    return bucket.length() > length;
}

template <typename List>
int countElements(const Buckets<List> &in) {
    int elements = 0;
    for (int i = 0; i < in.numBuckets; ++i)
        elements += in.slots(i).count;
    return elements;
}

template <typename List>
int countUsed(const Buckets<List> &in) {
    int used = 0;
    for (int i = 0; i < in.numBuckets; ++i)
        used += in.slots(i).count > 0;
    return used;
}

template <typename List>
double meanUsedLength(const Buckets<List> &in) {
    const int used = countUsed(in);
    return used == 0 ? 0.0 : static_cast<double>(countElements(in)) / used;
}

// In two passes: the sum of squares minus the square of the sum would lose digits.
template <typename List>
double varianceUsedLength(const Buckets<List> &in) {
    const int used = countUsed(in);
    const double mean = meanUsedLength(in);
    double sum = 0.0;
    for (int i = 0; i < in.numBuckets; ++i) {
        const double distance = in.slots(i).count - mean;
        if (in.slots(i).count > 0) sum += distance * distance;
    }
    return used == 0 ? 0.0 : sum / used;
}

}  // namespace vx::buckets

#endif
