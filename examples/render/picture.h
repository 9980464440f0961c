// A scene becomes a picture.
#ifndef RENDER_PICTURE_H
#define RENDER_PICTURE_H

#include "scene.h"
#include "view.h"

#include <csignal>

// A signal to end by, 0 for none: drawing stops after the row.
extern volatile std::sig_atomic_t stopSignal;

struct PictureReport {
    bool written = false;
    double seconds = 0;
    double refinedShare = 0;  // of pixels that got the many samples
    long long rays = 0;
    int poolBytes = 0;
};

// Draws the scene into an image file. Without antialiasing each pixel is what lies at its centre.
// Stops at once where the file cannot be written, which a message says.
PictureReport drawPicture(const Scene &scene, const View &view, const char *path, int width,
                          int height, bool antialias);

#endif
