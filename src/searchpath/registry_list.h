// Lists in the registry: one text value per entry, named by its position.

#ifndef VX_SEARCHPATH_REGISTRY_LIST_H
#define VX_SEARCHPATH_REGISTRY_LIST_H

#include "platform/registry.h"

#include <vxsearchpath.h>

#include <string>

namespace vx {

// Both throw std::bad_alloc.

// The text values of a key, ordered by the numbers in their names, with semicolons between them.
std::string readRegistryList(Registry &registry, const std::string &path);

// Replaces the values of a key by a list and adds the key if it is missing.
SaveResult writeRegistryList(Registry &registry, const std::string &path, const VxSearchPath *list);

}  // namespace vx

#endif
