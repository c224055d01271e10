#pragma once

#include "nimbit/ui/draw_types.h"

#include <string>
#include <string_view>
#include <vector>

namespace nimbit::ui {

// The small mark-up of labels: <html>, <body> and <font> with their closing tags, and <br>.
// <font> takes face, size, weight ("bold", "light", "regular"), style ("italic", "normal") and
// underline; font tags nest. The entities &lt; &gt; &amp; &quot; &apos; &nbsp; and numeric ones
// (&#65; &#x41;) are decoded. Anything else, including a stray "<" or an unknown tag, is plain text.
struct markup_text {
    std::string text;                   // UTF-8, without the tags
    std::vector<text_full_format> runs; // cover the whole text in order, ranges in code points
};

markup_text parse_markup(std::string_view source, const text_full_format& base);

} // namespace nimbit::ui
