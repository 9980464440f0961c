/*
 * vxarraylist.h: growable lists of pointers, the bases of typed lists.
 *
 *     class            a slot holds        the elements belong to
 *     VxArrayList      void *              the list: each enters through the hook copyElement
 *                                          and leaves through destroyElement
 *     VxPArrayList     void *              the caller: the list stores the pointer as it is
 *     VxCPArrayList    const void *        the caller: likewise
 *
 * No list is made directly. A typed class derives from one of the three, casts in its own forms
 * of the protected members, and leaves remove, empty, length and swap to its users as they are.
 * vxtyped.h has such classes ready; by hand one looks like this:
 *
 *     class WidgetList : public VxArrayList {
 *     public:
 *         WidgetList() = default;
 *         WidgetList(const WidgetList &) = default;            // calls copyElement of the source
 *         WidgetList &operator=(const WidgetList &) = default;
 *         ~WidgetList() override { empty(); }                  // see the destructor below
 *         void append(const Widget &w) { VxArrayList::append(&w); }
 *         Widget &get(int i) { return *static_cast<Widget *>(VxArrayList::get(i)); }
 *     protected:
 *         void *copyElement(const void *w) override {
 *             return new (std::nothrow) Widget(*static_cast<const Widget *>(w));
 *         }
 *         void destroyElement(void *w) override { delete static_cast<Widget *>(w); }
 *     };
 *
 * What holds for all three:
 *
 *  - Indices count from 0 and are not tested in release builds; a debug build asserts the limits
 *    that stand as REQUIRES at the members. Outside them nothing is defined. Members that are not
 *    inline assert only in a debug build of the library, whatever the build of the caller.
 *  - Growth. The capacity, in slots, goes 0, 1, 2, 4, 8, ...: an insertion doubles it until the
 *    new length fits. A removal that leaves less than a quarter of it halves it, down to 2 at
 *    the lowest and at least once, until that is no longer so. A capacity of 1 or 2 stays. Only
 *    `empty` gives back everything. A copy has the capacity of its source.
 *  - A reference to a slot, as `get` of the pointer lists and their iterators give it, is good
 *    until the next insertion, removal, `empty` or assignment.
 *  - Without memory for its slots an insertion changes nothing, and no hook runs: the length
 *    tells. A removal keeps the old slots. A copy or assignment without memory gives an empty
 *    list. The same goes for lists that would pass 2^30 slots.
 *  - Nothing is locked: a list and its iterators serve one thread at a time.
 */
#ifndef VXARRAYLIST_H
#define VXARRAYLIST_H

#include "vxexports.h"

#include <cassert>

// The fields of every list, behind its table of virtual members. Not for callers.
struct VxSlotArray {
    int count = 0;     // elements
    int capacity = 0;  // slots: 0 or a power of two
    void **slots = nullptr;

    // One comparison: a negative index is a great unsigned one.
    bool has(int index) const {
        return static_cast<unsigned int>(index) < static_cast<unsigned int>(count);
    }
};

/*
 * A list that owns its elements. The base of VxUIntList and of every typed list of copies.
 */
class VX_API VxArrayList {
public:
    // Removes n elements from index `first` on; the ones behind them move down. First
    // destroyElement runs on each of them in ascending order. n of 0 does nothing at all.
    // REQUIRES: first >= 0, n >= 0, first + n <= length().
    void remove(int first, int n);

    // Runs destroyElement on every element from index 0 up and gives the storage back.
    void empty();

    // The number of elements.
    VX_INLINE int length() const { return array_.count; }

    // Exchanges two slots; no hook runs. REQUIRES: 0 <= one, other < length().
    VX_INLINE void swap(int one, int other) {
        assert(array_.has(one) && array_.has(other));
        void *kept = array_.slots[one];
        array_.slots[one] = array_.slots[other];
        array_.slots[other] = kept;
    }

protected:
    VxArrayList();

    // Takes over length and capacity of the source, then runs the *source's* copyElement on each
    // of its elements, from index 0 up: the hooks of the new object do not exist yet.
    VxArrayList(const VxArrayList &source);

    // Frees the slots and runs no hook, since those of the derived class are gone by now: its
    // own destructor calls empty(), or the elements leak.
    virtual ~VxArrayList();

    // The two hooks. Neither may throw, nor change this list.
    //
    // copyElement: the value to store for an element. The element is what the caller passed to
    // insert, append or set or, when a list is copied or inserted, a stored value of the other
    // list. The result is stored unseen, null included. During an insertion length() counts the
    // new element already, and its slot holds nothing yet.
    virtual void *copyElement(const void *element) = 0;

    // destroyElement: releases a value that copyElement returned; runs once for each.
    virtual void destroyElement(void *stored) = 0;

    // Nothing on self-assignment; otherwise empty(), then a copy as above.
    VxArrayList &operator=(const VxArrayList &source);

    // The stored value at an index. REQUIRES: 0 <= index < length().
    VX_INLINE void *get(int index) {
        assert(array_.has(index));
        return array_.slots[index];
    }
    VX_INLINE const void *get(int index) const {
        assert(array_.has(index));
        return array_.slots[index];
    }

    // Replaces one element: destroyElement on the old value, then copyElement on the new one. So
    // `element` is not the value stored there. REQUIRES: 0 <= index < length().
    void set(int index, const void *element);

    // Inserts a copy of one element, or of all elements of another list in their order, before
    // the index. REQUIRES: 0 <= index <= length(); `list` is another list.
    void insert(int index, const void *element);
    void insert(int index, const VxArrayList &list);

    // The same behind the last element.
    void append(const void *element);
    void append(const VxArrayList &list);

private:
    void grow(int index, int n);
    void shrink(int first, int n);
    void dup(const VxArrayList &source);

    VxSlotArray array_;

    friend class VxArrayListIterator;
    friend class VxArrayListConstIterator;
};

/*
 * A list of the caller's pointers. Members as in VxArrayList, without hooks: what the pointers
 * point to is never touched. Pointers may be null.
 */
class VX_API VxPArrayList {
public:
    // REQUIRES: first >= 0, n >= 0, first + n <= length().
    void remove(int first, int n);
    void empty();
    VX_INLINE int length() const { return array_.count; }

    // REQUIRES: 0 <= one, other < length().
    VX_INLINE void swap(int one, int other) {
        assert(array_.has(one) && array_.has(other));
        void *kept = array_.slots[one];
        array_.slots[one] = array_.slots[other];
        array_.slots[other] = kept;
    }

protected:
    VxPArrayList();
    VxPArrayList(const VxPArrayList &source);
    virtual ~VxPArrayList();
    VxPArrayList &operator=(const VxPArrayList &source);

    // The slot itself: a store through the reference replaces the element.
    // REQUIRES: 0 <= index < length().
    VX_INLINE void *&get(int index) {
        assert(array_.has(index));
        return array_.slots[index];
    }
    VX_INLINE void *get(int index) const {
        assert(array_.has(index));
        return array_.slots[index];
    }
    VX_INLINE void set(int index, void *element) {
        assert(array_.has(index));
        array_.slots[index] = element;
    }

    // REQUIRES: 0 <= index <= length(); `list` is another list.
    void insert(int index, void *element);
    void insert(int index, const VxPArrayList &list);

    VX_INLINE void append(void *element) {
        if (array_.count < array_.capacity) {
            array_.slots[array_.count++] = element;
        } else {
            insert(array_.count, element);
        }
    }
    void append(const VxPArrayList &list);

private:
    void grow(int index, int n);
    void shrink(int first, int n);

    VxSlotArray array_;

    friend class VxPArrayListIterator;
    friend class VxPArrayListConstIterator;
    friend class VxPBucketList;
};

/*
 * A list of the caller's pointers to const. Members as in VxPArrayList.
 */
class VX_API VxCPArrayList {
public:
    // REQUIRES: first >= 0, n >= 0, first + n <= length().
    void remove(int first, int n);
    void empty();
    VX_INLINE int length() const { return array_.count; }

    // REQUIRES: 0 <= one, other < length().
    VX_INLINE void swap(int one, int other) {
        assert(array_.has(one) && array_.has(other));
        void *kept = array_.slots[one];
        array_.slots[one] = array_.slots[other];
        array_.slots[other] = kept;
    }

protected:
    VxCPArrayList();
    VxCPArrayList(const VxCPArrayList &source);
    virtual ~VxCPArrayList();
    VxCPArrayList &operator=(const VxCPArrayList &source);

    // REQUIRES: 0 <= index < length().
    VX_INLINE const void *&get(int index) {
        assert(array_.has(index));
        return const_cast<const void *&>(array_.slots[index]);
    }
    VX_INLINE const void *get(int index) const {
        assert(array_.has(index));
        return array_.slots[index];
    }
    VX_INLINE void set(int index, const void *element) {
        assert(array_.has(index));
        array_.slots[index] = const_cast<void *>(element);
    }

    // REQUIRES: 0 <= index <= length(); `list` is another list.
    void insert(int index, const void *element);
    void insert(int index, const VxCPArrayList &list);

    VX_INLINE void append(const void *element) {
        if (array_.count < array_.capacity) {
            array_.slots[array_.count++] = const_cast<void *>(element);
        } else {
            insert(array_.count, element);
        }
    }
    void append(const VxCPArrayList &list);

private:
    void grow(int index, int n);
    void shrink(int first, int n);

    VxSlotArray array_;

    friend class VxCPArrayListIterator;
    friend class VxCPArrayListConstIterator;
    friend class VxCPBucketList;
};

// What an iterator is made of. Not for callers.
template <typename List>
struct VxListSpot {
    List *list;
    int index;
};

/*
 * Iterators: a pointer to the list and an index, nothing more. The list does not know of them: an
 * insertion or removal shifts what the index means, and an iterator must not outlive its list.
 *
 *     for (it.reset(0); it.isValid();) use(it.postInc());    first to last
 *     for (it.reset(1); it.isValid();) use(it.postDec());    last to first
 *
 * getElem, postInc and postDec do not test the index: ask isValid first. They differ in what
 * they give:
 *
 *     VxArrayListIterator      void *           VxArrayListConstIterator      const void *
 *     VxPArrayListIterator     void *&          VxPArrayListConstIterator     void *
 *     VxCPArrayListIterator    const void *&    VxCPArrayListConstIterator    const void *
 *
 * The references are to the slot at the index before the step.
 */
class VX_API VxArrayListIterator {
public:
    // Stands at index 0, also in an empty list.
    VX_INLINE VxArrayListIterator(VxArrayList &list) : at_{&list, 0} {}
    VxArrayListIterator(const VxArrayListIterator &) = default;
    VX_INLINE ~VxArrayListIterator() {}

    // Both take over list and index.
    VX_INLINE VxArrayListIterator &operator=(const VxArrayListIterator &other) {
        return assign(other);
    }
    VX_INLINE VxArrayListIterator &assign(const VxArrayListIterator &other) {
        at_ = other.at_;
        return *this;
    }

    // Goes to index 0 or, when `fromEnd` is not 0, to the last index, which is -1 in an empty
    // list.
    VX_INLINE void reset(short fromEnd) { at_.index = fromEnd != 0 ? at_.list->length() - 1 : 0; }

    // 1 if the list has an element at the index at this moment, else 0.
    VX_INLINE short isValid() const { return at_.list->array_.has(at_.index) ? 1 : 0; }

    VX_INLINE int getIndex() const { return at_.index; }
    VX_INLINE VxArrayList *getList() { return at_.list; }
    VX_INLINE const VxArrayList *getList() const { return at_.list; }

    // The element at the index; postInc and postDec then move on by one.
    VX_INLINE void *getElem() { return at_.list->get(at_.index); }
    VX_INLINE void *postInc() { return at_.list->get(at_.index++); }
    VX_INLINE void *postDec() { return at_.list->get(at_.index--); }

private:
    VxListSpot<VxArrayList> at_;

    friend class VxArrayListConstIterator;
};

class VX_API VxArrayListConstIterator {
public:
    VX_INLINE VxArrayListConstIterator(const VxArrayList &list) : at_{&list, 0} {}
    VX_INLINE VxArrayListConstIterator(const VxArrayListIterator &other)
        : at_{other.at_.list, other.at_.index} {}
    VxArrayListConstIterator(const VxArrayListConstIterator &) = default;
    VX_INLINE ~VxArrayListConstIterator() {}
    VX_INLINE VxArrayListConstIterator &operator=(const VxArrayListConstIterator &other) {
        return assign(other);
    }
    VX_INLINE VxArrayListConstIterator &assign(const VxArrayListConstIterator &other) {
        at_ = other.at_;
        return *this;
    }
    VX_INLINE VxArrayListConstIterator &assign(const VxArrayListIterator &other) {
        at_ = {other.at_.list, other.at_.index};
        return *this;
    }
    VX_INLINE void reset(short fromEnd) { at_.index = fromEnd != 0 ? at_.list->length() - 1 : 0; }
    VX_INLINE short isValid() const { return at_.list->array_.has(at_.index) ? 1 : 0; }
    VX_INLINE int getIndex() const { return at_.index; }
    VX_INLINE const VxArrayList *getList() const { return at_.list; }
    VX_INLINE const void *getElem() const { return at_.list->get(at_.index); }
    VX_INLINE const void *postInc() { return at_.list->get(at_.index++); }
    VX_INLINE const void *postDec() { return at_.list->get(at_.index--); }

private:
    VxListSpot<const VxArrayList> at_;
};

class VX_API VxPArrayListIterator {
public:
    VX_INLINE VxPArrayListIterator(VxPArrayList &list) : at_{&list, 0} {}
    VxPArrayListIterator(const VxPArrayListIterator &) = default;
    VX_INLINE ~VxPArrayListIterator() {}
    VX_INLINE VxPArrayListIterator &operator=(const VxPArrayListIterator &other) {
        return assign(other);
    }
    VX_INLINE VxPArrayListIterator &assign(const VxPArrayListIterator &other) {
        at_ = other.at_;
        return *this;
    }
    VX_INLINE void reset(short fromEnd) { at_.index = fromEnd != 0 ? at_.list->length() - 1 : 0; }
    VX_INLINE short isValid() const { return at_.list->array_.has(at_.index) ? 1 : 0; }
    VX_INLINE int getIndex() const { return at_.index; }
    VX_INLINE VxPArrayList *getList() { return at_.list; }
    VX_INLINE const VxPArrayList *getList() const { return at_.list; }
    VX_INLINE void *&getElem() { return at_.list->get(at_.index); }
    VX_INLINE void *&postInc() { return at_.list->get(at_.index++); }
    VX_INLINE void *&postDec() { return at_.list->get(at_.index--); }

private:
    VxListSpot<VxPArrayList> at_;

    friend class VxPArrayListConstIterator;
};

class VX_API VxPArrayListConstIterator {
public:
    VX_INLINE VxPArrayListConstIterator(const VxPArrayList &list) : at_{&list, 0} {}
    VX_INLINE VxPArrayListConstIterator(const VxPArrayListIterator &other)
        : at_{other.at_.list, other.at_.index} {}
    VxPArrayListConstIterator(const VxPArrayListConstIterator &) = default;
    VX_INLINE ~VxPArrayListConstIterator() {}
    VX_INLINE VxPArrayListConstIterator &operator=(const VxPArrayListConstIterator &other) {
        return assign(other);
    }
    VX_INLINE VxPArrayListConstIterator &assign(const VxPArrayListConstIterator &other) {
        at_ = other.at_;
        return *this;
    }
    VX_INLINE VxPArrayListConstIterator &assign(const VxPArrayListIterator &other) {
        at_ = {other.at_.list, other.at_.index};
        return *this;
    }
    VX_INLINE void reset(short fromEnd) { at_.index = fromEnd != 0 ? at_.list->length() - 1 : 0; }
    VX_INLINE short isValid() const { return at_.list->array_.has(at_.index) ? 1 : 0; }
    VX_INLINE int getIndex() const { return at_.index; }
    VX_INLINE const VxPArrayList *getList() const { return at_.list; }
    VX_INLINE void *getElem() const { return at_.list->get(at_.index); }
    VX_INLINE void *postInc() { return at_.list->get(at_.index++); }
    VX_INLINE void *postDec() { return at_.list->get(at_.index--); }

private:
    VxListSpot<const VxPArrayList> at_;
};

class VX_API VxCPArrayListIterator {
public:
    VX_INLINE VxCPArrayListIterator(VxCPArrayList &list) : at_{&list, 0} {}
    VxCPArrayListIterator(const VxCPArrayListIterator &) = default;
    VX_INLINE ~VxCPArrayListIterator() {}
    VX_INLINE VxCPArrayListIterator &operator=(const VxCPArrayListIterator &other) {
        return assign(other);
    }
    VX_INLINE VxCPArrayListIterator &assign(const VxCPArrayListIterator &other) {
        at_ = other.at_;
        return *this;
    }
    VX_INLINE void reset(short fromEnd) { at_.index = fromEnd != 0 ? at_.list->length() - 1 : 0; }
    VX_INLINE short isValid() const { return at_.list->array_.has(at_.index) ? 1 : 0; }
    VX_INLINE int getIndex() const { return at_.index; }
    VX_INLINE VxCPArrayList *getList() { return at_.list; }
    VX_INLINE const VxCPArrayList *getList() const { return at_.list; }
    VX_INLINE const void *&getElem() { return at_.list->get(at_.index); }
    VX_INLINE const void *&postInc() { return at_.list->get(at_.index++); }
    VX_INLINE const void *&postDec() { return at_.list->get(at_.index--); }

private:
    VxListSpot<VxCPArrayList> at_;

    friend class VxCPArrayListConstIterator;
};

class VX_API VxCPArrayListConstIterator {
public:
    VX_INLINE VxCPArrayListConstIterator(const VxCPArrayList &list) : at_{&list, 0} {}
    VX_INLINE VxCPArrayListConstIterator(const VxCPArrayListIterator &other)
        : at_{other.at_.list, other.at_.index} {}
    VxCPArrayListConstIterator(const VxCPArrayListConstIterator &) = default;
    VX_INLINE ~VxCPArrayListConstIterator() {}
    VX_INLINE VxCPArrayListConstIterator &operator=(const VxCPArrayListConstIterator &other) {
        return assign(other);
    }
    VX_INLINE VxCPArrayListConstIterator &assign(const VxCPArrayListConstIterator &other) {
        at_ = other.at_;
        return *this;
    }
    VX_INLINE VxCPArrayListConstIterator &assign(const VxCPArrayListIterator &other) {
        at_ = {other.at_.list, other.at_.index};
        return *this;
    }
    VX_INLINE void reset(short fromEnd) { at_.index = fromEnd != 0 ? at_.list->length() - 1 : 0; }
    VX_INLINE short isValid() const { return at_.list->array_.has(at_.index) ? 1 : 0; }
    VX_INLINE int getIndex() const { return at_.index; }
    VX_INLINE const VxCPArrayList *getList() const { return at_.list; }
    VX_INLINE const void *getElem() const { return at_.list->get(at_.index); }
    VX_INLINE const void *postInc() { return at_.list->get(at_.index++); }
    VX_INLINE const void *postDec() { return at_.list->get(at_.index--); }

private:
    VxListSpot<const VxCPArrayList> at_;
};

#endif
