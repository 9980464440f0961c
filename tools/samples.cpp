// The sets of a sample table as a drawing.

#include "commands.h"
#include "output_file.h"
#include "report.h"

#include <vxhandles.h>

#include <cstdio>
#include <new>
#include <unistd.h>

namespace tool {

namespace {

constexpr int kColumns = 10, kRows = (VX_SAMPLE_SETS + kColumns - 1) / kColumns;
constexpr int kCell = 100, kGap = 10, kPitch = kCell + kGap;

void drawSet(std::FILE *file, const VxSampleTable &table, int set, bool square, double radius) {
    std::fprintf(file, "<g transform=\"translate(%d %d) scale(%d)\"><title>set %d</title>",
                 kGap + kCell / 2 + set % kColumns * kPitch,
                 kGap + kCell / 2 + set / kColumns * kPitch, kCell / 2, set);
    std::fputs(square ? "<rect class=\"frame\" x=\"-1\" y=\"-1\" width=\"2\" height=\"2\"/>\n"
                      : "<circle class=\"frame\" r=\"1\"/>\n",
               file);
    for (int i = 0; i < table.sampleCount; ++i) {
        // y goes up in a picture and down in a drawing.
        std::fprintf(file, "<circle cx=\"%.4f\" cy=\"%.4f\" r=\"%.4f\"/>\n",
                     double{table.offsetX[set][i]}, -double{table.offsetY[set][i]}, radius);
    }
    std::fputs("</g>\n", file);
}

void draw(std::FILE *file, const VxSampleTable &table, int gridSize, bool square) {
    const int width = kGap + kColumns * kPitch, height = kGap + kRows * kPitch;
    std::fprintf(file,
                 "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" "
                 "viewBox=\"0 0 %d %d\">\n<title>%d sets of %d samples, %s</title>\n"
                 "<style>.frame { fill: none; stroke: #999; stroke-width: 0.02 }</style>\n"
                 "<rect width=\"100%%\" height=\"100%%\" fill=\"white\"/>\n",
                 width, height, width, height, int{VX_SAMPLE_SETS}, table.sampleCount,
                 square ? "square" : "disk");
    for (int set = 0; set < VX_SAMPLE_SETS; ++set)
        drawSet(file, table, set, square, 0.25 / (gridSize + 1));
    std::fputs("</svg>\n", file);
}

}  // namespace

int drawSamples(bool square, int gridSize, const std::string &output) {
    // The disk is cut off at 1.3 of its size: both patterns reach from -1 to 1.
    const float size = square ? 1.0F : 1.0F / 1.3F;
    const VxUniqueSampleTable table = vxSampleTableMake(gridSize, size, 0, 1.0F, square ? 1 : 0);
    if (table == nullptr) throw std::bad_alloc();
    OutputFile target(output);
    vx::File handle = target.duplicate();
    std::FILE *file = fdopen(handle.get(), "w");
    if (file == nullptr) throw systemError(output);
    handle.release();
    draw(file, *table, gridSize, square);
    const bool failed = std::ferror(file) != 0;
    if (std::fclose(file) != 0 || failed) throw systemError(output);
    target.commit();
    return kDone;
}

}  // namespace tool
