#pragma once

#include "nimbit/graphics/vec.h"

#include <algorithm>

namespace nimbit {

// True when the rectangle covers no pixel.
inline bool is_empty(const ivec4& r) {
    return r.w <= 0 || r.h <= 0;
}

// The common part of two rectangles; empty (w or h not positive) when they do not overlap.
inline ivec4 intersection(const ivec4& a, const ivec4& b) {
    const int left = std::max(a.x, b.x), top = std::max(a.y, b.y);
    const int right = std::min(a.x + a.w, b.x + b.w), bottom = std::min(a.y + a.h, b.y + b.h);
    return {left, top, right - left, bottom - top};
}

// The smallest rectangle holding both; an empty `a` contributes nothing.
inline ivec4 unite(const ivec4& a, const ivec4& b) {
    if (is_empty(a))
        return b;
    const int left = std::min(a.x, b.x), top = std::min(a.y, b.y);
    const int right = std::max(a.x + a.w, b.x + b.w), bottom = std::max(a.y + a.h, b.y + b.h);
    return {left, top, right - left, bottom - top};
}

} // namespace nimbit
