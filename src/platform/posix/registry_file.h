// The text of a registry file, and changes to it that leave all else as people wrote it.
//
//     REGEDIT4
//
//     [HKEY_CURRENT_USER\Software\Some Key]
//     ; a comment
//     "name"="text, with \\ and \" escaped"
//     "binary"=hex:01,02
//     "number"=dword:0000002a
//     "other"=hex(2):25,52,4f,4f,54,25,00
//
// A list of bytes may go on in the next line behind a backslash at its end. The bytes of hex(1) and
// hex(2) include the terminator of the text. Line ends are LF or CR LF. Names of keys and values
// are compared without regard to ASCII case.

#ifndef VX_PLATFORM_REGISTRY_FILE_H
#define VX_PLATFORM_REGISTRY_FILE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vx {

struct RegistryValue {
    std::string name;
    unsigned type = 0;
    std::string data;  // a text with its terminator
};

// All members may throw std::bad_alloc.
class RegistryFile {
public:
    // An empty file with its first line.
    RegistryFile();

    // Takes over the text of a file; false when it is none, and the object is then as it was.
    bool parse(std::string_view text);

    // The text to be stored: that of the file, with the changes worked in.
    std::string text() const;

    bool hasKey(std::string_view path) const;
    void addKey(std::string_view path);

    // The value at an index under a key, or null.
    const RegistryValue *valueAt(std::string_view path, std::size_t index) const;

    // False when the key has no value of that name.
    bool removeValue(std::string_view path, std::string_view name);

    // The key exists. A value that was removed before comes back in its old place.
    void setValue(std::string_view path, RegistryValue value);

private:
    struct Line {
        enum Kind { kOther, kHeading, kValue } kind = kOther;
        bool removed = false;
        std::string raw;  // as in the file, line end included
        std::string key;  // of a heading or a value: the path of the key
        RegistryValue value;
    };
    static bool parseLines(std::string_view text, std::vector<Line> &lines);
    void endLastLine();
    bool isValueOf(const Line &line, std::string_view path) const;
    std::string formatted(const RegistryValue &value) const;

    std::vector<Line> lines_;
    std::string lineEnd_ = "\n";
};

}  // namespace vx

#endif
