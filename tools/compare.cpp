// Two pictures, element by element.

#include "batch.h"
#include "commands.h"
#include "output_file.h"
#include "picture_file.h"
#include "png_file.h"
#include "report.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace tool {

namespace {

constexpr unsigned kMaxPlanesCompared = 64;

unsigned fullValue(unsigned elementBytes) {
    return elementBytes == 1 ? 0xFF : 0xFFFF;
}

// Two pictures of the same size, whose elements are brought to the wider of their widths.
class PicturePair {
public:
    PicturePair(const std::string &first, const std::string &second)
        : first_(openPicture(first)), second_(openPicture(second)), form_(first_->form()) {
        const PictureForm other = second_->form();
        if (sizeOf(form_) != sizeOf(other)) {
            throw Error(second, "is " + sizeOf(other) + ", and " + first + " is " + sizeOf(form_));
        }
        if (form_.planes > kMaxPlanesCompared) {
            throw Error(first, "has " + std::to_string(form_.planes) + " planes, more than " +
                                   std::to_string(kMaxPlanesCompared));
        }
        form_.elementBytes = std::max(form_.elementBytes, other.elementBytes);
        firstLine_.resize(form_.lineElements());
        secondLine_.resize(form_.lineElements());
    }

    const PictureForm &form() const { return form_; }

    // The differences of the next line.
    void readLine(std::uint16_t *line) {
        const unsigned firstScale = readScaled(*first_, firstLine_);
        const unsigned secondScale = readScaled(*second_, secondLine_);
        for (std::size_t i = 0; i < firstLine_.size(); ++i) {
            const unsigned one = firstLine_[i] * firstScale, other = secondLine_[i] * secondScale;
            line[i] = static_cast<std::uint16_t>(one < other ? other - one : one - other);
        }
    }

    void finish() {
        first_->finish();
        second_->finish();
    }

private:
    static std::string sizeOf(const PictureForm &form) {
        return std::to_string(form.width) + " x " + std::to_string(form.height) + " in " +
               std::to_string(form.planes) + (form.planes == 1 ? " plane" : " planes");
    }

    unsigned readScaled(PictureSource &source, std::vector<std::uint16_t> &line) const {
        source.readLine(line.data());
        return fullValue(form_.elementBytes) / fullValue(source.form().elementBytes);
    }

    std::unique_ptr<PictureSource> first_, second_;
    PictureForm form_;
    std::vector<std::uint16_t> firstLine_, secondLine_;
};

// Of elements from 0 to 1.
struct Differences {
    std::uint64_t elements = 0, different = 0, failing = 0;
    unsigned largest = 0;  // as it is stored
    unsigned x = 0, y = 0, plane = 0;
    double full = 1, sum = 0, squares = 0;

    double largestPart() const { return largest / full; }
    double mean() const { return sum / full / static_cast<double>(elements); }
    double rootMeanSquare() const {
        return std::sqrt(squares / static_cast<double>(elements)) / full;
    }

    void add(unsigned difference, double failure) {
        ++elements;
        if (difference == 0) return;
        ++different;
        if (difference / full > failure) ++failing;
        sum += difference;
        squares += static_cast<double>(difference) * difference;
    }
};

Differences measure(PicturePair &pair, double failure, FileProgress &progress) {
    const PictureForm form = pair.form();
    Differences all;
    all.full = fullValue(form.elementBytes);
    std::vector<std::uint16_t> line(form.lineElements());
    progress.start(form.height);
    for (unsigned i = 0; i < form.height; ++i) {
        pair.readLine(line.data());
        for (std::size_t element = 0; element < line.size(); ++element) {
            all.add(line[element], failure);
            if (line[element] <= all.largest) continue;
            all.largest = line[element];
            all.x = static_cast<unsigned>(element % form.width);
            all.y = form.height - 1 - i;
            all.plane = static_cast<unsigned>(element / form.width);
        }
        progress.advance();
    }
    pair.finish();
    return all;
}

// Stretched so that the largest difference is the lightest.
void drawDifferences(const CompareOptions &options, unsigned largest) {
    PicturePair pair(options.first, options.second);
    const PictureForm form = pair.form();
    const unsigned full = fullValue(form.elementBytes);
    OutputFile target(options.picture);
    const std::unique_ptr<PictureSink> sink =
        createPicture(options.picture, target.duplicate(), form);
    std::vector<std::uint16_t> line(form.lineElements());
    for (unsigned i = 0; i < form.height; ++i) {
        pair.readLine(line.data());
        for (std::uint16_t &element : line) {
            element =
                static_cast<std::uint16_t>(std::uint64_t{element} * full / std::max(largest, 1U));
        }
        sink->writeLine(line.data());
    }
    sink->finish();
    target.commit();
}

bool isFailure(const CompareOptions &options, const Differences &found) {
    const double percentage =
        100 * static_cast<double>(found.failing) / static_cast<double>(found.elements);
    return found.largestPart() > options.hardFailure || percentage > options.failingPercentage;
}

std::string shown(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

void reportDifferences(const CompareOptions &options, const Differences &found, bool differ,
                       FileReport &report) {
    std::string line = printable(options.first) + ", " + printable(options.second) + ": ";
    line += differ ? "differ" : found.different > 0 ? "within limits" : "equal";
    if (found.different > 0) {
        line += ": " + std::to_string(found.different) + " of " + std::to_string(found.elements) +
                " elements differ, at most by " + shown(found.largestPart()) + " in plane " +
                std::to_string(found.plane) + ", row " + std::to_string(found.y) + ", column " +
                std::to_string(found.x) + "; mean " + shown(found.mean()) + ", root mean square " +
                shown(found.rootMeanSquare());
    }
    report.print(line);
    setText(report.json, "with", options.second);
    report.json["differ"] = differ;
    report.json["elements"] = found.elements;
    report.json["different"] = found.different;
    report.json["failing"] = found.failing;
    report.json["largest"] = found.largestPart();
    report.json["plane"] = found.plane;
    report.json["row"] = found.y;
    report.json["column"] = found.x;
    report.json["mean"] = found.mean();
    report.json["root_mean_square"] = found.rootMeanSquare();
}

}  // namespace

int compareImages(const CompareOptions &options) {
    BatchOptions batch;
    batch.json = options.json;
    bool differ = false;
    const int code = runBatch(batch, {{options.first, {}, {}}},
                              [&](const Input &, FileReport &report, FileProgress &progress) {
                                  PicturePair pair(options.first, options.second);
                                  const Differences found =
                                      measure(pair, options.failure, progress);
                                  if (!options.picture.empty())
                                      drawDifferences(options, found.largest);
                                  differ = isFailure(options, found);
                                  reportDifferences(options, found, differ, report);
                              });
    return code == kDone && differ ? kFailed : code;
}

}  // namespace tool
