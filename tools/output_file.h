// A file that is complete under its name, or not there.
#ifndef TOOLS_OUTPUT_FILE_H
#define TOOLS_OUTPUT_FILE_H

#include "platform/files.h"

#include <cstdint>
#include <string>

namespace tool {

inline constexpr int kMaxOutputFiles = 64;

// Is written beside its target, under a name that begins with a dot, and takes the target's place
// in one step when all of it is on the disk. Until then the target is as it was. A signal that ends
// the process removes the unfinished file; only SIGKILL leaves it behind.
//
// A file that is replaced hands its permissions down, and its owner and group as far as the user
// may give files away; but no right to run as that owner.
//
// There may be one per thread, of at most kMaxOutputFiles.
class OutputFile {
public:
    // Throws Error. A link is followed, also where it leads to no file yet; what is no regular
    // file is no target.
    explicit OutputFile(const std::string &path);
    ~OutputFile();
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;

    // A further handle of the file.
    vx::File duplicate() const;

    std::uint64_t size() const;
    // Takes out what was written, to begin again.
    void clear();

    // Throws Error, with the target as it was.
    void commit();

private:
    std::string path_, target_, temporary_;
    vx::File file_;
    char *note_ = nullptr;  // of the unfinished file, for the signals
};

}  // namespace tool

#endif
