// A picture of the size that users have, made and read as a whole program would:
//
//     picture make noise|typical SIDE FILE
//     picture read FILE                      prints the sum of all elements

#include <vximage.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

namespace {

constexpr unsigned kPlanes = 3;

// Smooth gradients, dark stripes of one value, and white frames: long runs and short ones.
std::uint16_t typicalAt(unsigned x, unsigned y, unsigned z) {
    if (y / 512 % 4 == 1) return 30;
    if (x / 256 % 8 == 7) return 255;
    const double wave = std::sin((x + 300.0 * z) / 500) * std::cos(y / 400.0);
    return static_cast<std::uint16_t>(128 + 100 * wave);
}

bool make(bool noise, unsigned side, const char *path) {
    VxImage *image = vxImageOpen(path, "w", 0x101U, 3U, side, side, kPlanes);
    if (image == nullptr) return false;
    vxImageUseBigEndian(image);
    std::mt19937 random(1);
    std::vector<std::uint16_t> row(side);
    for (unsigned z = 0; z < kPlanes; ++z) {
        for (unsigned y = 0; y < side; ++y) {
            for (unsigned x = 0; x < side; ++x) {
                row[x] = noise ? static_cast<std::uint16_t>(random() & 0xFF) : typicalAt(x, y, z);
            }
            if (vxImagePutRow(image, row.data(), static_cast<int>(y), static_cast<int>(z)) < 0) {
                return false;
            }
        }
    }
    return vxImageClose(image) == 0;
}

bool read(const char *path) {
    VxImage *image = vxImageOpen(path, "r");
    if (image == nullptr) return false;
    std::vector<std::uint16_t> row(image->xSize);
    std::uint64_t sum = 0;
    for (int z = 0; z < image->zSize; ++z) {
        for (int y = 0; y < image->ySize; ++y) {
            if (vxImageGetRow(image, row.data(), y, z) < 0) return false;
            std::uint32_t rowSum = 0;
            for (const std::uint16_t element : row)
                rowSum += element;
            sum += rowSum;
        }
    }
    std::printf("%llu\n", static_cast<unsigned long long>(sum));
    return vxImageClose(image) == 0;
}

}  // namespace

int main(int count, char **arguments) {
    if (count == 5 && std::strcmp(arguments[1], "make") == 0) {
        const auto side = static_cast<unsigned>(std::atoi(arguments[3]));
        return make(std::strcmp(arguments[2], "noise") == 0, side, arguments[4]) ? 0 : 1;
    }
    if (count == 3 && std::strcmp(arguments[1], "read") == 0) return read(arguments[2]) ? 0 : 1;
    std::fprintf(stderr, "usage: picture make noise|typical SIDE FILE\n       picture read FILE\n");
    return 2;
}
