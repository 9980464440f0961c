// Names against a wildcard.

#include "commands.h"
#include "name_list.h"
#include "report.h"

#include <vxpattern.h>

#include <cstdio>

namespace tool {

namespace {

bool printIfMatching(const std::string &name, const char *pattern) {
    // A name ends at a NUL byte for the library: what stands behind it would go unseen.
    if (name.find('\0') != std::string::npos || vxMatchPattern(name.c_str(), pattern) == 0) {
        return false;
    }
    std::puts(printableName(name).c_str());
    return true;
}

}  // namespace

int matchNames(const std::string &wildcard, const std::vector<std::string> &names) {
    char pattern[VX_PATTERN_SIZE];
    if (vxCompileWildcard(wildcard.c_str(), pattern) == 0) {
        printError(wildcard, "no wildcard: a list without its ] or too much of it");
        return kUsage;
    }
    bool any = false;
    for (const std::string &name : names)
        any = printIfMatching(name, pattern) || any;
    if (names.empty()) {
        forEachListedName("-", '\n', [&](const std::string &name) {
            any = printIfMatching(name, pattern) || any;
        });
    }
    return any ? kDone : kFailed;
}

}  // namespace tool
