// Faults in the calls that the library makes: the n-th call fails, falls short or ends the process.
//
// Such a test is linked with faults.cpp, perhaps with file_faults.cpp, and with the library's own
// objects. The linker sends their calls of the C library through here, and those of the test
// itself. Nothing fails while no plan is armed.

#ifndef VX_TESTS_FAULTS_H
#define VX_TESTS_FAULTS_H

#include <functional>
#include <initializer_list>

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

// kShort: a transfer does half of its work; other calls fail. kInterrupt: a signal comes before the
// call does anything.
enum class Effect { kFail, kShort, kInterrupt, kKill };
constexpr int kKilled = 99;  // the exit code of a process that such a call ended

// From now on the n-th call of these kinds, from 1, has the effect; with `onward` so have all after
// it.
void arm(unsigned kinds, int n = 1, bool onward = true, Effect effect = Effect::kFail);

// For the wrapped calls: whether this one is to fail, and whether it may do half of its work.
bool isToFail(Kind kind, const char *name = "");
bool isShort();

// Ends the plan and says whether a call had its effect.
bool disarm();

// Runs a trial in which the first call of these kinds fails, then the second, and so on until none
// fails any more; and all that with every later call failing too. `once` says that only one call
// failed, so that another try succeeds. Before each trial `prepare` runs without a plan.
void failEach(
    unsigned kinds, const std::function<void(bool once)> &trial,
    const std::function<void()> &prepare = [] {},
    std::initializer_list<Effect> effects = {Effect::kFail, Effect::kShort});

// No call fails as long as it exists.
class SuspendFaults {
public:
    SuspendFaults();
    ~SuspendFaults();
    SuspendFaults(const SuspendFaults &) = delete;
    SuspendFaults &operator=(const SuspendFaults &) = delete;

private:
    bool armed_;
};

// Is told of each call before it is made, if it is set; allocations have no name.
extern void (*observer)(const char *name);

// Blocks of memory handed out by the wrapped calls, less those taken back.
int blocksOut();

// Calls of these kinds since the last `arm` or `resetCounts`, and the names of all but the
// allocations, each with a space after it.
int count(unsigned kinds);
const char *trace();
void resetCounts();

}  // namespace faults

#endif
