#include "platform/registry.h"

#include "platform/environment.h"
#include "platform/posix/registry_file.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vx {

namespace {

class Descriptor {
public:
    explicit Descriptor(int file = -1) : file_(file) {}
    ~Descriptor() { close(); }
    Descriptor &operator=(Descriptor &&other) noexcept {
        close();
        file_ = std::exchange(other.file_, -1);
        return *this;
    }
    int get() const { return file_; }
    bool isOpen() const { return file_ >= 0; }
    bool close() { return file_ < 0 || ::close(std::exchange(file_, -1)) == 0; }

private:
    int file_;
};

const char *nonEmpty(const char *name) {
    const char *value = environmentVariable(name);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

std::optional<std::string> folderOf(RootKey root) {
    if (const char *folder = nonEmpty("VX_REGISTRY_DIR")) return folder;
    if (root == HKEY_LOCAL_MACHINE) return "/etc/vxutil";
    if (const char *folder = nonEmpty("XDG_CONFIG_HOME")) return std::string(folder) + "/vxutil";
    if (const char *home = nonEmpty("HOME")) return std::string(home) + "/.config/vxutil";
    return std::nullopt;
}

std::string keyPath(RootKey root, const char *path) {
    return std::string(root == HKEY_CURRENT_USER ? "HKEY_CURRENT_USER\\" : "HKEY_LOCAL_MACHINE\\") +
           path;
}

bool makeFolders(const std::string &folder) {
    for (std::size_t end = folder.find('/', 1);; end = folder.find('/', end + 1)) {
        const std::string part = folder.substr(0, end);
        if (::mkdir(part.c_str(), 0777) != 0 && errno != EEXIST) return false;
        if (end == std::string::npos) return true;
    }
}

// The whole of a regular file: 0, ERROR_FILE_NOT_FOUND when there is none, or another failure.
int readFile(const std::string &path, std::string &text) {
    // Opening must not wait, should somebody have put a pipe there.
    Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isOpen()) return errno == ENOENT ? ERROR_FILE_NOT_FOUND : ERROR_ACCESS_DENIED;
    struct stat status;
    if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return ERROR_ACCESS_DENIED;
    text.resize(static_cast<std::size_t>(status.st_size));
    std::size_t length = 0;
    while (length < text.size()) {
        const ssize_t got = ::read(file.get(), text.data() + length, text.size() - length);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return ERROR_ACCESS_DENIED;
        length += static_cast<std::size_t>(got);
    }
    return ERROR_SUCCESS;
}

bool writeAll(int file, const std::string &text) {
    std::size_t length = 0;
    while (length < text.size()) {
        const ssize_t put = ::write(file, text.data() + length, text.size() - length);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        length += static_cast<std::size_t>(put);
    }
    return true;
}

// People keep settings elsewhere and link to them; the link is to stay one, also while there is no
// file behind it yet.
std::string behindLinks(const std::string &path) {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                           std::free);
    if (real != nullptr) return real.get();
    char target[4096];
    const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
    if (length <= 0 || length == sizeof target) return path;
    const std::string_view text(target, static_cast<std::size_t>(length));
    return text.front() == '/' ? std::string(text)
                               : path.substr(0, path.rfind('/') + 1).append(text);
}

// Gives a file a further name; false with EEXIST when there is a file of that name. Where a file
// system has no such names, the file moves there.
bool keepAs(const std::string &path, const std::string &name) {
    if (::link(path.c_str(), name.c_str()) == 0) return true;
    if (errno == EEXIST || ::access(name.c_str(), F_OK) == 0) {
        errno = EEXIST;
        return false;
    }
    return ::rename(path.c_str(), name.c_str()) == 0;
}

// A file that root makes in somebody's folder is theirs, or they could never save again. Root alone
// can give a file away; elsewhere the owner is the right one already.
void giveToOwnerOfFolder(int file, const std::string &path) {
    struct stat folder;
    if (::stat(path.substr(0, path.rfind('/') + 1).c_str(), &folder) != 0) return;
    [[maybe_unused]] const int given = ::fchown(file, folder.st_uid, static_cast<gid_t>(-1));
}

// Keeps a file under another name. A file of that name is kept under the first free number.
bool setAside(const std::string &path, const std::string &aside) {
    if (keepAs(path, aside)) return true;
    for (int number = 1; errno == EEXIST; ++number) {
        if (keepAs(aside, aside + "." + std::to_string(number))) {
            ::unlink(aside.c_str());
            return keepAs(path, aside);
        }
    }
    return false;
}

}  // namespace

class OpenKey {
public:
    OpenKey(RootKey root, const char *path, bool writing)
        : path_(keyPath(root, path)), writing_(writing) {
        if (const std::optional<std::string> folder = folderOf(root)) {
            folder_ = *folder;
            file_ = folder_ + (root == HKEY_CURRENT_USER ? "/user.reg" : "/machine.reg");
        }
    }
    // A child that was forked meanwhile has the lock file open as well, and a close here would
    // leave the lock with it.
    ~OpenKey() {
        if (lock_.isOpen()) ::flock(lock_.get(), LOCK_UN);
    }
    OpenKey(const OpenKey &) = delete;
    OpenKey &operator=(const OpenKey &) = delete;

    // Reads the file, under the lock of its root when the key is for writing.
    int load(bool create) {
        if (file_.empty()) return ERROR_FILE_NOT_FOUND;
        if (create && !makeFolders(folder_)) return ERROR_ACCESS_DENIED;
        if (writing_ && !lock()) return ERROR_ACCESS_DENIED;
        const int failure = readFile(file_, original_);
        if (failure != ERROR_SUCCESS && failure != ERROR_FILE_NOT_FOUND) return failure;
        exists_ = failure == ERROR_SUCCESS;
        damaged_ = exists_ && !content_.parse(original_);
        if (create) content_.addKey(path_);
        return content_.hasKey(path_) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
    }

    const RegistryValue *valueAt(unsigned index) const { return content_.valueAt(path_, index); }
    bool removeValue(const char *name) { return content_.removeValue(path_, name); }
    int setValue(const char *name, unsigned type, const unsigned char *data, unsigned size) {
        const bool wholeBefore = std::exchange(whole_, false);  // until it is done
        content_.setValue(path_,
                          {name, type, std::string(reinterpret_cast<const char *>(data), size)});
        whole_ = wholeBefore;
        return ERROR_SUCCESS;
    }
    bool isForWriting() const { return writing_; }

    int save() {
        if (!writing_) return ERROR_SUCCESS;
        // Changes go in all together or not at all: a value that there was no memory for would be
        // lost with the old ones gone.
        if (!whole_) return ERROR_NOT_ENOUGH_MEMORY;
        const std::string text = content_.text();
        if (exists_ && text == original_) return ERROR_SUCCESS;
        // The folder would let a file be replaced that its owner has made read-only.
        if (exists_ && ::access(file_.c_str(), W_OK) != 0) return ERROR_ACCESS_DENIED;
        const std::string target = behindLinks(file_);
        const std::string fresh = target + ".new";
        if (writeFresh(fresh, text) && (!damaged_ || setAside(target, target + ".damaged")) &&
            ::rename(fresh.c_str(), target.c_str()) == 0) {
            return ERROR_SUCCESS;
        }
        ::unlink(fresh.c_str());
        return ERROR_WRITE_FAULT;
    }

private:
    // The file itself is replaced by each save, so a file beside it carries the lock. It is made
    // where there is none, unless another process is faster; one that may only be read will do, but
    // not on a file system that asks for more.
    bool lock() {
        const std::string path = file_ + ".lock";
        for (const int mode : {O_RDWR, O_RDWR | O_CREAT | O_EXCL, O_RDWR, O_RDONLY}) {
            lock_ = Descriptor(::open(path.c_str(), mode | O_CLOEXEC, 0666));
            if (!lock_.isOpen()) continue;
            if ((mode & O_EXCL) != 0) giveToOwnerOfFolder(lock_.get(), path);
            break;
        }
        if (!lock_.isOpen()) return false;
        int result = ::flock(lock_.get(), LOCK_EX);
        while (result != 0 && errno == EINTR)
            result = ::flock(lock_.get(), LOCK_EX);
        return result == 0;
    }

    // A file that a killed process left behind goes first: whatever it is, it is not written into.
    bool writeFresh(const std::string &fresh, const std::string &text) const {
        ::unlink(fresh.c_str());
        Descriptor file(::open(fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (!file.isOpen()) return false;
        if (!exists_) giveToOwnerOfFolder(file.get(), fresh);
        struct stat status;
        if (exists_) {
            if (::stat(file_.c_str(), &status) != 0) return false;
            [[maybe_unused]] const int given = ::fchown(file.get(), status.st_uid, status.st_gid);
            if (::fchmod(file.get(), status.st_mode & 07777) != 0) return false;
        }
        return writeAll(file.get(), text) && ::fsync(file.get()) == 0 && file.close();
    }

    std::string path_;
    std::string folder_;
    std::string file_;
    bool writing_;
    bool exists_ = false;
    bool damaged_ = false;
    bool whole_ = true;
    Descriptor lock_;
    std::string original_;
    RegistryFile content_;
};

namespace {

// Nothing is thrown past this layer: running out of memory is a failure like any other.
template <typename Work>
int guarded(Work work) {
    try {
        return work();
    } catch (const std::bad_alloc &) {
        return ERROR_NOT_ENOUGH_MEMORY;
    } catch (const std::exception &) {
        return ERROR_INVALID_PARAMETER;
    }
}

int openKey(RootKey root, const char *path, bool writing, bool create, HKEY *key) {
    return guarded([&] {
        auto opened = std::make_unique<OpenKey>(root, path, writing);
        const int failure = opened->load(create);
        if (failure == ERROR_SUCCESS) *key = opened.release();
        return failure;
    });
}

bool isWritable(const char *name) {
    for (; *name != '\0'; ++name) {
        if (static_cast<unsigned char>(*name) < 0x20) return false;
    }
    return true;
}

}  // namespace

int RegOpenKeyExA(RootKey root, const char *path, unsigned access, HKEY *key) {
    const bool writing = (access & KEY_WRITE & ~KEY_READ) != 0;
    return openKey(root, path, writing, false, key);
}

int RegCreateKeyExA(RootKey root, const char *path, [[maybe_unused]] unsigned access, HKEY *key) {
    if (!isWritable(path)) return ERROR_INVALID_PARAMETER;
    return openKey(root, path, true, true, key);
}

int RegEnumValueA(HKEY key, unsigned index, char *name, unsigned *nameSize, unsigned *type,
                  unsigned char *data, unsigned *dataSize) {
    const RegistryValue *value = key->valueAt(index);
    if (value == nullptr) return ERROR_NO_MORE_ITEMS;
    if (value->name.size() >= *nameSize || value->data.size() > *dataSize) return ERROR_MORE_DATA;
    std::memcpy(name, value->name.c_str(), value->name.size() + 1);
    std::memcpy(data, value->data.data(), value->data.size());
    *nameSize = static_cast<unsigned>(value->name.size());
    *dataSize = static_cast<unsigned>(value->data.size());
    *type = value->type;
    return ERROR_SUCCESS;
}

int RegDeleteValueA(HKEY key, const char *name) {
    if (!key->isForWriting()) return ERROR_ACCESS_DENIED;
    return guarded([&] { return key->removeValue(name) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND; });
}

int RegSetValueExA(HKEY key, const char *name, unsigned type, const unsigned char *data,
                   unsigned size) {
    if (!key->isForWriting()) return ERROR_ACCESS_DENIED;
    if (!isWritable(name)) return ERROR_INVALID_PARAMETER;
    return guarded([&] { return key->setValue(name, type, data, size); });
}

int RegCloseKey(HKEY key) {
    const std::unique_ptr<OpenKey> closing(key);
    return guarded([&] { return closing->save(); });
}

}  // namespace vx
