// Values of every type set, read and deleted in a registry file, with what stood there before.

#include "platform/registry.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace vx;

constexpr char kPath[] = "Software\\A Key";

// A folder for the files of the registry.
class Folder {
public:
    Folder() {
        fs::create_directories(path);
        ::setenv("VX_REGISTRY_DIR", path.c_str(), 1);
    }
    ~Folder() { fs::remove_all(path); }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

    const fs::path path = fs::temp_directory_path() / ("vxreg" + std::to_string(::getpid()));
};

// A life of the user's key.
template <typename Work>
void withKey(Work work) {
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, kPath, KEY_WRITE, &key), ERROR_SUCCESS);
    work(key);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
}

// A user's file of this text, as the works on it leave it.
template <typename Work>
std::string worked(const std::string &text, Work work) {
    const Folder folder;
    std::ofstream(folder.path / "user.reg", std::ios::binary) << text;
    withKey(work);
    std::ifstream in(folder.path / "user.reg", std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

int set(HKEY key, const char *name, unsigned type, const std::string &data) {
    return RegSetValueExA(key, name, type, reinterpret_cast<const unsigned char *>(data.data()),
                          static_cast<unsigned>(data.size()));
}

// Whoever owns the folder can still save when root has been there first.
TEST(Registry, WhatRootMakesIsTheFoldersOwners) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can give files away";
    const Folder folder;
    ASSERT_EQ(::chown(folder.path.c_str(), 65534, 65534), 0);
    withKey([](HKEY) {});
    for (const char *name : {"user.reg", "user.reg.lock"}) {
        struct stat status;
        ASSERT_EQ(::stat((folder.path / name).c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, 65534U) << name;
    }
}

TEST(Registry, AChildDoesNotKeepTheLock) {
    const Folder folder;
    int held[2];
    ASSERT_EQ(::pipe(held), 0);
    pid_t child = -1;
    withKey([&](HKEY) {
        child = ::fork();
        if (child != 0) return;
        char end;
        ::close(held[1]);
        ::_exit(static_cast<int>(::read(held[0], &end, 1)));  // there until the end of the test
    });
    const int lock = ::open((folder.path / "user.reg.lock").c_str(), O_RDWR);
    EXPECT_EQ(::flock(lock, LOCK_EX | LOCK_NB), 0);
    ::close(lock);
    ::close(held[0]);
    ::close(held[1]);
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

constexpr char kHead[] = "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A Key]\n";

TEST(Registry, WritesEachTypeInItsForm) {
    using namespace std::string_literals;
    const struct {
        const char *name;
        unsigned type;
        std::string data;
        const char *line;
    } cases[] = {
        {"a", REG_SZ, "C:\\maps\0"s, "\"a\"=\"C:\\\\maps\"\n"},
        {"", REG_SZ, "x\0"s, "@=\"x\"\n"},
        {"q\"", REG_SZ, "two\nlines\0"s, "\"q\\\"\"=hex(1):74,77,6f,0a,6c,69,6e,65,73,00\n"},
        {"e", REG_EXPAND_SZ, "%A%\0"s, "\"e\"=hex(2):25,41,25,00\n"},
        {"b", REG_BINARY, "\x01\xFF"s, "\"b\"=hex:01,ff\n"},
        {"n", REG_DWORD, "\x2A\0\0\x80"s, "\"n\"=dword:8000002a\n"},
        {"short", REG_DWORD, "\x2A"s, "\"short\"=hex(4):2a\n"},
    };
    for (const auto &test : cases) {
        const auto setOne = [&](HKEY key) {
            EXPECT_EQ(set(key, test.name, test.type, test.data), ERROR_SUCCESS);
        };
        const std::string file = worked(kHead, setOne);
        EXPECT_EQ(file, std::string(kHead) + test.line);
        EXPECT_EQ(worked(file, setOne), file);
        worked(file, [&](HKEY key) {
            char name[20];
            unsigned char data[40];
            unsigned nameSize = sizeof name, dataSize = sizeof data, type = 0;
            EXPECT_EQ(RegEnumValueA(key, 0, name, &nameSize, &type, data, &dataSize),
                      ERROR_SUCCESS);
            EXPECT_EQ(std::string(name, nameSize), test.name);
            EXPECT_EQ(type, test.type);
            EXPECT_EQ(std::string(reinterpret_cast<char *>(data), dataSize), test.data);
        });
    }
}

TEST(Registry, AValueThatIsThereTwiceIsOneAfterwards) {
    const std::string twice =
        std::string(kHead) + "\"a\" = \"1\"\n; note\n\"A\"=\"2\"\n\"c\"=\"3\"\n";
    const std::string text("4\0", 2);
    EXPECT_EQ(worked(twice, [&](HKEY key) { set(key, "a", REG_SZ, text); }),
              std::string(kHead) + "\"a\"=\"4\"\n; note\n\"c\"=\"3\"\n");
    EXPECT_EQ(worked(twice, [](HKEY key) { EXPECT_EQ(RegDeleteValueA(key, "a"), 0); }),
              std::string(kHead) + "; note\n\"c\"=\"3\"\n");
}

}  // namespace
