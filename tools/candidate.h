// What is at a place where a file is looked for.
#ifndef TOOLS_CANDIDATE_H
#define TOOLS_CANDIDATE_H

#include <string>

namespace tool {

// Why no file can be found in a directory, or an empty text: "no such directory", "not a
// directory" or "closed (REASON)".
std::string whyNotSearchable(const std::string &directory);

struct Candidate {
    enum State {
        kFile,
        kDirectory,
        kSpecial,
        kUnreadable,
        kMissingFile,
        kMissingDirectory,
        kClosedDirectory
    };
    std::string path;
    State state = kMissingFile;
    std::string text;  // for people
    bool wins = false;
};

const char *stateName(Candidate::State state);

// The path of a name in an entry of a list. The root is an empty entry, to which the library joins
// nothing.
std::string candidatePath(const std::string &entry, const std::string &name);

// `explain` looks at the directories of a missing file, and for names that are nearly the same.
Candidate inspect(const std::string &entry, const std::string &name, bool explain);

}  // namespace tool

#endif
