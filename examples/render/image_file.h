// A colour image on its way to a file, for other programs to read.
#ifndef RENDER_IMAGE_FILE_H
#define RENDER_IMAGE_FILE_H

#include "vec.h"

#include <vximage.h>

#include <string>
#include <vector>

// The image is written beside the file of its name and takes its place when it is closed with all
// its rows. So whatever goes wrong leaves an older picture as it was, and a success nothing of it.
class ImageFile {
public:
    ImageFile(const char *path, int width, int height, const char *title);
    ~ImageFile();  // of what was not closed, nothing stays
    ImageFile(const ImageFile &) = delete;
    ImageFile &operator=(const ImageFile &) = delete;

    // Takes a row of `width` colours, each channel 0 to 1 as a screen shows it. Rows count from the
    // bottom, as in the file.
    void putRow(int y, const Vec *colors);

    // Could all be written so far?
    bool good() const { return good_; }

    // Completes the file. False after a message if a row is missing or anything was not written.
    bool close();

private:
    void note(bool done);
    void discard();

    std::string path_, partPath_;
    VxImage *image_;
    std::vector<uint16_t> rows_[3];  // one row crosses the interface plane by plane
    bool good_ = true;
    int reason_ = 0;  // the first errno of a failure
};

#endif
