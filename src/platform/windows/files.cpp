// Files hold bytes: nothing here translates line ends.

#include "platform/files.h"

#include <algorithm>
#include <cstdio>
#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>

namespace vx {

namespace {

constexpr std::uint32_t kMaxStep = 0x7FFFFFFF;  // of one seek

// From 2 GiB on a position is negative, and only -1 is a failure.
bool isPosition(long result) {
    return result != -1;
}

}  // namespace

File File::openForReading(const char *path) {
    return File(::_open(path, _O_RDONLY | _O_BINARY | _O_NOINHERIT));
}

File File::openForWriting(const char *path) {
    return File(::_sopen(path, _O_WRONLY | _O_CREAT | _O_BINARY | _O_NOINHERIT, _SH_DENYNO, 0666));
}

int readFile(int file, void *buffer, unsigned count) {
    return ::_read(file, buffer, count);
}

int writeFile(int file, const void *buffer, unsigned count) {
    return ::_write(file, buffer, count);
}

bool seekFile(int file, std::uint32_t position) {
    const auto step = std::min(position, kMaxStep);
    if (!isPosition(::_lseek(file, static_cast<long>(step), SEEK_SET))) return false;
    const auto rest = static_cast<long>(position - step);
    return rest == 0 || isPosition(::_lseek(file, rest, SEEK_CUR));
}

std::int64_t fileLength(int file) {
    const long position = ::_lseek(file, 0, SEEK_CUR);
    const long end = ::_lseek(file, 0, SEEK_END);
    if (!isPosition(position) || !isPosition(end)) return -1;
    return seekFile(file, static_cast<std::uint32_t>(position)) ? static_cast<std::uint32_t>(end)
                                                                : -1;
}

int closeFile(int file) {
    return ::_close(file);
}

bool pathExists(const char *path) {
    struct _stat status;
    return ::_stat(path, &status) == 0;
}

bool isRegularFile(const char *path) {
    struct _stat status;
    return ::_stat(path, &status) == 0 && (status.st_mode & _S_IFMT) == _S_IFREG;
}

char *currentDirectory(std::size_t minSize) {
    return ::_getcwd(nullptr, static_cast<int>(minSize));
}

char *readFromStream(char *buffer, int size, std::FILE *stream) {
    return std::fgets(buffer, size, stream);
}

}  // namespace vx
