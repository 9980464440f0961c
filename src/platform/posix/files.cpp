#include "platform/files.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/single_threaded.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vx {

namespace {

template <typename Call>
auto retryOnEintr(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

File openFile(const char *path, int flags) {
    constexpr mode_t kPermissions = 0666;  // less the umask
    return File(retryOnEintr([=] { return ::open(path, flags | O_CLOEXEC, kPermissions); }));
}

}  // namespace

File File::openForReading(const char *path) {
    return openFile(path, O_RDONLY);
}

File File::openForWriting(const char *path) {
    return openFile(path, O_WRONLY | O_CREAT);
}

int readFile(int file, void *buffer, unsigned count) {
    return static_cast<int>(retryOnEintr([=] { return ::read(file, buffer, count); }));
}

int writeFile(int file, const void *buffer, unsigned count) {
    return static_cast<int>(retryOnEintr([=] { return ::write(file, buffer, count); }));
}

bool seekFile(int file, std::uint32_t position) {
    return ::lseek(file, position, SEEK_SET) >= 0;
}

std::int64_t fileLength(int file) {
    struct stat status;
    return ::fstat(file, &status) == 0 ? status.st_size : -1;
}

// Never tried again: the descriptor is gone whatever close returns.
int closeFile(int file) {
    return ::close(file);
}

char *readFromStream(char *buffer, int size, std::FILE *stream) {
    return __libc_single_threaded != 0 ? ::fgets_unlocked(buffer, size, stream)
                                       : std::fgets(buffer, size, stream);
}

bool pathExists(const char *path) {
    struct stat status;
    return ::stat(path, &status) == 0;
}

bool isRegularFile(const char *path) {
    struct stat status;
    return ::stat(path, &status) == 0 && S_ISREG(status.st_mode);
}

char *currentDirectory(std::size_t minSize) {
    for (std::size_t size = minSize;; size *= 2) {
        auto *text = static_cast<char *>(std::malloc(size));
        if (text == nullptr || ::getcwd(text, size) != nullptr) return text;
        const bool isTooLong = errno == ERANGE;
        std::free(text);
        if (!isTooLong) return nullptr;
    }
}

}  // namespace vx
