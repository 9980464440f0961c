#include "candidate.h"

#include <vxhandles.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <cwctype>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace tool {

namespace {

constexpr std::size_t kMaxHints = 3;

std::string inBrackets(int error) {
    return std::string("(") + std::strerror(error) + ")";
}

std::wstring lowerCase(const std::string &text) {
    std::wstring wide(text.size(), L'\0');
    const std::size_t length = std::mbstowcs(wide.data(), text.c_str(), wide.size());
    if (length == static_cast<std::size_t>(-1)) {  // not text: its bytes
        std::copy(text.begin(), text.end(), wide.begin());
    } else {
        wide.resize(length);
    }
    for (wchar_t &character : wide)
        character = static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(character)));
    return wide;
}

std::wstring stemOf(const std::wstring &name) {
    return name.substr(0, name.rfind(L'.'));
}

// ", but X is there" for names in a directory that differ in case only, or else in the extension.
std::string nearNames(const std::string &directory, const std::string &name) {
    const std::wstring wanted = lowerCase(name);
    std::vector<std::string> sameLetters, sameStem;
    std::error_code failure;
    for (std::filesystem::directory_iterator at(directory, failure), end; !failure && at != end;
         at.increment(failure)) {
        const std::string other = at->path().filename();
        const std::wstring letters = lowerCase(other);
        if (letters == wanted) {
            sameLetters.push_back(other);
        } else if (stemOf(letters) == stemOf(wanted)) {
            sameStem.push_back(other);
        }
    }
    std::vector<std::string> &hints = sameLetters.empty() ? sameStem : sameLetters;
    std::sort(hints.begin(), hints.end());
    hints.resize(std::min(hints.size(), kMaxHints));
    std::string text;
    for (const std::string &hint : hints)
        text += (text.empty() ? ", but " : " and ") + hint;
    if (text.empty()) return text;
    text += hints.size() == 1 ? " is there" : " are there";
    return sameLetters.empty() ? text : text + " (case differs)";
}

// A drive prefix may have a colon.
std::string colonHint(const std::string &entry) {
    return entry.find(':', 2) == std::string::npos ? ""
                                                   : " (directories are separated by ; and not :)";
}

// Sets state and text if the directory is what prevents the file from being found.
bool blamesDirectory(Candidate &candidate, const std::string &directory, const std::string &hint) {
    const std::string why = whyNotSearchable(directory);
    if (why.empty()) return false;
    const bool closed = why.starts_with("closed");
    candidate.state = closed ? Candidate::kClosedDirectory : Candidate::kMissingDirectory;
    candidate.text = "directory " + directory + ": " + why + (closed ? "" : hint);
    return true;
}

// Goes down from the entry to the file, to where the way ends.
void explainMissing(Candidate &candidate, const std::string &entry) {
    std::string place = candidate.path.starts_with(entry + "/") ? entry : "";
    if (!place.empty() && blamesDirectory(candidate, place, colonHint(place))) return;
    for (std::size_t from = place.size() + 1;;) {
        const std::size_t to = candidate.path.find('/', from);
        const std::string component = candidate.path.substr(from, to - from);
        const std::string parent = place.empty() ? "/" : place;
        if (to == std::string::npos) {
            candidate.text += nearNames(parent, component);
            return;
        }
        place += '/' + component;
        if (blamesDirectory(candidate, place, nearNames(parent, component))) return;
        from = to + 1;
    }
}

}  // namespace

std::string whyNotSearchable(const std::string &directory) {
    struct stat status;
    if (stat(directory.c_str(), &status) != 0) {
        if (errno == ENOENT) return "no such directory";
        return errno == ENOTDIR ? "not a directory" : "closed " + inBrackets(errno);
    }
    if (!S_ISDIR(status.st_mode)) return "not a directory";
    return access(directory.c_str(), X_OK) == 0 ? "" : "closed " + inBrackets(errno);
}

const char *stateName(Candidate::State state) {
    static constexpr std::array kNames = {
        "file",         "directory",         "special file",    "unreadable file",
        "missing file", "missing directory", "closed directory"};
    return kNames[static_cast<std::size_t>(state)];
}

std::string candidatePath(const std::string &entry, const std::string &name) {
    const char *directory = entry.empty() ? "/" : entry.c_str();
    const VxUniqueText joined(vxPathJoin(directory, name.c_str(), nullptr));
    return joined == nullptr ? "" : joined.get();
}

Candidate inspect(const std::string &entry, const std::string &name, bool explain) {
    Candidate candidate;
    candidate.path = vxPathIsAbsolute(name.c_str()) != 0 ? name : candidatePath(entry, name);
    struct stat status;
    if (stat(candidate.path.c_str(), &status) != 0) {
        const bool missing = errno == ENOENT || errno == ENOTDIR;
        candidate.state = missing ? Candidate::kMissingFile : Candidate::kUnreadable;
        candidate.text = missing ? "missing" : "not readable " + inBrackets(errno);
        if (explain && errno != ELOOP) explainMissing(candidate, entry);
    } else if (S_ISDIR(status.st_mode)) {
        candidate.state = Candidate::kDirectory;
        candidate.text = "a directory";
    } else if (!S_ISREG(status.st_mode)) {
        candidate.state = Candidate::kSpecial;
        candidate.text = "not a regular file";
    } else if (access(candidate.path.c_str(), R_OK) != 0) {
        candidate.state = Candidate::kUnreadable;
        candidate.text = "not readable " + inBrackets(errno);
    } else {
        candidate.state = Candidate::kFile;
        candidate.text = "a file of " + std::to_string(status.st_size) + " bytes";
    }
    return candidate;
}

}  // namespace tool
