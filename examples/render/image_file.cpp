#include "image_file.h"

#include "report.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <utility>

// Run-length rows cost nothing to write and keep flat areas small.
ImageFile::ImageFile(const char *path, int width, int height, const char *title)
    : path_(path),
      partPath_(path_ + ".part"),
      image_(vxImageOpen(partPath_.c_str(), "w", VX_IMAGE_RUN_LENGTH | 1U, 3U,
                         static_cast<unsigned>(width), static_cast<unsigned>(height), 3U)) {
    note(image_ != nullptr);
    if (!good_) return;
    vxImageUseBigEndian(image_);  // before the first row: its bytes count too
    vxImageSetName(image_, title);
}

ImageFile::~ImageFile() {
    if (image_ != nullptr) discard();
}

// A handle that is not for writing is ended without: nothing can fail where the disk is full.
void ImageFile::discard() {
    if (image_ != nullptr) {
        image_->flags = VX_IMAGE_READ;
        vxImageClose(std::exchange(image_, nullptr));
    }
    std::remove(partPath_.c_str());
}

void ImageFile::note(bool done) {
    if (!done && reason_ == 0) reason_ = errno;
    good_ = good_ && done;
}

static uint16_t toByte(float value) {
    return static_cast<uint16_t>(std::lround(std::clamp(value, 0.0F, 1.0F) * 255));
}

void ImageFile::putRow(int y, const Vec *colors) {
    if (!good_) return;
    const int width = image_->xSize;
    for (auto &row : rows_)
        row.resize(image_->xSize);
    for (int x = 0; x < width; ++x) {
        const auto i = static_cast<std::size_t>(x);
        rows_[0][i] = toByte(colors[x].x);
        rows_[1][i] = toByte(colors[x].y);
        rows_[2][i] = toByte(colors[x].z);
    }
    errno = 0;  // a write that falls short has no reason, the next one has
    for (int z = 0; z < 3; ++z)
        note(vxImagePutRow(image_, rows_[z].data(), y, z) == width);
}

bool ImageFile::close() {
    if (image_ != nullptr) {
        errno = 0;
        int32_t *const end = image_->rowSizes + std::ptrdiff_t{3} * image_->ySize;
        note(std::find(image_->rowSizes, end, -1) == end);  // the size of a row never put
        if (good_) {
            note(vxImageClose(std::exchange(image_, nullptr)) == 0);
            note(good_ && std::rename(partPath_.c_str(), path_.c_str()) == 0);
        }
        if (!good_) discard();
    }
    if (!good_) reportNotWritten(path_, reason_);
    return good_;
}
