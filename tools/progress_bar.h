// One bar for all files of a run, on standard error.
#ifndef TOOLS_PROGRESS_BAR_H
#define TOOLS_PROGRESS_BAR_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

namespace tool {

// Shows itself only on a terminal that can move its cursor, as wide as that is, and ten times a
// second at most: a slow line to a remote machine must not hold up the work.
class ProgressBar {
public:
    // A single file is shown by its name.
    ProgressBar(const std::string &name, std::size_t files);
    ~ProgressBar() { clear(); }
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;

    // Removes the bar, so that a line can be written. It returns as the work continues.
    void clear();

    // Held by whoever draws or writes lines.
    std::mutex &mutex() { return mutex_; }

private:
    friend class FileProgress;

    void add(std::uint64_t units);
    void draw();

    std::mutex mutex_;
    std::string name_;
    std::size_t files_;
    std::atomic<std::uint64_t> done_ = 0;  // in units, of which each file has the same number
    std::atomic<std::chrono::steady_clock::time_point> nextDrawing_;
    bool terminal_, shown_ = false;
};

// The part of one file, used by one thread.
class FileProgress {
public:
    explicit FileProgress(ProgressBar &bar) : bar_(bar) {}
    ~FileProgress();
    FileProgress(const FileProgress &) = delete;
    FileProgress &operator=(const FileProgress &) = delete;

    void start(std::uint64_t steps) { steps_ = steps; }
    void advance();

private:
    ProgressBar &bar_;
    std::uint64_t steps_ = 0, done_ = 0, units_ = 0;
};

}  // namespace tool

#endif
