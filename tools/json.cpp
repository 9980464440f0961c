#include "json.h"

#include <cstdio>

namespace tool {

namespace {

constexpr auto kReplaceWrongBytes = Json::error_handler_t::replace;

bool isUtf8(const std::string &text) {
    const std::string shown = Json(text).dump(-1, ' ', false, kReplaceWrongBytes);
    return Json::parse(shown).get<std::string>() == text;
}

}  // namespace

void setText(Json &object, const std::string &key, const std::string &text) {
    object[key] = text;
    if (isUtf8(text)) return;
    std::string digits;
    for (const char byte : text) {
        char two[3];
        std::snprintf(two, sizeof two, "%02x", static_cast<unsigned char>(byte));
        digits += two;
    }
    object[key + "_hex"] = digits;
}

void printJson(const Json &json) {
    std::puts(json.dump(2, ' ', false, kReplaceWrongBytes).c_str());
}

void printJsonLine(const Json &json) {
    std::puts(json.dump(-1, ' ', false, kReplaceWrongBytes).c_str());
}

}  // namespace tool
