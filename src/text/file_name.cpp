// File names taken apart. All results are in one buffer. The source of a copy may be in it too, so
// one function can be called on the result of another.

#include "platform/code_page.h"

#include <vxtext.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t kMax = 255;
char result[kMax + 1];

// Copies at most `limit` bytes of a text into the result from index `at`, as far as they fit.
// Returns the index of their end.
std::size_t put(std::size_t at, const char *text, std::size_t limit = kMax) {
    const std::size_t length = vx::prefixLength(text, std::min(limit, kMax - at));
    std::memmove(result + at, text, length);
    result[at + length] = '\0';
    return at + length;
}

const char *cutCopy(const char *text) {
    put(0, text);
    return result;
}

const char *prefix(const char *name, std::size_t length) {
    put(0, name, length);
    return result;
}

// Whether a place was found in a name, at an index of at most `max`.
bool isWithin(const char *place, const char *name, std::size_t max) {
    return place != nullptr && static_cast<std::size_t>(place - name) <= max;
}

const char *cutBefore(const char *name, const char *place) {
    return isWithin(place, name, kMax) ? prefix(name, static_cast<std::size_t>(place - name))
                                       : cutCopy(name);
}

const char *appendExtension(const char *extension) {
    if (extension != nullptr) put(put(std::strlen(result), "."), extension);
    return result;
}

const char *lastComponent(const char *name) {
    const char *backslash = vx::findLastCharacter(name, '\\');
    const char *from = backslash != nullptr ? backslash : name;
    const char *slash = vx::findLastCharacter(from, '/');
    return slash != nullptr ? slash : from;
}

}  // namespace

const char *vxFileStripExtension(const char *name) {
    if (name == nullptr) return nullptr;
    return cutBefore(name, vx::findLastCharacter(name, '.'));
}

const char *vxFileExtension(const char *name) {
    if (name == nullptr) return nullptr;
    const char *dot = vx::findLastCharacter(name, '.');
    if (dot == nullptr || vx::findLastCharacter(dot, '\\') != nullptr ||
        vx::findLastCharacter(dot, '/') != nullptr) {
        return cutCopy("");
    }
    return cutCopy(dot + 1);
}

const char *vxFileAddExtension(const char *name, const char *extension) {
    if (name == nullptr) return nullptr;
    cutCopy(name);
    return appendExtension(extension);
}

const char *vxFileReplaceExtension(const char *name, const char *extension) {
    if (name == nullptr) return nullptr;
    cutBefore(name, vx::findLastCharacter(lastComponent(name), '.'));
    return appendExtension(extension);
}

const char *vxFileBaseName(const char *name) {
    if (name == nullptr) return nullptr;
    for (const char separator : {'\\', '/', ':'}) {
        const char *last = vx::findLastCharacter(name, separator);
        if (last != nullptr) return cutCopy(last + 1);
    }
    return cutCopy(name);
}

const char *vxFileDirectory(const char *name) {
    if (name == nullptr) return nullptr;
    for (const char separator : {'\\', '/'}) {
        const char *last = vx::findLastCharacter(name, separator);
        if (isWithin(last, name, kMax)) return prefix(name, static_cast<std::size_t>(last - name));
    }
    const char *colon = vx::findLastCharacter(name, ':');
    if (isWithin(colon, name, kMax - 1)) {
        return prefix(name, static_cast<std::size_t>(colon - name) + 1);
    }
    return cutCopy(".");
}
