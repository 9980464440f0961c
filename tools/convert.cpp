// Pictures between image files and foreign formats, a line at a time: what is held in memory grows
// with the width of a picture and not with its height.

#include "convert.h"

#include "commands.h"
#include "output_file.h"
#include "picture_file.h"
#include "picture_filters.h"
#include "progress_bar.h"
#include "report.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace tool {

namespace {

namespace fs = std::filesystem;

// What cannot go together, whatever is in the files.
class UsageError : public Error {
public:
    using Error::Error;
};

void checkUsage(const ConvertOptions &options, const std::string &output, bool fromForeign) {
    const Format format = formatOfName(output);
    if (isForeign(format) && fromForeign) {
        throw UsageError(output, "both files are foreign, and one of them has to be an image file");
    }
    const bool settings = options.storage != Storage::kSmaller || options.hostOrder || options.name;
    if (isForeign(format) && settings) {
        throw UsageError(output, "a foreign file has no storage, byte order or name to set");
    }
    if (format == Format::kUnknown) {
        throw UsageError(output, "files of this extension cannot be written, only " +
                                     writableExtensions() + ", or an image without any extension");
    }
    if (options.name.value_or("").size() > VX_IMAGE_MAX_NAME) {
        throw UsageError(*options.name, "is longer than the 79 bytes of a name");
    }
}

// One conversion, which may have to write its output a second time.
class Conversion {
public:
    Conversion(const std::string &input, const std::string &output, const ConvertOptions &options,
               FileProgress &progress)
        : input_(input),
          output_(output),
          options_(options),
          progress_(progress),
          from_(formatOfFile(input)),
          to_(formatOfName(output)) {
        checkUsage(options, output, isForeign(from_));
    }

    void run() {
        std::unique_ptr<PictureSource> source = openSource();
        const PictureForm form = source->form();
        checkPlanes(input_, form);
        if (!isForeign(to_)) checkFits(input_, form, options_.storage == Storage::kVerbatim);
        if (!options_.folder.empty()) createFolders();
        OutputFile target(output_);
        progress_.start(form.height);
        if (isForeign(to_)) {
            copyLines(*source, *createForeign(to_, output_, target.duplicate(), form));
        } else if (options_.storage == Storage::kSmaller) {
            writeSmaller(target, *source);
        } else {
            writeImage(target, *source, options_.storage == Storage::kVerbatim);
        }
        target.commit();
    }

private:
    std::unique_ptr<PictureSource> openSource() {
        std::unique_ptr<PictureSource> source;
        if (isForeign(from_)) {
            source = openForeign(from_, input_);
        } else {
            auto image = std::make_unique<ImageSource>(input_, options_.flipped);
            noteHeader(image->image());
            source = std::move(image);
        }
        if (!options_.planes.empty()) {
            source = withPlanes(input_, std::move(source), options_.planes);
        }
        if (options_.depth != 0) source = withDepth(std::move(source), options_.depth / 8);
        return source;
    }

    void noteHeader(const VxImage *image) {
        name_ = image->name;
        colormap_ = image->colormap;
        if (isForeign(to_) && colormap_ != 0) {
            throw Error(input_,
                        "has the colormap " + std::to_string(colormap_) +
                            ": its elements are no plain colours, as other formats hold them");
        }
    }

    void createFolders() const {
        std::error_code error;
        const fs::path folder = fs::path(output_).parent_path();
        fs::create_directories(folder, error);
        if (error) throw Error(folder.string(), error.message());
    }

    void copyLines(PictureSource &source, PictureSink &sink) {
        const PictureForm form = source.form();
        std::vector<std::uint16_t> line(form.lineElements());
        for (unsigned i = 0; i < form.height; ++i) {
            source.readLine(line.data());
            sink.writeLine(line.data());
            progress_.advance();
        }
        source.finish();
        sink.finish();
    }

    void writeImage(const OutputFile &target, PictureSource &source, bool verbatim) {
        const ImageSettings settings = {verbatim, options_.hostOrder,
                                        options_.name ? options_.name : name_};
        ImageSink sink(output_, target.duplicate(), source.form(), settings,
                       isForeign(from_) && options_.flipped);
        if (!isForeign(from_)) sink.setColormap(colormap_);
        copyLines(source, sink);
    }

    // Runs of equal elements are short in some pictures, and cost more than they save.
    void writeSmaller(OutputFile &target, PictureSource &source) {
        const std::uint64_t verbatimBytes = verbatimFileBytes(source.form());
        const bool verbatimFits = fitsVerbatim(source.form());
        try {
            writeImage(target, source, false);
            if (!verbatimFits || target.size() <= verbatimBytes) return;
        } catch (const RowTooLong &) {
            if (!verbatimFits) throw;
        }
        target.clear();
        writeImage(target, *openSource(), true);
    }

    const std::string &input_, &output_;
    const ConvertOptions &options_;
    FileProgress &progress_;
    Format from_, to_;
    std::optional<std::string> name_;
    std::uint32_t colormap_ = 0;
};

int convertOne(const ConvertOptions &options) {
    const std::string &input = options.batch.inputs.names[0];
    ProgressBar bar(input, 1);
    FileProgress progress(bar);
    try {
        Conversion(input, options.batch.inputs.names[1], options, progress).run();
    } catch (const UsageError &error) {
        printError(error.subject(), error.what());
        return kUsage;
    }
    return kDone;
}

// ---- Into a folder

bool isForeignName(const std::string &path) {
    return isForeign(formatOfName(path));
}

bool canBeConverted(const std::string &name) {
    return hasImageExtension(name) || isForeignName(name);
}

std::string outputOf(const Input &input, const ConvertOptions &options) {
    const std::string automatic = isForeignName(input.path) ? "sgi" : "png";
    const std::string extension = options.format.empty() ? automatic : options.format;
    fs::path place = fs::path(options.folder) / input.place;
    if (extension == "sgi" && hasImageExtension(input.path)) return place.string();
    if (canBeConverted(input.path)) place.replace_extension();
    return place.string() + "." + extension;
}

// Two inputs for one output are faults of the later one.
void findClashes(std::vector<Input> &inputs, const ConvertOptions &options) {
    std::map<std::string, std::string> sources;
    for (Input &input : inputs) {
        if (!input.fault.empty()) continue;
        const auto [place, isNew] = sources.emplace(outputOf(input, options), input.path);
        if (isNew) continue;
        input.fault = "would become " + place->first + ", as " + place->second + " does";
    }
}

bool isUpToDate(const std::string &input, const std::string &output) {
    std::error_code none;
    const fs::file_time_type inputTime = fs::last_write_time(input, none);
    if (none) return false;
    const fs::file_time_type outputTime = fs::last_write_time(output, none);
    return !none && outputTime >= inputTime;
}

int convertMany(const ConvertOptions &options) {
    const NameFilter wanted =
        isForeignName("x." + options.format) ? hasImageExtension : canBeConverted;
    std::vector<Input> inputs = collectInputs(options.batch.inputs, wanted);
    findClashes(inputs, options);
    const auto convert = [&](const Input &input, FileReport &report, FileProgress &progress) {
        const std::string output = outputOf(input, options);
        const bool needed = options.always || !isUpToDate(input.path, output);
        if (needed) Conversion(input.path, output, options, progress).run();
        setText(report.json, "output", output);
        report.json["written"] = needed;
        report.print(printable(output) + (needed ? ": written" : ": up to date"));
    };
    return runBatch(options.batch, inputs, convert);
}

}  // namespace

int convertPictures(const ConvertOptions &options) {
    return options.folder.empty() ? convertOne(options) : convertMany(options);
}

}  // namespace tool
