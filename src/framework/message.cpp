// The message services, with the catalogue built in and reports on standard error.

#include <vxframework.h>
#include <vxmessages.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

struct Message {
    int id;
    const char *text;
};

constexpr Message kCatalogue[] = {
#define VX_CATALOGUE_ENTRY(number, name, text) {number, text},
    VX_MESSAGES(VX_CATALOGUE_ENTRY)
#undef VX_CATALOGUE_ENTRY
};

// One text per thread, valid until that thread asks for the next.
thread_local char messageText[8192];

const char *find(const char *catalogue, int messageId) {
    if (catalogue == nullptr || std::strcmp(catalogue, VX_MESSAGE_CATALOGUE) != 0) return nullptr;
    for (const Message &message : kCatalogue) {
        if (message.id == messageId) return message.text;
    }
    return nullptr;
}

const char *unknown(const char *catalogue, int messageId) {
    std::snprintf(messageText, sizeof messageText, "message %d of catalogue \"%s\"", messageId,
                  catalogue != nullptr ? catalogue : "(null)");
    return messageText;
}

}  // namespace

const char *vxMessageText(const char *catalogue, int messageId) {
    const char *text = find(catalogue, messageId);
    return text != nullptr ? text : unknown(catalogue, messageId);
}

const char *vxMessageFormat(va_list arguments, const char *catalogue, int messageId) {
    const char *format = find(catalogue, messageId);
    if (format == nullptr) return unknown(catalogue, messageId);
    // The C library prints a null text argument as "(null)".
    std::vsnprintf(messageText, sizeof messageText, format, arguments);
    return messageText;
}

int vxMessageReport(const char *textOrCatalogue, int severity, int messageId, ...) {
    const char *text = textOrCatalogue != nullptr ? textOrCatalogue : "(null)";
    if (messageId != 0) {
        va_list arguments;
        va_start(arguments, messageId);
        text = vxMessageFormat(arguments, textOrCatalogue, messageId);
        va_end(arguments);
    }
    // One call writes one line, so that reports of several threads do not mix.
    char line[sizeof messageText + 32];
    const int length = std::snprintf(line, sizeof line, "vxutil: %s: %s",
                                     severity <= VX_SEVERITY_FATAL ? "fatal" : "error", text);
    if (length < 0) return -1;
    for (char *at = line; *at != '\0'; ++at) {
        if (*at == '\n' || *at == '\r') *at = ' ';
    }
    return std::fprintf(stderr, "%s\n", line) < 0 ? -1 : 0;
}
