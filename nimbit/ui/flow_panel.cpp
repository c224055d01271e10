#include "nimbit/ui/flow_panel.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/window.h"

#include <algorithm>

namespace nimbit::ui {

flow_panel::flow_panel(flow_type type, bool paint_background, bool auto_size, bool fill, bool fit_cross)
    : type(type), paint_background(paint_background), auto_size(auto_size), fill(fill), fit_cross(fit_cross) {
    set_name("FlowPanel");
    auto& ev = event_manager::instance();
    ev.add_event(this, this, event_type::draw, &flow_panel::draw);
    ev.add_event(this, this, event_type::theme_changed, [this](const event_info&) { update(false); });
    ev.add_event(this, this, event_type::child_added, &flow_panel::on_child_added);
    ev.add_event(this, this, event_type::child_removed, &flow_panel::on_child_removed);
    ev.add_event(this, this, event_type::resize, &flow_panel::request_organize);
    // The parent announces its new size before it applies this panel's anchors, and anchoring raises
    // no resize: apply them here so that the layout sees the panel's new size.
    ev.add_event(this, this, event_type::parent_resize, [this](const event_info&) {
        if (const widget* parent = get_parent())
            update_anchor(parent->get_size());
        organize();
    });
}

flow_panel::~flow_panel() = default;

void flow_panel::add_span(int pixels) {
    items.push_back({item_kind::span, nullptr, pixels, false});
    organize();
}

void flow_panel::add_flex() {
    items.push_back({item_kind::flex, nullptr, 0, true});
    organize();
}

void flow_panel::set_flex(widget* child, bool flexible) {
    for (item& i : items)
        if (i.kind == item_kind::child && i.child == child)
            i.flexible = flexible;
    organize();
}

void flow_panel::on_child_added(const event_info& e) {
    auto* child = pointer_payload<widget>(e.data);
    if (!child)
        return;
    for (const item& i : items)
        if (i.child == child)
            return;
    items.push_back({item_kind::child, child, along(child->get_size()), false});
    // Registered through the child list, so removing the child drops them.
    add_child_event(*child, event_type::resize,
                    [this, child](const event_info&) { on_child_resized(child); });
    for (event_type t : {event_type::shown, event_type::hidden})
        add_child_event(*child, t, [this](const event_info&) { organize(); });
    organize();
}

// A size the layout gave does not change the child's own length; a size set from outside does.
void flow_panel::on_child_resized(widget* child) {
    if (organizing)
        return;
    for (item& i : items)
        if (i.kind == item_kind::child && i.child == child)
            i.size = along(child->get_size());
    organize();
}

void flow_panel::on_child_removed(const event_info& e) {
    auto* child = pointer_payload<widget>(e.data);
    std::erase_if(items, [child](const item& i) { return i.kind == item_kind::child && i.child == child; });
    organize();
}

void flow_panel::clear() {
    items.clear();
    remove_all_children();
    organize();
}

int flow_panel::get_min_size() const {
    int total = 0;
    for (const item& i : items) {
        if (i.kind == item_kind::span || (i.kind == item_kind::child && i.child->is_visible(false)))
            total += i.size;
    }
    return total;
}

void flow_panel::organize() {
    if (organizing)
        return;
    organizing = true;
    const _vec2<int> size = get_size();
    const int length = along(size);
    const int minimum = get_min_size();
    int flex_count = 0;
    for (const item& i : items)
        if (i.kind == item_kind::flex ||
            (i.kind == item_kind::child && i.flexible && i.child->is_visible(false)))
            ++flex_count;
    // Shares are whole pixels; a panel shorter than its content gives none rather than shrinking.
    const int share = flex_count > 0 ? std::max(0, (length - minimum) / flex_count) : 0;

    int position = 0;
    int widest = 0;
    for (const item& i : items) {
        switch (i.kind) {
        case item_kind::span:
            position += i.size;
            break;
        case item_kind::flex:
            position += share;
            break;
        case item_kind::child: {
            widget* c = i.child;
            if (!c->is_visible(false))
                break;
            const _vec2<int> own = c->get_size();
            const int child_length = i.size + (i.flexible ? share : 0);
            const int child_across = fill ? across(size) : across(own);
            const ivec4 r = type == flow_type::vertical
                                ? ivec4{fill ? 0 : c->get_rect().x, position, child_across, child_length}
                                : ivec4{position, fill ? 0 : c->get_rect().y, child_length, child_across};
            if (r != c->get_rect())
                c->set_rect(r);
            position += child_length;
            widest = std::max(widest, child_across);
            break;
        }
        }
    }

    ivec4 r = get_rect();
    if (auto_size) {
        const int total = std::max(0, position);
        (type == flow_type::vertical ? r.h : r.w) = total;
    }
    if (fit_cross && !fill)
        (type == flow_type::vertical ? r.w : r.h) = widest;
    if (r != get_rect())
        set_rect(r);
    organizing = false;
}

void flow_panel::draw(const event_info&) {
    window* w = get_window();
    if (!w || !paint_background)
        return;
    drawer& d = w->get_drawer();
    d.set_brush_color(get_theme().get<vec4>(theme_keys::default_back_color));
    d.draw_rect({0, 0, get_rect().w, get_rect().h});
}

} // namespace nimbit::ui
