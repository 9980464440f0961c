/*
 * vxtyped.h: typed lists and tables, ready to use. Header only, over the bases of vxarraylist.h
 * and vxhashtable.h, whose rules on order, growth, load and memory hold here too.
 *
 *     VxOwningList<T>                 copies of T      made by T's copy constructor, ended by
 *     VxOwningTable<T, Hash, Equal>   copies of T      delete
 *     VxPointerList<T>                T *              the caller's pointers; T may be const
 *     VxPointerTable<T>               T *              likewise
 *
 *     VxOwningList<Widget> widgets;
 *     widgets.append(Widget("knob"));
 *     for (Widget &widget : widgets) widget.paint();
 *
 *     VxPointerTable<Widget const> seen(vxNumBuckets(500));
 *     if (seen.insert(&widget)) ...;   // true the first time
 *
 * What holds for all four:
 *
 *  - remove, empty, length, swap and the statistics are those of the base.
 *  - begin and end serve range-for and the algorithms. Those of lists give random access, those
 *    of tables go forward. They go stale as the iterators of the base do.
 *  - The owning ones end their elements in their destructor. When an element cannot be copied,
 *    for want of memory or because T's copy constructor throws, the call answers false and
 *    nothing has changed; a copy of a whole list or table is then empty. No exception comes
 *    out: `Hash` and `Equal` of a table must not throw.
 */
#ifndef VXTYPED_H
#define VXTYPED_H

#include "vxarraylist.h"
#include "vxhashtable.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <new>
#include <optional>
#include <type_traits>

/*
 * A good number of buckets for an expected number of elements: the first prime that is not below
 * it, so that the load stays at or below 1 and hashes with a common divisor spread. 83 at the
 * lowest. Time grows with the load: at 2 a look-up takes perhaps half as long again, at 10 several
 * times as long. A table that came to hold far more than expected is copied by copyObjects into
 * one of the right size. For tables of addresses there is no use in more than 4096 buckets.
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

// A place in a list: the list and an index. `Reference` is what the list's operator[] gives.
template <typename List, typename Reference>
class VxListPlace {
public:
    using iterator_concept = std::random_access_iterator_tag;
    using iterator_category =
        std::conditional_t<std::is_reference_v<Reference>, std::random_access_iterator_tag,
                           std::input_iterator_tag>;
    using value_type = std::remove_cvref_t<Reference>;
    using difference_type = std::ptrdiff_t;
    using reference = Reference;
    using pointer = std::add_pointer_t<Reference>;

    VxListPlace() = default;
    VxListPlace(List *list, int index) : list_(list), index_(index) {}

    Reference operator*() const { return (*list_)[index_]; }
    Reference operator[](difference_type n) const { return *(*this + n); }
    pointer operator->() const requires std::is_reference_v<Reference> { return &**this; }

    VxListPlace &operator+=(difference_type n) {
        index_ += static_cast<int>(n);
        return *this;
    }
    VxListPlace &operator-=(difference_type n) { return *this += -n; }
    VxListPlace &operator++() { return *this += 1; }
    VxListPlace &operator--() { return *this -= 1; }
    VxListPlace operator++(int) {
        VxListPlace before = *this;
        ++*this;
        return before;
    }
    VxListPlace operator--(int) {
        VxListPlace before = *this;
        --*this;
        return before;
    }

    friend VxListPlace operator+(VxListPlace place, difference_type n) { return place += n; }
    friend VxListPlace operator+(difference_type n, VxListPlace place) { return place += n; }
    friend VxListPlace operator-(VxListPlace place, difference_type n) { return place -= n; }
    friend difference_type operator-(const VxListPlace &one, const VxListPlace &other) {
        return one.index_ - other.index_;
    }
    friend bool operator==(const VxListPlace &one, const VxListPlace &other) {
        return one.index_ == other.index_;
    }
    friend auto operator<=>(const VxListPlace &one, const VxListPlace &other) {
        return one.index_ <=> other.index_;
    }

private:
    List *list_ = nullptr;
    int index_ = 0;
};

// A place in a table, none at the end. `Iterator` is the const iterator of the table's base.
template <typename Iterator, typename Reference>
class VxTablePlace {
public:
    using iterator_concept = std::forward_iterator_tag;
    using iterator_category =
        std::conditional_t<std::is_reference_v<Reference>, std::forward_iterator_tag,
                           std::input_iterator_tag>;
    using value_type = std::remove_cvref_t<Reference>;
    using difference_type = std::ptrdiff_t;
    using reference = Reference;
    using pointer = std::add_pointer_t<Reference>;

    VxTablePlace() = default;
    explicit VxTablePlace(const Iterator &at) : at_(at) { leaveAtEnd(); }

    Reference operator*() const {
        if constexpr (std::is_reference_v<Reference>) {
            return *static_cast<pointer>(at_->getElem());
        } else {
            return static_cast<Reference>(at_->getElem());
        }
    }
    pointer operator->() const requires std::is_reference_v<Reference> { return &**this; }
    VxTablePlace &operator++() {
        at_->postInc();
        leaveAtEnd();
        return *this;
    }
    VxTablePlace operator++(int) {
        VxTablePlace before = *this;
        ++*this;
        return before;
    }
    // The elements of a table all differ.
    friend bool operator==(const VxTablePlace &one, const VxTablePlace &other) {
        if (!one.at_ || !other.at_) return !one.at_ && !other.at_;
        return one.at_->getElem() == other.at_->getElem();
    }

private:
    void leaveAtEnd() {
        if (at_->isValid() == 0) at_.reset();
    }

    std::optional<Iterator> at_;
};

/*
 * A list of copies of T.
 */
template <typename T>
class VxOwningList : public VxArrayList {
public:
    using iterator = VxListPlace<VxOwningList, T &>;
    using const_iterator = VxListPlace<const VxOwningList, const T &>;

    VxOwningList() = default;
    VxOwningList(const VxOwningList &source) : VxArrayList(unfailed(source)) { takeWhole(source); }
    VxOwningList &operator=(const VxOwningList &source) {
        if (this != &source) {
            VxArrayList::operator=(unfailed(source));
            takeWhole(source);
        }
        return *this;
    }
    ~VxOwningList() override { empty(); }

    // REQUIRES: 0 <= index < length().
    T &operator[](int index) { return *static_cast<T *>(get(index)); }
    const T &operator[](int index) const { return *static_cast<const T *>(get(index)); }

    // Replaces an element by a copy of another, which may be in this list.
    // REQUIRES: 0 <= index < length().
    bool set(int index, const T &element) {
        if (!append(element)) return false;
        const int last = length() - 1;
        swap(index, last);
        remove(last, 1);
        return true;
    }

    // Inserts copies before the index. REQUIRES: 0 <= index <= length(); `list` is another list.
    bool insert(int index, const T &element) {
        const int before = length();
        VxArrayList::insert(index, &element);
        return settle(index, before, 1);
    }
    bool insert(int index, const VxOwningList &list) {
        const int before = length();
        VxArrayList::insert(index, list);
        return settle(index, before, list.length());
    }
    bool append(const T &element) { return insert(length(), element); }
    bool append(const VxOwningList &list) { return insert(length(), list); }

    iterator begin() { return {this, 0}; }
    iterator end() { return {this, length()}; }
    const_iterator begin() const { return {this, 0}; }
    const_iterator end() const { return {this, length()}; }

protected:
    void *copyElement(const void *element) override {
        void *copy = nullptr;
        try {
            copy = new (std::nothrow) T(*static_cast<const T *>(element));
        } catch (...) {
            copy = nullptr;
        }
        if (copy == nullptr) failed_ = true;
        return copy;
    }
    void destroyElement(void *stored) override { delete static_cast<T *>(stored); }

private:
    // Was the insertion of n elements complete; if not, takes it back.
    bool settle(int index, int before, int n) {
        if (length() != before + n) return false;
        if (!failed_) return true;
        failed_ = false;
        remove(index, n);
        return false;
    }
    // A whole copy: it is the source that makes the copies of the elements.
    static const VxOwningList &unfailed(const VxOwningList &source) {
        source.failed_ = false;
        return source;
    }
    void takeWhole(const VxOwningList &source) {
        if (source.failed_) empty();
        source.failed_ = false;
    }

    mutable bool failed_ = false;  // an element could not be copied since this was last looked at
};

/*
 * A list of pointers that belong to the caller. Null is an element like any other.
 */
template <typename T>
class VxPointerList : public std::conditional_t<std::is_const_v<T>, VxCPArrayList, VxPArrayList> {
    using Base = std::conditional_t<std::is_const_v<T>, VxCPArrayList, VxPArrayList>;

public:
    using iterator = VxListPlace<VxPointerList, T *&>;
    using const_iterator = VxListPlace<const VxPointerList, T *>;

    VxPointerList() = default;
    VxPointerList(const VxPointerList &) = default;
    VxPointerList &operator=(const VxPointerList &) = default;
    ~VxPointerList() override = default;

    // REQUIRES: 0 <= index < length().
    T *operator[](int index) const { return static_cast<T *>(Base::get(index)); }
    // The slot itself. (Compilers let a pointer to void alias any other.)
    T *&operator[](int index) { return reinterpret_cast<T *&>(Base::get(index)); }
    void set(int index, T *element) { Base::set(index, element); }

    // Insert before the index. False without memory; nothing has changed then.
    // REQUIRES: 0 <= index <= length(); `list` is another list.
    bool insert(int index, T *element) {
        const int before = this->length();
        Base::insert(index, element);
        return this->length() > before;
    }
    bool insert(int index, const VxPointerList &list) {
        const int before = this->length();
        Base::insert(index, list);
        return this->length() == before + list.length();
    }
    bool append(T *element) {
        const int before = this->length();
        Base::append(element);
        return this->length() > before;
    }
    bool append(const VxPointerList &list) { return insert(this->length(), list); }

    iterator begin() { return {this, 0}; }
    iterator end() { return {this, this->length()}; }
    const_iterator begin() const { return {this, 0}; }
    const_iterator end() const { return {this, this->length()}; }
};

/*
 * A set of copies of T. `Hash` gives an integer for a T, of which all bits count; `Equal` says
 * whether two are the same element. Elements that are equal have equal hashes.
 */
template <typename T, typename Hash = std::hash<T>, typename Equal = std::equal_to<T>>
class VxOwningTable : public VxHashTable {
public:
    using const_iterator = VxTablePlace<VxHashTableConstIterator, const T &>;
    using iterator = const_iterator;

    // The number of buckets; 0 gives 83.
    explicit VxOwningTable(int numBuckets = 0, Hash hash = Hash(), Equal equal = Equal())
        : VxHashTable(numBuckets), hash_(hash), equal_(equal) {}
    VxOwningTable(const VxOwningTable &source)
        : VxHashTable(unfailed(source)), hash_(source.hash_), equal_(source.equal_) {
        takeWhole(source);
    }

    // Takes over the number of buckets as well.
    VxOwningTable &operator=(const VxOwningTable &source) {
        if (this != &source) {
            VxHashTable::operator=(unfailed(source));
            takeFunctions(source);
            takeWhole(source);
        }
        return *this;
    }

    // Keeps the number of buckets.
    VxOwningTable &copyObjects(const VxOwningTable &source) {
        if (this != &source) {
            VxHashTable::copyObjects(unfailed(source));
            takeFunctions(source);
            takeWhole(source);
        }
        return *this;
    }
    ~VxOwningTable() override { empty(); }

    // True if a copy was added; false if an equal element is there or none could be made.
    bool insert(const T &element) {
        const bool added = VxHashTable::insert(&element) != 0;
        failed_ = false;
        return added;
    }

    // True if an equal element was there and is destroyed.
    bool remove(const T &element) { return VxHashTable::remove(&element) != 0; }

    // The stored element that equals the given one, or null. It stays the table's.
    const T *has(const T &element) const {
        return static_cast<const T *>(VxHashTable::has(&element));
    }

    const_iterator begin() const { return const_iterator(VxHashTableConstIterator(*this)); }
    const_iterator end() const { return {}; }

protected:
    unsigned int hashElement(const void *given) override {
        const auto hash = static_cast<unsigned long long>(hash_(*static_cast<const T *>(given)));
        return static_cast<unsigned int>(hash ^ hash >> 32);
    }
    short equalElements(const void *given, const void *stored) override {
        return equal_(*static_cast<const T *>(given), *static_cast<const T *>(stored)) ? 1 : 0;
    }
    void *copyElement(const void *element) override {
        void *copy = nullptr;
        try {
            copy = new (std::nothrow) T(*static_cast<const T *>(element));
        } catch (...) {
            copy = nullptr;
        }
        if (copy == nullptr) failed_ = true;
        return copy;
    }
    void destroyElement(void *stored) override { delete static_cast<T *>(stored); }

private:
    // The hashes of the source come along, and so what made them.
    void takeFunctions(const VxOwningTable &source) {
        hash_ = source.hash_;
        equal_ = source.equal_;
    }
    // A whole copy: it is the source that makes the copies of the elements.
    static const VxOwningTable &unfailed(const VxOwningTable &source) {
        source.failed_ = false;
        return source;
    }
    void takeWhole(const VxOwningTable &source) {
        if (source.failed_) empty();
        source.failed_ = false;
    }

    [[no_unique_address]] Hash hash_;
    [[no_unique_address]] Equal equal_;
    mutable bool failed_ = false;  // an element could not be copied since this was last looked at
};

/*
 * A set of pointers that belong to the caller, compared as addresses. Null is an element like any
 * other.
 */
template <typename T>
class VxPointerTable : public std::conditional_t<std::is_const_v<T>, VxCPHashTable, VxPHashTable> {
    using Base = std::conditional_t<std::is_const_v<T>, VxCPHashTable, VxPHashTable>;
    using Iterator = std::conditional_t<std::is_const_v<T>, VxCPHashTableConstIterator,
                                        VxPHashTableConstIterator>;

public:
    using const_iterator = VxTablePlace<Iterator, T *>;
    using iterator = const_iterator;

    // The number of buckets; 0 gives 83.
    explicit VxPointerTable(int numBuckets = 0) : Base(numBuckets) {}
    VxPointerTable(const VxPointerTable &) = default;
    VxPointerTable &operator=(const VxPointerTable &) = default;
    ~VxPointerTable() override = default;

    // Keeps the number of buckets.
    VxPointerTable &copyObjects(const VxPointerTable &source) {
        Base::copyObjects(source);
        return *this;
    }

    // True if the pointer was added; false if it is there already, or without memory.
    bool insert(T *element) { return Base::insert(element) != 0; }

    // True if the pointer was there and is removed.
    bool remove(const T *element) { return Base::remove(element) != 0; }

    // Is the pointer there. For null this walks the table, since the base, which answers with the
    // pointer, cannot tell a stored null from none.
    bool has(const T *element) const {
        if (element != nullptr) return Base::has(element) != nullptr;
        return std::find(begin(), end(), element) != end();
    }

    const_iterator begin() const { return const_iterator(Iterator(*this)); }
    const_iterator end() const { return {}; }
};

#endif
