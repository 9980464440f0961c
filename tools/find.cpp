// Which directory of the search path wins, and why the others do not.

#include "commands.h"
#include "registry_files.h"
#include "report.h"

#include <vxhandles.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

namespace {

// The path of a name under an entry of a list. The root is an empty entry, which nothing is joined
// to.
std::string candidate(const char *entry, const char *name) {
    const VxUniqueText joined(vxPathJoin(*entry == '\0' ? "/" : entry, name, nullptr));
    return joined == nullptr ? "" : joined.get();
}

// What stands in the place of a file, in words.
std::string whatIsThere(const std::string &path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) return "missing";
        return std::string("not readable (") + std::strerror(errno) + ")";
    }
    if (S_ISDIR(status.st_mode)) return "a directory";
    if (!S_ISREG(status.st_mode)) return "no regular file";
    if (access(path.c_str(), R_OK) != 0) {
        return std::string("not readable (") + std::strerror(errno) + ")";
    }
    return "a file of " + std::to_string(status.st_size) + " bytes";
}

// One line a candidate: a mark, its path and what is to be said of it. The first regular file wins,
// readable or not, and so the mark follows what the library found.
class Report {
public:
    Report(const FindOptions &options, const char *winner)
        : options_(options), winner_(winner), decided_(false) {}

    // Is there anything to say about further candidates?
    bool goesOn() const { return options_.all || (options_.explain && !decided_); }

    void add(const char *entry, const std::string &path) {
        const bool wins = entry == winner_;
        const std::string there = whatIsThere(path);
        std::string line = (wins ? "  * " : "    ") + printable(path) + ": " + there;
        if (options_.explain) line += reason(wins, there);
        std::puts(line.c_str());
        decided_ = decided_ || wins;
    }

private:
    std::string reason(bool wins, const std::string &there) const {
        if (wins) {
            return there.starts_with("not") ? ", found first, and looked for no further"
                                            : ", found first";
        }
        if (decided_) return ", behind the one that wins";
        // Through a missing folder and .. back out of it, the path as joined leads to a file.
        return there.starts_with("a file") ? ", passed over: missing as it is written"
                                           : ", passed over";
    }

    const FindOptions &options_;
    const char *winner_;
    bool decided_;
};

void reportCandidates(const FindOptions &options, const char *name, const char *winner) {
    Report report(options, winner);
    std::printf("%s%s\n", printable(name).c_str(), winner == nullptr ? ": not found" : "");
    if (vxPathIsAbsolute(name) != 0) return report.add(name, name);
    const VxSearchPath *list = vxPathStoreGet(options.category, VX_LEVEL_MERGED);
    for (std::uint32_t i = 0; i < list->count && report.goesOn(); ++i)
        report.add(list->entries[i], candidate(list->entries[i], name));
}

// Was a file found that can be read?
bool findFile(const FindOptions &options, const char *name) {
    VxSearchPath *list = vxPathStoreGet(options.category, VX_LEVEL_MERGED);
    if (list == nullptr) throw std::bad_alloc();
    const char *winner = vxSearchPathFind(list, name, 0);
    if (options.all || options.explain) reportCandidates(options, name, winner);
    if (winner == nullptr) {
        printError(name, list->count == 0 && vxPathIsAbsolute(name) == 0
                             ? "not found, as the search path is empty"
                             : "not found");
        return false;
    }
    const std::string path = winner == name ? name : candidate(winner, name);
    if (!options.all && !options.explain) std::puts(path.c_str());  // as it is, for scripts
    if (access(path.c_str(), R_OK) == 0) return true;
    printError(path, std::string("found, but not readable: ") + std::strerror(errno));
    return false;
}

}  // namespace

int findFiles(const FindOptions &options) {
    bool all = true;
    for (const std::string &name : options.names)
        all = findFile(options, name.c_str()) && all;
    if (!all) reportUnreadableLists(VX_LEVEL_MERGED);  // for it may have been there
    return all ? kDone : kFailed;
}

}  // namespace tool
