// The two tables of the caller's pointers. They differ in the constness of what they hold, so the
// work is done once, for either kind of bucket.

#include "containers/bucket_array.h"

VxPBucketList::~VxPBucketList() = default;
VxCPBucketList::~VxCPBucketList() = default;

namespace {

int requested(int numBuckets) {
    return numBuckets > 0 ? numBuckets : buckets::kDefaultNumber;
}

template <typename List>
typename VxBuckets<List>::Place find(const VxBuckets<List> &in, const void *element) {
    return in.find(VxPHashTable::hash(element), element);
}

// False without memory; nothing is added then.
template <typename List, typename Element>
bool append(List &bucket, Element element) {
    const int length = bucket.length();
    bucket.append(element);
    return bucket.length() > length;
}

template <typename List, typename Element>
short insert(const VxBuckets<List> &in, Element element) {
    const auto place = find(in, element);
    if (place.bucket < 0 || place.found()) return 0;
    return append(in.elementBuckets[place.bucket], element) ? 1 : 0;
}

template <typename List>
short remove(const VxBuckets<List> &in, const void *element) {
    const auto place = find(in, element);
    if (!place.found()) return 0;
    in.elementBuckets[place.bucket].remove(place.position, 1);
    return 1;
}

template <typename List>
void empty(const VxBuckets<List> &in) {
    for (int i = 0; i < in.numBuckets; ++i)
        in.elementBuckets[i].empty();
}

template <typename List>
bool copyAlike(const VxBuckets<List> &source, const VxBuckets<List> &in) {
    for (int i = 0; i < in.numBuckets; ++i) {
        in.elementBuckets[i] = source.elementBuckets[i];
        if (in.slots(i).count != source.slots(i).count) return false;
    }
    return true;
}

template <typename List>
bool distribute(const VxBuckets<List> &source, const VxBuckets<List> &in) {
    for (int i = 0; i < source.numBuckets; ++i) {
        const VxSlotArray &stored = source.slots(i);
        for (int j = 0; j < stored.count; ++j) {
            void *element = stored.slots[j];
            const int target = in.indexOf(VxPHashTable::hash(element));
            if (!append(in.elementBuckets[target], element)) return false;
        }
    }
    return true;
}

// The table is empty. It gets all of the source or, without memory, nothing.
template <typename List>
void duplicate(const VxBuckets<List> &source, const VxBuckets<List> &in) {
    if (in.numBuckets == 0) return;
    const bool alike = in.numBuckets == source.numBuckets;
    if (!(alike ? copyAlike(source, in) : distribute(source, in))) empty(in);
}

}  // namespace

VxPHashTable::VxPHashTable(int numBuckets) {
    buckets::make(buckets_, requested(numBuckets));
}

VxPHashTable::VxPHashTable() : VxPHashTable(buckets::kDefaultNumber) {}

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
    return ::insert(buckets_, element);
}

short VxPHashTable::remove(const void *element) {
    return ::remove(buckets_, element);
}

void VxPHashTable::empty() {
    ::empty(buckets_);
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
    buckets::make(buckets_, requested(numBuckets));
}

VxCPHashTable::VxCPHashTable() : VxCPHashTable(buckets::kDefaultNumber) {}

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
    return ::insert(buckets_, element);
}

short VxCPHashTable::remove(const void *element) {
    return ::remove(buckets_, element);
}

void VxCPHashTable::empty() {
    ::empty(buckets_);
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
