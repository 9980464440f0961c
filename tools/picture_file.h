// Pictures in files of any format.
#ifndef TOOLS_PICTURE_FILE_H
#define TOOLS_PICTURE_FILE_H

#include "picture_format.h"
#include "report.h"

#include <vxhandles.h>

#include <memory>
#include <optional>
#include <string>

namespace tool {

// The settings of a new image file; a PNG file has none.
struct ImageSettings {
    bool verbatim = false;
    bool hostOrder = false;
    std::optional<std::string> name;
};

// Rows of a file lie from the bottom of the picture up, or the other way round where the picture is
// to be turned over.
class ImageSource : public PictureSource {
public:
    explicit ImageSource(const std::string &path, bool flipped = false);

    PictureForm form() const override;
    void readLine(std::uint16_t *line) override;

    const VxImage *image() const { return image_.get(); }

private:
    std::string path_;
    VxUniqueImage image_;
    int line_ = 0;
    bool flipped_;
};

// A row that run-length encoding made longer than can be read back.
class RowTooLong : public Error {
public:
    using Error::Error;
};

class ImageSink : public PictureSink {
public:
    // `path` is for messages.
    ImageSink(const std::string &path, vx::File file, const PictureForm &form,
              const ImageSettings &settings, bool flipped = false);

    void setColormap(std::uint32_t colormap) { vxImageSetColormap(image_.get(), colormap); }

    void writeLine(std::uint16_t *line) override;
    void finish() override;

private:
    std::string path_;
    PictureForm form_;
    VxUniqueImage image_;
    int line_ = 0;
    bool flipped_;
};

// By the content of the file.
std::unique_ptr<PictureSource> openPicture(const std::string &path);

// By its name. `path` is for messages too.
std::unique_ptr<PictureSink> createPicture(const std::string &path, vx::File file,
                                           const PictureForm &form);

// Throws Error for more planes than other formats and readers of image files know.
void checkPlanes(const std::string &input, const PictureForm &form);

// Throws Error unless an image file can take the picture so that it can be read again.
void checkFits(const std::string &input, const PictureForm &form, bool verbatim);
bool fitsVerbatim(const PictureForm &form);

std::uint64_t verbatimFileBytes(const PictureForm &form);

}  // namespace tool

#endif
