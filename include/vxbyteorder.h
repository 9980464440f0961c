/*
 * vxbyteorder.h: reversing the bytes of values and of fixed records in place.
 *
 * The same call converts a record of the other byte order to the host's, and back: two calls change
 * nothing. Only the layouts of records are defined here. What the fields mean is known to the
 * modules that own the records.
 *
 * Every function takes one pointer, to any address, and cannot fail. Values need no alignment.
 * Only the fields change: the bytes in a gap and after the last field do not. There is no state,
 * so calls on different memory may run at the same time.
 */
#ifndef VXBYTEORDER_H
#define VXBYTEORDER_H

#include "vxexports.h"

VX_BEGIN_C

/* Reverse one integer or floating-point number of 2, 4 or 8 bytes. */
VX_API void vxSwap2(void *value);
VX_API void vxSwap4(void *value);
VX_API void vxSwap8(void *value);

/* Reverse each of three adjacent values of 4 bytes. Both functions do the same. */
VX_API void vxSwapVector3(void *vector);
VX_API void vxSwapVector3Alt(void *vector);

/*
 * Reverses the fields of one record. The layout lists the fields from byte 0: 2, 4 or 8 is a field
 * of that many bytes, NxW are N fields of W bytes, and skip N are N bytes that do not change. The
 * number after the layout is the span, the bytes up to the end of the last field.
 *
 * 230 and 234 are one function, and so are 231 and 235, and 232 and 236. All others have addresses
 * of their own, even if their layouts are equal.
 */
VX_API void vxSwapRecord223(void *record); /* 2x2, 20x4, skip 12, 3x4         108 */
VX_API void vxSwapRecord224(void *record); /* 2, skip 2, 12x4                  52 */
VX_API void vxSwapRecord225(void *record); /* 4, 2                              6 */
VX_API void vxSwapRecord226(void *record); /* 6x4, 2                           26 */
VX_API void vxSwapRecord227(void *record); /* 2                                 2 */
VX_API void vxSwapRecord228(void *record); /* 2, skip 238, 2                  242 */
VX_API void vxSwapRecord229(void *record); /* 2, skip 2, 15x4, 2               66 */
VX_API void vxSwapRecord230(void *record); /* 11x4, 2                          46 */
VX_API void vxSwapRecord231(void *record); /* 11x4, 2                          46 */
VX_API void vxSwapRecord232(void *record); /* 11x4                             44 */
VX_API void vxSwapRecord233(void *record); /* 10x4, 2, skip 6, 9x8            120 */
VX_API void vxSwapRecord234(void *record); /* 11x4, 2                          46 */
VX_API void vxSwapRecord235(void *record); /* 11x4, 2                          46 */
VX_API void vxSwapRecord236(void *record); /* 11x4                             44 */
VX_API void vxSwapRecord237(void *record); /* 16x4, 2                          66 */
VX_API void vxSwapRecord238(void *record); /* 18x4, 2                          74 */
VX_API void vxSwapRecord239(void *record); /* 18x4                             72 */
VX_API void vxSwapRecord240(void *record); /* 13x4, 2, skip 2, 9x8            128 */
VX_API void vxSwapRecord241(void *record); /* 2, skip 2, 18x4, 2, skip 2, 9x8 152 */
VX_API void vxSwapRecord242(void *record); /* 2, skip 2, 19x4, 2               82 */
VX_API void vxSwapRecord243(void *record); /* 2, skip 2, 20x4, 2               86 */
VX_API void vxSwapRecord244(void *record); /* 2, skip 2, 20x4                  84 */
VX_API void vxSwapRecord245(void *record); /* 2x2, 14x4                        60 */
VX_API void vxSwapRecord246(void *record); /* 6x4                              24 */
VX_API void vxSwapRecord247(void *record); /* 9x4                              36 */
VX_API void vxSwapRecord248(void *record); /* 6x4                              24 */
VX_API void vxSwapRecord249(void *record); /* 3x4                              12 */
VX_API void vxSwapRecord250(void *record); /* 6x4                              24 */
VX_API void vxSwapRecord251(void *record); /* 3x4                              12 */
VX_API void vxSwapRecord252(void *record); /* 2, skip 2, 4x4, 5x2              30 */
VX_API void vxSwapRecord253(void *record); /* 4x2, 4, 2                        14 */
VX_API void vxSwapRecord254(void *record); /* 8x2, 3x4                         28 */
VX_API void vxSwapRecord255(void *record); /* 8x2, 3x4                         28 */
VX_API void vxSwapRecord256(void *record); /* 2, skip 2, 9x4                   40 */
VX_API void vxSwapRecord257(void *record); /* 6x4                              24 */
VX_API void vxSwapRecord258(void *record); /* 11x4                             44 */

VX_END_C

#endif
