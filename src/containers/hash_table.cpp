// The table that owns its elements.

#include "containers/buckets.h"
#include "containers/uint_list.h"

namespace buckets = vx::buckets;

namespace {

// Hooks are not const, because a derived class may count or cache in them. Look-ups and the
// sources of copies are const; this is the one place that casts it away.
VxHashTable &hooksOf(const VxHashTable &table) {
    return const_cast<VxHashTable &>(table);
}

}  // namespace

VxHashTable::VxHashTable(int numBuckets) {
    makeBuckets(buckets::bucketCountOrDefault(numBuckets));
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

// Makes both arrays or none: whoever finds buckets also finds their hashes.
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
        copyBucketwise(source);
    } else if (buckets_.numBuckets > 0) {
        rehashFrom(source);
    }
}

// Every element goes to the place that it has in the source. All lists exist before the first hook
// runs: out of memory there is then nothing to destroy, which a copy constructor could not do.
void VxHashTable::copyBucketwise(const VxHashTable &source) {
    const int number = buckets_.numBuckets;
    for (int i = 0; i < number; ++i) {
        const int length = source.buckets_.slots(i).count;
        buckets_.elementBuckets[i] = source.buckets_.elementBuckets[i];
        hashBuckets_[i] = source.hashBuckets_[i];
        if (buckets_.slots(i).count == length &&
            vx::detail::Access::array(hashBuckets_[i]).countFilled() == length)
            continue;
        for (int done = 0; done <= i; ++done) {
            buckets_.elementBuckets[done].empty();
            hashBuckets_[done].empty();
        }
        return;
    }
    VxHashTable &hooks = hooksOf(source);
    for (int i = 0; i < number; ++i) {
        const auto &stored = source.buckets_.slots(i);
        for (int j = 0; j < stored.count; ++j)
            buckets_.elementBuckets[i].set(j, hooks.copyElement(stored.slots[j]));
    }
}

// Every element goes to the bucket that its stored hash has in this number of buckets.
void VxHashTable::rehashFrom(const VxHashTable &source) {
    VxHashTable &hooks = hooksOf(source);
    for (int i = 0; i < source.buckets_.numBuckets; ++i) {
        const auto &stored = source.buckets_.slots(i);
        for (int j = 0; j < stored.count; ++j) {
            const unsigned int hash = source.hashBuckets_[i].at(j);
            void *copy = hooks.copyElement(stored.slots[j]);
            if (append(buckets_.indexOf(hash), hash, copy)) continue;
            destroyElement(copy);
            empty();
            return;
        }
    }
}

// Appends to both lists of a bucket. False out of memory; nothing is added then.
bool VxHashTable::append(int bucket, unsigned int hash, void *stored) {
    VxUIntList &hashes = hashBuckets_[bucket];
    if (!hashes.append(hash)) return false;
    if (buckets::append(buckets_.elementBuckets[bucket], stored)) return true;
    hashes.remove(hashes.length() - 1, 1);
    return false;
}

// Inline, for the speed of look-ups. Compares the hashes first: equalElements is a virtual call,
// and often an expensive one.
VxHashTable::Place VxHashTable::find(unsigned int hash, const void *element) {
    if (buckets_.numBuckets <= 0) return {-1, -1};
    const int bucket = buckets_.indexOf(hash);
    const auto &stored = buckets_.slots(bucket);
    const VxUIntList &hashes = hashBuckets_[bucket];
    for (int i = 0; i < stored.count; ++i) {
        if (hashes.at(i) == hash && equalElements(element, stored.slots[i]) != 0)
            return {bucket, i};
    }
    return {bucket, -1};
}

short VxHashTable::insert(const void *element) {
    if (element == nullptr) return 0;
    const unsigned int hash = hashElement(element);
    const Place place = find(hash, element);
    if (place.bucket < 0 || place.found()) return 0;
    // The copy comes first: if the hook rejects the element, no list has grown.
    void *copy = copyElement(element);
    if (copy == nullptr) return 0;
    if (append(place.bucket, hash, copy)) return 1;
    destroyElement(copy);
    return 0;
}

short VxHashTable::remove(const void *element) {
    const Place place = find(hashElement(element), element);
    if (!place.found()) return 0;
    destroyElement(buckets_.slots(place.bucket).slots[place.position]);
    buckets_.elementBuckets[place.bucket].remove(place.position, 1);
    hashBuckets_[place.bucket].remove(place.position, 1);
    return 1;
}

void *VxHashTable::has(const void *element) {
    const Place place = find(hashElement(element), element);
    return place.found() ? buckets_.slots(place.bucket).slots[place.position] : nullptr;
}

const void *VxHashTable::has(const void *element) const {
    return hooksOf(*this).has(element);
}

void VxHashTable::empty() {
    for (int i = 0; i < buckets_.numBuckets; ++i) {
        const auto &stored = buckets_.slots(i);
        const int length = stored.count;
        for (int j = 0; j < length; ++j)
            destroyElement(stored.slots[j]);
        buckets_.elementBuckets[i].empty();
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
