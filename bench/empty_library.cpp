// What loading and unloading costs when the library does nothing. It draws in the same libraries.

#include <vxframework.h>

#include <string>

std::string vxBenchEmpty(int id) {
    return vxMessageText("vxmsg", id);
}
