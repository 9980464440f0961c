#include "jpeg_file.h"

#include "input_file.h"
#include "interleave.h"
#include "report.h"

#include <new>
#include <utility>

namespace tool {

namespace {

constexpr int kQuality = 95;

// A progressive picture is in memory as a whole.
constexpr long kMaxMemory = 1L << 30;

}  // namespace

JpegFile::JpegFile(const std::string &path, vx::File file, const char *mode)
    : path_(path), file_(fdopen(file.get(), mode)) {
    if (file_ == nullptr) throw std::bad_alloc();
    file.release();
    jpeg_std_error(&handlers_);
    handlers_.error_exit = jumpOut;
    handlers_.emit_message = judgeMessage;
}

void JpegFile::jumpOut(j_common_ptr jpeg) {
    auto *self = static_cast<JpegFile *>(jpeg->client_data);
    jpeg->err->format_message(jpeg, self->message_);
    std::longjmp(self->jump_, 1);
}

void JpegFile::judgeMessage(j_common_ptr jpeg, int level) {
    if (level < 0) jumpOut(jpeg);
}

template <typename Calls>
void JpegFile::guarded(Calls calls) {
    if (setjmp(jump_) != 0) throw Error(path_, message_);
    calls();
}

JpegSource::JpegSource(const std::string &path) : JpegFile(path, openRegularFile(path), "rb") {
    jpeg_.err = &handlers_;
    jpeg_.client_data = static_cast<JpegFile *>(this);
    try {
        guarded([this] {
            jpeg_create_decompress(&jpeg_);
            jpeg_.mem->max_memory_to_use = kMaxMemory;
            jpeg_stdio_src(&jpeg_, file_.get());
            jpeg_read_header(&jpeg_, TRUE);
            jpeg_.out_color_space = jpeg_.num_components == 1 ? JCS_GRAYSCALE : JCS_RGB;
            jpeg_start_decompress(&jpeg_);
        });
    } catch (...) {
        jpeg_destroy_decompress(&jpeg_);
        throw;
    }
    form_ = {jpeg_.output_width, jpeg_.output_height,
             static_cast<unsigned>(jpeg_.output_components), 1};
    bytes_.resize(form_.lineElements());
}

void JpegSource::readLine(std::uint16_t *line) {
    guarded([this] {
        JSAMPROW row = bytes_.data();
        jpeg_read_scanlines(&jpeg_, &row, 1);
    });
    separate(bytes_.data(), form_, line);
}

void JpegSource::finish() {
    guarded([this] { jpeg_finish_decompress(&jpeg_); });
}

JpegSink::JpegSink(const std::string &path, vx::File file, const PictureForm &form)
    : JpegFile(path, std::move(file), "wb") {
    if (form.elementBytes != 1 || (form.planes != 1 && form.planes != 3)) {
        throw Error(path, "JPEG takes 1 or 3 planes of 8 bits; see --planes and --depth");
    }
    form_ = form;
    bytes_.resize(form.lineElements());
    jpeg_.err = &handlers_;
    jpeg_.client_data = static_cast<JpegFile *>(this);
    try {
        guarded([this] {
            jpeg_create_compress(&jpeg_);
            jpeg_stdio_dest(&jpeg_, file_.get());
            jpeg_.image_width = form_.width;
            jpeg_.image_height = form_.height;
            jpeg_.input_components = static_cast<int>(form_.planes);
            jpeg_.in_color_space = form_.planes == 1 ? JCS_GRAYSCALE : JCS_RGB;
            jpeg_set_defaults(&jpeg_);
            jpeg_set_quality(&jpeg_, kQuality, TRUE);
            // Colours as fine as the light.
            jpeg_.comp_info[0].h_samp_factor = jpeg_.comp_info[0].v_samp_factor = 1;
            jpeg_start_compress(&jpeg_, TRUE);
        });
    } catch (...) {
        jpeg_destroy_compress(&jpeg_);
        throw;
    }
}

void JpegSink::writeLine(std::uint16_t *line) {
    interleave(line, form_, bytes_.data());
    guarded([this] {
        JSAMPROW row = bytes_.data();
        jpeg_write_scanlines(&jpeg_, &row, 1);
    });
}

void JpegSink::finish() {
    guarded([this] { jpeg_finish_compress(&jpeg_); });
    if (std::fclose(file_.release()) != 0) throw systemError(path_);
}

}  // namespace tool
