#pragma once

// What every test over the offscreen backend shares: a fixture that starts and ends each case from
// the backend's clean slate, and one recorder for the events a case watches.

#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/event_object.h"
#include "nimbit/ui/offscreen/offscreen_state.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "nimbit/ui/window.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class OffscreenTest : public ::testing::Test {
protected:
    void SetUp() override { nimbit::ui::offscreen::reset_state(); }
    void TearDown() override { nimbit::ui::offscreen::reset_state(); }
};

// The calls painting the whole window makes now, earlier records dropped.
inline std::vector<nimbit::ui::draw_call> painted(nimbit::ui::window& w) {
    nimbit::ui::offscreen::offscreen_window& native = nimbit::ui::offscreen::native_of(w);
    w.get_root().update(false);
    native.get_canvas().clear_calls();
    native.paint_pending();
    return native.get_canvas().calls();
}

// Records the events it watches, in the order they are raised; unregisters itself when destroyed.
// Watching one source for one type needs no name: `event_recorder changed(box, event_type::value_changed)`.
struct event_recorder : nimbit::ui::event_object {
    struct entry {
        std::string source;
        nimbit::ui::event_type type;
        uint64_t data;
        nimbit::ui::event_agent agent;
    };
    std::vector<entry> entries;

    event_recorder() = default;
    event_recorder(nimbit::ui::event_object& source, nimbit::ui::event_type type) {
        watch(source, "", {type});
    }

    void watch(nimbit::ui::event_object& source, std::string name,
               std::initializer_list<nimbit::ui::event_type> types) {
        for (nimbit::ui::event_type t : types)
            nimbit::ui::event_manager::instance().add_event(
                &source, this, t, [this, name](const nimbit::ui::event_info& e) {
                    entries.push_back({name, e.type, e.data, e.agent});
                });
    }

    size_t count() const { return entries.size(); }
    uint64_t last_data() const { return entries.empty() ? 0 : entries.back().data; }
    std::vector<uint64_t> data() const {
        std::vector<uint64_t> out;
        for (const entry& e : entries)
            out.push_back(e.data);
        return out;
    }
    // "source:type" lines (":data" appended when asked), the recorded entries dropped.
    std::vector<std::string> take(bool with_data = false) {
        std::vector<std::string> lines;
        for (const entry& e : std::exchange(entries, {}))
            lines.push_back(line(e.source, e.type, with_data ? std::optional(e.data) : std::nullopt));
        return lines;
    }
    static std::string line(const std::string& source, nimbit::ui::event_type t,
                            std::optional<uint64_t> data = {}) {
        return source + ":" + std::to_string(static_cast<int>(t)) + (data ? ":" + std::to_string(*data) : "");
    }
};
