// The files that a command works on: named one by one, in folders, or in a list.
#ifndef TOOLS_INPUTS_H
#define TOOLS_INPUTS_H

#include <string>
#include <vector>

namespace tool {

struct InputOptions {
    std::vector<std::string> names;
    bool recursive = false;
    std::string list;  // a file of names, "-" for standard input, or empty
    bool nulSeparated = false;
};

struct Input {
    std::string path;
    std::string place;  // where a copy of it belongs below a folder
    std::string fault;  // why there is nothing to read
};

// Whether a name in a folder is one of a file to work on.
using NameFilter = bool (*)(const std::string &name);

// Files of a folder follow each other by name. A folder that cannot be read is an input with a
// fault. Throws Error when there is no list.
std::vector<Input> collectInputs(const InputOptions &options, NameFilter wanted);

// The part of a name after its last dot, in small letters.
std::string extensionOf(const std::string &path);

// Is it a name of image files? So are names without an extension, and those of numbered tiles.
bool isImageName(const std::string &path);
bool hasImageExtension(const std::string &path);

// The extensions of image files, for messages.
std::string imageExtensions();

}  // namespace tool

#endif
