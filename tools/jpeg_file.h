// JPEG files by way of libjpeg.
#ifndef TOOLS_JPEG_FILE_H
#define TOOLS_JPEG_FILE_H

#include "picture.h"
#include "png_file.h"

#include <csetjmp>
#include <cstdio>
#include <jpeglib.h>
#include <string>
#include <vector>

namespace tool {

// What both directions share: the file, the messages, and a line as the file has it.
class JpegFile {
protected:
    JpegFile(const std::string &path, vx::File file, const char *mode);

    // Runs calls of libjpeg, which leaves them by a jump when there is an error: nothing in them
    // may need a destructor.
    template <typename Calls>
    void guarded(Calls calls);

    std::string path_;
    FileHandle file_;
    PictureForm form_ = {};
    std::vector<JSAMPLE> bytes_;
    jpeg_error_mgr handlers_ = {};

private:
    [[noreturn]] static void jumpOut(j_common_ptr jpeg);
    static void judgeMessage(j_common_ptr jpeg, int level);

    std::jmp_buf jump_;
    char message_[JMSG_LENGTH_MAX] = "";
};

// Grey and colour pictures. Damage is an error, though the library would fill the gaps.
class JpegSource : public PictureSource, private JpegFile {
public:
    explicit JpegSource(const std::string &path);
    ~JpegSource() override { jpeg_destroy_decompress(&jpeg_); }

    PictureForm form() const override { return form_; }
    void readLine(std::uint16_t *line) override;
    void finish() override;

private:
    jpeg_decompress_struct jpeg_ = {};
};

class JpegSink : public PictureSink, private JpegFile {
public:
    // `path` is for messages.
    JpegSink(const std::string &path, vx::File file, const PictureForm &form);
    ~JpegSink() override { jpeg_destroy_compress(&jpeg_); }

    void writeLine(std::uint16_t *line) override;
    void finish() override;

private:
    jpeg_compress_struct jpeg_ = {};
};

}  // namespace tool

#endif
