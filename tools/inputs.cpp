#include "inputs.h"

#include "platform/files.h"
#include "report.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <unistd.h>

namespace tool {

namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 6> kImageExtensions = {"sgi", "rgb", "rgba",
                                                              "bw",  "int", "inta"};

std::string readAll(const std::string &path) {
    const vx::File file(path == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                    : open(path.c_str(), O_RDONLY | O_CLOEXEC));
    const std::string subject = path == "-" ? "standard input" : path;
    if (!file.isOpen()) throw systemError(subject);
    std::string text;
    std::array<char, 1 << 16> buffer;
    for (;;) {
        const int got = vx::readFile(file.get(), buffer.data(), buffer.size());
        if (got < 0) throw systemError(subject);
        if (got == 0) return text;
        text.append(buffer.data(), static_cast<std::size_t>(got));
    }
}

std::vector<std::string> listedNames(const std::string &list, char separator) {
    const std::string text = readAll(list);
    std::vector<std::string> names;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find(separator, start), text.size());
        if (end > start) names.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return names;
}

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
        for (const std::string &name :
             listedNames(options.list, options.nulSeparated ? '\0' : '\n'))
            collector.add(name, placeOfListed(name));
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
