// The registry in text files. The file of a root is replaced as a whole, so that a reader and a
// killed process find the old text or the new one.

#include "platform/registry.h"

#include "platform/environment.h"
#include "platform/files.h"
#include "platform/posix/registry_file.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <new>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vx {

namespace {

const char *nonEmptyVariable(const char *name) {
    const char *value = environmentVariable(name);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

// Empty if there is none.
std::string registryFolder(RegistryRoot root) {
    if (const char *folder = nonEmptyVariable("VX_REGISTRY_DIR")) return folder;
    if (root == RegistryRoot::kMachine) return "/etc/vxutil";
    if (const char *folder = nonEmptyVariable("XDG_CONFIG_HOME")) {
        return std::string(folder) + "/vxutil";
    }
    if (const char *home = nonEmptyVariable("HOME")) return std::string(home) + "/.config/vxutil";
    return "";
}

std::string folderOf(const std::string &path) {
    return path.substr(0, path.rfind('/') + 1);
}

bool readAll(int file, std::string &text) {
    std::size_t length = 0;
    while (length < text.size()) {
        const int got =
            readFile(file, text.data() + length,
                     static_cast<unsigned>(std::min<std::size_t>(text.size() - length, 1U << 30)));
        if (got <= 0) return false;
        length += static_cast<std::size_t>(got);
    }
    return true;
}

bool writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        const int put = writeFile(
            file, text.data(), static_cast<unsigned>(std::min<std::size_t>(text.size(), 1U << 30)));
        if (put <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(put));
    }
    return true;
}

// People keep settings elsewhere and link to them. The link stays, even while there is no file at
// its end yet. False if it cannot be followed.
bool resolveSymlinks(std::string &path) {
    constexpr int kMaxLinks = 40;  // in a row, as the system allows
    for (int i = 0; i < kMaxLinks; ++i) {
        char text[4096];
        const ssize_t length = ::readlink(path.c_str(), text, sizeof text);
        if (length < 0)
            return errno == EINVAL || errno == ENOENT || errno == ENOTDIR;  // not a link
        const std::string target(text, static_cast<std::size_t>(length));
        path = target.starts_with('/') ? target : folderOf(path).append(target);
    }
    return false;
}

// Gives a file a further name. False with EEXIST if there is a file of that name. Where a file
// system has no hard links, the file is renamed.
bool linkOrRename(const std::string &path, const std::string &name) {
    if (::link(path.c_str(), name.c_str()) == 0) return true;
    if (errno == EEXIST || ::access(name.c_str(), F_OK) == 0) {
        errno = EEXIST;
        return false;
    }
    return ::rename(path.c_str(), name.c_str()) == 0;
}

// Keeps a file under another name. An earlier file of that name gets the first free number.
bool moveAsideDamaged(const std::string &path) {
    const std::string aside = path + ".damaged";
    if (linkOrRename(path, aside)) return true;
    for (int number = 1; errno == EEXIST; ++number) {
        if (linkOrRename(aside, aside + "." + std::to_string(number))) {
            ::unlink(aside.c_str());
            return linkOrRename(path, aside);
        }
    }
    return false;
}

constexpr auto kSameGroup = static_cast<gid_t>(-1);

// Only root can give a file away, but everybody can choose a group that they are in.
void changeOwner(int file, uid_t user, gid_t group) {
    struct stat now;
    const bool isKnown = ::fstat(file, &now) == 0;
    if (isKnown && now.st_uid == user && (now.st_gid == group || group == kSameGroup)) return;
    if (::fchown(file, user, group) == 0 || group == kSameGroup) return;
    [[maybe_unused]] const int result = ::fchown(file, static_cast<uid_t>(-1), group);
}

// A file or folder that root makes in somebody's folder is theirs, or they could never save again.
void giveToFolderOwner(int file, const std::string &path) {
    struct stat folder;
    if (::stat(folderOf(path).c_str(), &folder) == 0) changeOwner(file, folder.st_uid, kSameGroup);
}

// Makes the folders of a path, as far as they are missing. Whoever opens the path sees what failed.
void makeFolders(const std::string &path) {
    for (std::size_t end = path.find('/', 1); end != path.npos; end = path.find('/', end + 1)) {
        const std::string folder = path.substr(0, end);
        if (::mkdir(folder.c_str(), 0777) != 0) continue;
        const File made(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        giveToFolderOwner(made.get(), folder);
    }
}

bool changeMode(int file, mode_t mode) {
    struct stat now;
    if (::fstat(file, &now) == 0 && (now.st_mode & 07777) == mode) return true;
    return ::fchmod(file, mode) == 0;
}

// Does not wait for ever: the holder may be stopped.
bool waitForLock(int lock) {
    constexpr timespec kPause = {0, 20'000'000};
    constexpr int kTries = 240;  // five seconds, with the time of the tries
    for (int i = 0; i < kTries; ++i) {
        if (::flock(lock, LOCK_EX | LOCK_NB) == 0) return true;
        if (errno != EWOULDBLOCK && errno != EINTR) return false;
        ::nanosleep(&kPause, nullptr);
    }
    return false;
}

bool isSameFile(const struct stat &one, const struct stat &other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino &&
           one.st_size == other.st_size && one.st_mtim.tv_sec == other.st_mtim.tv_sec &&
           one.st_mtim.tv_nsec == other.st_mtim.tv_nsec;
}

}  // namespace

std::string registryFilePath(RegistryRoot root) {
    const std::string folder = registryFolder(root);
    if (folder.empty()) return "";
    return folder + (root == RegistryRoot::kUser ? "/user.reg" : "/machine.reg");
}

class Registry::Store {
public:
    explicit Store(RegistryRoot root)
        : prefix_(root == RegistryRoot::kUser ? "HKEY_CURRENT_USER\\" : "HKEY_LOCAL_MACHINE\\"),
          path_(registryFilePath(root)),
          isResolved_(resolveSymlinks(path_)) {
        read();
    }
    // A child that was forked meanwhile has the lock file open as well, and would keep the lock if
    // it was only closed here.
    ~Store() {
        if (lock_.isOpen()) ::flock(lock_.get(), LOCK_UN);
    }
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;

    bool isReadable() const { return isReadable_; }
    std::string fullPath(const std::string &path) const { return prefix_ + path; }
    std::vector<RegistryValue> values(const std::string &path) const {
        return content_.values(fullPath(path));
    }

    SaveResult save(const std::string &path, std::span<const RegistryValue> values) {
        if (!isReadable_ || path_.empty()) return SaveResult::kFailed;
        std::string text = content_.textWith(fullPath(path), values);
        if (exists_ && text == text_) return SaveResult::kSaved;
        if (!lock_.isOpen()) {
            if (isRefused_ || !takeLock()) {
                isRefused_ = true;
                return SaveResult::kFailed;
            }
            if (hasChanged()) {
                read();
                return SaveResult::kOutdated;
            }
        }
        RegistryFile changed;
        if (!changed.parse(text) || !replace(text)) return SaveResult::kFailed;
        content_ = std::move(changed);
        text_ = std::move(text);
        exists_ = true;
        isDamaged_ = false;
        return SaveResult::kSaved;
    }

private:
    void read() {
        content_ = RegistryFile();
        isReadable_ = isResolved_ && readText();
        isDamaged_ = isReadable_ && exists_ && !content_.parse(text_);
    }

    // The complete text of a regular file. True without one if there is no file.
    bool readText() {
        exists_ = false;
        if (path_.empty()) return true;
        // Opening must not wait, should somebody have put a pipe there.
        const File file(::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        if (!file.isOpen()) return errno == ENOENT;
        exists_ = true;
        if (::fstat(file.get(), &status_) != 0 || !S_ISREG(status_.st_mode)) return false;
        text_.resize(static_cast<std::size_t>(status_.st_size));
        return readAll(file.get(), text_);
    }

    bool hasChanged() const {
        struct stat now;
        if (::stat(path_.c_str(), &now) != 0) return exists_ || errno != ENOENT;
        return !exists_ || !isSameFile(now, status_);
    }

    // The file itself is replaced by each save, so a file beside it carries the lock. Whoever may
    // not write the settings does not get that far.
    bool takeLock() {
        // The folder would let a file be replaced that its owner has made read-only.
        if (exists_ && ::access(path_.c_str(), W_OK) != 0) return false;
        if (!exists_) makeFolders(path_);
        const std::string path = path_ + ".lock";
        // Neither a link nor a pipe, which would be waited for.
        constexpr int kMode = O_WRONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
        File lock;
        for (const int more : {0, O_CREAT | O_EXCL, 0}) {  // another process may be faster
            lock = File(::open(path.c_str(), kMode | more, 0600));
            if (lock.isOpen()) break;
        }
        if (!lock.isOpen() || !setLockRights(lock.get(), path)) return false;
        if (!waitForLock(lock.get())) return false;
        lock_ = std::move(lock);
        return true;
    }

    // Only those who may write the settings can open the lock, so that nobody else can hold it.
    // False for what is not a file of its own: root must not change the rights of another one.
    bool setLockRights(int lock, const std::string &path) const {
        struct stat now;
        if (::fstat(lock, &now) != 0 || !S_ISREG(now.st_mode) || now.st_nlink != 1) return false;
        setOwner(lock, path);
        changeMode(lock, 0600 | (exists_ ? status_.st_mode & 0022 : 0));
        return true;
    }

    void setOwner(int file, const std::string &path) const {
        if (exists_) {
            changeOwner(file, status_.st_uid, status_.st_gid);
        } else {
            giveToFolderOwner(file, path);
        }
    }

    bool replace(const std::string &text) {
        const std::string fresh = path_ + ".new";
        bool isReplaced = false;
        try {
            isReplaced = writeFresh(fresh, text) && (!isDamaged_ || moveAsideDamaged(path_)) &&
                         ::rename(fresh.c_str(), path_.c_str()) == 0;
        } catch (const std::bad_alloc &) {
            ::unlink(fresh.c_str());
            throw;
        }
        if (!isReplaced) ::unlink(fresh.c_str());
        return isReplaced;
    }

    // A file that a killed process left is removed first: whatever it is, it is not written into.
    bool writeFresh(const std::string &fresh, const std::string &text) {
        ::unlink(fresh.c_str());
        File file(::open(fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (!file.isOpen()) return false;
        setOwner(file.get(), fresh);
        if (exists_ && !changeMode(file.get(), status_.st_mode & 07777)) return false;
        if (!writeAll(file.get(), text) || ::fsync(file.get()) != 0) return false;
        return ::fstat(file.get(), &status_) == 0 && file.close();
    }

    // Neither a link nor a pipe, which would be waited for.
    static constexpr int kOwnFile = O_NOFOLLOW | O_NONBLOCK;

    std::string prefix_;
    std::string path_;  // of the file, empty if there is no folder for it
    bool isResolved_;
    bool isReadable_ = true;
    bool exists_ = false;
    bool isDamaged_ = false;
    struct stat status_ = {};
    std::string text_;
    RegistryFile content_;
    File lock_;
    bool isRefused_ = false;  // the lock
};

Registry::Registry(RegistryRoot root) : store_(std::make_unique<Store>(root)) {}
Registry::~Registry() = default;

bool Registry::isReadable() const {
    return store_->isReadable();
}

RegistryKey::RegistryKey(Registry &registry, std::string path)
    : registry_(registry), path_(std::move(path)), values_(registry.store_->values(path_)) {}

SaveResult RegistryKey::save() {
    return registry_.store_->save(path_, values_);
}

}  // namespace vx
