#include "png_file.h"

#include "input_file.h"
#include "report.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <unistd.h>

namespace tool {

bool isPngFile(const std::string &path) {
    const int file = openRegularFile(path);
    png_byte signature[8];
    const ssize_t got = read(file, signature, sizeof signature);
    const int failure = errno;
    close(file);
    if (got >= 0) return got == 8 && png_sig_cmp(signature, 0, sizeof signature) == 0;
    errno = failure;
    throw systemTrouble(path);
}

PngFile::PngFile(const std::string &path, int descriptor, const char *mode)
    : m_path(path), m_file(fdopen(descriptor, mode)) {
    if (m_file != nullptr) return;
    close(descriptor);
    throw std::bad_alloc();
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
    std::snprintf(self->m_message, sizeof self->m_message, "%s", text);
    png_longjmp(png, 1);
}

template <typename Calls>
void PngFile::guarded(Calls calls) {
    if (m_png == nullptr || m_info == nullptr) throw std::bad_alloc();
    // The work runs in a frame of its own, so that nothing here changes before the jump.
    if (setjmp(png_jmpbuf(m_png)) != 0) throw Trouble(m_path, m_message);
    calls();
}

PngSource::PngSource(const std::string &path) : PngFile(path, openRegularFile(path), "rb") {
    m_png = png_create_read_struct(PNG_LIBPNG_VER_STRING, static_cast<PngFile *>(this), jumpOut,
                                   passOver);
    if (m_png != nullptr) m_info = png_create_info_struct(m_png);
    try {
        readHead();
    } catch (...) {
        png_destroy_read_struct(&m_png, &m_info, nullptr);
        throw;
    }
}

PngSource::~PngSource() {
    png_destroy_read_struct(&m_png, &m_info, nullptr);
}

void PngSource::readHead() {
    guarded([this] {
        png_set_read_fn(m_png, m_file.get(), readBytes);
        png_read_info(m_png, m_info);
        png_set_expand(m_png);
        png_read_update_info(m_png, m_info);
    });
    if (png_get_interlace_type(m_png, m_info) != PNG_INTERLACE_NONE) {
        throw Trouble(m_path, "is interlaced, and only pictures that are not can be converted");
    }
    m_form = {png_get_image_width(m_png, m_info), png_get_image_height(m_png, m_info),
              png_get_channels(m_png, m_info), png_get_bit_depth(m_png, m_info) / 8U};
    m_bytes.resize(m_form.lineElements() * m_form.elementBytes);
}

void PngSource::readLine(std::uint16_t *line) {
    guarded([this] { png_read_row(m_png, m_bytes.data(), nullptr); });
    const png_byte *byte = m_bytes.data();
    for (unsigned x = 0; x < m_form.width; ++x) {
        for (std::size_t z = 0; z < m_form.planes; ++z) {
            unsigned element = *byte++;
            if (m_form.elementBytes == 2) element = element << 8 | *byte++;
            line[z * m_form.width + x] = static_cast<std::uint16_t>(element);
        }
    }
}

void PngSource::finish() {
    guarded([this] { png_read_end(m_png, nullptr); });
}

PngSink::PngSink(const std::string &path, int descriptor, const PictureForm &form)
    : PngFile(path, descriptor, "wb") {
    static constexpr int kColorTypes[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA,
                                          PNG_COLOR_TYPE_RGB, PNG_COLOR_TYPE_RGB_ALPHA};
    m_form = form;
    m_bytes.resize(form.lineElements() * form.elementBytes);
    m_png = png_create_write_struct(PNG_LIBPNG_VER_STRING, static_cast<PngFile *>(this), jumpOut,
                                    passOver);
    if (m_png != nullptr) m_info = png_create_info_struct(m_png);
    try {
        guarded([this] {
            png_set_write_fn(m_png, m_file.get(), writeBytes, flushBytes);
            png_set_IHDR(m_png, m_info, m_form.width, m_form.height,
                         static_cast<int>(m_form.elementBytes * 8), kColorTypes[m_form.planes - 1],
                         PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
            png_write_info(m_png, m_info);
        });
    } catch (...) {
        png_destroy_write_struct(&m_png, &m_info);
        throw;
    }
}

PngSink::~PngSink() {
    png_destroy_write_struct(&m_png, &m_info);
}

void PngSink::writeLine(std::uint16_t *line) {
    png_byte *byte = m_bytes.data();
    for (unsigned x = 0; x < m_form.width; ++x) {
        for (std::size_t z = 0; z < m_form.planes; ++z) {
            const std::uint16_t element = line[z * m_form.width + x];
            if (m_form.elementBytes == 2) *byte++ = static_cast<png_byte>(element >> 8);
            *byte++ = static_cast<png_byte>(element);
        }
    }
    guarded([this] { png_write_row(m_png, m_bytes.data()); });
}

void PngSink::finish() {
    guarded([this] { png_write_end(m_png, m_info); });
    if (std::fclose(m_file.release()) != 0) throw systemTrouble(m_path);
}

}  // namespace tool
