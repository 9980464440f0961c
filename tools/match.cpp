// Names against a wildcard.

#include "commands.h"
#include "report.h"

#include <vxpattern.h>

#include <cstdio>
#include <cstdlib>

namespace tool {

namespace {

bool printIfMatching(const std::string &name, const char *pattern) {
    // A name ends at a NUL byte for the library: what stands behind it would go unseen.
    if (name.find('\0') != std::string::npos || vxMatchPattern(name.c_str(), pattern) == 0) {
        return false;
    }
    std::puts(name.c_str());
    return true;
}

struct Line {
    Line() = default;
    ~Line() { std::free(text); }
    Line(const Line &) = delete;
    Line &operator=(const Line &) = delete;

    char *text = nullptr;
    std::size_t room = 0;
};

bool printMatchingLines(const char *pattern) {
    bool any = false;
    Line line;
    for (ssize_t length = 0; (length = getline(&line.text, &line.room, stdin)) >= 0;) {
        std::string name(line.text, static_cast<std::size_t>(length));
        if (name.ends_with('\n')) name.pop_back();
        any = printIfMatching(name, pattern) || any;
    }
    // A stream of the language's library does not tell a failure from the end.
    if (std::feof(stdin) == 0) throw systemError("standard input");
    return any;
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
    if (names.empty()) any = printMatchingLines(pattern);
    return any ? kDone : kFailed;
}

}  // namespace tool
