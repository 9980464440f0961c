// Path text by its definition.

#ifndef VX_FUZZ_MODELS_PATH_MODEL_H
#define VX_FUZZ_MODELS_PATH_MODEL_H

#include <cctype>
#include <cstdlib>
#include <string>

inline bool isSeparatorPlainly(char byte) {
    return byte == '/' || byte == '\\';
}

inline bool isAbsolutePlainly(const std::string &text) {
    if (text.empty()) return false;
    return isSeparatorPlainly(text[0]) || (text.size() > 1 && text[1] == ':' &&
                                           std::isalpha(static_cast<unsigned char>(text[0])) != 0);
}

// Each step on the whole text, from the front again after each change; in single bytes or page 932.
inline std::string normalizedPlainly(std::string text) {
    if (text.starts_with("\\\\") && (text.size() == 2 || text[2] != '\\')) {
        while (!text.empty() && isSeparatorPlainly(text.back()))
            text.pop_back();
        return text;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
        const bool lead =
            MB_CUR_MAX > 1 && ((byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC));
        if (lead && next >= 0x40 && next != 0x7F && next <= 0xFC) {
            ++i;
        } else if (byte == '\\') {
            text[i] = '/';
        }
    }
    std::size_t at;
    while ((at = text.find("//")) != std::string::npos)
        text.erase(at, 1);
    while ((at = text.find("/./")) != std::string::npos)
        text.erase(at, 2);
    for (;;) {
        std::size_t start = 0;
        while (text.compare(start, 3, "/..") == 0)
            start += 3;
        at = text.find("/../", start);
        if (at == std::string::npos) break;
        const std::size_t slash = at == 0 ? std::string::npos : text.rfind('/', at - 1);
        const std::size_t component = slash == std::string::npos ? 0 : slash + 1;
        text.erase(component, at + 4 - component);
    }
    while (text.compare(0, 4, "/../") == 0)
        text.erase(0, 3);
    if (text.size() == 3 && std::isalpha(static_cast<unsigned char>(text[0])) != 0 &&
        text.substr(1) == ":/") {
        return text;
    }
    while (!text.empty() && text.back() == '/')
        text.pop_back();
    return text;
}

#endif
