// The backend's windows under Wine: the rectangles they are given, posted input arriving as the
// toolkit's events, timers and modal sessions.

#include "win32_session.h"

#include "nimbit/ui/event_payload.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/native_popup_menu.h"

#include <gtest/gtest.h>

#include <thread>

using namespace win32_test;
using nimbit::ivec4;
using nimbit::ui::event_type;
using values = std::vector<uint64_t>;

TEST(Win32Window, ReportsTheFrameItWasGivenWithTheClientAreaInsideIt) {
    struct row {
        uint32_t style;
        bool framed;
        LONG_PTR ex_style; // popups stay off the taskbar, floating ones above the others
    };
    using namespace nimbit::ui;
    for (auto [style, framed, ex_style] :
         {row{window_style_borderless, false, WS_EX_TOOLWINDOW},
          row{window_style_borderless | window_style_floating, false, WS_EX_TOOLWINDOW | WS_EX_TOPMOST},
          row{window_style_titled, true, 0}, row{window_style_titled | window_style_resizable, true, 0}}) {
        SCOPED_TRACE(style);
        nimbit::ui::window w;
        probe_widget root{{0.2f, 0.2f, 0.2f, 1}};
        const ivec4 frame{120, 140, 300, 200};
        w.create("rects", frame, style);
        root.create(w.get_root(), {0, 0, 300, 200});
        w.show();
        EXPECT_TRUE(wait_for([&] { return w.is_shown(); }));
        EXPECT_EQ(w.get_native().get_rect(), frame);
        const ivec4 client = w.get_client_rect();
        if (framed) { // the title bar lies above the client area, the borders around it
            EXPECT_GT(client.y, frame.y + 10);
            EXPECT_LT(client.w, frame.w);
            EXPECT_LE(client.x + client.w, frame.x + frame.w);
            EXPECT_LE(client.y + client.h, frame.y + frame.h);
        } else {
            EXPECT_EQ(client, frame);
        }
        // Moved and resized: the new frame, and the toolkit hears of the new client size.
        const ivec4 moved{60, 80, 360, 260};
        w.get_native().set_rect(moved);
        EXPECT_TRUE(wait_for([&] { return w.get_native().get_rect() == moved; }));
        const ivec4 after = w.get_client_rect();
        EXPECT_EQ(after.w - client.w, 60);
        EXPECT_EQ(after.h - client.h, 60);
        EXPECT_EQ(w.get_root().get_rect().w, after.w);
        EXPECT_EQ(w.get_root().get_rect().h, after.h);
        EXPECT_GT(w.get_native().get_dpi(), 0.0f);
        const HWND hwnd = native(w).get_hwnd();
        EXPECT_EQ(GetWindowLongPtrW(hwnd, GWL_EXSTYLE) & (WS_EX_TOOLWINDOW | WS_EX_TOPMOST), ex_style);
        // Opacity through a layered window, dropped again at full opacity.
        w.get_native().set_opacity(0.5f);
        BYTE alpha = 0;
        DWORD flags = 0;
        ASSERT_TRUE(GetLayeredWindowAttributes(hwnd, nullptr, &alpha, &flags));
        EXPECT_EQ(alpha, 128);
        w.get_native().set_opacity(1.0f);
        EXPECT_FALSE(GetWindowLongPtrW(hwnd, GWL_EXSTYLE) & WS_EX_LAYERED);
    }
}

TEST(Win32Window, PostedMouseAndKeyMessagesArriveAsToolkitEventsAtTheirPoint) {
    nimbit::ui::window w;
    probe_widget root{{0.1f, 0.2f, 0.8f, 1}}, child{{0.9f, 0.1f, 0.1f, 1}};
    w.create("input", {100, 120, 200, 100}, nimbit::ui::window_style_borderless);
    root.create(w.get_root(), {0, 0, 200, 100});
    child.create(root, {20, 30, 40, 20});
    w.show();
    ASSERT_TRUE(wait_for([&] { return w.is_shown(); }));
    const HWND hwnd = native(w).get_hwnd();
    const ivec4 client = w.get_client_rect();
    auto at = [](int x, int y) {
        return static_cast<LPARAM>(MAKELPARAM(x, y));
    };
    child.focus();

    const uint32_t no_char = 0xFFFFFFFFu;
    auto raw = [](int key, uint32_t ch) {
        return nimbit::ui::pack_pair(key, static_cast<int32_t>(ch));
    };
    struct row {
        UINT message;
        WPARAM wparam;
        LPARAM lparam;
        event_type type; // what the child hears (its last event of that type)
        uint64_t data;
        probe_widget* target;
    };
    // clang-format off
    const row rows[] = {
        {WM_LBUTTONDOWN, MK_LBUTTON, at(30, 40), event_type::mouse_down, 0, &child},
        {WM_LBUTTONUP, 0, at(30, 40), event_type::mouse_up, 0, &child},
        {WM_RBUTTONDOWN, MK_RBUTTON, at(59, 49), event_type::mouse_down, 2, &child},
        {WM_RBUTTONUP, 0, at(59, 49), event_type::mouse_up, 2, &child},
        {WM_MBUTTONDOWN, MK_MBUTTON, at(60, 49), event_type::mouse_down, 1, &root}, // just outside the child
        {WM_MBUTTONUP, 0, at(60, 49), event_type::mouse_up, 1, &root},
        {WM_LBUTTONDOWN, MK_LBUTTON, at(25, 35), event_type::mouse_down, 0, &child},
        {WM_LBUTTONUP, 0, at(25, 35), event_type::mouse_up, 0, &child},
        {WM_LBUTTONDBLCLK, MK_LBUTTON, at(25, 35), event_type::mouse_dbl_click, 0, &child},
        // The wheel's point is on the screen; forty per notch.
        {WM_MOUSEWHEEL, WPARAM(WHEEL_DELTA) << 16, at(client.x + 30, client.y + 40), event_type::mouse_wheel,
         nimbit::ui::pack_wheel(40.0), &child},
        {WM_MOUSEWHEEL, WPARAM(WORD(-2 * WHEEL_DELTA)) << 16, at(client.x + 30, client.y + 40), event_type::mouse_wheel,
         nimbit::ui::pack_wheel(-80.0), &child},
        // Keys go to the focused widget: the raw key (macOS code, character or -1 above it), then the
        // upper-cased character or the key's function code.
        {WM_KEYDOWN, 'A', 0x1E0001, event_type::key_down_raw, raw(0, 'A'), &child},
        {WM_KEYDOWN, 'B', 0x300001, event_type::key_down, 'B', &child},
        {WM_KEYUP, 'B', 0xC0300001, event_type::key_up, 'B', &child},
        {WM_KEYDOWN, VK_LEFT, 0x14B0001, event_type::key_down_raw, raw(123, nimbit::ui::event_key::left), &child},
        {WM_KEYDOWN, VK_F5, 0x3F0001, event_type::key_down, nimbit::ui::event_key::f5, &child},
        {WM_KEYDOWN, VK_RETURN, 0x1C0001, event_type::key_down, nimbit::ui::event_key::return_key, &child},
        {WM_KEYDOWN, VK_RETURN, 0x11C0001, event_type::key_down_raw, raw(76, 13), &child}, // the keypad's
        // Modifiers: Shift by scan code, Control and Alt (Option) by the extended bit.
        {WM_KEYDOWN, VK_SHIFT, 0x360001, event_type::key_down_raw, raw(60, no_char), &child},
        {WM_KEYDOWN, VK_CONTROL, 0x11D0001, event_type::key_down_raw, raw(62, no_char), &child},
        {WM_SYSKEYDOWN, VK_MENU, 0x20380001, event_type::key_down_raw, raw(58, no_char), &child},
        // Text: one unit each, editing keys by the toolkit's codes.
        {WM_CHAR, L'a', 0, event_type::key_char, 'a', &child},
        {WM_CHAR, 0xE9, 0, event_type::key_char, 0xE9, &child},
        {WM_CHAR, 8, 0, event_type::key_char, 127, &child},
        {WM_CHAR, 13, 0, event_type::key_char, 13, &child},
    };
    // clang-format on
    for (const row& r : rows) {
        SCOPED_TRACE(testing::Message() << std::hex << r.message << " " << r.wparam << " " << r.lparam);
        const size_t before = r.target->data_of(r.type).size();
        ASSERT_TRUE(PostMessageW(hwnd, r.message, r.wparam, r.lparam));
        ASSERT_TRUE(wait_for([&] { return r.target->data_of(r.type).size() > before; }));
        EXPECT_EQ(r.target->data_of(r.type).back(), r.data);
    }
    // A double click swallowed the release after it; the child got all its presses, the root none.
    EXPECT_EQ(root.data_of(event_type::mouse_down), values{1});

    // Surrogate pairs arrive whole, both units in order; a lone second half, Control+letters and
    // Alt+letters (shortcuts) are not text.
    child.seen.clear();
    for (WPARAM unit : {WPARAM(0xDE00), WPARAM(1), WPARAM(0xD83D), WPARAM(0xDE00), WPARAM('z')})
        PostMessageW(hwnd, WM_CHAR, unit, 0);
    PostMessageW(hwnd, WM_SYSCHAR, 'c', 0x20000001);
    ASSERT_TRUE(wait_for([&] { return child.data_of(event_type::key_char).size() >= 3; }));
    pump(0.05);
    EXPECT_EQ(child.data_of(event_type::key_char), (values{0xD83D, 0xDE00, 'z'}));

    // The keyboard's state is polled (as the host's shortcut chord is): Alt is Option, Control is
    // Control and the editing shortcuts' modifier. (Wine 8 reports a right Shift sent by SendInput
    // as neither of the two.)
    for (auto [vk, query] : {std::pair{VK_LMENU, int(nimbit::ui::keyboard::option)},
                             {VK_LCONTROL, int(nimbit::ui::keyboard::shortcut)},
                             {VK_LSHIFT, int(nimbit::ui::keyboard::shift)}}) {
        INPUT press[2] = {};
        press[0].type = press[1].type = INPUT_KEYBOARD;
        press[0].ki.wVk = press[1].ki.wVk = static_cast<WORD>(vk);
        press[0].ki.wScan = press[1].ki.wScan = static_cast<WORD>(MapVirtualKeyW(vk, MAPVK_VK_TO_VSC));
        press[1].ki.dwFlags = KEYEVENTF_KEYUP;
        ASSERT_EQ(SendInput(1, &press[0], sizeof(INPUT)), 1u);
        EXPECT_TRUE(wait_for([q = query] { return nimbit::ui::keyboard::is_key_down(q); })) << vk;
        EXPECT_FALSE(nimbit::ui::keyboard::is_key_down(nimbit::ui::keyboard::command)) << vk;
        ASSERT_EQ(SendInput(1, &press[1], sizeof(INPUT)), 1u);
        EXPECT_TRUE(wait_for([q = query] { return !nimbit::ui::keyboard::is_key_down(q); })) << vk;
    }

    // Names come from the keyboard layout.
    for (auto [code, name] : {std::pair{0, "A"}, {49, "Space"}, {96, "F5"}, {-5, ""}, {100000, ""}})
        EXPECT_EQ(nimbit::ui::keyboard::get_key_name(code), name) << code;
}

TEST(Win32Window, TimersRepeatOrFireOnceAndEndModalSessions) {
    nimbit::ui::window w;
    probe_widget root{{0.2f, 0.2f, 0.2f, 1}};
    nimbit::ui::window parent;
    parent.create("parent", {40, 40, 160, 90}, nimbit::ui::window_style_titled);
    parent.show();
    w.create("timers", {200, 200, 160, 90}, nimbit::ui::window_style_titled, &parent);
    root.create(w.get_root(), {0, 0, 160, 90});
    root.add_timer(7, 20, false);
    root.add_timer(8, 20, true);
    ASSERT_TRUE(wait_for([&] { return root.data_of(event_type::timer).size() >= 5; }));
    const auto ids = root.data_of(event_type::timer);
    EXPECT_EQ(std::count(ids.begin(), ids.end(), 8ull), 1);
    EXPECT_GE(std::count(ids.begin(), ids.end(), 7ull), 4);
    EXPECT_TRUE(root.has_timer(7));
    EXPECT_FALSE(root.has_timer(8));
    root.remove_timer(7);

    // A timer may destroy its own window; nothing fires into it afterwards.
    auto doomed = std::make_unique<nimbit::ui::window>();
    auto doomed_root = std::make_unique<probe_widget>(nimbit::vec4{0, 0, 0, 1});
    doomed->create("doomed", {10, 10, 50, 50}, nimbit::ui::window_style_borderless);
    doomed_root->create(doomed->get_root(), {0, 0, 50, 50});
    bool gone = false;
    nimbit::ui::event_manager::instance().add_event(doomed_root.get(), &gone, event_type::timer,
                                                    [&](const nimbit::ui::event_info&) {
                                                        doomed_root.reset();
                                                        doomed.reset();
                                                        gone = true;
                                                    });
    doomed_root->add_timer(1, 10, true);
    ASSERT_TRUE(wait_for([&] { return gone; }));
    pump(0.05);

    // The session returns the end_modal code from a timer it dispatches; hidden otherwise, 0.
    int ticks = 0;
    nimbit::ui::event_manager::instance().add_event(&root, &ticks, event_type::timer,
                                                    [&](const nimbit::ui::event_info& e) {
                                                        // The parent takes no input meanwhile.
                                                        if (IsWindowEnabled(native(parent).get_hwnd()))
                                                            ticks = -100;
                                                        if (e.data == 2 && ++ticks == 3)
                                                            w.end_modal(42);
                                                        if (e.data == 3)
                                                            w.hide();
                                                    });
    root.add_timer(2, 20, false);
    EXPECT_EQ(w.show_modal(), 42);
    EXPECT_EQ(ticks, 3);
    EXPECT_FALSE(w.is_modal());
    EXPECT_FALSE(w.is_shown());
    root.remove_timer(2);
    root.add_timer(3, 30, true);
    EXPECT_EQ(w.show_modal(), 0);
    EXPECT_FALSE(w.is_modal());
    EXPECT_TRUE(IsWindowEnabled(native(parent).get_hwnd()));
}

TEST(Win32Window, PopupMenusReturnTheChosenIdPlusOneOrZeroWhenDismissed) {
    nimbit::ui::window w;
    probe_widget root{{0.2f, 0.2f, 0.2f, 1}};
    w.create("menu", {100, 100, 200, 150}, nimbit::ui::window_style_borderless);
    root.create(w.get_root(), {0, 0, 200, 150});
    w.show();
    ASSERT_TRUE(wait_for([&] { return w.has_focus(); }));
    const std::vector<nimbit::ui::menu_item> items = {{4, "Off", false, false, false, {}},
                                                      {0, "", true, true, false, {}},
                                                      {9, "Nine", false, true, true, {}}};
    // The menu runs its own loop: the keys come from another thread once it is open. Up from nothing
    // lands on the last item.
    for (auto [keys, chosen] : {std::pair{std::vector<WORD>{VK_UP, VK_RETURN}, 10u}, {{VK_ESCAPE}, 0u}}) {
        std::thread typist([keys = keys] {
            Sleep(400);
            for (WORD vk : keys) {
                INPUT key[2] = {};
                key[0].type = key[1].type = INPUT_KEYBOARD;
                key[0].ki.wVk = key[1].ki.wVk = vk;
                key[1].ki.dwFlags = KEYEVENTF_KEYUP;
                SendInput(2, key, sizeof(INPUT));
                Sleep(100);
            }
        });
        EXPECT_EQ(nimbit::ui::create_native_popup_menu()->show(w.get_native(), {20, 20}, items, 0), chosen);
        typist.join();
    }
}
