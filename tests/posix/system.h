// What tests ask of the system, in the form of this one.

#ifndef VX_TESTS_SYSTEM_H
#define VX_TESTS_SYSTEM_H

#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

constexpr bool kFileNamesAreBytes = true;

// The character locale for the duration of a scope.
class InLocale {
public:
    explicit InLocale(const char *name) { EXPECT_NE(std::setlocale(LC_CTYPE, name), nullptr); }
    ~InLocale() { std::setlocale(LC_CTYPE, "C"); }
    InLocale(const InLocale &) = delete;
    InLocale &operator=(const InLocale &) = delete;
};

// A stream that reads a text. It cannot be written to.
inline FILE *streamOf(std::string &text) {
    return ::fmemopen(text.data(), text.size(), "r");
}

// Null removes the variable.
inline void setVariable(const char *name, const char *value) {
    value != nullptr ? ::setenv(name, value, 1) : ::unsetenv(name);
}

inline void *loadLibrary(const char *path) {
    return ::dlopen(path, RTLD_NOW | RTLD_LOCAL);
}

inline void *symbolOf(void *library, const char *name) {
    return ::dlsym(library, name);
}

// Whether the library is then gone.
inline bool unloadLibrary(void *library, const char *path) {
    ::dlclose(library);
    return ::dlopen(path, RTLD_NOW | RTLD_NOLOAD) == nullptr;
}

inline testing::KilledBySignal endedByAbort() {
    return testing::KilledBySignal(SIGABRT);
}

#endif
