// Adaptive sampling: few samples where they agree, many where they differ.
#ifndef RENDER_SAMPLES_H
#define RENDER_SAMPLES_H

#include "vec.h"

#include <vxhandles.h>
#include <vxsampling.h>

#include <cstdint>
#include <new>

// The result of one sample. The pixel sampler compares one color and sums another: what differs is
// judged as a screen shows it, but only light can be added up.
struct Sample {
    Vec seen;   // screen values
    Vec light;  // linear
    std::uint32_t id = 0;
};

enum class Pattern { kDisk, kSquare };

inline VxUniqueSampleTable makeTable(int grid, float size, Pattern pattern) {
    VxUniqueSampleTable table =
        vxSampleTableMake(grid, size, 0, 1.0F, pattern == Pattern::kSquare ? 1 : 0);
    if (table == nullptr) throw std::bad_alloc();
    return table;
}

// The mean light over the samples of a table. `sampleAt(x, y)` returns the Sample at an offset.
template <typename SampleAt>
Vec meanLight(VxPixelSampler &sampler, const VxUniqueSampleTable &table, SampleAt sampleAt) {
    vxPixelSamplerStart(&sampler, table.get());
    while (vxPixelSamplerHasNext(&sampler) != 0) {
        float x = 0;
        float y = 0;
        vxPixelSamplerNext(&sampler, &x, &y);
        const Sample sample = sampleAt(x, y);
        const float seen[3] = {sample.seen.x, sample.seen.y, sample.seen.z};
        const float light[3] = {sample.light.x, sample.light.y, sample.light.z};
        vxPixelSamplerAdd(&sampler, seen, light, sample.id, 0);
    }
    float seen[3];
    float light[3];
    vxPixelSamplerResult(&sampler, seen, light);
    return {light[0], light[1], light[2]};
}

// A coarse and a fine table of one pattern, for any number of pixels.
struct AdaptiveTables {
    AdaptiveTables(int coarseGrid, int fineGrid, float size, Pattern pattern, float minContrast)
        : coarse(makeTable(coarseGrid, size, pattern)),
          fine(makeTable(fineGrid, size, pattern)),
          contrast(minContrast) {}

    VxUniqueSampleTable coarse, fine;
    float contrast;  // from which coarse samples count as different
};

// The same with few samples and, if these differ, again with many. `refined` is set then.
template <typename SampleAt>
Vec meanLight(const AdaptiveTables &tables, SampleAt sampleAt, bool &refined) {
    VxPixelSampler sampler;
    const Vec few = meanLight(sampler, tables.coarse, sampleAt);
    refined = vxPixelSamplerNeedsMore(&sampler, tables.contrast) != 0;
    return refined ? meanLight(sampler, tables.fine, sampleAt) : few;
}

#endif
