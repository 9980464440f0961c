// PNG files by way of libpng.
#ifndef TOOLS_PNG_FILE_H
#define TOOLS_PNG_FILE_H

#include "picture.h"
#include "platform/files.h"

#include <cstdio>
#include <memory>
#include <png.h>
#include <string>
#include <vector>

namespace tool {

struct FileCloser {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

// What both directions share: the file, the messages, and a line as the file has it.
class PngFile {
public:
    PngFile(const std::string &path, vx::File file, const char *mode);

protected:
    // Runs calls of libpng, which leaves them by a jump when there is error: nothing in them may
    // need a destructor.
    template <typename Calls>
    void guarded(Calls calls);

    // What libpng reads and writes by, with the reason when that fails.
    static void readBytes(png_structp png, png_bytep bytes, std::size_t count);
    static void writeBytes(png_structp png, png_bytep bytes, std::size_t count);
    static void flushBytes(png_structp png);

    [[noreturn]] static void jumpOut(png_structp png, png_const_charp text);
    static void passOver(png_structp, png_const_charp) {}  // of warnings

    std::string path_;
    FileHandle file_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    PictureForm form_ = {};
    std::vector<png_byte> bytes_;  // planes interleaved, the high byte first

private:
    char message_[128] = "";
};

// Palettes, transparent colours and elements of less than 8 bits are expanded. The lines of an
// interlaced picture come in seven passes: all of it is held in memory, up to a limit.
class PngSource : public PictureSource, private PngFile {
public:
    explicit PngSource(const std::string &path);
    ~PngSource() override;

    PictureForm form() const override { return form_; }
    void readLine(std::uint16_t *line) override;
    void finish() override;

private:
    void readHead();
    void readPasses();

    std::vector<png_byte> picture_;  // of an interlaced one
    std::size_t nextLine_ = 0;
    int passes_ = 1;
};

class PngSink : public PictureSink, private PngFile {
public:
    // `path` is for messages.
    PngSink(const std::string &path, vx::File file, const PictureForm &form);
    ~PngSink() override;

    void writeLine(std::uint16_t *line) override;
    void finish() override;
};

}  // namespace tool

#endif
