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
    const auto expectKeys = [](bool areThere) {
        for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
            for (const char *path : {kTextures, kWebs}) {
                EXPECT_EQ(exists(root, path), areThere);
                EXPECT_TRUE(!areThere || Key(root, path).values().empty());
            }
    };
    {
        const Library library;
        EXPECT_EQ(library.text(1, 0) + library.text(2, 0), "");
        expectKeys(false);
    }
    expectKeys(true);
}

// It reads the registry when it starts and writes when it ends.
TEST_F(Store, IsReadAndWrittenByAProgramThatIsLinkedToTheLibrary) {
    writeUser("\"7\"=\"C:\\\\maps\\\\\"\n");
    char path[MAX_PATH];
    ::GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string program =
        std::string(path, std::string(path).rfind('\\')) + "\\headers_test.exe";
    EXPECT_EQ(::_spawnl(_P_WAIT, program.c_str(), "headers_test", nullptr), 0);
    EXPECT_TRUE(userHas("\"0\"=\"C:/maps\"\n"));
    EXPECT_FALSE(userHas("\"7\""));
}

TEST(Exports, AreFoundByTheirOrdinals) {
    const Library library;
    for (int ordinal = 99; ordinal <= 496; ++ordinal) {
        const auto number = MAKEINTRESOURCEA(static_cast<WORD>(ordinal));
        const void *found = symbolOf(::GetModuleHandleA(VX_LIBRARY), number);
        EXPECT_EQ(library.address(ordinal), ordinal < 496 ? found : nullptr) << ordinal;
        EXPECT_EQ(found == nullptr, ordinal == 99) << ordinal;
    }
}

}  // namespace
