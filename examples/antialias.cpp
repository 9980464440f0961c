// A disc in front of a floor of fine checks, drawn three times into a folder: without antialiasing
// (centre.sgi), with the square pattern, which is a box filter, and with the disk pattern, which
// is a soft round one.
//
//     antialias FOLDER

#include <vximage.h>
#include <vxsampling.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr float kContrast = 0.2F;

// ---- The scene ----------------------------------------------------------------------------

struct Surface {
    std::uint32_t id;
    float color[3];
};

constexpr Surface kDisc{1, {0.95F, 0.45F, 0.1F}};
constexpr Surface kSky{2, {0.35F, 0.55F, 0.85F}};
constexpr Surface kWhiteCheck{3, {0.95F, 0.95F, 0.9F}};
constexpr Surface kBlackCheck{3, {0.05F, 0.05F, 0.1F}};

// In pixels from the lower left corner. The floor is seen in perspective, so its checks become
// finer than any pixel towards the horizon.
const Surface &surfaceAt(float x, float y) {
    constexpr float kHorizon = 0.7F * kHeight;
    if (std::hypot(x - 0.5F * kWidth, y - 0.55F * kHeight) < 0.3F * kHeight) return kDisc;
    if (y >= kHorizon) return kSky;
    const float distance = kHeight / (kHorizon - y);
    const float across = (x / kWidth - 0.5F) * distance * 8;
    const int check = static_cast<int>(std::floor(across) + std::floor(distance * 6));
    return (check & 1) != 0 ? kWhiteCheck : kBlackCheck;
}

// ---- Pixels -------------------------------------------------------------------------------

struct Color {
    float channels[3];
};

// One pixel with the samples of one table; `more` tells whether they differed much.
Color walk(const VxSampleTable &table, int px, int py, bool &more) {
    VxPixelSampler sampler;
    vxPixelSamplerStart(&sampler, &table);
    while (vxPixelSamplerHasNext(&sampler) != 0) {
        float x;
        float y;
        vxPixelSamplerNext(&sampler, &x, &y);
        const Surface &surface =
            surfaceAt(static_cast<float>(px) + 0.5F + x, static_cast<float>(py) + 0.5F + y);
        vxPixelSamplerAdd(&sampler, surface.color, surface.color, surface.id, 0);
    }
    more = vxPixelSamplerNeedsMore(&sampler, kContrast) != 0;
    Color color;
    Color second;
    vxPixelSamplerResult(&sampler, color.channels, second.channels);
    return color;
}

// ---- Pictures -----------------------------------------------------------------------------

struct Table : VxSampleTable {
    Table(int grid, float size, bool square) {
        if (vxSampleTableInit(this, grid, size, 0, 1.0F, square ? 1 : 0) == 0) std::abort();
    }
    ~Table() { vxSampleTableRelease(this); }
    Table(const Table &) = delete;
    Table &operator=(const Table &) = delete;
};

std::uint16_t toByte(float value) {
    return static_cast<std::uint16_t>(std::lround(std::clamp(value, 0.0F, 1.0F) * 255));
}

// Each pixel gets the few samples of `coarse` and, where they differ, the many of `fine`.
bool draw(const std::string &file, const Table &coarse, const Table &fine) {
    VxImage *image = vxImageOpen(file.c_str(), "w", VX_IMAGE_RUN_LENGTH | 1, 3, kWidth, kHeight, 3);
    if (image == nullptr) return false;
    vxImageUseBigEndian(image);
    bool good = true;
    int refined = 0;
    std::vector<std::uint16_t> rows[3];
    for (auto &row : rows)
        row.resize(kWidth);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            bool more = false;
            Color color = walk(coarse, x, y, more);
            if (more && &fine != &coarse) {
                color = walk(fine, x, y, more);
                ++refined;
            }
            for (std::size_t c = 0; c < 3; ++c)
                rows[c][static_cast<std::size_t>(x)] = toByte(color.channels[c]);
        }
        for (int c = 0; c < 3; ++c)
            good = vxImagePutRow(image, rows[c].data(), y, c) == kWidth && good;
    }
    std::printf("%s: %d of %d pixels refined\n", file.c_str(), refined, kWidth * kHeight);
    return vxImageClose(image) == 0 && good;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: antialias FOLDER\n");
        return 2;
    }
    const std::string folder = std::string(argv[1]) + "/";
    const Table centre(1, 0.5F, true);
    const Table square(4, 0.5F, true);
    const Table fineSquare(8, 0.5F, true);
    const Table disk(4, 0.5F, false);
    const Table fineDisk(8, 0.5F, false);
    const bool good = draw(folder + "centre.sgi", centre, centre) &&
                      draw(folder + "square.sgi", square, fineSquare) &&
                      draw(folder + "disk.sgi", disk, fineDisk);
    return good ? 0 : 1;
}
