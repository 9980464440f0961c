#include "inputs.h"

#include "name_list.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <string_view>

namespace tool {

namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 6> kImageExtensions = {"sgi", "rgb", "rgba",
                                                              "bw",  "int", "inta"};

// A listed name keeps its folders, but none above the one that it is copied to.
std::string placeOfListed(const std::string &name) {
    fs::path place;
    for (const fs::path &part : fs::path(name).lexically_normal().relative_path()) {
        if (part != "..") place /= part;
    }
    return place.string();
}

class Collector {
public:
    Collector(bool recursive, NameFilter wanted) : recursive_(recursive), wanted_(wanted) {}

    void add(const std::string &path, const std::string &place) {
        std::error_code error;
        if (recursive_ && fs::is_directory(path, error)) {
            addFolder(path, {});
        } else {
            inputs_.push_back({path, place, {}});
        }
    }

    std::vector<Input> take() { return std::move(inputs_); }

private:
    // Links to folders are not followed: they may lead back.
    void addFolder(const fs::path &folder, const fs::path &place) {
        std::error_code error;
        std::vector<fs::directory_entry> entries;
        for (fs::directory_iterator one(folder, error), end; !error && one != end;
             one.increment(error)) {
            entries.push_back(*one);
        }
        if (error) inputs_.push_back({folder.string(), {}, error.message()});
        std::sort(entries.begin(), entries.end());
        for (const fs::directory_entry &entry : entries) {
            const fs::path name = entry.path().filename();
            if (entry.is_directory(error) && !entry.is_symlink(error)) {
                addFolder(entry.path(), place / name);
            } else if (wanted_(name.string()) && !entry.is_directory(error)) {
                inputs_.push_back({entry.path().string(), (place / name).string(), {}});
            }
        }
    }

    bool recursive_;
    NameFilter wanted_;
    std::vector<Input> inputs_;
};

}  // namespace

std::vector<Input> collectInputs(const InputOptions &options, NameFilter wanted) {
    Collector collector(options.recursive, wanted);
    for (const std::string &name : options.names)
        collector.add(name, fs::path(name).filename().string());
    if (!options.list.empty()) {
        const char separator = options.nulSeparated ? '\0' : '\n';
        forEachListedName(options.list, separator, [&](const std::string &name) {
            if (!name.empty()) collector.add(name, placeOfListed(name));
        });
    }
    return collector.take();
}

std::string extensionOf(const std::string &path) {
    std::string extension = fs::path(path).extension().string();
    extension.erase(0, 1);
    for (char &letter : extension)
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return extension;
}

bool hasImageExtension(const std::string &path) {
    return std::find(kImageExtensions.begin(), kImageExtensions.end(), extensionOf(path)) !=
           kImageExtensions.end();
}

bool isImageName(const std::string &path) {
    const std::string extension = extensionOf(path);
    return extension.find_first_not_of("0123456789") == std::string::npos ||
           hasImageExtension(path);
}

std::string imageExtensions() {
    std::string all;
    for (const std::string_view extension : kImageExtensions)
        all.append(all.empty() ? "." : ", .").append(extension);
    return all;
}

}  // namespace tool
