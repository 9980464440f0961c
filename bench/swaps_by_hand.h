// Records swapped by hand with the compiler's intrinsics, in a shared library of their own.

#ifndef VX_BENCH_SWAPS_BY_HAND_H
#define VX_BENCH_SWAPS_BY_HAND_H

void hand229(void *record);
void hand241(void *record);
void hand249(void *record);
void hand252(void *record);

#endif
