// What happens when the library comes into a process and when it leaves.
//
// The loader calls the two functions at the end of this file at dlopen and dlclose, or at the
// start and exit of a process that is linked to the library. The library keeps no state for a
// thread, so threads that come and go need nothing.

#include "searchpath/path_store.h"
#include "text/allocator_lock.h"
#include "text/pinned_streams.h"

#include <ios>
#include <iterator>
#include <new>

namespace {

// The standard streams stand as long as somebody holds an Init. The library holds two, one for
// the narrow and one for the wide streams, so that reports written while the store goes down
// still find them, whatever order the rest of the process ends in.
class StandardStreams {
public:
    void hold() { ::new (static_cast<void *>(storage_)) std::ios_base::Init; }
    void release() { std::launder(reinterpret_cast<std::ios_base::Init *>(storage_))->~Init(); }

private:
    alignas(std::ios_base::Init) unsigned char storage_[sizeof(std::ios_base::Init)];
};

StandardStreams narrowStreams;
StandardStreams wideStreams;

struct Step {
    void (*start)();
    void (*stop)();  // null where nothing is undone
};

// Started in this order and stopped in the reverse one: the search paths are written back while
// everything else still stands.
constexpr Step kSequence[] = {
    {[] { narrowStreams.hold(); }, [] { narrowStreams.release(); }},
    {[] { wideStreams.hold(); }, [] { wideStreams.release(); }},
    {allocatorLockCreate, nullptr},
    {streamMapBuild, streamMapTearDown},
    {vx::buildPathStore, vx::tearDownPathStore},
};

[[gnu::constructor]] void load() {
    for (const Step &step : kSequence)
        step.start();
}

[[gnu::destructor]] void unload() {
    for (auto step = std::rbegin(kSequence); step != std::rend(kSequence); ++step) {
        if (step->stop != nullptr) step->stop();
    }
}

}  // namespace
