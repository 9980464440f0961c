// What tests ask of the system, in the form of this one.

#ifndef VX_TESTS_SYSTEM_H
#define VX_TESTS_SYSTEM_H

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <io.h>
#include <mbctype.h>
#include <string>
#include <unistd.h>
#include <windows.h>

// Files hold bytes, also where a test opens them itself.
inline const int fileMode = *::__p__fmode() = _O_BINARY;

constexpr bool kFileNamesAreBytes = false;

// The character locale and the code page for the duration of a scope.
class InLocale {
public:
    explicit InLocale(const std::string &name) {
        struct Locale {
            const char *name, *here;
            int page;
        };
        for (const Locale &locale : {Locale{"C", "C", _MB_CP_SBCS},
                                     {"de_DE.UTF-8", "C", 65001},
                                     {"de_DE.ISO-8859-1", "German_Germany.1252", 1252},
                                     {"ja_JP.SJIS", "Japanese_Japan.932", 932},
                                     {"zh_CN.GBK", "Chinese_China.936", 936},
                                     {"ko_KR.EUC-KR", "Korean_Korea.949", 949},
                                     {"zh_TW.BIG5", "Chinese_Taiwan.950", 950}}) {
            if (name != locale.name) continue;
            EXPECT_NE(std::setlocale(LC_CTYPE, locale.here), nullptr) << name;
            EXPECT_EQ(::_setmbcp(locale.page), 0) << name;
            return;
        }
        ADD_FAILURE() << "no locale " << name;
    }
    ~InLocale() {
        std::setlocale(LC_CTYPE, "C");
        ::_setmbcp(_MB_CP_SBCS);
    }
    InLocale(const InLocale &) = delete;
    InLocale &operator=(const InLocale &) = delete;
};

inline int pipe(int *ends) {
    return ::_pipe(ends, 4096, _O_BINARY);
}

// A stream that reads a text. It cannot be written to.
inline FILE *streamOf(const std::string &text) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    EXPECT_EQ(::_write(ends[1], text.data(), static_cast<unsigned>(text.size())), text.size());
    ::_close(ends[1]);
    return ::_fdopen(ends[0], "rb");
}

// Null removes the variable.
inline void setVariable(const char *name, const char *value) {
    ::_putenv_s(name, value != nullptr ? value : "");
}

inline void *loadLibrary(const char *path) {
    return ::LoadLibraryA(path);
}

inline void *symbolOf(void *library, const char *name) {
    return reinterpret_cast<void *>(::GetProcAddress(static_cast<HMODULE>(library), name));
}

// Whether the library is then gone.
inline bool unloadLibrary(void *library, const char *path) {
    ::FreeLibrary(static_cast<HMODULE>(library));
    return ::GetModuleHandleA(path) == nullptr;
}

inline testing::ExitedWithCode endedByAbort() {
    return testing::ExitedWithCode(3);
}

#endif
