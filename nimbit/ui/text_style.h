#pragma once

// The enumerations that describe how text is set. Themes store them as style values and the drawer
// takes them as arguments, so they live apart from both.

namespace nimbit::ui {

enum class font_style : int { normal = 0, italic = 1 };

// 0 is the regular weight, 2 the heavier one; every other value means the lighter one.
enum class font_weight : int { regular = 0, light = 1, bold = 2 };

enum class text_align : int { left = 0, center = 1, right = 2 };

// 0 centres the text in its rectangle, 1 puts it at the top, 2 at the bottom.
enum class text_valign : int { center = 0, top = 1, bottom = 2 };

} // namespace nimbit::ui
