#include "picture_file.h"

#include "open_image.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace tool {

namespace {

constexpr unsigned kMaxPlanes = 4;

int rowOf(int line, int rows, bool flipped) {
    return flipped ? line : rows - 1 - line;
}

// What the library says, and the reason of the system. A write that was cut short has none: the
// next byte tells it.
std::string writeMessage(int file, const char *otherwise) {
    if (errno == 0) {
        [[maybe_unused]] const ssize_t put = write(file, "", 1);
    }
    const std::string reason = errno != 0 ? std::string(": ") + std::strerror(errno) : "";
    return imageMessage(otherwise) + reason;
}

}  // namespace

ImageSource::ImageSource(const std::string &path, bool flipped)
    : path_(path), image_(openImage(path)), flipped_(flipped) {
    if (const std::string error = headerFault(image_.get()); !error.empty()) {
        throw Error(path, error);
    }
}

PictureForm ImageSource::form() const {
    return {image_->xSize, image_->ySize, image_->zSize,
            static_cast<unsigned>(elementBytesOf(image_.get()))};
}

void ImageSource::readLine(std::uint16_t *line) {
    const int y = rowOf(line_++, image_->ySize, flipped_);
    for (int z = 0; z < image_->zSize; ++z, line += image_->xSize) {
        if (vxImageGetRow(image_.get(), line, y, z) >= 0) continue;
        throw Error(path_, "plane " + std::to_string(z) + ", row " + std::to_string(y) + ": " +
                               imageMessage("cannot be read"));
    }
}

ImageSink::ImageSink(const std::string &path, vx::File file, const PictureForm &form,
                     const ImageSettings &settings, bool flipped)
    : path_(path), form_(form), flipped_(flipped) {
    const unsigned storage = settings.verbatim ? VX_IMAGE_VERBATIM : VX_IMAGE_RUN_LENGTH;
    errno = 0;
    image_.reset(vxImageOpenFd(file.get(), "w", storage | form.elementBytes, 3U, form.width,
                               form.height, form.planes));
    if (image_ == nullptr) throw Error(path, writeMessage(file.get(), "cannot be written"));
    file.release();
    if (!settings.hostOrder) vxImageUseBigEndian(image_.get());
    if (settings.name) vxImageSetName(image_.get(), settings.name->c_str());
}

void ImageSink::writeLine(std::uint16_t *line) {
    const int y = rowOf(line_++, static_cast<int>(form_.height), flipped_);
    for (int z = 0; z < static_cast<int>(form_.planes); ++z, line += form_.width) {
        errno = 0;
        if (vxImagePutRow(image_.get(), line, y, z) < 0) {
            throw Error(path_, writeMessage(image_->file, "a row could not be written"));
        }
        if (vxImageRowSize(image_.get()) > VX_IMAGE_MAX_STORED_ROW) {
            throw RowTooLong(path_,
                             "a run-length row is longer than can be read back; try --verbatim");
        }
    }
}

void ImageSink::finish() {
    const vx::File file(fcntl(image_->file, F_DUPFD_CLOEXEC, 0));
    errno = 0;
    if (!vxImageFinish(std::move(image_))) {
        throw Error(path_, writeMessage(file.get(), "could not be closed"));
    }
}

std::unique_ptr<PictureSource> openPicture(const std::string &path) {
    const Format format = formatOfFile(path);
    if (isForeign(format)) return openForeign(format, path);
    return std::make_unique<ImageSource>(path);
}

std::unique_ptr<PictureSink> createPicture(const std::string &path, vx::File file,
                                           const PictureForm &form) {
    checkPlanes(path, form);
    const Format format = formatOfName(path);
    if (isForeign(format)) return createForeign(format, path, std::move(file), form);
    checkFits(path, form, false);
    return std::make_unique<ImageSink>(path, std::move(file), form, ImageSettings());
}

void checkPlanes(const std::string &input, const PictureForm &form) {
    if (form.planes > kMaxPlanes) {
        throw Error(input, "has " + std::to_string(form.planes) +
                               " planes, of which 1 to 4 can be converted");
    }
}

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

bool fitsVerbatim(const PictureForm &form) {
    try {
        checkFits({}, form, true);
        return true;
    } catch (const Error &) {
        return false;
    }
}

std::uint64_t verbatimFileBytes(const PictureForm &form) {
    return VX_IMAGE_FILE_HEAD +
           std::uint64_t{form.width} * form.elementBytes * form.height * form.planes;
}

}  // namespace tool
