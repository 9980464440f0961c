// Lists: what the store needs beyond the public functions.

#ifndef VX_SEARCHPATH_SEARCH_PATH_LIST_H
#define VX_SEARCHPATH_SEARCH_PATH_LIST_H

#include <vxsearchpath.h>

// vxSearchPathPrepend with an answer: false when there was no memory and nothing has changed.
bool searchPathPrepend(VxSearchPath *destination, const VxSearchPath *source);

// vxSearchPathCopy with an answer: false when nothing was copied.
bool searchPathCopy(VxSearchPath *destination, const VxSearchPath *source);

#endif
