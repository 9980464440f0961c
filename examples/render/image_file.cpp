#include "image_file.h"

#include "report.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

ImageFile::ImageFile(const char *path, int width, int height, const char *title)
    : path_(path),
      partPath_(path_ + ".part"),
      image_(vxImageOpen(partPath_.c_str(), "w", VX_IMAGE_RUN_LENGTH | 1U, 3U,
                         static_cast<unsigned>(width), static_cast<unsigned>(height), 3U)) {
    check(image_ != nullptr);
    if (!good_) return;
    vxImageUseBigEndian(image_.get());
    vxImageSetName(image_.get(), title);
}

ImageFile::~ImageFile() {
    if (image_ != nullptr) discard();
}

void ImageFile::discard() {
    vxImageDiscard(std::move(image_));
    std::remove(partPath_.c_str());
}

void ImageFile::check(bool done) {
    if (!done && reason_ == 0) reason_ = errno;
    good_ = good_ && done;
}

static std::uint16_t toByte(float value) {
    return static_cast<std::uint16_t>(std::lround(std::clamp(value, 0.0F, 1.0F) * 255));
}

void ImageFile::putRow(int y, const Vec *colors) {
    if (!good_) return;
    const std::size_t width = image_->xSize;
    for (auto &row : rows_)
        row.resize(width);
    for (std::size_t x = 0; x < width; ++x) {
        rows_[0][x] = toByte(colors[x].x);
        rows_[1][x] = toByte(colors[x].y);
        rows_[2][x] = toByte(colors[x].z);
    }
    errno = 0;  // a short write sets no errno, but the next one does
    for (int z = 0; z < 3; ++z)
        check(vxImagePutRow(image_.get(), rows_[z].data(), y, z) >= 0);
}

bool ImageFile::close() {
    if (image_ != nullptr) {
        errno = 0;
        int32_t *const end = image_->rowSizes + std::ptrdiff_t{3} * image_->ySize;
        check(std::find(image_->rowSizes, end, -1) == end);  // -1: the row was never written
        if (good_) {
            check(vxImageFinish(std::move(image_)));
            std::error_code refused;
            if (good_) std::filesystem::rename(partPath_, path_, refused);
            if (refused) errno = refused.default_error_condition().value();
            check(good_ && !refused);
        }
        if (!good_) discard();
    }
    if (!good_) reportNotWritten(path_, reason_);
    return good_;
}

void ignoreFileSizeSignal() {
#ifdef SIGXFSZ
    std::signal(SIGXFSZ, SIG_IGN);
#endif
}
