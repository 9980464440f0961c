// A file in memory that has a name.

#ifndef VX_FUZZ_MEMORY_FILE_H
#define VX_FUZZ_MEMORY_FILE_H

#include "fuzz/fuzz.h"

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

struct MemoryFile {
    void set(const std::uint8_t *bytes, std::size_t size) const {
        CHECK(::ftruncate(file, 0) == 0);
        CHECK(::pwrite(file, bytes, size, 0) == static_cast<ssize_t>(size));
    }
    std::string contents() const {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    int file = ::memfd_create("image", 0);
    std::string path = "/proc/self/fd/" + std::to_string(file);
};

#endif
