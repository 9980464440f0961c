// The wrapped calls of the system.

#include "faults.h"

#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using faults::isToFail;

// The linker sends the library's calls of NAME to __wrap_NAME, and __real_NAME is the C library's.
// A call that fails gives `failed`.
#define VX_WRAP(type, name, kind, failed, parameters, arguments) \
    type __real_##name parameters;                               \
    type __wrap_##name parameters {                              \
        if (isToFail(faults::kind, #name)) return failed;        \
        return __real_##name arguments;                          \
    }

// A transfer that fails may still do half of its work.
#define VX_WRAP_TRANSFER(name, kind, pointer)                        \
    ssize_t __real_##name(int file, pointer buffer, size_t size);    \
    ssize_t __wrap_##name(int file, pointer buffer, size_t size) {   \
        const bool fails = isToFail(faults::kind, #name);            \
        if (fails && !faults::isShort()) return -1;                  \
        return __real_##name(file, buffer, fails ? size / 2 : size); \
    }

// What is closed is gone, even if closing fails.
#define VX_WRAP_CLOSE(name, type)                           \
    int __real_##name(type file);                           \
    int __wrap_##name(type file) {                          \
        const bool fails = isToFail(faults::kOther, #name); \
        const int result = __real_##name(file);             \
        return fails ? -1 : result;                         \
    }

extern "C" {

VX_WRAP_TRANSFER(read, kRead, void *)
VX_WRAP_TRANSFER(write, kWrite, const void *)
VX_WRAP_CLOSE(close, int)
VX_WRAP_CLOSE(fclose, FILE *)
VX_WRAP(off_t, lseek, kSeek, -1, (int file, off_t offset, int origin), (file, offset, origin))
VX_WRAP(int, flock, kLock, -1, (int file, int operation), (file, operation))
VX_WRAP(FILE *, fopen, kOpen, nullptr, (const char *path, const char *mode), (path, mode))
VX_WRAP(char *, getcwd, kOther, nullptr, (char *out, size_t size), (out, size))
VX_WRAP(ssize_t, readlink, kOther, -1, (const char *path, char *out, size_t size),
        (path, out, size))
VX_WRAP(int, stat, kOther, -1, (const char *path, struct stat *status), (path, status))
VX_WRAP(int, fstat, kOther, -1, (int file, struct stat *status), (file, status))
VX_WRAP(int, fsync, kOther, -1, (int file), (file))
VX_WRAP(int, rename, kOther, -1, (const char *from, const char *to), (from, to))
VX_WRAP(int, link, kOther, -1, (const char *from, const char *to), (from, to))
VX_WRAP(int, unlink, kOther, -1, (const char *path), (path))
VX_WRAP(int, mkdir, kOther, -1, (const char *path, mode_t mode), (path, mode))
VX_WRAP(int, access, kOther, -1, (const char *path, int mode), (path, mode))
VX_WRAP(int, fchown, kOther, -1, (int file, uid_t owner, gid_t group), (file, owner, group))
VX_WRAP(int, fchmod, kOther, -1, (int file, mode_t mode), (file, mode))

int __real_open(const char *path, int flags, ...);
// The real one ignores a mode that the caller did not pass.
int __wrap_open(const char *path, int flags, mode_t mode) {
    return isToFail(faults::kOpen, "open") ? -1 : __real_open(path, flags, mode);
}

// Waiting takes no time here.
int __wrap_nanosleep(const timespec *, timespec *) {
    return 0;
}

}  // extern "C"
