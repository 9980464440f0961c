// What image files hold, and whether all of it can be read.

#include "commands.h"
#include "open_image.h"
#include "progress_bar.h"
#include "report.h"

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <sys/stat.h>

namespace tool {

namespace {

template <typename Work>
int forEachImage(const std::vector<std::string> &paths, Work work) {
    bool good = true;
    for (const std::string &path : paths) {
        try {
            const VxUniqueImage image = openImage(path);
            good = work(path, image.get()) && good;
        } catch (const Error &error) {
            printError(error.subject(), error.what());
            good = false;
        }
    }
    return good ? kDone : kFailed;
}

std::int64_t fileBytes(const VxImage *image) {
    struct stat status;
    return fstat(image->file, &status) == 0 ? status.st_size : 0;
}

const char *storageName(const VxImage *image) {
    if (isVerbatim(image)) return "verbatim";
    return (image->type & 0xFF00) == VX_IMAGE_RUN_LENGTH ? "run-length" : "unknown";
}

const char *byteOrderName(const VxImage *image) {
    const std::uint16_t one = 1;
    const bool littleHost = *reinterpret_cast<const unsigned char *>(&one) == 1;
    return littleHost == (image->byteSwap != 0) ? "big-endian, as published"
                                                : "little-endian, unknown to other programs";
}

void describe(const std::string &path, const VxImage *image) {
    std::printf("%s\n", printable(path).c_str());
    std::printf("  name        %s\n", printable(image->name).c_str());
    std::printf("  size        %d x %d, %d plane%s\n", image->xSize, image->ySize, image->zSize,
                image->zSize == 1 ? "" : "s");
    std::printf("  dimension   %d\n", image->dimension);
    std::printf("  elements    %d byte%s\n", elementBytesOf(image),
                elementBytesOf(image) == 1 ? "" : "s");
    std::printf("  values      %" PRIu32 " to %" PRIu32 "\n", image->minValue, image->maxValue);
    std::printf("  storage     %s\n", storageName(image));
    std::printf("  byte order  %s\n", byteOrderName(image));
    std::printf("  colormap    %" PRIu32 "\n", image->colormap);
    std::printf("  wasted      %" PRIu32 " bytes\n", image->wasteBytes);
    std::printf("  file        %" PRId64 " bytes\n", fileBytes(image));
}

// ---- Checking

// Damaged rows, told in ranges: a file may have any number of them.
class DamageReport {
public:
    DamageReport(const std::string &path, ProgressBar &bar) : path_(path), bar_(bar) {}

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

    void flush() {
        if (first_ < 0) return;
        std::string where = "plane " + std::to_string(plane_);
        where += first_ == last_
                     ? ", row " + std::to_string(first_)
                     : ", rows " + std::to_string(first_) + " to " + std::to_string(last_);
        say(where + ": " + what_);
        first_ = -1;
    }

    void say(const std::string &what) {
        bar_.clear();
        printError(path_, what);
        good_ = false;
    }

    bool good() const { return good_ && first_ < 0; }

private:
    const std::string &path_;
    ProgressBar &bar_;
    std::string what_;
    int plane_ = 0, first_ = -1, last_ = -1;
    bool good_ = true;
};

// The rows that a file can hold: a header may promise billions where there are none.
std::uint64_t rowsInFile(const VxImage *image, std::uint64_t promised) {
    if (!isVerbatim(image)) return promised;
    const std::int64_t bytes = fileBytes(image) - VX_IMAGE_FILE_HEAD;
    const std::int64_t rowBytes = std::int64_t{image->xSize} * elementBytesOf(image);
    const std::uint64_t whole = bytes <= 0 ? 0 : static_cast<std::uint64_t>(bytes / rowBytes);
    return std::min(whole, promised);
}

void readRows(VxImage *image, std::uint64_t count, ProgressBar &bar, DamageReport &report) {
    std::vector<std::uint16_t> row(image->xSize);
    const unsigned rows = image->ySize;
    for (std::uint64_t i = 0; i < count; ++i) {
        const int y = static_cast<int>(i % rows), z = static_cast<int>(i / rows);
        if (vxImageGetRow(image, row.data(), y, z) < 0) {
            report.add(y, z,
                       imageMessage(isVerbatim(image) ? "lies beyond the 4 GiB that can be reached"
                                                      : "was never written"));
        }
        bar.advance();
    }
    report.flush();
}

bool check(const std::string &path, VxImage *image) {
    if (const std::string error = headerFault(image); !error.empty()) {
        throw Error(path, error);
    }
    const std::uint64_t rows = image->ySize;
    const std::uint64_t promised = rows * image->zSize;
    const std::uint64_t present = rowsInFile(image, promised);
    ProgressBar bar(path, present);
    DamageReport report(path, bar);
    readRows(image, present, bar, report);
    if (present < promised) {
        report.say("plane " + std::to_string(present / rows) + ", row " +
                   std::to_string(present % rows) + ": the file ends before it, " +
                   std::to_string(promised - present) + " of " + std::to_string(promised) +
                   " rows are missing");
    }
    bar.clear();
    if (!report.good()) return false;
    std::printf("%s: good, %" PRIu64 " rows read\n", printable(path).c_str(), promised);
    return true;
}

}  // namespace

int describeImages(const std::vector<std::string> &paths) {
    return forEachImage(paths, [](const std::string &path, const VxImage *image) {
        describe(path, image);
        return true;
    });
}

int checkImages(const std::vector<std::string> &paths) {
    return forEachImage(paths, check);
}

}  // namespace tool
