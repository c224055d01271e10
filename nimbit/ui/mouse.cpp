#include "nimbit/ui/mouse.h"

#include "nimbit/ui/native_input.h"
#include "nimbit/ui/widget.h"
#include "nimbit/ui/window.h"
#include "nimbit/utils/assert.h"

namespace nimbit::ui {

namespace {
widget* captured = nullptr;
} // namespace

float mouse::get_dpi() {
    static const float dpi = native_get_screen_dpi();
    return dpi;
}

_vec2<int> mouse::get_position(const widget* w) {
    _vec2<int> p = native_get_pointer_position();
    if (!w)
        return p;
    if (const window* win = w->get_window(); win && win->is_created())
        p = p - win->get_client_rect().position();
    return p - w->calc_absolute_pos();
}

void mouse::capture_widget(widget& w) {
    captured = &w;
    if (window* win = w.get_window(); win && win->is_created())
        win->capture_mouse();
}

void mouse::release_widget(widget& widgetToRelease) {
    NIMBIT_ASSERT(get_captured_widget() == &widgetToRelease &&
                  "The widget to be released is different from the captured widget");
    if (window* win = widgetToRelease.get_window(); win && win->is_created())
        win->release_mouse();
    captured = nullptr;
}

widget* mouse::get_captured_widget() {
    return captured;
}

void mouse::forget_widget(const widget* w) {
    if (captured == w)
        captured = nullptr;
}

bool mouse::is_button_down(const button& b) {
    return native_is_button_down(static_cast<uint32_t>(b));
}

void mouse::set_cursor(cursor c) {
    native_set_cursor(static_cast<uint32_t>(c));
}

} // namespace nimbit::ui
