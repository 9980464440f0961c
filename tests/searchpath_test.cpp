// Lists of directories and finding files along them, through the shared library.

#include "fuzz/models/search_path_model.h"
#include "in_locale.h"
#include "scratch_folder.h"

#include <vxhandles.h>

#include <cstdint>
#include <gtest/gtest.h>
#include <random>
#include <tuple>
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

// Count, capacity and longest of a list.
void expectSizes(const List &list, std::uint32_t count, std::uint32_t capacity, int longest) {
    EXPECT_EQ(std::tie(list->count, list->capacity, list->longest),
              std::tie(count, capacity, longest));
}

// In a folder that is the current directory meanwhile.
class SearchPath : public testing::Test, protected ScratchFolder {
protected:
    SearchPath() : here_(fs::canonical(path)) { fs::current_path(path); }
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
        {"tex;.;..", here_ + "/tex;" + here_ + ";" + fs::path(here_).parent_path().string()},
        {"C:;C:x;C:/", "C:.;C:x;C:/"},
        {"/", ""},
        {"\\\\srv\\share\\", "\\\\srv\\share"},
        {"C;D:/", here_ + "/C;D:/"},  // the letter's colon must be in the segment
    };
    for (const auto &[text, expected] : cases) {
        EXPECT_EQ(createdFrom(text), expected) << (text != nullptr ? text : "null");
    }
    expectSizes(listOf(";;"), 0, 4, 0);
    const List list = listOf("/;C:/a/../bc;/;/;/");
    expectSizes(list, 5, 5, 11);
    EXPECT_STREQ(vxSearchPathGet(list.get(), 0), "");
    EXPECT_EQ(vxSearchPathInsert(list.get(), 5, "C:/x"), 1);
    EXPECT_EQ(list->capacity, 10U);
}

TEST_F(SearchPath, CreateWithoutACurrentDirectoryDropsRelativeEntries) {
    fs::create_directory("gone");
    fs::current_path("gone");
    fs::remove(path / "gone");
    EXPECT_EQ(createdFrom("a;C:/b;c"), "C:/b");
}

TEST_F(SearchPath, Insert) {
    const List owner = listOf("C:/a");
    VxSearchPath *list = owner.get();
    const struct {
        VxSearchPath *list;
        unsigned index;
        const char *path;
        int result;
    } cases[] = {
        {list, 0, "relative", 0},  {list, 0, nullptr, 0},     {list, 2, "C:/b", 0},
        {list, 0, "C:\\a", 0},     {list, 0, "C:/a/", 0},     {nullptr, 0, "C:/b", 0},
        {list, 1, "C:/x/../a", 1},  // only as written is it not there yet
        {list, 0, "C:", 1},        {list, 1, "C:/longer", 1},
    };
    for (const auto &test : cases)
        EXPECT_EQ(vxSearchPathInsert(test.list, test.index, test.path), test.result) << test.path;
    EXPECT_EQ(textOf(list), "C:/;C:/longer;C:/a;C:/a");
    EXPECT_EQ(list->longest, 9);
    EXPECT_EQ(vxSearchPathIndexOf(list, "C:\\a\\\\"), 2);
    for (const char *absent : {"C:/b", "longer"})
        EXPECT_EQ(vxSearchPathIndexOf(list, absent), -1);
    vxSearchPathSwap(list, 0, 3);
    vxSearchPathSwap(list, 0, 4);
    vxSearchPathRemove(list, 1);
    vxSearchPathRemove(list, 3);
    EXPECT_EQ(textOf(list), "C:/a;C:/a;C:/");
    EXPECT_EQ(vxSearchPathInsert(list, 0, "C:/new"), 1);
    EXPECT_EQ(list->longest, 0);  // unknown since the removal
    EXPECT_EQ(vxSearchPathGet(list, 4), nullptr);
}

// The array is halved when less than a quarter of it is left, but never one of 4 slots.
TEST_F(SearchPath, RemoveShrinksTheArray) {
    const std::string text = "/1;/2;/3;/4;/5;/6;/7;/8";
    for (const auto &[size, left, capacity] :
         {std::tuple{8, 2, 8}, {8, 1, 4}, {5, 1, 5}, {5, 0, 2}, {4, 0, 4}}) {
        const List list = listOf(text.substr(0, 3 * static_cast<std::size_t>(size)));
        for (int i = size; i > left; --i)
            vxSearchPathRemove(list.get(), 0);
        EXPECT_EQ(list->capacity, static_cast<unsigned>(capacity)) << size << ' ' << left;
    }
}

TEST_F(SearchPath, PrependMovesRepeatsToTheFront) {
    const List to = listOf("C:/a;C:/b;C:/c;C:/c"), from = listOf("C:/c;C:/dddd;C:/c;C:/C");
    const List other = listOf("");
    const char *moved = vxSearchPathGet(to.get(), 2);
    vxSearchPathPrepend(to.get(), from.get());
    const std::string expected = "C:/c;C:/dddd;C:/c;C:/C;C:/a;C:/b";
    EXPECT_EQ(textOf(to.get()), expected);
    EXPECT_EQ(vxSearchPathGet(to.get(), 0), moved);
    expectSizes(to, 6, 8, 8);
    vxSearchPathPrepend(to.get(), other.get());
    expectSizes(to, 6, 6, 0);
    vxSearchPathPrepend(to.get(), to.get());
    EXPECT_EQ(textOf(to.get()), expected);
    vxSearchPathCopy(other.get(), to.get());
    vxSearchPathCopy(other.get(), nullptr);
    vxSearchPathPrepend(nullptr, to.get());
    EXPECT_EQ(textOf(other.get()), expected);
    EXPECT_NE(vxSearchPathGet(other.get(), 0), moved);
}

TEST_F(SearchPath, RandomOperationsAgainstAModel) {
    std::mt19937 random(3);
    const auto pathOf = [&] {
        std::string text = random() % 3 == 0 ? "" : random() % 2 == 0 ? "/" : "C:\\";
        for (unsigned parts = random() % 4; parts-- != 0;)
            text += "a/.\\..//b"[random() % 9];
        return text;
    };
    for (int round = 0; round < 300; ++round) {
        SearchPathRun run(pathOf() + ";" + pathOf() + ";;" + pathOf(), here_);
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
    const List list = listOf("one;two"), root = listOf("/");
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
        // The root is an empty entry, and found there is the empty text.
        {root.get(), file.c_str() + 1, vxSearchPathGet(root.get(), 0), ""},
    };
    for (const auto &test : cases) {
        EXPECT_EQ(vxSearchPathFind(test.list, test.name, 1), test.found);
        const VxUniqueText text(vxSearchPathResolve(test.list, test.name, nullptr, 1));
        EXPECT_EQ(text != nullptr ? text.get() : "", test.resolved);
    }
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
    touch("tex/" SO "/" SO ".sgi");
    const List list = listOf("tex");
    EXPECT_EQ(vxSearchPathFind(list.get(), SO "\\" SO ".sgi", 0), vxSearchPathGet(list.get(), 0));
    EXPECT_EQ(createdFrom("C:/" SO ";" SO "\\x"), "C:/" SO ";" + here_ + "/" SO "/x");
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
