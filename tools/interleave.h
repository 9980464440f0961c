// Lines with the planes one after the other, and with the elements of a pixel together.
#ifndef TOOLS_INTERLEAVE_H
#define TOOLS_INTERLEAVE_H

#include "picture.h"

namespace tool {

template <typename Element>
void interleave(const std::uint16_t *line, const PictureForm &form, Element *pixels) {
    for (std::size_t x = 0; x < form.width; ++x) {
        for (std::size_t z = 0; z < form.planes; ++z)
            *pixels++ = static_cast<Element>(line[z * form.width + x]);
    }
}

template <typename Element>
void separate(const Element *pixels, const PictureForm &form, std::uint16_t *line) {
    for (std::size_t x = 0; x < form.width; ++x) {
        for (std::size_t z = 0; z < form.planes; ++z)
            line[z * form.width + x] = *pixels++;
    }
}

}  // namespace tool

#endif
