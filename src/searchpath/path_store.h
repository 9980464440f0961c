// The store of search paths: its beginning and end.

#ifndef VX_SEARCHPATH_PATH_STORE_H
#define VX_SEARCHPATH_PATH_STORE_H

namespace vx {

// Reads the lists of all levels from the environment and the registry.
void buildPathStore();

// Writes the lists of user and machine back to the registry and frees all lists.
void tearDownPathStore();

}  // namespace vx

#endif
