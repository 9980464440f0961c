#include "registry_files.h"

#include "platform/files.h"
#include "platform/posix/registry_file.h"
#include "report.h"

#include <vxsearchpath.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace tool {

namespace {

constexpr int kLevels[] = {VX_LEVEL_USER, VX_LEVEL_MACHINE};

// Locks stand at this descriptor and the next one, where a program that starts anew finds them.
constexpr int kFirstLock = 3;

vx::RegistryRoot rootOf(int level) {
    return level == VX_LEVEL_USER ? vx::RegistryRoot::kUser : vx::RegistryRoot::kMachine;
}

std::string registryFolder(int level) {
    return std::filesystem::path(registryFile(level)).parent_path();
}

std::string damagedPath(const std::string &file) {
    return file + ".damaged";
}

// Which file stands in the place for one that was set aside: an earlier one makes room for it.
ino_t asideNow(int level) {
    struct stat status;
    return stat(damagedPath(registryFile(level)).c_str(), &status) == 0 ? status.st_ino : 0;
}

// Why a file cannot be read, or an empty text. None at all is like an empty one.
std::string whyUnreadable(const std::string &file) {
    struct stat status;
    if (stat(file.c_str(), &status) != 0) return errno == ENOENT ? "" : std::strerror(errno);
    if (!S_ISREG(status.st_mode)) return "is no regular file";
    return access(file.c_str(), R_OK) == 0 ? "" : std::strerror(errno);
}

// Whoever may not write there is told why.
void checkRights(int level) {
    std::filesystem::path place = registryFolder(level);
    if (place.empty()) throw Error("HOME", "is not set, so there is no place for the lists");
    std::error_code ignored;
    while (!std::filesystem::exists(place, ignored) && place.has_relative_path())
        place = place.parent_path();
    if (place.empty()) place = ".";
    if (!std::filesystem::is_directory(place, ignored)) throw Error(place, "is no directory");
    const std::string file = registryFile(level);
    if (access(place.c_str(), W_OK | X_OK) != 0) throw systemError(file);
    if (const std::string reason = whyUnreadable(file); !reason.empty()) {
        throw Error(file, reason);
    }
    if (access(file.c_str(), W_OK) != 0 && errno != ENOENT) throw systemError(file);
}

// Other edits take moments. But whoever may read a folder can hold its lock for as long as they
// like.
class EditWait {
public:
    void lock(int file, const std::string &folder) {
        while (flock(file, LOCK_EX | LOCK_NB) != 0) {
            if (errno != EWOULDBLOCK && errno != EINTR) throw systemError(folder);
            const auto waited = std::chrono::steady_clock::now() - start_;
            if (waited >= kLongestWait) {
                throw Error(folder, "locked by another edit for ten seconds: nothing was changed");
            }
            if (waited >= kSilentWait && !std::exchange(isReported_, true)) {
                printError(folder, "waiting for another edit to end");
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }

private:
    static constexpr std::chrono::seconds kSilentWait{1}, kLongestWait{10};
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    bool isReported_ = false;
};

// Each edit writes the files of both levels, as it has read them. So it locks the folders of both,
// but for one where it cannot write. Whatever process has the descriptors holds the locks.
void lockFolders() {
    std::error_code ignored;
    EditWait wait;
    int place = kFirstLock;
    for (const int level : kLevels) {
        const std::string folder = registryFolder(level);
        if (access(folder.c_str(), W_OK) != 0) continue;
        if (level == VX_LEVEL_MACHINE &&
            std::filesystem::equivalent(folder, registryFolder(VX_LEVEL_USER), ignored)) {
            continue;
        }
        vx::File file(open(folder.c_str(), O_RDONLY | O_DIRECTORY));
        if (!file.isOpen() || dup2(file.get(), place) < 0) throw systemError(folder);
        if (file.get() == place) file.release();
        wait.lock(place, folder);
        ++place;
    }
}

// Lets a process of its own end after some work: the library writes then.
void runInChild(const std::function<void()> &work) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) throw systemError("a further process");
    if (child == 0) {
        work();
        std::exit(kDone);
    }
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

bool isDamaged(const std::string &file) {
    std::ifstream in(file, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(in), {});
    return in.is_open() && !vx::RegistryFile().parse(text);
}

std::string whyMissing(int level) {
    const std::string file = registryFile(level);
    if (std::string reason = whyUnreadable(file); !reason.empty()) return reason;
    if (isDamaged(file)) return "is damaged, and no directory is read from it";
    if (asideNow(level) == 0) return "";
    return "was damaged and is kept as " + damagedPath(file) +
           "; remove that when it is of no more use";
}

}  // namespace

std::string registryFile(int level) {
    return vx::registryFilePath(rootOf(level));
}

bool reportUnreadableLists(int level) {
    bool whole = true;
    for (const int kept : kLevels) {
        if (level != VX_LEVEL_MERGED && level != kept) continue;
        const std::string file = registryFile(kept);
        const std::string reason = file.empty() ? "" : whyMissing(kept);
        if (reason.empty()) continue;
        printError(file, reason);
        whole = false;
    }
    return whole;
}

void beginEdit(int level, char *const *arguments) {
    if (holdsEditLock()) return;
    checkRights(level);
    std::error_code failure;
    std::filesystem::create_directories(registryFolder(level), failure);
    if (failure) throw Error(registryFolder(level), failure.message());
    lockFolders();
    execSelf(arguments);
}

bool holdsEditLock() {
    struct stat held, folder;
    if (fstat(kFirstLock, &held) != 0) return false;
    for (const int level : kLevels) {
        if (stat(registryFolder(level).c_str(), &folder) == 0 && held.st_dev == folder.st_dev &&
            held.st_ino == folder.st_ino) {
            return flock(kFirstLock, LOCK_EX | LOCK_NB) == 0;
        }
    }
    return false;
}

void execSelf(const char *const *arguments) {
    std::fflush(nullptr);
    execv("/proc/self/exe", const_cast<char *const *>(arguments));
    throw Error("/proc/self/exe", std::string("cannot be started anew: ") + std::strerror(errno));
}

void writeLists(const std::function<void()> &change) {
    const ino_t before[] = {asideNow(VX_LEVEL_USER), asideNow(VX_LEVEL_MACHINE)};
    runInChild(change);
    for (const int level : kLevels) {
        const std::string file = registryFile(level);
        if (asideNow(level) == before[level - VX_LEVEL_USER]) continue;
        printError(file, "was damaged and is kept as " + damagedPath(file));
    }
}

void disableRegistryWrites() {
    // Nothing can be made below what is no folder.
    setenv("VX_REGISTRY_DIR", "/dev/null", 1);
}

}  // namespace tool
