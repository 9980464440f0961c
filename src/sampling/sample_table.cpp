// The two sample patterns. Products and sums stand in the order that fixes their rounding.

#include "sampling/draw.h"

#include <vxsampling.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace {

constexpr unsigned kSeed = 1234;
constexpr int kLargestGrid = 46340;  // whose samples a 32-bit count can tell
constexpr double kCutOff = 1.3;      // of the disk, in standard deviations
constexpr double kTwoPi = 6.283185307179586;

// One for the library: tables are filled one at a time, as the generator is shared as well.
float jitterAmount = 0.8F;

struct Grid {
    int size;  // cells along a side
    float cell;
    float sizeX;
    float sizeY;
};

// The draws of a set come first, into its own arrays, which hold them exactly: the arithmetic
// that follows is then free of calls of the generator, between which nothing stays in registers.
void drawSet(int samples, float *x, float *y) {
    for (int k = 0; k < samples; ++k) {
        x[k] = static_cast<float>(draw());
        y[k] = static_cast<float>(draw());
    }
}

// Draws to positions inside a cell of side 1.
class Jitter {
public:
    explicit Jitter(double amount) : amount_(amount), least_((1.0 - amount) * 0.5) {}
    double operator()(float drawn) const { return drawn * amount_ + least_; }

private:
    double amount_;
    double least_;
};

void fillSquare(const Grid &grid, float *x, float *y) {
    drawSet(grid.size * grid.size, x, y);
    const Jitter jitter(jitterAmount);
    const auto place = [&](float drawn, int cell, float size) {
        const double along = (jitter(drawn) + cell) * grid.cell - 0.5;
        return static_cast<float>(2 * (along * size));
    };
    for (int row = 0; row < grid.size; ++row) {
        for (int column = 0; column < grid.size; ++column, ++x, ++y) {
            *x = place(*x, row, grid.sizeX);
            *y = place(*y, column, grid.sizeY);
        }
    }
}

void fillDisk(const Grid &grid, float *x, float *y) {
    const auto least = static_cast<float>(std::exp(-(kCutOff * kCutOff) / 2));
    const auto rotation = static_cast<float>(draw());
    drawSet(grid.size * grid.size, x, y);
    const Jitter jitter(jitterAmount);
    for (int row = 0; row < grid.size; ++row) {
        for (int column = 1; column <= grid.size; ++column, ++x, ++y) {
            const auto turns = static_cast<float>((jitter(*x) + row) * grid.cell + rotation);
            double share = ((column - jitter(*y)) * grid.cell) * (1.0 - least) + least;
            // A cell rounded upwards can take the outer edge of the last column past 1, where
            // the logarithm changes its sign: that sample is the centre.
            share = std::min(share, 1.0);
            const double radius = std::sqrt(-2.0 * std::log(share));
            const double angle = turns * kTwoPi;
            *x = static_cast<float>(radius * std::cos(angle) * grid.sizeX);
            *y = static_cast<float>(radius * std::sin(angle) * grid.sizeY);
        }
    }
}

float *newSet(int samples) {
    return static_cast<float *>(std::calloc(static_cast<std::size_t>(samples), sizeof(float)));
}

void releaseUpTo(VxSampleTable *table, int last) {
    for (int set = 0; set <= last; ++set) {
        std::free(table->offsetX[set]);
        std::free(table->offsetY[set]);
        table->offsetX[set] = table->offsetY[set] = nullptr;
    }
}

bool allocateSets(VxSampleTable *table) {
    for (int set = 0; set < VX_SAMPLE_SETS; ++set) {
        table->offsetX[set] = newSet(table->sampleCount);
        table->offsetY[set] = newSet(table->sampleCount);
        if (table->offsetX[set] == nullptr || table->offsetY[set] == nullptr) {
            releaseUpTo(table, set);
            return false;
        }
    }
    return true;
}

}  // namespace

int vxSampleTableInit(VxSampleTable *table, int gridSize, float size, int doubleY, float jitter,
                      int square) {
    std::srand(kSeed);
    jitterAmount = jitter;
    const int n = std::max(gridSize, 1);
    table->sampleWeight = static_cast<float>(1.0 / (static_cast<double>(n) * n));
    if (n > kLargestGrid) {
        table->sampleCount = 0;
        table->offsetX[0] = table->offsetY[0] = nullptr;
        return 0;
    }
    table->sampleCount = n * n;
    if (!allocateSets(table)) return 0;
    if (n == 1) return 1;  // the zeros of calloc are the centre

    const Grid grid{n, static_cast<float>(1.0 / n), size, doubleY != 0 ? size + size : size};
    const auto fill = square != 0 ? fillSquare : fillDisk;
    for (int set = 0; set < VX_SAMPLE_SETS; ++set)
        fill(grid, table->offsetX[set], table->offsetY[set]);
    return 1;
}

float vxSampleTableWeight(const VxSampleTable *table) {
    return table->sampleWeight;
}
