#include "texture.h"

#include "report.h"

#include <vxsearchpath.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

bool Texture::load() {
    // The merged list: the environment's directories, then the machine's, then the user's.
    VxSearchPath *list = vxPathStoreGet(VX_CATEGORY_TEXTURES, VX_LEVEL_MERGED);
    const VxUniqueText path(vxSearchPathResolve(list, name_, nullptr, 0));
    if (path == nullptr) {
        reportFailure(std::string("no texture ") + static_cast<const char *>(name_));
        return false;
    }
    const std::optional<VxPicture> picture = vxPictureRead(path.get());
    if (picture && store(*picture)) return true;
    reportFailure(std::string("cannot read texture ") + path.get());
    return false;
}

// Interleaves the planes, in bytes. A picture without three planes is grey: its first plane serves
// for all three.
bool Texture::store(const VxPicture &picture) {
    width_ = picture.width;
    height_ = picture.height;
    const int bytes = 3 * width_ * height_;
    texels_.setLengthHint(bytes);  // one allocation for all rows
    const int shift = picture.elementBytes == 2 ? 8 : 0;
    std::vector<char> line(3 * static_cast<std::size_t>(width_));
    for (int y = 0; y < height_; ++y) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            const int plane = picture.planes < 3 ? 0 : static_cast<int>(i % 3);
            line[i] = static_cast<char>(picture.row(y, plane)[i / 3] >> shift);
        }
        texels_ += vxStringFrom({line.data(), line.size()});
    }
    return texels_.length() == bytes;  // it is shorter if memory ran out
}

// Files hold screen values (gamma 2.2). Only linear light can be added up.
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

// A coordinate between two neighbours of n elements. The centre of element i is at i + 0.5.
struct Neighbours {
    int low, high;
    float share;
    Neighbours(float coordinate, int n) {
        const float at = (coordinate - std::floor(coordinate)) * static_cast<float>(n) - 0.5F;
        const float floor = std::floor(at);
        share = at - floor;
        low = (static_cast<int>(floor) + n) % n;
        high = (low + 1) % n;
    }
};

Vec Texture::at(float u, float v) const {
    const Neighbours x(u, width_);
    const Neighbours y(v, height_);
    return mix(mix(texel(x.low, y.low), texel(x.high, y.low), x.share),
               mix(texel(x.low, y.high), texel(x.high, y.high), x.share), y.share);
}

const Texture *TextureCache::find(const VxString &name) {
    Texture texture(name);
    if (const Texture *known = textures_.has(texture)) return known;
    if (!texture.load()) return nullptr;
    if (!textures_.insert(texture)) reportFailure("out of memory for a texture");
    return textures_.has(texture);
}
