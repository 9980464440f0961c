// Images through the shared library, as its users call it, and the owners of handles. The models
// are those of the fuzz targets.

#include "data_rows.h"
#include "fuzz/models/image_run.h"
#include "scratch_folder.h"

#include <cerrno>
#include <clocale>
#include <functional>
#include <new>
#include <numeric>
#include <random>
#include <tuple>

// Memory from new: the largest block asked for, and the size from which on there is none. Not
// inlined, as compilers compare each new with its delete.
static std::size_t largestBlock, newLimit = SIZE_MAX;

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

using Byte = std::uint8_t;
using Word = std::uint16_t;
using Row = std::vector<Word>;

constexpr unsigned kFormats[] = {
    1, 2, 0x101, 0x102, kBigEndian | 1, kBigEndian | 2, kBigEndian | 0x101, kBigEndian | 0x102};

Elements numbersIn(const std::string &text) {
    std::istringstream in(text);
    return {std::istream_iterator<unsigned>(in), {}};
}

// The reports of the messages whose numbers are in the text. One message takes an argument.
std::string reportsOf(const std::string &numbers, unsigned argument = 0) {
    std::string reports;
    for (const unsigned number : numbersIn(numbers))
        reports += reportOf(static_cast<int>(number), argument);
    return reports;
}

// Each test expects all messages.
class Image : public testing::Test {
protected:
    void SetUp() override { collectReports(); }
    void TearDown() override {
        EXPECT_EQ(takeReports(), "");
        vxImageSetErrorHandler(nullptr);
    }

    VxImage *create(unsigned format, unsigned x, unsigned y, unsigned z) const {
        folder_.clear();
        VxImage *image = vxImageOpen(path_.c_str(), "w", format & ~kBigEndian, 3U, x, y, z);
        if ((format & kBigEndian) != 0) vxImageUseBigEndian(image);
        return image;
    }
    static void put(VxImage *image, const Row &row, int y, int z) {
        Row passed = row;
        EXPECT_EQ(vxImagePutRow(image, passed.data(), y, z), image->xSize);
        EXPECT_EQ(passed, row);
    }
    // With one row written and, in the stream, one pending.
    VxUniqueImage halfWritten(unsigned format) const {
        VxUniqueImage image(create(format, 3, 2, 2));
        put(image.get(), {7, 7, 9}, 1, 1);
        EXPECT_GE(vxImageSeekRow(image.get(), 0, 0), 0);
        EXPECT_EQ(vxImageDrainPixels(image.get(), 500), 500);
        return image;
    }
    VxImage *reopened(VxImage *image) const {
        EXPECT_EQ(vxImageClose(image), 0);
        return vxImageOpen(path_.c_str(), "r");
    }

    // The file, or that of an image when it is closed, reads as the format says.
    void expectFile(const std::string &file) const {
        folder_.write("a.sgi", file);
        EXPECT_EQ(differences(path_, ImageModel(file)), "");
    }
    void expectFile(VxImage *image, FileModel &model) const {
        EXPECT_EQ(vxImageClose(image), 0);
        EXPECT_TRUE(folder_.read("a.sgi") == model.bytes());
        EXPECT_EQ(differences(path_, ImageModel(model.bytes())), "");
    }

    const ScratchFolder folder_;
    const std::string path_ = folder_.at("a.sgi");
};

// ---- Reading

std::uint64_t hashOf(const VxPicture &picture) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const unsigned element : picture.elements) {
        hash = (hash ^ (element & 0xFF)) * 0x100000001b3;
        hash = (hash ^ element >> 8) * 0x100000001b3;
    }
    return hash;
}

TEST_F(Image, ReadsTheFilesOfOtherPrograms) {
    for (const DataRow &sample : dataRows("samples.txt", "samples")) {
        SCOPED_TRACE(sample[0]);
        std::ifstream file(VX_TEST_DATA "/samples/" + sample[0], std::ios::binary);
        expectFile({std::istreambuf_iterator<char>(file), {}});
        const VxPicture picture = vxPictureRead(path_.c_str()).value();
        EXPECT_EQ(hashOf(picture), std::stoull(sample[9], nullptr, 16));
    }
}

std::string packed(const Elements &numbers, unsigned width) {
    std::string bytes;
    for (const unsigned number : numbers) {
        for (unsigned i = 0; i < width; ++i)
            bytes += static_cast<char>(number >> 8 * i);
    }
    return bytes;
}

TEST_F(Image, HeadersThatAreWrong) {
    for (const DataRow &test : dataRows("image.txt", "headers")) {
        SCOPED_TRACE(testing::PrintToString(test));
        const Elements fields = numbersIn(test[0]);
        std::string file = packed(fields, 2);
        file.resize(std::stoul(test[1]));
        expectFile(file);
        const ImageModel model(file);
        EXPECT_EQ(model.opening(), reportsOf(test[2], fields[0]));
        EXPECT_EQ(test[2].empty() ? model.row(0, 0).reports : "", reportsOf(test[3]));
        largestBlock = 0;
        const VxPicture picture = vxPictureRead(path_.c_str(), SIZE_MAX).value_or(VxPicture{});
        EXPECT_LE(largestBlock, 4 * file.size() + 4 * fields[3] + 1000);
        EXPECT_EQ((Elements{unsigned(picture.height), unsigned(picture.planes)}),
                  numbersIn(test[4]));
        takeReports();
    }
}

TEST_F(Image, DamagedRows) {
    for (const unsigned width : {1U, 2U}) {
        for (const DataRow &test : dataRows("image.txt", "damaged rows")) {
            SCOPED_TRACE(testing::PrintToString(test));
            Elements stored = numbersIn(test[0]);
            auto size = static_cast<unsigned>(std::stoi(test[1]));
            if (test[1].starts_with('+')) size += static_cast<unsigned>(stored.size()) * width;
            std::string file = packed({474, 0x100 + width, 2, 6, 1, 1}, 2);
            file.resize(512);
            file += packed({static_cast<unsigned>(std::stoul(test[2])), size}, 4);
            if (stored[0] == 131) stored[0] = 0x5583;  // the high byte of a head is ignored
            file += packed(stored, width) + (test[1].ends_with('!') ? "x" : "");
            expectFile(file);
            ReadResult expected{reportsOf(test[3]), numbersIn(test[4]), size};
            if (test[4].empty()) expected.row.reset();
            EXPECT_EQ(ImageModel(file).row(0, 0), expected);
        }
    }
}

TEST_F(Image, AnyByteMayBeWrong) {
    for (const unsigned format : kFormats) {
        FileModel model(format, 6, 2, 2);
        for (const std::size_t index : {2U, 0U, 3U, 1U})
            model.put({4, 9, 9, 9, 7, 0x305}, index);
        const std::string good = model.bytes();
        for (std::size_t length = 512; length <= good.size(); ++length)
            expectFile(good.substr(0, length));
        for (std::size_t at = 0; at < good.size(); at = at == 11 ? 512 : at + 1) {
            for (const char value : {'\0', '\1', '\2', '\3', '\4', '\x7F', '\x80', '\xFF'})
                expectFile(std::string(good).replace(at, 1, 1, value));
        }
    }
}

// ---- Writing

TEST_F(Image, FilesAreWhatWasWritten) {
    std::mt19937 random(1);
    const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    for (const unsigned width : {0U, 1U, 2U, 3U, 4U, 5U, 31U, 32U, 33U, 127U, 128U, 255U, 300U}) {
        for (const auto &[y, z] : {std::pair{1U, 1U}, {5U, 1U}, {1U, 3U}, {3U, 4U}}) {
            for (int test = 0; test < 32; ++test) {
                const unsigned format = kFormats[test % 8];
                SCOPED_TRACE(testing::Message() << width << 'x' << y << 'x' << z << ' ' << format);
                folder_.clear();
                ImageRun run(path_, format, width, y, z, test < 8);
                for (int i = 0; i < 10; ++i)
                    run.change(below);
                const std::string file = run.close(test % 3);
                ASSERT_EQ(run.difference(), "");
                ASSERT_TRUE(folder_.read("a.sgi") == file);
                ASSERT_EQ(differences(path_, ImageModel(file)), "");
            }
        }
    }
}

TEST_F(Image, WideRows) {
    for (const DataRow &test : dataRows("image.txt", "wide rows")) {
        SCOPED_TRACE(testing::PrintToString(test));
        const auto type = static_cast<unsigned>(std::stoul(test[0]));
        const auto width = static_cast<unsigned>(std::stoul(test[1]));
        Row row(width);
        for (std::size_t i = 0; i < width; ++i)
            row[i] = static_cast<std::uint16_t>(i / std::stoul(test[2]) % 251);
        FileModel model(type, width, 1, 1);
        model.put(row, 0);
        VxImage *image = create(type, width, 1, 1);
        put(image, row, 0, 0);
        expectFile(image, model);
        EXPECT_EQ(ImageModel(model.bytes()).row(0, 0).reports, reportsOf(test[3]));
    }
}

TEST_F(Image, RowsAfter4GiBAreNeitherWrittenNorRead) {
    Row row(6, 1);
    VxImage *image = create(0x101, 6, 1, 1);
    image->appendOffset = 0xFFFFFFFB;
    EXPECT_EQ(vxImagePutRow(image, row.data(), 0, 0), 6);
    EXPECT_EQ(vxImagePutRow(image, row.data(), 0, 0), -1);
    EXPECT_EQ(takeReports(), reportOf(20377));
    EXPECT_EQ(image->rowStarts[0], 0xFFFFFFFB);
    EXPECT_EQ(image->wasteBytes, 0U);
    EXPECT_EQ(vxImageClose(image), 0);
    image = create(1, 6, 65535, 65535);
    put(image, row, 54527, 10922);  // starts at the last position
    EXPECT_EQ(vxImagePutRow(image, row.data(), 54528, 10922), -1);
    EXPECT_EQ(takeReports(), reportOf(20377));
    image = reopened(image);
    std::filesystem::resize_file(path_, std::uintmax_t{5} << 30);
    EXPECT_EQ(vxImageGetRow(image, row.data(), 54527, 10922), 6);
    EXPECT_EQ(vxImageGetRow(image, row.data(), 54528, 10922), -1);
    EXPECT_EQ(takeReports(), reportOf(20380));
    EXPECT_EQ(vxImageClose(image), 0);
}

TEST_F(Image, RowsThatCannotBePut) {
    Row row(4);
    VxImage *image = create(0x101, 4, 3, 2);
    EXPECT_EQ(vxImagePutRow(image, row.data(), 1, 1), 4);
    EXPECT_EQ(vxImageSeekRow(image, 1, 1), 512 + 2 * 24);
    EXPECT_EQ(vxImageRowSize(image), 3);
    for (const auto &[y, z] : {std::pair{3, 0}, {0, 2}, {-1, 0}, {0, -1}}) {
        EXPECT_EQ(vxImagePutRow(image, row.data(), y, z), -1);
        EXPECT_EQ(vxImageSeekRow(image, unsigned(y), unsigned(z)), -1);
        EXPECT_EQ(takeReports(), reportsOf("20372 20372"));
        vxImageSetRowSize(image, 99, unsigned(y), unsigned(z));
    }
    EXPECT_EQ(image->y, 1);
    EXPECT_EQ(image->appendOffset, 512U + 2 * 24 + 3);
    EXPECT_EQ(vxImageSeekRow(image, 0, 0), 0);
    EXPECT_EQ(vxImageRowSize(image), -1);
    EXPECT_EQ(vxImageClose(image), 0);
    for (const auto &[type, report] : {std::pair{3U, 20378}, {0x201U, 20379}}) {
        image = create(type, 4, 3, 2);
        EXPECT_EQ(vxImageRowSize(image), 0);
        EXPECT_EQ(vxImagePutRow(image, row.data(), 0, 0), -1);
        EXPECT_EQ(takeReports(), reportOf(report));
        EXPECT_EQ(image->minValue, 10000000U);
        EXPECT_EQ(vxImageClose(image), 0);
    }
}

// ---- Opening

TEST_F(Image, ModesAndDescriptors) {
    const auto descriptor = [&] { return ::open(path_.c_str(), O_RDWR | O_CREAT, 0600); };
    ::close(0);
    VxImage *image = vxImageOpenFd(descriptor(), "w", 0x101U, 1U, 9U);  // no more sizes are taken
    EXPECT_EQ(image->file, 0);
    FileModel model(0x101, 9, 1, 1);
    expectFile(image, model);
    for (const char *mode : {"r+", "w+", "a+"}) {
        EXPECT_EQ(vxImageOpen(path_.c_str(), mode, 1, 1, 1), nullptr);
        EXPECT_EQ(takeReports(), reportOf(20361));
    }
    EXPECT_TRUE(folder_.read("a.sgi") == model.bytes());
    image = vxImageOpenFd(descriptor(), "a");
    EXPECT_EQ(image->flags, VX_IMAGE_WRITE);
    EXPECT_EQ(image->appendOffset, 520U);
    EXPECT_EQ(vxImageClose(image), 0);
    errno = 0;
    EXPECT_EQ(vxImageOpen("/no/such/file", "r"), nullptr);
    EXPECT_EQ(vxImageOpenFd(-1, "r"), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(takeReports(), "");
    EXPECT_EQ(vxImageOpen("/no/such/folder/file", "w", 1, 1, 1), nullptr);
    EXPECT_EQ(vxImageOpenFd(-1, "w", 1, 1, 1), nullptr);
    EXPECT_EQ(takeReports(), reportOf(20363, "/no/such/folder/file") + reportOf(20363, nullptr));
}

// ---- The pixel stream

int nextPixel(VxImage *image) {
    return --image->pixelsLeft >= 0 ? *image->nextPixel++ : vxImageFillPixels(image);
}

int putPixel(VxImage *image, int value) {
    if (--image->pixelsLeft < 0) return vxImageDrainPixels(image, value);
    *image->nextPixel++ = static_cast<std::uint16_t>(value);
    return value;
}

TEST_F(Image, StreamWritesEveryRowOnce) {
    for (const auto &[x, y, z] :
         {std::tuple{1U, 2U, 3U}, {3U, 2U, 3U}, {4U, 1U, 1U}, {2U, 3U, 1U}}) {
        const unsigned total = x * y * z;
        for (unsigned test = 0; test < 8 * (total + 3); ++test) {
            const unsigned pixels = test / 8;
            FileModel model(kFormats[test % 8], x, y, z);
            Row row(x);
            VxImage *image = create(kFormats[test % 8], x, y, z);
            for (unsigned i = 0; i < pixels; ++i) {
                const int value = 70000 + static_cast<int>(i);
                if (i % x == 0 && i != 0 && i <= total) model.put(row, i / x - 1);
                if (i < total) row[i % x] = static_cast<std::uint16_t>(value);
                EXPECT_EQ(putPixel(image, value), i < total ? value : -1);
            }
            EXPECT_EQ(image->flags, VX_IMAGE_WRITE | (pixels > total ? VX_IMAGE_EOF : 0));
            // The flush writes a pending row, and the close writes it again.
            for (int copies = pixels != 0 && pixels <= total ? 2 : 0; copies != 0; --copies)
                model.put(row, (pixels - 1) / x);
            EXPECT_EQ(vxImageFlush(image), 0);
            expectFile(image, model);
        }
    }
}

TEST_F(Image, StreamContinuesAfterItsEnd) {
    VxImage *image = create(2, 2, 2, 2);
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(putPixel(image, i), i);
    EXPECT_EQ(putPixel(image, 99), -1);
    EXPECT_GE(vxImageSeekRow(image, 1, 0), 0);
    for (int i = 20; i < 24; ++i)
        EXPECT_EQ(putPixel(image, i), i);
    image = reopened(image);
    for (const int value : {0, 1, 20, 21, 22, 23, -1, 6})
        EXPECT_EQ(nextPixel(image), value);
    EXPECT_EQ(*image->nextPixel, 7);
    EXPECT_EQ(nextPixel(image), 22);  // row 0 of the last plane again
    EXPECT_EQ(vxImageClose(image), 0);
}

// More often than pixelsLeft can count.
bool alwaysFails(const std::function<int()> &step) {
    int failures = 0;
    for (int i = 0; i < 70000; ++i)
        failures += step() == -1 ? 1 : 0;
    return failures == 70000;
}

TEST_F(Image, StreamStepsFailAnyNumberOfTimes) {
    VxImage *image = create(0x101, 2, 2, 1);
    const auto next = [&] { return nextPixel(image); };
    const auto put = [&] { return putPixel(image, 1); };
    EXPECT_TRUE(alwaysFails(next));  // the wrong direction
    EXPECT_EQ(image->flags, VX_IMAGE_WRITE);
    image = reopened(image);
    EXPECT_TRUE(alwaysFails(put));
    EXPECT_EQ(vxImagePutRow(image, Row(2).data(), 0, 0), -1);
    EXPECT_EQ(image->flags, VX_IMAGE_READ);
    EXPECT_TRUE(alwaysFails(next));  // a row that was never written
    EXPECT_EQ(image->flags, VX_IMAGE_READ | VX_IMAGE_ERROR);
    EXPECT_EQ(vxImageFlush(image), 0);
    EXPECT_EQ(vxImageClose(image), 0);
    image = create(2, 1, 2, 1);
    EXPECT_EQ(put(), 1);
    image->y = 9;
    EXPECT_EQ(vxImageFlush(image), -1);  // the row stays pending
    EXPECT_EQ(image->flags, VX_IMAGE_WRITE | VX_IMAGE_ERROR);
    EXPECT_EQ(takeReports(), reportOf(20372));
    image->y = 0;
    EXPECT_EQ(put(), 1);
    EXPECT_TRUE(alwaysFails(put));  // the image is full
    image = reopened(image);
    EXPECT_EQ(next(), 1);
    EXPECT_EQ(next(), -1);
    EXPECT_EQ(vxImageClose(image), 0);
    image = reopened(create(1, 0, 1, 1));
    image->flags |= VX_IMAGE_READWRITE;
    EXPECT_EQ(next(), -1);  // an empty row ends the reading of a handle for both directions
    EXPECT_EQ(image->flags, VX_IMAGE_READWRITE | VX_IMAGE_EOF);
    image->flags = VX_IMAGE_READ;
    EXPECT_EQ(vxImageClose(image), 0);
}

// ---- Owners

TEST_F(Image, OwnersWriteWhatCloseWrites) {
    for (const unsigned format : kFormats) {
        FileModel model(format, 3, 2, 2);
        model.put({7, 7, 9}, 3);
        model.put({500, 0, 0}, 0);
        expectFile(halfWritten(format).release(), model);
        EXPECT_TRUE(vxImageFinish(halfWritten(format)));
        EXPECT_TRUE(folder_.read("a.sgi") == model.bytes());
        halfWritten(format).reset();
        EXPECT_TRUE(folder_.read("a.sgi") == model.bytes());
        vxImageDiscard(halfWritten(format));
        EXPECT_FALSE(folder_.read("a.sgi") == model.bytes());
    }
    EXPECT_FALSE(vxImageFinish(nullptr));
    vxImageDiscard(nullptr);
}

void expectIncomplete(VxUniqueImage image, const std::string &messages) {
    const int descriptor = image->file;
    EXPECT_FALSE(vxImageFinish(std::move(image)));
    EXPECT_EQ(takeReports(), reportsOf(messages));
    EXPECT_LT(::fcntl(descriptor, F_GETFD), 0);
}

TEST_F(Image, NothingIsLeftOfAnImageThatCannotBeCompleted) {
    for (const unsigned type : {2U, 0x102U}) {
        const std::string tables = type == 2 ? "" : "20356 ";
        halfWritten(type).reset();
        expectIncomplete(VxUniqueImage(vxImageOpen(path_.c_str(), "a")), tables + "20352");
        VxUniqueImage image = halfWritten(type);
        ::close(image->file);
        expectIncomplete(std::move(image), "20377 " + tables + "20352 20355");
        int ends[2];
        ASSERT_EQ(::pipe(ends), 0);
        image.reset(vxImageOpenFd(ends[1], "w", type, 2U, 4U, 3U));
        EXPECT_EQ(vxImagePutRow(image.get(), Row(4).data(), 0, 0), -1);
        EXPECT_EQ(vxImageClose(image.get()), -1);  // the handle stays valid
        EXPECT_EQ(takeReports(), reportsOf("20377 " + tables + "20352"));
        expectIncomplete(std::move(image), tables + "20352");
        image.reset(vxImageOpenFd(ends[0], "r"));
        EXPECT_EQ(image != nullptr, type == 2);
        EXPECT_FALSE(vxPictureRead(image.get()));
        EXPECT_EQ(takeReports(), reportOf(type == 2 ? 20380 : 20369));
    }
}

TEST_F(Image, OtherOwnersHoldAndRelease) {
    ASSERT_NE(std::setlocale(LC_NUMERIC, "de_DE.UTF-8"), nullptr);
    VxUniqueStream stream(vxStreamOpen(path_.c_str(), "w"));
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
    newLimit = SIZE_MAX;
}

// ---- Pictures

VxPicture pictureOf(int width, int height, int planes) {
    VxPicture picture;
    std::tie(picture.width, picture.height, picture.planes) = std::tie(width, height, planes);
    picture.elements.resize(static_cast<std::size_t>(width * height * planes));
    std::iota(picture.elements.begin(), picture.elements.end(), std::uint16_t{1});
    return picture;
}

TEST_F(Image, PicturesAreWrittenAndRead) {
    for (const unsigned storage : {VX_IMAGE_VERBATIM, VX_IMAGE_RUN_LENGTH}) {
        for (const auto &[width, height, planes, elementBytes] :
             {std::tuple{1, 1, 1, 1}, {5, 1, 1, 2}, {5, 7, 1, 1}, {300, 70, 3, 2}}) {
            VxPicture picture = pictureOf(width, height, planes);
            picture.elementBytes = elementBytes;
            folder_.clear();
            ASSERT_TRUE(vxPictureWrite(path_.c_str(), picture, storage));
            EXPECT_TRUE(folder_.read("a.sgi") == FileModel(picture, storage).bytes());
            EXPECT_TRUE(vxPictureRead(path_.c_str()) == picture);
            EXPECT_EQ(picture.row(height - 1, planes - 1) + width, &picture.elements.back() + 1);
        }
    }
}

TEST_F(Image, PicturesThatAreNotRead) {
    EXPECT_FALSE(vxPictureRead(path_.c_str()) || vxPictureRead(static_cast<VxImage *>(nullptr)) ||
                 vxPictureRead(static_cast<const char *>(nullptr)));
    ASSERT_TRUE(vxPictureWrite(path_.c_str(), pictureOf(4, 4, 4)));
    EXPECT_EQ(vxPictureRead(path_.c_str(), 64).value().elementBytes, 1);  // by default
    EXPECT_FALSE(vxPictureRead(path_.c_str(), 63));
    newLimit = 16;
    EXPECT_FALSE(vxPictureRead(path_.c_str()));
    newLimit = SIZE_MAX;
    EXPECT_FALSE(vxPictureRead(halfWritten(1).get()));  // it is being written
    // By default up to 512 MiB; these rows are not in the file.
    for (const unsigned height : {16384U, 16385U}) {
        folder_.write("a.sgi", packed({474, 1, 2, 16384, height, 1}, 2) + std::string(500, '\0'));
        EXPECT_FALSE(vxPictureRead(path_.c_str()));
        EXPECT_EQ(takeReports(), height == 16384 ? reportOf(20380) : "");
    }
}

TEST_F(Image, PicturesThatAreNotWritten) {
    const VxPicture picture = pictureOf(4, 4, 4);
    const VxPicture wrong[] = {
        {},
        {4, 4, 5, 1, picture.elements},
        {4, 4, 0, 1, {}},
        {-4, -4, 4, 1, picture.elements},
        {65536, 1, 1, 1, Row(65536)},
        {4, 4, 4, 0, picture.elements},
        {4, 4, 4, 3, picture.elements},
    };
    for (const VxPicture &each : wrong)
        EXPECT_FALSE(vxPictureWrite(path_.c_str(), each));
    EXPECT_FALSE(vxPictureWrite(nullptr, picture));
    EXPECT_FALSE(folder_.has("a.sgi"));
    EXPECT_FALSE(vxPictureWrite(path_.c_str(), picture, 0x0200));  // no such storage
    EXPECT_TRUE(folder_.read("a.sgi").starts_with('\xDA'));        // not completed as big-endian
    EXPECT_FALSE(vxPictureWrite("/no/such/folder/file", picture));
    EXPECT_EQ(takeReports(), reportOf(20379) + reportOf(20363, "/no/such/folder/file"));
}

// ---- The codec and the swapping of words

TEST(RowCodec, KnownRows) {
    const std::pair<Elements, Elements> cases[] = {
        {{}, {0}},
        {{4, 4, 5}, {0x81, 4, 1, 4, 1, 5, 0}},
        {Elements(130, 7), {126, 7, 4, 7, 0}},
        {{6, 6, 6, 6, 2, 1, 8, 8, 8, 8, 4, 7}, {4, 6, 0x82, 2, 1, 4, 8, 1, 4, 1, 7, 0}},
    };
    for (const auto &[row, stored] : cases)
        EXPECT_EQ((encodedByLibrary<Byte, Byte>(row)), stored);
    EXPECT_EQ((encodedByLibrary<Word, Byte>({0x105, 0x105, 0x205, 0x205, 0x305})),
              (Elements{0x83, 5, 5, 5, 1, 5, 1, 5, 0}));
    EXPECT_EQ((encodedByLibrary<Word, Word>(Elements(5, 0x8000))), (Elements{5, 0x8000, 0}));
    EXPECT_EQ((decodedByLibrary<Word, Word>({0x557F, 3, 0xAB80}, 127)), Elements(127, 3));
}

TEST(RowCodec, EveryLengthAndPairOfWidths) {
    std::mt19937 random(2);
    for (std::size_t length = 0; length <= 400; ++length) {
        const Elements run(length, 0x1FF);
        Elements literal, mixed;
        for (std::size_t i = 0; i < length; ++i) {
            literal.push_back(static_cast<unsigned>(i * 259) & 0xFFFF);
            mixed.push_back(static_cast<unsigned>(random() % 3));
        }
        Elements both = run;
        both.push_back(1);
        both.insert(both.end(), literal.begin(), literal.end());
        for (const Elements &row : {run, literal, mixed, both}) {
            const Elements bytes = masked(row, 0xFF);
            ASSERT_TRUE((codecAgrees<Byte, Byte>(bytes) && codecAgrees<Byte, Word>(bytes)));
            ASSERT_TRUE((codecAgrees<Word, Byte>(row) && codecAgrees<Word, Word>(row)));
        }
    }
}

TEST_F(Image, CodecRefusesOtherWidths) {
    Byte output[4] = {9, 9, 9, 9};
    const Byte input[4] = {1, 1, 0, 0};
    for (const auto &[in, out] : {std::pair{0, 1}, {3, 1}, {1, 0}, {2, 3}}) {
        EXPECT_EQ(vxImageRleEncode(input, in, output, out, 1), 0);
        vxImageRleDecode(input, in, output, out);
        EXPECT_EQ(takeReports(), reportOf(20375, in, out) + reportOf(20376, in, out));
        EXPECT_EQ(output[0], 9);
    }
}

TEST(WordSwap, ReversesCompleteWordsOnly) {
    for (const auto &[swap, word] : {std::pair{&vxSwapShorts, 2}, {&vxSwapLongs, 4}}) {
        for (int offset = 0; offset < 4; ++offset) {
            for (int count = -1; count <= 70; ++count) {
                std::string bytes(80, '\0');
                std::iota(bytes.begin(), bytes.end(), '\0');
                std::string expected = bytes;
                char *at = expected.data() + offset;
                for (int left = count; left >= word; left -= word, at += word)
                    std::reverse(at, at + word);
                swap(bytes.data() + offset, count);
                ASSERT_EQ(bytes, expected);
            }
        }
    }
}

// ---- Messages

TEST(Messages, HaveATextWithTheirArguments) {
    EXPECT_EQ(reportOf(20363, "a.sgi"), "cannot create the image \"a.sgi\"\n");
    EXPECT_EQ(reportOf(20363, nullptr), "cannot create the image \"(null)\"\n");
    EXPECT_EQ(reportOf(20363, std::string(100000, 'x').c_str()).size(), 8192U);
    EXPECT_EQ(reportOf(77), "message 77 of catalogue \"vxmsg\"\n");
    EXPECT_STREQ(vxMessageText("other", 20366), "message 20366 of catalogue \"other\"");
    EXPECT_STREQ(vxMessageText(nullptr, 20366), "message 20366 of catalogue \"(null)\"");
}

TEST(Messages, AReportIsOneLine) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(vxMessageReport("two\nlines", 6, 0), 0);
    EXPECT_EQ(vxMessageReport("vxmsg", 5, 4912, 64), 0);
    EXPECT_EQ(vxMessageReport(nullptr, 6, 0), 0);
    vxImageError(20367, 77);  // without a handler
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vxutil: error: two lines\n"
              "vxutil: fatal: out of memory: a pool asked for a block of 64 bytes\n"
              "vxutil: error: (null)\n"
              "vxutil: error: opening an image: not an SGI image (magic 77)\n");
}

}  // namespace
