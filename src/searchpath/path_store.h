// The store of search paths: its beginning and end.

#ifndef VX_SEARCHPATH_PATH_STORE_H
#define VX_SEARCHPATH_PATH_STORE_H

// Reads the lists of all levels from the environment and the registry.
void pathStoreBuild();

// Writes the lists of users and machine back to the registry and frees all lists.
void pathStoreTearDown();

#endif
