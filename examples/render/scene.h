// What there is to see: a room with a few balls, a poster, and lamps.
#ifndef RENDER_SCENE_H
#define RENDER_SCENE_H

#include "photometric_web.h"
#include "texture.h"
#include "vec.h"

#include <vxtyped.h>

#include <cstdint>

struct Ray {
    Vec origin;
    Vec direction;  // of length 1
    Vec at(float distance) const { return origin + direction * distance; }
};

struct Surface {
    Vec color{1, 1, 1};                // share of light sent back, times that of the texture
    const Texture *texture = nullptr;  // the shelf's
    float tilesU = 1, tilesV = 1;      // how often the texture fits
    float mirror = 0;                  // share of light reflected straight on
    float gloss = 0;                   // strength of highlights
    Vec glow{};                        // light of its own
};

struct Sphere {
    Vec center;
    float radius;
    Surface surface;
    bool castsShadow = true;
    std::uint32_t id = 0;
};

// A rectangle from a corner along two sides, seen from where these turn counter-clockwise.
struct Panel {
    Vec corner, right, up;
    Surface surface;
    std::uint32_t id = 0;
};

// A round lamp that faces down.
struct Lamp {
    Vec position;
    float radius;  // of its disc: the larger, the softer the shadows
    Vec tint;
    const PhotometricWeb *web;
};

// Where a ray met a surface. Plain and of one size, as records of a pool are; what a mirror shows
// hangs behind the mirror's own record.
struct Hit {
    Vec point, normal, incoming;
    Vec color;
    const Surface *surface;
    float mirror;  // share of `behind`, at this angle
    std::uint32_t id;
    Hit *behind;
};

class Scene {
public:
    // Sets up the scene. False after a message if a texture or a web is not found.
    bool build();

    // The first surface along a ray. False if there is none.
    bool nearest(const Ray &ray, Hit &hit) const;

    // The id of what stands between two points and casts a shadow, 0 for nothing.
    std::uint32_t blocker(Vec from, Vec to) const;

    // The share of the light from all around that balls nearby leave to a point.
    float openness(Vec point, Vec normal) const;

    const VxOwningList<Lamp> &lamps() const { return lamps_; }

private:
    const Texture *texture(const VxString &name);
    bool addLamps();
    void addRoom();
    void add(Sphere sphere);
    void add(Panel panel);

    TextureShelf textures_;
    PhotometricWeb sconce_, pendant_;
    VxOwningList<Sphere> spheres_;
    VxOwningList<Panel> panels_;
    VxOwningList<Lamp> lamps_;
    std::uint32_t lastId_ = 0;
    bool complete_ = true;
};

#endif
