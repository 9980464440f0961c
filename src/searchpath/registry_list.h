// Lists in the registry: one text value an entry, named by its position.

#ifndef VX_SEARCHPATH_REGISTRY_LIST_H
#define VX_SEARCHPATH_REGISTRY_LIST_H

#include "platform/registry.h"

#include <vxsearchpath.h>

// The text values of a key, ordered by the numbers in their names and joined by the separator, as
// new heap text. Null when there are none, no such key or no memory. `failed` tells whether there
// may be more to read than what was read: the key could not be looked at, or memory ran out.
char *vxRegistryReadList(vx::RootKey root, const char *key, char separator, bool *failed);

// Replaces the values of a key by a list; makes the key when it is missing. What cannot be
// written is left out without a report.
void vxRegistryWriteList(vx::RootKey root, const char *key, const VxSearchPath *list);

#endif
