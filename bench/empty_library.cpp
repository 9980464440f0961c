// What loading and unloading costs when the library does nothing. It draws in the same C++ runtime.

#include <string>

std::string vxBenchEmpty(const char *text) {
    return text;
}
