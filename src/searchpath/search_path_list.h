// Lists: what the store needs beyond the public functions.

#ifndef VX_SEARCHPATH_SEARCH_PATH_LIST_H
#define VX_SEARCHPATH_SEARCH_PATH_LIST_H

#include <vxsearchpath.h>

namespace vx {

// vxSearchPathCreate that says whether relative entries had to be dropped.
VxSearchPath *createSearchPath(const char *text, bool *isComplete);

// vxSearchPathPrepend and vxSearchPathCopy with an answer. False without memory, and for a copy
// also where there is nothing to copy; nothing has changed then.
bool prependSearchPath(VxSearchPath *destination, const VxSearchPath *source);
bool copySearchPath(VxSearchPath *destination, const VxSearchPath *source);

}  // namespace vx

#endif
