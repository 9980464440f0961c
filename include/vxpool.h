/*
 * vxpool.h: very many small records of one size, from large blocks.
 *
 * An element costs no header and usually no call of malloc: it is popped off the list of freed
 * elements or cut from the current block. One call retires all blocks for reuse, and another one
 * frees them. A pool also allocates runs of adjacent elements.
 *
 *     VxPool pool;
 *     vxPoolInit(&pool, sizeof(struct Vertex), 1000);
 *     struct Vertex *vertex = vxPoolAlloc(&pool);
 *     vxPoolFree(&pool, vertex);
 *     vxPoolDestroy(&pool);
 *
 * A block is one malloc: a VxPoolBlock and, right after it, its elements at a stride of
 * elementSize. If elementSize is a multiple of 16, elements are aligned to 16 bytes; if it is a
 * multiple of 8, to 8. Any other alignment is up to the caller. Neither new nor reused memory is
 * cleared.
 *
 * Limits. Element sizes, counts, the bytes of a block with its header, and the total number of
 * elements of a pool are 1 to 2147483647. A block outside these limits fails as if out of memory.
 * To free elements, elementSize must be at least sizeof(void *).
 *
 * Use a pool on one thread at a time. In a build with AddressSanitizer, elements that are not in
 * use are poisoned, so that a use after vxPoolFree or vxPoolRecycle is reported.
 */
#ifndef VXPOOL_H
#define VXPOOL_H

#include "vxexports.h"

#include <stdint.h>

VX_BEGIN_C

/* The header of a block. */
typedef struct VxPoolBlock {
    struct VxPoolBlock *next;
    int32_t elementCount; /* elements that the block was made for */
} VxPoolBlock;

/*
 * A plain record in the caller's storage. Read its fields, but change them only through the
 * functions below. It may be moved as bytes, because nothing points to it.
 */
typedef struct VxPool {
    int32_t elementSize;      /* bytes in an element, used unchanged */
    int32_t elementsPerBlock; /* elements in a block that vxPoolAlloc makes */
    VxPoolBlock *blocks;      /* in use, the current block first unless runs came later */
    VxPoolBlock *spareBlocks; /* retired; reused before new ones are made */
    void *freeElements;       /* freed, last first; the first word of each is a link */
    void *nextElement;        /* next to be cut from the current block, or null */
    int32_t totalElements;    /* elements of all blocks, in use and retired */
    int32_t blockCount;       /* blocks, in use and retired */
} VxPool;

/* Sets up an empty pool. Allocates nothing; the old contents of the record do not matter. */
VX_API void vxPoolInit(VxPool *pool, int elementSize, int elementsPerBlock);

/*
 * Allocates one element: the one freed last; else the next of the current block; else the first of
 * a retired block; else the first of a new block. Returns null if a new block is needed and cannot
 * be allocated. Then the pool is unchanged and a later call may succeed.
 */
VX_API void *vxPoolAlloc(VxPool *pool);

/*
 * Allocates `count` adjacent elements in a new block of their own. Returns the first one, or null
 * if `count` is below 1. Each element may be freed like any other. vxPoolAlloc continues in its
 * current block.
 *
 * If the block cannot be allocated, the process ends: vxMessageReport gets
 * VX_MESSAGE_POOL_OUT_OF_MEMORY with VX_SEVERITY_FATAL, and then abort is called. The argument of
 * the message is an int, the bytes of the block with its header. It is at most 2147483647, and 0 if
 * elementSize is below 1.
 */
VX_API void *vxPoolAllocBlock(VxPool *pool, int count);

/*
 * Frees an element of this pool. The next vxPoolAlloc returns it again. Null is ignored. Undefined
 * for an element of another pool, one that is already free, one from before the last
 * vxPoolRecycle, and elements smaller than a pointer.
 */
VX_API void vxPoolFree(VxPool *pool, void *element);

/*
 * Changes the number of elements in blocks made from now on. An existing block provides at most as
 * many elements as it was made for, and at most the new number. So lowering the number leaves the
 * rest of larger blocks unused until it is raised and the blocks are retired. With a number below
 * 1, vxPoolAlloc returns freed elements only.
 */
VX_API void vxPoolSetBlockCount(VxPool *pool, int elementsPerBlock);

/*
 * Retires all blocks: every element becomes invalid, and vxPoolAlloc reuses the blocks, oldest
 * first. No memory is freed. The cost is linear in the number of blocks, whatever they contain.
 */
VX_API void vxPoolRecycle(VxPool *pool);

/* Frees all memory. The pool is empty and may be used again. A second call does nothing. */
VX_API void vxPoolDestroy(VxPool *pool);

/*
 * Discards all blocks without freeing them, for a caller who has taken them over. The pool is
 * empty and may be used again. No block is accessed, so they may be freed already. Under
 * AddressSanitizer, unused elements stay poisoned until their block is freed.
 */
VX_API void vxPoolReset(VxPool *pool);

/*
 * Returns the bytes in use by the pool: all blocks, retired ones too, with their headers, and the
 * record itself. At most 2147483647.
 */
VX_API int vxPoolSize(const VxPool *pool);

VX_END_C

#endif
