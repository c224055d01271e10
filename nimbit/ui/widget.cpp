#include "nimbit/ui/widget.h"

#include "nimbit/graphics/rect.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/walk_guard.h"
#include "nimbit/ui/window.h"
#include "nimbit/utils/assert.h"

#include <algorithm>
#include <cstdlib>

namespace nimbit::ui {

namespace {
event_manager& events() {
    return event_manager::instance();
}
} // namespace

ivec4 widget::clip_to_ancestors(ivec4 area, const widget* from) {
    for (const widget* a = from; a; a = a->parent) {
        area.x += a->rect.x;
        area.y += a->rect.y;
        area = intersection(area, a->rect);
    }
    return area;
}

widget::widget() : theme(this) {}

widget::~widget() {
    if (owner_window)
        owner_window->remove_widget(this);
    if (parent)
        parent->remove_child(this);
    for (widget* child : children.items())
        child->parent = nullptr;
    if (mouse::get_captured_widget() == this)
        mouse::forget_widget(this);
    events().fire_event(this, event_type::destroy, 0);
    // event_object's destructor drops the registrations.
}

void widget::common_create(const ivec4& r) {
    rect = r;
    rect_target = r;
    enable(true);
    show(true);
    if (owner_window)
        owner_window->add_widget(this);
    created = true;
}

void widget::create(widget& parentWidget, const ivec4& r) {
    NIMBIT_ASSERT(!parentWidget.has_child(this) && "Double create?");
    owner_window = parentWidget.owner_window;
    parent = &parentWidget;
    common_create(r);
    events().fire_event(this, event_type::create, 0);
    parentWidget.add_child(this);
}

void widget::create(window& w, const ivec4& r) {
    owner_window = &w;
    common_create({0, 0, r.w, r.h});
    events().fire_event(this, event_type::create, 0);
}

bool widget::has_child(const widget* child) const {
    if (!child || child->listings == 0)
        return false;
    return children.contains(child);
}

const std::vector<widget*>& widget::get_children() const {
    return children.items();
}

void widget::set_parent(widget* new_parent) {
    parent = new_parent;
    events().fire_event(this, event_type::parent_changed, pack_pointer(new_parent));
}

void widget::add_child(widget* child) {
    if (!child)
        return;
    child->parent = this;
    events().fire_event(child, event_type::parent_changed, pack_pointer(this));
    child->set_parent_enabled(enabled && parent_enabled);
    child->set_parent_visible(visible && parent_visible);
    ++child->listings;
    children.push_back(child);
    events().fire_event(this, event_type::child_added, pack_pointer(child));
}

void widget::detach_child(widget* child) {
    // Every occurrence goes; the slot hint finds the usual single one without a scan.
    const uint32_t removed = children.remove(child, child->listings);
    child->listings -= std::min(child->listings, removed);
}

void widget::remove_child(widget* child) {
    if (!child)
        return;
    detach_child(child);
    release_child(child);
}

// The child is already out of the list: it learns that it has no parent, takes the default
// enabled and visible state of a root, and loses what this widget registered on it.
void widget::release_child(widget* child) {
    child->parent = nullptr;
    events().fire_event(child, event_type::parent_changed, 0);
    child->set_parent_enabled(true);
    child->set_parent_visible(true);
    events().fire_event(this, event_type::child_removed, pack_pointer(child));
    drop_child_subscriptions(child);
}

void widget::drop_child_subscriptions(widget* child) {
    auto* found = child_subscriptions.find(child);
    if (!found)
        return;
    const small_vector<uint32_t, 2> ids = std::move(*found);
    child_subscriptions.erase(child);
    for (uint32_t id : ids)
        events().remove_event(id);
}

void widget::remove_all_children() {
    children.compact();
    // Callbacks may destroy or add children while the list is walked: index it, skip holes.
    {
        const walk_guard guard(children.walks());
        for (size_t i = 0; i < children.with_holes().size(); ++i) {
            widget* child = children.take(i);
            if (!child)
                continue;
            child->listings = child->listings > 0 ? child->listings - 1 : 0;
            release_child(child);
        }
    }
    // Whatever is left (callbacks may have subscribed meanwhile) is collected before anything is
    // removed, and the map is cleared in place so that it keeps its slots for the next fill.
    if (!child_subscriptions.empty()) {
        std::vector<uint32_t> left;
        child_subscriptions.for_each([&left](widget*, const small_vector<uint32_t, 2>& ids) {
            left.insert(left.end(), ids.begin(), ids.end());
        });
        child_subscriptions.clear();
        for (uint32_t id : left)
            events().remove_event(id);
    }
    children.clear();
}

uint32_t widget::add_child_event(widget& child, event_type type, event_manager::callback fn) {
    const uint32_t id = events().add_event(&child, this, type, std::move(fn));
    child_subscriptions[&child].push_back(id);
    return id;
}

// Enabling and visibility travel down the tree the same way: a widget's inherited flag is true when
// every ancestor has its own flag set.
void widget::set_inherited(bool widget::*own, bool widget::*inherited, bool value) {
    this->*inherited = value;
    for (widget* c : children.with_holes())
        if (c)
            c->set_inherited(own, inherited, value && this->*own);
}

void widget::set_own(bool widget::*own, bool widget::*inherited, bool value, event_type on, event_type off) {
    if (this->*own == value)
        return;
    this->*own = value;
    set_inherited(own, inherited, this->*inherited);
    events().fire_event(this, value ? on : off, 0);
    update(false);
}

void widget::set_parent_enabled(bool value) {
    set_inherited(&widget::enabled, &widget::parent_enabled, value);
}

void widget::set_parent_visible(bool value) {
    set_inherited(&widget::visible, &widget::parent_visible, value);
}

void widget::enable(bool enabled_now) {
    set_own(&widget::enabled, &widget::parent_enabled, enabled_now, event_type::enabled,
            event_type::disabled);
}

void widget::show(bool visible_now) {
    set_own(&widget::visible, &widget::parent_visible, visible_now, event_type::shown, event_type::hidden);
}

bool widget::is_visible(bool with_parents) const {
    return with_parents ? visible && parent_visible : visible;
}

void widget::set_rect(const ivec4& r, bool also_target) {
    const ivec4 old = rect;
    rect = r;
    if (also_target)
        rect_target = r;
    if (!created)
        return;
    const bool resized = old.w != r.w || old.h != r.h;
    const bool moved = old.x != r.x || old.y != r.y;
    if (resized) {
        events().fire_event(this, event_type::resize, pack_size(old.size()));
        tell_children(event_type::parent_resize, old);
    }
    if (moved) {
        events().fire_event(this, event_type::move, pack_size(old.position()));
        tell_children(event_type::parent_move, old);
    }
    if (!resized && !moved) {
        update(false);
        return;
    }
    if (old.w >= 1 && old.h >= 1 && owner_window) {
        // The old area, clipped by the ancestors as they are now.
        const ivec4 area = clip_to_ancestors(old, parent);
        if (area.w > 0 && area.h > 0)
            owner_window->update_rect(area);
    }
    update(false);
}

void widget::set_rect_target(const ivec4& target) {
    rect_target = target;
    // Truncated towards zero, per component.
    animation_step = {
        static_cast<int>((target.x - rect.x) * 0.1), static_cast<int>((target.y - rect.y) * 0.1),
        static_cast<int>((target.w - rect.w) * 0.1), static_cast<int>((target.h - rect.h) * 0.1)};
    add_animation();
}

void widget::add_animation() {
    if (owner_window)
        owner_window->add_animation(this);
}

void widget::remove_animation() {
    if (owner_window)
        owner_window->remove_animation(this);
}

void widget::animate() {
    const ivec4 t = rect_target;
    const ivec4 delta{static_cast<int>((t.x - rect.x) * 0.5), static_cast<int>((t.y - rect.y) * 0.5),
                      static_cast<int>((t.w - rect.w) * 0.5), static_cast<int>((t.h - rect.h) * 0.5)};
    ivec4 next{t.x - delta.x, t.y - delta.y, t.w - delta.w, t.h - delta.h};
    const ivec4 s = animation_step;
    if (std::abs(delta.x) <= std::abs(s.x) && std::abs(delta.y) <= std::abs(s.y) &&
        std::abs(delta.w) <= std::abs(s.w) && std::abs(delta.h) <= std::abs(s.h)) {
        remove_animation();
        next = t;
    }
    set_rect(next, false);
}

void widget::set_anchor(anchor_type which, int distance) {
    NIMBIT_ASSERT(parent != nullptr && "Widget has no parent yet");
    const auto i = static_cast<uint32_t>(which);
    if (i >= 4)
        return;
    anchors[i].on = true;
    anchors[i].distance = distance;
    update_anchor(parent->rect.size());
}

void widget::update_anchor(const _vec2<int>& parent_size) {
    auto fit = [](const anchor& low, const anchor& high, int size, int& pos, int& extent) {
        if (low.on && high.on) {
            pos = low.distance;
            extent = size - low.distance - high.distance;
        } else if (high.on) {
            pos = size - extent - high.distance;
        } else if (low.on) {
            pos = low.distance;
        }
    };
    const ivec4 old = rect;
    fit(anchors[2], anchors[3], parent_size.x, rect.x, rect.w);
    fit(anchors[0], anchors[1], parent_size.y, rect.y, rect.h);
    // No resize or move is raised on this widget, but its children still learn of the change and
    // follow it: a panel stretched by its anchors carries its own anchored contents along.
    if (created && (old.w != rect.w || old.h != rect.h))
        tell_children(event_type::parent_resize, old);
    if (created && (old.x != rect.x || old.y != rect.y))
        tell_children(event_type::parent_move, old);
    update(false);
}

void widget::tell_children(event_type type, const ivec4& old) {
    const bool resize = type == event_type::parent_resize;
    const auto data = resize ? pack_size(old.size()) : pack_size(old.position());
    const walk_guard guard(children.walks());
    for (size_t i = 0; i < children.with_holes().size(); ++i)
        if (widget* c = children.with_holes()[i]) {
            events().fire_event(c, type, data);
            if (resize)
                c->update_anchor(rect.size());
        }
}

_vec2<int> widget::calc_absolute_pos() const {
    _vec2<int> p{};
    for (const widget* w = this; w; w = w->parent)
        p = p + w->rect.position();
    return p;
}

_vec2<int> widget::get_screen_pos() const {
    _vec2<int> p = calc_absolute_pos();
    if (owner_window && owner_window->is_created())
        p = p + owner_window->get_client_rect().position();
    return p;
}

ivec4 widget::calculate_update_rect() const {
    return clip_to_ancestors(rect, parent);
}

void widget::update(bool flush) {
    if (!created || rect.w <= 0 || rect.h <= 0 || !owner_window)
        return;
    const ivec4 area = calculate_update_rect();
    if (area.w > 0 && area.h > 0)
        owner_window->update_rect(area);
    if (flush)
        owner_window->flush_updates();
}

void widget::set_background(const vec4& color) {
    theme.set(theme_keys::default_back_color, color);
    if (is_visible(true))
        update(false);
}

void widget::focus(focus_cause cause) {
    if (owner_window)
        owner_window->set_focus(this, cause);
}

bool widget::has_focus() const {
    return owner_window && owner_window->get_focus() == this;
}

void widget::add_timer(uint32_t id, uint32_t interval_ms, bool single_shot) {
    if (owner_window)
        owner_window->add_timer(this, id, interval_ms, single_shot);
}

void widget::remove_timer(uint32_t id) {
    if (owner_window)
        owner_window->remove_timer(this, id);
}

bool widget::has_timer(uint32_t id) const {
    return owner_window && owner_window->has_timer(this, id);
}

void widget::add_tooltip(std::string_view text, std::string_view title) {
    add_tooltip(ivec4{}, text, title);
}

void widget::add_tooltip(const ivec4& area, std::string_view text, std::string_view title) {
    if (owner_window)
        owner_window->add_tooltip(this, area, title, text);
}

void widget::remove_tooltips() {
    if (owner_window)
        owner_window->remove_tooltips(this);
}

void widget::bring_to_front() {
    restack(true);
}

void widget::send_to_back() {
    restack(false);
}

void widget::restack(bool to_front) {
    if (!parent)
        return;
    parent->children.move(this, to_front);
}

} // namespace nimbit::ui
