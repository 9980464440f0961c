#include "report.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace tool {

Trouble systemTrouble(const std::string &path) {
    return {path, std::strerror(errno)};
}

std::string printable(std::string text) {
    for (char &byte : text) {
        if ((byte >= 0 && byte < ' ') || byte == 0x7F) byte = '?';
    }
    return text;
}

void complain(const std::string &subject, const std::string &what) {
    std::fprintf(stderr, "vxutil: %s: %s\n", printable(subject).c_str(), printable(what).c_str());
}

}  // namespace tool
