// The two sample patterns. The order of products and sums fixes their rounding.

#include "sampling/random.h"

#include <vxsampling.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace {

constexpr unsigned kSeed = 1234;
constexpr int kMaxGrid = 46340;  // the square fits into a 32-bit count
constexpr double kCutOff = 1.3;  // of the disk, in standard deviations
constexpr double kTwoPi = 6.283185307179586;

struct Grid {
    int size;  // cells along a side
    float cell;
    float sizeX;
    float sizeY;
    double jitter;

    // The position of a random number inside a cell of side 1.
    double inCell(float drawn) const { return drawn * jitter + (1.0 - jitter) * 0.5; }
};

// Draws all numbers of a set first, into its own arrays, which hold them exactly. The arithmetic
// that follows then makes no calls of the generator, so its values stay in registers.
void drawSet(int samples, float *x, float *y) {
    for (int k = 0; k < samples; ++k) {
        x[k] = static_cast<float>(vx::draw());
        y[k] = static_cast<float>(vx::draw());
    }
}

void fillSquare(const Grid &grid, float *x, float *y) {
    drawSet(grid.size * grid.size, x, y);
    const auto place = [&](float drawn, int cell, float size) {
        const double along = (grid.inCell(drawn) + cell) * grid.cell - 0.5;
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
    const auto min = static_cast<float>(std::exp(-(kCutOff * kCutOff) / 2));
    const auto rotation = static_cast<float>(vx::draw());
    drawSet(grid.size * grid.size, x, y);
    for (int row = 0; row < grid.size; ++row) {
        for (int column = 1; column <= grid.size; ++column, ++x, ++y) {
            const auto turns = static_cast<float>((grid.inCell(*x) + row) * grid.cell + rotation);
            double share = ((column - grid.inCell(*y)) * grid.cell) * (1.0 - min) + min;
            // A cell rounded upwards can put the outer edge of the last column above 1, where the
            // logarithm changes its sign. That sample is the centre.
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
    const int n = std::max(gridSize, 1);
    table->sampleWeight = static_cast<float>(1.0 / (static_cast<double>(n) * n));
    if (n > kMaxGrid) {
        table->sampleCount = 0;
        table->offsetX[0] = table->offsetY[0] = nullptr;
        return 0;
    }
    table->sampleCount = n * n;
    if (!allocateSets(table)) return 0;
    if (n == 1) return 1;  // the zeros of calloc are the centre

    const float sizeY = doubleY != 0 ? size + size : size;
    const Grid grid{n, static_cast<float>(1.0 / n), size, sizeY, jitter};
    const auto fill = square != 0 ? fillSquare : fillDisk;
    for (int set = 0; set < VX_SAMPLE_SETS; ++set)
        fill(grid, table->offsetX[set], table->offsetY[set]);
    return 1;
}

float vxSampleTableWeight(const VxSampleTable *table) {
    return table->sampleWeight;
}
