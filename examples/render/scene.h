// The scene: a room with a few balls, a poster, and lamps.
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
    Vec color{1, 1, 1};                // share of the light reflected, times the texture's
    const Texture *texture = nullptr;  // owned by the cache
    float tilesU = 1, tilesV = 1;      // repetitions of the texture
    float mirror = 0;                  // share of the light reflected as by a mirror
    float gloss = 0;                   // strength of highlights
    Vec glow{};                        // emitted light
};

struct Sphere {
    Vec center;
    float radius;
    Surface surface;
    bool castsShadow = true;
    std::uint32_t id = 0;
};

// A rectangle with a corner and two sides, visible from where these turn counter-clockwise.
struct Panel {
    Vec corner, right, up;
    Surface surface;
    std::uint32_t id = 0;
};

// A round lamp that faces down.
struct Lamp {
    Vec position;
    float radius;  // the larger, the softer the shadows
    Vec tint;
    const PhotometricWeb *web;
};

// A point where a ray hits a surface. Plain data of one size, so that it can come from a pool.
struct Hit {
    Vec point, normal, incoming;
    Vec color;
    const Surface *surface;
    float mirror;  // share of the reflection, at this angle
    std::uint32_t id;
    Hit *reflection;  // what a mirror shows, or null
};

class Scene {
public:
    // Sets up the scene. False after a message if a texture or a web is not found.
    bool build();

    // The first surface along a ray. False if there is none.
    bool nearest(const Ray &ray, Hit &hit) const;

    // The id of an object between two points that casts a shadow, or 0.
    std::uint32_t occluder(Vec from, Vec to) const;

    // The share of the ambient light that nearby balls let through to a point.
    float ambientVisibility(Vec point, Vec normal) const;

    const VxOwningList<Lamp> &lamps() const { return lamps_; }

private:
    const Texture *texture(const VxString &name);
    bool addLamps();
    void addRoom();
    void add(Sphere sphere);
    void add(Panel panel);

    TextureCache textures_;
    PhotometricWeb sconce_, pendant_;
    VxOwningList<Sphere> spheres_;
    VxOwningList<Panel> panels_;
    VxOwningList<Lamp> lamps_;
    std::uint32_t lastId_ = 0;
    bool complete_ = true;
};

#endif
