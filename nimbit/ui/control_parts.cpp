#include "nimbit/ui/control_parts.h"

#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/image_stream.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/widget.h"
#include "nimbit/ui/window.h"

#include <algorithm>
#include <string>

namespace nimbit::ui {

namespace {
bool pointer_inside(widget& self) {
    return ivec4{0, 0, self.get_rect().w, self.get_rect().h}.contains(mouse::get_position(&self));
}
} // namespace

bool click_state::on_mouse(widget& self, const event_info& e) {
    const bool left = e.data == static_cast<uint32_t>(mouse::button::left);
    switch (e.type) {
    case event_type::mouse_enter:
    case event_type::mouse_leave:
        hovered = e.type == event_type::mouse_enter;
        break;
    case event_type::mouse_move:
        if (!pushed)
            return false;
        hovered = pointer_inside(self);
        break;
    case event_type::mouse_down:
        if (!left)
            return false;
        pushed = true;
        mouse::capture_widget(self);
        break;
    case event_type::mouse_up: {
        release_capture(self);
        const bool was_pushed = pushed;
        pushed = false;
        hovered = pointer_inside(self);
        if (was_pushed && left && hovered)
            return true; // the action repaints
        break;
    }
    default:
        return false;
    }
    self.update(false);
    return false;
}

void release_capture(widget& w) {
    if (mouse::get_captured_widget() == &w)
        mouse::release_widget(w);
}

drawer* drawer_of(const widget& w) {
    window* win = w.get_window();
    return win ? &win->get_drawer() : nullptr;
}

ivec4 local_area(const widget& w) {
    return {0, 0, w.get_rect().w, w.get_rect().h};
}

int load_theme_image(bitmap& image, const theme& t, std::string_view key) {
    const image_stream stream = t.get<image_stream>(key);
    image.unload();
    if (stream.empty() || !image.load_image(stream))
        return 0;
    return std::max<int>(1, stream.frames);
}

vec4 border_color(const theme& t, std::string_view prefix, bool focused, bool hovered) {
    std::string key(prefix);
    key += focused ? "border_color_focus" : hovered ? "border_color_hover" : "border_color_normal";
    return t.get<vec4>(key);
}

void set_theme_font(drawer& d, const theme& t, std::string_view prefix) {
    std::string key(prefix);
    auto at = [&](std::string_view name) -> const std::string& {
        key.resize(prefix.size());
        key += name;
        return key;
    };
    const std::string name = t.get<std::string>(at("font_name"));
    const float size = t.get<float>(at("font_size"));
    const font_weight weight = t.get<font_weight>(at("font_weight"));
    const font_style style = t.get<font_style>(at("font_style"));
    d.set_text_font(name, size, weight, style);
}

} // namespace nimbit::ui
