#include "output_file.h"

#include "report.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

namespace {

constexpr std::array kDeadlySignals = {SIGHUP, SIGINT, SIGPIPE, SIGTERM};

// What the handler removes, in memory that it may touch at any moment; empty for nothing.
char unfinished[PATH_MAX];

void removeUnfinished(int signal) {
    if (unfinished[0] != '\0') unlink(unfinished);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// Keeps the signals out while the file and the note of it are made to agree.
class SignalsHeld {
public:
    SignalsHeld() {
        sigset_t held;
        sigemptyset(&held);
        for (const int signal : kDeadlySignals)
            sigaddset(&held, signal);
        sigprocmask(SIG_BLOCK, &held, &m_before);
    }
    ~SignalsHeld() { sigprocmask(SIG_SETMASK, &m_before, nullptr); }
    SignalsHeld(const SignalsHeld &) = delete;
    SignalsHeld &operator=(const SignalsHeld &) = delete;

private:
    sigset_t m_before;
};

void watchSignals() {
    for (const int signal : kDeadlySignals) {
        // A signal that the caller has had ignored stays so.
        if (std::signal(signal, removeUnfinished) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
    // A file that grows past the limit of its user is an error to report, not an end.
    std::signal(SIGXFSZ, SIG_IGN);
}

std::string folderOf(const std::string &path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

// Where a link leads to; a path to nothing is taken as it stands.
std::string resolved(const std::string &path) {
    char *real = realpath(path.c_str(), nullptr);
    if (real == nullptr) return path;
    std::string result(real);
    std::free(real);
    return result;
}

// Permissions of the file that is replaced, or else those that a new file gets.
mode_t modeFor(const std::string &target) {
    struct stat status;
    if (stat(target.c_str(), &status) == 0) return status.st_mode & 07777;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

void syncFolder(const std::string &folder) {
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    fsync(descriptor);  // some file systems cannot; the file itself is safe
    close(descriptor);
}

}  // namespace

OutputFile::OutputFile(const std::string &path) : m_path(path), m_target(resolved(path)) {
    struct stat status;
    if (stat(m_target.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        throw Trouble(path, "is no regular file and cannot be replaced");
    }
    watchSignals();
    const std::string folder = folderOf(m_target);
    m_temporary = folder + ".vxutil-XXXXXX";
    if (m_temporary.size() >= sizeof unfinished) {
        errno = ENAMETOOLONG;
        throw systemTrouble(path);
    }
    const SignalsHeld held;
    m_file = mkostemp(m_temporary.data(), O_CLOEXEC);
    if (m_file < 0) throw systemTrouble(path);
    std::strcpy(unfinished, m_temporary.c_str());
    fchmod(m_file, modeFor(m_target));
}

OutputFile::~OutputFile() {
    if (m_file >= 0) close(m_file);
    if (m_temporary.empty()) return;
    const SignalsHeld held;
    unlink(m_temporary.c_str());
    unfinished[0] = '\0';
}

int OutputFile::duplicate() const {
    const int copy = fcntl(m_file, F_DUPFD_CLOEXEC, 0);
    if (copy < 0) throw systemTrouble(m_path);
    return copy;
}

void OutputFile::commit() {
    if (fsync(m_file) != 0) throw systemTrouble(m_path);
    {
        const SignalsHeld held;
        if (rename(m_temporary.c_str(), m_target.c_str()) != 0) throw systemTrouble(m_path);
        unfinished[0] = '\0';
        m_temporary.clear();
    }
    syncFolder(folderOf(m_target));
}

}  // namespace tool
