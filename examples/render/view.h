// The position and direction of the camera.
#ifndef RENDER_VIEW_H
#define RENDER_VIEW_H

#include "vec.h"

#include <string>

struct View {
    Vec eye{0.2F, 1.5F, 4.2F};
    Vec target{0.05F, 0.92F, -1.0F};
};

// Saves a view as six numbers of 4 bytes, most significant byte first, so that machines of either
// byte order can read it. False after a message if the file cannot be written; an older file is
// unchanged then.
bool writeView(View view, const std::string &path);

// False if the file cannot be read, or does not hold a valid position and direction.
bool readView(View &view, const std::string &path);

#endif
