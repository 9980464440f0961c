// The character locale for the duration of a scope.

#ifndef VX_TESTS_IN_LOCALE_H
#define VX_TESTS_IN_LOCALE_H

#include <clocale>
#include <gtest/gtest.h>

class InLocale {
public:
    explicit InLocale(const char *name) { EXPECT_NE(std::setlocale(LC_CTYPE, name), nullptr); }
    ~InLocale() { std::setlocale(LC_CTYPE, "C"); }
    InLocale(const InLocale &) = delete;
    InLocale &operator=(const InLocale &) = delete;
};

#endif
