#include "name_pattern.h"

#include "report.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>

namespace tool {

namespace {

constexpr std::string_view kTile = "<UDIM>";

// In the words of the library, which knows no tiles and digits.
std::string wildcardOf(const std::string &component) {
    std::string wildcard;
    for (std::size_t i = 0; i < component.size();) {
        if (component.compare(i, kTile.size(), kTile) == 0) {
            wildcard += "[1-9][0-9][0-9][0-9]";
            i += kTile.size();
            continue;
        }
        if (component[i] == '#') {
            wildcard += "[0-9]";
        } else {
            wildcard += component[i];
        }
        ++i;
    }
    return wildcard;
}

std::string below(const std::string &place, const std::string &name) {
    return place.empty() || place.ends_with('/') ? place + name : place + '/' + name;
}

// The folders on the way down, by which a link that leads back up is recognised.
using Ancestors = std::vector<std::pair<dev_t, ino_t>>;

bool walk(const std::string &place, const std::string &prefix, Ancestors &ancestors,
          const std::function<void(const std::string &)> &use) {
    struct stat status;
    if (stat(place.c_str(), &status) != 0) {
        printError(place, std::strerror(errno));
        return false;
    }
    const std::pair self(status.st_dev, status.st_ino);
    if (std::find(ancestors.begin(), ancestors.end(), self) != ancestors.end()) return true;
    ancestors.push_back(self);
    bool complete = true;
    std::error_code failure, ignored;
    for (std::filesystem::directory_iterator at(place, failure), end; !failure && at != end;
         at.increment(failure)) {
        const std::string name = below(prefix, at->path().filename());
        if (at->is_regular_file(ignored)) {
            use(name);
        } else if (at->is_directory(ignored)) {
            complete = walk(at->path(), name, ancestors, use) && complete;
        }
    }
    ancestors.pop_back();
    if (failure) printError(place, failure.message());
    return complete && !failure;
}

}  // namespace

NamePattern::NamePattern(const std::string &name)
    : absolute_(name.starts_with('/') || name.starts_with('\\')) {
    for (std::size_t from = 0; from <= name.size();) {
        const std::size_t to = std::min(name.find_first_of("/\\", from), name.size());
        Component component = {name.substr(from, to - from), false, {}};
        from = to + 1;
        if (component.text.empty()) continue;
        const std::string wildcard = wildcardOf(component.text);
        component.isWild = wildcard.find_first_of("*?[") != std::string::npos &&
                           vxCompileWildcard(wildcard.c_str(), component.compiled.data()) != 0;
        components_.push_back(component);
    }
}

bool NamePattern::isWild() const {
    return std::any_of(components_.begin(), components_.end(),
                       [](const Component &component) { return component.isWild; });
}

void NamePattern::expand(const std::string &directory, std::set<std::string> &names) const {
    expandFrom(0, absolute_ ? "/" : below(directory, ""), absolute_ ? "/" : "", names);
}

void NamePattern::expandFrom(std::size_t index, const std::string &place, const std::string &name,
                             std::set<std::string> &names) const {
    std::error_code failure, ignored;
    if (index == components_.size()) {
        if (std::filesystem::is_regular_file(place, ignored)) names.insert(name);
        return;
    }
    const Component &component = components_[index];
    if (!component.isWild) {
        expandFrom(index + 1, below(place, component.text), below(name, component.text), names);
        return;
    }
    for (std::filesystem::directory_iterator at(place, failure), end; !failure && at != end;
         at.increment(failure)) {
        const std::string found = at->path().filename();
        if (found.starts_with('.') && !component.text.starts_with('.')) continue;
        if (vxMatchPattern(found.c_str(), component.compiled.data()) == 0) continue;
        expandFrom(index + 1, at->path(), below(name, found), names);
    }
}

bool forEachFile(const std::string &directory,
                 const std::function<void(const std::string &)> &use) {
    Ancestors ancestors;
    return walk(directory.empty() ? "/" : directory, "", ancestors, use);
}

}  // namespace tool
