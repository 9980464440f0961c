// File names, white space and lines in the plainest way, in single bytes and in page 932. Each
// difference is how the library differs from that; an empty text if it does not.

#ifndef VX_FUZZ_MODELS_TEXT_MODEL_H
#define VX_FUZZ_MODELS_TEXT_MODEL_H

#include <vxtext.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace text_model {

inline std::string difference(const char *what, const std::string &expected, const char *actual) {
    if (actual == expected) return "";
    return std::string(what) + " gives " + actual + ", not " + expected + "\n";
}

// A copy in memory of exactly its size, so that AddressSanitizer guards its end.
inline std::vector<char> exactCopy(const std::string &text) {
    return {text.c_str(), text.c_str() + text.size() + 1};
}

inline bool isDouble(const std::string &text, std::size_t at) {
    const auto byte = static_cast<unsigned char>(text.c_str()[at]);
    const auto next = static_cast<unsigned char>(text.c_str()[std::min(at + 1, text.size())]);
    return MB_CUR_MAX > 1 && ((byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC)) &&
           next >= 0x40 && next != 0x7F && next <= 0xFC;
}

// ---- File names

// The text with x for each byte of a double-byte character.
inline std::string singles(std::string text) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (!isDouble(text, at)) continue;
        text[at] = text[at + 1] = 'x';
        ++at;
    }
    return text;
}

// The complete characters among the first `limit` bytes.
inline std::string cut(const std::string &text, std::size_t limit = 255) {
    std::size_t length = 0;
    while (length < text.size()) {
        const std::size_t step = isDouble(text, length) ? 2 : 1;
        if (length + step > limit) break;
        length += step;
    }
    return text.substr(0, length);
}

inline constexpr auto kNowhere = std::string::npos;

inline std::string upTo(const std::string &name, std::size_t dot) {
    return cut(dot <= 255 ? name.substr(0, dot) : name);
}

inline std::string stripped(const std::string &name) {
    return upTo(name, singles(name).rfind('.'));
}

inline std::string extension(const std::string &name) {
    const std::string plain = singles(name);
    const std::size_t dot = plain.rfind('.');
    const bool extends = dot != kNowhere && plain.find_first_of("\\/", dot) == kNowhere;
    return extends ? cut(name.substr(dot + 1)) : "";
}

inline std::string baseName(const std::string &name) {
    const std::string plain = singles(name);
    for (const char separator : {'\\', '/', ':'}) {
        const std::size_t last = plain.rfind(separator);
        if (last != kNowhere) return cut(name.substr(last + 1));
    }
    return cut(name);
}

inline std::string directory(const std::string &name) {
    const std::string plain = singles(name);
    for (const char separator : {'\\', '/'}) {
        const std::size_t last = plain.rfind(separator);
        if (last <= 255) return cut(name.substr(0, last));
    }
    const std::size_t colon = plain.rfind(':');
    return colon <= 254 ? cut(name.substr(0, colon + 1)) : ".";
}

inline std::string extended(std::string name, const std::string &extension) {
    name += cut(".", 255 - name.size());
    return name + cut(extension, 255 - name.size());
}

inline std::string withoutExtension(const std::string &name) {
    const std::string plain = singles(name);
    const std::size_t backslash = plain.rfind('\\');
    const std::size_t from = backslash == kNowhere ? 0 : backslash;
    const std::size_t slash = plain.rfind('/');
    const std::size_t dot = plain.rfind('.');
    const std::size_t min = slash != kNowhere && slash > from ? slash : from;
    return upTo(name, dot != kNowhere && dot >= min ? dot : kNowhere);
}

struct PartOfName {
    const char *(*part)(const char *);
    std::string (*expected)(const std::string &);
};

inline constexpr PartOfName kParts[] = {{vxFileStripExtension, stripped},
                                        {vxFileExtension, extension},
                                        {vxFileBaseName, baseName},
                                        {vxFileDirectory, directory}};

// Each part of a name, each part of that part, and the name with another extension.
inline std::string fileNameDifference(const std::string &text, const std::string &ending) {
    const std::vector<char> name = exactCopy(text);
    const std::vector<char> end = exactCopy(ending);
    std::string all;
    for (const auto &[part, expected] : kParts) {
        all += difference("part", expected(text), part(name.data()));
        for (const auto &[inner, expectedInner] : kParts)
            all +=
                difference("part of part", expectedInner(expected(text)), inner(part(name.data())));
    }
    all += difference("add none", cut(text), vxFileAddExtension(name.data(), nullptr));
    all +=
        difference("add", extended(cut(text), ending), vxFileAddExtension(name.data(), end.data()));
    const std::string shorter = withoutExtension(text);
    all += difference("remove", shorter, vxFileReplaceExtension(name.data(), nullptr));
    all += difference("replace", extended(shorter, ending),
                      vxFileReplaceExtension(name.data(), end.data()));
    return all;
}

// ---- White space and classes

inline constexpr const char *kWhite = " \t\n\v\f\r";

inline std::string trimmedRight(std::string text, const char *what = kWhite) {
    text.erase(text.find_last_not_of(what) + 1);
    return text;
}

inline std::string trimmedLeft(const std::string &text) {
    return text.substr(std::min(text.find_first_not_of(kWhite), text.size()));
}

inline std::string trimDifference(const std::string &text) {
    std::vector<char> left = exactCopy(text);
    std::vector<char> right = left;
    vxTrimLeft(left.data());
    vxTrimRight(right.data());
    return difference("left", trimmedLeft(text), left.data()) +
           difference("right", trimmedRight(text), right.data());
}

// Whether each character is a letter, a digit or neither, with its length as the answer.
inline bool hasConsistentClasses(const std::string &text) {
    for (std::size_t at = 0; at <= text.size(); ++at) {
        const std::vector<char> rest = exactCopy(text.substr(at));
        const int alnum = vxCharIsAlnum(rest.data());
        if (alnum != std::max(vxCharIsDigit(rest.data()), vxCharIsAlpha(rest.data()))) return false;
        if (alnum != 0 && alnum != (isDouble(text, at) ? 2 : 1)) return false;
    }
    return true;
}

// ---- Lines, read into a buffer of `size` bytes

// The stream has the text, and is closed at the end.
inline std::string lineDifference(const std::string &text, FILE *stream, std::size_t size,
                                  bool trims) {
    std::vector<char> buffer(size);
    auto *read = trims ? vxReadTrimmedLine : vxReadLine;
    std::string all;
    std::string expected;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
        expected = text.substr(at, std::min(end - at, size - 1));
        at += expected.size();
        const char *line = read(buffer.data(), static_cast<int>(size), stream);
        expected.resize(std::strlen(expected.c_str()));  // a line ends at a NUL in it
        expected = trimmedRight(expected, trims ? kWhite : "\r\n");
        if (trims) expected = trimmedLeft(expected);
        all += difference("line", expected, line == buffer.data() ? line : "another buffer");
    }
    const char *none = read(buffer.data(), static_cast<int>(size), stream);
    all += none != nullptr || std::feof(stream) == 0 ? "no end after the last line\n" : "";
    all += difference("end", expected, buffer.data());  // the last line is left
    std::fclose(stream);
    return all;
}

}  // namespace text_model

#endif
