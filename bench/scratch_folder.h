// A folder for the time of a benchmark.

#ifndef VX_BENCH_SCRATCH_FOLDER_H
#define VX_BENCH_SCRATCH_FOLDER_H

#include <filesystem>
#include <string>
#include <unistd.h>

class Folder {
public:
    Folder() {
        path_ = std::filesystem::temp_directory_path() / ("vxbench" + std::to_string(::getpid()));
        std::filesystem::create_directories(path_);
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;
    std::string at(const std::string &name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

#endif
