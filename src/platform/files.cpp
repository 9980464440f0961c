#include "platform/files.h"

#include <cassert>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace platform {

namespace {

// A call that a signal cut short before it did anything is made again.
template <typename Call>
auto again(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

}  // namespace

int _open(const char *name, int flags) {
    return _sopen(name, flags, _SH_DENYNO, 0);
}

int _sopen(const char *name, int flags, [[maybe_unused]] int sharing, int permissions) {
    assert((flags & ~(_O_WRONLY | _O_CREAT | _O_BINARY)) == 0 && sharing == _SH_DENYNO);
    int how = O_CLOEXEC | ((flags & _O_WRONLY) != 0 ? O_WRONLY : O_RDONLY);
    if ((flags & _O_CREAT) != 0) how |= O_CREAT;
    return again([=] { return ::open(name, how, permissions); });
}

// Not again on EINTR: the descriptor is gone whatever close says.
int _close(int file) {
    return ::close(file);
}

int _read(int file, void *buffer, unsigned count) {
    return static_cast<int>(again([=] { return ::read(file, buffer, count); }));
}

int _write(int file, const void *buffer, unsigned count) {
    return static_cast<int>(again([=] { return ::write(file, buffer, count); }));
}

long _lseek(int file, long position, int origin) {
    return ::lseek(file, position, origin);
}

long _filelength(int file) {
    Stat status;
    return ::fstat(file, &status) == 0 ? status.st_size : -1;
}

int _stat(const char *path, Stat *result) {
    return ::stat(path, result);
}

char *_getcwd([[maybe_unused]] char *buffer, std::size_t least) {
    assert(buffer == nullptr);
    for (std::size_t size = least;; size *= 2) {
        auto *text = static_cast<char *>(std::malloc(size));
        if (text == nullptr || ::getcwd(text, size) != nullptr) return text;
        const bool tooLong = errno == ERANGE;
        std::free(text);
        if (!tooLong) return nullptr;
    }
}

}  // namespace platform
