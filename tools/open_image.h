// Image files opened for reading, and what the library says about images.
#ifndef TOOLS_OPEN_IMAGE_H
#define TOOLS_OPEN_IMAGE_H

#include <vximage.h>

#include <cstdint>
#include <memory>
#include <string>

namespace tool {

// The result of vxImageClose. What could not be closed cannot be ended in any other way: it stays
// until the process ends.
int closeImage(VxImage *image);

struct ImageCloser {
    void operator()(VxImage *image) const { closeImage(image); }
};
using ImageHandle = std::unique_ptr<VxImage, ImageCloser>;

// Throws Error when there is no image to read.
ImageHandle openImage(const std::string &path);

// What the library said since this was last asked, or a text for when it kept silent.
std::string imageMessage(const char *otherwise);

// Sends the messages of the library to imageMessage instead of standard error.
void collectImageMessages();

int elementBytesOf(const VxImage *image);
bool isVerbatim(const VxImage *image);

// Elements of the widest verbatim row that the library reads.
int widestVerbatimRow(int elementBytes);

// What makes a header one by which not all rows can be read, or an empty text.
std::string headerFault(const VxImage *image);

}  // namespace tool

#endif
