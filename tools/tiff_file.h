// TIFF files by way of libtiff.
#ifndef TOOLS_TIFF_FILE_H
#define TOOLS_TIFF_FILE_H

#include "picture.h"
#include "platform/files.h"

#include <memory>
#include <string>
#include <tiffio.h>
#include <vector>

namespace tool {

struct TiffCloser {
    void operator()(TIFF *tiff) const { TIFFClose(tiff); }
};

class TiffFile {
protected:
    TiffFile(const std::string &path, vx::File file, const char *mode);

    // Throws Error with what the library said.
    [[noreturn]] void fail(const char *otherwise) const;

    std::string path_;
    std::string message_;  // before the handle, which may add to it when it closes
    std::unique_ptr<TIFF, TiffCloser> tiff_;
    PictureForm form_ = {};
    std::vector<std::uint8_t> bytes_;

private:
    static int keepMessage(TIFF *, void *self, const char *, const char *format, va_list values);
};

// The first picture of a file, with whole elements of 8 or 16 bits in strips.
class TiffSource : public PictureSource, private TiffFile {
public:
    explicit TiffSource(const std::string &path);

    PictureForm form() const override { return form_; }
    void readLine(std::uint16_t *line) override;

private:
    void readHead();

    bool separatePlanes_ = false;
    std::uint32_t line_ = 0;
};

class TiffSink : public PictureSink, private TiffFile {
public:
    // `path` is for messages.
    TiffSink(const std::string &path, vx::File file, const PictureForm &form);

    void writeLine(std::uint16_t *line) override;
    void finish() override;

private:
    std::uint32_t line_ = 0;
};

}  // namespace tool

#endif
