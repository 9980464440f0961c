// The source of all random numbers of the sampling module.

#ifndef VX_SAMPLING_RANDOM_H
#define VX_SAMPLING_RANDOM_H

#include <cstdlib>

namespace vx {

// A random number in [0, 1), a multiple of 1/32768. Only 15 bits of the C library's 31 count: more
// would put a sample outside its cell.
inline double draw() {
    return (std::rand() & 0x7fff) * 3.0517578125e-05;
}

}  // namespace vx

#endif
