/*
 * vxhashtable.h: hash tables of pointers with a fixed number of buckets, the bases of typed sets.
 *
 *     class            what identifies an element              who owns the elements
 *     VxHashTable      the hooks hashElement, equalElements    the table: copyElement makes each
 *                                                              one, destroyElement releases it
 *     VxPHashTable     the address, void *                     the caller
 *     VxCPHashTable    the address, const void *               the caller
 *
 * These classes are bases only. A typed class derives from one of them and wraps its protected
 * members in casts; empty and the statistics need no wrapper. vxtyped.h has such classes ready.
 * One written by hand looks like the list in vxarraylist.h, with four hooks.
 *
 * Rules for all three:
 *
 *  - Buckets and load. An element is in bucket (hash modulo number of buckets). The number of
 *    buckets never changes, except that operator= takes that of the source. A look-up walks one
 *    bucket, so its time depends on the load: elements divided by buckets. Up to 1 is good. From
 *    about 4 on, the walk takes most of the time; 100,000 elements in 100 buckets behave like a
 *    list. To grow, make a table with more buckets and fill it with copyObjects, which keeps the
 *    hashes and does not run hashElement. vxNumBuckets of vxtyped.h picks a number.
 *  - Tables of addresses use at most 4096 buckets, because no hash of an address exceeds 4095.
 * Above some 16,000 elements they become slow, whatever the number of buckets.
 *  - Order. A walk visits the buckets in ascending order, and the elements of a bucket in order of
 *    insertion. Copies and operator= keep the order; so does copyObjects between tables with the
 *    same number of buckets.
 *  - Out of memory, insert returns 0 and changes nothing. A copy, assignment or copyObjects is
 *    complete or leaves an empty table. If allocating the buckets fails, the table has none: every
 *    member returns 0 or null until an assignment provides buckets.
 *  - Members that are not inline assert only in a debug build of the library, whatever the build
 *    of the caller.
 *  - Nothing is locked. Use a table and its iterators on one thread at a time. `has` and the
 *    statistics write nothing, as long as the hooks write nothing.
 */
#ifndef VXHASHTABLE_H
#define VXHASHTABLE_H

#include "vxarraylist.h"

#include <cstdint>

// The lists that buckets consist of. Callers do not use them.
class VxPBucketList : public VxPArrayList {
public:
    VxPBucketList() = default;
    VxPBucketList(const VxPBucketList &) = delete;
    VxPBucketList &operator=(const VxPBucketList &) = default;
    ~VxPBucketList() override;

    using VxPArrayList::append;
    using VxPArrayList::set;
};

class VxCPBucketList : public VxCPArrayList {
public:
    VxCPBucketList() = default;
    VxCPBucketList(const VxCPBucketList &) = delete;
    VxCPBucketList &operator=(const VxCPBucketList &) = default;
    ~VxCPBucketList() override;

    using VxCPArrayList::append;
};

class VxUIntList;  // the stored hashes of a bucket

/*
 * A table that owns its elements.
 */
class VX_API VxHashTable {
public:
    // Runs destroyElement on all elements in the order of a walk, and frees their storage. The
    // number of buckets stays.
    void empty();

    // The number of buckets; of elements, which each call counts by a walk over all buckets; of
    // buckets that hold elements; and of buckets that hold none.
    VX_INLINE int getNumBuckets() const { return buckets_.numBuckets; }
    int getNumElements() const;
    int getNumUsedBuckets() const;
    int getNumUnusedBuckets() const;

    // Mean and population variance of the number of elements per used bucket; 0.0 if no bucket is
    // used.
    double getMeanUsedBucketLength() const;
    double getVarianceUsedBucketLength() const;

protected:
    // The number of buckets; 0 or less gives 83.
    explicit VxHashTable(int numBuckets);

    // Takes the number of buckets of the source. Then runs copyElement of the *source* on each of
    // its elements: the hooks of the new object do not exist yet.
    VxHashTable(const VxHashTable &source);

    // Frees the buckets and runs no hook, because the derived class no longer exists. Its own
    // destructor must call empty(), or the elements leak.
    virtual ~VxHashTable();

    // The four hooks. None may throw, nor change this table. A `given` element is the argument of
    // insert, remove or has.
    //
    // hashElement: runs exactly once per call of these three. Equal elements must have equal
    // hashes.
    virtual unsigned int hashElement(const void *given) = 0;

    // equalElements: not 0 if both are the same element. Runs only for stored elements with
    // exactly the hash of the given one, all 32 bits.
    virtual short equalElements(const void *given, const void *stored) = 0;

    // copyElement: returns the value to store, or null to reject the insertion. While a table is
    // copied, `element` is a value stored in the source. A null result is then stored like any
    // other, and is later passed to equalElements and destroyElement.
    virtual void *copyElement(const void *element) = 0;

    // destroyElement: releases a value from copyElement.
    virtual void destroyElement(void *stored) = 0;

    // Self-assignment does nothing. Otherwise operator= empties the table, takes the number of
    // buckets of the source and copies as in the copy constructor. copyObjects empties the table
    // and keeps its own number of buckets. It then adds each element of the source, copied by
    // copyElement of the source, under the hash stored with it.
    VxHashTable &operator=(const VxHashTable &source);
    VxHashTable &copyObjects(const VxHashTable &source);

    // 1 if a copy of the element was added. 0 if nothing changed: the element is null (no hook
    // runs), an equal element is present, copyElement rejected it, or memory ran out.
    short insert(const void *element);

    // 1 if an equal element was present and is now destroyed, else 0. Null goes to hashElement.
    short remove(const void *element);

    // The stored element that equals the given one, or null. Null goes to hashElement. The table
    // keeps ownership; the hash and equality of the element must not change.
    void *has(const void *element);
    const void *has(const void *element) const;

private:
    using Place = vx::detail::Place;

    void dup(const VxHashTable &source);
    void copyBucketwise(const VxHashTable &source);
    void rehashFrom(const VxHashTable &source);
    void makeBuckets(int numBuckets);
    void releaseBuckets();
    bool append(int bucket, unsigned int hash, void *stored);
    inline Place find(unsigned int hash, const void *element);  // only the library calls it

    vx::detail::Buckets<VxPBucketList> buckets_;
    VxUIntList *hashBuckets_ = nullptr;  // entry for entry parallel to the element lists

    friend struct vx::detail::Access;
};

/*
 * A set of the caller's pointers. Members are as in VxHashTable, without hooks: the table never
 * touches what the pointers point to. Null is an element like any other.
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
     * The hash of an address, 0 to 4095: the XOR of three groups of bits of a 32-bit number p. They
     * are bits 2 to 13, bits 14 to 25, and bits 26 to 31. Bits 0 and 1 are ignored.
     *
     *     0 -> 0    0x1000 -> 1024    0x4000 -> 1    0x4000000 -> 4
     *
     * An address that fits in 32 bits is p itself. For any other address p is
     *
     *     address >> 2  XOR  (address >> 16) * 0x7f70004  XOR  (address AND 12) << 8
     *
     * modulo 2^32. So heap neighbours, a multiple of 16 bytes apart, get neighbouring hashes;
     * elements of one array that are closer still get different ones; and large blocks at any
     * regular distance spread.
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
    // The number of buckets; 0 or less gives 83, and so does no argument.
    explicit VxPHashTable(int numBuckets);
    VxPHashTable();
    VxPHashTable(const VxPHashTable &source);
    virtual ~VxPHashTable();
    VxPHashTable &operator=(const VxPHashTable &source);
    VxPHashTable &copyObjects(const VxPHashTable &source);

    // 1 if the pointer was added; 0 if it is present already, or out of memory.
    short insert(void *element);

    // 1 if the pointer was present and is now removed, else 0.
    short remove(const void *element);

    // The stored pointer, or null if it is absent. A stored null looks like an absent one.
    VX_INLINE void *has(const void *element) const {
        return buckets_.find(hash(element), element).found() ? const_cast<void *>(element)
                                                             : nullptr;
    }

private:
    void dup(const VxPHashTable &source);

    vx::detail::Buckets<VxPBucketList> buckets_;

    friend struct vx::detail::Access;
};

/*
 * A set of the caller's pointers to const. Members are as in VxPHashTable.
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

    vx::detail::Buckets<VxCPBucketList> buckets_;

    friend struct vx::detail::Access;
};

/*
 * Iterators: a pointer to the table and a place in it, at first the first element. The table does
 * not know its iterators: after an insertion or removal an iterator may denote another element or
 * none, so call reset. Do not use an iterator after its table is destroyed.
 *
 *     for (it.reset(0); it.isValid();) use(it.postInc());    first to last
 *     for (it.reset(1); it.isValid();) use(it.postDec());    the exact reverse
 *
 * Call getElem, postInc and postDec only while isValid is 1. They return the stored value:
 *
 *     VxHashTableIterator          void *, but const void * from the const form of getElem
 *     VxHashTableConstIterator     const void *
 *     VxPHashTableConstIterator    void *
 *     VxCPHashTableConstIterator   const void *
 */
class VX_API VxHashTableIterator {
public:
    VX_INLINE VxHashTableIterator(VxHashTable &table) : at_{&table} { reset(0); }
    VxHashTableIterator(const VxHashTableIterator &) = default;
    VX_INLINE ~VxHashTableIterator() {}

    // Both copy the table and the place.
    VX_INLINE VxHashTableIterator &operator=(const VxHashTableIterator &other) {
        return assign(other);
    }
    VX_INLINE VxHashTableIterator &assign(const VxHashTableIterator &other) {
        at_ = other.at_;
        return *this;
    }

    // Moves to the first element if `fromEnd` is 0, else to the last. In an empty table the
    // iterator becomes invalid.
    VX_INLINE void reset(short fromEnd) { at_.reset(fromEnd); }

    // 1 until a walk passes the last element, or the first one backwards; then 0.
    VX_INLINE short isValid() const { return at_.isValid(); }

    VX_INLINE VxHashTable *getTable() { return at_.table; }
    VX_INLINE const VxHashTable *getTable() const { return at_.table; }

    // The element at the iterator. postInc then moves to the next element, postDec to the previous.
    VX_INLINE void *getElem() { return at_.element(); }
    VX_INLINE const void *getElem() const { return at_.element(); }
    VX_INLINE void *postInc() { return at_.postInc(); }
    VX_INLINE void *postDec() { return at_.postDec(); }

private:
    vx::detail::TableCursor<VxHashTable> at_;
};

class VX_API VxHashTableConstIterator {
public:
    VX_INLINE VxHashTableConstIterator(const VxHashTable &table) : at_{&table} { reset(0); }
    VxHashTableConstIterator(const VxHashTableConstIterator &) = default;
    VX_INLINE ~VxHashTableConstIterator() {}
    VX_INLINE VxHashTableConstIterator &operator=(const VxHashTableConstIterator &other) {
        return assign(other);
    }
    VX_INLINE VxHashTableConstIterator &assign(const VxHashTableConstIterator &other) {
        at_ = other.at_;
        return *this;
    }
    VX_INLINE void reset(short fromEnd) { at_.reset(fromEnd); }
    VX_INLINE short isValid() const { return at_.isValid(); }
    VX_INLINE const VxHashTable *getTable() const { return at_.table; }
    VX_INLINE const void *getElem() const { return at_.element(); }
    VX_INLINE const void *postInc() { return at_.postInc(); }
    VX_INLINE const void *postDec() { return at_.postDec(); }

private:
    vx::detail::TableCursor<const VxHashTable> at_;
};

class VX_API VxPHashTableConstIterator {
public:
    VX_INLINE VxPHashTableConstIterator(const VxPHashTable &table) : at_{&table} { reset(0); }
    VxPHashTableConstIterator(const VxPHashTableConstIterator &) = default;
    VX_INLINE ~VxPHashTableConstIterator() {}
    VX_INLINE VxPHashTableConstIterator &operator=(const VxPHashTableConstIterator &other) {
        return assign(other);
    }
    VX_INLINE VxPHashTableConstIterator &assign(const VxPHashTableConstIterator &other) {
        at_ = other.at_;
        return *this;
    }
    VX_INLINE void reset(short fromEnd) { at_.reset(fromEnd); }
    VX_INLINE short isValid() const { return at_.isValid(); }
    VX_INLINE const VxPHashTable *getTable() const { return at_.table; }
    VX_INLINE void *getElem() const { return at_.element(); }
    VX_INLINE void *postInc() { return at_.postInc(); }
    VX_INLINE void *postDec() { return at_.postDec(); }

private:
    vx::detail::TableCursor<const VxPHashTable> at_;
};

class VX_API VxCPHashTableConstIterator {
public:
    VX_INLINE VxCPHashTableConstIterator(const VxCPHashTable &table) : at_{&table} { reset(0); }
    VxCPHashTableConstIterator(const VxCPHashTableConstIterator &) = default;
    VX_INLINE ~VxCPHashTableConstIterator() {}
    VX_INLINE VxCPHashTableConstIterator &operator=(const VxCPHashTableConstIterator &other) {
        return assign(other);
    }
    VX_INLINE VxCPHashTableConstIterator &assign(const VxCPHashTableConstIterator &other) {
        at_ = other.at_;
        return *this;
    }
    VX_INLINE void reset(short fromEnd) { at_.reset(fromEnd); }
    VX_INLINE short isValid() const { return at_.isValid(); }
    VX_INLINE const VxCPHashTable *getTable() const { return at_.table; }
    VX_INLINE const void *getElem() const { return at_.element(); }
    VX_INLINE const void *postInc() { return at_.postInc(); }
    VX_INLINE const void *postDec() { return at_.postDec(); }

private:
    vx::detail::TableCursor<const VxCPHashTable> at_;
};

#endif
