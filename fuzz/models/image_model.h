// Image files by the definition of their format: what reading any file gives, and which file
// writing leaves. And what the library reads, in the same form.

#ifndef VX_FUZZ_IMAGE_MODEL_H
#define VX_FUZZ_IMAGE_MODEL_H

#include "fuzz/models/row_model.h"

#include <vxframework.h>
#include <vxhandles.h>

#include <algorithm>
#include <bit>
#include <cstdarg>
#include <cstdint>
#include <fcntl.h>
#include <optional>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

// ---- Messages

// The texts of the messages reported since the last call of takeReports, one per line.
inline std::string imageReports;

inline std::string takeReports() {
    return std::exchange(imageReports, "");
}

inline void collectReports() {
    vxImageSetErrorHandler([](char *text) { imageReports += std::string(text) + "\n"; });
}

// What takeReports returns after this message.
inline std::string reportOf(int id, ...) {
    va_list arguments;
    va_start(arguments, id);
    const std::string text = vxMessageFormat(arguments, "vxmsg", id);
    va_end(arguments);
    return text + "\n";
}

// ---- Byte order

// Added to the type of a new image that is to be big-endian.
constexpr unsigned kBigEndian = 0x8000;

constexpr bool kIsHostBigEndian = std::endian::native == std::endian::big;

// The format of an image that is written in the order of the machine.
constexpr unsigned inHostOrder(unsigned format) {
    return kIsHostBigEndian ? format | kBigEndian : format;
}

// ---- What reading gives

// The messages of the call; the elements, if it succeeds; and the size of the stored row.
struct ReadResult {
    std::string reports;
    std::optional<Elements> row;
    std::uint32_t storedBytes = 0;

    bool operator==(const ReadResult &) const = default;
};

// A call that loads a row of the stream: its result, the flags of the handle, the elements left
// after the first one, and the row.
struct StreamStep {
    int result;
    unsigned flags;
    int pixelsLeft;
    Elements row;

    bool operator==(const StreamStep &) const = default;
};

constexpr unsigned kMaxStreamSteps = 40;
constexpr unsigned kRead = VX_IMAGE_READ, kAtEnd = kRead | VX_IMAGE_EOF;

// The fields of the header, and the name.
using Header = std::pair<Elements, std::string>;

// A file as a reader sees it. Without a magic number it counts as one in the machine's order.
class ImageModel {
public:
    explicit ImageModel(std::string file)
        : file_(std::move(file)),
          bigEndian_(kIsHostBigEndian ? !file_.starts_with("\xDA\x01")
                                      : file_.starts_with("\x01\xDA")) {}

    unsigned width() const { return head(3); }
    int height() const { return dimension() < 2 ? 1 : static_cast<int>(head(4)); }
    int planes() const { return dimension() < 3 ? 1 : static_cast<int>(head(5)); }

    // The messages of a failure to open the file; empty if it opens.
    std::string opening() const {
        if (file_.size() < 152) return reportOf(20366);
        if (head(0) != 474) return reportOf(20367, static_cast<int>(head(0)));
        if (storage() != 1) return "";
        if (tableSize() > 0x3FFFF000) return reportOf(20368);
        if (file_.size() < 512 + tableSize()) return reportOf(20369);
        return file_.size() < 512 + 2 * tableSize() ? reportOf(20370) : "";
    }

    Header header() const {
        Elements fields;
        for (std::size_t field = 1; field < 6; ++field)
            fields.push_back(head(field));
        for (const std::size_t at : {12U, 16U, 20U, 104U})
            fields.push_back(number(at, 4));
        return {fields, file_.substr(24, 79).c_str()};
    }

    ReadResult row(unsigned y, unsigned z) const {
        if (dimension() < 3) z = 0;
        if (dimension() < 2) y = 0;
        ReadResult result{rowReports(y, z), {}};
        const std::uint64_t index = dimension() == 3 ? std::uint64_t{z} * head(4) + y : y;
        const bool exists = result.reports.empty() || result.reports == reportOf(20381);
        if (exists && storage() == 1) result.storedBytes = tableEntry(1, index);
        if (!result.reports.empty()) return result;
        if ((result.storedBytes & 0xFFFF) == 0xFFFF) return result;  // never written
        result.row = storage() == 0 ? verbatim(index) : runLength(index);
        if (!result.row) result.reports = reportOf(20380);
        return result;
    }

    // With one more than the image has: row 0 of the last plane again.
    std::vector<StreamStep> stream() const {
        std::vector<StreamStep> steps;
        unsigned y = 0, z = 0, flags = kRead;
        for (bool wasAtEnd = false; steps.size() < kMaxStreamSteps && !wasAtEnd;) {
            wasAtEnd = flags == kAtEnd;
            const auto loaded = row(y, z).row;
            if (!loaded || loaded->size() > 32768) {
                steps.push_back({-1, flags | VX_IMAGE_ERROR, 0, {}});
                break;
            }
            if (loaded->empty()) {
                flags = kAtEnd;
                steps.push_back({-1, flags, 0, {}});
                continue;
            }
            if (static_cast<int>(++y) == height()) y = 0, ++z;
            const bool last = static_cast<int>(z) == planes();
            if (last) --z, flags = kAtEnd;
            steps.push_back({last ? -1 : static_cast<int>((*loaded)[0]), flags,
                             static_cast<int>(loaded->size()) - 1, *loaded});
        }
        return steps;
    }

    std::optional<VxPicture> picture(std::uint64_t maxElements) const {
        VxPicture picture{
            static_cast<int>(width()), height(), planes(), static_cast<int>(bytes()), {}};
        const std::uint64_t total =
            std::uint64_t{width()} * static_cast<unsigned>(height() * std::int64_t{planes()});
        if (total == 0 || total > maxElements) return std::nullopt;
        for (int index = 0; index < height() * planes(); ++index) {
            const auto found = row(static_cast<unsigned>(index % height()),
                                   static_cast<unsigned>(index / height()))
                                   .row;
            if (!found) return std::nullopt;
            picture.elements.insert(picture.elements.end(), found->begin(), found->end());
        }
        return picture;
    }

private:
    unsigned head(std::size_t field) const { return number(2 * field, 2); }
    unsigned storage() const { return head(1) >> 8; }
    unsigned bytes() const { return head(1) & 0xFF; }
    unsigned dimension() const { return head(2); }
    std::uint64_t tableSize() const { return std::uint64_t{head(4)} * head(5) * 4; }
    std::uint32_t tableEntry(unsigned table, std::uint64_t index) const {
        return number(512 + table * tableSize() + 4 * index, 4);
    }

    std::string rowReports(unsigned y, unsigned z) const {
        std::string reports;
        if (y >= head(4) || z >= head(5)) {
            reports = reportOf(20372);
        } else if (storage() > 1) {
            reports = reportOf(20374);
        } else if (dimension() < 1 || dimension() > 3) {
            reports = reportOf(20373);
        }
        if (storage() > 1) return reports + reportOf(20382);
        return bytes() == 1 || bytes() == 2 ? reports : reports + reportOf(20381);
    }

    std::optional<Elements> verbatim(std::uint64_t index) const {
        const std::uint64_t start = 512 + index * width() * bytes();
        if (start >= 0xFFFFFFFF || width() > (bytes() == 1 ? 32768U : 16383U)) return std::nullopt;
        return elements(start, width());
    }

    std::optional<Elements> runLength(std::uint64_t index) const {
        const std::uint64_t start = tableEntry(0, index);
        const std::uint32_t size = tableEntry(1, index);
        if (size > 32767 || size > (2 * width() + 1) * bytes()) return std::nullopt;
        if (size != 0 && start + size > file_.size()) return std::nullopt;
        const auto stored = elements(start, size / bytes());
        return stored ? decodedPlainly(*stored, width()) : std::nullopt;
    }

    std::optional<Elements> elements(std::uint64_t start, std::size_t count) const {
        if (count != 0 && start + count * bytes() > file_.size()) return std::nullopt;
        Elements row(count);
        for (std::size_t i = 0; i < count; ++i)
            row[i] = number(start + i * bytes(), bytes());
        return row;
    }

    std::uint32_t number(std::uint64_t at, std::size_t bytes) const {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i) {
            const char byte = file_[at + (bigEndian_ ? bytes - 1 - i : i)];
            value |= std::uint32_t{static_cast<std::uint8_t>(byte)} << 8 * i;
        }
        return value;
    }

    std::string file_;
    bool bigEndian_;
};

// ---- Writing

// A new image as a list of written rows.
class FileModel {
public:
    FileModel(unsigned format, unsigned x, unsigned y, unsigned z)
        : type_(format & ~kBigEndian),
          sides_{x, y, z},
          bigEndian_((format & kBigEndian) != 0),
          starts_(std::size_t{y} * z),
          sizes_(starts_.size(), ~0U),
          end_(512 + 8 * static_cast<unsigned>(starts_.size())) {}

    // The file that vxPictureWrite leaves.
    FileModel(const VxPicture &picture, unsigned storage)
        : FileModel(storage | static_cast<unsigned>(picture.elementBytes) | kBigEndian,
                    static_cast<unsigned>(picture.width), static_cast<unsigned>(picture.height),
                    static_cast<unsigned>(picture.planes)) {
        for (std::size_t i = 0; i < starts_.size(); ++i) {
            const std::uint16_t *row = &picture.elements[i * sides_[0]];
            put({row, row + sides_[0]}, i);
        }
    }

    // For a row that may not reach the file.
    void count(const std::vector<std::uint16_t> &row) {
        const Elements elements(row.begin(), row.end());
        for (const unsigned element : masked(elements, isRunLength() ? 0xFFFF : mask())) {
            extremes_[0] = std::min(extremes_[0], element);
            extremes_[1] = std::max(extremes_[1], element);
        }
    }

    void put(const std::vector<std::uint16_t> &row, std::size_t index) {
        count(row);
        const unsigned width = type_ & 0xFF;
        Elements elements(row.begin(), row.end());
        std::size_t at = 512 + index * row.size() * width;
        if (isRunLength()) {
            elements = encodedPlainly(elements, mask());
            waste_ += sizes_[index] != ~0U ? sizes_[index] : 0;
            starts_[index] = end_;
            sizes_[index] = static_cast<unsigned>(elements.size()) * width;
            end_ += sizes_[index];
            at = starts_[index];
        }
        store(at, elements, width);
    }

    // Of a row, or of nothing if it was never written.
    long position(std::size_t index) const {
        return isRunLength() ? starts_[index]
                             : 512 + static_cast<long>(index * sides_[0]) * (type_ & 0xFF);
    }
    std::int32_t storedBytes(std::size_t index) const {
        return isRunLength() ? static_cast<std::int32_t>(sizes_[index]) : 0;
    }

    std::string bytes() {
        const unsigned dimension = sides_[2] != 1 ? 3 : sides_[1] != 1 ? 2 : 1;
        store(0, {474, type_, dimension, sides_[0], sides_[1], sides_[2]}, 2);
        store(12, {extremes_[0], extremes_[1], waste_}, 4);
        file_.replace(24, std::min<std::size_t>(name.size(), 79), name, 0, 79);
        store(104, {colormap}, 4);
        if (isRunLength()) store(store(512, starts_, 4), sizes_, 4);
        return file_;
    }

    std::string name = vxMessageText("vxmsg", 20364);
    unsigned colormap = 0;

private:
    bool isRunLength() const { return type_ > 0xFF; }
    unsigned mask() const { return (type_ & 0xFF) == 1 ? 0xFF : 0xFFFF; }
    std::size_t store(std::size_t at, const Elements &numbers, unsigned width) {
        if (numbers.empty()) return at;
        file_.resize(std::max(file_.size(), at + numbers.size() * width));
        for (const unsigned number : numbers) {
            for (unsigned i = 0; i < width; ++i) {
                const unsigned shift = 8 * (bigEndian_ ? width - 1 - i : i);
                file_[at++] = static_cast<char>(number >> shift);
            }
        }
        return at;
    }

    unsigned type_, sides_[3];
    bool bigEndian_;
    Elements starts_, sizes_;
    unsigned end_, waste_ = 0, extremes_[2] = {10000000, 0};
    std::string file_ = std::string(152, '\0');
};

// ---- Reading with the library

// Reads into stale memory. A result that contradicts the contract goes to the reports.
inline ReadResult readRow(VxImage *image, unsigned y, unsigned z, std::uint16_t stale) {
    const std::vector<std::uint16_t> before(image->xSize + std::size_t{1}, stale);
    std::vector<std::uint16_t> row = before;
    std::uint16_t *memory = image->xSize != 0 ? row.data() : nullptr;  // none is needed then
    const int got = vxImageGetRow(image, memory, static_cast<int>(y), static_cast<int>(z));
    ReadResult result{takeReports(), {}};
    // A row out of range leaves the handle at the row before.
    if (!result.reports.starts_with(reportOf(20372)))
        result.storedBytes = static_cast<std::uint32_t>(vxImageRowSize(image));
    if (got == image->xSize) result.row.emplace(row.begin(), row.end() - 1);
    if (got != image->xSize && got != -1) result.reports += "another result";
    if (row.back() != stale) result.reports += "written after the end";
    // Only damage may leave a part of a row.
    if (got == -1 && result.reports != reportOf(20380) && row != before)
        result.reports += "written by a failed call";
    return result;
}

inline std::vector<StreamStep> readStream(VxImage *image) {
    std::vector<StreamStep> steps;
    for (bool wasAtEnd = false; steps.size() < kMaxStreamSteps && !wasAtEnd;) {
        wasAtEnd = image->flags == kAtEnd;
        const int result = vxImageFillPixels(image);
        steps.push_back({result, image->flags, image->pixelsLeft, {}});
        if ((image->flags & VX_IMAGE_ERROR) != 0) break;
        const std::uint16_t *first = image->nextPixel - (result >= 0 ? 1 : 0);
        steps.back().row.assign(first, first + image->xSize);
    }
    return steps;
}

// What is open for reading is not written.
inline bool refusesToWrite(VxImage *image) {
    std::vector<std::uint16_t> row(image->xSize + std::size_t{1});
    return vxImagePutRow(image, row.data(), 0, 0) == -1 && vxImageDrainPixels(image, 1) == -1 &&
           vxImageFlush(image) == 0 && image->pixelsLeft == 0 && image->flags == kRead &&
           takeReports().empty();
}

// Some rows from the first, those around the last, and one too many.
inline std::vector<unsigned> someOf(unsigned count) {
    std::vector<unsigned> some;
    for (unsigned i = 0; i < std::min(count + 1, 6U); ++i)
        some.push_back(i);
    for (unsigned i = std::max(count, 8U) - 2; i <= count; ++i)
        some.push_back(i);
    return some;
}

inline std::string differingRows(VxImage *image, const ImageModel &model, bool falling) {
    std::string found;
    std::vector<unsigned> planes = someOf(image->zSize);
    if (falling) std::reverse(planes.begin(), planes.end());  // not in the order of the file
    for (const unsigned z : planes) {
        for (const unsigned y : someOf(image->ySize)) {
            const ReadResult expected = model.row(y, z);
            const ReadResult result = readRow(image, y, z, falling ? 0xAAAA : 0x5555);
            if (result == expected) continue;
            found += "row " + std::to_string(y) + " of plane " + std::to_string(z) +
                     ", reported: \"" + result.reports + "\", expected: \"" + expected.reports +
                     "\"\n";
        }
    }
    return found;
}

inline Header headerOf(const VxImage &image) {
    return {{image.type, image.dimension, image.xSize, image.ySize, image.zSize, image.minValue,
             image.maxValue, image.wasteBytes, image.colormap},
            image.name};
}

// An image that cannot be opened leaves the caller's descriptor open.
inline bool opensByDescriptor(const std::string &path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY);
    VxImage *image = vxImageOpenFd(descriptor, "r");
    takeReports();
    if (image == nullptr) return ::close(descriptor) != 0;
    return vxImageClose(image) == 0 && ::close(descriptor) != 0;
}

inline int nextDescriptor() {
    const int descriptor = ::dup(1);
    ::close(descriptor);
    return descriptor;
}

// Opens a file and reads it in all ways. Returns what differs from the model, in words.
inline std::string differences(const std::string &path, const ImageModel &model) {
    const auto open = [&] { return VxUniqueImage(vxImageOpen(path.c_str(), "r")); };
    const int descriptor = nextDescriptor();
    takeReports();
    VxUniqueImage image = open();
    if (const std::string reports = takeReports(); reports != model.opening()) {
        return "opening, reported: \"" + reports + "\", expected: \"" + model.opening() + "\"\n";
    }
    const bool opens = image != nullptr;
    if (opens != model.opening().empty() || opens != opensByDescriptor(path)) return "opening\n";
    if (!opens) return nextDescriptor() == descriptor ? "" : "a descriptor is left open\n";
    std::string found;
    if (headerOf(*image) != model.header()) found += "the header\n";
    found += differingRows(image.get(), model, false);
    image = open();
    found += differingRows(image.get(), model, true);
    if (!refusesToWrite(image.get())) found += "writing\n";
    image = open();
    if (readStream(image.get()) != model.stream()) found += "the stream\n";
    constexpr std::uint64_t kMaxElements = 1 << 14;
    image = open();
    if (vxPictureRead(image.get(), kMaxElements) != model.picture(kMaxElements))
        found += "the picture\n";
    takeReports();
    return found;
}

#endif
