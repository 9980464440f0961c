#include "tiff_file.h"

#include "input_file.h"
#include "interleave.h"
#include "report.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <utility>

namespace tool {

namespace {

struct OptionsCloser {
    void operator()(TIFFOpenOptions *options) const { TIFFOpenOptionsFree(options); }
};

int passOver(TIFF *, void *, const char *, const char *, va_list) {
    return 1;
}

std::uint16_t numberOf(TIFF *tiff, std::uint32_t tag) {
    std::uint16_t number = 0;
    TIFFGetFieldDefaulted(tiff, tag, &number);
    return number;
}

}  // namespace

TiffFile::TiffFile(const std::string &path, vx::File file, const char *mode) : path_(path) {
    const std::unique_ptr<TIFFOpenOptions, OptionsCloser> options(TIFFOpenOptionsAlloc());
    if (options == nullptr) throw std::bad_alloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), keepMessage, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), passOver, nullptr);
    tiff_.reset(TIFFFdOpenExt(file.get(), path.c_str(), mode, options.get()));
    if (tiff_ == nullptr) fail("cannot be opened as a TIFF file");
    file.release();
}

int TiffFile::keepMessage(TIFF *, void *self, const char *, const char *format, va_list values) {
    std::string &message = static_cast<TiffFile *>(self)->message_;
    char text[256];
    // The first message names the cause.
    if (message.empty() && std::vsnprintf(text, sizeof text, format, values) > 0) message = text;
    return 1;
}

void TiffFile::fail(const char *otherwise) const {
    throw Error(path_, message_.empty() ? otherwise : message_);
}

TiffSource::TiffSource(const std::string &path) : TiffFile(path, openRegularFile(path), "rm") {
    readHead();
}

void TiffSource::readHead() {
    TIFF *tiff = tiff_.get();
    std::uint32_t width = 0, height = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
    const unsigned bits = numberOf(tiff, TIFFTAG_BITSPERSAMPLE);
    const unsigned planes = numberOf(tiff, TIFFTAG_SAMPLESPERPIXEL);
    const unsigned kind = numberOf(tiff, TIFFTAG_PHOTOMETRIC);
    if (bits != 8 && bits != 16) {
        throw Error(path_, "has elements of " + std::to_string(bits) + " bits, not 8 or 16");
    }
    if (numberOf(tiff, TIFFTAG_SAMPLEFORMAT) != SAMPLEFORMAT_UINT ||
        (kind != PHOTOMETRIC_MINISBLACK && kind != PHOTOMETRIC_RGB)) {
        throw Error(path_, "is neither grey nor RGB in whole numbers");
    }
    if (TIFFIsTiled(tiff) != 0) throw Error(path_, "is stored in tiles, and only strips are read");
    if (numberOf(tiff, TIFFTAG_ORIENTATION) != ORIENTATION_TOPLEFT) {
        throw Error(path_, "does not begin at the top left");
    }
    separatePlanes_ = numberOf(tiff, TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE;
    form_ = {width, height, planes, bits / 8};
    const std::uint64_t lineBytes =
        std::uint64_t{width} * form_.elementBytes * (separatePlanes_ ? 1 : planes);
    if (width == 0 || height == 0 || TIFFScanlineSize64(tiff) != lineBytes) {
        fail("has a header that contradicts itself");
    }
    bytes_.resize(lineBytes);
}

void TiffSource::readLine(std::uint16_t *line) {
    const unsigned parts = separatePlanes_ ? form_.planes : 1;
    PictureForm part = form_;
    part.planes /= parts;
    for (unsigned i = 0; i < parts; ++i, line += part.lineElements()) {
        if (TIFFReadScanline(tiff_.get(), bytes_.data(), line_, static_cast<std::uint16_t>(i)) <
            0) {
            fail("a line cannot be read");
        }
        if (form_.elementBytes == 1) {
            separate(bytes_.data(), part, line);
        } else {
            separate(reinterpret_cast<const std::uint16_t *>(bytes_.data()), part, line);
        }
    }
    ++line_;
}

TiffSink::TiffSink(const std::string &path, vx::File file, const PictureForm &form)
    : TiffFile(path, std::move(file), "w") {
    TIFF *tiff = tiff_.get();
    form_ = form;
    bytes_.resize(form.lineElements() * form.elementBytes);
    const bool colored = form.planes >= 3, transparent = form.planes % 2 == 0;
    const std::uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
    const bool set = TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, form.width) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, form.height) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, form.planes) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, form.elementBytes * 8) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
                                  colored ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL) != 0 &&
                     TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0)) != 0 &&
                     (!transparent || TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &alpha) != 0);
    if (!set) fail("cannot be written as a TIFF file");
}

void TiffSink::writeLine(std::uint16_t *line) {
    if (form_.elementBytes == 1) {
        interleave(line, form_, bytes_.data());
    } else {
        interleave(line, form_, reinterpret_cast<std::uint16_t *>(bytes_.data()));
    }
    if (TIFFWriteScanline(tiff_.get(), bytes_.data(), line_++, 0) < 0) {
        fail("a line could not be written");
    }
}

void TiffSink::finish() {
    if (TIFFFlush(tiff_.get()) == 0) fail("could not be written");
    tiff_.reset();
    if (!message_.empty()) fail("");
}

}  // namespace tool
