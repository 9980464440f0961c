#include "text/pinned_streams.h"

#include "text/allocator_lock.h"

#include <vxtext.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <new>

namespace {

// ---- Nodes: those that streams gave back serve the next ones

struct FreeNode {
    FreeNode *next;
};

FreeNode *freeNodes;

FreeNode *takeFreeNode() {
    const AllocatorLockHolder holder;
    FreeNode *node = freeNodes;
    if (node != nullptr) freeNodes = node->next;
    return node;
}

void *takeNode(std::size_t size) {
    void *node = takeFreeNode();
    if (node == nullptr) node = std::malloc(size);
    if (node == nullptr) {
        std::fputs("out of memory\n", stderr);
        std::exit(1);
    }
    return node;
}

void giveNode(void *node) {
    const AllocatorLockHolder holder;
    freeNodes = ::new (node) FreeNode{freeNodes};
}

void releaseFreeNodes() {
    while (FreeNode *node = takeFreeNode())
        std::free(node);
}

// A map asks for its nodes one at a time, all of one size.
template <typename T>
struct NodeAllocator {
    using value_type = T;
    NodeAllocator() = default;
    template <typename U>
    explicit NodeAllocator(const NodeAllocator<U> & /*other*/) {}
    T *allocate(std::size_t count) { return static_cast<T *>(takeNode(count * sizeof(T))); }
    void deallocate(T *node, std::size_t /*count*/) { giveNode(node); }
    bool operator==(const NodeAllocator & /*other*/) const { return true; }
};

// ---- The map: the name of the numeric locale before each stream, heap text or null

using StreamMap =
    std::map<FILE *, char *, std::less<>, NodeAllocator<std::pair<FILE *const, char *>>>;

// Built and torn down by hand: a static map would go at a time of the loader's choosing.
alignas(StreamMap) unsigned char storage[sizeof(StreamMap)];
StreamMap *streams;

char *copyOf(const char *text) {
    const std::size_t size = std::strlen(text) + 1;
    void *copy = std::malloc(size);
    return copy != nullptr ? static_cast<char *>(std::memcpy(copy, text, size)) : nullptr;
}

// Takes a stream out of the map and gives what was saved for it; null for a stream unknown.
char *forget(FILE *stream) {
    const auto entry = streams->find(stream);
    if (entry == streams->end()) return nullptr;
    char *saved = entry->second;
    streams->erase(entry);
    return saved;
}

}  // namespace

void streamMapBuild() {
    streams = ::new (static_cast<void *>(storage)) StreamMap;
}

void streamMapTearDown() {
    for (const auto &[stream, saved] : *streams)
        std::free(saved);
    streams->~StreamMap();
    streams = nullptr;
    releaseFreeNodes();
}

FILE *vxStreamOpen(const char *path, const char *mode) {
    FILE *stream = std::fopen(path, mode);
    if (stream == nullptr) return nullptr;
    char *saved = copyOf(std::setlocale(LC_NUMERIC, nullptr));
    std::setlocale(LC_NUMERIC, "C");
    // A stream that was closed behind the map's back keeps its older entry.
    if (!streams->try_emplace(stream, saved).second) std::free(saved);
    return stream;
}

int vxStreamClose(FILE *stream) {
    char *saved = forget(stream);
    std::setlocale(LC_NUMERIC, saved);  // null only asks
    std::free(saved);
    return std::fclose(stream);
}
