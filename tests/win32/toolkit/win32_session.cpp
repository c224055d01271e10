// The shared scenes' driver on Win32: the message loop, the window's back buffer, and input posted
// to the window as the system would deliver it.

#include "win32_session.h"

#include <cctype>
#include <chrono>

namespace backend_test {

namespace {

bool post(nimbit::ui::window& w, UINT message, WPARAM wparam, LPARAM lparam) {
    return PostMessageW(win32_test::native(w).get_hwnd(), message, wparam, lparam) != FALSE;
}

LPARAM client(point at) {
    return static_cast<LPARAM>(MAKELPARAM(at.x, at.y));
}

} // namespace

const int clipboard_rounding = 0;

bool wait_for(const std::function<bool()>& done, double timeout_seconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(timeout_seconds);
    while (!done()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        MSG msg;
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&msg);
            DispatchMessageW(&msg);
        }
        Sleep(1);
    }
    return true;
}

void pump(double seconds) {
    wait_for([] { return false; }, seconds);
}

nimbit::graphics::rgba_image shown(nimbit::ui::window& w) {
    w.get_native().flush();
    return win32_test::native(w).get_win32_drawer().snapshot();
}

bool click(nimbit::ui::window& w, point at, int button) {
    static constexpr UINT down[] = {WM_LBUTTONDOWN, WM_MBUTTONDOWN, WM_RBUTTONDOWN};
    static constexpr UINT up[] = {WM_LBUTTONUP, WM_MBUTTONUP, WM_RBUTTONUP};
    static constexpr WPARAM held[] = {MK_LBUTTON, MK_MBUTTON, MK_RBUTTON};
    return post(w, down[button], held[button], client(at)) && post(w, up[button], 0, client(at));
}

// The system's sequence: the second press arrives as a double click.
bool double_click(nimbit::ui::window& w, point at) {
    return post(w, WM_LBUTTONDOWN, MK_LBUTTON, client(at)) && post(w, WM_LBUTTONUP, 0, client(at)) &&
           post(w, WM_LBUTTONDBLCLK, MK_LBUTTON, client(at)) && post(w, WM_LBUTTONUP, 0, client(at));
}

// The wheel's point is on the screen.
bool wheel(nimbit::ui::window& w, point at, int notches) {
    const nimbit::ivec4 c = w.get_client_rect();
    return post(w, WM_MOUSEWHEEL, WPARAM(WORD(notches * WHEEL_DELTA)) << 16,
                MAKELPARAM(c.x + at.x, c.y + at.y));
}

// Sent rather than posted: the loop would translate a posted key into a second character.
bool type(nimbit::ui::window& w, const std::string& letters) {
    const HWND hwnd = win32_test::native(w).get_hwnd();
    for (char c : letters) {
        const WPARAM vk = static_cast<WPARAM>(std::toupper(static_cast<unsigned char>(c)));
        SendMessageW(hwnd, WM_KEYDOWN, vk, 1);
        SendMessageW(hwnd, WM_CHAR, static_cast<WPARAM>(c), 1);
        SendMessageW(hwnd, WM_KEYUP, vk, LPARAM(0xC0000001));
    }
    return hwnd != nullptr;
}

} // namespace backend_test
