// A color image that is written row by row, for other programs to read.
#ifndef RENDER_IMAGE_FILE_H
#define RENDER_IMAGE_FILE_H

#include "vec.h"

#include <vxhandles.h>

#include <cstdint>
#include <string>
#include <vector>

// Where a limit on the size of files ends the process, it is from now on a failure like any other.
void ignoreFileSizeSignal();

// The image is written under a temporary name, and replaces the file of its own name when it is
// closed with all its rows. After a failure an older picture is unchanged.
class ImageFile {
public:
    ImageFile(const char *path, int width, int height, const char *title);
    ~ImageFile();  // removes the temporary file if the image was not closed
    ImageFile(const ImageFile &) = delete;
    ImageFile &operator=(const ImageFile &) = delete;

    // Writes a row of `width` colors, each channel a screen value from 0 to 1. Row 0 is the lowest.
    void putRow(int y, const Vec *colors);

    // False once something could not be written.
    bool good() const { return good_; }

    // Completes the file. False after a message if a row is missing or something was not written.
    bool close();

private:
    void check(bool done);
    void discard();

    std::string path_, partPath_;
    VxUniqueImage image_;
    std::vector<std::uint16_t> rows_[3];  // one row of each plane
    bool good_ = true;
    int reason_ = 0;  // the errno of the first failure
};

#endif
