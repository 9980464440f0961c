// Reports failures through the message services, as the library does. A product that shows messages
// in a window shows these there too.
#ifndef RENDER_REPORT_H
#define RENDER_REPORT_H

#include <vxframework.h>

#include <cstring>
#include <string>

constexpr int kFailed = 6;  // severity: the operation failed

inline void reportFailure(const std::string &text) {
    vxMessageReport(text.c_str(), kFailed, 0);
}

// `reason` is an errno, or 0 if the reason is unknown.
inline void reportNotWritten(const std::string &path, int reason) {
    reportFailure("cannot write " + path + (reason != 0 ? ": " : "") +
                  (reason != 0 ? std::strerror(reason) : ""));
}

#endif
