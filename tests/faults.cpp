#include "faults.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
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

void (*observer)(const char *name);

namespace {

struct Plan {
    bool armed = false;
    unsigned kinds = 0;
    int left = 0;
    bool onward = false;
    Effect effect = Effect::kFail;
    bool hasFailed = false;
};

Plan plan;
int counts[kAll + kNew + 1];  // by kind
int blocks;
char names[4096];  // of fixed size, since this must not allocate

bool isToFail(Kind kind, const char *name = "") {
    if (observer != nullptr) observer(name);
    if (*name != '\0' && std::strlen(names) + std::strlen(name) + 2 < sizeof names) {
        std::strcat(std::strcat(names, name), " ");
    }
    ++counts[kind];
    if (!plan.armed || (plan.kinds & kind) == 0) return false;
    --plan.left;
    if (plan.onward ? plan.left > 0 : plan.left != 0) return false;
    plan.hasFailed = true;
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
    return plan.hasFailed;
}

const char *trace() {
    return names;
}

int count(unsigned kinds) {
    int sum = 0;
    for (unsigned kind = 1; kind < std::size(counts); kind *= 2)
        sum += (kinds & kind) != 0 ? counts[kind] : 0;
    return sum;
}

void resetCounts() {
    names[0] = '\0';
    std::ranges::fill(counts, 0);
}

void failEach(unsigned kinds, const std::function<void(bool once)> &trial,
              const std::function<void()> &prepare, std::initializer_list<Effect> effects) {
    const auto failEachWith = [&](Effect effect, bool onward) {
        bool hasFailed = true;
        for (int n = 1; hasFailed && !testing::Test::HasFailure(); ++n) {
            SCOPED_TRACE(testing::Message() << "call " << n << (onward ? " onward" : ""));
            prepare();
            arm(kinds, n, onward, effect);
            trial(!onward);
            hasFailed = disarm();
            EXPECT_TRUE(hasFailed || n > 1) << "no call can fail";
        }
    };
    for (const Effect effect : effects) {
        // Without transfers nothing falls short, and a signal without end is waited for.
        if (effect == Effect::kShort && (kinds & (kRead | kWrite)) == 0) continue;
        failEachWith(effect, false);
        if (effect != Effect::kInterrupt) failEachWith(effect, true);
    }
}

SuspendFaults::SuspendFaults() : armed_(plan.armed) {
    plan.armed = false;
}
SuspendFaults::~SuspendFaults() {
    plan.armed = armed_;
}

int blocksOut() {
    return blocks;
}

}  // namespace faults

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
#define VX_WRAP_TRANSFER(name, kind, pointer)                                  \
    ssize_t __real_##name(int file, pointer buffer, size_t size);              \
    ssize_t __wrap_##name(int file, pointer buffer, size_t size) {             \
        const bool fails = isToFail(faults::kind, #name);                      \
        if (fails && faults::plan.effect != faults::Effect::kShort) return -1; \
        return __real_##name(file, buffer, fails ? size / 2 : size);           \
    }

// What is closed is gone, even if closing fails.
#define VX_WRAP_CLOSE(name, type)                           \
    int __real_##name(type file);                           \
    int __wrap_##name(type file) {                          \
        const bool fails = isToFail(faults::kOther, #name); \
        const int result = __real_##name(file);             \
        return fails ? -1 : result;                         \
    }

// A block handed out counts, unless it replaces the block `old`.
#define VX_WRAP_MEMORY(type, name, old, parameters, arguments)                      \
    type __real_##name parameters;                                                  \
    type __wrap_##name parameters {                                                 \
        const bool isNew = (old) == nullptr;                                        \
        type given = isToFail(faults::kMemory) ? nullptr : __real_##name arguments; \
        faults::blocks += given != nullptr && isNew ? 1 : 0;                        \
        return given;                                                               \
    }

extern "C" {

VX_WRAP_MEMORY(void *, malloc, nullptr, (size_t size), (size))
VX_WRAP_MEMORY(void *, calloc, nullptr, (size_t count, size_t size), (count, size))
VX_WRAP_MEMORY(void *, realloc, block, (void *block, size_t size), (block, size))
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

void __real_free(void *block);
void __wrap_free(void *block) {
    faults::blocks -= block != nullptr ? 1 : 0;
    __real_free(block);
}

// Waiting takes no time here.
int __wrap_nanosleep(const timespec *, timespec *) {
    return 0;
}

}  // extern "C"

// The standard library allocates inside its own shared object, which only a replacement reaches.
void *operator new(size_t size, const std::nothrow_t &) noexcept {
    return isToFail(faults::kMemory) ? nullptr : __real_malloc(size != 0 ? size : 1);
}
void *operator new(size_t size) {
    void *block = isToFail(faults::kNew) ? nullptr : __real_malloc(size != 0 ? size : 1);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void *operator new[](size_t size) {
    return operator new(size);
}
void *operator new[](size_t size, const std::nothrow_t &none) noexcept {
    return operator new(size, none);
}

#define VX_DELETE(parameters)                    \
    void operator delete parameters noexcept {   \
        __real_free(block);                      \
    }                                            \
    void operator delete[] parameters noexcept { \
        __real_free(block);                      \
    }

VX_DELETE((void *block))
VX_DELETE((void *block, size_t))
VX_DELETE((void *block, const std::nothrow_t &))
