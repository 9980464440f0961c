#include "platform/environment.h"

#include <cstring>
#include <string_view>
#include <unistd.h>

namespace platform {

namespace {

// As getenv, for a name without a terminator: looking it up must not allocate.
const char *valueOf(std::string_view name) {
    if (name.empty() || name.find('=') != std::string_view::npos || environ == nullptr)
        return nullptr;
    for (char **entry = environ; *entry != nullptr; ++entry) {
        if (std::strncmp(*entry, name.data(), name.size()) == 0 && (*entry)[name.size()] == '=') {
            return *entry + name.size() + 1;
        }
    }
    return nullptr;
}

// Takes text in, keeps what fits and counts all of it.
class Sink {
public:
    Sink(char *out, std::size_t size) : out_(out), size_(size) {}
    void take(std::string_view text) {
        if (needed_ < size_) {
            const std::size_t room = size_ - needed_;
            std::memcpy(out_ + needed_, text.data(), text.size() < room ? text.size() : room);
        }
        needed_ += text.size();
    }
    std::size_t finish() {
        if (size_ != 0) out_[needed_ < size_ ? needed_ : size_ - 1] = '\0';
        return needed_ + 1;
    }

private:
    char *out_;
    std::size_t size_;
    std::size_t needed_ = 0;
};

}  // namespace

std::size_t ExpandEnvironmentStringsA(const char *text, char *out, std::size_t size) {
    Sink sink(out, size);
    while (*text != '\0') {
        if (*text == '%') {
            const char *end = std::strchr(text + 1, '%');
            const char *value = nullptr;
            if (end != nullptr) {
                value = valueOf({text + 1, static_cast<std::size_t>(end - text - 1)});
            }
            if (value != nullptr) {
                sink.take(value);
                text = end + 1;
                continue;
            }
        }
        // The second % of an unknown reference may be the first of the next one.
        sink.take({text, 1});
        ++text;
    }
    return sink.finish();
}

}  // namespace platform
