// The walk over the samples of one pixel, and their sums.

#include "sampling/random.h"

#include <vxsampling.h>

#include <algorithm>
#include <cstdint>

namespace {

constexpr int kChannels = 3;
constexpr double kSets = VX_SAMPLE_SETS;

void copy(const float *from, float *to) {
    for (int c = 0; c < kChannels; ++c)
        to[c] = from[c];
}

// Without branches, which colours make hard to predict. A NaN leaves the extremes unchanged.
void updateRange(VxPixelSampler *sampler, const float *color) {
    for (int c = 0; c < kChannels; ++c) {
        const float value = color[c];
        sampler->minColor[c] = std::min(sampler->minColor[c], value);
        sampler->maxColor[c] = std::max(sampler->maxColor[c], value);
    }
}

// Each term in double, each sum rounded to float at once. A scale of 1 changes no term.
void accumulate(float *sum, const float *value, double weight, double scale) {
    float next[kChannels];
    for (int c = 0; c < kChannels; ++c)
        next[c] = static_cast<float>(sum[c] + weight * value[c] * scale);
    copy(next, sum);
}

}  // namespace

void vxPixelSamplerStart(VxPixelSampler *sampler, const VxSampleTable *table) {
    // firstId keeps its value, which may be undefined.
    sampler->table = table;
    sampler->sampleIndex = -1;
    sampler->setIndex = static_cast<int>(vx::draw() * kSets);
    for (float *sum :
         {sampler->colorSum, sampler->minColor, sampler->maxColor, sampler->secondSum}) {
        std::fill_n(sum, kChannels, 0.0F);
    }
    sampler->sameId = 1;
    sampler->firstSample = 1;
}

int vxPixelSamplerHasNext(const VxPixelSampler *sampler) {
    return sampler->sampleIndex + 1 < sampler->table->sampleCount ? 1 : 0;
}

void vxPixelSamplerNext(VxPixelSampler *sampler, float *x, float *y) {
    const int sample = ++sampler->sampleIndex;
    *x = sampler->table->offsetX[sampler->setIndex][sample];
    *y = sampler->table->offsetY[sampler->setIndex][sample];
}

void vxPixelSamplerAdd(VxPixelSampler *sampler, const float *color, const float *second,
                       std::uint32_t id, int quarter) {
    if (sampler->firstSample != 0) {
        copy(color, sampler->minColor);
        copy(color, sampler->maxColor);
        sampler->firstSample = 0;
        sampler->firstId = id;
    } else {
        updateRange(sampler, color);
        if (id != sampler->firstId) sampler->sameId = 0;
    }
    const double weight = sampler->table->sampleWeight;
    const double scale = quarter != 0 ? 0.25 : 1.0;
    accumulate(sampler->colorSum, color, weight, scale);
    accumulate(sampler->secondSum, second, weight, scale);
}

int vxPixelSamplerNeedsMore(const VxPixelSampler *sampler, float contrast) {
    if (sampler->sameId == 0) return 1;
    for (int c = 0; c < kChannels; ++c) {
        const double min = sampler->minColor[c];
        const double max = sampler->maxColor[c];
        const double sum = min + max;
        if (sum > 0.0 && sum * contrast <= max - min) return 1;
    }
    return 0;
}

void vxPixelSamplerResult(const VxPixelSampler *sampler, float *color, float *second) {
    copy(sampler->colorSum, color);
    copy(sampler->secondSum, second);
}
