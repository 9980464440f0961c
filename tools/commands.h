// The subcommands: what each is asked for, and the function that does it. A function answers with
// the exit code of the program, and throws Trouble where nothing is left to do.
#ifndef TOOLS_COMMANDS_H
#define TOOLS_COMMANDS_H

#include <optional>
#include <string>
#include <vector>

namespace tool {

// Categories and levels are those of vxsearchpath.h.

int listPaths(const std::vector<int> &categories, int level, bool json);

struct LevelList {
    int category;
    int level;
};

// These go on after beginEdit. Positions count from 0. An entry is named by its directory or by its
// position.
int addPath(LevelList where, const std::string &directory, std::optional<unsigned> position);
int removePath(LevelList where, const std::string &entry);
int movePath(LevelList where, const std::string &entry, unsigned position);

// What these end in, with the program started anew: is the list kept as it was wanted?
int confirmPaths(LevelList where, const std::vector<std::string> &wanted);

struct FindOptions {
    std::vector<std::string> names;
    int category;
    bool all;      // every candidate
    bool explain;  // why candidates were passed over
};
int findFiles(const FindOptions &options);

int describeImages(const std::vector<std::string> &paths);
int checkImages(const std::vector<std::string> &paths);

// The settings of a new image file; a PNG file has none.
struct ImageSettings {
    bool verbatim;
    bool hostOrder;
    std::optional<std::string> name;
    bool given;  // one of them was asked for
};
int convertPicture(const std::string &input, const std::string &output,
                   const ImageSettings &settings);

// Without names those of standard input, a line each.
int matchNames(const std::string &wildcard, const std::vector<std::string> &names);

int drawSamples(bool square, int gridSize, const std::string &output);

}  // namespace tool

#endif
