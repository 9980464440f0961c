// The store and the system's registry: keys that are made, values that are kept, and programs that
// load the library themselves or are linked to it.

#include "store_fixture.h"

#include <process.h>

namespace {

bool exists(HKEY root, const char *path) {
    HKEY key = nullptr;
    if (::RegOpenKeyExA(root, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    return ::RegCloseKey(key) == ERROR_SUCCESS;
}

TEST_F(Store, FirstUnloadMakesEmptyKeys) {
    for (const bool isUnloaded : {false, true}) {
        for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
            for (const char *path : {kTextures, kWebs}) {
                EXPECT_EQ(exists(root, path), isUnloaded);
                EXPECT_TRUE(!isUnloaded || Key(root, path).values().empty());
            }
        if (isUnloaded) return;
        const Library library;
        for (const int category : {1, 2})
            for (const int level : {0, 1, 2, 3})
                EXPECT_EQ(library.text(category, level), "");
    }
}

// The process reads at its start, before its own code runs, and writes at its end.
TEST_F(Store, ALinkedProgramReadsAtItsStartAndWritesAtItsEnd) {
    writeUser("\"7\"=\"C:\\\\maps\\\\\"\n");
    char path[MAX_PATH];
    ::GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string folder(path, std::string(path).rfind('\\') + 1);
    const std::string program = folder + "linked_program.exe";
    EXPECT_EQ(::_spawnl(_P_WAIT, program.c_str(), "linked_program", "C:/maps", "C:/added", nullptr),
              0);
    EXPECT_TRUE(userHas("\"0\"=\"C:/added\"\n\"1\"=\"C:/maps\"\n"));
}

TEST(Exports, HaveTheirOrdinals) {
    const Library library;
    const HMODULE module = ::GetModuleHandleA(VX_LIBRARY);
    for (int ordinal = 99; ordinal <= 496; ++ordinal) {
        const auto found = reinterpret_cast<void *>(
            ::GetProcAddress(module, MAKEINTRESOURCEA(static_cast<WORD>(ordinal))));
        EXPECT_EQ(library.address(ordinal), ordinal < 496 ? found : nullptr) << ordinal;
        EXPECT_EQ(found == nullptr, ordinal == 99) << ordinal;
    }
}

}  // namespace
