// The store of search paths over a whole life of the library: loaded and unloaded for real.

#include "store_fixture.h"

#include <filesystem>
#include <string>
#include <vector>

namespace {

// Numbers that enumerate in their order, whether the system sorts the names or not.
std::string numbered(int from, int to) {
    std::string values;
    for (int i = from; i < to; ++i) {
        const std::string number = std::to_string(i);
        values.append("\"").append(3 - number.size(), '0').append(number);
        values.append("\"=\"C:/" + number + "\"\n");
    }
    return values;
}

TEST_F(Store, AListIsWrittenCompletelyThoughOnlyItsStartIsRead) {
    writeUser(numbered(0, 60) + "\"059x\"=dword:00000000\n" + numbered(60, 130));
    {
        const Library library;
        EXPECT_EQ(library.get(1, 1)->count, 128U);
        for (const unsigned i : {128U, 129U})
            library.insert(library.get(1, 1), i, ("C:/" + std::to_string(i)).c_str());
    }
    for (int i = 0; i < 130; ++i) {
        const std::string number = std::to_string(i);
        EXPECT_TRUE(userHas("\"" + number + "\"=\"C:/" + number + "\"\n")) << i;
    }
    for (const char *old : {"\"000\"", "\"058\"", "\"059x\""})
        EXPECT_FALSE(userHas(old)) << old;
}

TEST_F(Store, ReadsValuesByTheirRules) {
    const std::string longest = "/" + std::string(258, 'x');
    std::vector<DataRow> rows = dataRows("store.txt", "values");
    rows.push_back({longest, "\"000000000000001\"=\"" + longest + "\""});
    rows.push_back({"C:/a", "\"0\"=\"C:/a\"", "\"1\"=\"" + longest + "x\"", "\"2\"=\"C:/c\""});
    for (const DataRow &row : rows) {
        const std::string values = linesOf(row);
        writeUser(values);
        EXPECT_EQ(Library().text(1, 1), row[0]) << values;
        // A value too long ends the reading, and at the end the deletion.
        EXPECT_TRUE(row[0] != "C:/a" || userHas(values)) << values;
    }
}

TEST_F(Store, MergedListHasTheEnvironmentFirst) {
    setVariable("ZOR_TEXTURE_PATH", "C:/e;C:/x");
    setVariable("ZOR_IES_PATH", "rel");
    writeUser("\"0\"=\"C:/u\"\n\"1\"=\"C:/x\"\n");
    writeMachine("\"0\"=\"C:/x\"\n\"1\"=\"C:/m\"\n");
    const Library library;
    EXPECT_EQ(library.text(1, 0), "C:/e;C:/x;C:/m;C:/u");
    EXPECT_EQ(library.text(2, 0), std::filesystem::current_path().generic_string() + "/rel");
    const VxSearchPath *merged = library.get(1, 0);
    EXPECT_EQ(library.get(1, 0), merged);
    // A changed level list shows once it is given back.
    VxSearchPath *user = library.get(1, VX_LEVEL_USER);
    library.insert(user, 0, "C:/new");
    EXPECT_EQ(library.text(1, 0), "C:/e;C:/x;C:/m;C:/u");
    EXPECT_EQ(library.set(1, VX_LEVEL_USER, user), 1);
    EXPECT_EQ(library.text(1, 0), "C:/e;C:/x;C:/m;C:/new;C:/u");
    EXPECT_EQ(library.set(1, 0, user), 0);
    EXPECT_EQ(library.set(1, VX_LEVEL_ENVIRONMENT, user), 1);
    EXPECT_EQ(library.text(1, 0), "C:/new;C:/u;C:/x;C:/m");
    EXPECT_EQ(library.set(1, VX_LEVEL_ENVIRONMENT, nullptr), 1);
    EXPECT_EQ(library.text(1, VX_LEVEL_ENVIRONMENT), "C:/new;C:/u;C:/x");
}

TEST_F(Store, OtherCategoriesAndLevels) {
    const Library library;
    VxSearchPath *list = library.get(0, 0);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->count, 0U);
    for (const auto &[category, level] :
         {std::pair{2, 4}, {2, -1}, {3, 1}, {0, 1}, {3, 0}, {-1, 0}, {1 << 30, 0}}) {
        EXPECT_EQ(library.get(category, level), nullptr);
    }
    library.insert(library.get(1, 1), 0, "C:/a");
    VxSearchPath *merged = library.get(1, 0);
    library.insert(merged, 1, "C:/mark");
    EXPECT_EQ(library.set(-5, 1, list), 1);
    for (const int category : {3, 9})
        EXPECT_EQ(library.set(category, 1, list), 1);
    EXPECT_EQ(library.text(1, 0), "C:/a;C:/mark");
    EXPECT_EQ(library.set(1, 4, list), 1);
    EXPECT_EQ(library.text(1, 0), "C:/a");
    EXPECT_EQ(library.text(1, 1), "C:/a");
}

}  // namespace
