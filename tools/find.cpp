// Which directory of the search path wins, and why the others do not.

#include "candidate.h"
#include "commands.h"
#include "json.h"
#include "name_list.h"
#include "name_pattern.h"
#include "registry_files.h"
#include "report.h"

#include <vxhandles.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <new>
#include <set>
#include <unistd.h>

namespace tool {

namespace {

struct Answer {
    std::string name;
    std::string path;   // of the file that was found
    std::string fault;  // empty if there is a file that can be read
    std::vector<Candidate> candidates;
};

VxSearchPath *mergedList(int category) {
    VxSearchPath *list = vxPathStoreGet(category, VX_LEVEL_MERGED);
    if (list == nullptr) throw std::bad_alloc();
    return list;
}

// ---- Looking

std::vector<Candidate> candidatesOf(const FindOptions &options, const VxSearchPath *list,
                                    const std::string &name, const char *winner) {
    std::vector<Candidate> candidates;
    if (vxPathIsAbsolute(name.c_str()) != 0) {
        candidates.push_back(inspect("", name, options.explain));
        candidates.back().wins = winner != nullptr;
        return candidates;
    }
    for (std::uint32_t i = 0; i < list->count; ++i) {
        candidates.push_back(inspect(list->entries[i], name, options.explain));
        candidates.back().wins = list->entries[i] == winner;
        if (candidates.back().wins && !options.all) break;
    }
    return candidates;
}

Answer lookFor(const FindOptions &options, const std::string &name) {
    VxSearchPath *list = mergedList(options.category);
    const bool isAbsolute = vxPathIsAbsolute(name.c_str()) != 0;
    const char *winner = vxSearchPathFind(list, name.c_str(), 0);
    Answer answer = {name, {}, {}, {}};
    if (name.find('\0') != std::string::npos) {
        answer.fault = "not found: no file has a NUL byte in its name";
        return answer;
    }
    if (options.all || options.explain) {
        answer.candidates = candidatesOf(options, list, name, winner);
    }
    if (winner == nullptr) {
        answer.fault = list->count == 0 && !isAbsolute ? "not found, as the search path is empty"
                                                       : "not found";
        return answer;
    }
    answer.path = isAbsolute ? name : candidatePath(winner, name);
    if (access(answer.path.c_str(), R_OK) != 0) {
        answer.fault = std::string("found, but not readable: ") + std::strerror(errno);
    }
    return answer;
}

std::set<std::string> expanded(const NamePattern &pattern, const VxSearchPath *list) {
    std::set<std::string> names;
    for (std::uint32_t i = 0; i < list->count; ++i)
        pattern.expand(*list->entries[i] == '\0' ? "/" : list->entries[i], names);
    return names;
}

// ---- Telling

// Why a candidate is not the one: the first regular file wins, readable or not.
std::string reasonFor(const Candidate &candidate, bool decided) {
    if (candidate.wins) {
        return candidate.state == Candidate::kFile ? ", found first"
                                                   : ", found first, so the search ends here";
    }
    if (decided) return ", after the one that wins";
    // Through a missing folder and .. back out of it, the path as joined leads to a file.
    return candidate.state == Candidate::kFile ? ", passed over: missing as it is written"
                                               : ", passed over";
}

void printCandidates(const FindOptions &options, const Answer &answer) {
    const std::string missing = toned(Tone::kBad, "not found");
    std::printf("%s%s\n", printable(answer.name).c_str(),
                answer.path.empty() ? (": " + missing).c_str() : "");
    bool decided = false;
    for (const Candidate &candidate : answer.candidates) {
        const std::string reason = options.explain ? reasonFor(candidate, decided) : "";
        const std::string text = printable(candidate.path + ": " + candidate.text) + reason;
        const Tone tone = candidate.state == Candidate::kFile ? Tone::kGood : Tone::kBad;
        std::printf("%s%s\n", candidate.wins ? "  * " : "    ",
                    toned(candidate.wins ? tone : Tone::kFaint, text).c_str());
        decided = decided || candidate.wins;
    }
}

void printAsJson(const Answer &answer) {
    Json json;
    setText(json, "name", answer.name);
    json["found"] = !answer.path.empty();
    if (!answer.path.empty()) setText(json, "path", answer.path);
    if (!answer.fault.empty()) setText(json, "fault", answer.fault);
    for (const Candidate &candidate : answer.candidates) {
        Json one;
        setText(one, "path", candidate.path);
        one["state"] = stateName(candidate.state);
        setText(one, "text", candidate.text);
        one["wins"] = candidate.wins;
        json["candidates"].push_back(one);
    }
    printJsonLine(json);
}

// The paths of each name, in search order.
using FilesByName = std::map<std::string, std::vector<std::string>>;

void printFiles(const std::string &name, const std::vector<std::string> &paths, bool json) {
    if (json) {
        Json object, hidden = Json::array();
        setText(object, "name", name);
        setText(object, "path", paths.front());
        for (auto path = paths.begin() + 1; path != paths.end(); ++path) {
            Json one;
            setText(one, "path", *path);
            hidden.push_back(one);
        }
        object["hides"] = hidden;
        return printJsonLine(object);
    }
    const std::string label = printableName(name), winner = printableName(paths.front());
    std::printf("%s\t%s\n", label.c_str(), toned(Tone::kGood, winner).c_str());
    for (auto path = paths.begin() + 1; path != paths.end(); ++path) {
        const std::string hidden = printableName(*path) + "\thidden by " + winner;
        std::printf("%s\t%s\n", label.c_str(), toned(Tone::kFaint, hidden).c_str());
    }
}

// Prints answers, and records whether all are good.
class Finder {
public:
    explicit Finder(const FindOptions &options)
        : options_(options), isLabelled_(options.names.size() != 1 || !options.namesFrom.empty()) {}

    // A name with wildcards may be that of a file all the same.
    void find(const std::string &name) {
        const Answer literal = lookFor(options_, name);
        const NamePattern pattern(name);
        if (!literal.path.empty() || !pattern.isWild()) return print(literal, isLabelled_);
        const std::set<std::string> names = expanded(pattern, mergedList(options_.category));
        if (names.empty()) print(literal, isLabelled_);
        for (const std::string &one : names)
            print(lookFor(options_, one), true);
    }

    bool allFound() const { return allFound_; }

private:
    void print(const Answer &answer, bool labelled) {
        if (options_.json) {
            printAsJson(answer);
        } else if (!answer.candidates.empty()) {
            printCandidates(options_, answer);
        } else if (!answer.path.empty() && answer.fault.empty()) {
            if (labelled) std::printf("%s\t", printableName(answer.name).c_str());
            std::puts(toned(Tone::kGood, printableName(answer.path)).c_str());
        }
        if (answer.fault.empty()) return;
        printError(answer.path.empty() ? answer.name : answer.path, answer.fault);
        allFound_ = false;
    }

    const FindOptions &options_;
    bool isLabelled_;
    bool allFound_ = true;
};

}  // namespace

int findFiles(const FindOptions &options) {
    Finder finder(options);
    for (const std::string &name : options.names)
        finder.find(name);
    if (!options.namesFrom.empty()) {
        forEachListedName(options.namesFrom, options.nulSeparated ? '\0' : '\n',
                          [&](const std::string &name) {
                              if (!name.empty()) finder.find(name);
                          });
    }
    if (finder.allFound()) return kDone;
    reportUnreadableLists(VX_LEVEL_MERGED);  // for it may have been there
    return kFailed;
}

int listFiles(int category, bool json) {
    const VxSearchPath *list = mergedList(category);
    FilesByName files;
    bool complete = true;
    for (std::uint32_t i = 0; i < list->count; ++i) {
        const std::string entry = list->entries[i];
        if (whyNotSearchable(entry.empty() ? "/" : entry) == "no such directory") continue;
        const auto add = [&](const std::string &name) {
            files[name].push_back(candidatePath(entry, name));
        };
        complete = forEachFile(entry, add) && complete;
    }
    for (const auto &[name, paths] : files)
        printFiles(name, paths, json);
    return reportUnreadableLists(VX_LEVEL_MERGED) && complete ? kDone : kFailed;
}

}  // namespace tool
