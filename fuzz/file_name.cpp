// Parts of file names, lines and white space, against a plain model. Input: texts: a name, an
// extension, and lines.

#include "fuzz/fuzz.h"

#include <vxtext.h>

#include <algorithm>
#include <cstdio>

namespace {

bool isDouble(const std::string &text, std::size_t at) {
    const auto byte = static_cast<unsigned char>(text.c_str()[at]);
    const auto next = static_cast<unsigned char>(text.c_str()[std::min(at + 1, text.size())]);
    return MB_CUR_MAX > 1 && ((byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC)) &&
           next >= 0x40 && next != 0x7F && next <= 0xFC;
}

// The text with x for each byte of a double-byte character.
std::string singles(std::string text) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (!isDouble(text, at)) continue;
        text[at] = text[at + 1] = 'x';
        ++at;
    }
    return text;
}

// The complete characters among the first `limit` bytes.
std::string cut(const std::string &text, std::size_t limit = 255) {
    std::size_t length = 0;
    while (length < text.size()) {
        const std::size_t step = isDouble(text, length) ? 2 : 1;
        if (length + step > limit) break;
        length += step;
    }
    return text.substr(0, length);
}

constexpr auto kNowhere = std::string::npos;

std::string stripped(const std::string &name, std::size_t dot) {
    return cut(dot <= 255 ? name.substr(0, dot) : name);
}

std::string extended(std::string name, const std::string &extension) {
    name += cut(".", 255 - name.size());
    return name + cut(extension, 255 - name.size());
}

std::size_t dotOfLastComponent(const std::string &plain) {
    const std::size_t backslash = plain.rfind('\\');
    const std::size_t from = backslash == kNowhere ? 0 : backslash;
    const std::size_t slash = plain.rfind('/');
    const std::size_t dot = plain.rfind('.');
    const std::size_t min = slash != kNowhere && slash > from ? slash : from;
    return dot != kNowhere && dot >= min ? dot : kNowhere;
}

std::string directory(const std::string &name, const std::string &plain) {
    for (const char separator : {'\\', '/'}) {
        const std::size_t last = plain.rfind(separator);
        if (last <= 255) return cut(name.substr(0, last));
    }
    const std::size_t colon = plain.rfind(':');
    return colon <= 254 ? cut(name.substr(0, colon + 1)) : ".";
}

std::string baseName(const std::string &name, const std::string &plain) {
    for (const char separator : {'\\', '/', ':'}) {
        const std::size_t last = plain.rfind(separator);
        if (last != kNowhere) return cut(name.substr(last + 1));
    }
    return cut(name);
}

void takeApart(const std::string &text, const std::string &ending) {
    const std::string plain = singles(text);
    const std::size_t dot = plain.rfind('.');
    const bool extends = dot != kNowhere && plain.find_first_of("\\/", dot) == kNowhere;
    const std::size_t lastDot = dotOfLastComponent(plain);
    const Exactly name(text);
    const Exactly extension(ending);
    CHECK(vxFileStripExtension(name) == stripped(text, dot));
    CHECK(vxFileExtension(name) == (extends ? cut(text.substr(dot + 1)) : ""));
    CHECK(vxFileBaseName(name) == baseName(text, plain));
    CHECK(vxFileDirectory(name) == directory(text, plain));
    CHECK(vxFileAddExtension(name, nullptr) == cut(text));
    CHECK(vxFileAddExtension(name, extension) == extended(cut(text), ending));
    CHECK(vxFileReplaceExtension(name, nullptr) == stripped(text, lastDot));
    CHECK(vxFileReplaceExtension(name, extension) == extended(stripped(text, lastDot), ending));
    const std::string base = vxFileBaseName(name);
    CHECK(vxFileStripExtension(vxFileBaseName(name)) == stripped(base, singles(base).rfind('.')));
}

constexpr const char *kWhite = " \t\n\v\f\r";

std::string trimmedRight(std::string text, const char *what = kWhite) {
    text.erase(text.find_last_not_of(what) + 1);
    return text;
}

std::string trimmedLeft(const std::string &text) {
    return text.substr(std::min(text.find_first_not_of(kWhite), text.size()));
}

void readLines(std::string text, std::size_t size, bool trims) {
    if (text.empty()) return;
    FILE *stream = ::fmemopen(text.data(), text.size(), "r");
    const Exactly buffer("", size - 1);
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
        const std::string piece = text.substr(at, std::min(end - at, size - 1));
        at += piece.size();
        auto *read = trims ? vxReadTrimmedLine : vxReadLine;
        CHECK(read(buffer, static_cast<int>(size), stream) == buffer);
        CHECK(static_cast<const char *>(buffer) ==
              (trims ? trimmedLeft(trimmedRight(piece)) : trimmedRight(piece, "\r\n")));
    }
    CHECK(vxReadLine(buffer, static_cast<int>(size), stream) == nullptr);
    std::fclose(stream);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const Texts input(data, size, 3);
    takeApart(input[0], input[1]);
    for (const std::string &text : {input[0], input[2]}) {
        const Exactly left(text);
        const Exactly right(text);
        vxTrimLeft(left);
        vxTrimRight(right);
        CHECK(trimmedLeft(text) == static_cast<const char *>(left));
        CHECK(trimmedRight(text) == static_cast<const char *>(right));
        for (std::size_t at = 0; at <= text.size(); ++at) {
            const Exactly rest(text.substr(at));
            const int alnum = vxCharIsAlnum(rest);
            CHECK(alnum == std::max(vxCharIsDigit(rest), vxCharIsAlpha(rest)));
            CHECK(alnum == 0 || alnum == (isDouble(text, at) ? 2 : 1));
        }
    }
    readLines(input[2], 2 + (input.choices >> 1 & 31), (input.choices & 64) != 0);
    return 0;
}
