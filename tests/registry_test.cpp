// Values of every type set, read and deleted in a registry file, with what stood there before.

#include "platform/registry.h"

#include "data_rows.h"
#include "platform/posix/registry_file.h"
#include "scratch_folder.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace vx;

constexpr char kPath[] = "Software\\A Key";

// Where the registry is while the object exists.
struct Folder : ScratchFolder {
    Folder() { ::setenv("VX_REGISTRY_DIR", path.c_str(), 1); }
};

// A life of the user's key.
template <typename Work>
void withKey(Work work) {
    Registry registry(RegistryRoot::kUser);
    RegistryKey key(registry, kPath);
    work(key);
    EXPECT_EQ(key.save(), SaveResult::kSaved);
}

// A user's file of this text, as the works on it leave it.
template <typename Work>
std::string worked(const std::string &text, Work work) {
    const Folder folder;
    folder.write("user.reg", text);
    withKey(work);
    return folder.read("user.reg");
}

// Whoever owns the folder can still read and save when root has been there first.
TEST(Registry, WhatRootMakesIsTheFoldersOwners) {
    const Folder folder;
    const bool isRoot = ::geteuid() == 0;
    ASSERT_EQ(isRoot ? ::chown(folder.path.c_str(), 65534, 65534) : 0, 0);
    ::setenv("VX_REGISTRY_DIR", folder.at("made").c_str(), 1);
    {
        Registry registry(RegistryRoot::kUser);
        RegistryKey one(registry, kPath), other(registry, "Other");
        for (RegistryKey *key : {&one, &other})
            EXPECT_EQ(key->save(), SaveResult::kSaved);
    }
    for (const char *name : {"made", "made/user.reg", "made/user.reg.lock"}) {
        struct stat status;
        ASSERT_EQ(::stat(folder.at(name).c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, isRoot ? 65534 : ::geteuid()) << name;
        EXPECT_EQ(status.st_mode & 0600U, 0600U) << name;
    }
}

TEST(Registry, ALockThatIsNotAPlainFileOfItsOwnIsRefused) {
    using Make = int (*)(const char *, const char *);
    const Make makers[] = {::symlink, ::link,
                           [](const char *, const char *lock) { return ::mkfifo(lock, 0600); }};
    for (const Make make : makers) {
        const Folder folder;
        folder.write("other", "");
        ASSERT_EQ(::chmod(folder.at("other").c_str(), 0604), 0);
        ASSERT_EQ(make(folder.at("other").c_str(), folder.at("user.reg.lock").c_str()), 0);
        Registry registry(RegistryRoot::kUser);
        EXPECT_EQ(RegistryKey(registry, kPath).save(), SaveResult::kFailed);
        struct stat status;
        ASSERT_EQ(::stat(folder.at("other").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, 0604U);
    }
}

TEST(Registry, AChildDoesNotKeepTheLock) {
    const Folder folder;
    pid_t child = -1;
    {
        Registry registry(RegistryRoot::kUser);
        RegistryKey key(registry, kPath);
        EXPECT_EQ(key.save(), SaveResult::kSaved);
        child = ::fork();
        if (child == 0) ::pause();  // with the lock file open, until the end of the test
    }
    const int lock = ::open(folder.at("user.reg.lock").c_str(), O_WRONLY);
    EXPECT_EQ(::flock(lock, LOCK_EX | LOCK_NB), 0);
    ::close(lock);
    ::kill(child, SIGKILL);
    EXPECT_EQ(::waitpid(child, nullptr, 0), child);
}

TEST(Registry, ItsFilesAreWhereTheEnvironmentSays) {
    for (const DataRow &row : dataRows("registry.txt", "places")) {
        ::setenv("VX_REGISTRY_DIR", row[0].c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", row[1].c_str(), 1);
        ::setenv("HOME", row[2].c_str(), 1);
        EXPECT_EQ(registryFilePath(RegistryRoot::kUser), row[3]);
        EXPECT_EQ(registryFilePath(RegistryRoot::kMachine), row[4]);
    }
}

constexpr char kHead[] = "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A Key]\n";

TEST(Registry, WritesEachTypeInItsForm) {
    for (const DataRow &row : dataRows("registry.txt", "types")) {
        const RegistryValue value{row[0], static_cast<unsigned>(std::stoul(row[1])), row[2]};
        const auto setOne = [&](RegistryKey &key) { key.set(value); };
        const std::string file = worked(kHead, setOne);
        EXPECT_EQ(file, kHead + row[3] + "\n");
        EXPECT_EQ(worked(file, setOne), file);
        worked(file, [&](RegistryKey &key) {
            ASSERT_EQ(key.values().size(), 1U);
            EXPECT_EQ(key.values()[0].name, value.name);
            EXPECT_EQ(key.values()[0].type, value.type);
            EXPECT_EQ(key.values()[0].data, value.data);
        });
    }
}

TEST(Registry, ChangesNoMoreLinesThanItMust) {
    const std::string last = "\n[Other]\n";
    const std::string before = "\"a\" = \"1\"\n; note\n\"A\"=\"2\"\n\"c\" = \"3\"\n";
    for (const DataRow &row : dataRows("registry.txt", "changes")) {
        const auto change = [&](RegistryKey &key) {
            key.removeFirst(std::stoul(row[0]));
            for (std::size_t i = 2; i < row.size(); i += 2)
                key.set({row[i], kRegistryText, row[i + 1] + '\0'});
        };
        EXPECT_EQ(worked(kHead + before + last, change), kHead + row[1] + last);
    }
}

// Two keys of one root, and another process that saves in between.
TEST(Registry, ASaveIsAppliedToWhatIsThereByThen) {
    const Folder folder;
    withKey([](RegistryKey &key) { key.set({"a", kRegistryText, "1"}); });
    Registry registry(RegistryRoot::kUser);
    RegistryKey key(registry, kPath), other(registry, "Other");
    withKey([](RegistryKey &theirs) { theirs.set({"theirs", kRegistryText, "2"}); });
    key.set({"mine", kRegistryText, "3"});
    EXPECT_EQ(key.save(), SaveResult::kOutdated);
    RegistryKey again(registry, kPath);
    again.set({"mine", kRegistryText, "3"});
    EXPECT_EQ(again.save(), SaveResult::kSaved);
    EXPECT_EQ(other.save(), SaveResult::kSaved);
    Registry now(RegistryRoot::kUser);
    const RegistryKey result(now, kPath);
    std::string names;
    for (const RegistryValue &value : result.values())
        names += value.name + " ";
    EXPECT_EQ(names, "a theirs mine ");
}

}  // namespace
