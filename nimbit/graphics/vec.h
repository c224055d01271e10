#pragma once

#include <cstdint>

namespace nimbit {

// Points and sizes.
template <typename T> struct _vec2 {
    T x{}, y{};
    friend bool operator==(const _vec2&, const _vec2&) = default;
    _vec2 operator+(const _vec2& o) const { return {x + o.x, y + o.y}; }
    _vec2 operator-(const _vec2& o) const { return {x - o.x, y - o.y}; }
};
using ivec2 = _vec2<int>;
using vec2 = _vec2<float>;

// A rectangle: top-left corner and size, y growing downwards.
struct ivec4 {
    int x = 0, y = 0, w = 0, h = 0;
    friend bool operator==(const ivec4&, const ivec4&) = default;
    _vec2<int> position() const { return {x, y}; }
    _vec2<int> size() const { return {w, h}; }
    // Half-open: the right and bottom edges are outside.
    bool contains(_vec2<int> p) const { return p.x >= x && p.y >= y && p.x < x + w && p.y < y + h; }
};

// Four floats; colours are r, g, b, a in 0..1.
struct vec4 {
    float x = 0, y = 0, z = 0, w = 0;
    friend bool operator==(const vec4&, const vec4&) = default;
};

} // namespace nimbit
