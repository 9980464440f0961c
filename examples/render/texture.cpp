#include "texture.h"

#include "report.h"

#include <vximage.h>
#include <vxsearchpath.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

constexpr int kImageNotOpened = 20362;  // in the catalogue of messages

bool Texture::load() {
    // The merged list: the environment's directories, then the machine's, then the user's.
    VxSearchPath *list = vxPathStoreGet(VX_CATEGORY_TEXTURES, VX_LEVEL_MERGED);
    const std::unique_ptr<char, void (*)(void *)> path(vxSearchPathResolve(list, name_, nullptr, 0),
                                                       std::free);
    if (path == nullptr) {
        reportFailure(std::string("no texture ") + static_cast<const char *>(name_));
        return false;
    }
    VxImage *image = vxImageOpen(path.get(), "r");
    if (image == nullptr) reportFailure(kImageNotOpened);
    const bool whole = image != nullptr && readRows(image);
    if (image != nullptr) vxImageClose(image);
    if (!whole) reportFailure(std::string("cannot read texture ") + path.get());
    return whole;
}

// Planes become the bytes of an element; a grey image has one plane for all three.
bool Texture::readRows(VxImage *image) {
    constexpr long long kMaxBytes = 1 << 28;  // a header may promise any size
    const long long bytes = 3LL * image->xSize * image->ySize;
    if (bytes == 0 || bytes > kMaxBytes || image->zSize == 0) return false;
    width_ = image->xSize;
    height_ = image->ySize;
    texels_.setLengthHint(static_cast<int>(bytes));  // so that no row makes it grow
    const int shift = (image->type & 0xFF) == 2 ? 8 : 0;
    std::vector<uint16_t> row(image->xSize);
    std::vector<char> line(3 * row.size());
    for (int y = 0; y < height_; ++y) {
        for (int z = 0; z < 3; ++z) {
            if (vxImageGetRow(image, row.data(), y, std::min(z, image->zSize - 1)) < 0)
                return false;
            for (std::size_t x = 0; x < row.size(); ++x)
                line[3 * x + static_cast<std::size_t>(z)] = static_cast<char>(row[x] >> shift);
        }
        texels_ += vxStringFrom({line.data(), line.size()});
    }
    return texels_.length() == bytes;  // shorter where memory ran out
}

// Files hold what a screen shows; light adds up linearly.
static float linear(char byte) {
    static const std::array<float, 256> table = [] {
        std::array<float, 256> values{};
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = std::pow(static_cast<float>(i) / 255, 2.2F);
        return values;
    }();
    return table[static_cast<unsigned char>(byte)];
}

Vec Texture::texel(int x, int y) const {
    const char *at = static_cast<const char *>(texels_) + std::ptrdiff_t{3} * (y * width_ + x);
    return {linear(at[0]), linear(at[1]), linear(at[2])};
}

// Where between which two of n elements a place lies; element i has its centre at i + 0.5.
struct Between {
    int low, high;
    float share;
    Between(float place, int n) {
        const float at = (place - std::floor(place)) * static_cast<float>(n) - 0.5F;
        const float floor = std::floor(at);
        share = at - floor;
        low = (static_cast<int>(floor) + n) % n;
        high = (low + 1) % n;
    }
};

Vec Texture::at(float u, float v) const {
    const Between x(u, width_);
    const Between y(v, height_);
    return mix(mix(texel(x.low, y.low), texel(x.high, y.low), x.share),
               mix(texel(x.low, y.high), texel(x.high, y.high), x.share), y.share);
}

const Texture *TextureShelf::find(const VxString &name) {
    Texture texture(name);
    if (const Texture *known = textures_.has(texture)) return known;
    if (!texture.load()) return nullptr;
    if (!textures_.insert(texture)) reportFailure("no memory for a texture");
    return textures_.has(texture);
}
