// Lists and tables of all kinds beside those of the standard library, in runs of random changes.
// below(n) chooses a number from 0 to n - 1.

#ifndef VX_TESTS_CONTAINER_RUN_H
#define VX_TESTS_CONTAINER_RUN_H

#include "container_values.h"

#include <vxtyped.h>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

template <typename List>
List listOf(int n) {
    List list;
    for (int v = 0; v < n; ++v)
        list.append(element<List>(v));
    return list;
}

template <typename List>
struct ListRun {
    template <typename Below>
    void change(Below below) {
        const int n = list.length();
        const int at = below(n + 1);
        const int v = below(1000);
        const int action = below(n == 0 ? 5 : 8);
        if (action == 0) {
            list.append(element<List>(v));
            model.push_back(v);
        } else if (action < 3) {
            list.insert(at, element<List>(v));
            model.insert(model.begin() + at, v);
        } else if (action == 3) {
            const List more = listOf<List>(below(6));
            const std::vector<int> all = values(more);
            list.insert(at, more);
            model.insert(model.begin() + at, all.begin(), all.end());
        } else if (action == 4) {
            const int gone = below(below(40) == 0 ? n - at + 1 : std::min(n - at, 9) + 1);
            list.remove(at, gone);
            model.erase(model.begin() + at, model.begin() + at + gone);
        } else if (action == 5) {
            list.set(at % n, element<List>(v));
            model[static_cast<std::size_t>(at % n)] = v;
        } else {
            list.swap(at % n, v % n);
            std::swap(model[static_cast<std::size_t>(at % n)],
                      model[static_cast<std::size_t>(v % n)]);
        }
    }

    List list;
    std::vector<int> model;
};

// Values from the last to the first, by the iterators of the base, in the order of a walk forward.
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
struct TableRun {
    explicit TableRun(int numBuckets) : table(numBuckets) {}

    // Did the change do what a set does.
    template <typename Below>
    bool change(Below below) {
        const int v = below(300);
        const auto given = element<Table>(v);
        const bool inserts = below(2) == 0;
        const bool did = inserts ? table.insert(given) : table.remove(given);
        const bool expected = inserts ? model.insert(v).second : model.erase(v) == 1;
        return did == expected && static_cast<bool>(table.has(given)) == (model.count(v) == 1);
    }

    // Walked both ways, the table holds what the set holds.
    bool agrees() const {
        std::vector<int> seen = values(table);
        if (valuesBack(table) != seen) return false;
        std::sort(seen.begin(), seen.end());
        return seen == std::vector<int>(model.begin(), model.end()) &&
               table.getNumElements() == static_cast<int>(model.size());
    }

    Table table;
    std::set<int> model;
};

#endif
