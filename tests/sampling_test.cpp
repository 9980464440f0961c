// Tables and samplers bit for bit against a plain model, with a generator of the test's own.

#include <vxsampling.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <utility>
#include <vector>

namespace {

// What rand returns: all 31 bits, of which the library must use the low 15.
enum class Rand { Sequence, Fixed } mode = Rand::Sequence;
int fixedDraw;
std::minstd_rand generator;
unsigned lastSeed;
int draws;

}  // namespace

// Replace those of the C library, for the program and the library.
extern "C" void srand(unsigned seed) noexcept {
    generator.seed(seed);
    lastSeed = seed;
    draws = 0;
}

extern "C" int rand() noexcept {
    ++draws;
    if (mode == Rand::Fixed) return 0x7fff8000 | fixedDraw;
    return static_cast<int>(generator());
}

namespace {

struct Arguments {
    int grid;
    float size;
    int doubleY;
    float jitter;
    int square;
};

struct Table : VxSampleTable {
    explicit Table(const Arguments &arguments) {
        EXPECT_EQ(vxSampleTableInit(this, arguments.grid, arguments.size, arguments.doubleY,
                                    arguments.jitter, arguments.square),
                  1);
    }
    ~Table() { vxSampleTableRelease(this); }
    Table(const Table &) = delete;
    Table &operator=(const Table &) = delete;

    std::vector<float> all() const {
        std::vector<float> values;
        for (int set = 0; set < VX_SAMPLE_SETS; ++set) {
            values.insert(values.end(), offsetX[set], offsetX[set] + sampleCount);
            values.insert(values.end(), offsetY[set], offsetY[set] + sampleCount);
        }
        return values;
    }
};

bool sameBits(const std::vector<float> &one, const std::vector<float> &other) {
    return one.size() == other.size() &&
           std::memcmp(one.data(), other.data(), one.size() * sizeof(float)) == 0;
}

double modelJitter(float jitter) {
    const double position = (rand() & 32767) / 32768.0;
    const double slack = (1.0 - jitter) / 2;
    return position * jitter + slack;
}

void modelSquare(const Arguments &arguments, float step, std::vector<float> &x,
                 std::vector<float> &y) {
    const float height = arguments.doubleY != 0 ? 2 * arguments.size : arguments.size;
    for (int k = 0; k < arguments.grid * arguments.grid; ++k) {
        const double row = modelJitter(arguments.jitter) + k / arguments.grid;
        x.push_back(static_cast<float>((row * step - 0.5) * arguments.size * 2));
        const double column = modelJitter(arguments.jitter) + k % arguments.grid;
        y.push_back(static_cast<float>((column * step - 0.5) * height * 2));
    }
}

void modelDisk(const Arguments &arguments, float step, std::vector<float> &x,
               std::vector<float> &y) {
    const float height = arguments.doubleY != 0 ? 2 * arguments.size : arguments.size;
    const float cut = 0.42955735F;
    const float turn = static_cast<float>(rand() & 32767) / 32768;
    for (int k = 0; k < arguments.grid * arguments.grid; ++k) {
        const double row = modelJitter(arguments.jitter) + k / arguments.grid;
        const auto angle = static_cast<float>(row * step + turn);
        const double column = k % arguments.grid + 1 - modelJitter(arguments.jitter);
        const double value = std::min(column * step * (1.0 - cut) + cut, 1.0);
        const double radius = std::sqrt(-2.0 * std::log(value));
        const double radians = angle * 6.283185307179586;
        x.push_back(static_cast<float>(radius * std::cos(radians) * arguments.size));
        y.push_back(static_cast<float>(radius * std::sin(radians) * height));
    }
}

std::vector<float> modelTable(const Arguments &arguments) {
    std::vector<float> values;
    std::srand(1234);
    const float step = 1.0F / static_cast<float>(arguments.grid);
    for (int set = 0; set < VX_SAMPLE_SETS; ++set) {
        std::vector<float> x;
        std::vector<float> y;
        (arguments.square != 0 ? modelSquare : modelDisk)(arguments, step, x, y);
        values.insert(values.end(), x.begin(), x.end());
        values.insert(values.end(), y.begin(), y.end());
    }
    return values;
}

void compareWithModel(const Arguments &arguments) {
    SCOPED_TRACE(testing::Message() << arguments.grid << ' ' << arguments.jitter << ' '
                                    << arguments.square << ' ' << arguments.doubleY);
    std::srand(99);
    const Table table(arguments);
    const int samples = arguments.grid * arguments.grid;
    EXPECT_EQ(lastSeed, 1234U);
    EXPECT_EQ(draws, VX_SAMPLE_SETS * (2 * samples + (arguments.square == 0 ? 1 : 0)));
    EXPECT_EQ(table.sampleCount, samples);
    EXPECT_EQ(vxSampleTableWeight(&table), static_cast<float>(1.0 / samples));
    EXPECT_TRUE(sameBits(table.all(), modelTable(arguments)));
}

TEST(SampleTable, EqualsTheModelBitForBit) {
    for (const int grid : {2, 3, 4, 5, 8, 11}) {
        for (const float jitter : {0.0F, 0.8F, 1.0F}) {
            for (const int square : {0, 1, -2}) {
                for (const int doubleY : {0, -2})
                    compareWithModel({grid, 0.7F, doubleY, jitter, square});
            }
        }
    }
    // The edges of all cells: those of the last column are at the centre of the disk or, rounded,
    // beyond it.
    mode = Rand::Fixed;
    for (const int edge : {0, 0x7fff}) {
        fixedDraw = edge;
        for (int grid = 2; grid <= 16; ++grid)
            compareWithModel({grid, 2.0F, 0, 1.0F, 0});
    }
    mode = Rand::Sequence;
}

TEST(SampleTable, OfOneSampleIsTheCentreAndDrawsNothing) {
    for (const int grid : {1, 0, -1, INT32_MIN}) {
        const Table table({grid, 5.0F, 1, 1.0F, grid & 1});
        EXPECT_EQ(draws, 0);
        EXPECT_EQ(lastSeed, 1234U);
        EXPECT_EQ(table.sampleCount, 1);
        EXPECT_EQ(table.sampleWeight, 1.0F);
        EXPECT_TRUE(sameBits(table.all(), std::vector<float>(2 * VX_SAMPLE_SETS)));
    }
}

// ---- The sampler --------------------------------------------------------------------------

TEST(PixelSampler, TheDrawSelectsTheSet) {
    const Table table({2, 1.0F, 0, 1.0F, 1});
    mode = Rand::Fixed;
    for (fixedDraw = 0; fixedDraw < 32768; ++fixedDraw) {
        VxPixelSampler sampler;
        const int before = draws;
        vxPixelSamplerStart(&sampler, &table);
        ASSERT_EQ(sampler.setIndex, fixedDraw * 67 / 32768);
        ASSERT_EQ(draws, before + 1);
    }
    mode = Rand::Sequence;
}

TEST(PixelSampler, WalksItsSetAndSumsInDoubleStepByStep) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> value(-2.0F, 9.0F);
    const Table table({3, 1.0F, 0, 1.0F, 0});
    VxPixelSampler sampler;
    std::memset(&sampler, 0x55, sizeof sampler);
    for (int pixel = 0; pixel < 200; ++pixel) {
        vxPixelSamplerStart(&sampler, &table);
        EXPECT_EQ(sampler.firstId, pixel == 0 ? 0x55555555U : 7U);
        float sums[2][3] = {};
        float min[3];
        float max[3];
        int taken = 0;
        for (; vxPixelSamplerHasNext(&sampler) != 0; ++taken) {
            ASSERT_LT(taken, 9);
            float x = 0;
            float y = 0;
            vxPixelSamplerNext(&sampler, &x, &y);
            EXPECT_EQ(x, table.offsetX[sampler.setIndex][taken]);
            EXPECT_EQ(y, table.offsetY[sampler.setIndex][taken]);

            float colors[2][3];
            const int quarter = static_cast<int>(random() & 2);
            for (int c = 0; c < 3; ++c) {
                for (int which = 0; which < 2; ++which) {
                    colors[which][c] = value(random);
                    double term = static_cast<double>(table.sampleWeight) * colors[which][c];
                    if (quarter != 0) term /= 4;
                    sums[which][c] = static_cast<float>(sums[which][c] + term);
                }
                const float color = colors[0][c];
                min[c] = taken == 0 ? color : std::min(min[c], color);
                max[c] = taken == 0 ? color : std::max(max[c], color);
            }
            vxPixelSamplerAdd(&sampler, colors[0], colors[1], 7, quarter);
        }
        EXPECT_EQ(taken, 9);
        float results[2][3];
        vxPixelSamplerResult(&sampler, results[0], results[1]);
        EXPECT_EQ(std::memcmp(results, sums, sizeof sums), 0);
        EXPECT_EQ(std::memcmp(sampler.minColor, min, sizeof min), 0);
        EXPECT_EQ(std::memcmp(sampler.maxColor, max, sizeof max), 0);
        EXPECT_EQ(sampler.firstId, 7U);
    }
}

struct Sample {
    float color[3];
    std::uint32_t id;
};

TEST(PixelSampler, NeedsMoreWhenIdsOrColoursDiffer) {
    const Sample grey{{1, 1, 1}, 4};
    const Sample black{{0, 0, 0}, 4};
    const struct {
        std::vector<Sample> samples;
        float contrast;
        int more;
    } cases[] = {
        {{grey}, 0.1F, 0},
        {{}, 0.0F, 0},  // a new pixel keeps nothing of the previous one
        // In double these stay just below the contrast; in float they would reach it.
        {{{{0.2F, 0, 0}, 4}, {{0.8F, 0, 0}, 4}}, 0.6F, 0},
        {{{{0.36F, 0, 0}, 4}, {{0.54F, 0, 0}, 4}}, 0.2F, 0},
        {{{{0.01F, 0, 0}, 4}, {{0.24F, 0, 0}, 4}}, 0.92F, 0},
        {{grey}, 0.0F, 1},  // no difference reaches a contrast of 0
        {{black, black}, 0.0F, 0},
        {{{{-2, -2, -2}, 4}, {{1, 1, 1}, 4}}, 0.5F, 0},     // a sum below 0 does not count
        {{{{1, 1, 1}, 4}, {{3, 1, 1}, 4}}, 0.5F, 1},        // equality counts, ...
        {{{{1, 1, 1}, 4}, {{3, 1, 1}, 4}}, 0.50001F, 0},    // ... less does not
        {{{{1, 1, 3}, 4}, {{1, 1, 2}, 4}, grey}, 0.5F, 1},  // in the last channel, descending
        {{grey, {{1, 1, 1}, 5}}, 0.5F, 1},                  // another id
        {{grey, {{1, 1, 1}, 5}, grey}, 0.5F, 1},            // and back
        {{grey, grey, {{1, 1, 1}, 0x80000004}}, 0.5F, 1},   // in the top bit alone
        {{{{1, 1, 1}, 0xFFFFFFFF}, {{1, 1, 1}, 0xFFFFFFFF}}, 0.5F, 0},
    };
    const Table table({2, 1.0F, 0, 1.0F, 1});
    VxPixelSampler sampler{};
    for (const auto &test : cases) {
        vxPixelSamplerStart(&sampler, &table);
        for (const Sample &sample : test.samples)
            vxPixelSamplerAdd(&sampler, sample.color, grey.color, sample.id, 1);
        EXPECT_EQ(vxPixelSamplerNeedsMore(&sampler, test.contrast), test.more)
            << "case " << &test - cases;
        if (!test.samples.empty()) {
            EXPECT_EQ(sampler.firstId, test.samples.front().id);
        }
    }
}

}  // namespace
