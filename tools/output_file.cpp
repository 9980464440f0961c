#include "output_file.h"

#include "report.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

namespace {

constexpr int kMaxLinks = 40;  // one behind the other, as the system allows

// Those that do not end a process, and those that nobody can catch.
constexpr std::array kHarmlessSignals = {SIGKILL, SIGSTOP, SIGCHLD, SIGCONT,  SIGTSTP,
                                         SIGTTIN, SIGTTOU, SIGURG,  SIGWINCH, SIGXFSZ};

// What the handler removes, in memory that it may touch at any moment; empty for nothing.
using Note = char[PATH_MAX];
Note unfinished[kMaxOutputFiles];

std::atomic<int> changing = 0;  // threads that make a file and its note agree
std::atomic<bool> ending = false;
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

void removeUnfinished(int signal) {
    // Other threads work on. They finish what they have begun, and begin nothing.
    ending = true;
    while (changing != 0)
        sched_yield();
    for (const Note &note : unfinished)
        if (note[0] != '\0') unlink(note);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// Keeps the signals out while files and the notes of them are made to agree.
class SignalBlocker {
public:
    SignalBlocker() {
        sigset_t held;
        sigfillset(&held);
        pthread_sigmask(SIG_BLOCK, &held, &before_);
        ++changing;
        if (!ending) return;
        --changing;
        for (;;)
            pause();  // for the end of the process
    }
    ~SignalBlocker() {
        --changing;
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    SignalBlocker(const SignalBlocker &) = delete;
    SignalBlocker &operator=(const SignalBlocker &) = delete;

private:
    sigset_t before_;
};

// Between threads; the handler waits until nobody changes a note.
std::mutex noteMutex;

// A note with the name of a file. Null if all are taken.
char *takeNote(const std::string &name) {
    const std::lock_guard<std::mutex> lock(noteMutex);
    for (Note &note : unfinished)
        if (note[0] == '\0') return std::strcpy(note, name.c_str());
    return nullptr;
}

void releaseNote(char *note) {
    const std::lock_guard<std::mutex> lock(noteMutex);
    if (note != nullptr) *note = '\0';
}

// Read before there are threads: it cannot be asked for without a change.
const mode_t fileMask = [] {
    const mode_t mask = umask(0);
    umask(mask);
    return mask;
}();

void watchSignals() {
    for (int signal = 1; signal <= SIGRTMAX; ++signal) {
        if (std::ranges::find(kHarmlessSignals, signal) != kHarmlessSignals.end()) continue;
        // A signal that the caller has had ignored stays so, and the C library keeps a few.
        struct sigaction now = {};
        if (sigaction(signal, nullptr, &now) != 0 || now.sa_handler != SIG_DFL) continue;
        now.sa_handler = removeUnfinished;
        sigaction(signal, &now, nullptr);
    }
}

std::string folderOf(const std::string &path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

// Where links lead to, be there a file or not.
std::string resolveSymlinks(const std::string &from) {
    std::string path = from;
    for (int i = 0; i < kMaxLinks; ++i) {
        char next[PATH_MAX];
        const ssize_t length = readlink(path.c_str(), next, sizeof next);
        if (length < 0 || length == sizeof next) return path;
        const std::string target(next, static_cast<std::size_t>(length));
        path = target.starts_with('/') ? target : folderOf(path).append(target);
    }
    errno = ELOOP;
    throw systemError(from);
}

// Hands down what the replaced file has, or else gives what a new file gets.
void copyPermissions(int file, const std::string &target) {
    struct stat status;
    mode_t mode = 0;
    if (stat(target.c_str(), &status) == 0) {
        // Not everybody can give files away, but a group that one is in can be chosen.
        if (fchown(file, status.st_uid, status.st_gid) != 0) {
            [[maybe_unused]] const int kept = fchown(file, static_cast<uid_t>(-1), status.st_gid);
        }
        mode = status.st_mode & 0777;
    } else {
        mode = 0666 & ~fileMask;
    }
    fchmod(file, mode);
}

void syncFolder(const std::string &folder) {
    const vx::File opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen()) fsync(opened.get());  // some file systems cannot; the file itself is safe
}

}  // namespace

OutputFile::OutputFile(const std::string &path) : path_(path), target_(resolveSymlinks(path)) {
    struct stat status;
    if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        throw Error(path, "is no regular file and cannot be replaced");
    }
    static std::once_flag watched;
    std::call_once(watched, watchSignals);
    const std::string folder = folderOf(target_);
    temporary_ = folder + ".vxutil-XXXXXX";
    if (temporary_.size() >= sizeof(Note)) {
        errno = ENAMETOOLONG;
        throw systemError(path);
    }
    const SignalBlocker held;
    file_ = vx::File(mkostemp(temporary_.data(), O_CLOEXEC));
    if (!file_.isOpen()) throw systemError(path);
    note_ = takeNote(temporary_);
    copyPermissions(file_.get(), target_);
}

OutputFile::~OutputFile() {
    if (temporary_.empty()) return;
    const SignalBlocker held;
    unlink(temporary_.c_str());
    releaseNote(note_);
}

vx::File OutputFile::duplicate() const {
    vx::File copy(fcntl(file_.get(), F_DUPFD_CLOEXEC, 0));
    if (!copy.isOpen()) throw systemError(path_);
    return copy;
}

std::uint64_t OutputFile::size() const {
    const std::int64_t bytes = vx::fileLength(file_.get());
    return bytes < 0 ? 0 : static_cast<std::uint64_t>(bytes);
}

void OutputFile::clear() {
    if (ftruncate(file_.get(), 0) != 0 || lseek(file_.get(), 0, SEEK_SET) != 0) {
        throw systemError(path_);
    }
}

void OutputFile::commit() {
    if (fsync(file_.get()) != 0) throw systemError(path_);
    {
        const SignalBlocker held;
        if (rename(temporary_.c_str(), target_.c_str()) != 0) throw systemError(path_);
        releaseNote(note_);
        temporary_.clear();
    }
    syncFolder(folderOf(target_));
}

}  // namespace tool
