// The source of all random numbers of this room.

#ifndef VX_SAMPLING_DRAW_H
#define VX_SAMPLING_DRAW_H

#include <cstdlib>

// One draw in [0, 1), a multiple of 1/32768. The C library's generator gives 31 bits, of which 15
// count: more would put a sample outside its cell.
inline double draw() {
    return (std::rand() & 0x7fff) * 3.0517578125e-05;
}

#endif
