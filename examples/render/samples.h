// Adaptive sampling: a few samples where they agree, many where they differ.
#ifndef RENDER_SAMPLES_H
#define RENDER_SAMPLES_H

#include "vec.h"

#include <vxsampling.h>

#include <cstdint>
#include <new>

// What a sample found. The sampler judges one colour and sums another, which is just what is wanted
// here: whether samples differ is for the eye to say, but what adds up is light.
struct Sample {
    Vec seen;   // as a screen shows it
    Vec light;  // linear
    std::uint32_t id = 0;
};

class SampleTable {
public:
    enum Pattern { kDisk, kSquare };

    // grid x grid samples, as far as `size` reaches.
    SampleTable(int grid, float size, Pattern pattern) {
        if (vxSampleTableInit(&table_, grid, size, 0, 1.0F, pattern) == 0) throw std::bad_alloc();
    }
    ~SampleTable() { vxSampleTableRelease(&table_); }
    SampleTable(const SampleTable &) = delete;
    SampleTable &operator=(const SampleTable &) = delete;

    operator const VxSampleTable *() const { return &table_; }

private:
    VxSampleTable table_;
};

// The mean light of one walk through a table. `sampleAt(x, y)` gives the Sample at an offset.
template <typename SampleAt>
Vec meanLight(VxPixelSampler &sampler, const SampleTable &table, SampleAt sampleAt) {
    vxPixelSamplerStart(&sampler, table);
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

// A coarse and a fine table of one pattern. They are filled once and only read from then on, so
// that one pair serves all pixels.
struct AdaptiveTables {
    AdaptiveTables(int coarseGrid, int fineGrid, float size, SampleTable::Pattern pattern,
                   float leastContrast)
        : coarse(coarseGrid, size, pattern),
          fine(fineGrid, size, pattern),
          contrast(leastContrast) {}

    SampleTable coarse, fine;
    float contrast;  // at which coarse samples count as different
};

// The same with few samples and, where these differ, again with many. `refined` says which it was.
template <typename SampleAt>
Vec meanLight(const AdaptiveTables &tables, SampleAt sampleAt, bool &refined) {
    VxPixelSampler sampler;
    const Vec few = meanLight(sampler, tables.coarse, sampleAt);
    refined = vxPixelSamplerNeedsMore(&sampler, tables.contrast) != 0;
    return refined ? meanLight(sampler, tables.fine, sampleAt) : few;
}

#endif
