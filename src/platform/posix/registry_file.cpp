#include "platform/posix/registry_file.h"

#include "platform/code_page.h"
#include "platform/registry.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace vx {

namespace {

bool sameName(std::string_view one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char a, char b) { return lowered(a) == lowered(b); });
}

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
        if (text_.size() < word.size() || !sameName(text_.substr(0, word.size()), word)) {
            return false;
        }
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
        value.type = REG_DWORD;
        for (unsigned shift = 0; shift < 32; shift += 8) {
            value.data += static_cast<char>(number >> shift & 0xFF);
        }
    } else if (scanner.take("hex:")) {
        value.type = REG_BINARY;
        return scanBytes(scanner, value.data);
    } else if (scanner.take("hex(")) {
        if (!scanner.takeHex(value.type, 0) || !scanner.take("):")) return false;
        return scanBytes(scanner, value.data);
    } else {
        if (!scanner.takeQuoted(value.data)) return false;
        value.type = REG_SZ;
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

// Only lists of bytes go on in the next line; elsewhere a \ at the end is part of a text.
bool goesOn(std::string_view content) {
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
    if (value.type != REG_SZ || value.data.empty() || value.data.back() != '\0') return false;
    return std::none_of(value.data.begin(), value.data.end() - 1, isControl);
}

}  // namespace

RegistryFile::RegistryFile() {
    Line first;
    first.raw = "REGEDIT4\n";
    lines_.push_back(std::move(first));
}

bool RegistryFile::parse(std::string_view text) {
    std::vector<Line> lines;
    if (!parseLines(text, lines)) return false;
    lineEnd_ = lines.front().raw.ends_with("\r\n") ? "\r\n" : "\n";
    lines_ = std::move(lines);
    return true;
}

bool RegistryFile::parseLines(std::string_view text, std::vector<Line> &lines) {
    if (text.find('\0') != std::string_view::npos) return false;
    bool begun = false;
    std::string key;
    while (!text.empty()) {
        Line line;
        std::string_view content;
        line.raw = takeLine(text, content);
        if (content.empty() || content.front() == ';') {
            lines.push_back(std::move(line));
            continue;
        }
        std::string whole(content);
        while (goesOn(whole) && !text.empty()) {
            whole.pop_back();
            line.raw += takeLine(text, content);
            whole += content;
        }
        if (!begun) {
            if (whole != "REGEDIT4") return false;
            begun = true;
        } else if (whole.front() == '[') {
            if (!scanHeading(whole, key)) return false;
            line.kind = Line::kHeading;
            line.key = key;
        } else {
            if (key.empty() || !scanValue(whole, line.value)) return false;
            line.kind = Line::kValue;
            line.key = key;
        }
        lines.push_back(std::move(line));
    }
    return begun;
}

std::string RegistryFile::text() const {
    std::string all;
    for (const Line &line : lines_) {
        if (!line.removed) all += line.raw;
    }
    return all;
}

bool RegistryFile::isValueOf(const Line &line, std::string_view path) const {
    return line.kind == Line::kValue && sameName(line.key, path);
}

bool RegistryFile::hasKey(std::string_view path) const {
    return std::any_of(lines_.begin(), lines_.end(), [&](const Line &line) {
        return line.kind == Line::kHeading && sameName(line.key, path);
    });
}

// The last line of a file may lack its end; what is put behind it must not run into it.
void RegistryFile::endLastLine() {
    if (!lines_.back().raw.ends_with('\n')) lines_.back().raw += lineEnd_;
}

void RegistryFile::addKey(std::string_view path) {
    if (hasKey(path)) return;
    endLastLine();
    Line heading;
    heading.kind = Line::kHeading;
    heading.key = path;
    heading.raw = lineEnd_ + "[" + heading.key + "]" + lineEnd_;
    lines_.push_back(std::move(heading));
}

const RegistryValue *RegistryFile::valueAt(std::string_view path, std::size_t index) const {
    for (const Line &line : lines_) {
        if (line.removed || !isValueOf(line, path)) continue;
        if (index == 0) return &line.value;
        --index;
    }
    return nullptr;
}

bool RegistryFile::removeValue(std::string_view path, std::string_view name) {
    bool found = false;
    for (Line &line : lines_) {
        if (line.removed || !isValueOf(line, path) || !sameName(line.value.name, name)) continue;
        line.removed = true;
        found = true;
    }
    return found;
}

void RegistryFile::setValue(std::string_view path, RegistryValue value) {
    Line *place = nullptr;
    std::size_t behind = 0;  // where a new line goes: behind the last one of the key
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        Line &line = lines_[i];
        if (line.kind == Line::kOther || !sameName(line.key, path)) continue;
        behind = i + 1;
        if (line.kind != Line::kValue || !sameName(line.value.name, value.name)) continue;
        if (place == nullptr) {
            place = &line;
        } else {
            line.removed = true;
        }
    }
    if (place != nullptr && place->value.type == value.type && place->value.data == value.data) {
        place->removed = false;
        return;
    }
    Line line;
    line.kind = Line::kValue;
    line.key = path;
    line.raw = formatted(value);
    line.value = std::move(value);
    if (place != nullptr) {
        *place = std::move(line);
    } else {
        endLastLine();
        lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(behind), std::move(line));
    }
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
    } else if (value.type == REG_DWORD && value.data.size() == 4) {
        unsigned number = 0;
        for (unsigned i = 0; i < 4; ++i) {
            number |= static_cast<unsigned>(static_cast<unsigned char>(value.data[i])) << (8 * i);
        }
        std::snprintf(prefix, sizeof prefix, "dword:%08x", number);
        line += prefix;
    } else {
        std::snprintf(prefix, sizeof prefix,
                      value.type == REG_BINARY ? "hex:" : "hex(%x):", value.type);
        line += prefix;
        appendBytes(line, value.data);
    }
    return line + lineEnd_;
}

}  // namespace vx
