/*
 * vxsampling.h: the sample positions of an antialiased pixel, and the sums of its samples.
 *
 * A sample table contains 67 sets, each of n x n sample positions relative to the centre of the
 * pixel. The sets have the same pattern but different jitter. A pixel sampler selects a random set
 * for a pixel, returns its positions one by one, and sums what the caller found there.
 *
 *     VxSampleTable table;
 *     if (vxSampleTableInit(&table, 4, 0.5f, 0, 1.0f, 1)) {
 *         for each pixel (px, py) {
 *             VxPixelSampler sampler;
 *             float dx, dy, color[3], second[3];
 *             vxPixelSamplerStart(&sampler, &table);
 *             while (vxPixelSamplerHasNext(&sampler)) {
 *                 vxPixelSamplerNext(&sampler, &dx, &dy);
 *                 uint32_t id = render(px + dx, py + dy, color, second);
 *                 vxPixelSamplerAdd(&sampler, color, second, id, 0);
 *             }
 *             vxPixelSamplerResult(&sampler, color, second);
 *         }
 *         vxSampleTableRelease(&table);
 *     }
 *
 * Two patterns:
 *
 *   square   a jittered n x n grid, uniform over a rectangle of the half widths sizeX and sizeY
 *   disk     a two-dimensional normal distribution with the standard deviations sizeX and sizeY,
 *            cut off at 1.3 of them: the Box-Muller transform of a jittered grid. Row i gives the
 *            angle, column j the radius, and each set has its own rotation
 *
 * Random numbers come from the C library: srand, and rand() & 0x7fff for each draw. A program that
 * defines both functions replaces the generator. The arithmetic is in double and rounds to float
 * where a value is stored. So equal draws give equal tables, bit for bit, if the mathematics
 * library is the same.
 *
 * Threads. Call vxSampleTableInit on one thread at a time, because it seeds the generator of the
 * process. Any number of threads and samplers may read a filled table. Use a sampler on one thread;
 * vxPixelSamplerStart draws from the generator of the process.
 */
#ifndef VXSAMPLING_H
#define VXSAMPLING_H

#include "vxexports.h"

#include <stdint.h>
#include <stdlib.h>

VX_BEGIN_C

enum { VX_SAMPLE_SETS = 67 };

/* ---- The table ------------------------------------------------------------------------ */

/*
 * A plain record in the caller's storage. offsetX[s][k] and offsetY[s][k] are the distances of
 * sample k of set s from the centre; k = row * n + column. Each of the 134 arrays is a separate
 * allocation and belongs to the table.
 */
typedef struct VxSampleTable {
    float *offsetX[VX_SAMPLE_SETS]; /* sampleCount floats each */
    float *offsetY[VX_SAMPLE_SETS];
    int32_t sampleCount; /* n * n, the samples of each set */
    float sampleWeight;  /* 1 / (n * n), the weight of one sample */
} VxSampleTable;

/*
 * Fills a table. The old contents of the record are overwritten, not released.
 *
 *   gridSize   n, the samples along each side of the grid; below 1 counts as 1. With n = 1 every
 *              set has one sample, at the centre, and no random number is drawn.
 *   size       sizeX, in the caller's units
 *   doubleY    not 0: sizeY is twice sizeX; 0: they are equal
 *   jitter     0 centres each sample in its grid cell, 1 lets it be anywhere in it; values
 *              outside 0 to 1 put samples outside their cells, or give NaN
 *   square     not 0: the square pattern; 0: the disk
 *
 * Always calls srand(1234) first, so that a table depends only on its arguments and the generator.
 * Draws: none for n = 1; square, for each set: two per sample, first coordinate first; disk, for
 * each set: one for the rotation, then two per sample, angle first.
 *
 * Returns 1, or 0 if out of memory. Then the arrays of the sets up to the failing one are freed and
 * null, and the pointers of later sets are unchanged. A grid of more than 2147483647 samples (n
 * above 46340) also gives 0: it fails at the first set, with a sampleCount of 0.
 *
 * The caller frees each array with free, or all of them with vxSampleTableRelease.
 */
VX_API int vxSampleTableInit(VxSampleTable *table, int gridSize, float size, int doubleY,
                             float jitter, int square);

/* Returns the table's sampleWeight. */
VX_API float vxSampleTableWeight(const VxSampleTable *table);

/*
 * Frees the arrays of a filled table and sets their pointers to null. Samplers on the table become
 * invalid. Does nothing to a table of null pointers, so it may follow a failed vxSampleTableInit
 * if the record was zeroed before.
 */
static inline void vxSampleTableRelease(VxSampleTable *table) {
    int set;
    for (set = 0; set < VX_SAMPLE_SETS; ++set) {
        free(table->offsetX[set]);
        free(table->offsetY[set]);
        table->offsetX[set] = 0;
        table->offsetY[set] = 0;
    }
}

/* ---- The sampler ---------------------------------------------------------------------- */

/*
 * One pixel in progress, in the caller's storage. It owns no memory. Colours have three channels.
 * `second` is any second colour of a sample; it is only summed. `id` is any number for a surface;
 * it is only compared.
 */
typedef struct VxPixelSampler {
    int32_t sampleIndex; /* the sample returned last; -1 at the start */
    int32_t setIndex;    /* the set of this pixel, 0 to 66 */
    float colorSum[3];   /* weighted sum of `color` */
    float minColor[3];   /* minimum and maximum `color` per channel, unweighted */
    float maxColor[3];
    float secondSum[3];         /* weighted sum of `second` */
    int32_t sameId;             /* 1 if all samples so far have the same id, else 0 */
    uint32_t firstId;           /* id of the first sample; undefined before it */
    int32_t firstSample;        /* 1 until the first sample is added */
    const VxSampleTable *table; /* borrowed: must outlive the pixel */
} VxPixelSampler;

/*
 * Begins a pixel: selects a set with one call of rand, and clears sums, minimum and maximum. The
 * old contents of the record do not matter. REQUIRES: `table` is filled.
 */
VX_API void vxPixelSamplerStart(VxPixelSampler *sampler, const VxSampleTable *table);

/* Returns 1 if there is another sample, else 0. */
VX_API int vxPixelSamplerHasNext(const VxPixelSampler *sampler);

/*
 * Moves to the next sample and stores its position. REQUIRES: vxPixelSamplerHasNext returns 1;
 * no bound is checked here.
 */
VX_API void vxPixelSamplerNext(VxPixelSampler *sampler, float *x, float *y);

/*
 * Adds a sample: `color` and `second`, three floats each, times the table's sampleWeight. So the
 * sums of a complete walk are means. If `quarter` is not 0, the terms are multiplied by 1/4;
 * minimum, maximum and ids are not affected. Each sum is rounded to float at every step, in the
 * order of the calls.
 */
VX_API void vxPixelSamplerAdd(VxPixelSampler *sampler, const float *color, const float *second,
                              uint32_t id, int quarter);

/*
 * Returns 1 if the samples so far differ enough for the pixel to need more, else 0: if their ids
 * differ, or if in any channel of `color` max + min > 0 and max - min >= contrast * (max + min).
 * Returns 0 before the first sample.
 */
VX_API int vxPixelSamplerNeedsMore(const VxPixelSampler *sampler, float contrast);

/* Copies colorSum and secondSum, three floats each. May be called at any time. */
VX_API void vxPixelSamplerResult(const VxPixelSampler *sampler, float *color, float *second);

VX_END_C

#endif
