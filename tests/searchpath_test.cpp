// Lists of directories and finding files along them, through the shared library.

#include "search_path_run.h"

#include <vxsearchpath.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

#define SO "\x83\\"

std::string createdFrom(const char *text) {
    VxSearchPath *list = vxSearchPathCreate(text);
    std::string result = textOf(list);
    vxSearchPathFree(list);
    return result;
}

// A scratch folder that is the current directory while it lasts.
class SearchPath : public testing::Test {
protected:
    void SetUp() override {
        before_ = fs::current_path();
        folder_ = fs::temp_directory_path() / ("vxsearchpath" + std::to_string(::getpid()));
        fs::create_directories(folder_);
        folder_ = fs::canonical(folder_);
        fs::current_path(folder_);
    }
    void TearDown() override {
        fs::current_path(before_);
        fs::remove_all(folder_);
    }
    static void touch(const std::string &path) {
        fs::create_directories(fs::absolute(path).parent_path());
        std::ofstream file(path);
    }
    std::string at(const std::string &path) const { return folder_.string() + "/" + path; }

    fs::path before_, folder_;
};

TEST_F(SearchPath, Create) {
    const std::string here = folder_.string();
    const std::pair<const char *, std::string> cases[] = {
        {nullptr, ""},
        {"", ""},
        {";;;", ""},
        {"C:/a;;C:\\b\\;", "C:/a;C:/b"},
        {"C:/a;C:/a", "C:/a;C:/a"},
        {"tex;.;..", here + "/tex;" + here + ";" + folder_.parent_path().string()},
        {"C:;C:x;C:/", "C:.;C:x;C:/"},
        {"/", ""},
        {"\\\\srv\\share\\", "\\\\srv\\share"},
        {"C;D:/", here + "/C;D:/"},  // the letter's colon must be in the segment
    };
    for (const auto &[text, expected] : cases) {
        EXPECT_EQ(createdFrom(text), expected) << (text != nullptr ? text : "null");
    }
    VxSearchPath *list = vxSearchPathCreate(";;");
    EXPECT_EQ(std::tie(list->count, list->capacity, list->longest), std::make_tuple(0, 4, 0));
    vxSearchPathFree(list);
    list = vxSearchPathCreate("/;C:/a/../bc;/;/;/");
    EXPECT_EQ(std::tie(list->count, list->capacity, list->longest), std::make_tuple(5, 5, 11));
    EXPECT_STREQ(vxSearchPathGet(list, 0), "");
    EXPECT_EQ(vxSearchPathInsert(list, 5, "C:/x"), 1);
    EXPECT_EQ(list->capacity, 10U);
    vxSearchPathFree(list);
}

TEST_F(SearchPath, CreateInPage932) {
    ASSERT_NE(std::setlocale(LC_CTYPE, "ja_JP.SJIS"), nullptr);
    EXPECT_EQ(createdFrom("C:/" SO ";" SO "\\x"), "C:/" SO ";" + folder_.string() + "/" SO "/x");
    std::setlocale(LC_CTYPE, "C");
}

TEST_F(SearchPath, CreateWithoutACurrentDirectoryDropsRelativeEntries) {
    fs::create_directory("gone");
    fs::current_path("gone");
    fs::remove(folder_ / "gone");
    EXPECT_EQ(createdFrom("a;C:/b;c"), "C:/b");
}

TEST_F(SearchPath, Insert) {
    VxSearchPath *list = vxSearchPathCreate("C:/a");
    const auto insert = [&](unsigned index, const char *path) {
        return vxSearchPathInsert(list, index, path);
    };
    EXPECT_EQ(insert(0, "relative"), 0);
    EXPECT_EQ(insert(0, nullptr), 0);
    EXPECT_EQ(insert(2, "C:/b"), 0);
    EXPECT_EQ(insert(0, "C:\\a"), 0);
    EXPECT_EQ(insert(0, "C:/a/"), 0);
    EXPECT_EQ(vxSearchPathInsert(nullptr, 0, "C:/b"), 0);
    EXPECT_EQ(insert(1, "C:/x/../a"), 1);  // only as written is it not there yet
    EXPECT_EQ(insert(0, "C:"), 1);
    EXPECT_EQ(insert(1, "C:/longer"), 1);
    EXPECT_EQ(textOf(list), "C:/;C:/longer;C:/a;C:/a");
    EXPECT_EQ(list->longest, 9);
    EXPECT_EQ(vxSearchPathIndexOf(list, "C:\\a\\\\"), 2);
    EXPECT_EQ(vxSearchPathIndexOf(list, "C:/b"), -1);
    EXPECT_EQ(vxSearchPathIndexOf(list, "longer"), -1);
    vxSearchPathSwap(list, 0, 3);
    vxSearchPathSwap(list, 0, 4);
    vxSearchPathRemove(list, 1);
    vxSearchPathRemove(list, 3);
    EXPECT_EQ(textOf(list), "C:/a;C:/a;C:/");
    EXPECT_EQ(list->longest, 0);
    EXPECT_EQ(insert(0, "C:/new"), 1);
    EXPECT_EQ(list->longest, 0);
    EXPECT_EQ(vxSearchPathGet(list, 4), nullptr);
    vxSearchPathFree(list);
}

TEST_F(SearchPath, RemoveShrinksTheArray) {
    VxSearchPath *list = vxSearchPathCreate("/1;/2;/3;/4;/5;/6;/7;/8");
    for (unsigned left = 8; left-- != 2;)
        vxSearchPathRemove(list, 0);
    EXPECT_EQ(list->capacity, 8U);
    vxSearchPathRemove(list, 0);
    EXPECT_EQ(std::tie(list->count, list->capacity), std::make_tuple(1, 4));
    EXPECT_EQ(textOf(list), "/8");
    vxSearchPathFree(list);
    list = vxSearchPathCreate("/1;/2;/3;/4;/5");
    for (int i = 0; i < 5; ++i)
        vxSearchPathRemove(list, 0);
    EXPECT_EQ(list->capacity, 2U);
    vxSearchPathFree(list);
}

TEST_F(SearchPath, PrependMovesRepeatsToTheFront) {
    VxSearchPath *to = vxSearchPathCreate("C:/a;C:/b;C:/c;C:/c");
    VxSearchPath *from = vxSearchPathCreate("C:/c;C:/dddd;C:/c;C:/C");
    const char *moved = vxSearchPathGet(to, 2);
    vxSearchPathPrepend(to, from);
    EXPECT_EQ(textOf(to), "C:/c;C:/dddd;C:/c;C:/C;C:/a;C:/b");
    EXPECT_EQ(vxSearchPathGet(to, 0), moved);
    EXPECT_EQ(std::tie(to->capacity, to->longest), std::make_tuple(8, 8));
    VxSearchPath *empty = vxSearchPathCreate("");
    vxSearchPathPrepend(to, empty);
    EXPECT_EQ(std::tie(to->count, to->capacity, to->longest), std::make_tuple(6, 6, 0));
    vxSearchPathPrepend(to, to);
    EXPECT_EQ(textOf(to), "C:/c;C:/dddd;C:/c;C:/C;C:/a;C:/b");
    vxSearchPathCopy(empty, to);
    EXPECT_EQ(textOf(empty), textOf(to));
    EXPECT_NE(vxSearchPathGet(empty, 0), moved);
    vxSearchPathCopy(empty, nullptr);
    vxSearchPathPrepend(nullptr, to);
    for (VxSearchPath *list : {to, from, empty})
        vxSearchPathFree(list);
}

TEST_F(SearchPath, RandomOperationsAgainstAModel) {
    std::mt19937 random(3);
    const auto pathOf = [&] {
        std::string path = random() % 3 == 0 ? "" : random() % 2 == 0 ? "/" : "C:\\";
        for (unsigned parts = random() % 4; parts-- != 0;)
            path += "a/.\\..//b"[random() % 9];
        return path;
    };
    for (int round = 0; round < 300; ++round) {
        SearchPathRun run(pathOf() + ";" + pathOf() + ";;" + pathOf(), folder_.string());
        for (int step = 0; step < 100; ++step) {
            ASSERT_TRUE(run.change(random(), random() % 8, pathOf())) << "step " << step;
            ASSERT_EQ(run.text(), run.modelText()) << "step " << step;
        }
    }
}

// ---- Finding files

TEST_F(SearchPath, FindGivesTheDirectory) {
    touch("one/a.tex/is a folder");
    touch("two/a.tex");
    touch("two/sub/b.tex");
    VxSearchPath *list = vxSearchPathCreate("one;two");
    const char *two = vxSearchPathGet(list, 1);
    EXPECT_EQ(vxSearchPathFind(list, "a.tex", 0), two);
    EXPECT_EQ(vxSearchPathFind(list, "sub\\b.tex", 0), two);
    EXPECT_EQ(vxSearchPathFind(list, "c.tex", 0), nullptr);
    EXPECT_EQ(vxSearchPathFind(list, nullptr, 0), nullptr);
    const std::string absolute = at("two/a.tex");
    EXPECT_EQ(vxSearchPathFind(list, absolute.c_str(), 1), absolute.c_str());
    EXPECT_EQ(vxSearchPathFind(list, at("one/a.tex").c_str(), 1), nullptr);

    char *path = vxSearchPathResolve(list, "sub\\./b.tex", nullptr, 0);
    EXPECT_EQ(path, at("two/sub/b.tex"));
    std::free(path);
    path = vxSearchPathResolve(list, "/missing/../x/", nullptr, 0);
    EXPECT_STREQ(path, "/x");
    std::free(path);
    EXPECT_EQ(vxSearchPathResolve(list, "c.tex", nullptr, 1), nullptr);
    EXPECT_EQ(vxSearchPathResolve(nullptr, "a.tex", nullptr, 1), nullptr);

    // The root is an empty entry, and found there is the empty text.
    vxSearchPathSwap(list, 0, 1);
    VxSearchPath *root = vxSearchPathCreate("/");
    EXPECT_STREQ(vxSearchPathFind(root, absolute.c_str() + 1, 0), "");
    EXPECT_EQ(vxSearchPathResolve(root, absolute.c_str() + 1, nullptr, 0), nullptr);
    vxSearchPathFree(root);
    vxSearchPathFree(list);
}

TEST_F(SearchPath, FindGoesOnInTheMergedList) {
    touch("merged/a.tex");
    VxSearchPath *user = vxSearchPathCreate("merged");
    EXPECT_EQ(vxPathStoreSet(1, VX_LEVEL_ENVIRONMENT, user), 1);
    VxSearchPath *list = vxSearchPathCreate("elsewhere");
    EXPECT_EQ(vxSearchPathFind(list, "a.tex", 0), nullptr);
    EXPECT_EQ(vxSearchPathFind(list, "a.tex", 2), nullptr);
    EXPECT_EQ(vxSearchPathFind(list, "a.tex", 9), nullptr);
    EXPECT_EQ(vxSearchPathFind(list, "a.tex", 1), vxSearchPathGet(vxPathStoreGet(1, 0), 0));
    EXPECT_EQ(vxSearchPathFind(nullptr, "a.tex", 1), nullptr);
    char *path = vxSearchPathResolve(list, "a.tex", nullptr, 1);
    EXPECT_EQ(path, at("merged/a.tex"));
    std::free(path);
    vxSearchPathFree(list);
    vxSearchPathFree(user);
}

TEST_F(SearchPath, FindInPage932) {
    ASSERT_NE(std::setlocale(LC_CTYPE, "ja_JP.SJIS"), nullptr);
    touch("tex/" SO "/" SO ".sgi");
    VxSearchPath *list = vxSearchPathCreate("tex");
    EXPECT_EQ(vxSearchPathFind(list, SO "\\" SO ".sgi", 0), vxSearchPathGet(list, 0));
    vxSearchPathFree(list);
    std::setlocale(LC_CTYPE, "C");
}

TEST_F(SearchPath, FindFileAlongText) {
    touch("a/x");
    touch("b/x");
    touch("b/y");
    touch("z");
    const std::string longPiece(300, 'p');
    touch(longPiece.substr(0, 255));
    const std::pair<std::pair<const char *, const char *>, const char *> cases[] = {
        {{"a;b", "x"}, "a/x"},   {{";;b;;a", "x"}, "b/x"},  {{"a;b", "y"}, "b/y"},
        {{"a;b", "z"}, "z"},     {{".", "a"}, "./a"},  // a folder counts
        {{nullptr, "z"}, "./z"}, {{"", "z"}, "z"},          {{"a", "missing"}, nullptr},
        {{"a", ""}, nullptr},    {{"a", nullptr}, nullptr}, {{"a", "/missing"}, nullptr},
        {{"a", "/"}, "/"},       {{"a", "\\x"}, nullptr},
    };
    for (const auto &[arguments, found] : cases) {
        EXPECT_STREQ(vxFindFile(arguments.first, arguments.second), found);
    }
    EXPECT_EQ(vxFindFile(longPiece.c_str(), "x"), longPiece.substr(0, 255));
    // 255 bytes of path are the most: "a/" and a name of 253.
    touch("a/" + std::string(253, 'n'));
    touch("a/" + std::string(254, 'n'));
    EXPECT_EQ(vxFindFile("a", std::string(253, 'n').c_str()), "a/" + std::string(253, 'n'));
    EXPECT_STREQ(vxFindFile("a", std::string(254, 'n').c_str()), "a");
}

}  // namespace
