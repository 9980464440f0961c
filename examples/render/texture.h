// Textures, known by their relative names and kept as long as the scene.
#ifndef RENDER_TEXTURE_H
#define RENDER_TEXTURE_H

#include "vec.h"

#include <vxstring.h>
#include <vxtyped.h>

class Texture {
public:
    explicit Texture(const VxString &name) : name_(name) {}

    const VxString &name() const { return name_; }

    // Reads the file of this name, wherever on the search paths it is. False after a
    // message if there is none, or none that can be read whole.
    bool load();

    // The colour at a place in linear light, between the four elements around it. The texture lies
    // from (0, 0), its lower left corner, to (1, 1), and repeats beyond.
    Vec at(float u, float v) const;

private:
    bool readRows(struct VxImage *image);
    Vec texel(int x, int y) const;

    VxString name_;
    int width_ = 0, height_ = 0;
    // Three bytes an element, rows from the bottom up. A byte string suits: copies of a texture
    // share it, so that putting one into a table, which copies its elements, costs no pixels.
    VxString texels_;
};

// Reads each texture once, however many surfaces bear it.
class TextureShelf {
public:
    // The texture of a name, or null after a message. It stays the shelf's.
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
