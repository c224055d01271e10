#include "nimbit/ui/offscreen/offscreen_window.h"

#include "nimbit/graphics/rect.h"
#include "nimbit/ui/native_bitmap.h"
#include "nimbit/ui/native_input.h"
#include "nimbit/ui/offscreen/offscreen_clock.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/window.h"
#include "nimbit/utils/assert.h"

#include <algorithm>
#include <cmath>

namespace nimbit::ui {

std::unique_ptr<native_window> create_native_window(window& owner, native_window_events& events) {
    return std::make_unique<offscreen::offscreen_window>(owner, events);
}

namespace offscreen {

namespace {
offscreen_window* key_window = nullptr;
uint64_t next_z = 0;
// A modal loop that cannot end by itself is cut after this many turns (as if closed).
constexpr uint64_t max_modal_turns = 10'000'000;

std::function<void(window&)>& modal_driver() {
    static std::function<void(window&)> driver;
    return driver;
}

} // namespace

offscreen_window& native_of(const window& w) {
    return static_cast<offscreen_window&>(w.get_native());
}

native_window_events& events_of(const window& w) {
    return native_of(w).get_events();
}

void offscreen_window::set_modal_driver(std::function<void(window&)> driver) {
    modal_driver() = std::move(driver);
}

offscreen_window::offscreen_window(window& owner, native_window_events& events)
    : owner(owner), events(events) {}

offscreen_window::~offscreen_window() {
    stop_timers(this);
    if (key_window == this)
        key_window = nullptr;
}

void offscreen_window::create(std::string_view new_title, const ivec4& new_frame, uint32_t new_style,
                              native_window*) {
    title = new_title;
    style = new_style;
    frame = {new_frame.x, new_frame.y, std::max(new_frame.w, 0), std::max(new_frame.h, 0)};
    canvas.resize(get_client_rect().size());
}

int offscreen_window::decoration_top() const {
    const bool titled = (style & window_style_titled) != 0 && (style & window_style_borderless) == 0;
    return titled ? title_bar_height : 0;
}

ivec4 offscreen_window::get_client_rect() const {
    const int top = std::min(decoration_top(), frame.h);
    return {frame.x, frame.y + top, frame.w, frame.h - top};
}

void offscreen_window::become_key() {
    if (key_window == this)
        return;
    offscreen_window* old = key_window;
    key_window = this;
    if (old)
        old->events.process_event(event_type::focus_lost, 0);
    events.process_event(event_type::focus_gained, 0);
}

void offscreen_window::resign_key() {
    if (key_window != this)
        return;
    key_window = nullptr;
    events.process_event(event_type::focus_lost, 0);
}

void offscreen_window::show(bool visible, bool focus) {
    if (visible) {
        if (!shown) {
            shown = true;
            z_order = ++next_z;
            invalidate({0, 0, get_client_rect().w, get_client_rect().h});
        }
        if (focus)
            become_key();
    } else if (shown) {
        shown = false;
        capturing = false;
        resign_key();
        // Closing a window that runs a modal session ends the session.
        session.reset();
    }
}

bool offscreen_window::has_focus() const {
    return key_window == this;
}

void offscreen_window::set_to_front() {
    z_order = ++next_z;
}

float offscreen_window::get_dpi() const {
    return native_get_screen_dpi();
}

void offscreen_window::set_rect(const ivec4& new_frame) {
    ivec4 f = new_frame;
    const int top = decoration_top();
    if (min_size.x > 0)
        f.w = std::max(f.w, min_size.x);
    if (min_size.y > 0)
        f.h = std::max(f.h, min_size.y + top);
    if (max_size.x > 0)
        f.w = std::min(f.w, max_size.x);
    if (max_size.y > 0)
        f.h = std::min(f.h, max_size.y + top);
    f.w = std::max(f.w, 0);
    f.h = std::max(f.h, 0);
    const bool resized = f.w != frame.w || f.h != frame.h;
    frame = f;
    if (resized) {
        const _vec2<int> client = get_client_rect().size();
        canvas.resize(client);
        // The platform reports the new client size as the window's resize event.
        events.process_event(event_type::resize, pack_size(client));
        invalidate({0, 0, client.x, client.y});
    }
}

void offscreen_window::set_min_size(_vec2<int> size) {
    min_size = size;
}
void offscreen_window::set_max_size(_vec2<int> size) {
    max_size = size;
}

void offscreen_window::maximize() {
    if (maximized)
        return;
    restored_frame = frame;
    maximized = true;
    set_rect(get_screen_rect());
}

void offscreen_window::restore() {
    if (!maximized)
        return;
    maximized = false;
    set_rect(restored_frame);
}

ivec4 offscreen_window::get_screen_rect() const {
    return offscreen::get_screen_rect();
}

void offscreen_window::invalidate(const ivec4& client_rect) {
    // Clipped to the client area: nothing outside it can be painted.
    const _vec2<int> client = get_client_rect().size();
    const ivec4 clipped = intersection(client_rect, {0, 0, client.x, client.y});
    if (is_empty(clipped))
        return;
    dirty = unite(dirty, clipped);
}

bool offscreen_window::paint_pending() {
    if (dirty.w <= 0 || dirty.h <= 0)
        return false;
    const ivec4 area = dirty;
    dirty = {};
    events.paint(area);
    return true;
}

void offscreen_window::run_modal(bool fill_screen) {
    const modal_session* modalSession = session.get();
    NIMBIT_ASSERT(!modalSession);
    session = std::make_unique<modal_session>();
    session->fill_screen = fill_screen;
    if (fill_screen)
        set_rect(get_screen_rect());
    show(true, true);
    set_to_front();
    while (session) {
        if (++session->turns > max_modal_turns)
            break;
        if (auto& driver = modal_driver())
            driver(owner);
        else if (!run_next_timer())
            break;
    }
    if (session) {
        // Nothing could end it: treated as closed.
        session.reset();
        show(false, false);
    }
}

void offscreen_window::end_modal() {
    const modal_session* modalSession = session.get();
    NIMBIT_ASSERT(modalSession != nullptr);
    show(false, false);
    session.reset();
}

void offscreen_window::start_timer(uint32_t native_id, float seconds, bool repeat) {
    const auto us = static_cast<uint64_t>(std::llround(std::max(seconds, 0.0f) * 1e6));
    native_window_events* target = &events;
    offscreen::start_timer(this, native_id, us, repeat,
                           [target, native_id] { target->process_native_timer(native_id); });
}

void offscreen_window::stop_timer(uint32_t native_id) {
    offscreen::stop_timer(this, native_id);
}

bool offscreen_window::is_timer_running(uint32_t native_id) const {
    return offscreen::is_timer_running(this, native_id);
}

namespace {
std::vector<file_drag>& drags() {
    static std::vector<file_drag> list;
    return list;
}
} // namespace

bool offscreen_window::begin_file_drag(const std::vector<std::string>& paths, const native_bitmap* image,
                                       _vec2<int> client_point) {
    if (paths.empty())
        return false;
    drags().push_back({this, paths, image != nullptr ? image->get_size() : _vec2<int>{}, client_point});
    return true;
}

const std::vector<file_drag>& file_drags() {
    return drags();
}

void clear_file_drags() {
    drags().clear();
}

} // namespace offscreen
} // namespace nimbit::ui
