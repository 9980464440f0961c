#include "image_file.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>

// Run-length rows cost nothing to write and keep flat areas small.
ImageFile::ImageFile(const char *path, int width, int height, const char *title)
    : path_(path),
      partPath_(path_ + ".part"),
      image_(vxImageOpen(partPath_.c_str(), "w", VX_IMAGE_RUN_LENGTH | 1U, 3U,
                         static_cast<unsigned>(width), static_cast<unsigned>(height), 3U)),
      good_(image_ != nullptr) {
    if (image_ == nullptr) return;
    vxImageUsePublishedOrder(image_);  // before the first row: its bytes count too
    vxImageSetName(image_, title);
    for (auto &row : rows_)
        row.resize(image_->xSize);
}

static uint16_t toByte(float value) {
    return static_cast<uint16_t>(std::lround(std::clamp(value, 0.0F, 1.0F) * 255));
}

void ImageFile::putRow(int y, const Vec *colors) {
    if (image_ == nullptr) return;
    const int width = image_->xSize;
    for (int x = 0; x < width; ++x) {
        const auto i = static_cast<std::size_t>(x);
        rows_[0][i] = toByte(colors[x].x);
        rows_[1][i] = toByte(colors[x].y);
        rows_[2][i] = toByte(colors[x].z);
    }
    for (int z = 0; z < 3; ++z)
        good_ = vxImagePutRow(image_, rows_[z].data(), y, z) == width && good_;
}

bool ImageFile::close() {
    if (image_ == nullptr) return good_;
    good_ = vxImageClose(image_) == 0 && good_;
    image_ = nullptr;
    good_ = good_ && std::rename(partPath_.c_str(), path_.c_str()) == 0;
    if (!good_) std::remove(partPath_.c_str());
    return good_;
}
