/*
 * vxcontainers_detail.h: the fields of lists and tables and the walks over them, for the headers
 * vxarraylist.h, vxhashtable.h and vxtyped.h. Callers use none of it.
 */
#ifndef VXCONTAINERS_DETAIL_H
#define VXCONTAINERS_DETAIL_H

#include <algorithm>
#include <cassert>
#include <utility>

// UndefinedBehaviorSanitizer checks the type information of a list at each use. The library does
// not export that of its bucket lists, so the accessor that callers reach them through is exempt.
#if defined(__GNUC__)
#define VX_NO_TYPE_CHECK __attribute__((no_sanitize("vptr")))
#else
#define VX_NO_TYPE_CHECK
#endif

namespace vx::detail {

// The fields of every list, after its pointer to the virtual table.
struct SlotArray {
    int count = 0;     // elements
    int capacity = 0;  // slots: 0 or a power of two
    void **slots = nullptr;

    // One comparison: a negative index is a large unsigned one.
    bool has(int index) const {
        return static_cast<unsigned int>(index) < static_cast<unsigned int>(count);
    }

    void *&at(int index) const {
        assert(has(index));
        return slots[index];
    }

    void swap(int one, int other) {
        if (one != other) std::swap(at(one), at(other));
    }

    // A failed copy of an element leaves null in its slot.
    int countFilled() const {
        return count - static_cast<int>(std::count(slots, slots + count, nullptr));
    }
};

// The private fields of lists and tables.
struct Access {
    template <typename List>
    VX_NO_TYPE_CHECK static auto &array(List &list) {
        return list.array_;
    }
    template <typename Table>
    static auto &buckets(Table &table) {
        return table.buckets_;
    }
    template <typename Table>
    static auto &hashBuckets(Table &table) {
        return table.hashBuckets_;
    }
};

// Where an element of a table is.
struct Place {
    int bucket;    // -1 in a table without buckets
    int position;  // -1 if it is not in the bucket

    bool found() const { return position >= 0; }
};

// The fields of every table, after its pointer to the virtual table.
template <typename List>
struct Buckets {
    int numBuckets = 0;
    List *elementBuckets = nullptr;

    const SlotArray &slots(int bucket) const { return Access::array(elementBuckets[bucket]); }

    // The bucket of a hash. REQUIRES: numBuckets > 0.
    int indexOf(unsigned int hash) const {
        return static_cast<int>(hash % static_cast<unsigned int>(numBuckets));
    }

    // Looks an address up by its hash.
    Place find(unsigned int hash, const void *address) const {
        if (numBuckets == 0) return {-1, -1};
        const int bucket = indexOf(hash);
        const SlotArray &stored = slots(bucket);
        for (int i = 0; i < stored.count; ++i) {
            if (stored.slots[i] == address) return {bucket, i};
        }
        return {bucket, -1};
    }
};

// The fields of every list iterator.
template <typename List>
struct ListCursor {
    List *list;
    int index = 0;

    void reset(short fromEnd) { index = fromEnd != 0 ? list->length() - 1 : 0; }
    bool isValid() const { return Access::array(*list).has(index); }
    void *&element() const { return Access::array(*list).at(index); }
    void *&postInc() { return Access::array(*list).at(index++); }
    void *&postDec() { return Access::array(*list).at(index--); }
};

// The fields of every table iterator.
template <typename Table>
struct TableCursor {
    Table *table = nullptr;
    int bucket = 0;
    int position = 0;

    // One comparison: a negative bucket is a large unsigned one.
    bool isValid() const {
        return static_cast<unsigned int>(bucket) < static_cast<unsigned int>(numBuckets());
    }

    void *element() const {
        assert(isValid());
        return stored().at(position);
    }

    void *postInc() {
        void *found = element();
        ++position;
        if (position >= stored().count) {
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
            bucket = numBuckets() - 1;
            findLast();
        } else {
            position = 0;
            bucket = 0;
            skipEmpty();
        }
    }

    void skipEmpty() {
        while (bucket < numBuckets() && stored().count == 0)
            ++bucket;
    }

private:
    int numBuckets() const { return table->getNumBuckets(); }
    const SlotArray &stored() const { return Access::buckets(*table).slots(bucket); }

    void findLast() {
        for (; bucket >= 0; --bucket) {
            position = stored().count - 1;
            if (position >= 0) return;
        }
    }
};

}  // namespace vx::detail

#undef VX_NO_TYPE_CHECK

#endif
