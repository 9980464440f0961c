// A colour image on its way to a file, for other programs to read.
#ifndef RENDER_IMAGE_FILE_H
#define RENDER_IMAGE_FILE_H

#include "vec.h"

#include <vximage.h>

#include <vector>

class ImageFile {
public:
    ImageFile(const char *path, int width, int height, const char *title);
    ~ImageFile() { close(); }
    ImageFile(const ImageFile &) = delete;
    ImageFile &operator=(const ImageFile &) = delete;

    // Takes a row of `width` colours, each channel 0 to 1 as a screen shows it. Rows count from the
    // bottom, as in the file. A failure shows at close.
    void putRow(int y, const Vec *colors);

    // Completes the file. False if it, or a row before, could not be written.
    bool close();

private:
    VxImage *image_;
    std::vector<uint16_t> rows_[3];  // one row crosses the interface plane by plane
    bool good_;
};

#endif
