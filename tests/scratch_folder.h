// A folder of a test's own, removed with the object.

#ifndef VX_TESTS_SCRATCH_FOLDER_H
#define VX_TESTS_SCRATCH_FOLDER_H

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

class ScratchFolder {
public:
    ScratchFolder() {
        const std::filesystem::path folder = std::filesystem::temp_directory_path();
        do {
            path = folder / ("vxtest" + std::to_string(std::random_device()()));
        } while (!std::filesystem::create_directory(path));
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }
    ~ScratchFolder() { std::filesystem::remove_all(path); }
    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;

    std::string at(const std::string &name) const { return (path / name).string(); }
    void write(const std::string &name, const std::string &text) const {
        std::filesystem::create_directories((path / name).parent_path());
        std::ofstream(path / name, std::ios::binary) << text;
    }
    std::string read(const std::string &name) const {
        std::ifstream in(path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    bool has(const std::string &name) const { return std::filesystem::exists(path / name); }
    void clear() const {
        for (const auto &entry : std::filesystem::directory_iterator(path))
            std::filesystem::remove_all(entry);
    }

    std::filesystem::path path;
};

#endif
