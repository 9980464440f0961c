#include "scene.h"

#include "report.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

namespace {

constexpr float kNear = 1e-3F;  // metres; a nearer hit is the start of the ray itself
constexpr float kPi = std::numbers::pi_v<float>;

// Distance along the ray to a sphere, or 0.
float intersect(const Ray &ray, const Sphere &sphere) {
    const Vec offset = ray.origin - sphere.center;
    const float half = dot(offset, ray.direction);
    const float root = half * half - dot(offset, offset) + sphere.radius * sphere.radius;
    if (root <= 0) return 0;
    const float width = std::sqrt(root);
    if (-half - width > kNear) return -half - width;
    return -half + width > kNear ? -half + width : 0;
}

// Distance along the ray to a panel, or 0. u and v are the position on it, 0 to 1.
float intersect(const Ray &ray, const Panel &panel, float &u, float &v) {
    const Vec normal = cross(panel.right, panel.up);
    const float slope = dot(ray.direction, normal);
    if (slope >= 0) return 0;  // seen from the back or edge-on
    const float distance = dot(panel.corner - ray.origin, normal) / slope;
    if (distance <= kNear) return 0;
    const Vec inside = ray.at(distance) - panel.corner;
    u = dot(inside, panel.right) / dot(panel.right, panel.right);
    v = dot(inside, panel.up) / dot(panel.up, panel.up);
    return u >= 0 && u <= 1 && v >= 0 && v <= 1 ? distance : 0;
}

Vec colorOf(const Surface &surface, float u, float v) {
    if (surface.texture == nullptr) return surface.color;
    return surface.color * surface.texture->at(u * surface.tilesU, v * surface.tilesV);
}

// Reflection grows towards grazing angles (Schlick's approximation).
float mirrorOf(const Surface &surface, Vec normal, Vec incoming) {
    if (surface.mirror <= 0) return 0;
    return surface.mirror +
           (1 - surface.mirror) * std::pow(1 - std::max(-dot(normal, incoming), 0.0F), 5.0F);
}

}  // namespace

bool Scene::nearest(const Ray &ray, Hit &hit) const {
    const Sphere *sphere = nullptr;
    const Panel *panel = nullptr;
    float nearestSoFar = HUGE_VALF;
    float u = 0;
    float v = 0;
    for (const Panel &each : panels_) {
        float eachU = 0;
        float eachV = 0;
        const float distance = intersect(ray, each, eachU, eachV);
        if (distance <= 0 || distance >= nearestSoFar) continue;
        nearestSoFar = distance;
        panel = &each;
        u = eachU;
        v = eachV;
    }
    for (const Sphere &each : spheres_) {
        const float distance = intersect(ray, each);
        if (distance <= 0 || distance >= nearestSoFar) continue;
        nearestSoFar = distance;
        sphere = &each;
    }
    if (sphere == nullptr && panel == nullptr) return false;

    hit.point = ray.at(nearestSoFar);
    hit.incoming = ray.direction;
    hit.reflection = nullptr;
    if (sphere != nullptr) {
        hit.normal = (hit.point - sphere->center) * (1 / sphere->radius);
        hit.surface = &sphere->surface;
        hit.id = sphere->id;
        u = std::atan2(hit.normal.x, hit.normal.z) / (2 * kPi) + 0.5F;
        v = 1 - std::acos(std::clamp(hit.normal.y, -1.0F, 1.0F)) / kPi;
    } else {
        hit.normal = normalize(cross(panel->right, panel->up));
        hit.surface = &panel->surface;
        hit.id = panel->id;
    }
    hit.color = colorOf(*hit.surface, u, v);
    hit.mirror = mirrorOf(*hit.surface, hit.normal, hit.incoming);
    return true;
}

std::uint32_t Scene::occluder(Vec from, Vec to) const {
    const Vec offset = to - from;
    const float distance = length(offset);
    const Ray ray{from, offset * (1 / distance)};
    for (const Sphere &sphere : spheres_) {
        if (!sphere.castsShadow) continue;
        const float hit = intersect(ray, sphere);
        if (hit > 0 && hit < distance) return sphere.id;
    }
    return 0;
}

// Each ball hides the part of the surroundings that it covers, weighted by the cosine.
float Scene::ambientVisibility(Vec point, Vec normal) const {
    float visible = 1;
    for (const Sphere &sphere : spheres_) {
        const Vec offset = sphere.center - point;
        const float square = dot(offset, offset);
        const float cosine = dot(offset, normal) / std::sqrt(square);
        if (cosine > 0 && sphere.castsShadow)
            visible *= 1 - std::min(cosine * sphere.radius * sphere.radius / square, 1.0F);
    }
    return visible;
}

// ---- The contents -------------------------------------------------------------------------

const Texture *Scene::texture(const VxString &name) {
    const Texture *found = textures_.find(name);
    complete_ = found != nullptr && complete_;
    return found;
}

void Scene::add(Sphere sphere) {
    sphere.id = ++lastId_;
    complete_ = spheres_.append(sphere) && complete_;
}

void Scene::add(Panel panel) {
    panel.id = ++lastId_;
    complete_ = panels_.append(panel) && complete_;
}

// Coordinates are in metres: x to the right, y up, z towards the viewer.
bool Scene::build() {
    addRoom();
    add(Sphere{{-0.82F, 0.56F, -0.75F}, 0.56F, {.color = {0.06F, 0.06F, 0.07F}, .mirror = 0.86F}});
    add(Sphere{{0.28F, 0.34F, 0.22F},
               0.34F,
               {.color = {0.55F, 0.035F, 0.03F}, .mirror = 0.05F, .gloss = 0.8F}});
    add(Sphere{{1.15F, 0.46F, -0.6F},
               0.46F,
               {.texture = texture("ball.sgi"), .mirror = 0.03F, .gloss = 0.4F}});
    return addLamps() && complete_;
}

void Scene::addRoom() {
    const Surface plaster{.color = {0.62F, 0.58F, 0.52F}};
    constexpr float kLeft = -3, kRight = 3, kTop = 2.9F, kBack = -1.8F, kFront = 4.6F;
    constexpr Vec kAcross{kRight - kLeft, 0, 0};
    constexpr Vec kUp{0, kTop, 0};
    constexpr Vec kDeep{0, 0, kFront - kBack};
    add(Panel{{kLeft, 0, kFront},
              kAcross,
              {0, 0, kBack - kFront},
              {.texture = texture("floor/planks.sgi"), .tilesU = 4, .tilesV = 3}});
    add(Panel{{kLeft, 0, kBack},
              kAcross,
              kUp,
              {.texture = texture("wall/bricks.sgi"), .tilesU = 4, .tilesV = 2}});
    add(Panel{{kLeft, kTop, kBack}, kAcross, kDeep, plaster});
    add(Panel{{kLeft, 0, kFront}, {0, 0, kBack - kFront}, kUp, plaster});
    add(Panel{{kRight, 0, kBack}, kDeep, kUp, plaster});
    add(Panel{{kRight, 0, kFront}, {kLeft - kRight, 0, 0}, kUp, plaster});
    add(Panel{{-0.42F, 0.98F, kBack + 0.02F},
              {0.84F, 0, 0},
              {0, 1.05F, 0},
              {.texture = texture("poster.sgi"), .gloss = 0.05F}});
}

// A lamp takes the first web that matches, so that webs of a project replace those of the example.
static bool loadWeb(PhotometricWeb &web, const char *wildcard) {
    const VxString name = findPhotometricWeb(wildcard);
    if (web.load(name)) return true;
    reportFailure(name.length() == 0 ? std::string("no photometric web ") + wildcard
                                     : std::string("cannot read photometric web ") +
                                           static_cast<const char *>(name));
    return false;
}

bool Scene::addLamps() {
    if (!loadWeb(sconce_, "sconce*.ies") || !loadWeb(pendant_, "pendant*.ies")) return false;
    constexpr Vec kWarm{1.0F, 0.78F, 0.52F};
    constexpr Vec kNeutral{1.0F, 0.95F, 0.88F};
    const Lamp lamps[] = {
        {{-1.15F, 1.72F, -1.62F}, 0.05F, kWarm, &sconce_},
        {{1.15F, 1.72F, -1.62F}, 0.05F, kWarm, &sconce_},
        {{0.9F, 2.5F, 1.3F}, 0.16F, kNeutral, &pendant_},
    };
    for (const Lamp &lamp : lamps) {
        complete_ = lamps_.append(lamp) && complete_;
        add(Sphere{lamp.position, lamp.radius, {.glow = lamp.tint * 90}, false});
    }
    return complete_;
}
