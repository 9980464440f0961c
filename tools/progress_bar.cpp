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
    : m_label(shortened(printable(label))),
      m_total(total != 0 ? total : 1),
      m_terminal(isatty(STDERR_FILENO) != 0) {}

void ProgressBar::advance() {
    ++m_done;
    if (!m_terminal) return;
    const int percentage = static_cast<int>(m_done * 100 / m_total);
    if (percentage == m_shown) return;
    m_shown = percentage;
    std::string bar(kBarColumns, '.');
    bar.replace(0, m_done * kBarColumns / m_total, m_done * kBarColumns / m_total, '#');
    std::fprintf(stderr, "\r%s [%s] %3d%%", m_label.c_str(), bar.c_str(), percentage);
}

void ProgressBar::clear() {
    if (m_shown >= 0) std::fputs("\r\033[K", stderr);
    m_shown = -1;
}

}  // namespace tool
