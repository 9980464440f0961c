// Photometric webs: how much light a lamp sends in which direction.
#ifndef RENDER_PHOTOMETRIC_WEB_H
#define RENDER_PHOTOMETRIC_WEB_H

#include "../ies_file.h"

#include <vxstring.h>

// The name of a file along the search paths of photometric webs that matches a wildcard: the first
// by name in the first directory that has one. Empty if there is none.
VxString findPhotometricWeb(const char *wildcard);

class PhotometricWeb {
public:
    // Reads the file of this name from the search paths. False if there is no such file, or it is
    // not a photometric web.
    bool load(const VxString &name);

    // Candela in a direction, in degrees: `vertical` is 0 straight down and 180 straight up,
    // `horizontal` is counted around the vertical. 0 outside the vertical angles of the file.
    float candela(float vertical, float horizontal) const;

private:
    IesData data_;
};

#endif
