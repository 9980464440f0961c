// A list of directories beside a plain one, in runs of random changes.

#ifndef VX_FUZZ_MODELS_SEARCH_PATH_MODEL_H
#define VX_FUZZ_MODELS_SEARCH_PATH_MODEL_H

#include "fuzz/models/path_model.h"

#include <vxsearchpath.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

inline std::string textOf(const VxSearchPath *list) {
    char *text = vxSearchPathToString(list);
    std::string result = text;
    std::free(text);
    return result;
}

class SearchPathRun {
public:
    using Entries = std::vector<std::string>;

    SearchPathRun(const std::string &text, const std::string &current)
        : current_(current), list_(vxSearchPathCreate(text.c_str())), model_(entriesOf(text)) {}
    ~SearchPathRun() { vxSearchPathFree(list_); }
    SearchPathRun(const SearchPathRun &) = delete;
    SearchPathRun &operator=(const SearchPathRun &) = delete;

    std::string text() const { return textOf(list_); }
    std::string modelText() const {
        std::string joined;
        for (const std::string &entry : model_)
            joined += (&entry != &model_.front() ? ";" : "") + entry;
        return joined;
    }
    const VxSearchPath *list() const { return list_; }
    const Entries &model() const { return model_; }

    // One change, at some index up to one past the end; true when its result is the expected one.
    bool change(std::size_t number, unsigned action, const std::string &path) {
        const std::size_t index = number % (model_.size() + 2);
        const auto slot = static_cast<std::uint32_t>(index);
        const auto place =
            model_.begin() + static_cast<std::ptrdiff_t>(std::min(index, model_.size()));
        if (action == 0) {
            vxSearchPathRemove(list_, slot);
            if (index < model_.size()) model_.erase(place);
        } else if (action == 1) {
            vxSearchPathSwap(list_, slot, 0);
            if (index < model_.size()) std::swap(*place, model_[0]);
        } else if (action == 2) {
            prepend(path + ";" + path);
        } else {
            const int found = indexOf(path);
            const bool fits = isAbsolutePlainly(path) && index <= model_.size() && found < 0;
            if (vxSearchPathIndexOf(list_, path.c_str()) != found) return false;
            if (vxSearchPathInsert(list_, slot, path.c_str()) != (fits ? 1 : 0)) return false;
            if (fits) model_.insert(place, normalizedPlainly(path + "/"));
        }
        return list_->count == model_.size() && list_->count <= list_->capacity && longestHolds();
    }

private:
    // What the list makes of text.
    Entries entriesOf(const std::string &text) const {
        Entries entries;
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t end = std::min(text.find(';', at), text.size());
            const std::string piece = text.substr(at, end - at);
            at = end + 1;
            if (piece.empty()) continue;
            const bool absolute = isAbsolutePlainly(piece);
            const bool drive = absolute && piece.size() == 2 && !isSeparatorPlainly(piece[0]);
            entries.push_back(
                normalizedPlainly((absolute ? "" : current_ + "/") + piece + (drive ? "./" : "/")));
        }
        return entries;
    }
    void prepend(const std::string &text) {
        VxSearchPath *source = vxSearchPathCreate(text.c_str());
        vxSearchPathPrepend(list_, source);
        vxSearchPathFree(source);
        Entries merged = entriesOf(text);
        for (const std::string &entry : merged) {
            const auto repeat = std::find(model_.begin(), model_.end(), entry);
            if (repeat != model_.end()) model_.erase(repeat);
        }
        merged.insert(merged.end(), model_.begin(), model_.end());
        model_ = std::move(merged);
    }
    int indexOf(const std::string &path) const {
        if (!isAbsolutePlainly(path)) return -1;
        const auto names = [&](const std::string &entry) {
            return entry.size() <= path.size() &&
                   std::equal(entry.begin(), entry.end(), path.begin(),
                              [](char one, char other) {
                                  return one == other ||
                                         (isSeparatorPlainly(one) && isSeparatorPlainly(other));
                              }) &&
                   path.find_first_not_of("/\\", entry.size()) == std::string::npos;
        };
        const auto found = std::find_if(model_.begin(), model_.end(), names);
        return found == model_.end() ? -1 : static_cast<int>(found - model_.begin());
    }
    bool longestHolds() const {
        return list_->longest == 0 ||
               std::all_of(model_.begin(), model_.end(), [&](const std::string &entry) {
                   return entry.size() <= static_cast<std::size_t>(list_->longest);
               });
    }

    std::string current_;
    VxSearchPath *list_;
    Entries model_;
};

#endif
