#include "platform/environment.h"

#include <cstdlib>
#include <string_view>

namespace vx {

namespace {

const char *valueOf(std::string_view name) {
    if (name.empty() || name.find('=') != name.npos) return nullptr;  // not names of variables
    return std::getenv(std::string(name).c_str());
}

}  // namespace

const char *environmentVariable(const char *name) {
    return std::getenv(name);
}

std::string expandEnvironment(const char *from) {
    std::string_view text(from);
    std::string expanded;
    while (!text.empty()) {
        const std::size_t end = text.front() == '%' ? text.find('%', 1) : text.npos;
        const char *value = nullptr;
        if (end != text.npos) value = valueOf(text.substr(1, end - 1));
        if (value != nullptr) {
            expanded += value;
            text.remove_prefix(end + 1);
        } else {
            // The second % of an unknown reference may be the first of the next one.
            expanded += text.front();
            text.remove_prefix(1);
        }
    }
    return expanded;
}

}  // namespace vx
