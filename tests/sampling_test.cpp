// Tables and samplers bit for bit against a plain model, with a generator of the test's own.

#include "data_rows.h"
#include "faults.h"

#include <vxhandles.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

static int fixedDraw = -1;  // below 0: a sequence
static std::minstd_rand generator;

// Replace those of the C library, for the program and the library. All 31 bits are random; the
// library must use the low 15.
extern "C" void srand(unsigned seed) noexcept {
    generator.seed(seed);
}

extern "C" int rand() noexcept {
    const auto drawn = static_cast<int>(generator());
    return fixedDraw >= 0 ? 0x7fff8000 | fixedDraw : drawn;
}

namespace {

struct Arguments {
    int grid;
    float size;
    int doubleY;
    float jitter;
    int square;
};

VxUniqueSampleTable tableOf(const Arguments &a) {
    return vxSampleTableMake(a.grid, a.size, a.doubleY, a.jitter, a.square);
}

bool isSame(const float *one, const std::vector<float> &other) {
    return std::memcmp(one, other.data(), other.size() * sizeof(float)) == 0;
}

double modelDraw() {
    return (rand() & 32767) / 32768.0;
}

void modelSet(const Arguments &a, float *x, float *y) {
    const float step = 1.0F / static_cast<float>(a.grid);
    const float height = a.doubleY != 0 ? 2 * a.size : a.size;
    const double slack = (1.0 - a.jitter) / 2;
    const float cut = 0.42955735F;
    const float turn = a.square != 0 ? 0 : static_cast<float>(modelDraw());
    for (int k = 0; k < a.grid * a.grid; ++k) {
        const double row = modelDraw() * a.jitter + slack + k / a.grid;
        const double inCell = modelDraw() * a.jitter + slack;
        const int column = k % a.grid;
        if (a.square != 0) {
            x[k] = static_cast<float>((row * step - 0.5) * a.size * 2);
            y[k] = static_cast<float>(((inCell + column) * step - 0.5) * height * 2);
            continue;
        }
        const double value = (column + 1 - inCell) * step * (1.0 - cut) + cut;
        const double radius = std::sqrt(-2.0 * std::log(std::min(value, 1.0)));
        const double angle = static_cast<float>(row * step + turn) * 6.283185307179586;
        x[k] = static_cast<float>(radius * std::cos(angle) * a.size);
        y[k] = static_cast<float>(radius * std::sin(angle) * height);
    }
}

// A single sample is the centre, and needs no draws.
void compareWithModel(const Arguments &a) {
    SCOPED_TRACE(testing::Message() << a.grid << ' ' << a.jitter << ' ' << a.square);
    std::srand(99);
    const VxUniqueSampleTable table = tableOf(a);
    const std::minstd_rand after = generator;
    const int samples = a.grid > 1 ? a.grid * a.grid : 1;
    EXPECT_EQ(table->sampleCount, samples);
    EXPECT_EQ(vxSampleTableWeight(table.get()), static_cast<float>(1.0 / samples));
    std::srand(1234);
    for (int set = 0; set < VX_SAMPLE_SETS; ++set) {
        std::vector<float> x(static_cast<std::size_t>(samples)), y(x);
        if (samples > 1) modelSet(a, x.data(), y.data());
        EXPECT_TRUE(isSame(table->offsetX[set], x) && isSame(table->offsetY[set], y)) << set;
    }
    EXPECT_EQ(generator, after);
}

TEST(SampleTable, EqualsTheModelBitForBit) {
    for (const int grid : {INT32_MIN, -1, 0, 1, 2, 3, 4, 5, 8, 11}) {
        for (const float jitter : {0.0F, 0.8F, 1.0F}) {
            for (const int square : {0, 1, -2}) {
                for (const int doubleY : {0, -2})
                    compareWithModel({grid, 0.7F, doubleY, jitter, square});
            }
        }
    }
    // The edges of all cells: those of the last column are at the centre of the disk or, rounded,
    // beyond it.
    for (const int edge : {0, 0x7fff}) {
        fixedDraw = edge;
        for (int grid = 2; grid <= 16; ++grid)
            compareWithModel({grid, 2.0F, 0, 1.0F, 0});
    }
    fixedDraw = -1;
}

// Fills a table and releases it. In sets that it did not try, pointers stay as they were.
void fillAndRelease(int grid) {
    constexpr int kMaxGrid = 46340;  // of which the square is an int
    float sentinel = 0;
    VxSampleTable table{};
    std::ranges::fill(table.offsetX, &sentinel);
    std::ranges::fill(table.offsetY, &sentinel);
    const int before = faults::blocksOut();
    const int filled = vxSampleTableInit(&table, grid, 1.0F, 0, 1.0F, 0);
    const int calls = faults::count(faults::kMemory);
    EXPECT_EQ(filled, faults::disarm() || grid > kMaxGrid ? 0 : 1);
    EXPECT_EQ(calls == 0, grid > kMaxGrid);
    EXPECT_EQ(table.sampleCount, grid > kMaxGrid ? 0 : grid * grid);
    EXPECT_EQ(table.sampleWeight, static_cast<float>(1.0 / (1.0 * grid * grid)));
    for (int times = 0; times < 2 && filled != 0; ++times)
        vxSampleTableRelease(&table);
    EXPECT_EQ(faults::blocksOut(), before);
    for (int set = 0; set < VX_SAMPLE_SETS; ++set) {
        EXPECT_EQ(table.offsetX[set], set == 0 || 2 * set < calls ? nullptr : &sentinel) << set;
        EXPECT_EQ(table.offsetY[set], table.offsetX[set]) << set;
    }
}

TEST(SampleTable, ReleasesWhatItHasWhenItFails) {
    for (const int grid : {1, 2})
        faults::failEach(faults::kMemory, [grid](bool) { fillAndRelease(grid); });
    for (const int grid : {46340, 46341, INT32_MAX}) {
        faults::arm(faults::kMemory);
        fillAndRelease(grid);
    }
}

TEST(PixelSampler, WalksTheSetOfItsDrawAndSumsInDoubleStepByStep) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> value(-2.0F, 9.0F);
    const VxUniqueSampleTable table = tableOf({3, 1.0F, 0, 1.0F, 0});
    VxPixelSampler sampler;
    std::memset(&sampler, 0x55, sizeof sampler);
    for (fixedDraw = 0; fixedDraw < 32768 && !testing::Test::HasFailure(); ++fixedDraw) {
        std::minstd_rand after = generator;
        after.discard(1);
        vxPixelSamplerStart(&sampler, table.get());
        EXPECT_EQ(generator, after);
        EXPECT_EQ(sampler.setIndex, fixedDraw * 67 / 32768);
        EXPECT_EQ(sampler.sameId, 1);
        EXPECT_EQ(sampler.firstSample, 1);
        EXPECT_EQ(sampler.firstId, fixedDraw == 0 ? 0x55555555U : 7U);
        float sums[6] = {};  // of both colours
        std::vector<float> channels[3];
        int taken = 0;
        for (; vxPixelSamplerHasNext(&sampler) != 0 && taken < 10; ++taken) {
            float x = 0, y = 0, colors[6];
            vxPixelSamplerNext(&sampler, &x, &y);
            EXPECT_EQ(x, table->offsetX[sampler.setIndex][taken]);
            EXPECT_EQ(y, table->offsetY[sampler.setIndex][taken]);
            const int quarter = static_cast<int>(random() & 2);
            for (int c = 0; c < 6; ++c) {
                colors[c] = value(random);
                const double term = static_cast<double>(table->sampleWeight) * colors[c];
                sums[c] = static_cast<float>(sums[c] + (quarter != 0 ? term / 4 : term));
                if (c < 3) channels[c].push_back(colors[c]);
            }
            vxPixelSamplerAdd(&sampler, colors, colors + 3, 7, quarter);
        }
        EXPECT_EQ(taken, 9);
        float results[6];
        vxPixelSamplerResult(&sampler, results, results + 3);
        EXPECT_EQ(std::memcmp(results, sums, sizeof sums), 0);
        for (int c = 0; c < 3; ++c) {
            EXPECT_EQ(sampler.minColor[c], *std::ranges::min_element(channels[c]));
            EXPECT_EQ(sampler.maxColor[c], *std::ranges::max_element(channels[c]));
        }
    }
    fixedDraw = -1;
}

TEST(PixelSampler, NeedsMoreWhenIdsOrColoursDiffer) {
    const VxUniqueSampleTable table = tableOf({2, 1.0F, 0, 1.0F, 1});
    VxPixelSampler sampler{};
    for (const DataRow &row : dataRows("sampling.txt", "needs more")) {
        vxPixelSamplerStart(&sampler, table.get());
        for (std::size_t i = 2; i < row.size(); i += 4) {
            const float color[] = {std::stof(row[i + 1]), std::stof(row[i + 2]),
                                   std::stof(row[i + 3])};
            const auto id = static_cast<std::uint32_t>(std::stoul(row[i]));
            vxPixelSamplerAdd(&sampler, color, color, id, 1);
        }
        EXPECT_EQ(vxPixelSamplerNeedsMore(&sampler, std::stof(row[0])), std::stoi(row[1]))
            << testing::PrintToString(row);
    }
}

}  // namespace
