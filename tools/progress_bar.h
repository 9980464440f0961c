// A bar on standard error, if that is a terminal.
#ifndef TOOLS_PROGRESS_BAR_H
#define TOOLS_PROGRESS_BAR_H

#include <cstdint>
#include <string>

namespace tool {

class ProgressBar {
public:
    ProgressBar(const std::string &label, std::uint64_t total);
    ~ProgressBar() { clear(); }
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;

    void advance();

    // Takes the bar off the screen, so that a line can be written; it comes back as work goes on.
    void clear();

private:
    std::string label_;
    std::uint64_t total_, done_ = 0;
    int shown_ = -1;  // the percentage on the screen
    bool terminal_;
};

}  // namespace tool

#endif
