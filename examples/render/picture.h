// Draws a scene into an image file.
#ifndef RENDER_PICTURE_H
#define RENDER_PICTURE_H

#include "scene.h"
#include "view.h"

#include <csignal>

// A signal that is to end the program, or 0. Drawing stops after the current row.
extern volatile std::sig_atomic_t stopSignal;

struct PictureReport {
    bool written = false;
    double seconds = 0;
    double refinedShare = 0;  // share of the pixels that got the many samples
    long long rays = 0;
    int poolBytes = 0;
};

// Draws the scene into an image file. Without antialiasing each pixel is sampled at its centre
// only. Stops after a message when the file cannot be written.
PictureReport drawPicture(const Scene &scene, const View &view, const char *path, int width,
                          int height, bool antialias);

#endif
