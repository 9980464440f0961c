// A small scene, drawn with this library alone.
//
//     render [--plain] WIDTH HEIGHT FOLDER
//
// leaves antialiased.sgi and plain.sgi in the folder, with --plain the latter alone. Textures are
// found along the search paths of textures, the light distributions of the lamps along those of
// photometric webs.
//
// Where to look for what:
//
//     texture            search paths, image files, a table of owned objects, strings
//     photometric_web    search paths, streams with a pinned locale, lines
//     scene              lists of owned objects
//     tracer             a pool of records; soft shadows with the disk pattern
//     samples, picture   sample tables and the pixel sampler; image files

#include "picture.h"

#include <vximage.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

constexpr int kMostPixels = 16384;  // along a side

// Errors of image files arrive as text; who reads them wants to know which program speaks.
static void sayImageError(char *text) {
    std::fprintf(stderr, "render: %s\n", text);
}

static bool draw(Scene const &scene, const std::string &path, int width, int height,
                 bool antialias) {
    const PictureReport report = drawPicture(scene, path.c_str(), width, height, antialias);
    if (!report.written) {
        std::fprintf(stderr, "render: cannot write %s\n", path.c_str());
        return false;
    }
    std::printf("%s: %.2f s, %lld rays, %.1f %% of pixels refined, %d KB for hit records\n",
                path.c_str(), report.seconds, report.rays, 100 * report.refinedShare,
                report.poolBytes / 1024);
    return true;
}

int main(int count, char **arguments) {
    const bool onlyPlain = count > 1 && std::strcmp(arguments[1], "--plain") == 0;
    const int first = onlyPlain ? 2 : 1;
    const int width = count == first + 3 ? std::atoi(arguments[first]) : 0;
    const int height = count == first + 3 ? std::atoi(arguments[first + 1]) : 0;
    if (width < 1 || height < 1 || width > kMostPixels || height > kMostPixels) {
        std::fprintf(stderr, "usage: render [--plain] WIDTH HEIGHT FOLDER\n");
        return 2;
    }
    std::setlocale(LC_NUMERIC, "");  // the report has the user's decimal mark; webs keep the point
    vxImageSetErrorHandler(sayImageError);
    const std::string folder = std::string(arguments[first + 2]) + "/";
    try {
        Scene scene;
        const bool good =
            scene.build() && draw(scene, folder + "plain.sgi", width, height, false) &&
            (onlyPlain || draw(scene, folder + "antialiased.sgi", width, height, true));
        return good ? 0 : 1;
    } catch (const std::exception &problem) {
        std::fprintf(stderr, "render: %s\n", problem.what());
        return 1;
    }
}
