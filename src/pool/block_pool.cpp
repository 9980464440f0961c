// Fixed-size elements from large blocks.
//
// The current block is the one that nextElement lies in or at the end of. It is the head of
// `blocks` unless runs were put in front of it since; vxPoolAlloc then brings it back to the front
// before it goes on. Blocks never touch, as each starts with a header, so an address tells its
// block without doubt.

#include "pool/poison.h"

#include <vxframework.h>
#include <vxmessages.h>
#include <vxpool.h>

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

std::size_t sizeOf(const VxPool *pool) {
    return static_cast<std::size_t>(pool->elementSize);
}

char *firstElement(VxPoolBlock *block) {
    return reinterpret_cast<char *>(block + 1);
}

std::int64_t elementBytes(const VxPool *pool, std::int64_t count) {
    return count * pool->elementSize;
}

// Where nextElement lies in a block, from its first element on. Addresses, as the two may
// belong to different blocks.
std::uintptr_t offsetIn(const VxPool *pool, VxPoolBlock *block) {
    return reinterpret_cast<std::uintptr_t>(pool->nextElement) -
           reinterpret_cast<std::uintptr_t>(firstElement(block));
}

bool isCurrent(const VxPool *pool, VxPoolBlock *block) {
    return offsetIn(pool, block) <=
           static_cast<std::uintptr_t>(elementBytes(pool, block->elementCount));
}

// Whether the next element can be cut from this block. Both the block's own count and the pool's
// are limits, as either may be the smaller one.
bool hasRoom(const VxPool *pool, VxPoolBlock *block) {
    const int count = std::min(block->elementCount, pool->elementsPerBlock);
    return count > 0 &&
           offsetIn(pool, block) < static_cast<std::uintptr_t>(elementBytes(pool, count));
}

void push(VxPoolBlock *&list, VxPoolBlock *block) {
    block->next = list;
    list = block;
}

VxPoolBlock *pop(VxPoolBlock *&list) {
    return std::exchange(list, list->next);
}

void *cutNext(VxPool *pool) {
    void *element = pool->nextElement;
    pool->nextElement = static_cast<char *>(element) + pool->elementSize;
    unpoison(element, sizeOf(pool));
    return element;
}

// Brings the current block in front of the runs if it has room. Each run is walked over once, as
// long as blocks are to be had: the one that the caller gets instead goes in front of them too.
bool currentToFront(VxPool *pool) {
    if (pool->nextElement == nullptr || pool->elementsPerBlock < 1) return false;
    VxPoolBlock **link = &pool->blocks;
    while (!isCurrent(pool, *link))
        link = &(*link)->next;
    if (!hasRoom(pool, *link)) return false;
    push(pool->blocks, pop(*link));
    return true;
}

// A block that is on no list yet, entered in the pool's counts; null when it is refused.
VxPoolBlock *newBlock(VxPool *pool, int count) {
    const std::int64_t bytes = elementBytes(pool, count);
    if (pool->elementSize < 1 ||
        bytes > INT32_MAX - static_cast<std::int64_t>(sizeof(VxPoolBlock)) ||
        count > INT32_MAX - pool->totalElements) {
        return nullptr;
    }
    const auto size = static_cast<std::size_t>(bytes);
    auto *block = static_cast<VxPoolBlock *>(std::malloc(sizeof(VxPoolBlock) + size));
    if (block == nullptr) return nullptr;
    block->elementCount = count;
    pool->totalElements += count;
    ++pool->blockCount;
    poison(firstElement(block), size);
    return block;
}

// A retired block or a new one becomes the current block; false when there is none.
bool startBlock(VxPool *pool) {
    if (pool->elementsPerBlock < 1) return false;
    VxPoolBlock *block = pool->spareBlocks != nullptr ? pop(pool->spareBlocks)
                                                      : newBlock(pool, pool->elementsPerBlock);
    if (block == nullptr) return false;
    push(pool->blocks, block);
    pool->nextElement = firstElement(block);
    return true;
}

// Apart from vxPoolAlloc, so that the common path there needs no stack and makes no call.
[[gnu::noinline]] void *allocFromOtherBlock(VxPool *pool) {
    return currentToFront(pool) || startBlock(pool) ? cutNext(pool) : nullptr;
}

[[noreturn]] void endProcess(const VxPool *pool, int count) {
    const std::int64_t bytes =
        elementBytes(pool, count) + static_cast<std::int64_t>(sizeof(VxPoolBlock));
    const std::int64_t shown = std::clamp<std::int64_t>(bytes, INT32_MIN, INT32_MAX);
    vxMessageReport(VX_MESSAGE_CATALOGUE, VX_SEVERITY_FATAL, VX_MESSAGE_POOL_OUT_OF_MEMORY,
                    static_cast<int>(shown));
    std::abort();
}

void freeBlocks(VxPoolBlock *list) {
    while (list != nullptr)
        std::free(pop(list));
}

}  // namespace

void vxPoolInit(VxPool *pool, int elementSize, int elementsPerBlock) {
    *pool = {};
    pool->elementSize = elementSize;
    pool->elementsPerBlock = elementsPerBlock;
}

void vxPoolReset(VxPool *pool) {
    vxPoolInit(pool, pool->elementSize, pool->elementsPerBlock);
}

void vxPoolDestroy(VxPool *pool) {
    freeBlocks(pool->blocks);
    freeBlocks(pool->spareBlocks);
    vxPoolInit(pool, pool->elementSize, pool->elementsPerBlock);
}

void vxPoolSetBlockCount(VxPool *pool, int elementsPerBlock) {
    pool->elementsPerBlock = elementsPerBlock;
}

// Links are copied as bytes: an element has no alignment to rely on.
void *vxPoolAlloc(VxPool *pool) {
    if (void *element = pool->freeElements; element != nullptr) {
        unpoison(element, sizeOf(pool));
        std::memcpy(&pool->freeElements, element, sizeof element);
        return element;
    }
    const bool room = pool->nextElement != nullptr && hasRoom(pool, pool->blocks);
    return room ? cutNext(pool) : allocFromOtherBlock(pool);
}

void *vxPoolAllocBlock(VxPool *pool, int count) {
    if (count < 1) return nullptr;
    VxPoolBlock *block = newBlock(pool, count);
    if (block == nullptr) endProcess(pool, count);
    push(pool->blocks, block);
    unpoison(firstElement(block), sizeOf(pool) * static_cast<std::size_t>(count));
    return firstElement(block);
}

void vxPoolFree(VxPool *pool, void *element) {
    if (element == nullptr) return;
    assert(sizeOf(pool) >= sizeof element);
    std::memcpy(element, &pool->freeElements, sizeof element);
    pool->freeElements = element;
    poison(element, sizeOf(pool));
}

void vxPoolRecycle(VxPool *pool) {
    while (pool->blocks != nullptr) {
        VxPoolBlock *block = pop(pool->blocks);
        poison(firstElement(block),
               static_cast<std::size_t>(elementBytes(pool, block->elementCount)));
        push(pool->spareBlocks, block);
    }
    pool->freeElements = nullptr;
    pool->nextElement = nullptr;
}

int vxPoolSize(const VxPool *pool) {
    const auto headers = pool->blockCount * static_cast<std::int64_t>(sizeof(VxPoolBlock));
    const std::int64_t bytes = elementBytes(pool, pool->totalElements) + headers +
                               static_cast<std::int64_t>(sizeof(VxPool));
    return static_cast<int>(std::min<std::int64_t>(bytes, INT32_MAX));
}
