// The environment of the process.

#ifndef VX_PLATFORM_ENVIRONMENT_H
#define VX_PLATFORM_ENVIRONMENT_H

#include <string>

namespace vx {

// The value of a variable, or null. It belongs to the system.
const char *environmentVariable(const char *name);

// The text with each %NAME% replaced by the value of that variable. Case counts in names if it does
// for the system. The reference to an unknown variable and a lone % stay. Throws std::bad_alloc.
std::string expandEnvironment(const char *text);

}  // namespace vx

#endif
