// A picture on its way from one file to another, a line at a time.
#ifndef TOOLS_PICTURE_H
#define TOOLS_PICTURE_H

#include <cstddef>
#include <cstdint>

namespace tool {

struct PictureForm {
    unsigned width, height;
    unsigned planes;
    unsigned elementBytes;  // 1 or 2

    std::size_t lineElements() const { return std::size_t{width} * planes; }
};

// Lines come from the top of the picture down. A line holds the elements of the first plane, then
// those of the second and so on. All functions throw Error.
class PictureSource {
public:
    PictureSource() = default;
    virtual ~PictureSource() = default;
    PictureSource(const PictureSource &) = delete;
    PictureSource &operator=(const PictureSource &) = delete;

    virtual PictureForm form() const = 0;
    virtual void readLine(std::uint16_t *line) = 0;
    // After the last line: is the rest of the file as it should be?
    virtual void finish() {}
};

class PictureSink {
public:
    PictureSink() = default;
    virtual ~PictureSink() = default;
    PictureSink(const PictureSink &) = delete;
    PictureSink &operator=(const PictureSink &) = delete;

    virtual void writeLine(std::uint16_t *line) = 0;
    virtual void finish() = 0;
};

}  // namespace tool

#endif
