// Lists and tables of all kinds, and the containers of the standard library that they are compared
// with after random changes. below(n) chooses a number from 0 to n - 1.

#ifndef VX_FUZZ_MODELS_CONTAINER_MODEL_H
#define VX_FUZZ_MODELS_CONTAINER_MODEL_H

#include "fuzz/models/container_values.h"

#include <vxtyped.h>

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

template <typename List>
List listOf(int n) {
    List list;
    for (int v = 0; v < n; ++v)
        if (!list.append(element<List>(v))) std::abort();
    return list;
}

template <typename List>
struct ListModel {
    template <typename Below>
    bool change(Below below) {
        if (below(64) == 0) return replaceByCopy(below(2) == 0);
        bool done = true;
        const int n = list.length();
        const int at = below(n + 1);
        const int v = below(1000);
        const int action = below(n == 0 ? 5 : 8);
        if (action == 0) {
            done = list.append(element<List>(v));
            model.push_back(v);
        } else if (action < 3) {
            done = list.insert(at, element<List>(v));
            model.insert(model.begin() + at, v);
        } else if (action == 3) {
            const List more = listOf<List>(below(6));
            const std::vector<int> all = values(more);
            done = list.insert(at, more);
            model.insert(model.begin() + at, all.begin(), all.end());
        } else if (action == 4) {
            const int gone = below(below(40) == 0 ? n - at + 1 : std::min(n - at, 9) + 1);
            list.remove(at, gone);
            model.erase(model.begin() + at, model.begin() + at + gone);
        } else if (action == 5) {
            static_cast<void>(list.set(at % n, element<List>(v)));
            model[static_cast<std::size_t>(at % n)] = v;
        } else {
            list.swap(at % n, v % n);
            std::swap(model[static_cast<std::size_t>(at % n)],
                      model[static_cast<std::size_t>(v % n)]);
        }
        return done && values(list) == model;
    }

    bool replaceByCopy(bool moves) {
        List copy(list);
        List other = listOf<List>(3);
        if (moves) other = std::move(copy);
        if (!moves) other = copy;
        List &self = list = std::move(other);
        self = list;
        return values(list) == model && copy.length() == (moves ? 0 : list.length());
    }

    List list;
    std::vector<int> model;
};

// The values in the order of a walk forward, read backwards by the iterators of the base.
template <typename Iterator>
std::vector<int> walkBack(const auto &table, auto &&valueOf) {
    std::vector<int> seen;
    Iterator it(table);
    for (it.reset(1); it.isValid() != 0;)
        seen.push_back(valueOf(it.postDec()));
    Iterator same(table);
    same = it;
    if (same.isValid() != 0 || same.getTable() != &table) seen.push_back(-1);
    std::reverse(seen.begin(), seen.end());
    it.reset(0);
    if (it.isValid() != 0 && valueOf(it.getElem()) != seen.front()) seen.push_back(-1);
    return seen;
}

inline int cellOf(const void *cell) {
    return value(static_cast<const int *>(cell));
}
inline std::vector<int> valuesBack(const VxOwningTable<int> &table) {
    return walkBack<VxHashTableConstIterator>(
        table, [](const void *e) { return *static_cast<const int *>(e); });
}
inline std::vector<int> valuesBack(const VxPointerTable<int> &table) {
    return walkBack<VxPHashTableConstIterator>(table, cellOf);
}
inline std::vector<int> valuesBack(const VxPointerTable<const int> &table) {
    return walkBack<VxCPHashTableConstIterator>(table, cellOf);
}

template <typename Table>
struct TableModel {
    explicit TableModel(int numBuckets) : table(numBuckets) {}

    // Did the change do what it does to a set?
    template <typename Below>
    bool change(Below below) {
        if (below(64) == 0) return replaceByCopy(below(3), 1 + below(20));
        const int v = below(300);
        const auto given = element<Table>(v);
        const auto at = std::find(model.begin(), model.end(), v);
        const bool present = at != model.end();
        const bool inserts = below(2) == 0;
        if (inserts && !present) model.push_back(v);
        if (!inserts && present) model.erase(at);
        const bool did = inserts ? table.insert(given) : table.remove(given);
        return did == (inserts != present) && static_cast<bool>(table.has(given)) == inserts;
    }

    // Continues with a copy: in other buckets (way 0), or in those of the source, assigned or
    // moved.
    bool replaceByCopy(int way, int numBuckets) {
        const int kept = table.getNumBuckets();
        const std::vector<int> walk = values(table);
        Table copy(table);
        Table other(numBuckets);
        other.insert(element<Table>(999));
        if (way == 0) other.copyObjects(copy);
        if (way == 1) other = copy;
        if (way == 2) other = std::move(copy);
        if (way == 2 && !(copy.getNumElements() == 0 && copy.insert(element<Table>(0))))
            return false;
        Table &self = table = std::move(other);
        self = table;
        self.copyObjects(table);
        if (way != 0) numBuckets = kept;
        if (numBuckets == kept ? values(table) != walk : sorted(values(table)) != sorted(model))
            return false;
        model = values(table);
        return table.getNumBuckets() == numBuckets;
    }

    // Walked in both directions, does the table hold what the model holds? In one bucket it has the
    // order of insertion.
    bool agrees() const {
        const std::vector<int> seen = values(table);
        return valuesBack(table) == seen && table.getNumElements() == std::ssize(model) &&
               (table.getNumBuckets() == 1 ? seen == model : sorted(seen) == sorted(model));
    }

    static std::vector<int> sorted(std::vector<int> all) {
        std::sort(all.begin(), all.end());
        return all;
    }

    Table table;
    std::vector<int> model;  // in the order of insertion
};

#endif
