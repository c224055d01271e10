#include "display_session.h"
#include "probe_widget.h"

#include "nimbit/ui/window.h"

#include <gtest/gtest.h>

using namespace cocoa_test;
using nimbit::ivec4;
using nimbit::vec4;
using nimbit::ui::event_type;

namespace {

constexpr vec4 blue{0.1f, 0.2f, 0.8f, 1.0f};
constexpr vec4 red{0.9f, 0.1f, 0.1f, 1.0f};

struct painted_window {
    nimbit::ui::window w;
    probe_widget root{blue};
    probe_widget child{red};

    explicit painted_window(ivec4 frame, uint32_t style = nimbit::ui::window_style_borderless) {
        w.create("probe", frame, style);
        root.create(w.get_root(), {0, 0, frame.w, frame.h});
        child.create(root, {20, 30, 40, 20});
        w.show();
    }
    // The client point as a screen point.
    nimbit::_vec2<int> at(int x, int y) const {
        const ivec4 c = w.get_client_rect();
        return {c.x + x, c.y + y};
    }
};

bool looks(const screen_image& img, int x, int y, vec4 color) {
    return color_distance(img.pixel(x, y), color) < 0.02f;
}

} // namespace

TEST(CocoaWindow, PaintsWidgetsWhereTheyAreOnScreen) {
    painted_window p({100, 120, 200, 100});
    const ivec4 client = p.w.get_client_rect();
    EXPECT_EQ(client.w, 200);
    EXPECT_EQ(client.h, 100);
    screen_image img;
    ASSERT_TRUE(wait_for([&] {
        img = capture_screen(client);
        return looks(img, 25, 35, red) && looks(img, 5, 5, blue);
    }));
    // The child covers exactly (20, 30) .. (59, 49): y grows downwards.
    EXPECT_TRUE(looks(img, 20, 30, red));
    EXPECT_TRUE(looks(img, 59, 49, red));
    EXPECT_TRUE(looks(img, 19, 30, blue));
    EXPECT_TRUE(looks(img, 60, 49, blue));
    EXPECT_TRUE(looks(img, 20, 29, blue));
    EXPECT_TRUE(looks(img, 20, 50, blue));
    EXPECT_TRUE(looks(img, 199, 99, blue));
}

TEST(CocoaWindow, ClicksReachTheWidgetUnderThePointer) {
    painted_window p({100, 120, 200, 100});
    ASSERT_TRUE(wait_for([&] { return p.w.has_focus(); }));
    ASSERT_TRUE(click_at(p.at(30, 40)));
    ASSERT_TRUE(wait_for([&] { return p.child.count(event_type::mouse_up) == 1; }));
    EXPECT_EQ(p.child.data_of(event_type::mouse_down), std::vector<unsigned long long>{0});
    EXPECT_EQ(p.root.count(event_type::mouse_down), 0u);

    ASSERT_TRUE(click_at(p.at(30, 40), 3));
    ASSERT_TRUE(wait_for([&] { return p.child.count(event_type::mouse_up) == 2; }));
    EXPECT_EQ(p.child.data_of(event_type::mouse_down), (std::vector<unsigned long long>{0, 2}));

    ASSERT_TRUE(click_at(p.at(150, 80)));
    ASSERT_TRUE(wait_for([&] { return p.root.count(event_type::mouse_up) == 1; }));
    EXPECT_EQ(p.child.count(event_type::mouse_down), 2u);
}
