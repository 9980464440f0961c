// A point, a direction, or a color of linear light (x is red, y green, z blue).
#ifndef RENDER_VEC_H
#define RENDER_VEC_H

#include <cmath>

struct Vec {
    float x = 0, y = 0, z = 0;
};

inline Vec operator+(Vec a, Vec b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vec operator-(Vec a, Vec b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vec operator*(Vec a, Vec b) {
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}
inline Vec operator*(Vec a, float s) {
    return {a.x * s, a.y * s, a.z * s};
}
inline Vec operator*(float s, Vec a) {
    return a * s;
}
inline Vec &operator+=(Vec &a, Vec b) {
    return a = a + b;
}

inline float dot(Vec a, Vec b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vec cross(Vec a, Vec b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float length(Vec a) {
    return std::sqrt(dot(a, a));
}
inline Vec normalize(Vec a) {
    return a * (1 / length(a));
}
inline Vec mix(Vec a, Vec b, float share) {
    return a + (b - a) * share;
}

#endif
