// Owners of handles, and whole pictures: what is released, what is complete, and what is refused.

#include <vxhandles.h>

#include <array>
#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <new>
#include <numeric>
#include <string>
#include <unistd.h>

// Memory from new: the largest block asked for, and the size from which on there is none. Not
// inlined, as compilers compare each new with its delete.
constexpr std::size_t kAny = std::numeric_limits<std::size_t>::max();
static std::size_t largestBlock, newLimit = kAny;

[[gnu::noinline]] void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
    largestBlock = std::max(largestBlock, size);
    return size < newLimit ? std::malloc(size) : nullptr;
}
[[gnu::noinline]] void *operator new(std::size_t size) {
    void *block = operator new(size, std::nothrow);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
[[gnu::noinline]] void operator delete(void *block) noexcept {
    std::free(block);
}
[[gnu::noinline]] void operator delete(void *block, std::size_t) noexcept {
    std::free(block);
}

namespace {

const std::string kFile = "handles_test" + std::to_string(::getpid()) + ".sgi";
constexpr unsigned kStorages[] = {VX_IMAGE_VERBATIM, VX_IMAGE_RUN_LENGTH};

int messages;

class Handles : public testing::Test {
protected:
    void SetUp() override {
        std::filesystem::remove(kFile);
        messages = 0;
        vxImageSetErrorHandler([](char *) { ++messages; });
    }
    void TearDown() override { vxImageSetErrorHandler(nullptr); }
};

std::string contents() {
    std::ifstream file(kFile, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

VxPicture makePicture(int width, int height, int planes, int elementBytes) {
    VxPicture picture{width, height, planes, elementBytes, {}};
    picture.elements.resize(static_cast<std::size_t>(width * height * planes));
    std::iota(picture.elements.begin(), picture.elements.end(), std::uint16_t{1});
    return picture;
}

TEST_F(Handles, OwnersHoldAndRelease) {
    ASSERT_NE(std::setlocale(LC_NUMERIC, "de_DE.UTF-8"), nullptr);
    VxUniqueStream stream(vxStreamOpen(kFile.c_str(), "w"));
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
    stream.reset();
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "de_DE.UTF-8");
    std::setlocale(LC_NUMERIC, "C");

    const VxUniqueSearchPath list(vxSearchPathCreate("/a;/b"));
    EXPECT_STREQ(VxUniqueText(vxSearchPathToString(list.get())).get(), "/a;/b");
    EXPECT_EQ(vxSampleTableMake(3, 1, 0, 0, 1)->sampleCount, 9);
    EXPECT_EQ(vxSampleTableMake(46341, 1, 0, 0, 1), nullptr);
    EXPECT_NE(vxPoolAlloc(vxPoolMake(16, 10).get()), nullptr);
    newLimit = 1;
    EXPECT_FALSE(vxSampleTableMake(3, 1, 0, 0, 1) || vxPoolMake(16, 10));
    newLimit = kAny;
}

// ---- Closing images -----------------------------------------------------------------------

VxUniqueImage halfWritten(unsigned storage, bool published) {
    VxUniqueImage image(vxImageOpen(kFile.c_str(), "w", storage | 2U, 3U, 3U, 2U, 2U));
    if (published) vxImageUseBigEndian(image.get());
    std::uint16_t row[] = {7, 7, 9};
    EXPECT_EQ(vxImagePutRow(image.get(), row, 1, 1), 3);
    vxImageSeekRow(image.get(), 0, 0);
    EXPECT_EQ(vxImageDrainPixels(image.get(), 500), 500);  // pending until the close
    return image;
}

TEST_F(Handles, FinishWritesWhatCloseWrites) {
    for (const unsigned storage : kStorages) {
        for (const bool published : {false, true}) {
            const auto written = [&](const auto &end) {
                std::filesystem::remove(kFile);
                end(halfWritten(storage, published));
                return contents();
            };
            const std::string expected =
                written([](VxUniqueImage image) { EXPECT_EQ(vxImageClose(image.release()), 0); });
            EXPECT_EQ(
                written([](VxUniqueImage image) { EXPECT_TRUE(vxImageFinish(std::move(image))); }),
                expected);
            EXPECT_EQ(written([](VxUniqueImage image) { image.reset(); }), expected);
            EXPECT_NE(written(vxImageDiscard), expected);
        }
    }
    EXPECT_FALSE(vxImageFinish(nullptr));
    vxImageDiscard(nullptr);
    EXPECT_EQ(messages, 0);
}

// Images whose files cannot be completed: the descriptor is for reading, a pipe, or closed.
constexpr VxUniqueImage (*kIncomplete[])(unsigned storage) = {
    [](unsigned storage) {
        EXPECT_TRUE(vxImageFinish(halfWritten(storage, true)));
        return VxUniqueImage(vxImageOpen(kFile.c_str(), "a"));
    },
    [](unsigned storage) {
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        VxUniqueImage image(vxImageOpenFd(ends[1], "w", storage | 1U, 1U, 10U));
        close(ends[0]);
        return image;
    },
    [](unsigned storage) {
        VxUniqueImage image = halfWritten(storage, false);
        close(image->file);
        return image;
    },
};

TEST_F(Handles, NothingIsLeftOfAnImageThatCannotBeCompleted) {
    for (const auto open : kIncomplete) {
        for (const unsigned storage : kStorages) {
            for (const bool finish : {false, true}) {
                VxUniqueImage image = open(storage);
                ASSERT_NE(image, nullptr);
                const int file = image->file;
                messages = 0;
                EXPECT_FALSE(finish && vxImageFinish(std::move(image)));
                image.reset();
                EXPECT_GT(messages, 0);
                EXPECT_LT(fcntl(file, F_GETFD), 0);
            }
        }
    }
}

// ---- Whole pictures -----------------------------------------------------------------------

TEST_F(Handles, PicturesComeBack) {
    for (const unsigned storage : kStorages) {
        for (const auto &[width, height, planes, bytes] :
             {std::array{1, 1, 1, 1}, {5, 1, 1, 2}, {5, 7, 1, 1}, {300, 70, 3, 2}}) {
            const VxPicture picture = makePicture(width, height, planes, bytes);
            ASSERT_TRUE(vxPictureWrite(kFile.c_str(), picture, storage));
            EXPECT_EQ(contents().substr(0, 2), "\x01\xDA");  // big-endian
            EXPECT_TRUE(vxPictureRead(kFile.c_str()) == picture);
            const VxUniqueImage image(vxImageOpen(kFile.c_str(), "r"));
            std::vector<std::uint16_t> row(image->xSize);
            ASSERT_GT(vxImageGetRow(image.get(), row.data(), height - 1, planes - 1), 0);
            EXPECT_EQ(row.back(), picture.row(height - 1, planes - 1)[width - 1]);
            EXPECT_EQ(row.back(), picture.elements.back());
        }
    }
}

TEST_F(Handles, HeadersThatContradictTheFile) {
    const struct {
        std::uint16_t type, dimension, x, y, z;
        std::size_t rowBytes;
        int height, planes;  // 0 if the picture is refused
    } cases[] = {
        {1, 1, 4, 9, 9, 4, 1, 1},
        {1, 2, 4, 2, 9, 8, 2, 1},
        {1, 3, 4, 2, 2, 16, 2, 2},
        {1, 3, 4, 2, 2, 15, 0, 0},
        {1, 3, 0, 65535, 65535, 0, 0, 0},
        {1, 3, 4, 0, 1, 0, 0, 0},
        {1, 0, 4, 1, 1, 4, 0, 0},
        {3, 3, 4, 1, 1, 99, 0, 0},
        {0x101, 3, 4, 65535, 65535, 0, 0, 0},
        {1, 3, 65535, 65535, 65535, 0, 0, 0},
        {2, 3, 16383, 65535, 65535, 0, 0, 0},
        {1, 3, 32768, 65535, 65535, 3 * 32768, 0, 0},
    };
    for (const auto &[type, dimension, x, y, z, rowBytes, height, planes] : cases) {
        VxImage header{};
        header.magic = VX_IMAGE_MAGIC;
        header.type = type;
        header.dimension = dimension;
        header.xSize = x;
        header.ySize = y;
        header.zSize = z;
        std::string bytes(reinterpret_cast<const char *>(&header), offsetof(VxImage, file));
        bytes.resize(VX_IMAGE_FILE_HEAD + rowBytes);
        std::ofstream(kFile, std::ios::binary) << bytes;
        largestBlock = 0;
        const std::optional<VxPicture> picture = vxPictureRead(kFile.c_str(), kAny);
        EXPECT_EQ(picture.has_value(), height != 0);
        EXPECT_EQ(picture.value_or(VxPicture{}).height, height);
        EXPECT_EQ(picture.value_or(VxPicture{}).planes, planes);
        EXPECT_LE(largestBlock, 4 * rowBytes + 2 * sizeof(std::uint16_t) * x);
    }
}

TEST_F(Handles, PicturesThatAreNotReadOrWritten) {
    EXPECT_FALSE(vxPictureRead(kFile.c_str()) || vxPictureRead(static_cast<VxImage *>(nullptr)) ||
                 vxPictureRead(static_cast<const char *>(nullptr)));
    const VxPicture picture = makePicture(4, 4, 4, 1);
    ASSERT_TRUE(vxPictureWrite(kFile.c_str(), picture));
    EXPECT_TRUE(vxPictureRead(kFile.c_str(), 64));
    EXPECT_FALSE(vxPictureRead(kFile.c_str(), 63));
    newLimit = 16;
    EXPECT_FALSE(vxPictureRead(kFile.c_str()));
    newLimit = kAny;
    VxUniqueImage image = halfWritten(VX_IMAGE_RUN_LENGTH, true);
    EXPECT_FALSE(vxPictureRead(image.get()));  // it is being written
    image.reset();
    EXPECT_FALSE(vxPictureRead(kFile.c_str()));  // rows are missing
    EXPECT_EQ(messages, 0);

    std::filesystem::remove(kFile);
    const VxPicture wrong[] = {
        {},
        {4, 4, 5, 1, picture.elements},
        {4, 4, 0, 1, {}},
        {-4, -4, 4, 1, picture.elements},
        {65536, 1, 1, 1, std::vector<std::uint16_t>(65536)},
        {4, 4, 4, 0, picture.elements},
        {4, 4, 4, 3, picture.elements},
    };
    for (const VxPicture &each : wrong)
        EXPECT_FALSE(vxPictureWrite(kFile.c_str(), each));
    EXPECT_FALSE(vxPictureWrite(nullptr, picture));
    EXPECT_FALSE(std::filesystem::exists(kFile));
    EXPECT_EQ(messages, 0);
    EXPECT_FALSE(vxPictureWrite("missing/a.sgi", picture));
    EXPECT_FALSE(vxPictureWrite(kFile.c_str(), picture, 0x0200));  // no such storage
    EXPECT_GT(messages, 1);
}

}  // namespace
