// Draws a disc in front of a floor of fine checks, three times: without antialiasing (centre.sgi),
// with the square pattern, which is a box filter, and with the disk pattern, which is a soft round
// one.
//
//     antialias FOLDER

#include <vxhandles.h>
#include <vxsampling.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
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

// x and y are in pixels from the lower left corner. The floor is in perspective: towards the
// horizon its checks become finer than a pixel.
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

// The mean color of a pixel over the samples of a table. `more` is set if the samples differed
// much.
Color sample(const VxSampleTable *table, int px, int py, bool &more) {
    VxPixelSampler sampler;
    vxPixelSamplerStart(&sampler, table);
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

std::uint16_t toByte(float value) {
    return static_cast<std::uint16_t>(std::lround(std::clamp(value, 0.0F, 1.0F) * 255));
}

// Each pixel gets the few samples of `coarse` and, if they differ, the many samples of `fine`. A
// null `fine` leaves it at the first.
bool draw(const std::string &path, const VxSampleTable *coarse, const VxSampleTable *fine) {
    VxPicture picture{.width = kWidth,
                      .height = kHeight,
                      .planes = 3,
                      .elementBytes = 1,
                      .elements = std::vector<std::uint16_t>(std::size_t{3} * kWidth * kHeight)};
    int refined = 0;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            bool more = false;
            Color color = sample(coarse, x, y, more);
            if (more && fine != nullptr) {
                color = sample(fine, x, y, more);
                ++refined;
            }
            for (int plane = 0; plane < 3; ++plane)
                picture.row(y, plane)[x] = toByte(color.channels[plane]);
        }
    }
    std::printf("%s: %d of %d pixels refined\n", path.c_str(), refined, kWidth * kHeight);
    return vxPictureWrite(path.c_str(), picture);
}

VxUniqueSampleTable makeTable(int grid, bool square) {
    return vxSampleTableMake(grid, 0.5F, 0, 1.0F, square ? 1 : 0);
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: antialias FOLDER\n");
        return 2;
    }
    const std::string folder = std::string(argv[1]) + "/";
    const VxUniqueSampleTable centre = makeTable(1, true);
    const VxUniqueSampleTable square = makeTable(4, true), fineSquare = makeTable(8, true);
    const VxUniqueSampleTable disk = makeTable(4, false), fineDisk = makeTable(8, false);
    if (!centre || !square || !fineSquare || !disk || !fineDisk) return 1;  // out of memory
    const bool drawn = draw(folder + "centre.sgi", centre.get(), nullptr) &&
                       draw(folder + "square.sgi", square.get(), fineSquare.get()) &&
                       draw(folder + "disk.sgi", disk.get(), fineDisk.get());
    return drawn ? 0 : 1;
}
