// The two tables of the caller's pointers. They differ in the constness of what they hold, so one
// set of functions does the work for both kinds of bucket.

#include "containers/buckets.h"

namespace buckets = vx::buckets;
using vx::buckets::Buckets;

VxPBucketList::~VxPBucketList() = default;
VxCPBucketList::~VxCPBucketList() = default;

namespace {

template <typename List>
auto find(const Buckets<List> &in, const void *element) {
    return in.find(VxPHashTable::hash(element), element);
}

template <typename List, typename Element>
short insertPointer(const Buckets<List> &in, Element element) {
    const auto place = find(in, element);
    if (place.bucket < 0 || place.found()) return 0;
    return buckets::append(in.elementBuckets[place.bucket], element) ? 1 : 0;
}

template <typename List>
short removePointer(const Buckets<List> &in, const void *element) {
    const auto place = find(in, element);
    if (!place.found()) return 0;
    in.elementBuckets[place.bucket].remove(place.position, 1);
    return 1;
}

template <typename List>
void emptyBuckets(const Buckets<List> &in) {
    for (int i = 0; i < in.numBuckets; ++i)
        in.elementBuckets[i].empty();
}

// Copies each list as it is. False out of memory.
template <typename List>
bool copyBucketwise(const Buckets<List> &source, const Buckets<List> &in) {
    for (int i = 0; i < in.numBuckets; ++i) {
        in.elementBuckets[i] = source.elementBuckets[i];
        if (in.slots(i).count != source.slots(i).count) return false;
    }
    return true;
}

// Adds each element to the bucket that it has in this number of buckets. False out of memory.
template <typename List>
bool rehashFrom(const Buckets<List> &source, const Buckets<List> &in) {
    for (int i = 0; i < source.numBuckets; ++i) {
        const auto &stored = source.slots(i);
        for (int j = 0; j < stored.count; ++j) {
            void *element = stored.slots[j];
            const int target = in.indexOf(VxPHashTable::hash(element));
            if (!buckets::append(in.elementBuckets[target], element)) return false;
        }
    }
    return true;
}

// The table is empty. It gets all elements of the source or, out of memory, none.
template <typename List>
void duplicate(const Buckets<List> &source, const Buckets<List> &in) {
    if (in.numBuckets == 0) return;
    const bool bucketwise = in.numBuckets == source.numBuckets;
    if (!(bucketwise ? copyBucketwise(source, in) : rehashFrom(source, in))) emptyBuckets(in);
}

}  // namespace

VxPHashTable::VxPHashTable(int numBuckets) {
    buckets::make(buckets_, buckets::bucketCountOrDefault(numBuckets));
}

VxPHashTable::VxPHashTable() : VxPHashTable(buckets::kDefaultCount) {}

VxPHashTable::VxPHashTable(const VxPHashTable &source) {
    buckets::make(buckets_, source.buckets_.numBuckets);
    dup(source);
}

VxPHashTable::~VxPHashTable() {
    buckets::release(buckets_);
}

VxPHashTable &VxPHashTable::operator=(const VxPHashTable &source) {
    if (this != &source) {
        buckets::release(buckets_);
        buckets::make(buckets_, source.buckets_.numBuckets);
        dup(source);
    }
    return *this;
}

VxPHashTable &VxPHashTable::copyObjects(const VxPHashTable &source) {
    if (this != &source) {
        empty();
        dup(source);
    }
    return *this;
}

void VxPHashTable::dup(const VxPHashTable &source) {
    duplicate(source.buckets_, buckets_);
}

short VxPHashTable::insert(void *element) {
    return insertPointer(buckets_, element);
}

short VxPHashTable::remove(const void *element) {
    return removePointer(buckets_, element);
}

void VxPHashTable::empty() {
    emptyBuckets(buckets_);
}

int VxPHashTable::getNumElements() const {
    return buckets::countElements(buckets_);
}

int VxPHashTable::getNumUsedBuckets() const {
    return buckets::countUsed(buckets_);
}

int VxPHashTable::getNumUnusedBuckets() const {
    return buckets_.numBuckets - buckets::countUsed(buckets_);
}

double VxPHashTable::getMeanUsedBucketLength() const {
    return buckets::meanUsedLength(buckets_);
}

double VxPHashTable::getVarianceUsedBucketLength() const {
    return buckets::varianceUsedLength(buckets_);
}

VxCPHashTable::VxCPHashTable(int numBuckets) {
    buckets::make(buckets_, buckets::bucketCountOrDefault(numBuckets));
}

VxCPHashTable::VxCPHashTable() : VxCPHashTable(buckets::kDefaultCount) {}

VxCPHashTable::VxCPHashTable(const VxCPHashTable &source) {
    buckets::make(buckets_, source.buckets_.numBuckets);
    dup(source);
}

VxCPHashTable::~VxCPHashTable() {
    buckets::release(buckets_);
}

VxCPHashTable &VxCPHashTable::operator=(const VxCPHashTable &source) {
    if (this != &source) {
        buckets::release(buckets_);
        buckets::make(buckets_, source.buckets_.numBuckets);
        dup(source);
    }
    return *this;
}

VxCPHashTable &VxCPHashTable::copyObjects(const VxCPHashTable &source) {
    if (this != &source) {
        empty();
        dup(source);
    }
    return *this;
}

void VxCPHashTable::dup(const VxCPHashTable &source) {
    duplicate(source.buckets_, buckets_);
}

short VxCPHashTable::insert(const void *element) {
    return insertPointer(buckets_, element);
}

short VxCPHashTable::remove(const void *element) {
    return removePointer(buckets_, element);
}

void VxCPHashTable::empty() {
    emptyBuckets(buckets_);
}

int VxCPHashTable::getNumElements() const {
    return buckets::countElements(buckets_);
}

int VxCPHashTable::getNumUsedBuckets() const {
    return buckets::countUsed(buckets_);
}

int VxCPHashTable::getNumUnusedBuckets() const {
    return buckets_.numBuckets - buckets::countUsed(buckets_);
}

double VxCPHashTable::getMeanUsedBucketLength() const {
    return buckets::meanUsedLength(buckets_);
}

double VxCPHashTable::getVarianceUsedBucketLength() const {
    return buckets::varianceUsedLength(buckets_);
}
