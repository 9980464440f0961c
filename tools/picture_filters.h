// Pictures that are made of others on their way.
#ifndef TOOLS_PICTURE_FILTERS_H
#define TOOLS_PICTURE_FILTERS_H

#include "picture.h"

#include <memory>
#include <string>
#include <vector>

namespace tool {

// The same picture in elements of another width, each at the same part of its range.
std::unique_ptr<PictureSource> withDepth(std::unique_ptr<PictureSource> source,
                                         unsigned elementBytes);

// Some planes of a picture, in any order. Throws Error where there is no such plane; `path` is for
// the message.
std::unique_ptr<PictureSource> withPlanes(const std::string &path,
                                          std::unique_ptr<PictureSource> source,
                                          const std::vector<unsigned> &planes);

}  // namespace tool

#endif
