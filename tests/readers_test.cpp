// Big-endian files of the library, read by other programs.

#include <vximage.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kWidth = 131, kRows = 17;

// From 0 to the largest value: some readers stretch the range between the extremes.
std::uint16_t elementAt(int x, int y, int z, unsigned max) {
    if (x == 0 || x == kWidth - 1) return static_cast<std::uint16_t>(x == 0 ? 0 : max);
    const unsigned value =
        y % 3 == 0 ? 5U + static_cast<unsigned>(y) : static_cast<unsigned>(x * 91 + y * 7 + z * 13);
    return static_cast<std::uint16_t>(value * (max == 0xFF ? 1 : 113) & max);
}

void write(const std::string &path, unsigned type, int planes) {
    VxImage *image = vxImageOpen(path.c_str(), "w", type, 3U, unsigned{kWidth}, unsigned{kRows},
                                 static_cast<unsigned>(planes));
    vxImageUseBigEndian(image);
    std::vector<std::uint16_t> row(kWidth);
    for (int z = 0; z < planes; ++z) {
        for (int y = 0; y < kRows; ++y) {
            for (int x = 0; x < kWidth; ++x) {
                row[static_cast<std::size_t>(x)] =
                    elementAt(x, y, z, (type & 0xFF) == 1 ? 0xFF : 0xFFFF);
            }
            ASSERT_EQ(vxImagePutRow(image, row.data(), y, z), kWidth);
        }
    }
    ASSERT_EQ(vxImageClose(image), 0);
}

// The bytes of a picture as other programs write them: from the top row down, planes interleaved,
// the high byte first.
std::string expectedBytes(unsigned type, int planes) {
    std::string bytes;
    for (int y = kRows; y-- != 0;) {
        for (int x = 0; x < kWidth; ++x) {
            for (int z = 0; z < planes; ++z) {
                const unsigned element = elementAt(x, y, z, (type & 0xFF) == 1 ? 0xFF : 0xFFFF);
                if ((type & 0xFF) == 2) bytes += static_cast<char>(element >> 8);
                bytes += static_cast<char>(element);
            }
        }
    }
    return bytes;
}

std::string outputOf(const std::string &command) {
    std::string output;
    FILE *pipe = ::popen(command.c_str(), "r");
    for (int byte; (byte = std::fgetc(pipe)) != EOF;)
        output += static_cast<char>(byte);
    EXPECT_EQ(::pclose(pipe), 0) << command;
    return output;
}

// The bytes listed in lines like "  Pixel (0, 16): 12 34 56 (0.1 0.2 0.3)".
std::string dumpedBytes(const std::string &listing, int planes, bool wide) {
    std::string bytes;
    std::istringstream lines(listing);
    for (std::string line; std::getline(lines, line);) {
        if (line.find("Pixel (") == std::string::npos) continue;
        std::istringstream values(line.substr(line.find(": ") + 2));
        for (int z = 0; z < planes; ++z) {
            unsigned element = 0;
            EXPECT_TRUE(values >> element) << line;
            if (wide) bytes += static_cast<char>(element >> 8);
            bytes += static_cast<char>(element);
        }
    }
    return bytes;
}

// Without the program the test is skipped, except where all programs are required.
bool isInstalled(const std::string &program) {
    if (std::system(("command -v " + program + " >/dev/null").c_str()) == 0) return true;
    EXPECT_EQ(std::getenv("VX_REQUIRE_READERS"), nullptr) << program << " is missing";
    return false;
}

class Readers : public testing::TestWithParam<const char *> {};

INSTANTIATE_TEST_SUITE_P(Programs, Readers, testing::Values("sgitopnm", "ffmpeg", "oiiotool"));

TEST_P(Readers, SeeTheSameElements) {
    const std::string program = GetParam();
    if (!isInstalled(program)) GTEST_SKIP() << program << " is not installed";
    const std::string path = std::filesystem::temp_directory_path() /
                             ("vxreaders" + std::to_string(::getpid()) + ".sgi");
    for (const unsigned type : {0x001U, 0x002U, 0x101U, 0x102U}) {
        for (const int planes : {1, 3}) {
            SCOPED_TRACE(testing::Message() << program << " type " << type << " planes " << planes);
            std::filesystem::remove(path);
            write(path, type, planes);
            const std::string format =
                std::string(planes == 1 ? "gray" : "rgb") +
                ((type & 0xFF) == 1 ? (planes == 1 ? "" : "24") : (planes == 1 ? "16be" : "48be"));
            std::string output;
            if (program == "ffmpeg") {
                output = outputOf("ffmpeg -v error -i " + path + " -f rawvideo -pix_fmt " + format +
                                  " -");
            } else if (program == "sgitopnm") {
                output = outputOf("sgitopnm " + path + " 2>/dev/null");
            } else {
                output = dumpedBytes(outputOf("oiiotool --dumpdata " + path), planes,
                                     (type & 0xFF) == 2);
            }
            // Some programs write a header before the bytes.
            const std::string expected = expectedBytes(type, planes);
            EXPECT_GE(output.size(), expected.size());
            EXPECT_TRUE(output.ends_with(expected));
        }
    }
    std::filesystem::remove(path);
}

}  // namespace
