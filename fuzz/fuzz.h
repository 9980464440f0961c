// What the fuzz targets share: a check, the locale, and input taken apart.

#ifndef VX_FUZZ_FUZZ_H
#define VX_FUZZ_FUZZ_H

#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

[[noreturn]] inline void failCheck(const char *file, int line, const char *condition) {
    std::fprintf(stderr, "%s:%d: not so: %s\n", file, line, condition);
    std::abort();
}

// Ends the process when something is not so, which libFuzzer takes for a find.
#define CHECK(condition) ((condition) ? void() : failCheck(__FILE__, __LINE__, #condition))

// The code page of an input: 932 or single bytes.
inline void enterPage(bool doubleByte) {
    [[maybe_unused]] static const int found = ::setenv("LOCPATH", VX_LOCALES, 1);
    CHECK(std::setlocale(LC_CTYPE, doubleByte ? "ja_JP.SJIS" : "C") != nullptr);
}

// Input of texts: a byte of choices, of which the lowest bit is the page, and texts behind it with
// a NUL between each two; there are always `least` of them.
struct Texts {
    Texts(const std::uint8_t *data, std::size_t size, std::size_t least) {
        std::string_view rest(reinterpret_cast<const char *>(data), size);
        if (!rest.empty()) {
            choices = data[0];
            rest.remove_prefix(1);
        }
        for (std::size_t end = 0; end != std::string_view::npos;) {
            end = rest.find('\0');
            texts.emplace_back(rest.substr(0, end));
            rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        }
        if (texts.size() < least) texts.resize(least);
        enterPage((choices & 1) != 0);
    }
    const std::string &operator[](std::size_t index) const { return texts[index]; }

    unsigned choices = 0;
    std::vector<std::string> texts;
};

// A text in memory of just its size, for AddressSanitizer to guard.
class Exactly {
public:
    explicit Exactly(const std::string &text, std::size_t room = 0)
        : bytes_(new char[text.size() + 1 + room]) {
        text.copy(bytes_, text.size());
        bytes_[text.size()] = '\0';
    }
    ~Exactly() { delete[] bytes_; }
    Exactly(const Exactly &) = delete;
    Exactly &operator=(const Exactly &) = delete;
    operator char *() const { return bytes_; }

private:
    char *bytes_;
};

#endif
