// Lists and tables of all kinds, compared with plain models of them after each of a run of changes.
// Everywhere below(n) chooses a number from 0 to n - 1.

#ifndef VX_FUZZ_MODELS_CONTAINER_MODEL_H
#define VX_FUZZ_MODELS_CONTAINER_MODEL_H

#include <vxhandles.h>
#include <vxtyped.h>

#include <algorithm>
#include <cmath>
#include <concepts>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>
#include <ranges>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// The same numbers in every container: as elements made of them, or as pointers to these cells. The
// pointer for 0 is null.
alignas(16) inline int cells[1000];

inline int value(int v) {
    return v;
}
inline int value(const int *cell) {
    return cell == nullptr ? 0 : static_cast<int>(cell - cells);
}

// The element for a number, as this container takes it.
template <typename Container>
auto element(int v) {
    using Element = typename Container::value_type;
    if constexpr (std::is_pointer_v<Element>) {
        return v == 0 ? nullptr : Element(&cells[v]);
    } else {
        return Element(v);
    }
}

// The number of an element that a slot of this container points to.
template <typename Container>
int slotValue(const void *slot) {
    using Element = typename Container::value_type;
    if constexpr (std::is_pointer_v<Element>) {
        return value(static_cast<Element>(const_cast<void *>(slot)));
    } else {
        return value(*static_cast<const Element *>(slot));
    }
}

inline std::vector<int> values(const auto &container) {
    std::vector<int> all;
    for (const auto &each : container)
        all.push_back(value(each));
    return all;
}

// A number. Its copies have a block of memory each; when there is none, copying throws.
class Boxed {
public:
    explicit Boxed(int v) : v_(v) {}
    Boxed(const Boxed &other) : v_(other.v_), block_(static_cast<char *>(std::malloc(1))) {
        if (block_ == nullptr) throw std::bad_alloc();
    }
    Boxed(Boxed &&) noexcept = default;
    Boxed &operator=(Boxed &&) noexcept = default;
    void operator&() const = delete;
    bool operator==(const Boxed &other) const { return v_ == other.v_; }
    friend int value(const Boxed &boxed) { return boxed.v_; }

private:
    int v_;
    VxUniqueText block_;
};

// Hashes numbers, above the lower 32 bits, and compares them. Works only as a copy of the one that
// the first table of a run was given.
struct HashAndEqual {
    long long operator()(const Boxed &boxed) const {
        return origin == "first" ? value(boxed) * (1LL << 32) : 0;
    }
    bool operator()(const Boxed &one, const Boxed &other) const {
        return origin == "first" && one == other;
    }

    std::string origin;
};

using BoxedList = VxOwningList<Boxed>;
using BoxedTable = VxOwningTable<Boxed, HashAndEqual, HashAndEqual>;

template <typename Table>
Table firstTable(int numBuckets) {
    if constexpr (std::is_constructible_v<Table, int, HashAndEqual, HashAndEqual>) {
        return Table(numBuckets, HashAndEqual{"first"}, HashAndEqual{"first"});
    } else {
        return Table(numBuckets);
    }
}

// The iterators of the bases, by type.
VxArrayListIterator iteratorOf(VxArrayList &);
VxArrayListConstIterator iteratorOf(const VxArrayList &);
VxPArrayListIterator iteratorOf(VxPArrayList &);
VxPArrayListConstIterator iteratorOf(const VxPArrayList &);
VxCPArrayListIterator iteratorOf(VxCPArrayList &);
VxCPArrayListConstIterator iteratorOf(const VxCPArrayList &);
VxHashTableIterator iteratorOf(VxHashTable &);
VxHashTableConstIterator iteratorOf(const VxHashTable &);
VxPHashTableConstIterator iteratorOf(const VxPHashTable &);
VxCPHashTableConstIterator iteratorOf(const VxCPHashTable &);

// A list and a vector. `complete` becomes false when memory runs out during a change.
template <typename List>
class ListModel {
public:
    // Makes a change and moves the iterators. Are list and model the same then?
    template <typename Below>
    bool change(Below below) {
        if (below(64) == 0) {
            if (!replace(below(4))) return false;
        } else {
            edit(below);
        }
        const Fields fields = fieldsOf(list_);
        complete = complete && fields.capacity == capacity_;
        capacity_ = fields.capacity;
        assignIterators(below(20));
        return values(std::as_const(list_)) == model_ && fields.count <= fields.capacity &&
               (fields.slots == nullptr) == (fields.capacity == 0) && step(it_, index_, below) &&
               step(constIt_, constIndex_, below) && (model_.empty() || jump(below));
    }

    bool complete = true;

private:
    using Iterator = decltype(iteratorOf(std::declval<List &>()));
    using ConstIterator = decltype(iteratorOf(std::declval<const List &>()));

    // What a list consists of, after its pointer to the virtual table.
    struct Fields {
        const void *table;
        int count, capacity;
        void **slots;
    };
    static Fields fieldsOf(const List &list) {
        Fields fields;
        std::memcpy(&fields, static_cast<const void *>(&list), sizeof fields);
        return fields;
    }

    static List listOf(int n) {
        List list;
        for (int v = 0; v < n; ++v)
            static_cast<void>(list.append(element<List>(v)));
        return list;
    }

    int &at(int index) { return model_[static_cast<std::size_t>(index)]; }

    template <typename Below>
    void edit(Below below) {
        const int n = list_.length();
        const int index = below(n + 1);
        const int v = below(1000);
        switch (below(n == 0 ? 3 : 7)) {
            case 0:
                return inserted(n, {v}, list_.append(element<List>(v)));
            case 1:
                return inserted(index, {v}, list_.insert(index, element<List>(v)));
            case 2:
                return insertAll(below(2) == 0 ? n : index, listOf(below(6)));
            case 3:
                return remove(index, below(below(2) == 0 ? 3 : n - index + 1));
            case 4:
                return set(index % n, v);
            case 5:
                list_.swap(index % n, v % n);
                return std::swap(at(index % n), at(v % n));
            default:
                return rearrange(below(20));
        }
    }

    void inserted(int index, const std::vector<int> &more, bool done) {
        complete = complete && done;
        if (!done) return;
        model_.insert(model_.begin() + index, more.begin(), more.end());
        while (capacity_ < std::ssize(model_))
            capacity_ = capacity_ == 0 ? 1 : 2 * capacity_;
    }

    void insertAll(int index, const List &more) {
        const bool last = index == list_.length();
        inserted(index, values(more), last ? list_.append(more) : list_.insert(index, more));
    }

    void remove(int index, int wanted) {
        const int n = std::min(wanted, list_.length() - index);
        list_.remove(n == 0 ? -1 : index, n);
        model_.erase(model_.begin() + index, model_.begin() + index + n);
        if (n == 0 || std::ssize(model_) >= capacity_ / 4) return;
        do
            capacity_ /= 2;
        while (std::ssize(model_) < capacity_ / 4);
    }

    // An even number stands for an element of the list itself.
    void set(int index, int v) {
        const int from = v % list_.length();
        const auto given = element<List>(v);
        bool done = true;
        if constexpr (std::is_pointer_v<typename List::value_type>) {
            list_.set(index, v % 2 == 0 ? list_[from] : given);
        } else {
            done = list_.set(index, v % 2 == 0 ? list_[from] : given);
        }
        complete = complete && done;
        if (done) at(index) = v % 2 == 0 ? at(from) : v;
    }

    void rearrange(int way) {
        if (way == 0) {
            list_.empty();
            model_.clear();
            capacity_ = 0;
        }
        if (way == 1) {
            std::ranges::sort(list_, {}, [](const auto &each) { return value(each); });
            std::ranges::sort(model_);
        }
    }

    // Takes a copy of the list, assigned or moved, which is empty out of memory.
    bool replace(int way) {
        List copy(list_);
        List other = listOf(way);
        if (way % 2 == 0) other = copy;
        if (way % 2 == 1) other = std::move(copy);
        void **const slots = fieldsOf(other).slots;
        List moved(std::move(other));
        List &self = list_ = std::move(moved);
        if (way == 2) list_ = std::move(self);
        if (way == 3) list_ = self;
        if (list_.length() == 0) model_.clear();
        return fieldsOf(list_).slots == slots && other.length() + moved.length() == 0 &&
               (way % 2 == 0 || copy.length() == 0);
    }

    void assignIterators(int way) {
        Iterator last(list_);
        last.reset(1);
        if (way == 0) it_ = last;
        if (way == 1) it_.assign(last);
        if (way < 2) index_ = list_.length() - 1;
        if (way == 2) constIt_ = it_;
        if (way == 3) constIt_.assign(it_);
        if (way == 4) constIt_.assign(ConstIterator(it_));
        if (way >= 2 && way <= 4) constIndex_ = index_;
    }

    // An iterator is the list and an index, whatever happens to the list.
    template <typename AnyIterator, typename Below>
    bool step(AnyIterator &it, int &index, Below below) {
        const int n = list_.length();
        const int start = below(8);
        if (start < 2) {
            it.reset(start == 0 ? 0 : -3);  // any number but 0 is the end
            index = start == 0 ? 0 : n - 1;
        }
        const bool valid = index >= 0 && index < n;
        if (it.getIndex() != index || it.isValid() != (valid ? 1 : 0) || it.getList() != &list_ ||
            std::as_const(it).getList() != &list_)
            return false;
        if (!valid) return true;
        int &expected = at(index);
        const int way = below(3);
        index += way - 1;
        decltype(auto) slot = way == 0 ? it.postDec() : way == 1 ? it.getElem() : it.postInc();
        if (slotValue<List>(slot) != expected) return false;
        if constexpr (std::is_reference_v<decltype(slot)>) {
            expected = below(1000);
            slot = element<List>(expected);
        }
        return true;
    }

    // The iterators for algorithms, moved in every way.
    template <typename Below>
    bool jump(Below below) {
        const int from = below(list_.length());
        const int to = below(list_.length());
        typename List::const_iterator it = from + list_.begin();
        const typename List::iterator other = list_.end() - (list_.length() - to);
        const bool compares = other - it == to - from && (it < other) == (from < to) &&
                              (it == other) == (from == to) && it != list_.cend();
        const auto before = it++;
        const auto after = it--;
        return compares && after - before == 1 && it == before && --++it == before &&
               value(*it) == at(from) && value(it[to - from]) == at(to) && value(*other) == at(to);
    }

    List list_;
    std::vector<int> model_;
    int capacity_ = 0;
    Iterator it_{list_};
    ConstIterator constIt_{list_};
    int index_ = 0;
    int constIndex_ = 0;
};

// A table and its buckets as vectors. The hash of a number must be the number. `complete` becomes
// false when memory runs out during a change.
template <typename Table>
class TableModel {
public:
    TableModel() { adoptFailure(); }

    // Makes a change, and compares everything now and then. Are table and model the same?
    template <typename Below>
    bool change(Below below) {
        const int way = below(50);
        if (way < 4) return replace(way, below(20) - 1);
        if (way < 10 && !agrees()) return false;
        const int v = below(300);
        const auto given = element<Table>(v);
        const bool inserts = below(2) == 0;
        const bool did = inserts ? table_.insert(given) : table_.remove(given);
        if (buckets_.empty()) return !did && !table_.has(given);
        std::vector<int> &bucket = bucketOf(v);
        const auto at = std::ranges::find(bucket, v);
        const bool present = at != bucket.end();
        if (did && inserts == present) return false;
        complete = complete && (did || inserts == present);
        if (did && inserts) bucket.push_back(v);
        if (did && !inserts) bucket.erase(at);
        return static_cast<bool>(table_.has(given)) == (present != did);
    }

    bool complete = true;

private:
    using Buckets = std::vector<std::vector<int>>;

    // Compares what walks and statistics find.
    bool agrees() {
        std::vector<int> all;
        int used = 0;
        for (const auto &bucket : buckets_) {
            all.insert(all.end(), bucket.begin(), bucket.end());
            used += bucket.empty() ? 0 : 1;
        }
        const double mean = static_cast<double>(all.size()) / std::max(used, 1);
        double variance = 0.0;
        for (const auto &bucket : buckets_) {
            const double distance = static_cast<double>(bucket.size()) - mean;
            variance += bucket.empty() ? 0.0 : distance * distance / used;
        }
        const auto numBuckets = static_cast<int>(buckets_.size());
        return table_.getNumBuckets() == numBuckets && table_.getNumUsedBuckets() == used &&
               table_.getNumUnusedBuckets() == numBuckets - used &&
               table_.getNumElements() == std::ssize(all) &&
               table_.getMeanUsedBucketLength() == mean &&
               std::abs(table_.getVarianceUsedBucketLength() - variance) < 1e-9 &&
               values(table_) == all && steps(all) &&
               walks<decltype(iteratorOf(std::declval<Table &>()))>(all) &&
               walks<decltype(iteratorOf(std::declval<const Table &>()))>(all);
    }

    // The iterator for algorithms.
    bool steps(const std::vector<int> &all) const {
        auto it = table_.begin();
        for (const int v : all) {
            if (it == table_.cend() || value(*it++) != v) return false;
        }
        return it == table_.end();
    }

    std::vector<int> &bucketOf(int v) {
        auto hash = static_cast<unsigned>(v);
        if constexpr (std::is_pointer_v<typename Table::value_type>)
            hash = Table::hash(element<Table>(v));
        return buckets_[hash % buckets_.size()];
    }

    // Takes a copy of the table: assigned, moved, or in other buckets. Now and then empties it.
    bool replace(int way, int asked) {
        const int numBuckets = asked > 0 ? asked : 83;
        Table copy(table_);
        Table other(asked);
        other.insert(element<Table>(999));
        if (way == 0) other = copy;
        if (way == 1) other = std::move(copy);
        if (way == 1 && !isFresh(copy, numBuckets)) return false;
        if (way == 2) {
            Table moved(std::move(copy));
            other = std::move(moved);
            if (!isFresh(copy, 83)) return false;
        }
        if (way == 3) other.copyObjects(copy);
        if (way == 3) rehash(numBuckets);
        if (asked < 0) other.empty();
        if (asked < 0) clear();
        Table &self = table_ = std::move(other);
        self = table_.copyObjects(self);
        adoptFailure();
        return agrees();
    }

    // Is a table that was moved from empty and ready for use?
    bool isFresh(Table &table, int numBuckets) {
        const int n = table.getNumElements();
        const bool inserted = table.insert(element<Table>(1));
        complete = complete && inserted;
        if (inserted && table.insert(element<Table>(1))) return false;
        return n == 0 && (table.getNumBuckets() == numBuckets || !complete);
    }

    void rehash(int numBuckets) {
        const auto old = std::exchange(buckets_, Buckets(static_cast<std::size_t>(numBuckets)));
        for (const auto &bucket : old) {
            for (const int v : bucket)
                bucketOf(v).push_back(v);
        }
    }

    void clear() {
        for (auto &bucket : buckets_)
            bucket.clear();
    }

    // Out of memory a table is left without buckets, or a copy without elements.
    void adoptFailure() {
        const bool isLost = table_.getNumBuckets() == 0;
        const auto isEmpty = [](const auto &bucket) { return bucket.empty(); };
        if (isLost) buckets_.clear();
        if (isLost || (table_.getNumElements() == 0 && !std::ranges::all_of(buckets_, isEmpty)))
            complete = false;
        if (table_.getNumElements() == 0) clear();
    }

    // From each place of a walk, one step each way.
    template <typename Iterator>
    bool walks(const std::vector<int> &all) {
        const int n = static_cast<int>(all.size());
        const auto has = [&all](const void *slot, int index) {
            return slotValue<Table>(slot) == all[static_cast<std::size_t>(index)];
        };
        const auto isAt = [&](const Iterator &it, int index) {
            const bool valid = index >= 0 && index < n;
            return it.isValid() == (valid ? 1 : 0) && (!valid || has(it.getElem(), index));
        };
        Iterator it(table_);
        Iterator last(table_);
        last.reset(-3);  // any number but 0 is the end
        bool good = it.getTable() == &table_ && std::as_const(it).getTable() == &table_ &&
                    isAt(last, n - 1);
        for (int i = 0; i < n && good; ++i) {
            Iterator other(last);
            if (i % 2 == 0) other = it;
            if (i % 2 == 1) other.assign(it);
            good = isAt(it, i) && has(it.getElem(), i) && has(other.postDec(), i) &&
                   isAt(other, i - 1) && (i == 0 || has(other.postInc(), i - 1)) &&
                   has(it.postInc(), i);
            good = good && (i == 0 || isAt(other, i));
        }
        last.reset(0);
        return good && isAt(it, n) && isAt(last, 0);
    }

    Table table_ = firstTable<Table>(7);
    Buckets buckets_ = Buckets(7);
};

#endif
