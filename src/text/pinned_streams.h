// The map of open pinned streams and the lock of its allocator: what the library's load and unload
// do with them.

#ifndef VX_TEXT_PINNED_STREAMS_H
#define VX_TEXT_PINNED_STREAMS_H

namespace vx {

// Creates the lock, once per process. It is never destroyed.
void allocatorLockCreate();

// Creates the empty map. REQUIRES: the lock exists.
void streamMapBuild();

// Discards the entries of all streams: they stay open, and the locale stays as it is.
void streamMapTearDown();

}  // namespace vx

#endif
