// Lists of directories and finding files along them, through the shared library.

#include "data_rows.h"
#include "fuzz/models/search_path_model.h"
#include "scratch_folder.h"
#include "system.h"

#include <vxhandles.h>

#include <array>
#include <gtest/gtest.h>
#include <random>
#include <utility>

namespace {

namespace fs = std::filesystem;

#define SO "\x83\\"

using List = VxUniqueSearchPath;

List listOf(const std::string &text) {
    return List(vxSearchPathCreate(text.c_str()));
}

std::string createdFrom(const char *text) {
    return textOf(List(vxSearchPathCreate(text)).get());
}

// In a folder that is the current directory meanwhile.
class SearchPath : public testing::Test, protected ScratchFolder {
protected:
    SearchPath() : here_(fs::canonical(path).generic_string()) { fs::current_path(path); }
    ~SearchPath() override { fs::current_path(before_); }
    void touch(const std::string &name) const { write(name, ""); }
    std::string at(const std::string &name) const { return here_ + "/" + name; }

    const fs::path before_ = fs::current_path();
    const std::string here_;
};

TEST_F(SearchPath, Create) {
    const std::pair<const char *, std::string> cases[] = {
        {nullptr, ""},
        {"", ""},
        {";;;", ""},
        {"C:/a;;C:\\b\\;", "C:/a;C:/b"},
        {"C:/a;C:/a", "C:/a;C:/a"},
        {"tex;.;..",
         here_ + "/tex;" + here_ + ";" + fs::path(here_).parent_path().generic_string()},
        {"C:;C:x;C:/", "C:.;C:x;C:/"},
        {"/", ""},
        {"\\\\srv\\share\\", "\\\\srv\\share"},
        {"C;D:/", here_ + "/C;D:/"},  // the letter's colon must be in the segment
    };
    for (const auto &[text, expected] : cases) {
        EXPECT_EQ(createdFrom(text), expected) << (text != nullptr ? text : "null");
    }
}

TEST_F(SearchPath, CreateWithoutACurrentDirectoryDropsRelativeEntries) {
    fs::create_directory("gone");
    fs::current_path("gone");
    if (!kFileNamesAreBytes) GTEST_SKIP() << "the system keeps the folder";
    ASSERT_TRUE(fs::remove(path / "gone"));
    EXPECT_EQ(createdFrom("a;C:/b;c"), "C:/b");
}

// A list keeps its own texts, and gets copies of those of another list.
TEST_F(SearchPath, PrependMovesRepeatsToTheFront) {
    const List to = listOf("C:/a;C:/c"), from = listOf("C:/c;C:/d");
    const char *own = vxSearchPathGet(to.get(), 1);
    vxSearchPathPrepend(to.get(), from.get());
    EXPECT_EQ(textOf(to.get()), "C:/c;C:/d;C:/a");
    EXPECT_EQ(vxSearchPathGet(to.get(), 0), own);
    EXPECT_NE(vxSearchPathGet(to.get(), 1), vxSearchPathGet(from.get(), 1));
    vxSearchPathCopy(from.get(), to.get());
    EXPECT_EQ(textOf(from.get()), "C:/c;C:/d;C:/a");
    EXPECT_NE(vxSearchPathGet(from.get(), 0), own);
}

TEST_F(SearchPath, NullIsNeitherAListNorAPath) {
    const List list = listOf("C:/a");
    vxSearchPathCopy(list.get(), nullptr);
    vxSearchPathPrepend(list.get(), nullptr);
    vxSearchPathPrepend(nullptr, list.get());
    vxSearchPathRemove(nullptr, 0);
    vxSearchPathSwap(nullptr, 0, 0);
    EXPECT_EQ(textOf(list.get()), "C:/a");
    EXPECT_EQ(vxSearchPathInsert(nullptr, 0, "C:/b"), 0);
    EXPECT_EQ(vxSearchPathInsert(list.get(), 0, nullptr), 0);
    EXPECT_EQ(vxSearchPathIndexOf(nullptr, "C:/a"), -1);
    EXPECT_EQ(vxSearchPathGet(nullptr, 0), nullptr);
    EXPECT_EQ(vxSearchPathGet(list.get(), 1), nullptr);
}

TEST_F(SearchPath, RandomOperationsAgainstAModel) {
    std::mt19937 random(3);
    const auto pathOf = [&] {
        std::string text = std::to_array({"", "/", "C:", "C:\\"})[random() % 4];
        for (unsigned parts = random() % 4; parts-- != 0;)
            text += "aA/.\\..//b"[random() % 10];
        return text;
    };
    for (int round = 0; round < 300; ++round) {
        std::string text;
        for (auto parts = random() % 9; parts-- != 0;)
            text += pathOf() + ";";
        SearchPathRun run(text, here_);
        for (int step = 0; step < 100; ++step) {
            // The list grows for a while, then it shrinks.
            const unsigned action = step % 40 < 20 ? random() % 8 : random() % 2;
            ASSERT_TRUE(run.change(random(), action, pathOf())) << "step " << step;
            ASSERT_EQ(run.text(), run.modelText()) << "step " << step;
        }
    }
}

// ---- Finding files

TEST_F(SearchPath, FindGivesTheDirectory) {
    touch("one/a.tex/is a folder");
    touch("two/a.tex");
    touch("two/sub/b.tex");
    const List list = listOf("one;two");
    const char *two = vxSearchPathGet(list.get(), 1);
    const std::string file = at("two/a.tex"), folder = at("one/a.tex");
    const struct {
        VxSearchPath *list;
        const char *name, *found;
        std::string resolved;  // "" for null
    } cases[] = {
        {list.get(), "a.tex", two, file},
        {list.get(), "sub\\b.tex", two, at("two/sub/b.tex")},
        {list.get(), "sub\\./b.tex", two, at("two/sub/b.tex")},
        {list.get(), "c.tex", nullptr, ""},
        {list.get(), nullptr, nullptr, ""},
        {list.get(), file.c_str(), file.c_str(), file},
        {list.get(), folder.c_str(), nullptr, folder},
        {list.get(), "/missing/../x/", nullptr, "/x"},
        {nullptr, "a.tex", nullptr, ""},
    };
    for (const auto &test : cases) {
        EXPECT_EQ(vxSearchPathFind(test.list, test.name, 1), test.found);
        const VxUniqueText text(vxSearchPathResolve(test.list, test.name, nullptr, 1));
        EXPECT_EQ(text != nullptr ? text.get() : "", test.resolved);
    }
    if (!file.starts_with('/')) return;
    // The root is an empty entry, and found there is the empty text.
    const List root = listOf("/");
    EXPECT_EQ(vxSearchPathFind(root.get(), file.c_str() + 1, 1), vxSearchPathGet(root.get(), 0));
    EXPECT_EQ(vxSearchPathResolve(root.get(), file.c_str() + 1, nullptr, 1), nullptr);
}

TEST_F(SearchPath, FindGoesOnInTheMergedList) {
    touch("merged/a.tex");
    const List user = listOf("merged"), list = listOf("elsewhere");
    EXPECT_EQ(vxPathStoreSet(1, VX_LEVEL_ENVIRONMENT, user.get()), 1);
    for (const int category : {0, 2, 9})
        EXPECT_EQ(vxSearchPathFind(list.get(), "a.tex", category), nullptr);
    EXPECT_EQ(vxSearchPathFind(list.get(), "a.tex", 1), vxSearchPathGet(vxPathStoreGet(1, 0), 0));
    EXPECT_EQ(vxSearchPathFind(nullptr, "a.tex", 1), nullptr);
    const VxUniqueText resolved(vxSearchPathResolve(list.get(), "a.tex", nullptr, 1));
    EXPECT_EQ(resolved.get(), at("merged/a.tex"));
}

TEST_F(SearchPath, FindInPage932) {
    const InLocale locale("ja_JP.SJIS");
    EXPECT_EQ(createdFrom("C:/" SO ";" SO "\\x"), "C:/" SO ";" + here_ + "/" SO "/x");
    if (!kFileNamesAreBytes) GTEST_SKIP() << "the system reads names in a page of its own";
    touch("tex/" SO "/" SO ".sgi");
    const List list = listOf("tex");
    EXPECT_EQ(vxSearchPathFind(list.get(), SO "\\" SO ".sgi", 0), vxSearchPathGet(list.get(), 0));
}

TEST_F(SearchPath, FindFileAlongText) {
    touch("a/x");
    touch("b/x");
    touch("b/y");
    touch("z");
    const std::string longPiece(300, 'p');
    touch(longPiece.substr(0, 255));
    for (const DataRow &row : dataRows("path_text.txt", "find")) {
        EXPECT_STREQ(vxFindFile(orNull(row[0]), orNull(row[1])), orNull(row[2]));
    }
    EXPECT_EQ(vxFindFile(longPiece.c_str(), "x"), longPiece.substr(0, 255));
    // 255 bytes of path are the most: "a/" and a name of 253.
    touch("a/" + std::string(253, 'n'));
    touch("a/" + std::string(254, 'n'));
    EXPECT_EQ(vxFindFile("a", std::string(253, 'n').c_str()), "a/" + std::string(253, 'n'));
    EXPECT_STREQ(vxFindFile("a", std::string(254, 'n').c_str()), "a");
}

}  // namespace
