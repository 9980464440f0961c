#include "platform/posix/registry_file.h"

#include "platform/code_page.h"
#include "platform/registry.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>
#include <utility>

namespace vx {

namespace {

bool isBlank(char byte) {
    return byte == ' ' || byte == '\t';
}

bool isControl(char byte) {
    return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F;
}

int hexDigit(char byte) {
    byte = lowered(byte);
    if (byte >= '0' && byte <= '9') return byte - '0';
    return byte >= 'a' && byte <= 'f' ? byte - 'a' + 10 : -1;
}

// Takes a line apart from its front; each step says whether it found what it asked for.
class Scanner {
public:
    explicit Scanner(std::string_view text) : text_(text) {}

    bool atEnd() const { return text_.empty(); }
    void skipBlanks() {
        while (!text_.empty() && isBlank(text_.front()))
            text_.remove_prefix(1);
    }
    bool take(std::string_view word) {
        if (foldedName(text_.substr(0, word.size())) != word) return false;
        text_.remove_prefix(word.size());
        return true;
    }
    bool takeQuoted(std::string &out) {
        if (!take("\"")) return false;
        while (!text_.empty() && text_.front() != '"') {
            if (text_.front() == '\\') text_.remove_prefix(1);
            if (text_.empty()) return false;
            out += text_.front();
            text_.remove_prefix(1);
        }
        return take("\"");
    }
    // Exactly `digits` hexadecimal digits, or from 1 to 8 of them for 0.
    bool takeHex(unsigned &out, unsigned digits) {
        out = 0;
        unsigned taken = 0;
        while (taken < (digits != 0 ? digits : 8) && !text_.empty()) {
            const int digit = hexDigit(text_.front());
            if (digit < 0) break;
            out = out * 16 + static_cast<unsigned>(digit);
            text_.remove_prefix(1);
            ++taken;
        }
        return taken != 0 && (digits == 0 || taken == digits);
    }

private:
    std::string_view text_;
};

bool scanBytes(Scanner &scanner, std::string &out) {
    scanner.skipBlanks();
    if (scanner.atEnd()) return true;
    for (;;) {
        unsigned byte = 0;
        scanner.skipBlanks();
        if (!scanner.takeHex(byte, 2)) return false;
        out += static_cast<char>(byte);
        scanner.skipBlanks();
        if (scanner.atEnd()) return true;
        if (!scanner.take(",")) return false;
    }
}

bool scanData(Scanner &scanner, RegistryValue &value) {
    unsigned number = 0;
    if (scanner.take("dword:")) {
        if (!scanner.takeHex(number, 8)) return false;
        value.type = kRegistryNumber;
        for (unsigned shift = 0; shift < 32; shift += 8) {
            value.data += static_cast<char>(number >> shift & 0xFF);
        }
    } else if (scanner.take("hex:")) {
        value.type = kRegistryBinary;
        return scanBytes(scanner, value.data);
    } else if (scanner.take("hex(")) {
        if (!scanner.takeHex(value.type, 0) || !scanner.take("):")) return false;
        return scanBytes(scanner, value.data);
    } else {
        if (!scanner.takeQuoted(value.data)) return false;
        value.type = kRegistryText;
        value.data += '\0';
    }
    scanner.skipBlanks();
    return scanner.atEnd();
}

// The path between the brackets of a heading; a ] may be part of a name.
bool scanHeading(std::string_view text, std::string &path) {
    const std::size_t end = text.rfind(']');
    if (end == std::string_view::npos || end + 1 != text.size()) return false;
    path = text.substr(1, end - 1);
    return true;
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && (isBlank(text.back()) || text.back() == '\r'))
        text.remove_suffix(1);
    return text;
}

// Takes the next line off a text: its bytes with the line end, and its content without.
std::string_view takeLine(std::string_view &text, std::string_view &content) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    const std::string_view raw = text.substr(0, end);
    text.remove_prefix(end);
    content = trimmed(raw.substr(0, raw.size() - (raw.ends_with('\n') ? 1 : 0)));
    return raw;
}

bool scanName(Scanner &scanner, std::string &name) {
    scanner.skipBlanks();
    if (!scanner.take("@") && !scanner.takeQuoted(name)) return false;
    scanner.skipBlanks();
    if (!scanner.take("=")) return false;
    scanner.skipBlanks();
    return true;
}

bool scanValue(std::string_view text, RegistryValue &value) {
    Scanner scanner(text);
    return scanName(scanner, value.name) && scanData(scanner, value);
}

// Only a list of bytes continues on the next line; elsewhere a \ at the end is part of a text.
bool continues(std::string_view content) {
    std::string name;
    Scanner scanner(content);
    return content.ends_with('\\') && scanName(scanner, name) && scanner.take("hex");
}

void appendEscaped(std::string &to, std::string_view text) {
    to += '"';
    for (char byte : text) {
        if (byte == '"' || byte == '\\') to += '\\';
        to += byte;
    }
    to += '"';
}

void appendBytes(std::string &to, std::string_view data) {
    for (std::size_t i = 0; i < data.size(); ++i) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(data[i]));
        if (i != 0) to += ',';
        to += digits;
    }
}

bool isPlainText(const RegistryValue &value) {
    if (value.type != kRegistryText || value.data.empty() || value.data.back() != '\0')
        return false;
    return std::none_of(value.data.begin(), value.data.end() - 1, isControl);
}

bool isSame(const RegistryValue &one, const RegistryValue &other) {
    return one.type == other.type && one.data == other.data;
}

}  // namespace

RegistryFile::RegistryFile() {
    parseLines("REGEDIT4\n");
}

bool RegistryFile::parse(std::string_view text) {
    RegistryFile parsed;
    parsed.lines_.clear();
    if (!parsed.parseLines(text)) return false;
    *this = std::move(parsed);
    return true;
}

bool RegistryFile::parseLines(std::string_view text) {
    if (text.find('\0') != text.npos) return false;
    lineEnd_ = text.substr(0, text.find('\n') + 1).ends_with("\r\n") ? "\r\n" : "\n";
    bool hasFirstLine = false;
    int key = kNone;
    while (!text.empty()) {
        Line line;
        std::string_view piece;
        line.text = takeLine(text, piece);
        std::string content(piece);
        while (continues(content) && !text.empty()) {
            content.pop_back();
            line.text += takeLine(text, piece);
            content += piece;
        }
        const bool isComment = content.empty() || content.front() == ';';
        if (!isComment && !hasFirstLine) {
            if (content != "REGEDIT4") return false;
            hasFirstLine = true;
        } else if (!isComment && !parseContent(content, line, key)) {
            return false;
        }
        if (line.key != kNone) key = line.key;
        lines_.push_back(std::move(line));
    }
    return hasFirstLine;
}

bool RegistryFile::parseContent(std::string_view content, Line &line, int previousKey) {
    if (content.front() != '[') {
        line.key = previousKey;
        line.isValue = true;
        return previousKey != kNone && scanValue(content, line.value);
    }
    std::string path;
    if (!scanHeading(content, path)) return false;
    line.key = keys_.try_emplace(foldedName(path), static_cast<int>(keys_.size())).first->second;
    return true;
}

int RegistryFile::findKey(std::string_view path) const {
    const auto found = keys_.find(foldedName(path));
    return found != keys_.end() ? found->second : kNone;
}

std::vector<RegistryValue> RegistryFile::values(std::string_view path) const {
    std::vector<RegistryValue> values;
    const int key = findKey(path);
    for (const Line &line : lines_) {
        if (line.isValue && line.key == key) values.push_back(line.value);
    }
    return values;
}

std::string RegistryFile::textWith(std::string_view path,
                                   std::span<const RegistryValue> values) const {
    std::multimap<std::string, std::size_t> places;  // of the values that have no line yet
    for (std::size_t i = 0; i < values.size(); ++i)
        places.emplace(foldedName(values[i].name), i);
    const int key = findKey(path);
    std::string text;
    std::size_t end = 0;  // of the last line of the key
    for (const Line &line : lines_) {
        if (key == kNone || line.key != key || !line.isValue) {
            text += line.text;
        } else if (const auto place = places.lower_bound(foldedName(line.value.name));
                   place != places.end() && place->first == foldedName(line.value.name)) {
            const RegistryValue &value = values[place->second];
            text += isSame(value, line.value) ? line.text : formatted(value);
            places.erase(place);
        }
        if (key == kNone || line.key == key) end = text.size();
    }
    std::set<std::size_t> rest;
    for (const auto &[name, place] : places)
        rest.insert(place);
    std::string added;
    if (key == kNone) added = lineEnd_ + "[" + std::string(path) + "]" + lineEnd_;
    for (const std::size_t place : rest)
        added += formatted(values[place]);
    // The last line of a file may have no end.
    if (!added.empty() && end == text.size() && !text.ends_with('\n')) added.insert(0, lineEnd_);
    return text.insert(end, added);
}

std::string RegistryFile::formatted(const RegistryValue &value) const {
    std::string line;
    if (value.name.empty()) {
        line += '@';
    } else {
        appendEscaped(line, value.name);
    }
    line += '=';
    char prefix[32];
    if (isPlainText(value)) {
        appendEscaped(line, std::string_view(value.data).substr(0, value.data.size() - 1));
    } else if (value.type == kRegistryNumber && value.data.size() == 4) {
        unsigned number = 0;
        for (unsigned i = 0; i < 4; ++i) {
            number |= static_cast<unsigned>(static_cast<unsigned char>(value.data[i])) << (8 * i);
        }
        std::snprintf(prefix, sizeof prefix, "dword:%08x", number);
        line += prefix;
    } else {
        std::snprintf(prefix, sizeof prefix,
                      value.type == kRegistryBinary ? "hex:" : "hex(%x):", value.type);
        line += prefix;
        appendBytes(line, value.data);
    }
    return line + lineEnd_;
}

}  // namespace vx
