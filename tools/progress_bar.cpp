#include "progress_bar.h"

#include "report.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tool {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kInterval = std::chrono::milliseconds(100);
constexpr std::uint64_t kUnitsPerFile = 10000;

bool canShowBar() {
    const char *terminal = std::getenv("TERM");
    return isatty(STDERR_FILENO) != 0 && terminal != nullptr && *terminal != '\0' &&
           std::strcmp(terminal, "dumb") != 0;
}

std::size_t terminalColumns() {
    winsize size = {};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : 80;
}

struct Character {
    std::size_t start, columns;
};

std::vector<Character> charactersOf(const std::string &text) {
    std::vector<Character> characters;
    std::mbstate_t state = {};
    for (std::size_t i = 0, length = 0; i < text.size(); i += length) {
        wchar_t character = 0;
        length = std::mbrtowc(&character, text.data() + i, text.size() - i, &state);
        int columns = 1;
        if (length - 1 < text.size()) {
            columns = wcwidth(character);
        } else {
            length = 1;
            state = {};
        }
        characters.push_back({i, columns < 0 ? 1 : static_cast<std::size_t>(columns)});
    }
    return characters;
}

// The end of a path tells more than its beginning.
std::string shortened(const std::string &label, std::size_t columns, std::size_t &taken) {
    static constexpr std::size_t kDots = 3;
    const std::vector<Character> characters = charactersOf(label);
    std::size_t total = 0, kept = 0, start = label.size();
    for (const Character &one : characters)
        total += one.columns;
    taken = total;
    if (total <= columns) return label;
    for (auto one = characters.rbegin(); one != characters.rend(); ++one) {
        if (kept + one->columns + kDots > columns) break;
        kept += one->columns;
        start = one->start;
    }
    taken = kept + kDots;
    return "..." + label.substr(start);
}

}  // namespace

ProgressBar::ProgressBar(const std::string &name, std::size_t files)
    : name_(files == 1 ? printable(name) : ""),
      files_(files),
      nextDrawing_(Clock::now() + kInterval),
      terminal_(canShowBar()) {}

void ProgressBar::add(std::uint64_t units) {
    done_ += units;
    if (Clock::now() < nextDrawing_.load()) return;
    // Whoever holds it draws or writes, and the next step comes soon.
    const std::unique_lock<std::mutex> lock(mutex_, std::try_to_lock);
    if (!lock.owns_lock() || Clock::now() < nextDrawing_.load()) return;
    draw();
    nextDrawing_ = Clock::now() + kInterval;
}

void ProgressBar::draw() {
    static constexpr std::size_t kFrame = sizeof " [] 100%";  // and the last column stays free
    const std::size_t columns = terminalColumns();
    if (columns < 2 * kFrame) return;
    const std::uint64_t done = done_, total = files_ * kUnitsPerFile;
    std::string label = name_;
    if (files_ > 1) {
        label = std::to_string(done / kUnitsPerFile) + " of " + std::to_string(files_) + " files";
    }
    std::size_t taken = 0;
    label = shortened(label, (columns - kFrame) / 2, taken);
    std::string bar(columns - kFrame - taken, '.');
    const std::size_t full = done * bar.size() / total;
    bar.replace(0, full, full, '#');
    std::fprintf(stderr, "\r%s [%s] %3d%%", label.c_str(), bar.c_str(),
                 static_cast<int>(done * 100 / total));
    shown_ = true;
}

void ProgressBar::clear() {
    if (std::exchange(shown_, false)) std::fputs("\r\033[K", stderr);
}

FileProgress::~FileProgress() {
    if (bar_.terminal_) bar_.add(kUnitsPerFile - units_);
}

void FileProgress::advance() {
    if (!bar_.terminal_) return;
    ++done_;
    const std::uint64_t units = done_ >= steps_ ? kUnitsPerFile : done_ * kUnitsPerFile / steps_;
    bar_.add(units - std::exchange(units_, units));
}

}  // namespace tool
