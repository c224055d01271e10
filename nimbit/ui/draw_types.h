#pragma once

#include "nimbit/graphics/vec.h"
#include "nimbit/ui/text_style.h"

#include <string>

// Values shared by the drawer and the platform drawers beneath it.

namespace nimbit::ui {

enum class pen_style : int { solid = 0, dash = 1, dot = 2 };
enum class draw_aliasing : int { antialiased = 0, aliased = 1 };

// How an image fills a rectangle larger than itself (draw_rect with a bitmap).
enum class image_extend : int { none = 0, repeat = 1, stretch = 2 };

// Gradient direction: 1 runs horizontally (angle 0), every other value vertically (angle 90).
enum class orientation : int { vertical = 0, horizontal = 1 };

// One formatted run of a text over the characters [start, end) (code points).
struct text_full_format {
    std::string font_name;
    font_weight weight = font_weight::regular;
    font_style style = font_style::normal;
    float size = 12.0f;
    bool underline = false;
    unsigned start = 0;
    unsigned end = 0;
};

// One cubic segment of a path; consecutive segments usually share end and start.
struct bezier_segment {
    _vec2<float> start, control_1, control_2, end;
};

} // namespace nimbit::ui
