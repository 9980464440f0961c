#include "tracer.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <numbers>

namespace {

constexpr int kMaxMirrors = 5;
constexpr float kPi = std::numbers::pi_v<float>;
constexpr float kExposure = 0.028F;          // how bright a white surface under one lux becomes
constexpr Vec kAllAround{7.0F, 7.6F, 9.0F};  // lux from the room at large

// Bright light comes out less bright, and never beyond white.
float compress(float light) {
    return 1 - std::exp(-light);
}

}  // namespace

Vec toScreen(Vec light) {
    const auto gamma = [](float value) { return std::pow(value, 1 / 2.2F); };
    return {gamma(light.x), gamma(light.y), gamma(light.z)};
}

// A lamp of radius 1; the disk pattern reaches 1.3 times as far as its size.
Tracer::Tracer(const Scene &scene)
    : scene_(scene), lampTables_(2, 4, 1 / 1.3F, SampleTable::kDisk, 0.5F) {
    vxPoolInit(&hits_, sizeof(Hit), 4096);
}

Sample Tracer::look(const Ray &ray) {
    const Hit *first = follow(ray);
    Sample sample;
    if (first == nullptr) return sample;
    const Vec light = lightFrom(*first) * kExposure;
    // Compressed before it is averaged: one sample of a lamp shall not outshine a whole pixel.
    sample.light = {compress(light.x), compress(light.y), compress(light.z)};
    sample.seen = toScreen(sample.light);
    // An edge inside a mirror is an edge too.
    for (const Hit *hit = first; hit != nullptr; hit = hit->behind)
        sample.id = sample.id * 64 + hit->id;
    return sample;
}

// A ray and all its reflections, as a chain of records. None is given back by itself: they become
// void together.
Hit *Tracer::follow(Ray ray) {
    Hit *first = nullptr;
    Hit **link = &first;
    for (int i = 0; i < kMaxMirrors; ++i) {
        Hit found;
        ++rays_;
        if (!scene_.nearest(ray, found)) break;
        void *room = vxPoolAlloc(&hits_);
        if (room == nullptr) throw std::bad_alloc();
        Hit *hit = *link = new (room) Hit(found);
        if (hit->mirror < 0.01F) break;
        link = &hit->behind;
        ray = {hit->point,
               normalize(hit->incoming - hit->normal * (2 * dot(hit->incoming, hit->normal)))};
    }
    return first;
}

Vec Tracer::lightFrom(const Hit &hit) const {
    Vec light = hit.surface->glow + kAllAround * hit.color * scene_.openness(hit.point, hit.normal);
    for (const Lamp &lamp : scene_.lamps())
        light += lampLight(lamp, hit);
    if (hit.behind != nullptr) light = mix(light, lightFrom(*hit.behind), hit.mirror);
    return light;
}

// The web says how bright the lamp is from here, a handful of points on its disc how much of it is
// to be seen.
Vec Tracer::lampLight(const Lamp &lamp, const Hit &hit) const {
    const Vec way = hit.point - lamp.position;
    const float distance = length(way);
    const Vec from = way * (1 / distance);
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
        const std::uint32_t id = scene_.blocker(hit.point, at);
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
