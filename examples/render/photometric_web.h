// Photometric webs: how much light a lamp sends in which direction.
#ifndef RENDER_PHOTOMETRIC_WEB_H
#define RENDER_PHOTOMETRIC_WEB_H

#include <vxstring.h>

#include <cstdio>
#include <vector>

// The name of the first file along the search paths of photometric webs that a wildcard fits: of
// the files in one directory the first by name. Empty if there is none.
VxString photometricWebNamed(const char *wildcard);

class PhotometricWeb {
public:
    // Reads the file of this name (IES LM-63, without a table for tilted lamps) from the search
    // paths. False if there is none, or none of this kind.
    bool load(const VxString &name);

    // Candela in a direction, in degrees: `vertical` 0 is straight down and 180 up, `horizontal`
    // is counted around the vertical. 0 beyond the angles of the file.
    float candela(float vertical, float horizontal) const;

private:
    bool read(std::FILE *file);

    std::vector<float> vertical_, horizontal_;  // ascending
    std::vector<float> candela_;                // a plane of `horizontal_` behind the other
};

#endif
