#pragma once

#include "nimbit/ui/window.h"

#include <string>
#include <string_view>

namespace nimbit::ui {

// A small borderless window showing a bold title over a text, sized to fit them. Its look comes from
// the tooltip_... theme keys.
class tooltip : public window {
public:
    static constexpr int padding = 6;
    static constexpr int max_text_width = 320;

    tooltip() = default;
    void create_tip(window* parent);
    using window::show;
    // Top-left corner in screen coordinates.
    void show(_vec2<int> screen_pos, std::string_view title, std::string_view text);
    const std::string& get_title() const { return title; }
    const std::string& get_text() const { return text; }

private:
    void draw(const event_info&);
    // Sizes of the title and the text as the drawer lays them out.
    _vec2<int> measure(std::string_view s, bool is_title);

    std::string title;
    std::string text;
    _vec2<int> title_size;
    _vec2<int> text_size;
};

} // namespace nimbit::ui
