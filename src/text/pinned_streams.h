// The map of open pinned streams, from its place in the life of the library.

#ifndef VX_TEXT_PINNED_STREAMS_H
#define VX_TEXT_PINNED_STREAMS_H

// Makes the map, empty. The allocator lock exists already.
void streamMapBuild();

// Forgets all streams: they stay open, and the locale stays as it is.
void streamMapTearDown();

#endif
