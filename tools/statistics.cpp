// What the elements of pictures are, whatever their headers say of them.

#include "batch.h"
#include "commands.h"
#include "output_file.h"
#include "picture_file.h"
#include "report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace tool {

namespace {

// So that a header cannot ask for any amount of memory.
constexpr unsigned kMaxCountedPlanes = 64;
constexpr std::size_t kBins = 256;

using Histogram = std::array<std::uint64_t, kBins>;

// How often each value occurs in a plane, by which all else is exact.
class PlaneCounts {
public:
    explicit PlaneCounts(unsigned elementBytes)
        : counts_(std::size_t{1} << (8 * elementBytes)), valuesPerBin_(counts_.size() / kBins) {}

    void add(const std::uint16_t *elements, unsigned count) {
        for (unsigned x = 0; x < count; ++x)
            ++counts_[elements[x]];
    }

    std::size_t min() const {
        const auto first = std::find_if(counts_.begin(), counts_.end(), isUsed);
        return static_cast<std::size_t>(first - counts_.begin());
    }

    std::size_t max() const {
        const auto last = std::find_if(counts_.rbegin(), counts_.rend(), isUsed);
        return static_cast<std::size_t>(counts_.rend() - last) - 1;
    }

    double mean() const {
        return averageOf([](double value) { return value; });
    }

    double deviation() const {
        const double middle = mean();
        return std::sqrt(
            averageOf([middle](double value) { return (value - middle) * (value - middle); }));
    }

    // Two-byte values share a bin by their high byte.
    Histogram histogram() const {
        Histogram bins = {};
        for (std::size_t value = 0; value < counts_.size(); ++value)
            bins[value / valuesPerBin_] += counts_[value];
        return bins;
    }

private:
    static bool isUsed(std::uint64_t count) { return count != 0; }

    template <typename Function>
    double averageOf(Function function) const {
        double sum = 0, elements = 0;
        for (std::size_t value = 0; value < counts_.size(); ++value) {
            sum += function(static_cast<double>(value)) * static_cast<double>(counts_[value]);
            elements += static_cast<double>(counts_[value]);
        }
        return sum / elements;
    }

    std::vector<std::uint64_t> counts_;
    std::size_t valuesPerBin_;
};

std::vector<PlaneCounts> countElements(const std::string &path, PictureSource &source,
                                       FileProgress &progress) {
    const PictureForm form = source.form();
    if (form.planes > kMaxCountedPlanes) {
        throw Error(path, "has " + std::to_string(form.planes) + " planes, more than " +
                              std::to_string(kMaxCountedPlanes));
    }
    std::vector<PlaneCounts> planes(form.planes, PlaneCounts(form.elementBytes));
    std::vector<std::uint16_t> line(form.lineElements());
    progress.start(form.height);
    for (unsigned i = 0; i < form.height; ++i) {
        source.readLine(line.data());
        const std::uint16_t *elements = line.data();
        for (PlaneCounts &plane : planes) {
            plane.add(elements, form.width);
            elements += form.width;
        }
        progress.advance();
    }
    source.finish();
    return planes;
}

std::string rounded(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

void reportStatistics(const PictureForm &form, const std::vector<PlaneCounts> &planes,
                      const std::string &path, FileReport &report) {
    std::string line =
        printable(path) + ": " + std::to_string(form.width) + " x " + std::to_string(form.height);
    report.json = {{"width", form.width}, {"height", form.height}, {"planes", Json::array()}};
    for (const PlaneCounts &plane : planes) {
        const double mean = plane.mean(), deviation = plane.deviation();
        line += "; plane " + std::to_string(report.json["planes"].size()) + ": " +
                std::to_string(plane.min()) + " to " + std::to_string(plane.max()) + ", mean " +
                rounded(mean) + ", deviation " + rounded(deviation);
        report.json["planes"].push_back({{"min", plane.min()},
                                         {"max", plane.max()},
                                         {"mean", mean},
                                         {"deviation", deviation},
                                         {"histogram", plane.histogram()}});
    }
    report.print(line);
}

// ---- Drawing

constexpr int kBinWidth = 2, kPlaneHeight = 120, kMargin = 10;

const char *colorOf(std::size_t plane, std::size_t planes) {
    static constexpr std::array kColors = {"#c33", "#393", "#33c"};
    return planes >= kColors.size() && plane < kColors.size() ? kColors[plane] : "#555";
}

std::string drawPlane(const PlaneCounts &plane, int top, const char *color) {
    const Histogram bins = plane.histogram();
    const double most = static_cast<double>(*std::max_element(bins.begin(), bins.end()));
    std::string path;
    for (std::size_t bin = 0; bin < kBins; ++bin) {
        if (bins[bin] == 0) continue;
        const double height = kPlaneHeight * static_cast<double>(bins[bin]) / most;
        path += "M" + std::to_string(bin * kBinWidth) + " 0v-" + rounded(height) + "h" +
                std::to_string(kBinWidth) + "V0z";
    }
    return "<g transform=\"translate(" + std::to_string(kMargin) + " " +
           std::to_string(top + kPlaneHeight) + ")\"><title>" + std::to_string(plane.min()) +
           " to " + std::to_string(plane.max()) + "</title>\n<path class=\"axis\" d=\"M0 0h" +
           std::to_string(kBins * kBinWidth) + "\"/>\n<path fill=\"" + color + "\" d=\"" + path +
           "\"/></g>\n";
}

// One histogram per plane, below each other.
std::string drawHistograms(const std::vector<PlaneCounts> &planes) {
    const std::string width = std::to_string(2 * kMargin + static_cast<int>(kBins) * kBinWidth);
    std::string groups;
    int top = kMargin;
    for (std::size_t z = 0; z < planes.size(); ++z, top += kPlaneHeight + kMargin)
        groups += drawPlane(planes[z], top, colorOf(z, planes.size()));
    const std::string height = std::to_string(top);
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width + "\" height=\"" + height +
           "\" viewBox=\"0 0 " + width + " " + height +
           "\">\n<style>.axis { stroke: #999 }</style>\n"
           "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n" +
           groups + "</svg>\n";
}

void writeFile(const std::string &path, const std::string &text) {
    OutputFile target(path);
    const vx::File file = target.duplicate();
    for (std::size_t done = 0; done < text.size();) {
        const int put = vx::writeFile(file.get(), text.data() + done,
                                      static_cast<unsigned>(text.size() - done));
        if (put <= 0) throw systemError(path);
        done += static_cast<std::size_t>(put);
    }
    target.commit();
}

}  // namespace

int measureImages(const BatchOptions &options, const std::string &drawing) {
    const std::vector<Input> inputs = collectInputs(options.inputs, hasImageExtension);
    if (!drawing.empty() && inputs.size() != 1) {
        printError(drawing, "is a drawing of one file, not of " + std::to_string(inputs.size()));
        return kUsage;
    }
    return runBatch(options, inputs,
                    [&](const Input &input, FileReport &report, FileProgress &progress) {
                        const auto source = openPicture(input.path);
                        const auto planes = countElements(input.path, *source, progress);
                        if (!drawing.empty()) writeFile(drawing, drawHistograms(planes));
                        reportStatistics(source->form(), planes, input.path, report);
                    });
}

}  // namespace tool
