#include "platform/environment.h"

#include <cstdlib>
#include <windows.h>

namespace vx {

const char *environmentVariable(const char *name) {
    return std::getenv(name);
}

std::string expandEnvironment(const char *text) {
    char none[1];
    const DWORD size = ::ExpandEnvironmentStringsA(text, none, sizeof none);
    std::string expanded(std::size_t{size} + 1, '\0');
    ::ExpandEnvironmentStringsA(text, expanded.data(), size);
    return expanded.c_str();  // its own length is an upper bound
}

}  // namespace vx
