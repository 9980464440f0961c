// From a ray to the light that comes along it.
#ifndef RENDER_TRACER_H
#define RENDER_TRACER_H

#include "samples.h"
#include "scene.h"

#include <vxpool.h>

class Tracer {
public:
    explicit Tracer(const Scene &scene);
    ~Tracer() { vxPoolDestroy(&hits_); }
    Tracer(const Tracer &) = delete;
    Tracer &operator=(const Tracer &) = delete;

    // What is seen along a ray.
    Sample look(const Ray &ray);

    // Makes the records of all rays so far void, for others to use their room.
    void forget() { vxPoolRecycle(&hits_); }

    int poolBytes() const { return vxPoolSize(&hits_); }
    long long rays() const { return rays_; }

private:
    Hit *follow(Ray ray);
    Vec lightFrom(const Hit &hit) const;
    Vec lampLight(const Lamp &lamp, const Hit &hit) const;

    const Scene &scene_;
    AdaptiveTables lampTables_;
    VxPool hits_;
    long long rays_ = 0;
};

// Between linear light and what a screen shows, 0 to 1.
Vec toScreen(Vec light);

#endif
