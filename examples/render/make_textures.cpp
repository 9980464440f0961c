// Draws the textures of the scene: planks, bricks, a ball and a poster.
//
//     make_textures FOLDER
//
// The folder has to have the subfolders floor and wall. Row 0 of an image is the lowest, so v is 0
// at the lower edge.

#include "image_file.h"
#include "vec.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

namespace {

// ---- Noise --------------------------------------------------------------------------------

// A hash of a grid point, as a number from 0 to 1.
float chance(int x, int y) {
    std::uint32_t h =
        static_cast<std::uint32_t>(x) * 0x9E3779B1U + static_cast<std::uint32_t>(y) * 0x85EBCA77U;
    h = (h ^ h >> 15) * 0x2C1B3C6DU;
    h = (h ^ h >> 12) * 0x297A2D39U;
    return static_cast<float>((h ^ h >> 15) >> 8) / 16777216.0F;
}

int wrap(int i, int period) {
    return (i % period + period) % period;
}

// Interpolates between the points of a grid that repeats, so that tiles join without a seam.
float noise(float x, float y, int periodX, int periodY) {
    const int left = static_cast<int>(std::floor(x));
    const int low = static_cast<int>(std::floor(y));
    const auto at = [&](int i, int j) {
        return chance(wrap(left + i, periodX), wrap(low + j, periodY));
    };
    const auto ease = [](float t) { return t * t * (3 - 2 * t); };
    const float u = ease(x - std::floor(x));
    const float v = ease(y - std::floor(y));
    return std::lerp(std::lerp(at(0, 0), at(1, 0), u), std::lerp(at(0, 1), at(1, 1), u), v);
}

float smooth(float from, float to, float value) {
    const float t = std::clamp((value - from) / (to - from), 0.0F, 1.0F);
    return t * t * (3 - 2 * t);
}

// ---- Textures -----------------------------------------------------------------------------

// Six planks across. They run upwards and end at different heights.
Vec planks(float u, float v) {
    constexpr int kPlanks = 6;
    const float across = u * kPlanks;
    const int plank = static_cast<int>(across);
    const float inPlank = across - static_cast<float>(plank);
    const float along = v + chance(plank, 1);
    const int piece = plank * 2 + (along - std::floor(along) < 0.5F ? 0 : 1);
    const float grain = noise(across * 9 + 20 * chance(piece, 2), v * 6, kPlanks * 9, 6) * 0.5F +
                        noise(across * 30, v * 10 + chance(piece, 3), kPlanks * 30, 10) * 0.5F;
    const Vec wood = mix({0.42F, 0.25F, 0.13F}, {0.76F, 0.54F, 0.32F}, 0.25F + 0.5F * grain);
    const float tone = 0.8F + 0.35F * chance(piece, 4);
    const float end = std::abs(along * 2 - std::round(along * 2)) * 0.5F;
    const float gap =
        smooth(0.012F, 0.03F, std::min(inPlank, 1 - inPlank)) * smooth(0.001F, 0.004F, end);
    return wood * (tone * (0.3F + 0.7F * gap));
}

// Four bricks across and ten courses, every other one shifted by half a brick.
Vec bricks(float u, float v) {
    constexpr int kAcross = 4, kCourses = 10;
    const float y = v * kCourses;
    const int course = static_cast<int>(y);
    const float x = u * kAcross + (course % 2 != 0 ? 0.5F : 0.0F);
    const int brick = wrap(static_cast<int>(std::floor(x)), kAcross);
    const float inX = x - std::floor(x);
    const float inY = y - static_cast<float>(course);
    const float rough = noise(u * 128, v * 128, 128, 128);
    const float ragged = 0.02F * (noise(u * 40, v * 40, 40, 40) - 0.5F);
    const float edge = std::min(std::min(inX, 1 - inX) * 2, std::min(inY, 1 - inY)) + ragged;
    const float tone = 0.75F + 0.4F * chance(brick, course) + 0.18F * (rough - 0.5F);
    const Vec stone =
        mix({0.60F, 0.29F, 0.20F}, {0.72F, 0.43F, 0.31F}, chance(course, brick + 9)) * tone;
    const Vec mortar = Vec{0.66F, 0.62F, 0.57F} * (0.85F + 0.2F * rough);
    return mix(mortar, stone, smooth(0.06F, 0.11F, edge));
}

// Checks between two plain caps.
Vec ball(float u, float v) {
    if (std::abs(v - 0.5F) > 0.36F) return {0.93F, 0.76F, 0.2F};
    const int check = static_cast<int>(u * 24) + static_cast<int>(v * 12.5F);
    return check % 2 != 0 ? Vec{0.94F, 0.94F, 0.9F} : Vec{0.1F, 0.27F, 0.52F};
}

// Distance of a point from a straight stroke.
float stroke(float x, float y, float x0, float y0, float x1, float y1) {
    const float along = ((x - x0) * (x1 - x0) + (y - y0) * (y1 - y0)) /
                        ((x1 - x0) * (x1 - x0) + (y1 - y0) * (y1 - y0));
    const float t = std::clamp(along, 0.0F, 1.0F);
    return std::hypot(x - x0 - t * (x1 - x0), y - y0 - t * (y1 - y0));
}

// A sun over hills, two letters, and an arrow that points up: it shows the orientation.
Vec poster(float u, float v) {
    const float y = v * 1.25F;  // the poster is higher than wide
    constexpr float kSoft = 0.004F;
    const auto paint = [&](Vec &color, Vec with, float outside) {
        color = mix(color, with, 1 - smooth(-kSoft, kSoft, outside));
    };
    Vec color = mix({0.98F, 0.86F, 0.62F}, {0.36F, 0.62F, 0.78F}, smooth(0.2F, 1.2F, y));
    paint(color, {0.95F, 0.42F, 0.16F}, std::hypot(u - 0.72F, y - 0.95F) - 0.14F);
    paint(color, {0.22F, 0.42F, 0.36F}, y - 0.3F - 0.08F * std::sin(u * 7));
    paint(color, {0.1F, 0.22F, 0.26F}, y - 0.2F - 0.06F * std::sin(u * 9 + 2));
    const float letters = std::min(
        {stroke(u, y, 0.14F, 0.8F, 0.27F, 0.46F), stroke(u, y, 0.27F, 0.46F, 0.4F, 0.8F),
         stroke(u, y, 0.52F, 0.46F, 0.78F, 0.74F), stroke(u, y, 0.52F, 0.74F, 0.78F, 0.46F)});
    paint(color, {0.12F, 0.12F, 0.2F}, letters - 0.035F);
    const float arrow = std::min({stroke(u, y, 0.27F, 0.92F, 0.27F, 1.12F),
                                  stroke(u, y, 0.19F, 1.04F, 0.27F, 1.12F),
                                  stroke(u, y, 0.35F, 1.04F, 0.27F, 1.12F)});
    paint(color, {0.98F, 0.97F, 0.93F}, arrow - 0.02F);
    const float border = std::min(std::min(u, 1 - u), std::min(y, 1.25F - y));
    paint(color, {0.97F, 0.95F, 0.9F}, border - 0.04F);
    return color;
}

bool make(const std::string &path, int width, int height, Vec (*colorAt)(float u, float v)) {
    ImageFile file(path.c_str(), width, height, "A texture of the example scene");
    std::vector<Vec> row(static_cast<std::size_t>(width));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            row[static_cast<std::size_t>(x)] =
                colorAt((static_cast<float>(x) + 0.5F) / static_cast<float>(width),
                        (static_cast<float>(y) + 0.5F) / static_cast<float>(height));
        }
        file.putRow(y, row.data());
    }
    return file.close();
}

}  // namespace

int main(int count, char **arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: make_textures FOLDER\n");
        return 2;
    }
    ignoreFileSizeSignal();
    const std::string folder = std::string(arguments[1]) + "/";
    const bool good = make(folder + "floor/planks.sgi", 768, 768, planks) &&
                      make(folder + "wall/bricks.sgi", 512, 512, bricks) &&
                      make(folder + "ball.sgi", 768, 384, ball) &&
                      make(folder + "poster.sgi", 384, 480, poster);
    return good ? 0 : 1;
}
