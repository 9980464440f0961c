// Renders a small scene with the library.
//
//     render [--plain] [--view FILE] WIDTH HEIGHT FOLDER
//
// Writes plain.sgi, antialiased.sgi and room.view into the folder; with --plain no antialiased.sgi.
// --view takes a saved room.view and renders from there. Textures are found along the search paths
// of textures, the light distributions of the lamps along those of photometric webs.
//
// What each file shows:
//
//     texture            search paths, whole pictures, a table of owned objects, strings
//     photometric_web    search paths, wildcards
//     ../ies_file        streams with a pinned locale, lines of text
//     scene              lists of owned objects
//     tracer             a pool of records; soft shadows with the disk pattern
//     samples, picture   sample tables and the pixel sampler
//     image_file         image files, row by row
//     view               byte order
//     report             the message services

#include "image_file.h"
#include "picture.h"
#include "report.h"

#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

constexpr int kMaxSide = 16384;  // pixels

static bool draw(const Scene &scene, const View &view, const std::string &path, int width,
                 int height, bool antialias) {
    const PictureReport report = drawPicture(scene, view, path.c_str(), width, height, antialias);
    if (!report.written) return false;
    std::printf("%s: %.2f s, %lld rays, %.1f %% of pixels refined, %d KB for hit records\n",
                path.c_str(), report.seconds, report.rays, 100 * report.refinedShare,
                report.poolBytes / 1024);
    return true;
}

static bool drawAll(const View &view, const std::string &folder, int width, int height,
                    bool onlyPlain) {
    Scene scene;
    return scene.build() && writeView(view, folder + "room.view") &&
           draw(scene, view, folder + "plain.sgi", width, height, false) &&
           (onlyPlain || draw(scene, view, folder + "antialiased.sgi", width, height, true));
}

// The first signal ends the program after it has removed the unfinished picture, a second one at
// once.
static void stop(int signal) {
    stopSignal = signal;
    std::signal(signal, SIG_DFL);
}

static constexpr int kStopSignals[] = {
#ifdef SIGHUP
    SIGHUP,
#endif
    SIGINT, SIGTERM};

static void handleSignals() {
    ignoreFileSizeSignal();
    for (const int each : kStopSignals) {
        if (std::signal(each, stop) == SIG_IGN) std::signal(each, SIG_IGN);
    }
}

int main(int count, char **arguments) {
    bool onlyPlain = false;
    const char *viewFile = nullptr;
    int first = 1;
    for (; first < count && std::strncmp(arguments[first], "--", 2) == 0; ++first) {
        if (std::strcmp(arguments[first], "--plain") == 0) {
            onlyPlain = true;
        } else if (std::strcmp(arguments[first], "--view") == 0 && first + 1 < count) {
            viewFile = arguments[++first];
        } else {
            break;  // leaves too many arguments
        }
    }
    const int width = count == first + 3 ? std::atoi(arguments[first]) : 0;
    const int height = count == first + 3 ? std::atoi(arguments[first + 1]) : 0;
    if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide) {
        std::fprintf(stderr, "usage: render [--plain] [--view FILE] WIDTH HEIGHT FOLDER\n");
        return 2;
    }
    handleSignals();
    std::setlocale(LC_NUMERIC,
                   "");  // for the output; webs are read with a decimal point all the same
    View view;
    if (viewFile != nullptr && !readView(view, viewFile)) {
        reportFailure(std::string("cannot read a view from ") + viewFile);
        return 1;
    }
    const std::string folder = std::string(arguments[first + 2]) + "/";
    try {
        const bool drawn = drawAll(view, folder, width, height, onlyPlain);
        if (stopSignal != 0) std::raise(stopSignal);
        return drawn ? 0 : 1;
    } catch (const std::exception &problem) {
        reportFailure(problem.what());
        return 1;
    }
}
