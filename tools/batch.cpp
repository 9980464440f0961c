#include "batch.h"

#include "report.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <map>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace tool {

namespace {

class Batch {
public:
    Batch(const BatchOptions &options, const std::vector<Input> &inputs, const FileWork &work)
        : options_(options),
          inputs_(inputs),
          work_(work),
          bar_(inputs.empty() ? "" : inputs.front().path, inputs.size()) {}

    void run() {
        std::vector<std::thread> helpers;
        const std::size_t processors =
            std::clamp(std::thread::hardware_concurrency(), 1U, unsigned{kMaxJobs});
        const std::size_t jobs = options_.jobs != 0 ? options_.jobs : processors;
        try {
            while (helpers.size() + 1 < std::min(jobs, inputs_.size()))
                helpers.emplace_back([this] { workOnFiles(); });
        } catch (const std::system_error &) {
            // Those that started, and this thread, have to do.
        }
        workOnFiles();
        for (std::thread &helper : helpers)
            helper.join();
        bar_.clear();
    }

    std::size_t bad() const { return bad_; }

private:
    void workOnFiles() {
        for (std::size_t i = next_++; i < inputs_.size(); i = next_++) {
            FileReport report = reportOn(inputs_[i]);
            const std::lock_guard<std::mutex> lock(bar_.mutex());
            finished_.emplace(i, std::move(report));
            writeFinished();
        }
    }

    FileReport reportOn(const Input &input) {
        FileReport report(input.path);
        FileProgress progress(bar_);
        try {
            if (!input.fault.empty()) throw Error(input.path, input.fault);
            work_(input, report, progress);
        } catch (const Error &error) {
            report.fault(error.subject(), error.what());
        } catch (const std::bad_alloc &) {
            report.fault("there is not enough memory");
        } catch (const std::exception &error) {
            report.fault(error.what());
        }
        return report;
    }

    void writeFinished() {
        for (auto first = finished_.begin(); first != finished_.end() && first->first == written_;
             first = finished_.erase(first), ++written_) {
            first->second.write(options_, bar_);
            if (!first->second.good()) ++bad_;
        }
    }

    const BatchOptions &options_;
    const std::vector<Input> &inputs_;
    const FileWork &work_;
    ProgressBar bar_;
    std::atomic<std::size_t> next_ = 0;
    // Of the lock of the bar.
    std::map<std::size_t, FileReport> finished_;
    std::size_t written_ = 0, bad_ = 0;
};

}  // namespace

void FileReport::fault(const std::string &subject, const std::string &what) {
    faults_.emplace_back(subject, what);
}

std::string FileReport::jsonLine() const {
    Json object;
    setText(object, "file", path_);
    object["good"] = good();
    object.update(json.is_null() ? Json::object() : json);
    for (const auto &[subject, what] : faults_)
        object["faults"].push_back(what);
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
}

void FileReport::write(const BatchOptions &options, ProgressBar &bar) const {
    std::string text = options.json ? jsonLine() : text_;
    if (options.quiet && (good() || !options.json)) text.clear();
    if (!faults_.empty() || (!text.empty() && isatty(STDOUT_FILENO) != 0)) bar.clear();
    std::fwrite(text.data(), 1, text.size(), stdout);
    // In a log of both, the lines of a file stay together.
    if (!faults_.empty()) std::fflush(stdout);
    for (const auto &[subject, what] : faults_)
        printError(subject, what);
}

int runBatch(const BatchOptions &options, const std::vector<Input> &inputs, const FileWork &work) {
    Batch batch(options, inputs, work);
    batch.run();
    if (inputs.size() != 1 && !options.quiet && !options.json) {
        std::printf("%zu good, %zu bad\n", inputs.size() - batch.bad(), batch.bad());
    }
    return batch.bad() == 0 ? kDone : kFailed;
}

}  // namespace tool
