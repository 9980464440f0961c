// Faults in the calls that the library makes: the n-th one fails, falls short or ends the process.
//
// A test of vx_faults_test in CMakeLists.txt is linked with faults.cpp and the library's own
// objects, by a linker that wraps the calls: those of the library go through here, and those of the
// test itself. Nothing strikes while no plan is armed.

#ifndef VX_TESTS_FAULTS_H
#define VX_TESTS_FAULTS_H

#include <functional>

namespace faults {

enum Kind : unsigned {
    kMemory = 1,  // malloc, calloc, realloc, and new that gives null
    kOpen = 2,
    kRead = 4,
    kWrite = 8,
    kSeek = 16,
    kOther = 32,  // close, status, sync, rename, links
    kNew = 64,    // new that throws
    kLock = 128,
    kFiles = kOpen | kRead | kWrite | kSeek | kOther | kLock,
    kAll = kMemory | kFiles
};

// kInterrupt: a signal comes before the call does anything.
enum class Effect { kRefuse, kShort, kInterrupt, kKill };

// From now on the n-th call of these kinds, from 1, is struck; with `onward` all behind it too.
void arm(unsigned kinds, int n, bool onward, Effect effect);

// Ends the plan and says whether it struck.
bool disarm();

// Runs a trial with the first call of these kinds struck, then the second, and so on until none is
// struck any more; and all that with every call from there on struck too. `once` says that only the
// one was struck, so that another try succeeds. Before each trial `prepare` runs without a plan.
void strikeEach(
    unsigned kinds, Effect effect, const std::function<void(bool once)> &trial,
    const std::function<void()> &prepare = [] {});

// Without faults for as long as it lives.
class Pause {
public:
    Pause();
    ~Pause();
    Pause(const Pause &) = delete;
    Pause &operator=(const Pause &) = delete;

private:
    bool armed_;
};

// Is told of each call before it is made, if it is set; allocations have no name.
extern void (*observer)(const char *name);

// Blocks of memory handed out by the wrapped calls, less those taken back.
int blocksOut();

// Calls of these kinds since the last `arm` or `resetCounts`, and the names of all but the
// allocations, each with a space behind it.
int count(unsigned kinds);
const char *trace();
void resetCounts();

}  // namespace faults

#endif
