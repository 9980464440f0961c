// Textures, known by their relative names and kept as long as the scene.
#ifndef RENDER_TEXTURE_H
#define RENDER_TEXTURE_H

#include "vec.h"

#include <vxhandles.h>
#include <vxstring.h>
#include <vxtyped.h>

class Texture {
public:
    explicit Texture(const VxString &name) : name_(name) {}

    const VxString &name() const { return name_; }

    // Finds the file of this name along the search paths and reads it. False after a message if
    // there is no such file or it cannot be read.
    bool load();

    // The color at a point, as linear light, interpolated between the four nearest elements. The
    // texture covers (0, 0), its lower left corner, to (1, 1), and repeats outside.
    Vec at(float u, float v) const;

private:
    bool store(const VxPicture &picture);
    Vec texel(int x, int y) const;

    VxString name_;
    int width_ = 0, height_ = 0;
    // Three bytes per element, rows from the bottom up. In a VxString, copies share them: a table
    // copies its elements, and so a texture goes into a table without copying its pixels.
    VxString texels_;
};

// Reads each texture once, however many surfaces use it.
class TextureCache {
public:
    // The texture of a name, which the cache owns. Null after a message.
    const Texture *find(const VxString &name);

private:
    struct Hash {
        unsigned operator()(const Texture &texture) const { return texture.name().hash(); }
    };
    struct Equal {
        bool operator()(const Texture &one, const Texture &other) const {
            return (one.name() == other.name()) != 0;
        }
    };
    VxOwningTable<Texture, Hash, Equal> textures_;
};

#endif
