// Files, and what the system knows of a path. The bytes of a path go to the system as they are, and
// those of a file as they are in memory. A call that a signal interrupts before it did anything is
// made again.

#ifndef VX_PLATFORM_FILES_H
#define VX_PLATFORM_FILES_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <utility>

namespace vx {

// The functions on open files take the number that the C library knows a file by, which callers
// may have opened themselves.

// The number of bytes transferred, which may fall short of `count`; -1 on failure.
int readFile(int file, void *buffer, unsigned count);
int writeFile(int file, const void *buffer, unsigned count);

// Moves to a position from the start of the file. False on failure.
bool seekFile(int file, std::uint32_t position);

// Bytes in the file, or -1.
std::int64_t fileLength(int file);

// 0, or what the C library returns on failure. The file is closed either way.
int closeFile(int file);

// A file that the library opened itself, closed with the object.
class File {
public:
    explicit File(int file = -1) noexcept : file_(file) {}
    ~File() { close(); }
    File(File &&other) noexcept : file_(other.release()) {}
    File &operator=(File &&other) noexcept {
        if (this != &other) {
            close();
            file_ = other.release();
        }
        return *this;
    }

    // Open for reading, or for writing at the start; an existing file keeps its contents. Not
    // open on failure.
    static File openForReading(const char *path);
    static File openForWriting(const char *path);

    bool isOpen() const { return file_ >= 0; }
    int get() const { return file_; }
    int release() noexcept { return std::exchange(file_, -1); }
    bool close() noexcept { return file_ < 0 || closeFile(release()) == 0; }

private:
    int file_;
};

// fgets, without the lock of the stream in a process that has no other thread: it takes time.
char *readFromStream(char *buffer, int size, std::FILE *stream);

bool pathExists(const char *path);
bool isRegularFile(const char *path);

// The current directory as new heap text, or null. The text is built in a block of `minSize` bytes
// or more.
char *currentDirectory(std::size_t minSize);

}  // namespace vx

#endif
