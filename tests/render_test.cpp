// The example scene: run.sh draws it the right way up, and the program reports what is missing.

#include <vxhandles.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace {

namespace fs = std::filesystem;

// An empty folder for the current test.
std::string emptyFolder() {
    const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
    const fs::path path = fs::absolute("render_" + test);
    fs::remove_all(path);
    fs::create_directories(path);
    return path.string();
}

bool run(const std::string &command) {
    return std::system(command.c_str()) == 0;
}

std::string contentsOf(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct Color {
    int red, green, blue;
};

// The pixel at a share of the width and of the height, from the lower left corner.
Color colorAt(const VxPicture &picture, double across, double up) {
    const int x = static_cast<int>(across * picture.width);
    const int y = static_cast<int>(up * picture.height);
    return {picture.row(y, 0)[x], picture.row(y, 1)[x], picture.row(y, 2)[x]};
}

TEST(Render, DrawsTheRoomTheRightWayUp) {
    const std::string folder = emptyFolder();
    ASSERT_TRUE(run("'" VX_RENDER_SCRIPT "' '" VX_RENDER "' '" + folder + "' 60 40 >/dev/null"));
    if (run("command -v pnmtopng >/dev/null")) {
        for (const char *name : {"plain", "antialiased", "side_by_side", "closeup"})
            EXPECT_EQ(contentsOf(folder + "/" + name + ".png").substr(0, 4), "\x89PNG") << name;
    }
    EXPECT_EQ(contentsOf(folder + "/room.view").size(), 24U);

    const std::string path = folder + "/antialiased.sgi";
    const std::string head("\x01\xDA\x01\x01\0\3\0\x3C\0\x28\0\3", 12);  // big-endian
    EXPECT_EQ(contentsOf(path).substr(0, 12), head);
    EXPECT_EQ(contentsOf(folder + "/plain.sgi").substr(0, 12), head);
    const std::optional<VxPicture> picture = vxPictureRead(path.c_str());
    ASSERT_TRUE(picture);
    const Color sun = colorAt(*picture, 0.532, 0.79);
    const Color hills = colorAt(*picture, 0.532, 0.575);
    EXPECT_GT(sun.red, 2 * sun.blue) << "the sun of the poster is up and to the right";
    EXPECT_LT(hills.red, 40) << "its hills are below";
    EXPECT_GT(2 * colorAt(*picture, 0.252, 0.7).red, 3 * colorAt(*picture, 0.1, 0.7).red)
        << "the left lamp throws its beam down";
    const Color mirror = colorAt(*picture, 0.25, 0.5);
    const Color bricks = colorAt(*picture, 0.08, 0.5);
    EXPECT_LT(10 * mirror.red, 13 * mirror.blue) << "the mirror shows the plaster";
    EXPECT_GT(2 * bricks.red, 3 * bricks.blue) << "to its left are bricks";
}

TEST(Render, SaysWhatIsMissingAndDrawsNothing) {
    const std::string folder = emptyFolder();
    std::ofstream(folder + "/ball.sgi") << std::string(512, 'x');
    const std::string webs = fs::path(VX_RENDER_SCRIPT).parent_path() / "webs";
    EXPECT_FALSE(run("ZOR_TEXTURE_PATH='" + folder + "' ZOR_IES_PATH='" + webs +
                     "' '" VX_RENDER "' 8 8 '" + folder + "' 2>'" + folder + "/messages'"));
    const std::string messages = contentsOf(folder + "/messages");
    EXPECT_NE(messages.find("no texture wall/bricks.sgi"), std::string::npos) << messages;
    EXPECT_NE(messages.find("cannot read texture " + folder + "/ball.sgi"), std::string::npos);
    EXPECT_EQ(messages.find("no texture ball.sgi"), std::string::npos);
    EXPECT_FALSE(fs::exists(folder + "/plain.sgi") || fs::exists(folder + "/room.view"));
}

}  // namespace
