// JSON with names of files.
#ifndef TOOLS_JSON_H
#define TOOLS_JSON_H

#include <nlohmann/json.hpp>
#include <string>

namespace tool {

using Json = nlohmann::ordered_json;

// Sets a member to a text of any bytes. JSON holds Unicode only: where the text is not UTF-8, each
// wrong byte becomes U+FFFD, and a member KEY_hex has the exact bytes in hexadecimal.
void setText(Json &object, const std::string &key, const std::string &text);

// These print on standard output: with indentation, or as one line.
void printJson(const Json &json);
void printJsonLine(const Json &json);

}  // namespace tool

#endif
