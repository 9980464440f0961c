// The environment of the process.

#ifndef VX_PLATFORM_ENVIRONMENT_H
#define VX_PLATFORM_ENVIRONMENT_H

#include <cstddef>
#include <cstdlib>

namespace platform {

using std::getenv;

// Replaces each %NAME% by the text of that environment variable. Case counts in names. The
// reference to an unknown variable and a lone % stay as they stand. Writes at most `size` bytes,
// the terminator included, and returns the size that the whole result needs; when that is more
// than `size`, what was written is terminated but not whole.
std::size_t ExpandEnvironmentStringsA(const char *text, char *out, std::size_t size);

}  // namespace platform

#endif
