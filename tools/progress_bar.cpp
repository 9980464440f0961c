#include "progress_bar.h"

#include "report.h"

#include <cstdio>
#include <unistd.h>

namespace tool {

namespace {

constexpr std::size_t kLabelBytes = 36, kBarColumns = 30;

// The end of a path tells more than its beginning. No character of UTF-8 is cut.
std::string shortened(const std::string &label) {
    if (label.size() <= kLabelBytes) return label;
    std::size_t from = label.size() - kLabelBytes + 3;
    while (from < label.size() && (static_cast<unsigned char>(label[from]) & 0xC0) == 0x80)
        ++from;
    return "..." + label.substr(from);
}

}  // namespace

ProgressBar::ProgressBar(const std::string &label, std::uint64_t total)
    : label_(shortened(printable(label))),
      total_(total != 0 ? total : 1),
      terminal_(isatty(STDERR_FILENO) != 0) {}

void ProgressBar::advance() {
    ++done_;
    if (!terminal_) return;
    const int percentage = static_cast<int>(done_ * 100 / total_);
    if (percentage == shown_) return;
    shown_ = percentage;
    std::string bar(kBarColumns, '.');
    bar.replace(0, done_ * kBarColumns / total_, done_ * kBarColumns / total_, '#');
    std::fprintf(stderr, "\r%s [%s] %3d%%", label_.c_str(), bar.c_str(), percentage);
}

void ProgressBar::clear() {
    if (shown_ >= 0) std::fputs("\r\033[K", stderr);
    shown_ = -1;
}

}  // namespace tool
