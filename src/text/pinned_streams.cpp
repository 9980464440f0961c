#include "text/pinned_streams.h"

#include "platform/lock.h"

#include <vxtext.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <new>

namespace {

// ---- Nodes: those of closed streams serve the next ones

struct FreeNode {
    FreeNode *next;
};

FreeNode *freeNodes;  // guarded by the lock, which guards nothing else

FreeNode *takeFreeNode() {
    const vx::LockGuard guard;
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

void returnNode(void *node) {
    const vx::LockGuard guard;
    freeNodes = ::new (node) FreeNode{freeNodes};
}

void releaseFreeNodes() {
    while (FreeNode *node = takeFreeNode())
        std::free(node);
}

// A map allocates its nodes one at a time, all of one size.
template <typename T>
struct NodeAllocator {
    using value_type = T;
    NodeAllocator() = default;
    template <typename U>
    explicit NodeAllocator(const NodeAllocator<U> & /*other*/) {}
    T *allocate(std::size_t count) { return static_cast<T *>(takeNode(count * sizeof(T))); }
    void deallocate(T *node, std::size_t /*count*/) { returnNode(node); }
    bool operator==(const NodeAllocator & /*other*/) const { return true; }
};

// ---- The map: the numeric locale before each stream was opened, as heap text or null

using StreamMap =
    std::map<FILE *, char *, std::less<>, NodeAllocator<std::pair<FILE *const, char *>>>;

// Built and torn down by hand. The destructor of a static map could run before the unload.
alignas(StreamMap) unsigned char storage[sizeof(StreamMap)];
StreamMap *streams;

char *copyOf(const char *text) {
    const std::size_t size = std::strlen(text) + 1;
    void *copy = std::malloc(size);
    return copy != nullptr ? static_cast<char *>(std::memcpy(copy, text, size)) : nullptr;
}

// Removes a stream from the map and returns the locale saved for it, null for an unknown stream.
char *removeEntry(FILE *stream) {
    const auto entry = streams->find(stream);
    if (entry == streams->end()) return nullptr;
    char *saved = entry->second;
    streams->erase(entry);
    return saved;
}

}  // namespace

void vx::streamMapBuild() {
    streams = ::new (static_cast<void *>(storage)) StreamMap;
}

void vx::streamMapTearDown() {
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
    // A stream that fclose closed left its entry here, and the older entry counts.
    if (!streams->try_emplace(stream, saved).second) std::free(saved);
    return stream;
}

int vxStreamClose(FILE *stream) {
    char *saved = removeEntry(stream);
    std::setlocale(LC_NUMERIC, saved);  // null changes nothing
    std::free(saved);
    return std::fclose(stream);
}
