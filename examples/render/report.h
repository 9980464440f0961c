// What went wrong is said through the message services, as the library itself does: a product that
// shows messages in a window gets all of them there.
#ifndef RENDER_REPORT_H
#define RENDER_REPORT_H

#include <vxframework.h>

#include <cstring>
#include <string>

constexpr int kFailed = 6;  // the severity of what an operation failed on

inline void reportFailure(const std::string &text) {
    vxMessageReport(text.c_str(), kFailed, 0);
}

// The reason is an errno, 0 for none that is known.
inline void reportNotWritten(const std::string &path, int reason) {
    reportFailure("cannot write " + path + (reason != 0 ? ": " : "") +
                  (reason != 0 ? std::strerror(reason) : ""));
}

// A message of the library's own catalogue, without arguments.
inline void reportFailure(int messageId) {
    vxMessageReport("vxmsg", kFailed, messageId);
}

#endif
