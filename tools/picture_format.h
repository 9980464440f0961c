// The formats that pictures come in.
#ifndef TOOLS_PICTURE_FORMAT_H
#define TOOLS_PICTURE_FORMAT_H

#include "picture.h"
#include "platform/files.h"

#include <memory>
#include <string>

namespace tool {

// All but image files are foreign: they have no settings to choose.
enum class Format { kImage, kPng, kTiff, kJpeg, kUnknown };

// By the first bytes of the file; what no other format claims is taken for an image file. Throws
// Error when there is no file to read.
Format formatOfFile(const std::string &path);

// By the extension.
Format formatOfName(const std::string &path);

inline bool isForeign(Format format) {
    return format != Format::kImage && format != Format::kUnknown;
}

// The extensions of all that this program can write, for messages.
std::string writableExtensions();

// Both throw Error, where the program was built without the format, too.
std::unique_ptr<PictureSource> openForeign(Format format, const std::string &path);
std::unique_ptr<PictureSink> createForeign(Format format, const std::string &path, vx::File file,
                                           const PictureForm &form);

}  // namespace tool

#endif
