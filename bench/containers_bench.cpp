// Lists and tables beside the containers that people would take otherwise. Items are elements, so
// that items per second compare whatever the size.

#include <vxtyped.h>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <unordered_set>
#include <vector>
#ifdef VX_WITH_GLIB
#include <glib.h>
#endif
#ifdef VX_WITH_ABSL
#include <absl/container/flat_hash_set.h>
#endif

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;

constexpr int kSetSize = 1000;
constexpr int kSetBuckets = 1009;

void countElements(State &state, int each) {
    state.SetItemsProcessed(state.iterations() * each);
}

struct Record {
    char bytes[48];
};

int anchor;  // something to point to

// The protected members as a derived class reaches them.
class RawList : public VxPArrayList {
public:
    using VxPArrayList::append;
    using VxPArrayList::get;
    using VxPArrayList::insert;
};

class RawTable : public VxPHashTable {
public:
    explicit RawTable(int numBuckets) : VxPHashTable(numBuckets) {}
    using VxPHashTable::has;
    using VxPHashTable::insert;
    using VxPHashTable::remove;
};

// ---- Append -----------------------------------------------------------------------------------

void append_vx(State &state) {
    const auto n = static_cast<int>(state.range(0));
    for (auto _ : state) {
        RawList list;
        for (int i = 0; i < n; ++i)
            list.append(&anchor);
        DoNotOptimize(list.length());
    }
    countElements(state, n);
}

void append_std(State &state) {
    const auto n = static_cast<int>(state.range(0));
    for (auto _ : state) {
        std::vector<void *> list;
        for (int i = 0; i < n; ++i)
            list.push_back(&anchor);
        DoNotOptimize(list.data());
    }
    countElements(state, n);
}

BENCHMARK(append_vx)->Arg(1000)->Arg(100000);
BENCHMARK(append_std)->Arg(1000)->Arg(100000);

#ifdef VX_WITH_GLIB
void append_glib(State &state) {
    const auto n = static_cast<int>(state.range(0));
    for (auto _ : state) {
        GPtrArray *list = g_ptr_array_new();
        for (int i = 0; i < n; ++i)
            g_ptr_array_add(list, &anchor);
        DoNotOptimize(list->pdata);
        g_ptr_array_free(list, TRUE);
    }
    countElements(state, n);
}
BENCHMARK(append_glib)->Arg(1000)->Arg(100000);
#endif

// ---- Insert and remove in the middle ----------------------------------------------------------

void middle_vx(State &state) {
    const auto n = static_cast<int>(state.range(0));
    RawList list;
    for (int i = 0; i < n; ++i)
        list.append(&anchor);
    for (auto _ : state) {
        list.insert(n / 2, &anchor);
        list.remove(n / 2, 1);
        benchmark::ClobberMemory();
    }
}

void middle_memmove(State &state) {
    const auto n = static_cast<std::size_t>(state.range(0));
    std::vector<void *> slots(2 * n, &anchor);
    void **middle = slots.data() + n / 2;
    for (auto _ : state) {
        std::memmove(middle + 1, middle, (n - n / 2) * sizeof(void *));
        *middle = &anchor;
        benchmark::ClobberMemory();
        std::memmove(middle, middle + 1, (n - n / 2) * sizeof(void *));
        benchmark::ClobberMemory();
    }
}

BENCHMARK(middle_vx)->Arg(1000)->Arg(100000);
BENCHMARK(middle_memmove)->Arg(1000)->Arg(100000);

// ---- Walks ------------------------------------------------------------------------------------

std::vector<std::unique_ptr<Record>> records(int n) {
    std::vector<std::unique_ptr<Record>> all;
    for (int i = 0; i < n; ++i)
        all.push_back(std::make_unique<Record>());
    return all;
}

void walk_list_vx(State &state) {
    RawList list;
    for (int i = 0; i < kSetSize; ++i)
        list.append(&anchor);
    for (auto _ : state) {
        VxPArrayListConstIterator it(list);
        while (it.isValid() != 0) {
            void *element = it.postInc();
            DoNotOptimize(element);
        }
    }
    countElements(state, kSetSize);
}

void walk_list_std(State &state) {
    std::vector<void *> list(kSetSize, &anchor);
    DoNotOptimize(list.data());
    for (auto _ : state) {
        for (void *element : list)
            DoNotOptimize(element);
    }
    countElements(state, kSetSize);
}

void walk_table_vx(State &state) {
    const auto all = records(kSetSize);
    RawTable table(kSetBuckets);
    for (const auto &record : all)
        table.insert(record.get());
    for (auto _ : state) {
        VxPHashTableConstIterator it(table);
        while (it.isValid() != 0) {
            void *element = it.postInc();
            DoNotOptimize(element);
        }
    }
    countElements(state, kSetSize);
}

void walk_table_std(State &state) {
    const auto all = records(kSetSize);
    std::unordered_set<void *> table(kSetBuckets);
    for (const auto &record : all)
        table.insert(record.get());
    for (auto _ : state) {
        for (void *element : table)
            DoNotOptimize(element);
    }
    countElements(state, kSetSize);
}

BENCHMARK(walk_list_vx);
BENCHMARK(walk_list_std);
BENCHMARK(walk_table_vx);
BENCHMARK(walk_table_std);

// ---- Sets of pointers -------------------------------------------------------------------------

// Each kind of set behind the same three calls.
struct VxSet {
    RawTable table{kSetBuckets};
    void insert(void *p) { table.insert(p); }
    void remove(void *p) { table.remove(p); }
    bool has(void *p) const { return table.has(p) != nullptr; }
};

struct StdSet {
    std::unordered_set<void *> table{kSetBuckets};
    void insert(void *p) { table.insert(p); }
    void remove(void *p) { table.erase(p); }
    bool has(void *p) const { return table.find(p) != table.end(); }
};

#ifdef VX_WITH_ABSL
struct AbslSet {
    absl::flat_hash_set<void *> table;
    void insert(void *p) { table.insert(p); }
    void remove(void *p) { table.erase(p); }
    bool has(void *p) const { return table.contains(p); }
};
#endif

#ifdef VX_WITH_GLIB
struct GlibSet {
    GHashTable *table = g_hash_table_new(nullptr, nullptr);
    GlibSet() = default;
    GlibSet(const GlibSet &) = delete;
    GlibSet &operator=(const GlibSet &) = delete;
    ~GlibSet() { g_hash_table_destroy(table); }
    void insert(void *p) { g_hash_table_add(table, p); }
    void remove(void *p) { g_hash_table_remove(table, p); }
    bool has(void *p) const { return g_hash_table_contains(table, p) != 0; }
};
#endif

template <typename Set>
void set_find(State &state) {
    const auto all = records(kSetSize);
    Set set;
    std::vector<void *> order;
    for (const auto &record : all) {
        set.insert(record.get());
        order.push_back(record.get());
    }
    std::shuffle(order.begin(), order.end(), std::mt19937(7));
    for (auto _ : state) {
        for (void *p : order)
            DoNotOptimize(set.has(p));
    }
    countElements(state, kSetSize);
}

template <typename Set>
void set_fill(State &state) {
    const auto all = records(kSetSize);
    for (auto _ : state) {
        Set set;
        for (const auto &record : all)
            set.insert(record.get());
        DoNotOptimize(set.has(all[0].get()));
    }
    countElements(state, kSetSize);
}

template <typename Set>
void set_remove_insert(State &state) {
    const auto all = records(kSetSize);
    Set set;
    std::vector<void *> order;
    for (const auto &record : all) {
        set.insert(record.get());
        order.push_back(record.get());
    }
    std::shuffle(order.begin(), order.end(), std::mt19937(7));
    for (auto _ : state) {
        for (void *p : order) {
            set.remove(p);
            set.insert(p);
        }
    }
    countElements(state, kSetSize);
}

#define BENCH_SET(Set)                 \
    BENCHMARK_TEMPLATE(set_find, Set); \
    BENCHMARK_TEMPLATE(set_fill, Set); \
    BENCHMARK_TEMPLATE(set_remove_insert, Set)

BENCH_SET(VxSet);
BENCH_SET(StdSet);
#ifdef VX_WITH_ABSL
BENCH_SET(AbslSet);
#endif
#ifdef VX_WITH_GLIB
BENCH_SET(GlibSet);
#endif

// ---- Owned texts ------------------------------------------------------------------------------

std::vector<std::string> texts() {
    std::vector<std::string> all;
    for (int i = 0; i < kSetSize; ++i) {
        std::string text = "textures/wood/plank_" + std::to_string(100000 + i);
        text.resize(36, '#');
        all.push_back(text);
    }
    return all;
}

template <typename Set>
void owned_find(State &state, Set &set) {
    std::vector<std::string> order = texts();
    for (const std::string &text : order)
        set.insert(text);
    std::shuffle(order.begin(), order.end(), std::mt19937(7));
    for (auto _ : state) {
        for (const std::string &text : order) {
            if constexpr (requires { set.has(text); }) {
                DoNotOptimize(set.has(text));
            } else {
                DoNotOptimize(set.find(text));
            }
        }
    }
    countElements(state, kSetSize);
}

void owned_find_vx(State &state) {
    VxOwningTable<std::string> set(kSetBuckets);
    owned_find(state, set);
}

void owned_find_std(State &state) {
    std::unordered_set<std::string> set(kSetBuckets);
    owned_find(state, set);
}

BENCHMARK(owned_find_vx);
BENCHMARK(owned_find_std);

int hashesTaken;

struct CountedHash {
    std::size_t operator()(const std::string &text) const {
        ++hashesTaken;
        return std::hash<std::string>()(text);
    }
};

// How often a text is hashed in the most expensive of the calls.
void owned_hashes(State &state) {
    const std::string text = texts()[0];
    int most = 0;
    const auto note = [&](auto call) {
        hashesTaken = 0;
        call();
        most = std::max(most, hashesTaken);
    };
    VxOwningTable<std::string, CountedHash> set(kSetBuckets);
    for (auto _ : state) {
        note([&] { set.insert(text); });
        note([&] { set.insert(text); });
        note([&] { set.has(text); });
        note([&] { set.remove(text); });
        note([&] { set.remove(text); });
    }
    state.counters["count"] = most;
}

BENCHMARK(owned_hashes)->Iterations(1);

}  // namespace
