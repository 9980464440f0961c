// A list of directories beside a plain one, in runs of random changes: its entries, how large its
// array is, and the length that it knows of no entry that exceeds it.

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
        : current_(current),
          list_(vxSearchPathCreate(text.c_str())),
          model_(entriesOf(text, longest_)),
          capacity_(std::max(model_.size(), kMinCapacity)) {}
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
            if (index < model_.size()) remove(place);
        } else if (action == 1) {
            vxSearchPathSwap(list_, slot, 0);
            if (index < model_.size()) std::swap(*place, model_[0]);
        } else if (action == 2) {
            if (index > model_.size()) {
                prependItself();
            } else {
                prepend(path + ";" + path);
            }
        } else {
            const int found = indexOf(path);
            const bool fits = isAbsolutePlainly(path) && index <= model_.size() && found < 0;
            if (vxSearchPathIndexOf(list_, path.c_str()) != found) return false;
            if (vxSearchPathInsert(list_, slot, path.c_str()) != (fits ? 1 : 0)) return false;
            if (fits) insert(place, normalizedPlainly(path + "/"));
        }
        return list_->count == model_.size() && list_->capacity == capacity_ &&
               static_cast<std::size_t>(list_->longest) == longest_;
    }

private:
    static constexpr std::size_t kMinCapacity = 4;

    void insert(Entries::iterator place, const std::string &entry) {
        if (model_.size() == capacity_) capacity_ *= 2;
        if (longest_ != 0) longest_ = std::max(longest_, entry.size());
        model_.insert(place, entry);
    }
    // The array is halved when less than a quarter of it is left.
    void remove(Entries::iterator place) {
        model_.erase(place);
        if (capacity_ > kMinCapacity && model_.size() < capacity_ / 4) capacity_ /= 2;
        longest_ = 0;
    }
    void prependItself() {
        vxSearchPathPrepend(list_, list_);
        capacity_ = std::max(2 * model_.size(), kMinCapacity);
    }
    // What a list makes of text, and the longest of it before it was normalised.
    Entries entriesOf(const std::string &text, std::size_t &longest) const {
        Entries entries;
        longest = 0;
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t end = std::min(text.find(';', at), text.size());
            const std::string piece = text.substr(at, end - at);
            at = end + 1;
            if (piece.empty()) continue;
            const bool absolute = isAbsolutePlainly(piece);
            const bool drive = absolute && piece.size() == 2 && !isSeparatorPlainly(piece[0]);
            const std::string whole =
                (absolute ? "" : current_ + "/") + piece + (drive ? "./" : "/");
            longest = std::max(longest, whole.size());
            entries.push_back(normalizedPlainly(whole));
        }
        return entries;
    }
    void prepend(const std::string &text) {
        VxSearchPath *source = vxSearchPathCreate(text.c_str());
        vxSearchPathPrepend(list_, source);
        vxSearchPathFree(source);
        std::size_t longest;
        Entries merged = entriesOf(text, longest);
        capacity_ = std::max(model_.size() + merged.size(), kMinCapacity);
        longest_ = longest_ != 0 && longest != 0 ? std::max(longest_, longest) : 0;
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

    std::string current_;
    VxSearchPath *list_;
    std::size_t longest_;  // 0 if it is not known
    Entries model_;
    std::size_t capacity_;
};

#endif
