// Images through the shared library, as its users call it.

#include "data_rows.h"

#include <vxframework.h>
#include <vximage.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

// These replace the services of libvxframework: a report is its number and its arguments.
static std::vector<std::string> reports;

const char *vxMessageFormat(va_list arguments, const char *catalogue, int id) {
    static std::string text;
    text = std::to_string(id);
    EXPECT_STREQ(catalogue, "vxmsg");
    if (id == 20367 || id == 20371) text += " " + std::to_string(va_arg(arguments, int));
    if (id == 20375 || id == 20376) {
        text += " " + std::to_string(va_arg(arguments, int));
        text += " " + std::to_string(va_arg(arguments, int));
    }
    if (id == 20363) {
        const char *name = va_arg(arguments, const char *);
        text += std::string(" ") + (name != nullptr ? "name" : "null");
    }
    return text.c_str();
}

int vxMessageReport(const char *text, int severity, int id, ...) {
    EXPECT_EQ(severity, 6);
    EXPECT_EQ(id, 0);
    reports.emplace_back(text);
    return 0;
}

namespace {

using Bytes = std::vector<std::uint8_t>;
using Row = std::vector<std::uint16_t>;

std::string reported() {
    std::string all;
    for (const std::string &report : reports)
        all += (all.empty() ? "" : ", ") + report;
    reports.clear();
    return all;
}

class Image : public testing::Test {
protected:
    void SetUp() override {
        path_ = std::filesystem::temp_directory_path() /
                ("vximage" + std::to_string(::getpid()) + ".sgi");
    }
    void TearDown() override {
        EXPECT_EQ(reported(), "");
        std::filesystem::remove(path_);
    }
    VxImage *create(unsigned type, unsigned x, unsigned y = 1, unsigned z = 1) const {
        return vxImageOpen(path_.c_str(), "w", type, 3U, x, y, z);
    }
    VxImage *open() const { return vxImageOpen(path_.c_str(), "r"); }
    VxImage *reopened(VxImage *image) const {
        EXPECT_EQ(vxImageClose(image), 0);
        return open();
    }
    Bytes bytes() const {
        std::ifstream file(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void write(const Bytes &bytes) const {
        std::ofstream file(path_, std::ios::binary);
        file.write(reinterpret_cast<const char *>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
    }
    std::string path_;
};

std::uint64_t hashOf(VxImage *image) {
    std::uint64_t hash = 0xcbf29ce484222325;
    Row row(image->xSize);
    for (int z = 0; z < image->zSize; ++z) {
        for (int y = 0; y < image->ySize; ++y) {
            EXPECT_EQ(vxImageGetRow(image, row.data(), y, z), image->xSize);
            for (const std::uint16_t element : row) {
                for (const unsigned byte : {element & 0xFFU, unsigned{element} >> 8}) {
                    hash = (hash ^ byte) * 0x100000001b3;
                }
            }
        }
    }
    return hash;
}

TEST_F(Image, ReadsTheFilesOfOtherPrograms) {
    std::ifstream table(VX_TEST_DATA "/samples.txt");
    int files = 0;
    for (std::string line; std::getline(table, line);) {
        if (line.starts_with('#')) continue;
        SCOPED_TRACE(line);
        std::istringstream fields(line);
        std::string name, storage;
        unsigned x, y, z, elementBytes, dimension, low, high;
        std::uint64_t hash;
        fields >> name >> x >> y >> z >> elementBytes >> storage >> dimension >> low >> high >>
            std::hex >> hash;
        VxImage *image = vxImageOpen((VX_TEST_DATA "/samples/" + name).c_str(), "r");
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(std::tie(image->xSize, image->ySize, image->zSize), std::tie(x, y, z));
        EXPECT_EQ(image->type, (storage == "verbatim" ? 0U : 0x100U) + elementBytes);
        EXPECT_EQ(std::tie(image->dimension, image->minValue, image->maxValue),
                  std::tie(dimension, low, high));
        EXPECT_EQ(hashOf(image), hash);
        EXPECT_EQ(vxImageClose(image), 0);
        ++files;
    }
    EXPECT_EQ(files, 27);
}

// A row of runs and literals of all lengths, some elements above 255.
Row randomRow(std::mt19937 &random, std::size_t width) {
    Row row;
    while (row.size() < width) {
        const std::size_t length = 1 + random() % (random() % 4 == 0 ? 300 : 4);
        const bool run = random() % 2 == 0;
        auto value = static_cast<std::uint16_t>(random() % 700);
        for (std::size_t i = 0; i < length && row.size() < width; ++i) {
            row.push_back(value);
            if (!run) value = static_cast<std::uint16_t>(random() % 700);
        }
    }
    return row;
}

TEST_F(Image, GivesBackWhatWasPut) {
    std::mt19937 random(1);
    for (const unsigned width : {0U, 1U, 2U, 3U, 4U, 5U, 63U, 64U, 125U, 126U, 127U, 128U, 252U,
                                 253U, 254U, 255U, 16383U}) {
        for (const unsigned type : {0x001U, 0x002U, 0x101U, 0x102U}) {
            for (const bool published : {false, true}) {
                for (const auto &[y, z] : {std::pair{1U, 1U}, {5U, 1U}, {3U, 4U}}) {
                    std::vector<Row> rows(std::size_t{y} * z);
                    std::filesystem::remove(path_);
                    VxImage *image = create(type, width, y, z);
                    ASSERT_NE(image, nullptr);
                    if (published) vxImageUseBigEndian(image);
                    for (std::size_t i = rows.size(); i-- != 0;) {  // in falling order
                        rows[i] = randomRow(random, width);
                        const Row before = rows[i];
                        EXPECT_EQ(vxImagePutRow(image, rows[i].data(), static_cast<int>(i % y),
                                                static_cast<int>(i / y)),
                                  static_cast<int>(width));
                        EXPECT_EQ(rows[i], before);
                    }
                    image = reopened(image);
                    ASSERT_NE(image, nullptr);
                    EXPECT_EQ(image->byteSwap, published ? 1 : 0);
                    EXPECT_EQ(image->type, type);
                    EXPECT_EQ(image->dimension, z > 1 ? 3 : y > 1 ? 2 : 1);
                    for (std::size_t i = 0; i < rows.size(); ++i) {
                        Row row(width + 1, 0xABCD);
                        EXPECT_EQ(vxImageGetRow(image, row.data(), static_cast<int>(i % y),
                                                static_cast<int>(i / y)),
                                  static_cast<int>(width));
                        Row expected = rows[i];
                        for (std::uint16_t &element : expected) {
                            if ((type & 0xFF) == 1) element &= 0xFF;
                        }
                        expected.push_back(0xABCD);
                        EXPECT_EQ(row, expected) << width << " " << type << " " << i;
                        if (width != 0) continue;
                        // An empty row needs no memory.
                        EXPECT_EQ(vxImageGetRow(image, nullptr, static_cast<int>(i % y),
                                                static_cast<int>(i / y)),
                                  0);
                    }
                    EXPECT_EQ(vxImageClose(image), 0);
                }
            }
        }
    }
}

TEST_F(Image, FilesAreTheseBytes) {
    std::uint16_t row[] = {1, 1, 1, 0x102};
    for (const bool published : {false, true}) {
        std::filesystem::remove(path_);
        VxImage *image = create(0x102, 4, 2);
        if (published) vxImageUseBigEndian(image);
        vxImageSetName(image, "a name");
        vxImageSetColormap(image, 7);
        for (int copy = 0; copy < 3; ++copy) {  // each after the one before
            EXPECT_EQ(vxImagePutRow(image, row, 1, 0), 4);
        }
        EXPECT_EQ(vxImageClose(image), 0);

        Bytes expected(512, 0);
        std::size_t at = 0;
        const auto put = [&](unsigned value, std::size_t size) {
            expected.resize(std::max(expected.size(), at + size));
            for (std::size_t i = 0; i < size; ++i) {
                const std::size_t shift = 8 * (published ? size - 1 - i : i);
                expected[at++] = static_cast<std::uint8_t>(value >> shift);
            }
        };
        for (const unsigned word : {474U, 0x102U, 2U, 4U, 2U, 1U})
            put(word, 2);
        for (const unsigned word : {1U, 0x102U, 20U})
            put(word, 4);
        std::memcpy(&expected[at], "a name", 6);
        at = 104;
        put(7, 4);
        at = 512;
        for (const unsigned word : {0U, 548U, ~0U, 10U})
            put(word, 4);
        for (int copy = 0; copy < 3; ++copy) {
            for (const unsigned word : {3U, 1U, 1U, 0x102U, 0U})
                put(word, 2);
        }
        EXPECT_EQ(bytes(), expected) << published;
    }
}

TEST_F(Image, ExtremesCountWhatTheStorageKeeps) {
    const std::tuple<unsigned, Row, unsigned, unsigned> cases[] = {
        {0x001, {3, 700}, 3, 700 & 0xFF},
        {0x101, {3, 700}, 3, 700},
        {0x002, {3, 700}, 3, 700},
        {0x002, {0xFFFF, 0xFFFF}, 0xFFFF, 0xFFFF},
    };
    for (auto [type, row, low, high] : cases) {
        for (const int rows : {1, 2}) {
            // Dimension 1 ignores y and z, dimension 2 ignores z.
            const int y = rows == 1 ? 5 : 1;
            VxImage *image = create(type, 2, static_cast<unsigned>(rows));
            EXPECT_EQ(image->minValue, 10000000U);
            EXPECT_EQ(vxImagePutRow(image, row.data(), y, 5), 2);
            EXPECT_EQ(image->minValue, low);
            EXPECT_EQ(image->maxValue, high);
            image = reopened(image);
            Row read(2);
            EXPECT_EQ(vxImageGetRow(image, read.data(), y, 7), 2);
            EXPECT_EQ(read[1], row[1] & ((type & 0xFF) == 1 ? 0xFF : 0xFFFF));
            EXPECT_EQ(vxImageClose(image), 0);
        }
    }
}

// ---- Opening

Bytes header(unsigned type, unsigned dimension, unsigned x, unsigned y, unsigned z,
             unsigned magic = 474) {
    Bytes head(512, 0);
    std::size_t at = 0;
    for (const unsigned word : {magic, type, dimension, x, y, z}) {
        head[at++] = static_cast<std::uint8_t>(word);
        head[at++] = static_cast<std::uint8_t>(word >> 8);
    }
    return head;
}

std::size_t openDescriptors() {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

TEST_F(Image, RefusesOtherFiles) {
    const std::tuple<Bytes, std::size_t, std::string> cases[] = {
        {header(1, 1, 4, 1, 1), 151, "20366"},
        {header(1, 1, 4, 1, 1), 0, "20366"},
        {header(1, 1, 4, 1, 1, 0x1234), 512, "20367 4660"},
        {header(0x101, 2, 4, 8, 1), 152, "20369"},
        {header(0x101, 2, 4, 8, 1), 512 + 31, "20369"},
        {header(0x101, 2, 4, 8, 1), 512 + 63, "20370"},
        {header(0x101, 3, 65535, 65535, 65535), 512, "20368"},
        {header(0x101, 3, 65535, 65535, 4000), 1 << 20, "20369"},  // a table of 1 GB
    };
    const std::size_t descriptors = openDescriptors();
    for (auto [bytes, length, report] : cases) {
        bytes.resize(length);
        write(bytes);
        EXPECT_EQ(open(), nullptr);
        EXPECT_EQ(reported(), report);
        EXPECT_EQ(openDescriptors(), descriptors);
        // A descriptor of the caller stays open.
        const int file = ::open(path_.c_str(), O_RDONLY);
        EXPECT_EQ(vxImageOpenFd(file, "r"), nullptr);
        EXPECT_EQ(reported(), report);
        EXPECT_EQ(::close(file), 0);
    }
    write(header(1, 1, 4, 1, 1));
    for (const char *mode : {"r+", "w+", "a+"}) {
        EXPECT_EQ(vxImageOpen(path_.c_str(), mode, 1, 1, 1), nullptr);
        EXPECT_EQ(reported(), "20361");
    }
    EXPECT_EQ(bytes(), header(1, 1, 4, 1, 1));
    errno = 0;
    EXPECT_EQ(vxImageOpen("/no/such/file", "r"), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(vxImageOpenFd(-1, "r"), nullptr);
    EXPECT_EQ(reported(), "");
    EXPECT_EQ(vxImageOpen("/no/such/folder/file", "w", 1, 1, 1), nullptr);
    EXPECT_EQ(reported(), "20363 name");
    EXPECT_EQ(vxImageOpenFd(-1, "w", 1, 1, 1), nullptr);
    EXPECT_EQ(reported(), "20363 null");
}

TEST_F(Image, OpensByOtherModesAndDescriptors) {
    VxImage *image = vxImageOpen(path_.c_str(), "w", 0x101U, 1U, 9U);  // no more sizes are taken
    EXPECT_EQ(std::tie(image->xSize, image->ySize, image->zSize, image->dimension),
              std::make_tuple(9, 1, 1, 1));
    EXPECT_STREQ(image->name, vxMessageText("vxmsg", 20364));
    const std::string longName(100, 'n');
    vxImageSetName(image, longName.c_str());
    EXPECT_EQ(image->name, longName.substr(0, 79));
    std::uint16_t row[9] = {};
    EXPECT_EQ(vxImagePutRow(image, row, 0, 0), 9);
    EXPECT_EQ(vxImageClose(image), 0);
    image = vxImageOpen(path_.c_str(), "a");  // for writing, on a descriptor for reading
    EXPECT_EQ(image->flags, VX_IMAGE_WRITE);
    EXPECT_EQ(vxImageGetRow(image, row, 0, 0), -1);
    EXPECT_EQ(vxImageClose(image), -1);
    EXPECT_EQ(reported(), "20356, 20352");
    image->flags = VX_IMAGE_READ;  // the way to end it
    EXPECT_EQ(vxImagePutRow(image, row, 0, 0), -1);
    EXPECT_EQ(vxImageClose(image), 0);
    const int file = ::open(path_.c_str(), O_RDWR);
    image = vxImageOpenFd(file, "a");
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->appendOffset, 520U);  // where the stored row starts
    EXPECT_EQ(vxImageClose(image), 0);
    EXPECT_EQ(::close(file), -1);
}

// ---- Rows that cannot be read or written

TEST_F(Image, RowsOutOfRangeAndOfBadTypes) {
    std::uint16_t row[4] = {9, 9, 9, 9};
    VxImage *image = create(1, 4, 3, 2);
    for (const auto &[y, z] : {std::pair{3, 0}, {0, 2}, {-1, 0}, {0, -1}}) {
        EXPECT_EQ(vxImageBadRow(image, static_cast<unsigned>(y), static_cast<unsigned>(z)), 1);
        EXPECT_EQ(vxImagePutRow(image, row, y, z), -1);
        EXPECT_EQ(reported(), "20372");
    }
    EXPECT_EQ(vxImageRowSize(image), 0);  // verbatim rows have none
    EXPECT_EQ(vxImageClose(image), 0);
    for (const auto &[type, dimension, zSize, report] : {std::tuple{3U, 3U, 2U, "20381"},
                                                         {0x201U, 3U, 2U, "20374, 20382"},
                                                         {1U, 0U, 2U, "20373"},
                                                         {1U, 9U, 2U, "20373"},
                                                         {1U, 3U, 0U, "20372"},
                                                         {0x101U, 3U, 0U, "20372"}}) {
        write(header(type, dimension, 4, 3, zSize));
        image = open();
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(vxImageGetRow(image, row, 0, 0), -1);
        EXPECT_EQ(reported(), report);
        EXPECT_EQ(row[0], 9);
        EXPECT_EQ(vxImageClose(image), 0);
    }
    for (const auto &[type, report] : {std::pair{3U, "20378"}, {0x201U, "20379"}}) {
        image = create(type, 4, 3, 2);
        EXPECT_EQ(vxImagePutRow(image, row, 0, 0), -1);
        EXPECT_EQ(reported(), report);
        EXPECT_EQ(image->maxValue, 0U);
        EXPECT_EQ(vxImageClose(image), 0);
    }
}

TEST_F(Image, RowsBeyondTheLimits) {
    for (const auto &[type, width, noise, good] : {std::tuple{1U, 32767, true, true},
                                                   {1U, 32768, true, true},
                                                   {1U, 32769, true, false},
                                                   {2U, 16383, true, true},
                                                   {2U, 16384, true, false},
                                                   {2U, 65535, true, false},
                                                   {0x101U, 65535, false, true},
                                                   {0x101U, 32500, true, true},
                                                   {0x101U, 32767, true, false}}) {
        SCOPED_TRACE(width);
        Row row(65535);
        for (std::size_t i = 0; i < row.size(); ++i)
            row[i] = static_cast<std::uint16_t>((noise ? i : i / 200) % 251);
        VxImage *image = create(type, static_cast<unsigned>(width));
        EXPECT_EQ(vxImagePutRow(image, row.data(), 0, 0), width);
        image = reopened(image);
        if (type == 2) {  // a row too wide to be read is in the file all the same
            EXPECT_EQ(
                std::memcmp(bytes().data() + 512, row.data(), 2 * static_cast<std::size_t>(width)),
                0);
        }
        Row read(65536, 1);
        Row expected = read;
        if (good) std::copy_n(row.begin(), width, expected.begin());
        EXPECT_EQ(vxImageGetRow(image, read.data(), 0, 0), good ? width : -1);
        EXPECT_EQ(reported(), good ? "" : "20380");
        EXPECT_EQ(read, expected);
        EXPECT_EQ(vxImageClose(image), 0);
    }
    // A row after 4 GiB cannot be written, not even to the position of another row.
    VxImage *full = create(0x101, 6);
    full->appendOffset = 0xFFFFFFF8;
    EXPECT_EQ(vxImagePutRow(full, Row(6, 1).data(), 0, 0), 6);
    full->appendOffset = 0xFFFFFFFC;
    EXPECT_EQ(vxImagePutRow(full, Row(6, 1).data(), 0, 0), -1);
    EXPECT_EQ(reported(), "20377");
    EXPECT_EQ(full->rowStarts[0], 0xFFFFFFF8);
    EXPECT_EQ(full->wasteBytes, 0U);
    EXPECT_EQ(vxImageClose(full), 0);
    std::filesystem::remove(path_);
    write(header(2, 3, 65535, 65535, 65535));
    VxImage *image = open();
    Row row(65535);
    EXPECT_EQ(vxImageGetRow(image, row.data(), 65534, 65534), -1);
    EXPECT_EQ(reported(), "20380");
    // Nor can it be read where the file is long enough.
    std::filesystem::resize_file(path_, std::uintmax_t{5} << 30);
    EXPECT_EQ(vxImageGetRow(image, row.data(), 65535, 1), -1);
    EXPECT_EQ(reported(), "20372");
    EXPECT_EQ(vxImageGetRow(image, row.data(), 0, 1), -1);
    EXPECT_EQ(vxImageClose(image), 0);
    EXPECT_EQ(reported(), "20380");
    std::filesystem::remove(path_);
    image = create(2, 16383, 65535, 3);
    EXPECT_EQ(vxImagePutRow(image, row.data(), 65534, 1), 16383);  // ends just below 4 GiB
    EXPECT_EQ(vxImagePutRow(image, row.data(), 200, 2), -1);
    EXPECT_EQ(reported(), "20377");
    image = reopened(image);
    EXPECT_EQ(vxImageGetRow(image, row.data(), 65534, 1), 16383);
    EXPECT_EQ(vxImageGetRow(image, row.data(), 200, 2), -1);
    EXPECT_EQ(vxImageClose(image), 0);
    EXPECT_EQ(reported(), "20380");
}

TEST_F(Image, PipesFailAtTheirRows) {
    for (const unsigned type : {1U, 0x102U}) {
        SCOPED_TRACE(type);
        const bool runLength = type > 2;
        int ends[2];
        ASSERT_EQ(::pipe(ends), 0);
        Row row(4);
        VxImage *image = vxImageOpenFd(ends[1], "w", type, 2U, 4U, 3U);
        EXPECT_EQ(vxImagePutRow(image, row.data(), 0, 0), -1);
        EXPECT_EQ(reported(), "20377");
        EXPECT_EQ(vxImageFlush(image), runLength ? -1 : 0);
        EXPECT_EQ(vxImageClose(image), -1);
        EXPECT_EQ(reported(), runLength ? "20356, 20356, 20352" : "20352");
        image->flags = VX_IMAGE_READ;  // the way to end it
        EXPECT_EQ(vxImageClose(image), 0);
        const int kept = ::dup(ends[0]);
        image = vxImageOpenFd(ends[0], "r");
        EXPECT_EQ(image != nullptr, !runLength);
        if (image != nullptr) {
            EXPECT_EQ(vxImageGetRow(image, row.data(), 0, 0), -1);
            EXPECT_EQ(vxImageClose(image), 0);
        }
        EXPECT_EQ(reported(), runLength ? "20369" : "20380");
        ::close(kept);
    }
}

void append(Bytes &file, unsigned word) {
    for (unsigned shift = 0; shift < 32; shift += 8)
        file.push_back(static_cast<std::uint8_t>(word >> shift));
}

Row numbersIn(const std::string &text) {
    std::istringstream in(text);
    return {std::istream_iterator<std::uint16_t>(in), {}};
}

TEST_F(Image, DamagedRows) {
    for (const unsigned elementBytes : {1U, 2U}) {
        for (const DataRow &test : dataRows("image.txt", "damaged rows")) {
            SCOPED_TRACE(testing::PrintToString(test));
            const Row stored = numbersIn(test[0]);
            const Row expected = numbersIn(test[4]);
            const auto own = static_cast<unsigned>(stored.size()) * elementBytes;
            Bytes file = header(0x100 + elementBytes, 2, 6, 1, 1);
            append(file, static_cast<unsigned>(std::stoul(test[2])));
            const auto size = static_cast<unsigned>(std::stoi(test[1]));
            append(file, test[1].starts_with('+') ? own + size : size);
            for (const unsigned element : stored) {
                file.push_back(static_cast<std::uint8_t>(element));
                // The high byte of a head is ignored; here it is zero in values.
                if (elementBytes == 2) file.push_back(element == 0x83 ? 0x55 : 0);
            }
            if (test[1].ends_with('!')) file.push_back(0xFF);
            write(file);
            VxImage *image = open();
            ASSERT_NE(image, nullptr);
            Row row(7, 0xABCD);
            for (int again = 0; again < 2; ++again) {
                EXPECT_EQ(vxImageGetRow(image, row.data(), 0, 0), expected.empty() ? -1 : 6);
                EXPECT_EQ(reported(), test[3]);
            }
            EXPECT_EQ(row[6], 0xABCD);
            EXPECT_TRUE(expected.empty() || Row(row.begin(), row.begin() + 6) == expected);
            EXPECT_EQ(vxImageClose(image), 0);
        }
    }
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

TEST_F(Image, StreamWritesAndReadsEveryRowOnce) {
    constexpr int kRows = 2, kPlanes = 3;
    for (const int width : {1, 3}) {
        for (const unsigned type : {2U, 0x102U}) {
            for (const int beyond : {0, 1, 40000}) {  // elements after the last
                const int last = width * (kRows * kPlanes - 1);
                VxImage *image = create(type, static_cast<unsigned>(width), kRows, kPlanes);
                for (int i = 0; i < last + width; ++i)
                    EXPECT_EQ(putPixel(image, 100 + i), 100 + i);
                EXPECT_EQ(image->flags, VX_IMAGE_WRITE);
                for (int i = 0; i < beyond; ++i)
                    EXPECT_EQ(putPixel(image, 7), -1);
                EXPECT_EQ(image->flags, VX_IMAGE_WRITE | (beyond == 0 ? 0 : VX_IMAGE_EOF));
                EXPECT_EQ(vxImageFlush(image), 0);
                image = reopened(image);
                for (int i = 0; i < last; ++i)
                    EXPECT_EQ(nextPixel(image), 100 + i);
                EXPECT_EQ(image->flags, VX_IMAGE_READ);
                EXPECT_EQ(nextPixel(image), -1);  // loads the last row
                EXPECT_EQ(image->flags, VX_IMAGE_READ | VX_IMAGE_EOF);
                EXPECT_EQ(image->pixelsLeft, width - 1);
                for (int i = 0; i < width - 1; ++i)
                    EXPECT_EQ(nextPixel(image), 100 + last + i);
                EXPECT_EQ(*image->nextPixel, 100 + last + width - 1);
                EXPECT_EQ(nextPixel(image), 100 + last - width);  // row 0 of the last plane again
                // The flush writes a pending row, and the close writes it again.
                const int pending = width == 1 ? 6 : 14;
                EXPECT_EQ(image->wasteBytes, type == 2 || beyond != 0 ? 0U : unsigned(pending));
                EXPECT_EQ(vxImageClose(image), 0);
            }
        }
    }
}

TEST_F(Image, StreamContinuesAfterASeek) {
    VxImage *image = create(2, 2, 3);
    for (int i = 0; i < 6; ++i)
        putPixel(image, i);
    EXPECT_EQ(putPixel(image, 99), -1);
    EXPECT_GE(vxImageSeekRow(image, 1, 0), 0);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(putPixel(image, 20 + i), 20 + i);
    image = reopened(image);
    for (const int value : {0, 1, 20, 21, -1, 22})
        EXPECT_EQ(nextPixel(image), value);
    EXPECT_EQ(vxImageClose(image), 0);
}

TEST_F(Image, StreamStepsFailAnyNumberOfTimes) {
    constexpr int kSteps = 70000;  // more than pixelsLeft can count
    VxImage *image = create(0x101, 2, 2);
    for (int i = 0; i < kSteps; ++i)
        EXPECT_EQ(nextPixel(image), -1);  // the wrong direction
    EXPECT_EQ(image->flags, VX_IMAGE_WRITE);
    image = reopened(image);
    for (int i = 0; i < kSteps; ++i)
        EXPECT_EQ(putPixel(image, 1), -1);
    EXPECT_EQ(image->flags, VX_IMAGE_READ);
    for (int i = 0; i < kSteps; ++i)
        EXPECT_EQ(nextPixel(image), -1);  // a row that was never written
    EXPECT_EQ(image->flags, VX_IMAGE_READ | VX_IMAGE_ERROR);
    EXPECT_EQ(vxImageFlush(image), 0);
    EXPECT_EQ(vxImageClose(image), 0);
    // A pending row that cannot be written stays pending.
    image = create(2, 2, 2);
    putPixel(image, 1);
    image->y = 9;
    EXPECT_EQ(vxImageFlush(image), -1);
    EXPECT_EQ(image->flags, VX_IMAGE_WRITE | VX_IMAGE_ERROR);
    image->y = 0;
    EXPECT_EQ(vxImageClose(image), 0);
    EXPECT_EQ(reported(), "20372");
}

TEST_F(Image, StreamEndsWithTheRowsThatCount) {
    // Empty rows end the stream, and the reading of a handle for both directions.
    for (const int both : {0, +VX_IMAGE_READWRITE}) {
        write(header(1, 1, 0, 1, 1));
        VxImage *image = open();
        image->flags |= static_cast<std::uint16_t>(both);
        EXPECT_EQ(vxImageFillPixels(image), -1);
        EXPECT_EQ(image->flags, VX_IMAGE_EOF | (both != 0 ? both : VX_IMAGE_READ));
        EXPECT_EQ(image->pixelsLeft, 0);
        image->flags = VX_IMAGE_READ;
        EXPECT_EQ(vxImageClose(image), 0);
    }
    // Sizes that the dimension does not count do not matter.
    for (const int dimension : {1, 2}) {
        write(header(1, static_cast<unsigned>(dimension), 2, 5, 5));
        std::filesystem::resize_file(path_, 512 + 2 * 5);
        VxImage *image = open();
        for (int row = dimension == 1 ? 1 : 5; row != 0; --row)
            EXPECT_EQ(vxImageFillPixels(image), row == 1 ? -1 : 0);
        EXPECT_EQ(image->flags, VX_IMAGE_READ | VX_IMAGE_EOF);
        EXPECT_EQ(vxImageClose(image), 0);
    }
}

TEST_F(Image, FlushWritesAPendingRowAndTheTables) {
    VxImage *image = create(0x101, 2, 2);
    vxImageUseBigEndian(image);
    for (int i = 0; i < 2; ++i)
        putPixel(image, i);
    EXPECT_EQ(vxImageFlush(image), 0);
    EXPECT_EQ(image->rowStarts[0], 528U);
    EXPECT_EQ(image->rowSizes[1], -1);
    const Bytes file = bytes();
    EXPECT_EQ(file.size(), 533U);
    EXPECT_EQ(file[514], 528 >> 8);
    EXPECT_EQ(vxImageClose(image), 0);
    image = create(1, 3);
    putPixel(image, 7);
    EXPECT_EQ(vxImageClose(image), 0);
    image = open();
    for (const int value : {-1, 7, 0})
        EXPECT_EQ(nextPixel(image), value);
    EXPECT_EQ(image->nextPixel[0], 0);
    EXPECT_EQ(vxImageClose(image), 0);
}

TEST_F(Image, CodecRefusesOtherWidths) {
    std::uint8_t output[4] = {9, 9, 9, 9};
    const std::uint8_t input[4] = {1, 1, 0, 0};
    vxImageSetErrorHandler([](char *text) { reports.push_back(std::string("handled ") + text); });
    for (const auto &[in, out] : {std::pair{0, 1}, {3, 1}, {1, 0}, {2, 3}}) {
        const std::string widths = " " + std::to_string(in) + " " + std::to_string(out);
        EXPECT_EQ(vxImageRleEncode(input, in, output, out, 1), 0);
        vxImageRleDecode(input, in, output, out);
        EXPECT_EQ(reported(), "handled 20375" + widths + ", handled 20376" + widths);
        EXPECT_EQ(output[0], 9);
    }
    vxImageSetErrorHandler(nullptr);
}

}  // namespace
