#include "nimbit/ui/window.h"

#include "nimbit/graphics/rect.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/native_drawer.h"
#include "nimbit/ui/tooltip.h"
#include "nimbit/ui/walk_guard.h"
#include "nimbit/utils/assert.h"

#include <algorithm>

namespace nimbit::ui {

namespace {
event_manager& events() {
    return event_manager::instance();
}

constexpr int max_client_size = 1 << 20;
} // namespace

window::window() = default;

window::~window() {
    events().fire_event(this, event_type::destroy, 0);
    if (tip)
        tip->hide();
    // Widgets that outlive the window (they are owned elsewhere) must not call back into it.
    for (widget* w : widgets.with_holes())
        if (w)
            w->owner_window = nullptr;
    widgets.clear();
    timers.clear();
}

void window::user_callback(int) {}

void window::create(std::string_view title, const ivec4& frame, uint32_t style, window* parent) {
    NIMBIT_ASSERT(native == nullptr && "Double create?");
    native = create_native_window(*this, *this);
    native->create(title, frame, style, parent && parent->native ? parent->native.get() : nullptr);
    paint_drawer = std::make_unique<drawer>(native->get_drawer());
    const ivec4 client = native->get_client_rect();
    root.set_name("Root");
    root.create(*this, {0, 0, client.w, client.h});
    events().fire_event(this, event_type::create, 0);
}

native_window& window::get_native() const {
    NIMBIT_ASSERT(native != nullptr && "Window not created");
    return *native;
}

drawer& window::get_drawer() {
    NIMBIT_ASSERT(paint_drawer != nullptr && "Window not created");
    return *paint_drawer;
}

// --- life cycle -------------------------------------------------------------------------------------

void window::show(bool visible) {
    if (!native)
        return;
    const bool before = native->is_shown();
    native->show(visible, true);
    const bool after = native->is_shown();
    if (before != after)
        events().fire_event(this, after ? event_type::shown : event_type::hidden, 0);
}

void window::show_no_focus() {
    if (!native)
        return;
    const bool before = native->is_shown();
    native->show(true, false);
    if (!before && native->is_shown())
        events().fire_event(this, event_type::shown, 0);
}

bool window::is_shown() const {
    return native && native->is_shown();
}
bool window::has_focus() const {
    return native && native->has_focus();
}
void window::set_to_front() {
    if (native)
        native->set_to_front();
}
void window::set_opacity(float opacity) {
    if (native)
        native->set_opacity(opacity);
}
float window::get_dpi() const {
    return native ? native->get_dpi() : 72.0f;
}
void window::set_rect(const ivec4& frame) {
    if (native)
        native->set_rect(frame);
}
ivec4 window::get_rect() const {
    return native ? native->get_rect() : ivec4{};
}
ivec4 window::get_client_rect() const {
    return native ? native->get_client_rect() : ivec4{};
}
void window::set_min_size(_vec2<int> size) {
    if (native)
        native->set_min_size(size);
}
void window::set_max_size(_vec2<int> size) {
    if (native)
        native->set_max_size(size);
}
void window::maximize() {
    if (native)
        native->maximize();
}
void window::restore() {
    if (native)
        native->restore();
}
bool window::is_maximized() const {
    return native && native->is_maximized();
}
void window::update_rect(const ivec4& client_rect) {
    if (native)
        native->invalidate(client_rect);
}
void window::flush_updates() {
    if (native)
        native->flush();
}
void window::capture_mouse() {
    if (native)
        native->capture_mouse();
}
void window::release_mouse() {
    if (native)
        native->release_mouse();
}

void window::center_window() {
    if (!native)
        return;
    const ivec4 screen = native->get_screen_rect();
    ivec4 r = native->get_rect();
    r.x = screen.x + (screen.w - r.w) / 2;
    r.y = screen.y + (screen.h - r.h) / 2;
    native->set_rect(r);
}

void window::force_in_screen() {
    if (!native)
        return;
    const ivec4 screen = native->get_screen_rect();
    ivec4 r = native->get_rect();
    const ivec4 before = r;
    r.w = std::min(r.w, screen.w);
    r.h = std::min(r.h, screen.h);
    r.x = std::clamp(r.x, screen.x, screen.x + screen.w - r.w);
    r.y = std::clamp(r.y, screen.y, screen.y + screen.h - r.h);
    if (!(r == before))
        native->set_rect(r);
}

int window::show_modal(bool fill_screen) {
    modal_code = 0;
    events().fire_event(this, event_type::shown, 0);
    get_native().run_modal(fill_screen);
    events().fire_event(this, event_type::hidden, 0);
    return modal_code;
}

void window::end_modal(int code) {
    modal_code = code;
    events().fire_event(this, event_type::hidden, 0);
    get_native().end_modal();
}

bool window::is_modal() const {
    return native && native->is_modal();
}

bool window::check_close() {
    return events().fire_event(this, event_type::close, 0);
}

void window::process_close() {
    // A window that listens for close decides itself; otherwise the close box hides it (which also
    // ends a modal session with the code 0).
    if (!check_close())
        hide();
}

// --- widget list ------------------------------------------------------------------------------------

void window::add_widget(widget* w) {
    if (!w)
        return;
    widgets.push_back(w);
}

void window::remove_widget(widget* w) {
    if (!w)
        return;
    widgets.remove(w);
    remove_tooltips(w);
    remove_animation(w);
    drop_widget_timers(w);
    if (hovered == w)
        hovered = nullptr;
    if (focused == w)
        focused = nullptr;
    if (tooltip_widget == w)
        tooltip_widget = nullptr;
}

const std::vector<widget*>& window::get_widgets() const {
    return widgets.items();
}

std::string window::print_widget_tree(int depth, const widget* from) const {
    if (!from)
        from = &root;
    std::string out(static_cast<size_t>(std::max(depth, 0)) * 2, ' ');
    const ivec4& r = from->get_rect();
    out += from->get_name() + " (" + std::to_string(r.x) + ", " + std::to_string(r.y) + ", " +
           std::to_string(r.w) + ", " + std::to_string(r.h) + ")";
    if (!from->is_visible(false))
        out += " hidden";
    if (!from->is_enabled())
        out += " disabled";
    out += '\n';
    for (const widget* c : from->get_children())
        out += print_widget_tree(depth + 1, c);
    return out;
}

// --- input routing ----------------------------------------------------------------------------------

void window::process_event(const event_type& type, const unsigned long long& data) {
    auto pointer = [this] {
        return get_widget_at_pos(mouse::get_position(nullptr) - get_client_rect().position());
    };
    switch (type) {
    case event_type::focus_gained:
    case event_type::focus_lost:
        if (widget* f = live(focused))
            events().fire_event(f, type, 0);
        events().fire_event(this, type, 0);
        break;
    case event_type::pointer_event:
        if (widget* w = live(pointer()))
            events().fire_event(w, type, data);
        break;
    case event_type::input_ime:
        if (widget* f = live(focused))
            events().fire_event(f, type, data);
        break;
    case event_type::mouse_up: {
        if (swallow_mouse_up) {
            // The release that ends a double-click is never delivered.
            swallow_mouse_up = false;
            break;
        }
        if (widget* c = live(mouse::get_captured_widget())) {
            events().fire_event(c, type, data);
            break;
        }
        if (widget* w = live(pointer()))
            events().fire_event(w, type, data);
        events().fire_event(this, type, data);
        break;
    }
    case event_type::mouse_down:
    case event_type::mouse_dbl_click: {
        swallow_mouse_up = type == event_type::mouse_dbl_click;
        if (widget* w = live(pointer())) {
            set_focus(w, focus_cause::mouse);
            events().fire_event(w, type, data);
        }
        events().fire_event(this, type, data);
        break;
    }
    case event_type::mouse_wheel: {
        // Bubbles up to the first widget that has a wheel list; the window never gets it. The parent
        // is read before raising, so a handler may destroy the widget it runs on.
        for (widget* w = pointer(); w;) {
            widget* up = w == &root ? nullptr : w->get_parent();
            if (w->is_live() && events().fire_event(w, type, data))
                break;
            w = up;
        }
        break;
    }
    case event_type::mouse_leave:
        if (widget* h = live(hovered))
            events().fire_event(h, event_type::mouse_leave, data);
        break;
    case event_type::mouse_move: {
        if (widget* c = live(mouse::get_captured_widget())) {
            events().fire_event(c, type, data);
            break;
        }
        widget* under = pointer();
        if (under != hovered) {
            widget* old = hovered;
            hovered = under;
            if (widget* o = live(old))
                events().fire_event(o, event_type::mouse_leave, data);
            if (widget* n = live(under))
                events().fire_event(n, event_type::mouse_enter, data);
        } else if (widget* h = live(under)) {
            events().fire_event(h, type, data);
        }
        events().fire_event(this, type, data);
        break;
    }
    case event_type::key_down:
    case event_type::key_down_raw:
    case event_type::key_up:
        if (widget* f = live(focused))
            events().fire_event(f, type, data);
        events().fire_event(this, type, data);
        break;
    case event_type::key_char:
        if (tab_navigation && data == 9) {
            if (keyboard::is_key_down(keyboard::shift))
                focus_previous_widget();
            else
                focus_next_widget();
            break;
        }
        if (widget* f = live(focused))
            events().fire_event(f, type, data);
        events().fire_event(this, type, data);
        break;
    case event_type::resize: {
        // Sizes from the platform are trusted only within reason, so rectangle arithmetic cannot overflow.
        const ivec2 size = unpack_size(data);
        root.set_rect({0, 0, std::clamp(size.x, 0, max_client_size), std::clamp(size.y, 0, max_client_size)});
        events().fire_event(this, event_type::resize, 0);
        break;
    }
    default:
        break;
    }
}

widget* window::get_widget_at_pos(_vec2<int> point) const {
    if (!root.is_visible(true))
        return nullptr;
    const ivec4& rr = root.get_rect();
    if (point.x < 0 || point.y < 0 || point.x >= rr.w || point.y >= rr.h)
        return nullptr;
    const widget* current = &root;
    point = point - rr.position();
    for (;;) {
        const widget* hit = nullptr;
        const auto& list = current->get_children();
        for (size_t i = list.size(); i-- > 0;) {
            const widget* c = list[i];
            if (c && c->is_visible(true) && !c->is_mouse_transparent() && c->get_rect().contains(point)) {
                hit = c;
                break;
            }
        }
        if (!hit)
            return const_cast<widget*>(current);
        point = point - hit->get_rect().position();
        current = hit;
    }
}

void window::set_focus(widget* w, focus_cause cause) {
    if (w == focused)
        return;
    widget* old = focused;
    if (old)
        events().fire_event(old, event_type::focus_lost, static_cast<unsigned long long>(cause));
    focused = w;
    if (widget* n = live(w))
        events().fire_event(n, event_type::focus_gained, static_cast<unsigned long long>(cause));
}

void window::focus_next_widget() {
    focus_step(1);
}
void window::focus_previous_widget() {
    focus_step(-1);
}

void window::focus_step(int direction) {
    const std::vector<widget*>& list = widgets.items();
    const size_t n = list.size();
    if (n == 0)
        return;
    const size_t found = widgets.index_of(focused ? focused : &root);
    const size_t start = found == widgets.npos ? 0 : found;
    size_t i = start;
    widget* next = nullptr;
    for (;;) {
        i = direction > 0 ? (i + 1) % n : (i + n - 1) % n;
        widget* c = list[i];
        if (i == start) {
            next = c; // came round: taken whatever its state
            break;
        }
        if (c->is_tab_stop() && c->is_live() && c->is_visible(true)) {
            next = c;
            break;
        }
    }
    if (next != focused)
        set_focus(next, focus_cause::keyboard);
}

// --- painting ---------------------------------------------------------------------------------------

void window::paint(const ivec4& dirty) {
    process_draw(root, dirty);
}

void window::process_draw(widget& w, const ivec4& dirty) {
    if (!paint_drawer)
        return;
    _vec2<int> origin{};
    ivec4 clip = dirty;
    if (const widget* p = w.get_parent()) {
        origin = p->calc_absolute_pos();
        // A widget shows only inside its ancestors.
        clip = intersection(clip, widget::clip_to_ancestors(p->rect, p->parent));
    }
    draw_level(w, clip, origin);
}

// `clip` is what the parent may paint (window coordinates): the dirty rectangle within the
// parent's visible area. Each widget paints within its own rectangle inside that, so a control that
// draws past its edges cannot paint over its neighbours; the shadows of its children are painted in
// its pass and so stay inside it too.
void window::draw_level(widget& w, const ivec4& clip, _vec2<int> origin) {
    if (!w.is_visible(true))
        return;
    origin = origin + w.rect.position();
    const ivec4 own = intersection({origin.x, origin.y, w.rect.w, w.rect.h}, clip);
    if (is_empty(own))
        return;
    native_drawer& nd = paint_drawer->get_native();
    nd.start_draw(origin, own);
    events().fire_event(&w, event_type::draw, 0);
    const std::vector<widget*>& children = w.children.items();
    const walk_guard guard(w.children.walks());
    // All shadows of a level go under all of its children.
    for (size_t i = 0; i < children.size(); ++i)
        if (const widget* c = children[i]; c && c->shadow)
            paint_drawer->draw_shadow(c->rect, c->shadow_offset, c->shadow_size);
    for (size_t i = 0; i < children.size(); ++i)
        if (widget* c = children[i])
            draw_level(*c, own, origin);
    nd.end_draw();
}

} // namespace nimbit::ui
