#include "faults.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <iterator>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace faults {

namespace {

struct Plan {
    bool armed = false;
    unsigned kinds = 0;
    int left = 0;
    bool onward = false;
    Effect effect = Effect::kRefuse;
    bool struck = false;
};

Plan plan;
int counts[8];  // a kind each
int blocks;
char names[4096];  // of fixed size, since this must not allocate

bool strikes(Kind kind, const char *name = "") {
    if (*name != '\0' && std::strlen(names) + std::strlen(name) + 2 < sizeof names) {
        std::strcat(std::strcat(names, name), " ");
    }
    for (unsigned i = 0; i < std::size(counts); ++i) {
        if (kind == 1U << i) ++counts[i];
    }
    if (!plan.armed || (plan.kinds & kind) == 0) return false;
    --plan.left;
    if (plan.onward ? plan.left > 0 : plan.left != 0) return false;
    plan.struck = true;
    if (plan.effect == Effect::kKill) ::raise(SIGKILL);
    errno = kind == kMemory || kind == kNew ? ENOMEM : EIO;
    if (plan.effect == Effect::kInterrupt) errno = EINTR;
    return true;
}

}  // namespace

void arm(unsigned kinds, int n, bool onward, Effect effect) {
    resetCounts();
    plan = {true, kinds, n, onward, effect, false};
}

bool disarm() {
    plan.armed = false;
    return plan.struck;
}

const char *trace() {
    return names;
}

int count(unsigned kinds) {
    int sum = 0;
    for (unsigned i = 0; i < std::size(counts); ++i)
        sum += (kinds & 1U << i) != 0 ? counts[i] : 0;
    return sum;
}

void resetCounts() {
    names[0] = '\0';
    for (int &number : counts)
        number = 0;
}

void strikeEach(unsigned kinds, Effect effect, const std::function<void(bool once)> &trial,
                const std::function<void()> &prepare) {
    for (const bool onward : {false, true}) {
        if (onward && effect == Effect::kInterrupt) break;  // a signal without end is waited for
        bool struck = true;
        for (int n = 1; struck && !testing::Test::HasFailure(); ++n) {
            SCOPED_TRACE(testing::Message() << "call " << n << (onward ? " onward" : ""));
            prepare();
            arm(kinds, n, onward, effect);
            trial(!onward);
            struck = disarm();
            EXPECT_TRUE(struck || n > 1) << "there is no call to strike";
        }
    }
}

Pause::Pause() : armed_(plan.armed) {
    plan.armed = false;
}
Pause::~Pause() {
    plan.armed = armed_;
}

int blocksOut() {
    return blocks;
}

namespace {

// Memory, or null when it is struck.
template <typename Take>
void *taken(Take take) {
    void *block = strikes(kMemory) ? nullptr : take();
    blocks += block != nullptr ? 1 : 0;
    return block;
}

// What a struck transfer still does: nothing, or half.
template <typename Transfer>
ssize_t transferred(Kind kind, const char *name, size_t size, Transfer transfer) {
    if (!strikes(kind, name)) return transfer(size);
    return plan.effect == Effect::kShort ? transfer(size / 2) : -1;
}

}  // namespace

}  // namespace faults

using faults::strikes;

// The linker sends the library's calls of NAME to __wrap_NAME, and __real_NAME is the C library's.
extern "C" {

void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *block, size_t size);
void __real_free(void *block);
int __real_open(const char *path, int flags, ...);
ssize_t __real_read(int file, void *buffer, size_t size);
ssize_t __real_write(int file, const void *buffer, size_t size);
off_t __real_lseek(int file, off_t offset, int origin);
int __real_close(int file);

void *__wrap_malloc(size_t size) {
    return faults::taken([=] { return __real_malloc(size); });
}

void *__wrap_calloc(size_t count, size_t size) {
    return faults::taken([=] { return __real_calloc(count, size); });
}

void *__wrap_realloc(void *block, size_t size) {
    if (strikes(faults::kMemory)) return nullptr;
    void *grown = __real_realloc(block, size);
    faults::blocks += block == nullptr && grown != nullptr ? 1 : 0;
    return grown;
}

void __wrap_free(void *block) {
    faults::blocks -= block != nullptr ? 1 : 0;
    __real_free(block);
}

int __wrap_open(const char *path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const int mode = (flags & O_CREAT) != 0 ? va_arg(arguments, int) : 0;
    va_end(arguments);
    return strikes(faults::kOpen, "open") ? -1 : __real_open(path, flags, mode);
}

ssize_t __wrap_read(int file, void *buffer, size_t size) {
    return faults::transferred(faults::kRead, "read", size,
                               [&](size_t some) { return __real_read(file, buffer, some); });
}

ssize_t __wrap_write(int file, const void *buffer, size_t size) {
    return faults::transferred(faults::kWrite, "write", size,
                               [&](size_t some) { return __real_write(file, buffer, some); });
}

off_t __wrap_lseek(int file, off_t offset, int origin) {
    return strikes(faults::kSeek, "lseek") ? -1 : __real_lseek(file, offset, origin);
}

// A close that fails has closed all the same.
int __wrap_close(int file) {
    const bool struck = strikes(faults::kOther, "close");
    const int result = __real_close(file);
    return struck ? -1 : result;
}

int __real_flock(int file, int operation);
int __wrap_flock(int file, int operation) {
    return strikes(faults::kLock, "flock") ? -1 : __real_flock(file, operation);
}

// Waiting takes no time here.
int __wrap_nanosleep(const timespec *, timespec *) {
    return 0;
}

// As with close, the stream is gone whatever the result.
int __real_fclose(FILE *stream);
int __wrap_fclose(FILE *stream) {
    const bool struck = strikes(faults::kOther, "fclose");
    const int result = __real_fclose(stream);
    return struck ? EOF : result;
}

#define VX_WRAP_POINTER(type, kind, name, parameters, arguments)                 \
    type __real_##name parameters;                                               \
    type __wrap_##name parameters {                                              \
        return strikes(faults::kind, #name) ? nullptr : __real_##name arguments; \
    }

VX_WRAP_POINTER(FILE *, kOpen, fopen, (const char *path, const char *mode), (path, mode))
VX_WRAP_POINTER(char *, kOther, realpath, (const char *path, char *out), (path, out))
VX_WRAP_POINTER(char *, kOther, getcwd, (char *out, size_t size), (out, size))

ssize_t __real_readlink(const char *path, char *out, size_t size);
ssize_t __wrap_readlink(const char *path, char *out, size_t size) {
    return strikes(faults::kOther, "readlink") ? -1 : __real_readlink(path, out, size);
}

#define VX_WRAP(name, parameters, arguments)                                  \
    int __real_##name parameters;                                             \
    int __wrap_##name parameters {                                            \
        return strikes(faults::kOther, #name) ? -1 : __real_##name arguments; \
    }

VX_WRAP(stat, (const char *path, struct stat *status), (path, status))
VX_WRAP(fstat, (int file, struct stat *status), (file, status))
VX_WRAP(fsync, (int file), (file))
VX_WRAP(rename, (const char *from, const char *to), (from, to))
VX_WRAP(link, (const char *from, const char *to), (from, to))
VX_WRAP(unlink, (const char *path), (path))
VX_WRAP(mkdir, (const char *path, mode_t mode), (path, mode))
VX_WRAP(access, (const char *path, int mode), (path, mode))
VX_WRAP(fchown, (int file, uid_t owner, gid_t group), (file, owner, group))
VX_WRAP(fchmod, (int file, mode_t mode), (file, mode))

}  // extern "C"

// The standard library allocates inside its own shared object, which only a replacement reaches.
void *operator new(size_t size) {
    void *block = strikes(faults::kNew) ? nullptr : __real_malloc(size != 0 ? size : 1);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void *operator new(size_t size, const std::nothrow_t &) noexcept {
    return strikes(faults::kMemory) ? nullptr : __real_malloc(size != 0 ? size : 1);
}
void *operator new[](size_t size) {
    return operator new(size);
}
void *operator new[](size_t size, const std::nothrow_t &none) noexcept {
    return operator new(size, none);
}
void operator delete(void *block) noexcept {
    __real_free(block);
}
void operator delete(void *block, size_t) noexcept {
    __real_free(block);
}
void operator delete[](void *block) noexcept {
    __real_free(block);
}
void operator delete[](void *block, size_t) noexcept {
    __real_free(block);
}
