// From where a picture is taken.
#ifndef RENDER_VIEW_H
#define RENDER_VIEW_H

#include "vec.h"

#include <string>

struct View {
    Vec eye{0.2F, 1.5F, 4.2F};
    Vec target{0.05F, 0.92F, -1.0F};
};

// A view lies in a file as its six numbers, 4 bytes each, most significant byte first: the same on
// machines of either byte order. False after a message if the file
// cannot be written whole; an older one stays then.
bool writeView(View view, const std::string &path);

// False if the file cannot be read, or holds no place to look from and direction to look in.
bool readView(View &view, const std::string &path);

#endif
