#include "report.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <unistd.h>

namespace tool {

Error systemError(const std::string &path) {
    return {path, std::strerror(errno)};
}

namespace {

std::string shownOnTerminal(const std::string &text) {
    std::string result;
    std::mbstate_t state = {};
    for (std::size_t i = 0, length = 0; i < text.size(); i += length) {
        wchar_t character = 0;
        length = std::mbrtowc(&character, text.data() + i, text.size() - i, &state);
        bool shown = length - 1 < text.size() && std::iswprint(static_cast<std::wint_t>(character));
        if (length - 1 >= text.size()) {
            // No character. Where no locale is set, it may be one of a name all the same.
            length = 1;
            state = {};
            shown = MB_CUR_MAX == 1;
        }
        result += shown ? text.substr(i, length) : "?";
    }
    return result;
}

std::string withoutControls(std::string text) {
    for (char &byte : text) {
        if (static_cast<unsigned char>(byte) < ' ' || byte == '\x7f') byte = '?';
    }
    return text;
}

ColourUse colourUse = ColourUse::kOnTerminals;

bool isSet(const char *variable) {
    const char *value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool usesColour(int file) {
    if (colourUse != ColourUse::kOnTerminals) return colourUse == ColourUse::kAlways;
    const char *terminal = std::getenv("TERM");
    return isatty(file) != 0 && !isSet("NO_COLOR") && terminal != nullptr &&
           std::strcmp(terminal, "dumb") != 0;
}

std::string inColour(Tone tone, const std::string &text) {
    static constexpr std::array kCodes = {"\x1b[32m", "\x1b[31m", "\x1b[2m"};
    return kCodes[static_cast<std::size_t>(tone)] + text + "\x1b[0m";
}

bool isOutputTerminal() {
    static const bool isTerminal = isatty(STDOUT_FILENO) != 0;
    return isTerminal;
}

std::string onErrorLine(const std::string &text) {
    static const bool isTerminal = isatty(STDERR_FILENO) != 0;
    return isTerminal ? shownOnTerminal(text) : withoutControls(text);
}

}  // namespace

std::string printable(const std::string &text) {
    return isOutputTerminal() ? shownOnTerminal(text) : withoutControls(text);
}

std::string printableName(const std::string &text) {
    return isOutputTerminal() ? shownOnTerminal(text) : text;
}

void setColourUse(ColourUse use) {
    colourUse = use;
}

std::string toned(Tone tone, const std::string &text) {
    static const bool used = usesColour(STDOUT_FILENO);
    return used && !text.empty() ? inColour(tone, text) : text;
}

void printError(const std::string &subject, const std::string &what) {
    std::fflush(stdout);
    const std::string reason = onErrorLine(what);
    std::fprintf(stderr, "vxutil: %s: %s\n", onErrorLine(subject).c_str(),
                 usesColour(STDERR_FILENO) ? inColour(Tone::kBad, reason).c_str() : reason.c_str());
}

}  // namespace tool
