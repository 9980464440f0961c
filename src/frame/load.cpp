// What happens when a process loads the library and when it unloads it.
//
// The loader calls the functions at the end of this file at dlopen and dlclose, on Windows at
// LoadLibrary and FreeLibrary, or at the start and exit of a process that is linked to the library.
// The library keeps no state per thread, so threads that start and end need nothing.

#include "platform/lock.h"
#include "searchpath/path_store.h"
#include "text/pinned_streams.h"

#include <ios>
#include <iterator>
#include <new>
#ifdef _WIN32
#include <windows.h>
#endif

namespace {

// An Init keeps the standard C++ streams alive. The library itself writes to none of them. Code of
// its callers that runs inside its calls may do so until the unload: an image error handler, say.
// Only the steps below destroy these objects. The destructors of static objects would run before
// `unload` in a process that loads the library by dlopen and exits without dlclose.
std::ios_base::Init *narrowStreams;
std::ios_base::Init *wideStreams;

struct Step {
    void (*start)();
    void (*stop)();  // null if there is nothing to undo
};

// Started in this order and stopped in reverse. The search paths are written back while all else
// still exists.
constexpr Step kSequence[] = {
    {[] { narrowStreams = new (std::nothrow) std::ios_base::Init; }, [] { delete narrowStreams; }},
    {[] { wideStreams = new (std::nothrow) std::ios_base::Init; }, [] { delete wideStreams; }},
    {vx::createLock, nullptr},
    {vx::streamMapBuild, vx::streamMapTearDown},
    {vx::buildPathStore, vx::tearDownPathStore},
};

void load() {
    for (const Step &step : kSequence)
        step.start();
}

void unload() {
    for (auto step = std::rbegin(kSequence); step != std::rend(kSequence); ++step) {
        if (step->stop != nullptr) step->stop();
    }
}

}  // namespace

#ifdef _WIN32

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        load();
        ::DisableThreadLibraryCalls(module);
    } else if (reason == DLL_PROCESS_DETACH) {
        unload();
    }
    return TRUE;
}

#else

[[gnu::constructor]] static void onLoad() {
    load();
}

[[gnu::destructor]] static void onUnload() {
    unload();
}

#endif
