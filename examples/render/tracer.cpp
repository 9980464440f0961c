#include "tracer.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <numbers>

namespace {

constexpr int kMaxMirrors = 5;
constexpr float kPi = std::numbers::pi_v<float>;
constexpr float kExposure = 0.028F;        // brightness of a white surface at one lux
constexpr Vec kAmbient{7.0F, 7.6F, 9.0F};  // ambient light, in lux

// Compresses bright light, so that nothing is brighter than white.
float compress(float light) {
    return 1 - std::exp(-light);
}

}  // namespace

Vec toScreen(Vec light) {
    const auto gamma = [](float value) { return std::pow(value, 1 / 2.2F); };
    return {gamma(light.x), gamma(light.y), gamma(light.z)};
}

// For lamps of radius 1: the disk pattern extends to 1.3 times its size.
Tracer::Tracer(const Scene &scene)
    : scene_(scene),
      lampTables_(2, 4, 1 / 1.3F, Pattern::kDisk, 0.5F),
      hits_(vxPoolMake(sizeof(Hit), 4096)) {
    if (hits_ == nullptr) throw std::bad_alloc();
}

Sample Tracer::trace(const Ray &ray) {
    const Hit *first = follow(ray);
    Sample sample;
    if (first == nullptr) return sample;
    const Vec light = lightFrom(*first) * kExposure;
    // Compressed before averaging, so that one sample of a lamp does not outshine the pixel.
    sample.light = {compress(light.x), compress(light.y), compress(light.z)};
    sample.seen = toScreen(sample.light);
    // The ids of reflections count too: they show edges inside a mirror.
    for (const Hit *hit = first; hit != nullptr; hit = hit->reflection)
        sample.id = sample.id * 64 + hit->id;
    return sample;
}

// Follows a ray and its reflections, and returns them as a chain of hits. Hits are not freed one by
// one: releaseHits invalidates them all.
Hit *Tracer::follow(Ray ray) {
    Hit *first = nullptr;
    Hit **link = &first;
    for (int i = 0; i < kMaxMirrors; ++i) {
        Hit found;
        ++rays_;
        if (!scene_.nearest(ray, found)) break;
        void *element = vxPoolAlloc(hits_.get());
        if (element == nullptr) throw std::bad_alloc();
        Hit *hit = *link = new (element) Hit(found);
        if (hit->mirror < 0.01F) break;
        link = &hit->reflection;
        ray = {hit->point,
               normalize(hit->incoming - hit->normal * (2 * dot(hit->incoming, hit->normal)))};
    }
    return first;
}

Vec Tracer::lightFrom(const Hit &hit) const {
    Vec light =
        hit.surface->glow + kAmbient * hit.color * scene_.ambientVisibility(hit.point, hit.normal);
    for (const Lamp &lamp : scene_.lamps())
        light += lampLight(lamp, hit);
    if (hit.reflection != nullptr) light = mix(light, lightFrom(*hit.reflection), hit.mirror);
    return light;
}

// The web gives the brightness of the lamp in this direction. Sample points on its disc show how
// much of it is visible.
Vec Tracer::lampLight(const Lamp &lamp, const Hit &hit) const {
    const Vec offset = hit.point - lamp.position;
    const float distance = length(offset);
    const Vec from = offset * (1 / distance);
    const float cosine = -dot(from, hit.normal);
    if (cosine <= 0) return {};
    const float vertical = std::acos(std::clamp(-from.y, -1.0F, 1.0F)) * 180 / kPi;
    const float horizontal = std::atan2(from.z, from.x) * 180 / kPi;
    const float candela =
        lamp.web->candela(vertical, horizontal < 0 ? horizontal + 360 : horizontal);
    if (candela <= 0) return {};

    bool refined = false;
    const auto visible = [&](float x, float z) {
        const Vec at = lamp.position + Vec{x, 0, z} * lamp.radius;
        const std::uint32_t id = scene_.occluder(hit.point, at);
        const Vec light = id == 0 ? Vec{1, 1, 1} : Vec{};
        return Sample{light, light, id};
    };
    const Vec lux =
        lamp.tint * meanLight(lampTables_, visible, refined) * (candela / (distance * distance));
    const Vec between = normalize(hit.incoming * -1 - from);
    const float highlight =
        hit.surface->gloss * std::pow(std::max(dot(between, hit.normal), 0.0F), 120.0F);
    return lux * (hit.color * cosine + Vec{highlight, highlight, highlight});
}
