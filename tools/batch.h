// Work on many files at once, with the results in the order of the files.
#ifndef TOOLS_BATCH_H
#define TOOLS_BATCH_H

#include "inputs.h"
#include "json.h"
#include "progress_bar.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tool {

inline constexpr int kMaxJobs = 64;

struct BatchOptions {
    InputOptions inputs;
    unsigned jobs = 0;   // as many as there are processors
    bool quiet = false;  // faults only
    bool json = false;   // an object per line instead of text
};

// What is to be said of one file, kept until all files before it have had their turn.
class FileReport {
public:
    explicit FileReport(std::string path) : path_(std::move(path)) {}

    void print(const std::string &line) { text_ += line + '\n'; }
    void fault(const std::string &what) { fault(path_, what); }
    void fault(const std::string &subject, const std::string &what);
    bool good() const { return faults_.empty(); }

    // The object for this file, which is printed with its faults.
    Json json;

    void write(const BatchOptions &options, ProgressBar &bar) const;

private:
    std::string jsonLine() const;

    std::string path_, text_;
    std::vector<std::pair<std::string, std::string>> faults_;
};

// Runs on several threads at once. A fault, or an Error that it throws, makes the file a bad one.
using FileWork = std::function<void(const Input &, FileReport &, FileProgress &)>;

// Prints what the reports say, and a summary for more than a single file. Returns the exit code.
int runBatch(const BatchOptions &options, const std::vector<Input> &inputs, const FileWork &work);

}  // namespace tool

#endif
