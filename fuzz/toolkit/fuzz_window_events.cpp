// Drives a window with a random stream of platform events, clock steps and tree changes. Handlers
// create and destroy widgets while events are being routed, which is where dangling pointers would
// hide; the sanitizers watch every step.

#include "fuzz/fuzz_support.h"
#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/offscreen/offscreen_clock.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "nimbit/ui/widget.h"
#include "nimbit/ui/window.h"

#include <memory>
#include <vector>

namespace {

using namespace nimbit;
using namespace nimbit::ui;

struct scene {
    window win;
    std::vector<std::unique_ptr<widget>> widgets;
    fuzz_input* in = nullptr;

    scene() { win.create("fuzz", {0, 0, 400, 300}); }
    ~scene() {
        if (widget* c = mouse::get_captured_widget())
            mouse::release_widget(*c);
    }

    widget* pick(uint8_t b) {
        if (widgets.empty() || b % 5 == 0)
            return &win.get_root();
        return widgets[b % widgets.size()].get();
    }

    void destroy(uint8_t b) {
        if (widgets.empty())
            return;
        // Out of the list first: the handlers the destructor sets off may look at it.
        auto doomed = std::move(widgets[b % widgets.size()]);
        widgets.erase(widgets.begin() + static_cast<std::ptrdiff_t>(b % widgets.size()));
    }

    void add(widget& parent, ivec4 r) {
        if (widgets.size() >= 40)
            return;
        auto w = std::make_unique<widget>();
        w->create(parent, r);
        widget* raw = w.get();
        auto& em = event_manager::instance();
        // Handlers that change the tree while events are routed.
        em.add_event(raw, raw, event_type::mouse_down, [this, raw](const event_info&) {
            add(*raw, {in->byte() * 2 - 40, in->byte() * 2 - 40, in->byte(), in->byte()});
        });
        em.add_event(raw, raw, event_type::timer,
                     [this](const event_info& e) { destroy(static_cast<uint8_t>(e.data)); });
        em.add_event(raw, raw, event_type::key_down, [this](const event_info&) { destroy(in->byte()); });
        em.add_event(raw, raw, event_type::mouse_wheel, [raw](const event_info&) { raw->bring_to_front(); });
        raw->set_tab_stop(true);
        widgets.push_back(std::move(w));
    }

    void step(fuzz_input& r) {
        const uint8_t op = r.byte();
        const uint8_t a = r.byte();
        const auto coord = [&] {
            return static_cast<int>(r.byte()) * 2 - 40;
        }; // a little outside too
        // clang-format off
        switch (op % 20) {
        case 0: offscreen::move_mouse(win, {coord(), coord()}); break;
        case 1: offscreen::press_mouse(win, {coord(), coord()}, a % 3); break;
        case 2: offscreen::release_mouse(win, {coord(), coord()}, a % 3); break;
        case 3: offscreen::double_click(win, {coord(), coord()}); break;
        case 4: offscreen::wheel(win, {coord(), coord()}, static_cast<int8_t>(a) / 8.0); break;
        case 5: offscreen::type_key(win, a % 128, static_cast<char16_t>(r.byte() % 16 == 0 ? 9 : r.byte())); break;
        case 6: offscreen::events_of(win).process_event(static_cast<event_type>(a % 50), r.take(8)); break;
        case 7: offscreen::advance_ms(a * 10ull); break;
        case 8: add(*pick(a), {coord(), coord(), r.byte(), r.byte()}); break;
        case 9: destroy(a); break;
        case 10: pick(a)->enable(r.byte() & 1); break;
        case 11: pick(a)->show(r.byte() & 1); break;
        case 12: pick(a)->set_rect_target({coord(), coord(), r.byte(), r.byte()}); break;
        case 13: pick(a)->add_tooltip({coord(), coord(), r.byte(), r.byte()}, "text", "title"); break;
        case 14: pick(a)->add_timer(r.byte(), (r.byte() + 1u) * 5u, r.byte() & 1); break;
        case 15:
            if (widget* c = mouse::get_captured_widget())
                mouse::release_widget(*c);
            else
                mouse::capture_widget(*pick(a));
            break;
        case 16: win.set_tab_navigation(a & 1); break;
        case 17: offscreen::native_of(win).paint_pending(); break;
        case 18: (a & 1) ? pick(r.byte())->send_to_back() : pick(r.byte())->bring_to_front(); break;
        case 19: pick(a)->remove_all_children(); break;
        }
        // clang-format on
    }
};

} // namespace

FUZZ_TARGET() {
    offscreen::reset_input();
    scene s;
    s.in = &in;
    for (int steps = 0; in.more() && steps < 400; ++steps)
        s.step(in);
    // Widgets go before the window, as members of a window class would.
    while (!s.widgets.empty())
        s.destroy(0);
}
