// Image files of any bytes: each row reads as a simple reader reads it, or fails with a report,
// whatever was read before and whatever the memory held. The input is the file.

#include "fuzz/fuzz.h"
#include "tests/row_model.h"

#include <vximage.h>

#include <algorithm>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

using Row = std::vector<std::uint16_t>;

int reports = 0;

// A simple reader of the format.
class PlainImage {
public:
    enum class Fate { kGood, kReported, kUnwritten };

    PlainImage(const std::uint8_t *data, std::size_t size) : data_(data), size_(size) {
        swapped_ = size >= 2 && data[0] == 0x01 && data[1] == 0xDA;
    }
    unsigned head(std::size_t field) const { return number(2 * field, 2); }
    unsigned storage() const { return head(1) >> 8; }
    unsigned width() const { return head(3); }
    std::uint64_t rows() const { return std::uint64_t{head(4)} * head(5); }
    bool opens() const {
        if (size_ < 152 || head(0) != 474) return false;
        return storage() != 1 || (rows() * 4 <= 0x3FFFF000 && size_ >= 512 + rows() * 8);
    }
    Fate row(unsigned y, unsigned z, Elements &row) const {
        if (head(2) < 3) z = 0;
        if (head(2) < 2) y = 0;
        const unsigned bytes = head(1) & 0xFF;
        if (y >= head(4) || z >= head(5) || storage() > 1 || head(2) < 1 || head(2) > 3 ||
            bytes < 1 || bytes > 2) {
            return Fate::kReported;
        }
        const std::uint64_t index = head(2) == 3 ? std::uint64_t{z} * head(4) + y : y;
        if (storage() == 0) {
            const std::uint64_t place = 512 + index * width() * bytes;
            if (place >= 0xFFFFFFFF) return Fate::kReported;
            if (width() > (bytes == 1 ? 32768U : 16383U)) return Fate::kReported;
            return elements(place, width(), bytes, row) ? Fate::kGood : Fate::kReported;
        }
        const std::uint64_t place = number(512 + 4 * index, 4);
        const std::uint32_t length = number(512 + 4 * (rows() + index), 4);
        if ((length & 0xFFFF) == 0xFFFF) return Fate::kUnwritten;
        Elements stored;
        if (length > 32767 || length > (2 * width() + 1) * bytes ||
            place + length > std::max<std::uint64_t>(size_, length == 0 ? place : 0) ||
            !elements(place, length / bytes, bytes, stored)) {
            return Fate::kReported;
        }
        const auto decoded = decodedPlainly(stored, width());
        if (decoded) row = *decoded;
        return decoded ? Fate::kGood : Fate::kReported;
    }

private:
    std::uint32_t number(std::uint64_t at, std::size_t bytes) const {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            value |= std::uint32_t{data_[at + (swapped_ ? bytes - 1 - i : i)]} << 8 * i;
        return value;
    }
    bool elements(std::uint64_t at, std::size_t count, std::size_t bytes, Elements &row) const {
        if (count != 0 && at + count * bytes > size_) return false;
        row.resize(count);
        for (std::size_t i = 0; i < count; ++i)
            row[i] = number(at + i * bytes, bytes);
        return true;
    }

    const std::uint8_t *data_;
    std::size_t size_;
    bool swapped_;
};

using Fate = PlainImage::Fate;

bool equal(const std::uint16_t *row, const Elements &expected) {
    return std::equal(expected.begin(), expected.end(), row);
}

// Reads into a row of stale memory.
void readRow(VxImage *image, const PlainImage &plain, unsigned y, unsigned z, std::uint16_t stale) {
    Elements expected;
    const Fate fate = plain.row(y, z, expected);
    Row row(plain.width(), stale);
    reports = 0;
    const int got = vxImageGetRow(image, row.data(), static_cast<int>(y), static_cast<int>(z));
    CHECK(got == (fate == Fate::kGood ? static_cast<int>(plain.width()) : -1));
    CHECK((reports != 0) == (fate == Fate::kReported));
    CHECK(fate != Fate::kGood || equal(row.data(), expected));
}

// Some rows from the start, those around the end, and one after it.
std::vector<unsigned> someOf(unsigned count) {
    std::vector<unsigned> some;
    for (unsigned i = 0; i < std::min(count + 1, 6U); ++i)
        some.push_back(i);
    for (unsigned i = std::max(count, 8U) - 2; i <= count; ++i)
        some.push_back(i);
    return some;
}

void streamPixels(VxImage *image, const PlainImage &plain) {
    const unsigned rows = image->dimension < 2 ? 1 : image->ySize;
    const unsigned planes = image->dimension < 3 ? 1 : image->zSize;
    for (unsigned call = 0; call < 40; ++call) {
        const unsigned y = call % std::max(rows, 1U);
        const unsigned z = call / std::max(rows, 1U);
        Elements expected;
        const bool good = plain.row(y, z, expected) == Fate::kGood && plain.width() <= 32768;
        const int first = vxImageFillPixels(image);
        const unsigned ends = image->flags & (VX_IMAGE_EOF | VX_IMAGE_ERROR);
        if (!good || expected.empty()) {
            CHECK(first == -1 && image->pixelsLeft == 0);
            CHECK(ends == (good ? VX_IMAGE_EOF : VX_IMAGE_ERROR));
            return;
        }
        const bool last = z * rows + y + 1 == planes * rows;
        CHECK(ends == (last ? VX_IMAGE_EOF : 0U));
        CHECK(first == (last ? -1 : static_cast<int>(expected[0])));
        CHECK(image->pixelsLeft == static_cast<int>(plain.width()) - 1);
        CHECK(equal(image->nextPixel - (last ? 0 : 1), expected));
        if (last) return;
    }
}

// A handle with a position of its own.
VxImage *open(int file) {
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    VxImage *image = vxImageOpenFd(descriptor, "r");
    if (image == nullptr) CHECK(::close(descriptor) == 0);
    return image;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const int file = ::memfd_create("image", 0);
    CHECK(::ftruncate(file, 0) == 0);
    CHECK(::pwrite(file, data, size, 0) == static_cast<ssize_t>(size));
    vxImageSetErrorHandler([](char *text) { reports += *text != '\0' ? 1 : 0; });
    const PlainImage plain(data, size);
    reports = 0;
    VxImage *image = open(file);
    CHECK((image != nullptr) == plain.opens());
    CHECK((image != nullptr) == (reports == 0));
    if (image == nullptr) return 0;
    const std::vector<unsigned> ys = someOf(image->ySize);
    std::vector<unsigned> zs = someOf(image->zSize);
    for (const std::uint16_t stale : Row{0x5555, 0xAAAA}) {
        for (const unsigned z : zs) {
            for (const unsigned y : ys)
                readRow(image, plain, y, z, stale);
        }
        CHECK(vxImageClose(image) == 0);
        image = open(file);
        std::reverse(zs.begin(), zs.end());  // not in the order of the file
    }
    streamPixels(image, plain);
    CHECK(vxImageClose(image) == 0);
    return 0;
}
