// Pictures between image files and PNG, a line at a time: what is held in memory grows with the
// width of a picture and not with its height.

#include "commands.h"
#include "open_image.h"
#include "output_file.h"
#include "picture.h"
#include "png_file.h"
#include "progress_bar.h"
#include "report.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <strings.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tool {

namespace {

constexpr unsigned kMaxPlanes = 4;

// Rows of a file lie from the bottom of the picture up.
class ImageSource : public PictureSource {
public:
    explicit ImageSource(const std::string &path) : path_(path), image_(openImage(path)) {
        if (const std::string error = headerFault(image_.get()); !error.empty()) {
            throw Error(path, error);
        }
        y_ = image_->ySize;
    }

    PictureForm form() const override {
        return {image_->xSize, image_->ySize, image_->zSize,
                static_cast<unsigned>(elementBytesOf(image_.get()))};
    }

    void readLine(std::uint16_t *line) override {
        --y_;
        for (int z = 0; z < image_->zSize; ++z, line += image_->xSize) {
            if (vxImageGetRow(image_.get(), line, y_, z) >= 0) continue;
            throw Error(path_, "plane " + std::to_string(z) + ", row " + std::to_string(y_) + ": " +
                                   imageMessage("cannot be read"));
        }
    }

    const VxImage *image() const { return image_.get(); }

private:
    std::string path_;
    VxUniqueImage image_;
    int y_;
};

// What the library says, and the reason of the system. A write that was cut short has none: the
// next byte tells it.
std::string writeMessage(int file, const char *otherwise) {
    if (errno == 0) {
        [[maybe_unused]] const ssize_t put = write(file, "", 1);
    }
    const std::string reason = errno != 0 ? std::string(": ") + std::strerror(errno) : "";
    return imageMessage(otherwise) + reason;
}

class ImageSink : public PictureSink {
public:
    // `path` is for messages.
    ImageSink(const std::string &path, vx::File file, const PictureForm &form,
              const ImageSettings &settings)
        : path_(path), form_(form), y_(static_cast<int>(form.height)) {
        const unsigned storage = settings.verbatim ? VX_IMAGE_VERBATIM : VX_IMAGE_RUN_LENGTH;
        errno = 0;
        image_.reset(vxImageOpenFd(file.get(), "w", storage | form.elementBytes, 3U, form.width,
                                   form.height, form.planes));
        if (image_ == nullptr) {
            throw Error(path, writeMessage(file.get(), "cannot be written"));
        }
        file.release();
        if (!settings.hostOrder) vxImageUseBigEndian(image_.get());
        if (settings.name) vxImageSetName(image_.get(), settings.name->c_str());
    }

    // What the source says besides its elements, where it is an image file too.
    void takeOver(const VxImage *original, bool nameToo) {
        if (nameToo) vxImageSetName(image_.get(), original->name);
        vxImageSetColormap(image_.get(), original->colormap);
    }

    void writeLine(std::uint16_t *line) override {
        --y_;
        for (int z = 0; z < static_cast<int>(form_.planes); ++z, line += form_.width) {
            errno = 0;
            if (vxImagePutRow(image_.get(), line, y_, z) < 0) {
                throw Error(path_, writeMessage(image_->file, "a row could not be written"));
            }
            if (vxImageRowSize(image_.get()) > VX_IMAGE_MAX_STORED_ROW) {
                throw Error(path_,
                            "a run-length row is longer than can be read back; try --verbatim");
            }
        }
    }

    void finish() override {
        const vx::File file(fcntl(image_->file, F_DUPFD_CLOEXEC, 0));
        errno = 0;
        if (!vxImageFinish(std::move(image_))) {
            throw Error(path_, writeMessage(file.get(), "could not be closed"));
        }
    }

private:
    std::string path_;
    PictureForm form_;
    VxUniqueImage image_;
    int y_;
};

bool isPngName(const std::string &path) {
    return path.size() >= 4 && strcasecmp(path.c_str() + path.size() - 4, ".png") == 0;
}

void checkForm(const std::string &input, const PictureForm &form) {
    if (form.planes > kMaxPlanes) {
        throw Error(input, "has " + std::to_string(form.planes) +
                               " planes, of which 1 to 4 can be converted");
    }
}

// Can an image file take the picture so that it can be read again?
void checkFits(const std::string &input, const PictureForm &form, bool verbatim) {
    if (form.width > VX_IMAGE_MAX_SIDE || form.height > VX_IMAGE_MAX_SIDE) {
        throw Error(input, "is more than 65535 elements wide or high");
    }
    if (!verbatim) return;
    if (static_cast<int>(form.width) > widestVerbatimRow(static_cast<int>(form.elementBytes))) {
        throw Error(input, "has rows too long to be read back when stored verbatim; try --rle");
    }
    const std::uint64_t rowBytes = std::uint64_t{form.width} * form.elementBytes;
    if (VX_IMAGE_FILE_HEAD + rowBytes * (std::uint64_t{form.height} * form.planes - 1) >
        VX_IMAGE_MAX_POSITION) {
        throw Error(input, "takes more than the 4 GiB of an image file; try --rle");
    }
}

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
                   const ImageSettings &settings) {
    const bool fromPng = isPngFile(input), toPng = isPngName(output);
    if (toPng && (fromPng || settings.given)) {
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
    checkForm(input, form);
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
