#pragma once

#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/offscreen/offscreen_popup_menu.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "nimbit/ui/widget.h"
#include "nimbit/ui/window.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace toolkit_test {

using namespace nimbit;
using namespace nimbit::ui;

// Offscreen state is process-wide: every test starts from a clean slate.
class ToolkitTest : public ::testing::Test {
protected:
    void SetUp() override {
        offscreen::reset_input();
        offscreen::clear_menu_answers();
        offscreen::clear_shown_menus();
        offscreen::offscreen_window::set_modal_driver({});
    }
    void TearDown() override { offscreen::offscreen_window::set_modal_driver({}); }
};

// A created window at 100,100 on the screen, without a title bar: its client area is its frame.
struct TestWindow : window {
    explicit TestWindow(ivec4 frame = {100, 100, 400, 300}) { create("test", frame, window_style_resizable); }
    offscreen::offscreen_window& os() { return offscreen::native_of(*this); }
};

// Writes "name:type[:data]" lines for the events it watches; unregisters itself when destroyed.
struct Recorder : event_object {
    std::vector<std::string> log;
    bool with_data = false;

    void watch(event_object& source, const std::string& name, std::initializer_list<event_type> types) {
        for (event_type t : types)
            event_manager::instance().add_event(&source, this, t, [this, name](const event_info& e) {
                std::string line = name + ":" + std::to_string(static_cast<int>(e.type));
                if (with_data)
                    line += ":" + std::to_string(e.data);
                log.push_back(line);
            });
    }
    std::vector<std::string> take() { return std::exchange(log, {}); }
};

inline std::string ev(const std::string& who, event_type t) {
    return who + ":" + std::to_string(static_cast<int>(t));
}
inline std::string ev(const std::string& who, event_type t, unsigned long long data) {
    return ev(who, t) + ":" + std::to_string(data);
}

} // namespace toolkit_test
