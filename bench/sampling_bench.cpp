// Sample tables beside the bare calls that they need, and a pixel beside the same sums in line.

#include <vxsampling.h>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace {

void fill(benchmark::State &state, int square) {
    const int grid = static_cast<int>(state.range(0));
    for (auto _ : state) {
        VxSampleTable table;
        vxSampleTableInit(&table, grid, 0.5F, 0, 1.0F, square);
        benchmark::DoNotOptimize(table);
        vxSampleTableRelease(&table);
    }
}

struct Arguments {
    double share, angle;
};

// What a disk asks the mathematics for, sample by sample. The arguments take part in the time:
// those of random samples would mispredict branches of the C library that those of a grid do not.
std::vector<Arguments> diskArguments(int grid) {
    std::srand(1234);
    const auto draw = [] { return (std::rand() & 0x7fff) / 32768.0; };
    const double least = std::exp(-1.3 * 1.3 / 2);
    std::vector<Arguments> all;
    for (int set = 0; set < VX_SAMPLE_SETS; ++set) {
        const double rotation = draw();
        for (int i = 0; i < grid * grid; ++i) {
            const int row = i / grid;
            const int column = i % grid + 1;
            const double turns = (draw() + row) / grid + rotation;
            const double share = (column - draw()) / grid * (1 - least) + least;
            all.push_back({share, turns * 6.283185307179586});
        }
    }
    return all;
}

// The calls alone: memory, if asked for, then of each set the draws, then mathematics for a disk.
void bareCalls(benchmark::State &state, bool memory, bool disk) {
    const int grid = static_cast<int>(state.range(0));
    const int samples = grid * grid;
    const std::vector<Arguments> arguments = diskArguments(grid);
    for (auto _ : state) {
        const Arguments *next = arguments.data();
        void *arrays[2 * VX_SAMPLE_SETS] = {};
        if (memory) {
            for (void *&array : arrays)
                array = std::calloc(static_cast<std::size_t>(samples), sizeof(float));
        }
        for (int set = 0; set < VX_SAMPLE_SETS; ++set) {
            unsigned drawn = 0;
            for (int i = 0; i < 2 * samples + (disk ? 1 : 0); ++i)
                drawn += static_cast<unsigned>(std::rand());
            benchmark::DoNotOptimize(drawn);
            if (!disk) continue;
            double x = 0;
            double y = 0;
            for (int i = 0; i < samples; ++i, ++next) {
                const double radius = std::sqrt(-2.0 * std::log(next->share));
                x += radius * std::cos(next->angle);
                y += radius * std::sin(next->angle);
            }
            benchmark::DoNotOptimize(x);
            benchmark::DoNotOptimize(y);
        }
        benchmark::DoNotOptimize(arrays);
        for (void *array : arrays)
            std::free(array);
    }
}

void square(benchmark::State &state) {
    fill(state, 1);
}

void squareBareCalls(benchmark::State &state) {
    bareCalls(state, false, false);
}

void squareBareCallsAndMemory(benchmark::State &state) {
    bareCalls(state, true, false);
}

void disk(benchmark::State &state) {
    fill(state, 0);
}

void diskBareCalls(benchmark::State &state) {
    bareCalls(state, false, true);
}

void diskBareCallsAndMemory(benchmark::State &state) {
    bareCalls(state, true, true);
}

BENCHMARK(square)->Arg(4)->Arg(8);
BENCHMARK(squareBareCalls)->Arg(4)->Arg(8);
BENCHMARK(squareBareCallsAndMemory)->Arg(4)->Arg(8);
BENCHMARK(disk)->Arg(4)->Arg(8);
BENCHMARK(diskBareCalls)->Arg(4)->Arg(8);
BENCHMARK(diskBareCallsAndMemory)->Arg(4)->Arg(8);

// ---- A pixel ------------------------------------------------------------------------------

constexpr int kGrid = 4;

struct Found {
    float color[3];
    float second[3];
    std::uint32_t id;
};

// What a renderer found at the samples.
struct Scene {
    Scene() {
        vxSampleTableInit(&table, kGrid, 0.5F, 0, 1.0F, 1);
        for (Found &sample : found) {
            for (float &channel : sample.color)
                channel = static_cast<float>(std::rand() % 1000) * 0.001F;
            std::copy_n(sample.color, 3, sample.second);
            sample.id = 7;
        }
    }
    ~Scene() { vxSampleTableRelease(&table); }

    VxSampleTable table;
    Found found[kGrid * kGrid];
};

void pixel(benchmark::State &state) {
    Scene scene;
    for (auto _ : state) {
        VxPixelSampler sampler;
        vxPixelSamplerStart(&sampler, &scene.table);
        for (const Found *found = scene.found; vxPixelSamplerHasNext(&sampler) != 0; ++found) {
            float x;
            float y;
            vxPixelSamplerNext(&sampler, &x, &y);
            benchmark::DoNotOptimize(x);
            benchmark::DoNotOptimize(y);
            vxPixelSamplerAdd(&sampler, found->color, found->second, found->id, 0);
        }
        benchmark::DoNotOptimize(vxPixelSamplerNeedsMore(&sampler, 0.9F));
        float color[3];
        float second[3];
        vxPixelSamplerResult(&sampler, color, second);
        benchmark::DoNotOptimize(color);
        benchmark::DoNotOptimize(second);
    }
}
BENCHMARK(pixel);

bool differs(const float *least, const float *greatest, float contrast) {
    for (int c = 0; c < 3; ++c) {
        const double sum = static_cast<double>(least[c]) + greatest[c];
        const double difference = static_cast<double>(greatest[c]) - least[c];
        if (sum > 0 && sum * contrast <= difference) return true;
    }
    return false;
}

void pixelInLine(benchmark::State &state) {
    Scene scene;
    for (auto _ : state) {
        const int set = static_cast<int>((std::rand() & 0x7fff) * (67 / 32768.0));
        float color[3] = {};
        float second[3] = {};
        float least[3];
        float greatest[3];
        std::copy_n(scene.found[0].color, 3, least);
        std::copy_n(scene.found[0].color, 3, greatest);
        bool sameId = true;
        const double weight = scene.table.sampleWeight;
        for (int i = 0; i < kGrid * kGrid; ++i) {
            const Found &found = scene.found[i];
            benchmark::DoNotOptimize(scene.table.offsetX[set][i]);
            benchmark::DoNotOptimize(scene.table.offsetY[set][i]);
            sameId = sameId && found.id == scene.found[0].id;
            for (int c = 0; c < 3; ++c) {
                least[c] = std::min(least[c], found.color[c]);
                greatest[c] = std::max(greatest[c], found.color[c]);
                color[c] = static_cast<float>(color[c] + weight * found.color[c]);
                second[c] = static_cast<float>(second[c] + weight * found.second[c]);
            }
        }
        benchmark::DoNotOptimize(!sameId || differs(least, greatest, 0.9F));
        benchmark::DoNotOptimize(color);
        benchmark::DoNotOptimize(second);
    }
}
BENCHMARK(pixelInLine);

}  // namespace
