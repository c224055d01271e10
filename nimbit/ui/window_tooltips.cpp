#include "nimbit/ui/window.h"

#include "nimbit/ui/mouse.h"
#include "nimbit/ui/tooltip.h"

// The window's tooltips: a tick follows the hovered widget and its tooltip areas; a pointer that rests
// on one area shows its tooltip for a while.

namespace nimbit::ui {

namespace {
constexpr float tooltip_tick_seconds = 0.1f;
// Counted in ticks since the pointer came to rest on the area: shown from the 8th (0.8 s), hidden
// again from the 61st.
constexpr uint32_t tooltip_show_tick = 8;
constexpr uint32_t tooltip_hide_tick = 61;
// Where the tooltip window goes, from the pointer's screen position.
constexpr _vec2<int> tooltip_offset{5, 20};
} // namespace

void window::add_tooltip(widget* w, const ivec4& area, std::string_view title, std::string_view text) {
    if (!w)
        return;
    tooltips[w].push_back(tooltip_entry{area, std::string(title), std::string(text)});
    if (!tooltip_running && native) {
        native->start_timer(tooltip_timer_id, tooltip_tick_seconds, true);
        tooltip_running = true;
    }
}

void window::remove_tooltips(widget* w) {
    if (tooltips.erase(w) == 0)
        return;
    if (tooltip_widget == w)
        hide_tooltip();
    if (tooltips.empty() && tooltip_running) {
        hide_tooltip();
        if (native)
            native->stop_timer(tooltip_timer_id);
        tooltip_running = false;
    }
}

bool window::is_tooltip_shown() const {
    return tip && tip->is_shown();
}

void window::show_tooltip(_vec2<int> screen_pos, const std::string& title, const std::string& text) {
    if (!tip) {
        tip = std::make_unique<tooltip>();
        tip->create_tip(this);
    }
    tip->show(screen_pos, title, text);
}

void window::hide_tooltip() {
    if (tip && tip->is_shown())
        tip->hide();
}

void window::process_tooltip_timer() {
    widget* w = hovered;
    if (w != tooltip_widget) {
        tooltip_ticks = 0;
        tooltip_widget = w;
        hide_tooltip();
    } else if (auto entries = tooltips.find(w); w && entries != tooltips.end()) {
        const _vec2<int> p = mouse::get_position(w);
        const tooltip_entry* found = nullptr;
        for (const auto& e : entries->second) {
            const ivec4 a = e.area == ivec4{} ? ivec4{0, 0, w->get_rect().w, w->get_rect().h} : e.area;
            // Inclusive on all four sides.
            if (p.x >= a.x && p.x <= a.x + a.w && p.y >= a.y && p.y <= a.y + a.h) {
                found = &e;
                break;
            }
        }
        if (!found || !(found->area == tooltip_area)) {
            // No entry under the pointer is remembered as the empty area.
            tooltip_ticks = 0;
            tooltip_area = found ? found->area : ivec4{};
            hide_tooltip();
        } else {
            if (tooltip_ticks >= tooltip_show_tick && tooltip_ticks < tooltip_hide_tick &&
                !is_tooltip_shown()) {
                const std::string title = found->title, text = found->text;
                show_tooltip(mouse::get_position(nullptr) + tooltip_offset, title, text);
            }
            if (tooltip_ticks >= tooltip_hide_tick)
                hide_tooltip();
        }
    }
    ++tooltip_ticks;
}

} // namespace nimbit::ui
