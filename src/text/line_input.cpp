// Lines and white space. White space is below the trail bytes of every code page. So a white byte
// is always a complete character, also when a text is read from its end.

#include "platform/files.h"

#include <vxtext.h>

#include <cctype>
#include <cstdio>
#include <cstring>

namespace {

bool isWhite(char byte) {
    return std::isspace(static_cast<unsigned char>(byte)) != 0;
}

bool endsLine(char byte) {
    return byte == '\n' || byte == '\r';
}

}  // namespace

int vxWriteNewline(FILE *stream) {
    return std::putc('\n', stream);
}

char *vxReadLine(char *buffer, int size, FILE *stream) {
    if (vx::readFromStream(buffer, size, stream) == nullptr) return nullptr;
    std::size_t length = std::strlen(buffer);
    while (length != 0 && endsLine(buffer[length - 1]))
        --length;
    buffer[length] = '\0';
    return buffer;
}

void vxTrimRight(char *text) {
    std::size_t length = std::strlen(text);
    while (length != 0 && isWhite(text[length - 1]))
        --length;
    if (text[length] != '\0') text[length] = '\0';  // else the text is not written to
}

void vxTrimLeft(char *text) {
    const char *start = text;
    while (isWhite(*start))
        ++start;
    if (start != text) std::memmove(text, start, std::strlen(start) + 1);
}

// Line ends are white space, so one trim at the end removes both.
char *vxReadTrimmedLine(char *buffer, int size, FILE *stream) {
    if (vx::readFromStream(buffer, size, stream) == nullptr) return nullptr;
    vxTrimRight(buffer);
    vxTrimLeft(buffer);
    return buffer;
}
