/*
 * vxtyped.h: typed lists and sets, ready to use. Header only, on top of vxarraylist.h and
 * vxhashtable.h, whose rules on order, growth, load and memory apply here too.
 *
 *     VxOwningList<T>                 copies of T, made by its copy constructor and destroyed by
 *     VxOwningTable<T, Hash, Equal>   delete
 *     VxPointerList<T>                T *, the caller's pointers; T may be const
 *     VxPointerTable<T>
 *
 * Examples, with a class Widget:
 *
 *     VxOwningList<Widget> widgets;
 *     if (!widgets.append(Widget("knob"))) ...;   // out of memory
 *     for (Widget &widget : widgets) widget.paint();
 *
 *     VxPointerTable<const Widget> seen(vxNumBuckets(500));
 *     if (seen.insert(&widget)) ...;   // true the first time
 *
 * Rules for all four:
 *
 *  - remove, empty, length, swap and the statistics are those of the base. So empty() removes all
 *    elements; to ask whether there are any, compare length() or getNumElements() with 0, or call
 *    std::ranges::empty.
 *  - begin and end serve range-for and the algorithms. The iterators of lists are random access,
 *    those of tables forward. They become invalid like the iterators of the base.
 *  - The owning classes destroy their elements in their destructor. A class derived from one of
 *    the four cannot replace the hooks.
 *  - An element may fail to be copied: memory runs out, or the copy constructor of T throws. Then
 *    the call returns false and nothing has changed; a copy of an entire list or table is empty.
 *    The same happens if T is itself a list or table and its copy lacks elements. A class T with
 *    such a member should compare the lengths in its copy constructor, and throw.
 *  - No exception leaves these classes. `Hash` and `Equal` of a table must not throw, nor may
 *    their copy constructors.
 *  - Assignment of a table takes the number of buckets of its source; copyObjects keeps its own.
 *  - A move takes the storage in constant time, copies no element, and leaves an empty source that
 *    can be used again. A table that was moved from has the former buckets of the target, or 83
 *    after a move constructor.
 *  - Copying a const list or table writes nothing to it, so several threads may copy it at once.
 */
#ifndef VXTYPED_H
#define VXTYPED_H

#include "vxtyped_detail.h"

#include <functional>

/*
 * A number of buckets for an expected number of elements: the first prime that is at least that
 * number, and at least 83. The load is then at most 1, and hashes with a common divisor spread.
 * Time grows with the load: at 2 a look-up takes perhaps 1.5 times as long, at 10 several times. If
 * a table receives far more elements than expected, copy it by copyObjects into a larger one.
 * Tables of addresses cannot use more than 4096 buckets.
 */
constexpr int vxNumBuckets(int elements) {
    constexpr int kMin = 83;
    constexpr int kMax = 2147483647;  // a prime
    if (elements <= kMin) return kMin;
    const auto isPrime = [](int odd) {
        for (int divisor = 3; divisor <= odd / divisor; divisor += 2) {
            if (odd % divisor == 0) return false;
        }
        return true;
    };
    int number = elements | 1;
    while (number < kMax && !isPrime(number))
        number += 2;
    return number;
}

/*
 * A list of copies of T.
 */
template <typename T>
class VxOwningList : public vx::detail::Owning<VxArrayList, T> {
    using Base = vx::detail::Owning<VxArrayList, T>;

public:
    using value_type = T;
    using reference = T &;
    using const_reference = const T &;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using iterator = vx::detail::ListIterator<VxOwningList, reference>;
    using const_iterator = vx::detail::ListIterator<const VxOwningList, const_reference>;

    // REQUIRES: 0 <= index < length().
    T &operator[](int index) { return *static_cast<T *>(this->get(index)); }
    const T &operator[](int index) const { return *static_cast<const T *>(this->get(index)); }

    // Replaces an element by a copy of another, which may be in this list.
    // REQUIRES: 0 <= index < length().
    [[nodiscard]] bool set(int index, const T &element) {
        T *copy = vx::detail::newCopy(element);
        if (copy == nullptr) return false;
        this->destroyElement(std::exchange(slots().at(index), copy));
        return true;
    }

    // Inserts copies before the index. REQUIRES: 0 <= index <= length(); `list` is another list.
    [[nodiscard]] bool insert(int index, const T &element) {
        const int before = this->length();
        Base::insert(index, std::addressof(element));
        return rollBackIfIncomplete(index, before, 1);
    }
    [[nodiscard]] bool insert(int index, const VxOwningList &list) {
        const int before = this->length();
        Base::insert(index, list);
        return rollBackIfIncomplete(index, before, list.length());
    }
    [[nodiscard]] bool append(const T &element) { return insert(this->length(), element); }
    [[nodiscard]] bool append(const VxOwningList &list) { return insert(this->length(), list); }

    iterator begin() { return {this, 0}; }
    iterator end() { return {this, this->length()}; }
    const_iterator begin() const { return {this, 0}; }
    const_iterator end() const { return {this, this->length()}; }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }

private:
    vx::detail::SlotArray &slots() { return vx::detail::Access::array(*this); }

    // Takes the insertion of n elements back unless all of them were copied.
    bool rollBackIfIncomplete(int index, int before, int n) {
        if (this->length() != before + n) return false;
        void **const first = slots().slots + index;
        if (std::find(first, first + n, nullptr) == first + n) return true;
        this->remove(index, n);
        return false;
    }
};

/*
 * A list of pointers that belong to the caller. Null is an element like any other.
 */
template <typename T>
class VxPointerList : public vx::detail::PointerListBase<T> {
    using Base = vx::detail::PointerListBase<T>;

public:
    using value_type = T *;
    using reference = T *&;
    using const_reference = T *;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using iterator = vx::detail::ListIterator<VxPointerList, reference>;
    using const_iterator = vx::detail::ListIterator<const VxPointerList, const_reference>;

    // REQUIRES: 0 <= index < length().
    T *operator[](int index) const { return static_cast<T *>(Base::get(index)); }
    // The slot itself. (Compilers let a pointer to void alias any other.)
    T *&operator[](int index) { return reinterpret_cast<T *&>(Base::get(index)); }
    void set(int index, T *element) { Base::set(index, element); }

    // Insert before the index. False out of memory; nothing has changed then.
    // REQUIRES: 0 <= index <= length(); `list` is another list.
    [[nodiscard]] bool insert(int index, T *element) {
        const int before = this->length();
        Base::insert(index, element);
        return this->length() > before;
    }
    [[nodiscard]] bool insert(int index, const VxPointerList &list) {
        const int before = this->length();
        Base::insert(index, list);
        return this->length() == before + list.length();
    }
    [[nodiscard]] bool append(T *element) {
        const int before = this->length();
        Base::append(element);
        return this->length() > before;
    }
    [[nodiscard]] bool append(const VxPointerList &list) { return insert(this->length(), list); }

    iterator begin() { return {this, 0}; }
    iterator end() { return {this, this->length()}; }
    const_iterator begin() const { return {this, 0}; }
    const_iterator end() const { return {this, this->length()}; }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }
};

/*
 * A set of copies of T. `Hash` returns an integer for a T, of which all bits count. `Equal` says
 * whether two are the same element. Equal elements must have equal hashes.
 */
template <typename T, typename Hash = std::hash<T>, typename Equal = std::equal_to<T>>
class VxOwningTable : public vx::detail::Owning<VxHashTable, T> {
    using Base = vx::detail::Owning<VxHashTable, T>;

public:
    using value_type = T;
    using reference = const T &;
    using const_reference = const T &;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using const_iterator = vx::detail::TableIterator<VxOwningTable, const T &>;
    using iterator = const_iterator;

    // The number of buckets; 0 gives 83.
    explicit VxOwningTable(int numBuckets = 0, Hash hash = Hash(), Equal equal = Equal())
        : Base(numBuckets), functors_(hash, equal) {}

    // Keeps the number of buckets.
    VxOwningTable &copyObjects(const VxOwningTable &source) {
        Base::copyObjects(source);
        functors_ = source.functors_;
        this->discardIfIncomplete(source);
        return *this;
    }

    // True if a copy was added. False if an equal element is present or no copy could be made;
    // `has` shows which.
    bool insert(const T &element) { return Base::insert(std::addressof(element)) != 0; }

    // True if an equal element was present and is now destroyed.
    bool remove(const T &element) { return Base::remove(std::addressof(element)) != 0; }

    // The stored element that equals the given one, or null. The table keeps ownership.
    const T *has(const T &element) const {
        return static_cast<const T *>(Base::has(std::addressof(element)));
    }

    const_iterator begin() const { return {this, 0}; }
    const_iterator end() const { return {this, this->getNumBuckets()}; }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }

protected:
    unsigned int hashElement(const void *given) final {
        const auto hash =
            static_cast<unsigned long long>(functors_.hash(*static_cast<const T *>(given)));
        return static_cast<unsigned int>(hash ^ hash >> 32);
    }
    short equalElements(const void *given, const void *stored) final {
        return functors_.equal(*static_cast<const T *>(given), *static_cast<const T *>(stored)) ? 1
                                                                                                : 0;
    }

private:
    // Copies of a table take the stored hashes, and so the functors that made them. A move copies
    // the functors, too: the source stays usable.
    struct Functors {
        Functors(const Hash &forHash, const Equal &forEqual) : hash(forHash), equal(forEqual) {}
        Functors(const Functors &) = default;
        Functors &operator=(const Functors &) = default;

        [[no_unique_address]] Hash hash;
        [[no_unique_address]] Equal equal;
    };

    [[no_unique_address]] Functors functors_;
};

/*
 * A set of pointers that belong to the caller, compared as addresses. Null is an element like any
 * other.
 */
template <typename T>
class VxPointerTable : public vx::detail::PointerTableBase<T> {
    using Base = vx::detail::PointerTableBase<T>;

public:
    using value_type = T *;
    using reference = T *;
    using const_reference = T *;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using const_iterator = vx::detail::TableIterator<VxPointerTable, T *>;
    using iterator = const_iterator;

    // The number of buckets; 0 gives 83.
    explicit VxPointerTable(int numBuckets = 0) : Base(numBuckets) {}
    // Keeps the number of buckets.
    VxPointerTable &copyObjects(const VxPointerTable &source) {
        Base::copyObjects(source);
        return *this;
    }

    // True if the pointer was added. False if it is present already or memory ran out; `has`
    // shows which.
    bool insert(T *element) { return Base::insert(element) != 0; }

    // True if the pointer was present and is now removed.
    bool remove(const T *element) { return Base::remove(element) != 0; }

    // Is the pointer present? For null this walks the table: the base returns the pointer, so it
    // cannot distinguish a stored null from an absent one.
    bool has(const T *element) const {
        if (element != nullptr) return Base::has(element) != nullptr;
        return std::find(begin(), end(), element) != end();
    }

    const_iterator begin() const { return {this, 0}; }
    const_iterator end() const { return {this, this->getNumBuckets()}; }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }
};

#endif
