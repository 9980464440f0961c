/*
 * vxpool.h: very many small records of one size, from large blocks.
 *
 * An element costs no header and, as a rule, no call of malloc: it is popped off the list of freed
 * elements or cut from the current block. All blocks together can be retired for reuse at once
 * or given back. A pool also gives whole runs of elements.
 *
 *     VxPool pool;
 *     vxPoolInit(&pool, sizeof(struct Vertex), 1000);
 *     struct Vertex *vertex = vxPoolAlloc(&pool);
 *     vxPoolFree(&pool, vertex);
 *     vxPoolDestroy(&pool);
 *
 * A block is one malloc: a VxPoolBlock and, right behind it, its elements at a stride of
 * elementSize. So elements of a multiple of 16 bytes are aligned to 16, of a multiple of 8 to 8;
 * anything beyond is the caller's concern. Memory is not cleared, neither new nor reused.
 *
 * Limits. Sizes, counts and the bytes of a block, header included, are numbers from 1 to
 * 2147483647, and so is the sum of elements of a pool. A block beyond that, or of elements or a
 * count below 1, is refused in the same way as one for which there is no memory. Elements that are
 * ever freed take at least the size of a pointer.
 *
 * A pool serves one thread at a time. In a build with AddressSanitizer, elements that are not
 * handed out are poisoned, so that a use after vxPoolFree or vxPoolRecycle is reported.
 */
#ifndef VXPOOL_H
#define VXPOOL_H

#include "vxexports.h"

#include <stdint.h>

VX_BEGIN_C

/* The header of a block. */
typedef struct VxPoolBlock {
    struct VxPoolBlock *next;
    int32_t elementCount; /* the elements that the block was made for */
} VxPoolBlock;

/*
 * A plain record in the caller's storage. Its fields may be read; they are changed through the
 * functions below. It may be moved as bytes, as nothing points to it.
 */
typedef struct VxPool {
    int32_t elementSize;      /* bytes in an element, used unchanged */
    int32_t elementsPerBlock; /* elements of a block that vxPoolAlloc makes */
    VxPoolBlock *blocks;      /* in use; the current block is the head unless runs came since */
    VxPoolBlock *spareBlocks; /* retired, to be taken up again before new ones are made */
    void *freeElements;       /* freed, last first; the first word of each is the link */
    void *nextElement;        /* the next one to cut from the current block, or null */
    int32_t totalElements;    /* elements of all blocks, in use or retired */
    int32_t blockCount;       /* blocks, in use or retired */
} VxPool;

/* Sets up an empty pool. Allocates nothing; what the record held before does not matter. */
VX_API void vxPoolInit(VxPool *pool, int elementSize, int elementsPerBlock);

/*
 * One element: the one freed last; else the next of the current block; else the first of a retired
 * block, or of a new one. Null when a new block is needed and cannot be had: the pool is
 * unchanged then and a later call may succeed.
 */
VX_API void *vxPoolAlloc(VxPool *pool);

/*
 * `count` elements in a row, in a new block of their own; vxPoolAlloc goes on in the block that it
 * was in. Each of them may be freed like any other element. Null for a count below 1.
 *
 * Does not return when the block cannot be had: message 4912 of "vxmsg" with severity 5 and
 * the bytes asked for (an int, cut to the range of one) goes to vxMessageReport, and the
 * process ends with abort.
 */
VX_API void *vxPoolAllocBlock(VxPool *pool, int count);

/*
 * Takes an element of this pool back, to be handed out next. Null is ignored. Undefined for
 * anything else: an element of another pool, one that is already free, one from before the last
 * vxPoolRecycle, and elements smaller than a pointer.
 */
VX_API void vxPoolFree(VxPool *pool, void *element);

/*
 * Changes the number of elements in blocks made from now on. A block that is already there
 * serves neither more elements than it was made for nor more than the new number: lowering
 * the number leaves the rest of larger blocks unused until it is raised and the blocks are
 * retired. With a number below 1 only freed elements are handed out.
 */
VX_API void vxPoolSetBlockCount(VxPool *pool, int elementsPerBlock);

/*
 * Retires all blocks: every element handed out is void, and vxPoolAlloc takes the blocks up again,
 * oldest first. No memory is given back. Costs a step a block, whatever it holds.
 */
VX_API void vxPoolRecycle(VxPool *pool);

/* Gives all memory back. The pool is empty and may be used again; twice is harmless. */
VX_API void vxPoolDestroy(VxPool *pool);

/*
 * Forgets all blocks without giving them back: for a caller who has taken them over. The pool is
 * empty and may be used again. No block is looked at: they may be gone already. Under
 * AddressSanitizer what was not handed out stays poisoned until a block is freed.
 */
VX_API void vxPoolReset(VxPool *pool);

/*
 * Bytes held: all blocks, in use or retired, with their headers, and the record. 2147483647 if
 * there are more.
 */
VX_API int vxPoolSize(const VxPool *pool);

VX_END_C

#endif
