#include "picture.h"

#include "image_file.h"
#include "tracer.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <unistd.h>
#include <vector>

volatile std::sig_atomic_t stopSignal;

namespace {

class Camera {
public:
    Camera(const View &view, int width, int height)
        : eye_(view.eye),
          forward_(normalize(view.target - view.eye)),
          pixel_(2 * kHalfHeight / static_cast<float>(height)),
          centerX_(static_cast<float>(width) / 2),
          centerY_(static_cast<float>(height) / 2) {}

    // The ray through a point of the picture, in pixels from its lower left corner.
    Ray through(float x, float y) const {
        const Vec right = normalize(cross(forward_, {0, 1, 0}));
        const Vec up = cross(right, forward_);
        return {eye_, normalize(forward_ + right * ((x - centerX_) * pixel_) +
                                up * ((y - centerY_) * pixel_))};
    }

private:
    static constexpr float kHalfHeight = 0.275F;  // of the picture, at one metre from the eye

    Vec eye_, forward_;
    float pixel_, centerX_, centerY_;
};

// A progress bar, if standard error is a terminal.
class Progress {
public:
    explicit Progress(int steps) : steps_(steps), isTerminal_(isatty(STDERR_FILENO) != 0) {}
    ~Progress() {
        if (isTerminal_) std::fputs("\r\x1B[K", stderr);
    }
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    void show(int step) {
        const int percent = 100 * step / steps_;
        if (!isTerminal_ || percent == shown_) return;
        shown_ = percent;
        static constexpr char kFull[] = "########################################";
        constexpr int kCells = sizeof kFull - 1;
        std::fprintf(stderr, "\r[%-*.*s] %3d %%", kCells, percent * kCells / 100, kFull, percent);
    }

private:
    int steps_;
    bool isTerminal_;
    int shown_ = -1;
};

}  // namespace

PictureReport drawPicture(const Scene &scene, const View &view, const char *path, int width,
                          int height, bool antialias) {
    const auto start = std::chrono::steady_clock::now();
    const Camera camera(view, width, height);
    Tracer tracer(scene);
    // The square pattern over half a pixel to each side is a box filter, which keeps textures
    // sharp.
    const AdaptiveTables tables(antialias ? 3 : 1, 8, 0.5F, Pattern::kSquare, 0.08F);
    ImageFile file(path, width, height, "A room by lamplight");
    Progress progress(height);
    std::vector<Vec> row(static_cast<std::size_t>(width));
    long long refinedPixels = 0;
    for (int y = 0; y < height && file.good() && stopSignal == 0; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto sampleAt = [&](float dx, float dy) {
                return tracer.trace(camera.through(static_cast<float>(x) + 0.5F + dx,
                                                   static_cast<float>(y) + 0.5F + dy));
            };
            bool refined = false;
            row[static_cast<std::size_t>(x)] = toScreen(meanLight(tables, sampleAt, refined));
            refinedPixels += refined ? 1 : 0;
        }
        file.putRow(y, row.data());
        tracer.releaseHits();
        progress.show(y + 1);
    }
    PictureReport report;
    report.written = stopSignal == 0 && file.close();
    report.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    report.refinedShare = static_cast<double>(refinedPixels) / width / height;
    report.rays = tracer.rays();
    report.poolBytes = tracer.poolBytes();
    return report;
}
