// Images through the shared library, as its users call it, and the owners of handles. The models
// are those of the fuzz targets.

#include "data_rows.h"
#include "fuzz/models/image_run.h"
#include "scratch_folder.h"
#include "system.h"

#include <cerrno>
#include <new>
#include <numeric>
#include <random>
#include <tuple>

// The largest block asked for with new. Not inlined, as compilers compare each new with its delete.
static std::size_t largestBlock;

[[gnu::noinline]] void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
    largestBlock = std::max(largestBlock, size);
    return std::malloc(size);
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

    VxUniqueImage create(unsigned type, unsigned x, unsigned y, unsigned z) const {
        folder_.clear();
        return VxUniqueImage(vxImageOpen(path_.c_str(), "w", type, 3U, x, y, z));
    }
    // With the last row written and, in the stream, the first one pending.
    VxUniqueImage halfWritten(unsigned type) const {
        VxUniqueImage image = create(type, 3, 2, 2);
        EXPECT_EQ(vxImagePutRow(image.get(), Row{7, 7, 9}.data(), 1, 1), 3);
        EXPECT_GE(vxImageSeekRow(image.get(), 0, 0), 0);
        EXPECT_EQ(vxImageDrainPixels(image.get(), 500), 500);
        return image;
    }
    VxUniqueImage open(const char *mode = "r") const {
        return VxUniqueImage(vxImageOpen(path_.c_str(), mode));
    }

    int descriptor() const { return ::open(path_.c_str(), O_RDWR | O_CREAT, 0600); }

    // The file reads as the format says.
    void expectFile(const std::string &file) const {
        folder_.write("a.sgi", file);
        EXPECT_EQ(differences(path_, ImageModel(file)), "");
    }

    VxPicture readSample(const std::string &name) const {
        SCOPED_TRACE(name);
        std::ifstream file(VX_TEST_DATA "/samples/" + name, std::ios::binary);
        expectFile({std::istreambuf_iterator<char>(file), {}});
        return vxPictureRead(path_.c_str()).value();
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
    for (const DataRow &sample : dataRows("samples.txt", "samples"))
        EXPECT_EQ(hashOf(readSample(sample[0])), std::stoull(sample[9], nullptr, 16));
}

// The samples were written in host order, on x86-64 and on s390x.
TEST_F(Image, FilesOfMachinesOfBothByteOrdersHoldTheSame) {
    for (const std::string name :
         {"runs_1x5x1_1B_rle", "runs_3x4x1_2B_rle", "noise_17x13x3_2B_verbatim"}) {
        const VxPicture picture = readSample("vxutil_" + name + "_little.sgi");
        EXPECT_TRUE(readSample("vxutil_" + name + "_big.sgi") == picture) << name;
        const std::string big = folder_.read("a.sgi");
        folder_.clear();
        ASSERT_TRUE(vxPictureWrite(path_.c_str(), picture, static_cast<unsigned>(big[2]) << 8));
        EXPECT_TRUE(folder_.read("a.sgi") == big) << name;
    }
}

// In the order of the machine.
std::string packed(const Elements &numbers, unsigned width) {
    std::string bytes;
    for (const unsigned number : numbers) {
        for (unsigned i = 0; i < width; ++i)
            bytes += static_cast<char>(number >> 8 * (kIsHostBigEndian ? width - 1 - i : i));
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
            for (int test = 0; test < 24; ++test) {
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

TEST_F(Image, RowsAfter4GiBAreNeitherWrittenNorRead) {
    Row row(6, 1);
    VxUniqueImage image = create(0x101, 6, 1, 1);
    image->appendOffset = 0xFFFFFFFB;
    EXPECT_EQ(vxImagePutRow(image.get(), row.data(), 0, 0), 6);
    EXPECT_EQ(vxImagePutRow(image.get(), row.data(), 0, 0), -1);
    EXPECT_EQ(takeReports(), reportOf(20377));
    EXPECT_EQ(image->rowStarts[0], 0xFFFFFFFB);
    EXPECT_EQ(image->wasteBytes, 0U);
    image.reset();
    image = create(1, 6, 65535, 65535);
    EXPECT_EQ(vxImagePutRow(image.get(), row.data(), 54527, 10922), 6);  // at the last position
    EXPECT_EQ(vxImagePutRow(image.get(), row.data(), 54528, 10922), -1);
    EXPECT_EQ(takeReports(), reportOf(20377));
    image.reset();
    std::fstream(path_).seekp(std::streamoff{5} << 30).put('\0');
    image = open();
    EXPECT_EQ(vxImageGetRow(image.get(), row.data(), 54527, 10922), 6);
    EXPECT_EQ(vxImageGetRow(image.get(), row.data(), 54528, 10922), -1);
    EXPECT_EQ(takeReports(), reportOf(20380));
}

TEST_F(Image, RowsOfBadTypesAreNotPut) {
    for (const auto &[type, report] : {std::pair{3U, 20378}, {0x201U, 20379}}) {
        const VxUniqueImage image = create(type, 4, 3, 2);
        EXPECT_EQ(vxImagePutRow(image.get(), Row(4).data(), 0, 0), -1);
        EXPECT_EQ(takeReports(), reportOf(report));
        EXPECT_EQ(image->minValue, 10000000U);
        EXPECT_EQ(vxImageRowSize(image.get()), 0);
    }
}

// ---- Opening

TEST_F(Image, ModesAndDescriptors) {
    ::close(0);
    VxUniqueImage image(
        vxImageOpenFd(descriptor(), "w", 0x101U, 1U, 9U));  // no more sizes are taken
    EXPECT_EQ(image->file, 0);
    EXPECT_TRUE(vxImageFinish(std::move(image)));
    for (const char *mode : {"r+", "w+", "a+"}) {
        EXPECT_EQ(open(mode), nullptr);
        EXPECT_EQ(takeReports(), reportOf(20361));
    }
    EXPECT_TRUE(folder_.read("a.sgi") == FileModel(inHostOrder(0x101), 9, 1, 1).bytes());
    image.reset(vxImageOpenFd(descriptor(), "a"));
    EXPECT_EQ(image->flags, VX_IMAGE_WRITE);
    EXPECT_EQ(image->appendOffset, 520U);
    errno = 0;
    EXPECT_EQ(vxImageOpen("/no/such/file", "r"), nullptr);
    EXPECT_EQ(vxImageOpenFd(-1, "r"), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(takeReports(), "");
    EXPECT_EQ(vxImageOpen("/no/such/folder/file", "w", 1, 1, 1), nullptr);
    EXPECT_EQ(vxImageOpenFd(-1, "w", 1, 1, 1), nullptr);
    EXPECT_EQ(takeReports(), reportOf(20363, "/no/such/folder/file") + reportOf(20363, nullptr));
}

// No mode gives such a handle.
TEST_F(Image, HandlesForBothDirections) {
    const VxUniqueImage image(vxImageOpenFd(descriptor(), "w", 1U, 1U, 0U));
    image->flags = VX_IMAGE_READWRITE;
    EXPECT_EQ(vxImagePutRow(image.get(), nullptr, 0, 0), 0);
    EXPECT_EQ(vxImageGetRow(image.get(), nullptr, 0, 0), 0);
    image->flags |= VX_IMAGE_READ;
    EXPECT_EQ(vxImageFillPixels(image.get()), -1);  // an empty row ends the reading
    EXPECT_EQ(image->flags, VX_IMAGE_READWRITE | VX_IMAGE_EOF);
}

// ---- Owners

TEST_F(Image, DiscardedOnesAreNotCompleted) {
    for (const unsigned type : {1U, 0x101U}) {
        vxImageDiscard(halfWritten(type));
        const VxUniqueImage image = open();
        EXPECT_EQ(image->maxValue, 0U);
        EXPECT_EQ(vxPictureRead(image.get())->elements,
                  type == 1 ? (Row{0, 0, 0, 0, 0, 0, 0, 0, 0, 7, 7, 9}) : Row(12));
    }
    EXPECT_FALSE(vxImageFinish(nullptr));
    vxImageDiscard(nullptr);
}

void expectIncomplete(VxUniqueImage image, const std::string &messages) {
    const int descriptor = image->file;
    EXPECT_FALSE(vxImageFinish(std::move(image)));
    EXPECT_EQ(takeReports(), reportsOf(messages));
    EXPECT_LT(::dup(descriptor), 0);
}

TEST_F(Image, NothingIsLeftOfAnImageThatCannotBeCompleted) {
    for (const unsigned type : {2U, 0x102U}) {
        const std::string tables = type == 2 ? "" : "20356 ";
        halfWritten(type).reset();
        expectIncomplete(open("a"), tables + "20352");
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

// ---- Pictures

VxPicture pictureOf(int width, int height, int planes, std::size_t repeats) {
    VxPicture picture;
    std::tie(picture.width, picture.height, picture.planes) = std::tie(width, height, planes);
    picture.elements.resize(static_cast<std::size_t>(width * height * planes));
    for (std::size_t i = 0; i < picture.elements.size(); ++i)
        picture.elements[i] = static_cast<std::uint16_t>(i / repeats % 251);
    return picture;
}

TEST_F(Image, PicturesAreWrittenAndRead) {
    for (const DataRow &test : dataRows("image.txt", "pictures")) {
        SCOPED_TRACE(testing::PrintToString(test));
        const auto number = [&](std::size_t field) { return std::stoi(test[field]); };
        const auto type = static_cast<unsigned>(number(0));
        VxPicture picture =
            pictureOf(number(1), number(2), number(3), static_cast<std::size_t>(number(4)));
        picture.elementBytes = type & 0xFF;
        EXPECT_EQ(picture.row(number(2) - 1, number(3) - 1) + number(1),
                  &picture.elements.back() + 1);
        folder_.clear();
        const unsigned storage = type < 0x100 ? VX_IMAGE_VERBATIM : VX_IMAGE_RUN_LENGTH;
        ASSERT_TRUE(vxPictureWrite(path_.c_str(), picture, storage));
        const std::string file = FileModel(picture, type & 0xFF00).bytes();
        EXPECT_TRUE(folder_.read("a.sgi") == file);
        EXPECT_EQ(differences(path_, ImageModel(file)), "");
        EXPECT_EQ(vxPictureRead(path_.c_str()) == picture, test[5].empty());
        EXPECT_EQ(takeReports(), reportsOf(test[5]));
    }
}

TEST_F(Image, PicturesThatAreNotRead) {
    EXPECT_FALSE(vxPictureRead(path_.c_str()) || vxPictureRead(static_cast<VxImage *>(nullptr)) ||
                 vxPictureRead(static_cast<const char *>(nullptr)));
    ASSERT_TRUE(vxPictureWrite(path_.c_str(), pictureOf(4, 4, 4, 1)));
    EXPECT_EQ(vxPictureRead(path_.c_str(), 64).value().elementBytes, 1);  // by default
    EXPECT_FALSE(vxPictureRead(path_.c_str(), 63));
    // By default up to 512 MiB; these rows are not in the file.
    for (const unsigned height : {16384U, 16385U}) {
        folder_.write("a.sgi", packed({474, 1, 2, 16384, height, 1}, 2) + std::string(500, '\0'));
        EXPECT_FALSE(vxPictureRead(path_.c_str()));
        EXPECT_EQ(takeReports(), height == 16384 ? reportOf(20380) : "");
    }
}

TEST_F(Image, PicturesThatAreNotWritten) {
    const VxPicture picture = pictureOf(4, 4, 4, 1);
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
    folder_.write("a.sgi", std::string(600, 'x'));
    EXPECT_FALSE(vxPictureWrite(path_.c_str(), picture, 0x0200));  // no such storage
    EXPECT_TRUE(
        folder_.read("a.sgi").starts_with(packed({474}, 2)));  // not completed as big-endian
    EXPECT_TRUE(folder_.read("a.sgi").ends_with("xx"));        // what is behind stays
    EXPECT_FALSE(vxPictureWrite("/no/such/folder/file", picture));
    EXPECT_EQ(takeReports(), reportOf(20379) + reportOf(20363, "/no/such/folder/file"));
}

// ---- The codec and the swapping of words

TEST(RowCodec, KnownRows) {
    for (const DataRow &test : dataRows("image.txt", "encoded rows")) {
        const Elements row = numbersIn(test[0]);
        EXPECT_EQ((encodedByLibrary<Word, Byte>(row)), numbersIn(test[1]));
        EXPECT_EQ((encodedByLibrary<Word, Word>(row)), numbersIn(test[2]));
    }
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

TEST(Messages, AreOneLineWithTheirArguments) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(vxMessageReport("two\nlines", 6, 0), 0);
    EXPECT_EQ(vxMessageReport("vxmsg", 5, 4912, 64), 0);
    EXPECT_EQ(vxMessageReport(nullptr, 6, 77) + vxMessageReport(nullptr, 6, 0), 0);
    vxImageError(20363, nullptr);  // without a handler
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "vxutil: error: two lines\n"
              "vxutil: fatal: out of memory: a pool asked for a block of 64 bytes\n"
              "vxutil: error: message 77 of catalogue \"(null)\"\n"
              "vxutil: error: (null)\n"
              "vxutil: error: cannot create the image \"(null)\"\n");
    EXPECT_EQ(reportOf(20363, std::string(100000, 'x').c_str()).size(), 8192U);
    EXPECT_STREQ(vxMessageText("other", 20366), "message 20366 of catalogue \"other\"");
}

}  // namespace
