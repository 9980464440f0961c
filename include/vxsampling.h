/*
 * vxsampling.h: where the samples of an antialiased pixel lie, and what they add up to.
 *
 * A sample table holds 67 sets of n x n sample positions around a common centre. All sets are
 * instances of one pattern, each jittered in its own way. A pixel sampler takes one set at random
 * for a pixel, hands out its positions one at a time, and collects what the caller found there.
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
 *   square   a jittered n x n grid, uniform over the rectangle from -sizeX to +sizeX and from
 *            -sizeY to +sizeY: sizes are half widths
 *   disk     a two-dimensional normal distribution of standard deviations sizeX and sizeY, cut off
 *            at 1.3 of them: the Box-Muller transform of a jittered grid, row i giving the angle
 *            and column j the radius, with a rotation of its own for each set
 *
 * Random numbers are the C library's: srand, and rand() & 0x7fff for each draw. A program that
 * defines its own two functions replaces the generator. The arithmetic is in double and rounds to
 * float where a value is stored, so that equal draws give equal tables, bit for bit (with one
 * and the same mathematics library).
 *
 * Threads. vxSampleTableInit runs on one thread at a time, as it seeds the generator of the
 * process. A filled table is only read, by any number of threads and samplers. A sampler serves
 * one thread; vxPixelSamplerStart draws from the generator of the process.
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
 * A plain record in the caller's storage. Sample k of set s lies at (offsetX[s][k],
 * offsetY[s][k]) from the centre; k = row * n + column. Each of the 134 arrays is an allocation
 * of its own and belongs to the table.
 */
typedef struct VxSampleTable {
    float *offsetX[VX_SAMPLE_SETS]; /* sampleCount floats each */
    float *offsetY[VX_SAMPLE_SETS];
    int32_t sampleCount; /* n * n, the samples in each set */
    float sampleWeight;  /* 1 / (n * n), the share of one sample */
} VxSampleTable;

/*
 * Fills a table. What the record held before does not matter and is not released.
 *
 *   gridSize   n, the samples along each side of the grid; below 1 counts as 1. With n = 1 every
 *              set has its one sample at the centre, and nothing is drawn.
 *   size       sizeX, in the caller's units
 *   doubleY    not 0: sizeY is twice sizeX; 0: they are equal
 *   jitter     0 puts each sample at the centre of its cell of the grid, 1 anywhere in it; values
 *              outside 0 to 1 put samples outside their cells, or nowhere (NaN)
 *   square     not 0: the square pattern; 0: the disk
 *
 * Calls srand(1234) first, always, so that a table follows from its arguments and the generator.
 * Draws: none for n = 1; square, for each set: two a sample, first coordinate first; disk, for each
 * set: one for the rotation, then two a sample, angle first.
 *
 * The result is 1, or 0 without memory: the arrays of the sets up to the one that failed
 * are released and null, and the pointers of the sets behind it are as they were. A grid of
 * more than 2147483647 samples (n above 46340) gets 0 in the same way, failing at the first
 * set, with a sampleCount of 0.
 *
 * The caller gives the arrays back with free, or all at once with vxSampleTableRelease.
 */
VX_API int vxSampleTableInit(VxSampleTable *table, int gridSize, float size, int doubleY,
                             float jitter, int square);

/* The table's sampleWeight. */
VX_API float vxSampleTableWeight(const VxSampleTable *table);

/*
 * Gives back the arrays of a filled table and leaves null pointers. Samplers on the table are void
 * from here on. Does nothing to a table of null pointers, so it may follow a failed
 * vxSampleTableInit if the record was zeroed before that.
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
 * One pixel in progress, in the caller's storage; it holds no memory of its own. Colours have three
 * channels. `second` is any second colour of a sample and `id` any value that tells one
 * surface from another: the sampler sums the one and compares the other.
 */
typedef struct VxPixelSampler {
    int32_t sampleIndex; /* the sample last handed out; -1 before the first */
    int32_t setIndex;    /* the set of this pixel, 0 to 66 */
    float colorSum[3];   /* weighted sum of `color` */
    float minColor[3];   /* least and greatest `color`, by channel and unweighted */
    float maxColor[3];
    float secondSum[3];         /* weighted sum of `second` */
    int32_t sameId;             /* 1 while every sample bore the id of the first, else 0 */
    uint32_t firstId;           /* the id of the first sample; undefined before it */
    int32_t firstSample;        /* 1 until the first sample is added */
    const VxSampleTable *table; /* borrowed: it outlives the pixel */
} VxPixelSampler;

/*
 * Begins a pixel: draws a set, one rand, and clears sums and extremes. `table` is filled. What
 * the record held before does not matter.
 */
VX_API void vxPixelSamplerStart(VxPixelSampler *sampler, const VxSampleTable *table);

/* 1 if there is another sample, else 0. */
VX_API int vxPixelSamplerHasNext(const VxPixelSampler *sampler);

/*
 * Goes to the next sample and stores its position. REQUIRES: vxPixelSamplerHasNext gives 1;
 * no bound is tested here.
 */
VX_API void vxPixelSamplerNext(VxPixelSampler *sampler, float *x, float *y);

/*
 * Adds what was found at a sample: `color` and `second`, three floats each, times the table's
 * sampleWeight to the sums, so that after a whole walk the sums are means. With `quarter` not 0 the
 * terms count a quarter; extremes and ids are the same either way. Each sum is rounded to float at
 * every step, in the order of the calls.
 */
VX_API void vxPixelSamplerAdd(VxPixelSampler *sampler, const float *color, const float *second,
                              uint32_t id, int quarter);

/*
 * 1 if the samples so far differ so much that the pixel deserves more, else 0: if their ids differ,
 * or if in some channel max + min > 0 and max - min >= contrast * (max + min), of `color`.
 * 0 before the first sample.
 */
VX_API int vxPixelSamplerNeedsMore(const VxPixelSampler *sampler, float contrast);

/* Copies colorSum and secondSum, three floats each. They may be read at any time. */
VX_API void vxPixelSamplerResult(const VxPixelSampler *sampler, float *color, float *second);

VX_END_C

#endif
