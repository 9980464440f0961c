/*
 * vxarraylist.h: growable lists of pointers, the bases of typed lists.
 *
 *     class            a slot holds        who owns the elements
 *     VxArrayList      void *              the list: the hook copyElement makes each one, and
 *                                          destroyElement releases it
 *     VxPArrayList     void *              the caller: the list stores the pointer as it is
 *     VxCPArrayList    const void *        the caller: likewise
 *
 * These classes are bases only. A typed class derives from one of them and wraps its protected
 * members in casts; remove, empty, length and swap need no wrapper. vxtyped.h has such classes
 * ready. One written by hand looks like this:
 *
 *     #include <new>
 *
 *     class WidgetList : public VxArrayList {
 *     public:
 *         WidgetList() = default;
 *         WidgetList(const WidgetList &) = default;            // calls copyElement of the source
 *         WidgetList &operator=(const WidgetList &) = default;
 *         ~WidgetList() override { empty(); }                  // see the destructor below
 *         void append(const Widget &w) { VxArrayList::append(&w); }
 *         // Null if there was no memory for the element.
 *         Widget *get(int i) { return static_cast<Widget *>(VxArrayList::get(i)); }
 *     protected:
 *         void *copyElement(const void *w) override {
 *             if (w == nullptr) return nullptr;                // from a list with such an element
 *             return new (std::nothrow) Widget(*static_cast<const Widget *>(w));
 *         }
 *         void destroyElement(void *w) override { delete static_cast<Widget *>(w); }
 *     };
 *
 * Rules for all three:
 *
 *  - Indices count from 0 and are not checked in release builds; the behaviour outside the limits
 *    is undefined. A debug build asserts what REQUIRES states at the members. Members that are
 *    not inline assert only in a debug build of the library, whatever the build of the caller.
 *  - Growth. The capacity, in slots, is 0 or a power of two. An insertion doubles it until the new
 *    length fits: 0, 1, 2, 4, 8, ... A removal that leaves the list less than a quarter full
 *    halves it at least once, to no less than 2, until the list is at least a quarter full. A
 *    capacity of 1 or 2 stays. Only `empty` frees all slots. A copy has the capacity of its
 *    source.
 *  - `get` of the pointer lists and of their iterators returns a reference to a slot. It is valid
 *    until the next insertion, removal, `empty` or assignment.
 *  - Out of memory, an insertion changes nothing and runs no hook; compare length() before and
 *    after. A removal succeeds and keeps the old slots. A copy or assignment leaves an empty
 *    list. A list that would exceed 2^30 slots fails in the same way.
 *  - Nothing is locked. Use a list and its iterators on one thread at a time.
 */
#ifndef VXARRAYLIST_H
#define VXARRAYLIST_H

#include "vxcontainers_detail.h"
#include "vxexports.h"

/*
 * A list that owns its elements.
 */
class VX_API VxArrayList {
public:
    // Removes the n elements that start at index `first`, and moves later ones down.
    // destroyElement runs on them first, in ascending order. n of 0 does nothing, whatever `first`
    // is. REQUIRES: first >= 0, n >= 0, first + n <= length().
    void remove(int first, int n);

    // Runs destroyElement on all elements in ascending order, then frees the slots.
    void empty();

    // The number of elements.
    VX_INLINE int length() const { return array_.count; }

    // Exchanges two slots; no hook runs. Equal indices do nothing, whatever they are.
    // REQUIRES: one == other, or both at least 0 and below length().
    VX_INLINE void swap(int one, int other) { array_.swap(one, other); }

protected:
    VxArrayList();

    // Takes the length and capacity of the source. Then runs copyElement of the *source* on each
    // of its elements, in ascending order: the hooks of the new object do not exist yet.
    VxArrayList(const VxArrayList &source);

    // Frees the slots and runs no hook, because the derived class no longer exists. Its own
    // destructor must call empty(), or the elements leak.
    virtual ~VxArrayList();

    // The two hooks. Neither may throw, nor change this list.
    //
    // copyElement: returns the value to store. `element` is the argument of insert, append or set.
    // When the elements of a list are copied or inserted, it is a value stored in that list. Any
    // result is stored, null as well. During an insertion length() already counts the new
    // element, whose slot is not set yet.
    virtual void *copyElement(const void *element) = 0;

    // destroyElement: releases a value from copyElement; runs once for each.
    virtual void destroyElement(void *stored) = 0;

    // Self-assignment does nothing. Otherwise empty(), then a copy as in the copy constructor.
    VxArrayList &operator=(const VxArrayList &source);

    // The stored value at an index. REQUIRES: 0 <= index < length().
    VX_INLINE void *get(int index) { return array_.at(index); }
    VX_INLINE const void *get(int index) const { return array_.at(index); }

    // Replaces an element. destroyElement runs on the stored value before copyElement runs on
    // `element`, so `element` must not be that value. REQUIRES: 0 <= index < length().
    void set(int index, const void *element);

    // Inserts before the index a copy of one element, or copies of every element of another list in
    // order. REQUIRES: 0 <= index <= length(); `list` is another list.
    void insert(int index, const void *element);
    void insert(int index, const VxArrayList &list);

    // The same after the last element.
    void append(const void *element);
    void append(const VxArrayList &list);

private:
    void grow(int index, int n);
    void shrink(int first, int n);
    void dup(const VxArrayList &source);

    vx::detail::SlotArray array_;

    friend struct vx::detail::Access;
};

/*
 * A list of the caller's pointers. Members are as in VxArrayList, without hooks: the list never
 * touches what the pointers point to. Pointers may be null.
 */
class VX_API VxPArrayList {
public:
    // REQUIRES: first >= 0, n >= 0, first + n <= length().
    void remove(int first, int n);
    void empty();
    VX_INLINE int length() const { return array_.count; }

    // REQUIRES: one == other, or both at least 0 and below length().
    VX_INLINE void swap(int one, int other) { array_.swap(one, other); }

protected:
    VxPArrayList();
    VxPArrayList(const VxPArrayList &source);
    virtual ~VxPArrayList();
    VxPArrayList &operator=(const VxPArrayList &source);

    // The slot itself: assigning to the reference replaces the element.
    // REQUIRES: 0 <= index < length().
    VX_INLINE void *&get(int index) { return array_.at(index); }
    VX_INLINE void *get(int index) const { return array_.at(index); }
    VX_INLINE void set(int index, void *element) { array_.at(index) = element; }

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

    vx::detail::SlotArray array_;

    friend struct vx::detail::Access;
};

/*
 * A list of the caller's pointers to const. Members are as in VxPArrayList.
 */
class VX_API VxCPArrayList {
public:
    // REQUIRES: first >= 0, n >= 0, first + n <= length().
    void remove(int first, int n);
    void empty();
    VX_INLINE int length() const { return array_.count; }

    // REQUIRES: one == other, or both at least 0 and below length().
    VX_INLINE void swap(int one, int other) { array_.swap(one, other); }

protected:
    VxCPArrayList();
    VxCPArrayList(const VxCPArrayList &source);
    virtual ~VxCPArrayList();
    VxCPArrayList &operator=(const VxCPArrayList &source);

    // REQUIRES: 0 <= index < length().
    VX_INLINE const void *&get(int index) { return const_cast<const void *&>(array_.at(index)); }
    VX_INLINE const void *get(int index) const { return array_.at(index); }
    VX_INLINE void set(int index, const void *element) {
        array_.at(index) = const_cast<void *>(element);
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

    vx::detail::SlotArray array_;

    friend struct vx::detail::Access;
};

/*
 * Iterators: a pointer to the list and an index. The list does not know its iterators: after an
 * insertion or removal the same index may denote another element. Do not use an iterator after
 * its list is destroyed.
 *
 *     for (it.reset(0); it.isValid();) use(it.postInc());    first to last
 *     for (it.reset(1); it.isValid();) use(it.postDec());    last to first
 *
 * getElem, postInc and postDec do not check the index in release builds: call isValid first. They
 * return:
 *
 *     VxArrayListIterator      void *           VxArrayListConstIterator      const void *
 *     VxPArrayListIterator     void *&          VxPArrayListConstIterator     void *
 *     VxCPArrayListIterator    const void *&    VxCPArrayListConstIterator    const void *
 *
 * A reference is to the slot of the index before the step.
 */
class VX_API VxArrayListIterator {
public:
    // At index 0, even if the list is empty.
    VX_INLINE VxArrayListIterator(VxArrayList &list) : at_{&list} {}
    VxArrayListIterator(const VxArrayListIterator &) = default;
    VX_INLINE ~VxArrayListIterator() {}

    // Both copy the list and the index.
    VX_INLINE VxArrayListIterator &operator=(const VxArrayListIterator &other) {
        return assign(other);
    }
    VX_INLINE VxArrayListIterator &assign(const VxArrayListIterator &other) {
        at_ = other.at_;
        return *this;
    }

    // Moves to index 0 if `fromEnd` is 0, else to the last index, which is -1 in an empty list.
    VX_INLINE void reset(short fromEnd) { at_.reset(fromEnd); }

    // 1 if the list now has an element at the index, else 0.
    VX_INLINE short isValid() const { return at_.isValid(); }

    VX_INLINE int getIndex() const { return at_.index; }
    VX_INLINE VxArrayList *getList() { return at_.list; }
    VX_INLINE const VxArrayList *getList() const { return at_.list; }

    // The element at the index. postInc then adds 1 to the index, and postDec subtracts 1.
    VX_INLINE void *getElem() { return at_.element(); }
    VX_INLINE void *postInc() { return at_.postInc(); }
    VX_INLINE void *postDec() { return at_.postDec(); }

private:
    vx::detail::ListCursor<VxArrayList> at_;

    friend class VxArrayListConstIterator;
};

class VX_API VxArrayListConstIterator {
public:
    VX_INLINE VxArrayListConstIterator(const VxArrayList &list) : at_{&list} {}
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
        return assign(VxArrayListConstIterator(other));
    }
    VX_INLINE void reset(short fromEnd) { at_.reset(fromEnd); }
    VX_INLINE short isValid() const { return at_.isValid(); }
    VX_INLINE int getIndex() const { return at_.index; }
    VX_INLINE const VxArrayList *getList() const { return at_.list; }
    VX_INLINE const void *getElem() const { return at_.element(); }
    VX_INLINE const void *postInc() { return at_.postInc(); }
    VX_INLINE const void *postDec() { return at_.postDec(); }

private:
    vx::detail::ListCursor<const VxArrayList> at_;
};

class VX_API VxPArrayListIterator {
public:
    VX_INLINE VxPArrayListIterator(VxPArrayList &list) : at_{&list} {}
    VxPArrayListIterator(const VxPArrayListIterator &) = default;
    VX_INLINE ~VxPArrayListIterator() {}
    VX_INLINE VxPArrayListIterator &operator=(const VxPArrayListIterator &other) {
        return assign(other);
    }
    VX_INLINE VxPArrayListIterator &assign(const VxPArrayListIterator &other) {
        at_ = other.at_;
        return *this;
    }
    VX_INLINE void reset(short fromEnd) { at_.reset(fromEnd); }
    VX_INLINE short isValid() const { return at_.isValid(); }
    VX_INLINE int getIndex() const { return at_.index; }
    VX_INLINE VxPArrayList *getList() { return at_.list; }
    VX_INLINE const VxPArrayList *getList() const { return at_.list; }
    VX_INLINE void *&getElem() { return at_.element(); }
    VX_INLINE void *&postInc() { return at_.postInc(); }
    VX_INLINE void *&postDec() { return at_.postDec(); }

private:
    vx::detail::ListCursor<VxPArrayList> at_;

    friend class VxPArrayListConstIterator;
};

class VX_API VxPArrayListConstIterator {
public:
    VX_INLINE VxPArrayListConstIterator(const VxPArrayList &list) : at_{&list} {}
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
        return assign(VxPArrayListConstIterator(other));
    }
    VX_INLINE void reset(short fromEnd) { at_.reset(fromEnd); }
    VX_INLINE short isValid() const { return at_.isValid(); }
    VX_INLINE int getIndex() const { return at_.index; }
    VX_INLINE const VxPArrayList *getList() const { return at_.list; }
    VX_INLINE void *getElem() const { return at_.element(); }
    VX_INLINE void *postInc() { return at_.postInc(); }
    VX_INLINE void *postDec() { return at_.postDec(); }

private:
    vx::detail::ListCursor<const VxPArrayList> at_;
};

class VX_API VxCPArrayListIterator {
public:
    VX_INLINE VxCPArrayListIterator(VxCPArrayList &list) : at_{&list} {}
    VxCPArrayListIterator(const VxCPArrayListIterator &) = default;
    VX_INLINE ~VxCPArrayListIterator() {}
    VX_INLINE VxCPArrayListIterator &operator=(const VxCPArrayListIterator &other) {
        return assign(other);
    }
    VX_INLINE VxCPArrayListIterator &assign(const VxCPArrayListIterator &other) {
        at_ = other.at_;
        return *this;
    }
    VX_INLINE void reset(short fromEnd) { at_.reset(fromEnd); }
    VX_INLINE short isValid() const { return at_.isValid(); }
    VX_INLINE int getIndex() const { return at_.index; }
    VX_INLINE VxCPArrayList *getList() { return at_.list; }
    VX_INLINE const VxCPArrayList *getList() const { return at_.list; }
    VX_INLINE const void *&getElem() { return const_cast<const void *&>(at_.element()); }
    VX_INLINE const void *&postInc() { return const_cast<const void *&>(at_.postInc()); }
    VX_INLINE const void *&postDec() { return const_cast<const void *&>(at_.postDec()); }

private:
    vx::detail::ListCursor<VxCPArrayList> at_;

    friend class VxCPArrayListConstIterator;
};

class VX_API VxCPArrayListConstIterator {
public:
    VX_INLINE VxCPArrayListConstIterator(const VxCPArrayList &list) : at_{&list} {}
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
        return assign(VxCPArrayListConstIterator(other));
    }
    VX_INLINE void reset(short fromEnd) { at_.reset(fromEnd); }
    VX_INLINE short isValid() const { return at_.isValid(); }
    VX_INLINE int getIndex() const { return at_.index; }
    VX_INLINE const VxCPArrayList *getList() const { return at_.list; }
    VX_INLINE const void *getElem() const { return at_.element(); }
    VX_INLINE const void *postInc() { return at_.postInc(); }
    VX_INLINE const void *postDec() { return at_.postDec(); }

private:
    vx::detail::ListCursor<const VxCPArrayList> at_;
};

#endif
