// What only the Win32 backend does, under Wine: the rectangles, styles and opacity its windows are
// given, the system's key and character messages as the toolkit's events, the keyboard's polled
// state, a modal session's disabled owner and popup menus.

#include "win32_session.h"

#include "nimbit/ui/event_payload.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/native_popup_menu.h"

#include <gtest/gtest.h>

#include <thread>

using namespace backend_test;
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
        const ivec4 frame{120, 140, 300, 200};
        probe_window p(frame, style);
        nimbit::ui::window& w = p.w;
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

TEST(Win32Window, KeyAndCharacterMessagesArriveAsToolkitEvents) {
    probe_window p({100, 120, 200, 100}, nimbit::ui::window_style_borderless);
    probe_widget& child = p.root;
    p.w.show();
    ASSERT_TRUE(wait_for([&] { return p.w.is_shown(); }));
    const HWND hwnd = native(p.w).get_hwnd();
    child.focus();

    const uint32_t no_char = 0xFFFFFFFFu;
    auto raw = [](int key, uint32_t ch) {
        return nimbit::ui::pack_pair(key, static_cast<int32_t>(ch));
    };
    struct row {
        UINT message;
        WPARAM wparam;
        LPARAM lparam;
        event_type type; // what the widget hears (its last event of that type)
        uint64_t data;
    };
    const LPARAM screen_point = MAKELPARAM(p.w.get_client_rect().x + 30, p.w.get_client_rect().y + 40);
    // clang-format off
    const row rows[] = {
        // Forty per notch, towards the user too.
        {WM_MOUSEWHEEL, WPARAM(WORD(-2 * WHEEL_DELTA)) << 16, screen_point, event_type::mouse_wheel, nimbit::ui::pack_wheel(-80.0)},
        // The raw key (macOS code, character or -1 above it), then the upper-cased character or the
        // key's function code.
        {WM_KEYDOWN, VK_LEFT, 0x14B0001, event_type::key_down_raw, raw(123, nimbit::ui::event_key::left)},
        {WM_KEYDOWN, VK_F5, 0x3F0001, event_type::key_down, nimbit::ui::event_key::f5},
        {WM_KEYDOWN, VK_RETURN, 0x1C0001, event_type::key_down, nimbit::ui::event_key::return_key},
        {WM_KEYDOWN, VK_RETURN, 0x11C0001, event_type::key_down_raw, raw(76, 13)}, // the keypad's
        // Modifiers: Shift by scan code, Control and Alt (Option) by the extended bit.
        {WM_KEYDOWN, VK_SHIFT, 0x360001, event_type::key_down_raw, raw(60, no_char)},
        {WM_KEYDOWN, VK_CONTROL, 0x11D0001, event_type::key_down_raw, raw(62, no_char)},
        {WM_SYSKEYDOWN, VK_MENU, 0x20380001, event_type::key_down_raw, raw(58, no_char)},
        // Text: one unit each, editing keys by the toolkit's codes.
        {WM_CHAR, 0xE9, 0, event_type::key_char, 0xE9},
        {WM_CHAR, 8, 0, event_type::key_char, 127},
        {WM_CHAR, 13, 0, event_type::key_char, 13},
    };
    // clang-format on
    for (const row& r : rows) {
        SCOPED_TRACE(testing::Message() << std::hex << r.message << " " << r.wparam << " " << r.lparam);
        const size_t before = child.count(r.type);
        ASSERT_TRUE(PostMessageW(hwnd, r.message, r.wparam, r.lparam));
        ASSERT_TRUE(wait_for([&] { return child.count(r.type) > before; }));
        EXPECT_EQ(child.data_of(r.type).back(), r.data);
    }

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
}

// The owner takes no input during the session, however it ends; the session dispatches nothing
// once it has ended.
TEST(Win32Window, AModalSessionDisablesItsOwnerUntilItEnds) {
    probe_window owner({40, 40, 160, 90});
    owner.w.show();
    probe_window asked({200, 200, 160, 90}, nimbit::ui::window_style_titled, {0.2f, 0.2f, 0.2f, 1}, &owner.w);
    const HWND above = native(owner.w).get_hwnd();
    bool by_end_modal = true, enabled_meanwhile = true;
    int ticks = 0;
    asked.on_timer(&asked, [&] {
        ++ticks;
        enabled_meanwhile = IsWindowEnabled(above);
        by_end_modal ? asked.w.end_modal(1) : asked.w.hide();
    });
    for (int code : {1, 0}) {
        by_end_modal = code == 1;
        ticks = 0;
        asked.root.add_timer(1, 10, false);
        EXPECT_EQ(asked.w.show_modal(), code);
        asked.root.remove_timer(1);
        EXPECT_EQ(ticks, 1);
        EXPECT_FALSE(enabled_meanwhile);
        EXPECT_TRUE(IsWindowEnabled(above));
    }
}

TEST(Win32Window, PopupMenusReturnTheChosenIdPlusOneOrZeroWhenDismissed) {
    probe_window p({100, 100, 200, 150}, nimbit::ui::window_style_borderless);
    nimbit::ui::window& w = p.w;
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
