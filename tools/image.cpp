// What image files hold, and whether all of it can be read.

#include "batch.h"
#include "commands.h"
#include "open_image.h"
#include "report.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <sys/stat.h>

namespace tool {

namespace {

std::int64_t fileBytes(const VxImage *image) {
    struct stat status;
    return fstat(image->file, &status) == 0 ? status.st_size : 0;
}

const char *storageName(const VxImage *image) {
    if (isVerbatim(image)) return "verbatim";
    return (image->type & 0xFF00) == VX_IMAGE_RUN_LENGTH ? "run-length" : "unknown";
}

bool isBigEndian(const VxImage *image) {
    return (std::endian::native == std::endian::little) == (image->byteSwap != 0);
}

std::string counted(std::uint64_t count, const char *what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

void describeInLine(const VxImage *image, const std::string &path, FileReport &report) {
    report.print(printable(path) + ": " + std::to_string(image->xSize) + " x " +
                 std::to_string(image->ySize) + ", " + counted(image->zSize, "plane") + " of " +
                 counted(static_cast<unsigned>(elementBytesOf(image)), "byte") + ", " +
                 storageName(image) + ", values " + std::to_string(image->minValue) + " to " +
                 std::to_string(image->maxValue) +
                 (isBigEndian(image) ? "" : ", in little-endian byte order"));
}

void describeAtLength(const VxImage *image, const std::string &path, FileReport &report) {
    const auto line = [&report](const char *label, const std::string &value) {
        report.print("  " + std::string(label) + std::string(12 - std::strlen(label), ' ') + value);
    };
    report.print(printable(path));
    line("name", printable(image->name));
    line("size", std::to_string(image->xSize) + " x " + std::to_string(image->ySize) + ", " +
                     counted(image->zSize, "plane"));
    line("dimension", std::to_string(image->dimension));
    line("elements", counted(static_cast<unsigned>(elementBytesOf(image)), "byte"));
    line("values", std::to_string(image->minValue) + " to " + std::to_string(image->maxValue));
    line("storage", storageName(image));
    line("byte order", isBigEndian(image) ? "big-endian, as published"
                                          : "little-endian, unknown to other programs");
    line("colormap", std::to_string(image->colormap));
    line("wasted", counted(image->wasteBytes, "byte"));
    line("file", counted(static_cast<std::uint64_t>(fileBytes(image)), "byte"));
}

Json headerObject(const VxImage *image) {
    Json header = {{"width", image->xSize},
                   {"height", image->ySize},
                   {"planes", image->zSize},
                   {"dimension", image->dimension},
                   {"element_bytes", elementBytesOf(image)},
                   {"min", image->minValue},
                   {"max", image->maxValue},
                   {"storage", storageName(image)},
                   {"byte_order", isBigEndian(image) ? "big-endian" : "little-endian"},
                   {"colormap", image->colormap},
                   {"wasted_bytes", image->wasteBytes},
                   {"file_bytes", fileBytes(image)}};
    setText(header, "name", image->name);
    return header;
}

// ---- Checking

// Damaged rows in ranges, and no more of these than anybody reads: a file may have any number.
class DamageReport {
public:
    explicit DamageReport(FileReport &report) : report_(report) {}

    void add(int y, int z, const std::string &what) {
        if (first_ >= 0 && z == plane_ && y == last_ + 1 && what == what_) {
            last_ = y;
            return;
        }
        flush();
        plane_ = z;
        first_ = last_ = y;
        what_ = what;
    }

    void finish() {
        flush();
        if (ranges_ > kMaxRanges) {
            report_.fault("further rows are damaged, in " + counted(ranges_ - kMaxRanges, "range"));
        }
    }

private:
    static constexpr std::uint64_t kMaxRanges = 1000;

    void flush() {
        if (first_ < 0) return;
        std::string where = "plane " + std::to_string(plane_);
        where += first_ == last_
                     ? ", row " + std::to_string(first_)
                     : ", rows " + std::to_string(first_) + " to " + std::to_string(last_);
        if (++ranges_ <= kMaxRanges) report_.fault(where + ": " + what_);
        first_ = -1;
    }

    FileReport &report_;
    std::string what_;
    int plane_ = 0, first_ = -1, last_ = -1;
    std::uint64_t ranges_ = 0;
};

// The rows that a file can hold: a header may promise billions where there are none.
std::uint64_t rowsInFile(const VxImage *image, std::uint64_t promised) {
    if (!isVerbatim(image)) return promised;
    const std::int64_t bytes = fileBytes(image) - VX_IMAGE_FILE_HEAD;
    const std::int64_t rowBytes = std::int64_t{image->xSize} * elementBytesOf(image);
    const std::uint64_t whole = bytes <= 0 ? 0 : static_cast<std::uint64_t>(bytes / rowBytes);
    return std::min(whole, promised);
}

void readRows(VxImage *image, std::uint64_t count, FileProgress &progress, FileReport &report) {
    std::vector<std::uint16_t> row(image->xSize);
    DamageReport damage(report);
    const unsigned rows = image->ySize;
    for (std::uint64_t i = 0; i < count; ++i) {
        const int y = static_cast<int>(i % rows), z = static_cast<int>(i / rows);
        if (vxImageGetRow(image, row.data(), y, z) < 0) {
            damage.add(y, z,
                       imageMessage(isVerbatim(image) ? "lies beyond the 4 GiB that can be reached"
                                                      : "was never written"));
        }
        progress.advance();
    }
    damage.finish();
}

void check(const Input &input, FileReport &report, FileProgress &progress) {
    const VxUniqueImage image = openImage(input.path);
    if (const std::string error = headerFault(image.get()); !error.empty()) {
        throw Error(input.path, error);
    }
    const std::uint64_t rows = image->ySize;
    const std::uint64_t promised = rows * image->zSize;
    const std::uint64_t present = rowsInFile(image.get(), promised);
    progress.start(present);
    readRows(image.get(), present, progress, report);
    if (present < promised) {
        report.fault("plane " + std::to_string(present / rows) + ", row " +
                     std::to_string(present % rows) + ": the file ends before it, " +
                     std::to_string(promised - present) + " of " + std::to_string(promised) +
                     " rows are missing");
    }
    if (!report.good()) return;
    report.json["rows"] = promised;
    report.print(printable(input.path) + ": good, " + std::to_string(promised) + " rows read");
}

}  // namespace

int describeImages(const BatchOptions &options, bool atLength) {
    const auto describe = [atLength](const Input &input, FileReport &report, FileProgress &) {
        const VxUniqueImage image = openImage(input.path);
        (atLength ? describeAtLength : describeInLine)(image.get(), input.path, report);
        report.json = headerObject(image.get());
    };
    return runBatch(options, collectInputs(options.inputs, hasImageExtension), describe);
}

int checkImages(const BatchOptions &options) {
    return runBatch(options, collectInputs(options.inputs, hasImageExtension), check);
}

}  // namespace tool
