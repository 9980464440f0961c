// Pictures between image files and PNG, a line at a time: what is held in memory grows with the
// width of a picture and not with its height.

#include "commands.h"
#include "output_file.h"
#include "picture_file.h"
#include "png_file.h"
#include "progress_bar.h"
#include "report.h"

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace tool {

namespace {

void copyLines(const std::string &label, PictureSource &source, PictureSink &sink) {
    const PictureForm form = source.form();
    std::vector<std::uint16_t> line(form.lineElements());
    ProgressBar bar(label, 1);
    FileProgress progress(bar);
    progress.start(form.height);
    for (unsigned i = 0; i < form.height; ++i) {
        source.readLine(line.data());
        sink.writeLine(line.data());
        progress.advance();
    }
    source.finish();
    sink.finish();
}

}  // namespace

int convertPicture(const std::string &input, const std::string &output,
                   const ImageSettings &settings, bool settingsGiven) {
    const bool fromPng = isPngFile(input), toPng = isPngName(output);
    if (toPng && (fromPng || settingsGiven)) {
        printError(output, fromPng ? "both files are PNG"
                                   : "a PNG file has no storage, byte order or name to set");
        return kUsage;
    }
    if (settings.name.value_or("").size() > VX_IMAGE_MAX_NAME) {
        printError(*settings.name, "is longer than the 79 bytes of a name");
        return kUsage;
    }
    std::unique_ptr<PictureSource> source;
    const VxImage *original = nullptr;
    if (fromPng) {
        source = std::make_unique<PngSource>(input);
    } else {
        auto image = std::make_unique<ImageSource>(input);
        original = image->image();
        source = std::move(image);
    }
    const PictureForm form = source->form();
    checkPlanes(input, form);
    if (toPng && original != nullptr && original->colormap != 0) {
        throw Error(input, "has the colormap " + std::to_string(original->colormap) +
                               ": its elements are no plain colours, as a PNG file holds them");
    }
    if (!toPng) checkFits(input, form, settings.verbatim);

    OutputFile target(output);
    std::unique_ptr<PictureSink> sink;
    if (toPng) {
        sink = std::make_unique<PngSink>(output, target.duplicate(), form);
    } else {
        auto image = std::make_unique<ImageSink>(output, target.duplicate(), form, settings);
        if (original != nullptr) image->takeOver(original, !settings.name);
        sink = std::move(image);
    }
    copyLines(input, *source, *sink);
    target.commit();
    return kDone;
}

}  // namespace tool
