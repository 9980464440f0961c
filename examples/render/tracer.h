// Finds the light that comes along a ray.
#ifndef RENDER_TRACER_H
#define RENDER_TRACER_H

#include "samples.h"
#include "scene.h"

#include <vxhandles.h>
#include <vxpool.h>

class Tracer {
public:
    explicit Tracer(const Scene &scene);

    Sample trace(const Ray &ray);

    // Invalidates the hits of all rays so far, so that their memory is used again.
    void releaseHits() { vxPoolRecycle(hits_.get()); }

    int poolBytes() const { return vxPoolSize(hits_.get()); }
    long long rays() const { return rays_; }

private:
    Hit *follow(Ray ray);
    Vec lightFrom(const Hit &hit) const;
    Vec lampLight(const Lamp &lamp, const Hit &hit) const;

    const Scene &scene_;
    AdaptiveTables lampTables_;
    VxUniquePool hits_;
    long long rays_ = 0;
};

// Converts linear light to screen values, 0 to 1.
Vec toScreen(Vec light);

#endif
