// The text of a registry file, and changes to it that leave everything else as people wrote it.
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
// A list of bytes may continue on the next line after a backslash at its end. The bytes of hex(1)
// and hex(2) include the terminator of the text. Line ends are LF or CR LF. Names of keys and
// values are compared without regard to ASCII case.

#ifndef VX_PLATFORM_POSIX_REGISTRY_FILE_H
#define VX_PLATFORM_POSIX_REGISTRY_FILE_H

#include "platform/registry.h"

#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vx {

// The file of a root; an empty text if there is no folder for it.
std::string registryFilePath(RegistryRoot root);

// All members may throw std::bad_alloc.
class RegistryFile {
public:
    // An empty file with its first line.
    RegistryFile();

    // Takes over the text of a file. False if it cannot be parsed; the object is then unchanged.
    bool parse(std::string_view text);

    // The values of a key, in the order of the file.
    std::vector<RegistryValue> values(std::string_view path) const;

    // The text of the file with these values under the key, which is added if it is missing. Lines
    // of values that stay the same are kept, a changed value keeps its place, and a new one goes
    // after the last line of its key.
    std::string textWith(std::string_view path, std::span<const RegistryValue> values) const;

private:
    static constexpr int kNone = -1;
    struct Line {
        std::string text;  // as in the file, line end included
        int key = kNone;   // of a heading or a value: a number from keys_
        bool isValue = false;
        RegistryValue value;
    };
    bool parseLines(std::string_view text);
    bool parseContent(std::string_view content, Line &line, int previousKey);
    int findKey(std::string_view path) const;
    std::string formatted(const RegistryValue &value) const;

    std::vector<Line> lines_;
    std::unordered_map<std::string, int> keys_;  // by folded path, numbered from 0
    std::string lineEnd_ = "\n";
};

}  // namespace vx

#endif
