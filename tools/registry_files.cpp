#include "registry_files.h"

#include "report.h"

#include <vxsearchpath.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tool {

namespace {

constexpr int kLevels[] = {VX_LEVEL_USER, VX_LEVEL_MACHINE};

// Locks stand at this descriptor and the next one, where a program that starts anew finds them.
constexpr int kFirstLock = 3;

std::string variable(const char *name) {
    const char *value = std::getenv(name);
    return value == nullptr ? "" : value;
}

std::string registryFolder(int level) {
    if (std::string folder = variable("VX_REGISTRY_DIR"); !folder.empty()) return folder;
    if (level == VX_LEVEL_MACHINE) return "/etc/vxutil";
    if (std::string folder = variable("XDG_CONFIG_HOME"); !folder.empty()) {
        return folder + "/vxutil";
    }
    const std::string home = variable("HOME");
    return home.empty() ? "" : home + "/.config/vxutil";
}

const char *fileName(int level) {
    return level == VX_LEVEL_USER ? "/user.reg" : "/machine.reg";
}

std::string asideOf(const std::string &file) {
    return file + ".damaged";
}

// Which file stands in the place for one that was set aside: an earlier one makes room for it.
ino_t asideNow(int level) {
    struct stat status;
    return stat(asideOf(registryFile(level)).c_str(), &status) == 0 ? status.st_ino : 0;
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
    if (place.empty()) throw Trouble("HOME", "is not set, so there is no place for the lists");
    std::error_code ignored;
    while (!std::filesystem::exists(place, ignored) && place.has_relative_path())
        place = place.parent_path();
    if (place.empty()) place = ".";
    if (!std::filesystem::is_directory(place, ignored)) throw Trouble(place, "is no directory");
    const std::string file = registryFile(level);
    if (access(place.c_str(), W_OK | X_OK) != 0) throw systemTrouble(file);
    if (const std::string reason = whyUnreadable(file); !reason.empty()) {
        throw Trouble(file, reason);
    }
    if (access(file.c_str(), W_OK) != 0 && errno != ENOENT) throw systemTrouble(file);
}

// Each edit writes the files of both levels, as it has read them. So it locks the folders of both,
// but for one where it cannot write. Whatever process has the descriptors holds the locks.
void lockFolders() {
    std::error_code ignored;
    int place = kFirstLock;
    for (const int level : kLevels) {
        const std::string folder = registryFolder(level);
        if (access(folder.c_str(), W_OK) != 0) continue;
        if (level == VX_LEVEL_MACHINE &&
            std::filesystem::equivalent(folder, registryFolder(VX_LEVEL_USER), ignored)) {
            continue;
        }
        const int file = open(folder.c_str(), O_RDONLY | O_DIRECTORY);
        if (file < 0 || dup2(file, place++) < 0) throw systemTrouble(folder);
        while (flock(file, LOCK_EX) != 0) {
            if (errno != EINTR) throw systemTrouble(folder);
        }
    }
}

// Lets a process of its own end after some work: the library writes then.
void endProcessAfter(const std::function<void()> &work) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) throw systemTrouble("a further process");
    if (child == 0) {
        work();
        std::exit(kDone);
    }
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

// The library says that a file is damaged by setting it aside only. So it is given a copy.
bool isDamaged(int level) {
    for (const int category : {VX_CATEGORY_TEXTURES, VX_CATEGORY_PHOTOMETRIC_WEBS}) {
        const VxSearchPath *list = vxPathStoreGet(category, level);
        if (list != nullptr && list->count != 0) return false;
    }
    std::error_code failure;
    if (!std::filesystem::exists(registryFile(level), failure)) return false;
    std::string folder = std::filesystem::temp_directory_path() / "vxutil-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) throw systemTrouble(folder);
    const std::string copy = folder + fileName(level);
    bool damaged = false;
    if (std::filesystem::copy_file(registryFile(level), copy, failure)) {
        chmod(copy.c_str(), 0600);
        endProcessAfter([&] { setenv("VX_REGISTRY_DIR", folder.c_str(), 1); });
        damaged = std::filesystem::exists(asideOf(copy), failure);
    }
    std::filesystem::remove_all(folder, failure);
    return damaged;
}

std::string whyMissing(int level) {
    const std::string file = registryFile(level);
    if (std::string reason = whyUnreadable(file); !reason.empty()) return reason;
    if (isDamaged(level)) return "is damaged, and no directory is read from it";
    if (asideNow(level) == 0) return "";
    return "was damaged and is kept as " + asideOf(file) +
           "; remove that when it is of no more use";
}

}  // namespace

std::string registryFile(int level) {
    const std::string folder = registryFolder(level);
    return folder.empty() ? "" : folder + fileName(level);
}

bool areListsWhole(int level) {
    bool whole = true;
    for (const int kept : kLevels) {
        if (level != VX_LEVEL_MERGED && level != kept) continue;
        const std::string file = registryFile(kept);
        const std::string reason = file.empty() ? "" : whyMissing(kept);
        if (reason.empty()) continue;
        complain(file, reason);
        whole = false;
    }
    return whole;
}

void beginEdit(int level, char *const *arguments) {
    if (isPartOfEdit()) return;
    checkRights(level);
    std::error_code failure;
    std::filesystem::create_directories(registryFolder(level), failure);
    if (failure) throw Trouble(registryFolder(level), failure.message());
    lockFolders();
    becomeProgram(arguments);
}

bool isPartOfEdit() {
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

void becomeProgram(const char *const *arguments) {
    std::fflush(nullptr);
    execv("/proc/self/exe", const_cast<char *const *>(arguments));
    throw Trouble("/proc/self/exe", std::string("cannot be started anew: ") + std::strerror(errno));
}

void writeLists(const std::function<void()> &change) {
    const ino_t before[] = {asideNow(VX_LEVEL_USER), asideNow(VX_LEVEL_MACHINE)};
    endProcessAfter(change);
    for (const int level : kLevels) {
        const std::string file = registryFile(level);
        if (asideNow(level) == before[level - VX_LEVEL_USER]) continue;
        complain(file, "was damaged and is kept as " + asideOf(file));
    }
}

void leaveFilesAlone() {
    // Nothing can be made below what is no folder.
    setenv("VX_REGISTRY_DIR", "/dev/null", 1);
}

}  // namespace tool
