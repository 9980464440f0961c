/*
 * vxhashtable.h: sets of pointers in a fixed number of buckets, the bases of typed tables.
 *
 *     class            what identifies an element              the elements belong to
 *     VxHashTable      the hooks hashElement, equalElements    the table: each enters through
 *                                                              copyElement and leaves through
 *                                                              destroyElement
 *     VxPHashTable     the address, void *                     the caller
 *     VxCPHashTable    the address, const void *               the caller
 *
 * No table is made directly. A typed class derives from one of the three and casts in its own
 * forms of the protected members; empty and the statistics stay as they are. vxtyped.h has such
 * classes ready; by hand one looks like the list in vxarraylist.h, with four hooks.
 *
 * What holds for all three:
 *
 *  - Buckets and load. An element stands in bucket (hash modulo number of buckets). A table never
 *    changes its number of buckets by itself; only operator= does, to that of the source. A look
 *    up walks one bucket, so its time follows the load, elements divided by buckets: up to 1 is
 *    good, from about 4 on the walk is most of the time, and 100 buckets with 100,000 elements are
 *    a list. To grow, make a table with more buckets and fill it with copyObjects, which keeps
 *    the hashes and runs no hashElement. vxNumBuckets of vxtyped.h picks a number.
 *  - Tables of addresses use no more than 4096 buckets, since no hash of an address is above
 *    4095; past some 16,000 elements they get slow whatever the number.
 *  - Order. A walk gives the buckets in ascending order, and the elements of a bucket in the order
 *    of their insertion. It survives copies and operator=, and copyObjects between tables of the
 *    same number of buckets.
 *  - Without memory insert answers 0 and changes nothing. A copy, assignment or copyObjects is
 *    whole or leaves an empty table. A table that could not have its buckets has none: it
 *    answers 0 or null to everything until an assignment gives it some.
 *  - Members that are not inline assert only in a debug build of the library, whatever the build
 *    of the caller.
 *  - Nothing is locked: a table and its iterators serve one thread at a time. As far as the hooks
 *    keep to it, `has` and the statistics write nothing.
 */
#ifndef VXHASHTABLE_H
#define VXHASHTABLE_H

#include "vxarraylist.h"

#include <cstdint>

template <typename Table>
struct VxTableSpot;

// The lists that buckets are made of. Not for callers, who never make one.
class VxPBucketList : public VxPArrayList {
public:
    VxPBucketList() = default;
    VxPBucketList(const VxPBucketList &) = delete;
    VxPBucketList &operator=(const VxPBucketList &) = default;
    ~VxPBucketList() override;

    const VxSlotArray &slots() const { return array_; }
    using VxPArrayList::append;
    using VxPArrayList::set;
};

class VxCPBucketList : public VxCPArrayList {
public:
    VxCPBucketList() = default;
    VxCPBucketList(const VxCPBucketList &) = delete;
    VxCPBucketList &operator=(const VxCPBucketList &) = default;
    ~VxCPBucketList() override;

    const VxSlotArray &slots() const { return array_; }
    using VxCPArrayList::append;
};

// The list of stored hashes of a bucket.
class VxUIntList;

// UndefinedBehaviorSanitizer looks at the type information of a list before each use. That of the
// bucket lists is no export; so at their only use outside the library it does not look.
#if defined(__GNUC__)
#define VX_NO_TYPE_CHECK __attribute__((no_sanitize("vptr")))
#else
#define VX_NO_TYPE_CHECK
#endif

// The fields of every table, behind its table of virtual members. Not for callers.
template <typename List>
struct VxBuckets {
    int numBuckets = 0;
    List *elementBuckets = nullptr;

    VX_NO_TYPE_CHECK const VxSlotArray &slots(int bucket) const {
        return elementBuckets[bucket].slots();
    }

    // The bucket of a hash. REQUIRES: there are buckets.
    int indexOf(unsigned int hash) const {
        return static_cast<int>(hash % static_cast<unsigned int>(numBuckets));
    }

    struct Place {
        int bucket;    // -1 in a table without buckets
        int position;  // -1 for an address that is not there

        bool found() const { return position >= 0; }
    };

    // Where an address stands, or the bucket where it belongs.
    Place find(unsigned int hash, const void *address) const {
        if (numBuckets == 0) return {-1, -1};
        const int bucket = indexOf(hash);
        const VxSlotArray &stored = slots(bucket);
        for (int i = 0; i < stored.count; ++i) {
            if (stored.slots[i] == address) return {bucket, i};
        }
        return {bucket, -1};
    }
};

/*
 * A table that owns its elements.
 */
class VX_API VxHashTable {
public:
    // Removes all elements, by destroyElement bucket by bucket in the order of a walk, and gives
    // back their storage. The number of buckets stays.
    void empty();

    // The number of buckets; of elements, counted at each call by a walk over all buckets; of
    // buckets that hold elements; of those that hold none.
    VX_INLINE int getNumBuckets() const { return buckets_.numBuckets; }
    int getNumElements() const;
    int getNumUsedBuckets() const;
    int getNumUnusedBuckets() const;

    // Mean and population variance of the number of elements over the used buckets. 0.0 when
    // there are none.
    double getMeanUsedBucketLength() const;
    double getVarianceUsedBucketLength() const;

protected:
    // The number of buckets; 0 or less gives 83.
    explicit VxHashTable(int numBuckets);

    // As many buckets as the source, then for each element the *source's* copyElement: the hooks
    // of the new object do not exist yet.
    VxHashTable(const VxHashTable &source);

    // Frees the buckets and runs no hook, since those of the derived class are gone by now: its
    // own destructor calls empty(), or the elements leak.
    virtual ~VxHashTable();

    // The four hooks. None may throw, nor change this table. A `given` element is what a caller
    // passed to insert, remove or has.
    //
    // hashElement: runs exactly once in each of these three. Equal elements have equal hashes.
    virtual unsigned int hashElement(const void *given) = 0;

    // equalElements: not 0 if both are the same element. Runs only for stored elements whose
    // whole hash is that of the given one.
    virtual short equalElements(const void *given, const void *stored) = 0;

    // copyElement: the value to store for an element, null to refuse the insertion. When a table
    // is copied it gets a stored value of the source, and a null is stored as it comes,
    // and is what equalElements and destroyElement get then.
    virtual void *copyElement(const void *element) = 0;

    // destroyElement: releases a value that copyElement returned.
    virtual void destroyElement(void *stored) = 0;

    // Nothing on self-assignment. operator= empties the table, takes over the number of buckets
    // and copies as above. copyObjects empties the table, keeps its own number of buckets and
    // puts in a copy of each element of the source under the hash stored with it, by the
    // source's copyElement.
    VxHashTable &operator=(const VxHashTable &source);
    VxHashTable &copyObjects(const VxHashTable &source);

    // 1 if a copy of the element was added. 0, with nothing changed, for null (no hook runs), for
    // an element that is there already and for one that copyElement refused.
    short insert(const void *element);

    // 1 if an equal element was there and is destroyed, else 0. Null goes to hashElement.
    short remove(const void *element);

    // The stored element that equals the given one, null if there is none. Null goes to
    // hashElement. The element stays the table's; its hash and equality must not change.
    void *has(const void *element);
    const void *has(const void *element) const;

private:
    void dup(const VxHashTable &source);
    void copyAlike(const VxHashTable &source);
    void distribute(const VxHashTable &source);
    void makeBuckets(int numBuckets);
    void releaseBuckets();
    int find(unsigned int hash, int bucket, const void *element);
    int bucketOf(unsigned int hash) const;

    VxBuckets<VxPBucketList> buckets_;
    VxUIntList *hashBuckets_ = nullptr;  // entry by entry in step with the element lists

    template <typename Table>
    friend struct VxTableSpot;
};

/*
 * A set of the caller's pointers. Members as in VxHashTable, without hooks: what the pointers
 * point to is never touched. Null is an element like any other.
 */
class VX_API VxPHashTable {
public:
    void empty();
    VX_INLINE int getNumBuckets() const { return buckets_.numBuckets; }
    int getNumElements() const;
    int getNumUsedBuckets() const;
    int getNumUnusedBuckets() const;
    double getMeanUsedBucketLength() const;
    double getVarianceUsedBucketLength() const;

    /*
     * The hash of an address, 0 to 4095. With p the address as a 32-bit number, bits 2 to 13, 14
     * to 25 and 26 to 31 are folded onto each other by XOR; the two lowest bits do not count.
     *
     *     0 -> 0    0x1000 -> 1024    0x4000 -> 1    0x4000000 -> 4
     *
     * An address of 32 bits is p itself. Of a wider one p is
     *
     *     address >> 2  XOR  (address >> 16) * 0x7f70004  XOR  (address AND 12) << 8
     *
     * modulo 2^32, so that neighbours on the heap, which lie 16 bytes or a multiple apart, get
     * neighbouring hashes, elements of one array that lie closer still get different ones, and
     * great blocks at any regular distance spread.
     */
    VX_INLINE static unsigned int hash(const void *element) {
        const auto address = reinterpret_cast<std::uintptr_t>(element);
        auto p = static_cast<std::uint32_t>(address);
        if (static_cast<std::uint64_t>(address) >> 32 != 0) {
            p = static_cast<std::uint32_t>(address >> 2) ^
                static_cast<std::uint32_t>(address >> 16) * 0x7f70004U ^ (p & 0xc) << 8;
        }
        const std::uint32_t a = p >> 10 & 0x3f0000;
        const std::uint32_t b = p & 0x3ffc000;
        const std::uint32_t c = p & 0x3ffc;
        return ((a ^ b) >> 12 ^ c) >> 2;
    }

protected:
    // The number of buckets; 0 or less, and no argument, give 83.
    explicit VxPHashTable(int numBuckets);
    VxPHashTable();
    VxPHashTable(const VxPHashTable &source);
    virtual ~VxPHashTable();
    VxPHashTable &operator=(const VxPHashTable &source);
    VxPHashTable &copyObjects(const VxPHashTable &source);

    // 1 if the pointer was added; 0 if it is there already.
    short insert(void *element);

    // 1 if the pointer was there and is removed, else 0.
    short remove(const void *element);

    // The stored pointer, null if it is absent; for a stored null the two look alike.
    VX_INLINE void *has(const void *element) const {
        return buckets_.find(hash(element), element).found() ? const_cast<void *>(element)
                                                             : nullptr;
    }

private:
    void dup(const VxPHashTable &source);

    VxBuckets<VxPBucketList> buckets_;

    template <typename Table>
    friend struct VxTableSpot;
};

/*
 * A set of the caller's pointers to const. Members as in VxPHashTable.
 */
class VX_API VxCPHashTable {
public:
    void empty();
    VX_INLINE int getNumBuckets() const { return buckets_.numBuckets; }
    int getNumElements() const;
    int getNumUsedBuckets() const;
    int getNumUnusedBuckets() const;
    double getMeanUsedBucketLength() const;
    double getVarianceUsedBucketLength() const;
    VX_INLINE static unsigned int hash(const void *element) { return VxPHashTable::hash(element); }

protected:
    explicit VxCPHashTable(int numBuckets);
    VxCPHashTable();
    VxCPHashTable(const VxCPHashTable &source);
    virtual ~VxCPHashTable();
    VxCPHashTable &operator=(const VxCPHashTable &source);
    VxCPHashTable &copyObjects(const VxCPHashTable &source);
    short insert(const void *element);
    short remove(const void *element);
    VX_INLINE const void *has(const void *element) const {
        return buckets_.find(hash(element), element).found() ? element : nullptr;
    }

private:
    void dup(const VxCPHashTable &source);

    VxBuckets<VxCPBucketList> buckets_;

    template <typename Table>
    friend struct VxTableSpot;
};

// What an iterator is made of. Not for callers.
template <typename Table>
struct VxTableSpot {
    Table *table;
    int bucket = 0;
    int position = 0;

    // One comparison: a negative bucket is a great unsigned one.
    bool isValid() const {
        return static_cast<unsigned int>(bucket) <
               static_cast<unsigned int>(table->buckets_.numBuckets);
    }

    void *element() const {
        assert(isValid() && table->buckets_.slots(bucket).has(position));
        return table->buckets_.slots(bucket).slots[position];
    }

    void *postInc() {
        void *found = element();
        ++position;
        if (position >= length()) {
            position = 0;
            ++bucket;
            skipEmpty();
        }
        return found;
    }

    void *postDec() {
        void *found = element();
        --position;
        if (position < 0) {
            --bucket;
            findLast();
        }
        return found;
    }

    void reset(short fromEnd) {
        if (fromEnd != 0) {
            position = -1;
            bucket = table->buckets_.numBuckets - 1;
            findLast();
        } else {
            position = 0;
            bucket = 0;
            skipEmpty();
        }
    }

private:
    int length() const { return table->buckets_.slots(bucket).count; }

    void skipEmpty() {
        while (bucket < table->buckets_.numBuckets && length() == 0)
            ++bucket;
    }

    void findLast() {
        for (; bucket >= 0; --bucket) {
            position = length() - 1;
            if (position >= 0) return;
        }
    }
};

/*
 * Iterators: a pointer to the table and a place in it. A new one stands on the first element. The
 * table does not know of them: after an insertion or removal an iterator may stand on another
 * element or on none, so start anew. It must not outlive its table.
 *
 *     for (it.reset(0); it.isValid();) use(it.postInc());    first to last
 *     for (it.reset(1); it.isValid();) use(it.postDec());    the exact reverse
 *
 * getElem, postInc and postDec are for an iterator of which isValid is 1. They give the stored
 * value:
 *
 *     VxHashTableIterator          void *, but const void * from the const form of getElem
 *     VxHashTableConstIterator     const void *
 *     VxPHashTableConstIterator    void *
 *     VxCPHashTableConstIterator   const void *
 */
class VX_API VxHashTableIterator {
public:
    VX_INLINE VxHashTableIterator(VxHashTable &table) : spot_{&table} { reset(0); }
    VxHashTableIterator(const VxHashTableIterator &) = default;
    VX_INLINE ~VxHashTableIterator() {}

    // Both take over the table and the place.
    VX_INLINE VxHashTableIterator &operator=(const VxHashTableIterator &other) {
        return assign(other);
    }
    VX_INLINE VxHashTableIterator &assign(const VxHashTableIterator &other) {
        spot_ = other.spot_;
        return *this;
    }

    // Goes to the first element or, when `fromEnd` is not 0, to the last. In an empty table the
    // iterator is not valid then.
    VX_INLINE void reset(short fromEnd) { spot_.reset(fromEnd); }

    // 1 as long as a walk has not left the table, else 0.
    VX_INLINE short isValid() const { return spot_.isValid() ? 1 : 0; }

    VX_INLINE VxHashTable *getTable() { return spot_.table; }
    VX_INLINE const VxHashTable *getTable() const { return spot_.table; }

    // The element at the iterator; postInc and postDec then go on to the next one in the order of
    // the walk or against it.
    VX_INLINE void *getElem() { return spot_.element(); }
    VX_INLINE const void *getElem() const { return spot_.element(); }
    VX_INLINE void *postInc() { return spot_.postInc(); }
    VX_INLINE void *postDec() { return spot_.postDec(); }

private:
    VxTableSpot<VxHashTable> spot_;
};

class VX_API VxHashTableConstIterator {
public:
    VX_INLINE VxHashTableConstIterator(const VxHashTable &table) : spot_{&table} { reset(0); }
    VxHashTableConstIterator(const VxHashTableConstIterator &) = default;
    VX_INLINE ~VxHashTableConstIterator() {}
    VX_INLINE VxHashTableConstIterator &operator=(const VxHashTableConstIterator &other) {
        return assign(other);
    }
    VX_INLINE VxHashTableConstIterator &assign(const VxHashTableConstIterator &other) {
        spot_ = other.spot_;
        return *this;
    }
    VX_INLINE void reset(short fromEnd) { spot_.reset(fromEnd); }
    VX_INLINE short isValid() const { return spot_.isValid() ? 1 : 0; }
    VX_INLINE const VxHashTable *getTable() const { return spot_.table; }
    VX_INLINE const void *getElem() const { return spot_.element(); }
    VX_INLINE const void *postInc() { return spot_.postInc(); }
    VX_INLINE const void *postDec() { return spot_.postDec(); }

private:
    VxTableSpot<const VxHashTable> spot_;
};

class VX_API VxPHashTableConstIterator {
public:
    VX_INLINE VxPHashTableConstIterator(const VxPHashTable &table) : spot_{&table} { reset(0); }
    VxPHashTableConstIterator(const VxPHashTableConstIterator &) = default;
    VX_INLINE ~VxPHashTableConstIterator() {}
    VX_INLINE VxPHashTableConstIterator &operator=(const VxPHashTableConstIterator &other) {
        return assign(other);
    }
    VX_INLINE VxPHashTableConstIterator &assign(const VxPHashTableConstIterator &other) {
        spot_ = other.spot_;
        return *this;
    }
    VX_INLINE void reset(short fromEnd) { spot_.reset(fromEnd); }
    VX_INLINE short isValid() const { return spot_.isValid() ? 1 : 0; }
    VX_INLINE const VxPHashTable *getTable() const { return spot_.table; }
    VX_INLINE void *getElem() const { return spot_.element(); }
    VX_INLINE void *postInc() { return spot_.postInc(); }
    VX_INLINE void *postDec() { return spot_.postDec(); }

private:
    VxTableSpot<const VxPHashTable> spot_;
};

class VX_API VxCPHashTableConstIterator {
public:
    VX_INLINE VxCPHashTableConstIterator(const VxCPHashTable &table) : spot_{&table} { reset(0); }
    VxCPHashTableConstIterator(const VxCPHashTableConstIterator &) = default;
    VX_INLINE ~VxCPHashTableConstIterator() {}
    VX_INLINE VxCPHashTableConstIterator &operator=(const VxCPHashTableConstIterator &other) {
        return assign(other);
    }
    VX_INLINE VxCPHashTableConstIterator &assign(const VxCPHashTableConstIterator &other) {
        spot_ = other.spot_;
        return *this;
    }
    VX_INLINE void reset(short fromEnd) { spot_.reset(fromEnd); }
    VX_INLINE short isValid() const { return spot_.isValid() ? 1 : 0; }
    VX_INLINE const VxCPHashTable *getTable() const { return spot_.table; }
    VX_INLINE const void *getElem() const { return spot_.element(); }
    VX_INLINE const void *postInc() { return spot_.postInc(); }
    VX_INLINE const void *postDec() { return spot_.postDec(); }

private:
    VxTableSpot<const VxCPHashTable> spot_;
};

#endif
