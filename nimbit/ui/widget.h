#pragma once

#include "nimbit/ui/compacting_list.h"
#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/event_object.h"
#include "nimbit/ui/widget_themes.h"

#include <string>
#include <string_view>
#include <vector>

namespace nimbit::ui {

class window;

enum class anchor_type : uint32_t { top = 0, bottom = 1, left = 2, right = 3 };

// A node of the widget tree. Rectangles are in the parent's coordinates (y down). A widget does not
// own its children; the application owns widgets as members of its window classes.
//
// Children are kept back to front: the last child paints last and is hit first. Removing a child
// leaves a hole that is compacted before the list is next read, so tearing down thousands of rows is
// linear, not quadratic.
class widget : public event_object {
public:
    widget();
    ~widget() override;

    virtual void add_child(widget* child);
    virtual void remove_child(widget* child);
    virtual void remove_all_children();
    // Hands the visible part of the rectangle to the window as dirty; with flush, repaints at once.
    virtual void update(bool flush);
    virtual bool is_visible(bool with_parents) const;

    // Creates the widget inside `parentWidget` (once per parent) and raises create on it.
    void create(widget& parentWidget, const ivec4& rect);
    // Creates the root widget of a window: no parent, position forced to 0,0.
    void create(window& w, const ivec4& rect);
    bool is_created() const { return created; }

    bool has_child(const widget* child) const;
    const std::vector<widget*>& get_children() const;
    widget* get_parent() const { return parent; }
    window* get_window() const { return owner_window; }
    // Only sets the pointer and raises parent_changed; add_child and remove_child do the rest.
    void set_parent(widget* new_parent);

    // Registers a callback on a child and remembers it, so that removing the child drops it.
    uint32_t add_child_event(widget& child, event_type type, event_manager::callback fn);

    void enable(bool enabled_now);
    bool is_enabled() const { return enabled; }
    bool is_parent_enabled() const { return parent_enabled; }
    // Enabled itself and under every ancestor: input reaches it.
    bool is_live() const { return enabled && parent_enabled; }
    void show(bool visible_now);
    void hide() { show(false); }

    void set_rect(const ivec4& r) { set_rect(r, true); }
    void set_rect(const ivec4& r, bool also_target);
    const ivec4& get_rect() const { return rect; }
    const ivec4& get_rect_target() const { return rect_target; }
    _vec2<int> get_size() const { return rect.size(); }

    // Starts moving towards `target`: each window animation tick halves the remaining distance.
    void set_rect_target(const ivec4& target);
    void add_animation();
    void remove_animation();
    void animate();
    const ivec4& get_animation_step() const { return animation_step; }

    void set_anchor(anchor_type which, int distance);
    void update_anchor(const _vec2<int>& parent_size);

    // Position in window client coordinates, and on the screen.
    _vec2<int> calc_absolute_pos() const;
    _vec2<int> get_screen_pos() const;
    // The rectangle clipped by every ancestor, in window client coordinates.
    ivec4 calculate_update_rect() const;

    void set_background(const vec4& color);
    nimbit::ui::theme& get_theme() { return theme; }
    const nimbit::ui::theme& get_theme() const { return theme; }

    void focus(focus_cause cause = focus_cause::mouse);
    bool has_focus() const;

    void add_timer(uint32_t id, uint32_t interval_ms, bool single_shot = false);
    void remove_timer(uint32_t id);
    bool has_timer(uint32_t id) const;

    // The first form covers the whole widget; areas are in the widget's coordinates.
    void add_tooltip(std::string_view text, std::string_view title = {});
    void add_tooltip(const ivec4& area, std::string_view text, std::string_view title = {});
    void remove_tooltips();

    void set_name(std::string_view new_name) { name = new_name; }
    const std::string& get_name() const { return name; }
    // An overlay that only shows something lets the pointer through to the widgets below it.
    void set_mouse_transparent(bool on) { mouse_transparent = on; }
    bool is_mouse_transparent() const { return mouse_transparent; }
    void set_tab_stop(bool on) { tab_stop = on; }
    bool is_tab_stop() const { return tab_stop; }

    void set_shadow(bool on, _vec2<int> offset = {}, uint32_t size = 20) {
        shadow = on;
        shadow_offset = offset;
        shadow_size = size;
    }
    bool has_shadow() const { return shadow; }
    _vec2<int> get_shadow_offset() const { return shadow_offset; }
    uint32_t get_shadow_size() const { return shadow_size; }

    void bring_to_front();
    void send_to_back();

private:
    void common_create(const ivec4& r);
    void set_parent_enabled(bool value);
    void set_parent_visible(bool value);
    // Moves this widget to the end (drawn last) or the start of its parent's list.
    void restack(bool to_front);
    void set_inherited(bool widget::*own, bool widget::*inherited, bool value);
    void set_own(bool widget::*own, bool widget::*inherited, bool value, event_type on, event_type off);
    void detach_child(widget* child);
    void release_child(widget* child);
    static ivec4 clip_to_ancestors(ivec4 area, const widget* from);
    void drop_child_subscriptions(widget* child);
    void invalidate(const ivec4& client_rect, bool flush);
    // Raises parent_resize (then applies the child's anchors) or parent_move on every child, with the
    // old size or position taken from `old`.
    void tell_children(event_type type, const ivec4& old);

    struct anchor {
        bool on = false;
        int distance = 0;
    };

    nimbit::ui::theme theme;
    bool created = false;
    flat_map<widget*, small_vector<uint32_t, 2>> child_subscriptions;
    widget* parent = nullptr;
    window* owner_window = nullptr;
    // Index of this widget in its parent's list and in its window's list when it was last placed
    // there (hints, checked before use), and how many parent lists hold it (normally 0 or 1).
    mutable uint32_t parent_slot = 0;
    mutable uint32_t window_slot = 0;
    uint32_t listings = 0;
    compacting_list<widget, &widget::parent_slot> children;
    std::string name = "Widget";
    bool visible = false;
    bool parent_visible = true;
    bool tab_stop = false;
    bool mouse_transparent = false;
    bool spare_flag = false;
    bool enabled = true;
    bool parent_enabled = true;
    ivec4 rect;
    ivec4 rect_target;
    ivec4 animation_step;
    anchor anchors[4];
    bool shadow = false;
    _vec2<int> shadow_offset;
    uint32_t shadow_size = 20;

    friend class window;
};

} // namespace nimbit::ui
