// The subcommands: what each is asked for, and the function that does it. A function answers with
// the exit code of the program, and throws Error where nothing is left to do.
#ifndef TOOLS_COMMANDS_H
#define TOOLS_COMMANDS_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tool {

// Categories and levels are those of vxsearchpath.h, with their words on the command line.
inline constexpr std::array kCategoryNames = {"", "texture", "web"};
inline constexpr std::array kLevelNames = {"merged", "user", "machine", "environment"};

inline const char *categoryName(int category) {
    return kCategoryNames[static_cast<std::size_t>(category)];
}
inline const char *levelName(int level) {
    return kLevelNames[static_cast<std::size_t>(level)];
}

int listPaths(const std::vector<int> &categories, int level, bool json);

// Reports directories in which nothing can be found.
int checkPaths(const std::vector<int> &categories, int level);

struct ListId {
    int category;
    int level;
};

// Prints the directories of a list, each ended by the separator.
int exportPaths(ListId where, char separator);

// These continue after beginEdit. Positions count from 0. An entry is named by its directory or by
// its position.
int addPaths(ListId where, const std::vector<std::string> &directories,
             std::optional<unsigned> position);
int removePaths(ListId where, const std::vector<std::string> &entries);
// Replaces the list by what exportPaths has printed. "-" is standard input.
int importPaths(ListId where, const std::string &file, char separator);
int movePath(ListId where, const std::string &entry, unsigned position);

// What these end in, with the program started anew: is the list kept as it was wanted?
int confirmPaths(ListId where, const std::vector<std::string> &wanted);

struct FindOptions {
    std::vector<std::string> names;
    int category;
    bool all;               // every candidate
    bool explain;           // why candidates were passed over
    std::string namesFrom;  // a file with further names, "-" for standard input, or empty
    bool nulSeparated;
    bool json;
};
int findFiles(const FindOptions &options);

// All files along the search path, with those that hide others.
int listFiles(int category, bool json);

struct BatchOptions;  // of batch.h
int describeImages(const BatchOptions &options, bool atLength);
int checkImages(const BatchOptions &options);
// A drawing of the histogram is written unless its name is empty.
int measureImages(const BatchOptions &options, const std::string &drawing);

// Differences are parts of the range of an element.
struct CompareOptions {
    std::string first, second;
    double failure = 1e-6;         // above this an element fails
    double failingPercentage = 0;  // of elements that may fail
    double hardFailure = 2;        // which not even one element may exceed
    std::string picture;           // of the differences, or empty
    bool json = false;
};
int compareImages(const CompareOptions &options);

struct ConvertOptions;  // of convert.h
int convertPictures(const ConvertOptions &options);

// Without names those of standard input, a line each.
int matchNames(const std::string &wildcard, const std::vector<std::string> &names);

int drawSamples(bool square, int gridSize, const std::string &output);

}  // namespace tool

#endif
