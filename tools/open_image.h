// Image files opened for reading, and what the library says about images.
#ifndef TOOLS_OPEN_IMAGE_H
#define TOOLS_OPEN_IMAGE_H

#include <vxhandles.h>

#include <cstdint>
#include <string>

namespace tool {

// Throws Error when there is no image to read.
VxUniqueImage openImage(const std::string &path);

// What the library said on this thread since this was last asked, or a text for when it kept
// silent.
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
