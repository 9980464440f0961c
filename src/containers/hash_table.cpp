// The table that owns its elements.

#include "containers/bucket_array.h"
#include "containers/uint_list.h"

namespace {

// Hooks are no const members, since a derived class may count or cache in them; look-ups and
// the sources of copies are const. This is the one place where the two meet.
VxHashTable &hooksOf(const VxHashTable &table) {
    return const_cast<VxHashTable &>(table);
}

}  // namespace

VxHashTable::VxHashTable(int numBuckets) {
    makeBuckets(numBuckets > 0 ? numBuckets : buckets::kDefaultNumber);
}

VxHashTable::VxHashTable(const VxHashTable &source) {
    makeBuckets(source.buckets_.numBuckets);
    dup(source);
}

VxHashTable::~VxHashTable() {
    releaseBuckets();
}

VxHashTable &VxHashTable::operator=(const VxHashTable &source) {
    if (this != &source) {
        empty();
        releaseBuckets();
        makeBuckets(source.buckets_.numBuckets);
        dup(source);
    }
    return *this;
}

VxHashTable &VxHashTable::copyObjects(const VxHashTable &source) {
    if (this != &source) {
        empty();
        dup(source);
    }
    return *this;
}

void VxHashTable::makeBuckets(int numBuckets) {
    if (!buckets::make(buckets_, numBuckets)) return;
    hashBuckets_ = new (std::nothrow) VxUIntList[static_cast<std::size_t>(numBuckets)];
    if (hashBuckets_ == nullptr) buckets::release(buckets_);
}

void VxHashTable::releaseBuckets() {
    buckets::release(buckets_);
    delete[] hashBuckets_;
    hashBuckets_ = nullptr;
}

void VxHashTable::dup(const VxHashTable &source) {
    if (buckets_.numBuckets == source.buckets_.numBuckets) {
        copyAlike(source);
    } else if (buckets_.numBuckets > 0) {
        distribute(source);
    }
}

// Every element at the place that it has in the source. All lists are there before the first
// hook runs, so that without memory there is nothing to destroy yet, and in a copy constructor
// nobody to do it.
void VxHashTable::copyAlike(const VxHashTable &source) {
    const int number = buckets_.numBuckets;
    for (int i = 0; i < number; ++i) {
        const int length = source.buckets_.slots(i).count;
        buckets_.elementBuckets[i] = source.buckets_.elementBuckets[i];
        hashBuckets_[i] = source.hashBuckets_[i];
        if (buckets_.slots(i).count == length && hashBuckets_[i].isWhole(length)) continue;
        for (int done = 0; done <= i; ++done) {
            buckets_.elementBuckets[done].empty();
            hashBuckets_[done].empty();
        }
        return;
    }
    VxHashTable &hooks = hooksOf(source);
    for (int i = 0; i < number; ++i) {
        const VxSlotArray &stored = source.buckets_.slots(i);
        for (int j = 0; j < stored.count; ++j)
            buckets_.elementBuckets[i].set(j, hooks.copyElement(stored.slots[j]));
    }
}

// Every element where its stored hash belongs in this number of buckets.
void VxHashTable::distribute(const VxHashTable &source) {
    VxHashTable &hooks = hooksOf(source);
    for (int i = 0; i < source.buckets_.numBuckets; ++i) {
        const VxSlotArray &stored = source.buckets_.slots(i);
        for (int j = 0; j < stored.count; ++j) {
            const unsigned int hash = source.hashBuckets_[i].at(j);
            const int target = buckets_.indexOf(hash);
            if (!hashBuckets_[target].append(hash)) {
                empty();
                return;
            }
            VxPBucketList &elements = buckets_.elementBuckets[target];
            const int length = elements.length();
            void *copy = hooks.copyElement(stored.slots[j]);
            elements.append(copy);
            if (elements.length() == length) {
                destroyElement(copy);
                empty();
                return;
            }
        }
    }
}

int VxHashTable::find(unsigned int hash, int bucket, const void *element) {
    const VxSlotArray &stored = buckets_.slots(bucket);
    const VxUIntList &hashes = hashBuckets_[bucket];
    for (int i = 0; i < stored.count; ++i) {
        if (hashes.at(i) == hash && equalElements(element, stored.slots[i]) != 0) return i;
    }
    return -1;
}

// -1 in a table without buckets.
int VxHashTable::bucketOf(unsigned int hash) const {
    return buckets_.numBuckets > 0 ? buckets_.indexOf(hash) : -1;
}

short VxHashTable::insert(const void *element) {
    if (element == nullptr) return 0;
    const unsigned int hash = hashElement(element);
    const int bucket = bucketOf(hash);
    if (bucket < 0 || find(hash, bucket, element) >= 0) return 0;
    void *copy = copyElement(element);
    if (copy == nullptr) return 0;

    VxUIntList &hashes = hashBuckets_[bucket];
    if (hashes.append(hash)) {
        VxPBucketList &elements = buckets_.elementBuckets[bucket];
        elements.append(copy);
        if (elements.length() == hashes.length()) return 1;
        hashes.remove(hashes.length() - 1, 1);
    }
    destroyElement(copy);
    return 0;
}

short VxHashTable::remove(const void *element) {
    const unsigned int hash = hashElement(element);
    const int bucket = bucketOf(hash);
    const int position = bucket < 0 ? -1 : find(hash, bucket, element);
    if (position < 0) return 0;
    VxPBucketList &elements = buckets_.elementBuckets[bucket];
    destroyElement(elements.slots().slots[position]);
    elements.remove(position, 1);
    hashBuckets_[bucket].remove(position, 1);
    return 1;
}

void *VxHashTable::has(const void *element) {
    const unsigned int hash = hashElement(element);
    const int bucket = bucketOf(hash);
    const int position = bucket < 0 ? -1 : find(hash, bucket, element);
    return position < 0 ? nullptr : buckets_.slots(bucket).slots[position];
}

const void *VxHashTable::has(const void *element) const {
    return hooksOf(*this).has(element);
}

void VxHashTable::empty() {
    for (int i = 0; i < buckets_.numBuckets; ++i) {
        VxPBucketList &elements = buckets_.elementBuckets[i];
        const int length = elements.length();
        for (int j = 0; j < length; ++j)
            destroyElement(elements.slots().slots[j]);
        elements.empty();
        hashBuckets_[i].empty();
    }
}

int VxHashTable::getNumElements() const {
    return buckets::countElements(buckets_);
}

int VxHashTable::getNumUsedBuckets() const {
    return buckets::countUsed(buckets_);
}

int VxHashTable::getNumUnusedBuckets() const {
    return buckets_.numBuckets - buckets::countUsed(buckets_);
}

double VxHashTable::getMeanUsedBucketLength() const {
    return buckets::meanUsedLength(buckets_);
}

double VxHashTable::getVarianceUsedBucketLength() const {
    return buckets::varianceUsedLength(buckets_);
}
