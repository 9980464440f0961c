// Fixed-size elements from large blocks.
//
// nextElement points into the current block or to its end. That block is the head of `blocks`
// unless runs were added since; vxPoolAlloc then moves it back to the front before it continues.
// Blocks never touch, because each starts with a header, so an address belongs to one block only.

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

using vx::poison;
using vx::unpoison;

std::size_t sizeOf(const VxPool *pool) {
    return static_cast<std::size_t>(pool->elementSize);
}

char *firstElement(VxPoolBlock *block) {
    return reinterpret_cast<char *>(block + 1);
}

std::int64_t elementBytes(const VxPool *pool, std::int64_t count) {
    return count * pool->elementSize;
}

// The distance of nextElement from the first element of a block. Compared as addresses, because
// the two may belong to different blocks.
std::uintptr_t offsetIn(const VxPool *pool, VxPoolBlock *block) {
    return reinterpret_cast<std::uintptr_t>(pool->nextElement) -
           reinterpret_cast<std::uintptr_t>(firstElement(block));
}

bool isCurrent(const VxPool *pool, VxPoolBlock *block) {
    return offsetIn(pool, block) <=
           static_cast<std::uintptr_t>(elementBytes(pool, block->elementCount));
}

// Whether the next element can be cut from this block. The limit is the block's own count or the
// pool's, whichever is smaller.
bool hasRoom(const VxPool *pool, VxPoolBlock *block) {
    const int count = std::min(block->elementCount, pool->elementsPerBlock);
    return count > 0 &&
           offsetIn(pool, block) < static_cast<std::uintptr_t>(elementBytes(pool, count));
}

void poisonElements(const VxPool *pool, VxPoolBlock *block) {
    poison(firstElement(block), static_cast<std::size_t>(elementBytes(pool, block->elementCount)));
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

// Moves the current block before the runs if it has room. Each run is passed only once unless
// memory runs out: the block that the caller gets instead is put before the runs too.
bool currentToFront(VxPool *pool) {
    if (pool->nextElement == nullptr || pool->elementsPerBlock < 1) return false;
    VxPoolBlock **link = &pool->blocks;
    while (!isCurrent(pool, *link))
        link = &(*link)->next;
    if (!hasRoom(pool, *link)) return false;
    push(pool->blocks, pop(*link));
    return true;
}

// The bytes of a block with its header; 0 if no block can have such elements.
std::int64_t blockBytes(const VxPool *pool, int count) {
    if (pool->elementSize < 1) return 0;
    return elementBytes(pool, count) + static_cast<std::int64_t>(sizeof(VxPoolBlock));
}

// A block that is counted but not yet on a list; null if it cannot be made.
VxPoolBlock *newBlock(VxPool *pool, int count) {
    const std::int64_t bytes = blockBytes(pool, count);
    if (bytes < 1 || bytes > INT32_MAX || count > INT32_MAX - pool->totalElements) return nullptr;
    auto *block = static_cast<VxPoolBlock *>(std::malloc(static_cast<std::size_t>(bytes)));
    if (block == nullptr) return nullptr;
    block->elementCount = count;
    pool->totalElements += count;
    ++pool->blockCount;
    poisonElements(pool, block);
    return block;
}

// Makes a retired block or a new one the current block. False if there is none.
bool startBlock(VxPool *pool) {
    if (pool->elementsPerBlock < 1) return false;
    VxPoolBlock *block = pool->spareBlocks != nullptr ? pop(pool->spareBlocks)
                                                      : newBlock(pool, pool->elementsPerBlock);
    if (block == nullptr) return false;
    push(pool->blocks, block);
    pool->nextElement = firstElement(block);
    return true;
}

// Separate from vxPoolAlloc, so that the common path there needs no stack and makes no call.
[[gnu::noinline]] void *allocFromOtherBlock(VxPool *pool) {
    return currentToFront(pool) || startBlock(pool) ? cutNext(pool) : nullptr;
}

[[noreturn]] void endProcess(const VxPool *pool, int count) {
    const std::int64_t bytes = std::min<std::int64_t>(blockBytes(pool, count), INT32_MAX);
    vxMessageReport(VX_MESSAGE_CATALOGUE, VX_SEVERITY_FATAL, VX_MESSAGE_POOL_OUT_OF_MEMORY,
                    static_cast<int>(bytes));
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

// Links are copied as bytes, because elements may have any alignment.
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
        poisonElements(pool, block);
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
