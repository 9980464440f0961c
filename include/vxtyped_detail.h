/*
 * vxtyped_detail.h: what the classes of vxtyped.h share. Callers include vxtyped.h.
 */
#ifndef VXTYPED_DETAIL_H
#define VXTYPED_DETAIL_H

#include "vxarraylist.h"
#include "vxhashtable.h"

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <iterator>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace vx::detail {

// An iterator of a list: the list and an index. `Reference` is what operator[] of the list returns.
template <typename List, typename Reference>
class ListIterator {
public:
    using iterator_concept = std::random_access_iterator_tag;
    using iterator_category =
        std::conditional_t<std::is_reference_v<Reference>, std::random_access_iterator_tag,
                           std::input_iterator_tag>;
    using value_type = std::remove_cvref_t<Reference>;
    using difference_type = std::ptrdiff_t;
    using reference = Reference;
    using pointer = std::add_pointer_t<Reference>;

    ListIterator() = default;
    ListIterator(List *list, int index) : list_(list), index_(index) {}
    // A const iterator from an iterator.
    template <typename Other>
    ListIterator(
        const ListIterator<std::remove_const_t<List>, Other> &other) requires std::is_const_v<List>
        : list_(other.list_), index_(other.index_) {}

    Reference operator*() const { return (*list_)[index_]; }
    Reference operator[](difference_type n) const { return *(*this + n); }
    pointer operator->() const requires std::is_reference_v<Reference> {
        return std::addressof(**this);
    }

    ListIterator &operator+=(difference_type n) {
        index_ += static_cast<int>(n);
        return *this;
    }
    ListIterator &operator-=(difference_type n) { return *this += -n; }
    ListIterator &operator++() { return *this += 1; }
    ListIterator &operator--() { return *this -= 1; }
    ListIterator operator++(int) { return {list_, index_++}; }
    ListIterator operator--(int) { return {list_, index_--}; }

    friend ListIterator operator+(ListIterator it, difference_type n) { return it += n; }
    friend ListIterator operator+(difference_type n, ListIterator it) { return it += n; }
    friend ListIterator operator-(ListIterator it, difference_type n) { return it -= n; }
    friend difference_type operator-(const ListIterator &one, const ListIterator &other) {
        return one.index_ - other.index_;
    }
    friend bool operator==(const ListIterator &one, const ListIterator &other) {
        return one.index_ == other.index_;
    }
    friend auto operator<=>(const ListIterator &one, const ListIterator &other) {
        return one.index_ <=> other.index_;
    }

private:
    List *list_ = nullptr;
    int index_ = 0;

    template <typename OtherList, typename OtherReference>
    friend class ListIterator;
};

// An iterator of a table.
template <typename Table, typename Reference>
class TableIterator {
public:
    using iterator_concept = std::forward_iterator_tag;
    using iterator_category =
        std::conditional_t<std::is_reference_v<Reference>, std::forward_iterator_tag,
                           std::input_iterator_tag>;
    using value_type = std::remove_cvref_t<Reference>;
    using difference_type = std::ptrdiff_t;
    using reference = Reference;
    using pointer = std::add_pointer_t<Reference>;

    TableIterator() = default;
    // At the first element from that bucket on.
    TableIterator(const Table *table, int bucket) : at_{table, bucket} { at_.skipEmpty(); }

    Reference operator*() const {
        if constexpr (std::is_reference_v<Reference>) {
            return *static_cast<pointer>(at_.element());
        } else {
            return static_cast<Reference>(at_.element());
        }
    }
    pointer operator->() const requires std::is_reference_v<Reference> {
        return std::addressof(**this);
    }
    TableIterator &operator++() {
        at_.postInc();
        return *this;
    }
    TableIterator operator++(int) {
        TableIterator before = *this;
        ++*this;
        return before;
    }
    friend bool operator==(const TableIterator &one, const TableIterator &other) {
        return one.at_.bucket == other.at_.bucket && one.at_.position == other.at_.position;
    }

private:
    TableCursor<const Table> at_;
};

template <typename T>
concept AnyList = std::derived_from<T, VxArrayList> || std::derived_from<T, VxPArrayList> ||
    std::derived_from<T, VxCPArrayList>;

template <typename T>
concept AnyTable = std::derived_from<T, VxHashTable> || std::derived_from<T, VxPHashTable> ||
    std::derived_from<T, VxCPHashTable>;

// A number by which an incomplete copy of a list or table is below its source: elements, and once
// more those that are not null, as an element is if it could not be copied. 0 for any other type.
template <typename T>
int countElements(const T &value) {
    const auto countIn = [](const auto &array) { return array.count + array.countFilled(); };
    int elements = 0;
    if constexpr (AnyList<T>) {
        elements = countIn(Access::array(value));
    } else if constexpr (AnyTable<T>) {
        for (int i = 0; i < value.getNumBuckets(); ++i)
            elements += countIn(Access::buckets(value).slots(i));
    }
    return elements;
}

// Null if memory ran out or the copy constructor threw. A list or table cannot report a failed copy
// of itself, but then has fewer elements than its source.
template <typename T>
T *newCopy(const T &element) {
#ifdef __cpp_exceptions
    try {
#endif
        std::unique_ptr<T> copy(new (std::nothrow) T(element));
        if (copy != nullptr && countElements(*copy) != countElements(element)) copy.reset();
        return copy.release();
#ifdef __cpp_exceptions
    } catch (...) {
        return nullptr;
    }
#endif
}

// Adds a move that takes the storage. Its source must stay usable, so a table gets new buckets.
template <typename Base>
class Movable : public Base {
protected:
    using Base::Base;
    Movable() = default;
    Movable(const Movable &) = default;
    // Two constructors, because VxHashTable always takes a number of buckets.
    Movable(Movable &&source) noexcept requires AnyList<Base> { exchange(source); }
    Movable(Movable &&source) noexcept requires AnyTable<Base> : Base(0) { exchange(source); }
    Movable &operator=(const Movable &) = default;
    Movable &operator=(Movable &&source) noexcept {
        if (this != &source) {
            this->empty();
            exchange(source);
        }
        return *this;
    }

private:
    void exchange(Movable &other) {
        if constexpr (AnyList<Base>) {
            std::swap(Access::array(*this), Access::array(other));
        } else {
            std::swap(Access::buckets(*this), Access::buckets(other));
        }
        if constexpr (std::same_as<Base, VxHashTable>) {
            std::swap(Access::hashBuckets(*this), Access::hashBuckets(other));
        }
    }
};

template <typename T>
using PointerListBase =
    Movable<std::conditional_t<std::is_const_v<T>, VxCPArrayList, VxPArrayList>>;

template <typename T>
using PointerTableBase =
    Movable<std::conditional_t<std::is_const_v<T>, VxCPHashTable, VxPHashTable>>;

// A list or table that owns copies of T. `Base` is VxArrayList or VxHashTable.
template <typename Base, typename T>
class Owning : public Movable<Base> {
protected:
    using Movable<Base>::Movable;
    Owning() = default;
    Owning(const Owning &source) : Movable<Base>(source) { discardIfIncomplete(source); }
    Owning(Owning &&) noexcept = default;
    ~Owning() override { this->empty(); }
    Owning &operator=(const Owning &source) {
        Movable<Base>::operator=(source);
        discardIfIncomplete(source);
        return *this;
    }
    Owning &operator=(Owning &&) noexcept = default;

    void *copyElement(const void *element) final {
        return newCopy(*static_cast<const T *>(element));
    }
    void destroyElement(void *stored) final { delete static_cast<T *>(stored); }

    void discardIfIncomplete(const Owning &source) {
        if (countElements(*this) != countElements(source)) this->empty();
    }
};

}  // namespace vx::detail

#endif
