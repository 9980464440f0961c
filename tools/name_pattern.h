// Names with wildcards, and the files below a directory.
#ifndef TOOLS_NAME_PATTERN_H
#define TOOLS_NAME_PATTERN_H

#include <vxpattern.h>

#include <array>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace tool {

// The wildcards of vxpattern.h, <UDIM> for the number of a tile, and # for a digit. A wildcard
// matches within one folder: neither separators nor, at the start, a dot.
class NamePattern {
public:
    explicit NamePattern(const std::string &name);

    bool isWild() const;

    // Adds the names of all regular files that match below a directory, as a scene would give them.
    void expand(const std::string &directory, std::set<std::string> &names) const;

private:
    struct Component {
        std::string text;
        bool isWild;
        std::array<char, VX_PATTERN_SIZE> compiled;
    };
    void expandFrom(std::size_t index, const std::string &place, const std::string &name,
                    std::set<std::string> &names) const;

    std::vector<Component> components_;
    bool absolute_;
};

// Calls `use` for the name of each regular file in a directory and in the folders below it. Links
// are followed. False, with the errors reported, if something could not be read.
bool forEachFile(const std::string &directory, const std::function<void(const std::string &)> &use);

}  // namespace tool

#endif
