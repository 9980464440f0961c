#include "png_file.h"

#include "input_file.h"
#include "report.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

namespace tool {

namespace {

constexpr std::size_t kMaxInterlacedBytes = std::size_t{1} << 30;

}  // namespace

PngFile::PngFile(const std::string &path, vx::File file, const char *mode)
    : path_(path), file_(fdopen(file.get(), mode)) {
    if (file_ == nullptr) throw std::bad_alloc();
    file.release();
}

void PngFile::readBytes(png_structp png, png_bytep bytes, std::size_t count) {
    auto *file = static_cast<std::FILE *>(png_get_io_ptr(png));
    if (std::fread(bytes, 1, count, file) == count) return;
    png_error(png, std::ferror(file) != 0 ? std::strerror(errno) : "the file ends too early");
}

void PngFile::writeBytes(png_structp png, png_bytep bytes, std::size_t count) {
    auto *file = static_cast<std::FILE *>(png_get_io_ptr(png));
    if (std::fwrite(bytes, 1, count, file) != count) png_error(png, std::strerror(errno));
}

void PngFile::flushBytes(png_structp png) {
    if (std::fflush(static_cast<std::FILE *>(png_get_io_ptr(png))) != 0) {
        png_error(png, std::strerror(errno));
    }
}

void PngFile::jumpOut(png_structp png, png_const_charp text) {
    auto *self = static_cast<PngFile *>(png_get_error_ptr(png));
    std::snprintf(self->message_, sizeof self->message_, "%s", text);
    png_longjmp(png, 1);
}

template <typename Calls>
void PngFile::guarded(Calls calls) {
    if (png_ == nullptr || info_ == nullptr) throw std::bad_alloc();
    // The work runs in a frame of its own, so that nothing here changes before the jump.
    if (setjmp(png_jmpbuf(png_)) != 0) throw Error(path_, message_);
    calls();
}

PngSource::PngSource(const std::string &path) : PngFile(path, openRegularFile(path), "rb") {
    png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, static_cast<PngFile *>(this), jumpOut,
                                  passOver);
    if (png_ != nullptr) info_ = png_create_info_struct(png_);
    try {
        readHead();
    } catch (...) {
        png_destroy_read_struct(&png_, &info_, nullptr);
        throw;
    }
}

PngSource::~PngSource() {
    png_destroy_read_struct(&png_, &info_, nullptr);
}

void PngSource::readHead() {
    guarded([this] {
        png_set_read_fn(png_, file_.get(), readBytes);
        png_read_info(png_, info_);
        png_set_expand(png_);
        passes_ = png_set_interlace_handling(png_);
        png_read_update_info(png_, info_);
    });
    form_ = {png_get_image_width(png_, info_), png_get_image_height(png_, info_),
             png_get_channels(png_, info_), png_get_bit_depth(png_, info_) / 8U};
    bytes_.resize(form_.lineElements() * form_.elementBytes);
}

void PngSource::readPasses() {
    if (bytes_.size() > kMaxInterlacedBytes / form_.height) {
        throw Error(path_, "is interlaced, and takes more than the 1 GiB of memory for such files");
    }
    picture_.resize(bytes_.size() * form_.height);
    guarded([this] {
        for (int pass = 0; pass < passes_; ++pass) {
            for (std::size_t y = 0; y < form_.height; ++y)
                png_read_row(png_, picture_.data() + y * bytes_.size(), nullptr);
        }
    });
}

void PngSource::readLine(std::uint16_t *line) {
    const png_byte *byte = bytes_.data();
    if (passes_ > 1) {
        if (picture_.empty()) readPasses();
        byte = picture_.data() + nextLine_++ * bytes_.size();
    } else {
        guarded([this] { png_read_row(png_, bytes_.data(), nullptr); });
    }
    for (unsigned x = 0; x < form_.width; ++x) {
        for (std::size_t z = 0; z < form_.planes; ++z) {
            unsigned element = *byte++;
            if (form_.elementBytes == 2) element = element << 8 | *byte++;
            line[z * form_.width + x] = static_cast<std::uint16_t>(element);
        }
    }
}

void PngSource::finish() {
    guarded([this] { png_read_end(png_, nullptr); });
}

PngSink::PngSink(const std::string &path, vx::File file, const PictureForm &form)
    : PngFile(path, std::move(file), "wb") {
    static constexpr int kColorTypes[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA,
                                          PNG_COLOR_TYPE_RGB, PNG_COLOR_TYPE_RGB_ALPHA};
    form_ = form;
    bytes_.resize(form.lineElements() * form.elementBytes);
    png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, static_cast<PngFile *>(this), jumpOut,
                                   passOver);
    if (png_ != nullptr) info_ = png_create_info_struct(png_);
    try {
        guarded([this] {
            png_set_write_fn(png_, file_.get(), writeBytes, flushBytes);
            png_set_IHDR(png_, info_, form_.width, form_.height,
                         static_cast<int>(form_.elementBytes * 8), kColorTypes[form_.planes - 1],
                         PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
            png_write_info(png_, info_);
        });
    } catch (...) {
        png_destroy_write_struct(&png_, &info_);
        throw;
    }
}

PngSink::~PngSink() {
    png_destroy_write_struct(&png_, &info_);
}

void PngSink::writeLine(std::uint16_t *line) {
    png_byte *byte = bytes_.data();
    for (unsigned x = 0; x < form_.width; ++x) {
        for (std::size_t z = 0; z < form_.planes; ++z) {
            const std::uint16_t element = line[z * form_.width + x];
            if (form_.elementBytes == 2) *byte++ = static_cast<png_byte>(element >> 8);
            *byte++ = static_cast<png_byte>(element);
        }
    }
    guarded([this] { png_write_row(png_, bytes_.data()); });
}

void PngSink::finish() {
    guarded([this] { png_write_end(png_, info_); });
    if (std::fclose(file_.release()) != 0) throw systemError(path_);
}

}  // namespace tool
