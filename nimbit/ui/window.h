#pragma once

#include "nimbit/ui/event_object.h"
#include "nimbit/ui/event_type.h"
#include "nimbit/ui/native_window.h"
#include "nimbit/ui/native_window_events.h"
#include "nimbit/ui/widget.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace nimbit::ui {

class drawer;
class tooltip;

// A top-level window: the platform window, a root widget filling the client area, the keyboard
// focus, the hovered widget, its widgets in creation order (the Tab order), widget timers, tooltips
// and running animations. It routes input to widgets and paints them. What the platform window
// reports comes in through native_window_events, which only the backend holds.
class window : public event_object, private native_window_events {
public:
    // Native ids of the window's own timers, reserved at the top of the range; widget timers count up
    // from 1 below them.
    static constexpr uint32_t tooltip_timer_id = 0xFFFFFFFFu;
    static constexpr uint32_t animation_timer_id = 0xFFFFFFFEu;
    static constexpr uint32_t first_reserved_timer_id = animation_timer_id;

    window();
    ~window() override;
    virtual void user_callback(int code);

    // Frame in screen coordinates. Raises create.
    void create(std::string_view title, const ivec4& frame,
                uint32_t style = window_style_titled | window_style_resizable, window* parent = nullptr);
    bool is_created() const { return native != nullptr; }

    void show(bool visible = true);
    void hide() { show(false); }
    void show_no_focus();
    bool is_shown() const;
    bool has_focus() const;
    void set_to_front();
    void set_opacity(float opacity);
    void center_window();
    // Moves the window (keeping its size when it fits) into the visible frame of its screen.
    void force_in_screen();
    void maximize();
    void restore();
    bool is_maximized() const;
    float get_dpi() const;
    void set_rect(const ivec4& frame);
    ivec4 get_rect() const;
    ivec4 get_client_rect() const;
    void set_min_size(_vec2<int> size);
    void set_max_size(_vec2<int> size);
    void update_rect(const ivec4& client_rect);
    void flush_updates();
    void capture_mouse();
    void release_mouse();

    // Runs a modal loop until end_modal and returns its code (0 when the window closed otherwise).
    int show_modal(bool fill_screen = false);
    void end_modal(int code);
    bool is_modal() const;
    void set_modal_code(int code) { modal_code = code; }
    // Raises close on the window; true when somebody listens.
    bool check_close();

    void add_widget(widget* w);
    void remove_widget(widget* w);
    // Creation order, the Tab order.
    const std::vector<widget*>& get_widgets() const;

    void add_tooltip(widget* w, const ivec4& area, std::string_view title, std::string_view text);
    void remove_tooltips(widget* w);
    bool is_tooltip_shown() const;
    // The tooltip window, once a tooltip was shown.
    tooltip* get_tooltip_window() const { return tip.get(); }

    void add_animation(widget* w);
    void remove_animation(widget* w);

    void add_timer(widget* w, uint32_t id, uint32_t interval_ms, bool single_shot);
    void remove_timer(widget* w, uint32_t id);
    bool has_timer(const widget* w, uint32_t id) const;

    // Lists the tree below `from` (the root when null), one widget a line, indented by depth.
    std::string print_widget_tree(int depth = 0, const widget* from = nullptr) const;

    // The topmost visible widget at a client point, or null outside the root.
    widget* get_widget_at_pos(_vec2<int> point) const;
    void set_focus(widget* w, focus_cause cause);
    widget* get_focus() const { return focused; }
    widget* get_hovered() const { return hovered; }
    void focus_next_widget();
    void focus_previous_widget();
    void set_tab_navigation(bool on) { tab_navigation = on; }

    // Paints `w` and what lies inside it within the dirty client rectangle.
    void process_draw(widget& w, const ivec4& dirty);
    // The drawer of the running paint (valid inside draw handlers).
    drawer& get_drawer();

    bool is_mouse_inside() const { return mouse_inside; }

    widget& get_root() { return root; }
    const widget& get_root() const { return root; }
    native_window& get_native() const;

private:
    struct tooltip_entry {
        ivec4 area;
        std::string title;
        std::string text;
    };
    struct timer_event {
        uint32_t id;
        widget* target;
        bool single_shot;
    };

    // native_window_events: input routing, painting, timers, pointer, close box.
    void process_event(const event_type& type, const unsigned long long& data) override;
    void paint(const ivec4& dirty) override;
    void process_native_timer(uint32_t native_id) override;
    void set_mouse_inside(bool inside) override { mouse_inside = inside; }
    void process_close() override;

    void process_timer(widget* w, uint32_t id);
    void process_tooltip_timer();
    void process_animation_timer();
    void draw_level(widget& w, const ivec4& clip, _vec2<int> origin);
    void focus_step(int direction);
    void show_tooltip(_vec2<int> screen_pos, const std::string& title, const std::string& text);
    void hide_tooltip();
    void drop_widget_timers(widget* w);
    widget* live(widget* w) const { return w && w->is_live() ? w : nullptr; }

    std::unique_ptr<native_window> native;
    widget* focused = nullptr;
    widget* hovered = nullptr;
    compacting_list<widget, &widget::window_slot> widgets;
    std::unordered_map<widget*, std::vector<tooltip_entry>> tooltips;
    std::unordered_map<widget*, bool> animations;
    bool animation_pending = false;
    bool animation_running = false;
    bool tooltip_running = false;
    widget* tooltip_widget = nullptr;
    ivec4 tooltip_area;
    // Tooltip ticks since the hovered widget or area last changed.
    uint32_t tooltip_ticks = 0;
    bool mouse_inside = false;
    bool tab_navigation = false;
    bool swallow_mouse_up = false;
    uint32_t next_timer_id = 0;
    std::unordered_map<uint32_t, timer_event> timers;
    std::unique_ptr<drawer> paint_drawer;
    std::unique_ptr<tooltip> tip;
    int modal_code = 0;
    bool shown_state = false;
    // Declared last: destroyed first, while the lists above still exist.
    widget root;
};

} // namespace nimbit::ui
