// Faults in the calls that the library makes: the n-th one fails, falls short or ends the process.
//
// A test that is linked with vx_faults and uses the library's own objects has its calls of the C
// library go through here. Nothing strikes while no plan is armed.

#ifndef VX_TESTS_FAULTS_H
#define VX_TESTS_FAULTS_H

#include <cstddef>

namespace faults {

enum Kind : unsigned {
    kMemory = 1,  // malloc and calloc
    kOpen = 2,
    kRead = 4,
    kWrite = 8,
    kSeek = 16,
    kOther = 32,  // close, status, sync, rename, locks, links
    kNew = 64,    // operator new, also that of the test itself
    kFiles = kOpen | kRead | kWrite | kSeek | kOther,
    kAll = kMemory | kFiles
};

enum class Effect { kRefuse, kShort, kKill };

// From now on the n-th call of these kinds, from 1, is struck; with `onward` all behind it too.
void arm(unsigned kinds, int n, bool onward, Effect effect);

// Ends the plan and says whether it struck.
bool disarm();

// Calls of these kinds since the last `arm` or `resetCounts`.
int count(unsigned kinds);
void resetCounts();

}  // namespace faults

#endif
