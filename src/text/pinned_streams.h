// The map of open pinned streams: what the library's load and unload do with it.

#ifndef VX_TEXT_PINNED_STREAMS_H
#define VX_TEXT_PINNED_STREAMS_H

namespace vx {

// Creates the empty map. REQUIRES: the lock of the process exists.
void streamMapBuild();

// Discards the entries of all streams: they stay open, and the locale stays as it is.
void streamMapTearDown();

}  // namespace vx

#endif
