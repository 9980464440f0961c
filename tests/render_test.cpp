// The example scene: a small picture of it, and the readers that it rests on.

#include "examples/render/image_file.h"
#include "examples/render/photometric_web.h"
#include "examples/render/texture.h"
#include "examples/render/view.h"

#include <vximage.h>
#include <vxsearchpath.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

// A folder of this test's own.
std::string folder(const std::string &name) {
    const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
    const fs::path path = fs::absolute("render_" + test) / name;
    fs::remove_all(path);
    fs::create_directories(path);
    return path.string();
}

bool run(const std::string &command) {
    return std::system(command.c_str()) == 0;
}

const std::string kProgram = "'" VX_RENDER "'";
const std::string kWebs = fs::path(VX_RENDER_SCRIPT).parent_path() / "webs";

bool render(const std::string &target, const std::string &size) {
    return run("'" VX_RENDER_SCRIPT "' " + kProgram + " '" + target + "' " + size + " >/dev/null");
}

// The program alone, with the textures of a folder that the script has rendered to.
std::string command(const std::string &textures, const std::string &arguments) {
    return "ZOR_TEXTURE_PATH='" + textures + "/project' ZOR_IES_PATH='" + kWebs + "' " + kProgram +
           " " + arguments + " >/dev/null";
}

bool renderAlone(const std::string &textures, const std::string &arguments) {
    return run(command(textures, arguments));
}

std::string bytesOf(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string write(const std::string &path, const std::string &text) {
    std::ofstream(path, std::ios::binary) << text;
    return path;
}

// Is a text among the messages that a run left in its folder.
bool says(const std::string &place, const std::string &text) {
    return bytesOf(place + "/messages").find(text) != std::string::npos;
}

// ---- Pictures -----------------------------------------------------------------------------

struct Picture {
    int width = 0, height = 0;
    std::vector<Vec> pixels;  // 0 to 1, from the bottom up

    explicit Picture(const std::string &path) {
        VxImage *image = vxImageOpen(path.c_str(), "r");
        if (image == nullptr) return;
        width = image->xSize;
        height = image->ySize;
        std::vector<uint16_t> rows[3];
        for (int y = 0; y < height; ++y) {
            for (int z = 0; z < 3; ++z) {
                rows[z].resize(image->xSize);
                EXPECT_EQ(vxImageGetRow(image, rows[z].data(), y, z), width);
            }
            for (std::size_t x = 0; x < rows[0].size(); ++x)
                pixels.push_back(Vec{float(rows[0][x]), float(rows[1][x]), float(rows[2][x])} *
                                 (1 / 255.0F));
        }
        vxImageClose(image);
    }

    Vec at(int x, int y) const { return pixels[static_cast<std::size_t>(y * width + x)]; }

    // The pixel at a share of the width and of the height, from the lower left corner.
    Vec atShare(float x, float y) const {
        return at(static_cast<int>(x * float(width)), static_cast<int>(y * float(height)));
    }
};

// The picture that one of `times` the size stands for: means of light, not of what a screen shows.
Picture shrunk(const Picture &large, int times) {
    Picture small("");
    small.width = large.width / times;
    small.height = large.height / times;
    for (int i = 0; i < small.width * small.height; ++i) {
        Vec sum;
        for (int j = 0; j < times * times; ++j) {
            const Vec one =
                large.at(i % small.width * times + j % times, i / small.width * times + j / times);
            sum += Vec{std::pow(one.x, 2.2F), std::pow(one.y, 2.2F), std::pow(one.z, 2.2F)};
        }
        const Vec mean = sum * (1 / float(times * times));
        small.pixels.push_back(
            {std::pow(mean.x, 1 / 2.2F), std::pow(mean.y, 1 / 2.2F), std::pow(mean.z, 1 / 2.2F)});
    }
    return small;
}

double difference(const Picture &one, const Picture &other) {
    double sum = 0;
    for (std::size_t i = 0; i < one.pixels.size(); ++i) {
        const Vec apart = one.pixels[i] - other.pixels[i];
        sum += double{dot(apart, apart)};
    }
    return std::sqrt(sum / double(one.pixels.size()));
}

TEST(Render, DrawsTheRoomTheRightWayUp) {
    const std::string place = folder("out");
    ASSERT_TRUE(render(place, "120 80"));
    const std::string head = bytesOf(place + "/antialiased.sgi").substr(0, 12);
    EXPECT_EQ(head, std::string("\x01\xDA\x01\x01\0\3\0\x78\0\x50\0\3", 12));  // as others read it
    if (run("command -v pnmtopng >/dev/null")) {
        for (const char *name : {"plain", "antialiased", "side_by_side", "closeup"})
            EXPECT_EQ(bytesOf(place + "/" + name + ".png").substr(0, 8), "\x89PNG\r\n\x1A\n")
                << name;
    }

    const Picture picture(place + "/antialiased.sgi");
    ASSERT_EQ(picture.pixels.size(), 120U * 80U);
    const Vec sun = picture.atShare(0.532F, 0.79F);
    const Vec hills = picture.atShare(0.532F, 0.575F);
    EXPECT_GT(sun.x, 2 * sun.z) << "the poster's sun is up and to the right";
    EXPECT_LT(hills.x, 0.1F) << "its hills are below";
    EXPECT_GT(picture.atShare(0.252F, 0.7F).x, 1.5F * picture.atShare(0.1F, 0.7F).x)
        << "the left lamp's beam lies below the lamp";
    const Vec mirror = picture.atShare(0.25F, 0.5F);
    const Vec bricks = picture.atShare(0.08F, 0.5F);
    EXPECT_LT(mirror.x, 1.3F * mirror.z) << "the mirror shows the plaster behind the viewer";
    EXPECT_GT(bricks.x, 1.5F * bricks.z) << "beside it are bricks";
}

TEST(Render, DrawsTheSamePictureEachTime) {
    const std::string one = folder("one");
    const std::string other = folder("other");
    ASSERT_TRUE(render(one, "30 20") && render(other, "30 20"));
    EXPECT_EQ(bytesOf(one + "/antialiased.sgi"), bytesOf(other + "/antialiased.sgi"));
}

TEST(Render, ComesCloserToTheTruthByAntialiasing) {
    const std::string place = folder("small");
    const std::string large = folder("large");
    ASSERT_TRUE(render(place, "72 48"));
    ASSERT_TRUE(renderAlone(place, "--plain 576 384 '" + large + "'"));
    const Picture truth = shrunk(Picture(large + "/plain.sgi"), 8);
    const double plain = difference(Picture(place + "/plain.sgi"), truth);
    const double antialiased = difference(Picture(place + "/antialiased.sgi"), truth);
    EXPECT_LT(antialiased, plain / 5);
}

TEST(Render, SaysWhatIsMissingAndDrawsNothing) {
    const std::string place = folder("out");
    fs::create_directory(place + "/project");
    write(place + "/project/ball.sgi", std::string(512, 'x'));
    EXPECT_FALSE(renderAlone(place, "8 8 '" + place + "' 2>'" + place + "/messages'"));
    EXPECT_TRUE(says(place, "no texture wall/bricks.sgi"));
    EXPECT_TRUE(says(place, "cannot read texture " + place + "/project/ball.sgi"));
    EXPECT_FALSE(says(place, "no texture ball.sgi"));
    EXPECT_FALSE(fs::exists(place + "/plain.sgi") || fs::exists(place + "/room.view"));
}

TEST(Render, DrawsWhatASavedViewShows) {
    const std::string place = folder("out");
    const std::string again = folder("again");
    ASSERT_TRUE(render(place, "24 16"));
    const std::string view = bytesOf(place + "/room.view");
    EXPECT_EQ(view, std::string("\x3E\x4C\xCC\xCD\x3F\xC0\0\0\x40\x86\x66\x66"
                                "\x3D\x4C\xCC\xCD\x3F\x6B\x85\x1F\xBF\x80\0\0",
                                24));
    std::string moved = view;
    moved[0] = '\x3F';  // three quarters of a metre to the right
    for (const std::string &bytes : {view, moved}) {
        const std::string file = write(again + "/saved", bytes);
        ASSERT_TRUE(renderAlone(place, "--plain --view '" + file + "' 24 16 '" + again + "'"));
        EXPECT_EQ(bytesOf(again + "/room.view"), bytes);
        EXPECT_EQ(bytesOf(again + "/plain.sgi") == bytesOf(place + "/plain.sgi"), bytes == view);
    }

    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    const View without[] = {{{1, 2, 3}, {1, 2, 3}},
                            {{1, 2, 3}, {1, 9, 3}},
                            {{1, 2, 3}, {1, 2, kNone}},
                            {{1, kNone, 3}}};
    View read;
    for (const View &each : without)
        EXPECT_TRUE(writeView(each, again + "/none") && !readView(read, again + "/none"));
    EXPECT_FALSE(readView(read, write(again + "/short", view.substr(1))));
    EXPECT_FALSE(renderAlone(place, "--view '" + again + "/short' 24 16 '" + again + "' 2>&1"));
}

// The sizes are ones that no one waits for.
TEST(Render, StopsWhereThePictureCannotBeWritten) {
    const std::string place = folder("out");
    ASSERT_TRUE(render(place, "12 8"));
    const std::string part = place + "/plain.sgi.part";
    const std::string older = bytesOf(place + "/plain.sgi");
    const std::string arguments = "16 16384 '" + place + "' 2>'" + place + "/messages'";
    EXPECT_FALSE(run("ulimit -f 1; " + command(place, arguments)));
    EXPECT_TRUE(says(place, "cannot write " + place + "/plain.sgi: File too large"));
    EXPECT_FALSE(fs::exists(part));
    EXPECT_TRUE(run(command(place, arguments) + " & until test -e '" + part +
                    "'; do sleep 0.01; done; kill $!; wait $!; test $? = 143"));
    EXPECT_FALSE(fs::exists(part));
    EXPECT_EQ(bytesOf(place + "/plain.sgi"), older);
    fs::create_directory(part);
    EXPECT_FALSE(renderAlone(place, "16384 " + arguments.substr(3)));
    EXPECT_TRUE(says(place, "cannot write " + place + "/plain.sgi: Is a directory"));
}

TEST(Render, AWholePictureTakesThePlaceOfAnOlderOne) {
    const std::string path = folder("out") + "/one.sgi";
    const Vec row[] = {{0, 0.5F, 1}};
    std::string alone;
    const struct {
        std::string older;
        int rows;
        bool close;
    } cases[] = {
        {"", 1, true}, {"older", 0, true}, {"older", 1, false}, {std::string(5000, 'x'), 1, true}};
    for (const auto &[older, rows, close] : cases) {
        const bool whole = rows == 1 && close;
        write(path, older);
        {
            ImageFile file(path.c_str(), 1, 1, "");
            if (rows == 1) file.putRow(0, row);
            EXPECT_EQ(bytesOf(path), older);
            EXPECT_EQ(close && file.close(), whole);
        }
        if (alone.empty()) alone = bytesOf(path);
        EXPECT_EQ(bytesOf(path), whole ? alone : older);
        EXPECT_FALSE(fs::exists(path + ".part"));
    }
}

// ---- Textures -----------------------------------------------------------------------------

TEST(Render, TexturesBlendBetweenElementsAndRepeat) {
    const std::string path = folder("out") + "/two.sgi";
    ImageFile file(path.c_str(), 2, 2, "");
    const Vec low[] = {{0, 0, 0}, {1, 0, 0}};
    const Vec high[] = {{0, 1, 0}, {1, 1, 1}};
    file.putRow(0, low);
    file.putRow(1, high);
    ASSERT_TRUE(file.close());

    TextureShelf shelf;
    const Texture *texture = shelf.find(path.c_str());
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(shelf.find(path.c_str()), texture);
    EXPECT_EQ(shelf.find((path + "x").c_str()), nullptr);
    const struct {
        float u, v;
        Vec color;
    } cases[] = {
        {0.25F, 0.25F, {0, 0, 0}},   {0.75F, 0.25F, {1, 0, 0}},         {0.25F, 0.75F, {0, 1, 0}},
        {0.5F, 0.25F, {0.5F, 0, 0}}, {0.5F, 0.5F, {0.5F, 0.5F, 0.25F}}, {1.0F, 0.25F, {0.5F, 0, 0}},
        {-1.75F, 7.75F, {0, 1, 0}},
    };
    for (const auto &each : cases) {
        const Vec apart = texture->at(each.u, each.v) - each.color;
        EXPECT_LT(length(apart), 1e-5F) << each.u << ", " << each.v;
    }
}

// ---- Photometric webs ---------------------------------------------------------------------

const std::string kHead = "IESNA:LM-63-2002\r\n[TEST] none\r\nTILT=NONE\r\n";
const std::string kNumbers =
    "1 1000 2 3 2 1 2 0 0 0\r\n0.5 1 10\r\n0 45 90\r\n0 90\r\n100,50.5\t0\r\n200 150 0\r\n";

TEST(Render, WebsAreInterpolatedAndMirrored) {
    PhotometricWeb web;
    const std::string path = write(folder("out") + "/web.ies", kHead + kNumbers);
    ASSERT_TRUE(web.load(path.c_str()));
    const float cases[][3] = {
        {0, 0, 100},   {45, 0, 50.5F},   {22.5F, 0, 75.25F}, {90, 45, 0},   {91, 0, 0},
        {0, 45, 150},  {0, 135, 150},    {0, 225, 150},      {0, 315, 150}, {0, 90, 200},
        {0, 270, 200}, {45, 180, 50.5F}, {67.5F, 90, 75},
    };
    for (const auto &[vertical, horizontal, candela] : cases)
        EXPECT_FLOAT_EQ(web.candela(vertical, horizontal), candela)
            << vertical << ", " << horizontal;
}

TEST(Render, WebsAreChosenByWildcard) {
    VxSearchPath *list = vxPathStoreGet(VX_CATEGORY_PHOTOMETRIC_WEBS, VX_LEVEL_ENVIRONMENT);
    const std::string first = folder("first");
    const std::string second = folder("second");
    for (const std::string &place : {first + "/none", first, second})
        vxSearchPathInsert(list, list->count, place.c_str());
    vxPathStoreSet(VX_CATEGORY_PHOTOMETRIC_WEBS, VX_LEVEL_ENVIRONMENT, nullptr);
    fs::create_directory(first + "/beam_0.ies");  // none: it hides no file
    for (const char *name : {"/beam_2.ies", "/beam_1.ies", "/beam_3.txt", "/ring.ies"})
        write(first + name, "");
    for (const char *name : {"/beam_0.ies", "/spot.ies"})
        write(second + name, "");
    const char *const cases[][2] = {
        {"beam*.ies", "beam_1.ies"},
        {"beam_[2-9]*", "beam_2.ies"},
        {"spot*", "spot.ies"},
        {"????.ies", "ring.ies"},
        {"*_0.ies", "beam_0.ies"},
        {"beam", ""},
        {"[", ""},
    };
    for (const auto &[wildcard, name] : cases)
        EXPECT_STREQ(photometricWebNamed(wildcard), name) << wildcard;
}

TEST(Render, DamagedWebsAreRefused) {
    const std::string cases[] = {
        "",
        kHead,
        "IESNA:LM-63-2002\n" + kNumbers,
        "TILT=NONE\n" + kNumbers,
        kHead + kNumbers.substr(0, kNumbers.size() - 5),
        kHead + "1 1000 2 3 -2 1 2 0 0 0 0.5 1 10 0 45 90",
        kHead + "1 1000 2 1e30 1 1 2 0 0 0 0.5 1 10 0 45 90",
        kHead + "1 1000 2 nan 1 1 2 0 0 0 0.5 1 10 0 45 90",
        kHead + "1 1000 2 2 1 1 2 0 0 0 0.5 1 10 90 0 0 7 8",
        kHead + "1 1000 2 2 1 1 2 0 0 0 0.5 1 10 0 what 0 7 8",
        kHead + "1 1000 2 2 1 1 2 0 0 0 0.5 1 10 0 90 0 nan 8",
        kHead + "1 1000 2 2 1 1 2 0 0 0 0.5 1 10 0 90 0 7 -inf",
        kHead + "1 1000 1e30 2 1 1 2 0 0 0 0.5 1 10 0 90 0 7 1e30",
        kHead + "1 1000 2 2 1 1 2 0 0 0 0.5 1 10 0 90 nan 7 8",
    };
    const std::string place = folder("out");
    for (const std::string &text : cases) {
        PhotometricWeb web;
        EXPECT_FALSE(web.load(write(place + "/web.ies", text).c_str())) << text;
    }
}

}  // namespace
