// The registry files of the store: what is written, damage, locks, and processes that share them.

#include "store_fixture.h"

#include <csignal>
#include <filesystem>
#include <string>
#include <sys/file.h>
#include <sys/wait.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

// Loading writes nothing, not even an empty file.
TEST_F(Store, FirstUnloadMakesEmptyKeys) {
    for (const std::string folder : {"", "a/b/"}) {
        setVariable("VX_REGISTRY_DIR", at(folder).c_str());
        {
            const Library library;
            for (const int category : {1, 2})
                for (const int level : {0, 1, 2, 3})
                    EXPECT_EQ(library.text(category, level), "");
            EXPECT_FALSE(has(folder + "user.reg") || has(folder + "machine.reg"));
        }
        for (const auto &[file, root] :
             {std::pair{"user.reg", "HKEY_CURRENT_USER"}, {"machine.reg", "HKEY_LOCAL_MACHINE"}}) {
            EXPECT_EQ(read(folder + file),
                      "REGEDIT4\n\n" + heading(root, kTextures) + "\n" + heading(root, kWebs));
        }
    }
}

TEST_F(Store, UnloadReplacesTheValuesAndNothingElse) {
    const std::string top =
        "REGEDIT4\r\n\r\n; mine\r\n[HKEY_CURRENT_USER\\Other]\r\n\"b\"=hex:01,\\\r\n  02\r\n\r\n" +
        ("[HKEY_current_user\\" + std::string(kTextures)) + "]\r\n; first\r\n";
    const std::string last = "\r\n[HKEY_CURRENT_USER\\Last]\r\n\"a\"=\"1\"";
    write("user.reg",
          top + "\"7\"=\"C:\\\\maps\\\\\"\r\n; last\r\n\"x\"=dword:00000007\r\n" + last);
    {
        const Library library;
        library.insert(library.get(1, VX_LEVEL_USER), 1, "C:/q\"\\n");
        library.insert(library.get(1, VX_LEVEL_USER), 2, "C:/tab\t");
    }
    EXPECT_EQ(read("user.reg"), top + "; last\r\n\"0\"=\"C:/maps\"\r\n\"1\"=\"C:/q\\\"/n\"\r\n" +
                                    "\"2\"=hex(1):43,3a,2f,74,61,62,09,00\r\n" + last +
                                    "\r\n\r\n[HKEY_CURRENT_USER\\" + kWebs + "]\r\n");
}

TEST_F(Store, SettingsFollowALinkAndKeepTheirMode) {
    fs::create_directory(path / "dotfiles");
    write("dotfiles/mine.reg", "REGEDIT4\n");
    fs::permissions(path / "dotfiles/mine.reg", fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("dotfiles/mine.reg", path / "user.reg");
    { const Library library; }
    EXPECT_TRUE(fs::is_symlink(path / "user.reg"));
    EXPECT_NE(read("dotfiles/mine.reg").find(kTextures), std::string::npos);
    EXPECT_EQ(fs::status(path / "dotfiles/mine.reg").permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
    fs::remove(path / "dotfiles/mine.reg");
    ASSERT_EQ(::mkfifo((path / "dotfiles/mine.reg.new").c_str(), 0600), 0);
    { const Library library; }
    EXPECT_TRUE(fs::is_symlink(path / "user.reg"));
    EXPECT_NE(read("dotfiles/mine.reg").find(kTextures), std::string::npos);
}

// ---- Damage

TEST_F(Store, DamagedFilesAreSetAsideByteForByte) {
    const std::string good = "REGEDIT4\n\n" + heading("HKEY_CURRENT_USER", kTextures) +
                             "\"0\"=\"C:/a\\\\b\"\n\"d\"=dword:0000002a\n\"h\"=hex(7):01,\\\n 02\n";
    std::vector<std::string> texts;
    for (const DataRow &row : dataRows("store.txt", "damaged")) {
        texts.push_back(good.substr(0, std::stoul(row[0])) + linesOf(row));
        write("user.reg", texts.back());
        {
            const Library library;
            EXPECT_EQ(library.text(1, 1), "") << texts.back();
            EXPECT_EQ(read("user.reg"), texts.back());
        }
        EXPECT_EQ(read("user.reg.damaged"), texts.back());
        EXPECT_TRUE(read("user.reg").starts_with("REGEDIT4\n"));
    }
    for (std::size_t i = 1; i < texts.size(); ++i)
        EXPECT_EQ(read("user.reg.damaged." + std::to_string(i)), texts[i - 1]);
    // Cut anywhere, a file is either good or set aside.
    for (std::size_t length = 0; length <= good.size(); ++length) {
        const std::string cut = good.substr(0, length);
        clear();
        write("user.reg", cut);
        { const Library library; }
        EXPECT_TRUE(has("user.reg.damaged") ? read("user.reg.damaged") == cut
                                            : cut.starts_with("REGEDIT4"))
            << length;
        EXPECT_NE(read("user.reg").find(kTextures), std::string::npos) << length;
    }
}

TEST_F(Store, WhatIsNoFileIsLeftAlone) {
    fs::create_directory(path / "user.reg");
    ASSERT_EQ(::mkfifo(at("machine.reg").c_str(), 0600), 0);
    EXPECT_EQ(Library().text(1, 0), "");
    EXPECT_TRUE(fs::is_directory(path / "user.reg"));
    EXPECT_TRUE(fs::is_fifo(path / "machine.reg"));
    clear();
    fs::create_symlink("user.reg", path / "user.reg");
    { const Library library; }
    EXPECT_EQ(fs::read_symlink(path / "user.reg"), "user.reg");
}

// Takes all locks that another user can get, and stops with them.
[[noreturn]] void holdLocks(const fs::path &folder) {
    if (::setegid(65534) != 0 || ::seteuid(65534) != 0) ::_exit(1);
    std::vector<fs::path> paths = {folder};
    for (const auto &entry : fs::directory_iterator(folder))
        paths.push_back(entry.path());
    for (const fs::path &path : paths) {
        for (const int mode : {O_RDWR, O_WRONLY, O_RDONLY}) {
            const int file = ::open(path.c_str(), mode);
            struct flock record = {};
            record.l_type = mode == O_RDONLY ? F_RDLCK : F_WRLCK;
            ::flock(file, LOCK_EX | LOCK_NB);
            ::fcntl(file, F_SETLK, &record);
        }
    }
    ::raise(SIGSTOP);
    ::_exit(0);
}

TEST_F(Store, NobodyElseCanHoldTheLock) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can become another user";
    const auto save = [](const char *entry) {
        const Library library;
        for (const int level : {VX_LEVEL_USER, VX_LEVEL_MACHINE})
            library.insert(library.get(1, level), 0, entry);
    };
    fs::permissions(path, fs::perms{0755});
    write("user.reg.lock", "");  // as readable as the umask allows
    save("/a");
    const pid_t child = ::fork();
    if (child == 0) holdLocks(path);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, WUNTRACED), child);
    EXPECT_TRUE(WIFSTOPPED(status));
    save("/b");
    for (const char *file : {"user.reg", "machine.reg"})
        EXPECT_NE(read(file).find("\"/b\""), std::string::npos) << file;
    ::kill(child, SIGKILL);
    ::waitpid(child, &status, 0);
}

TEST_F(Store, ProcessesTakeTurns) {
    constexpr int kProcesses = 6, kRounds = 20;
    for (int i = 0; i < kProcesses; ++i) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child != 0) continue;
        for (int round = 0; round < kRounds; ++round) {
            const Library library;
            library.insert(library.get(1, 1), 0,
                           ("/" + std::to_string(i) + "/" + std::to_string(round)).c_str());
        }
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
    }
    for (int i = 0; i < kProcesses; ++i) {
        int status = 1;
        EXPECT_GT(::wait(&status), 0);
        EXPECT_EQ(status, 0);
    }
    EXPECT_FALSE(has("user.reg.damaged") || has("user.reg.new"));
    const Library library;
    // Who unloads last decides, and that is somebody's last round.
    const std::string list = library.text(1, 1);
    EXPECT_TRUE(list.substr(0, list.find(';')).ends_with("/19")) << list;
}

}  // namespace
