#include "nimbit/ui/win32/native_window.h"

#include "nimbit/ui/event_payload.h"
#include "nimbit/ui/win32/key_map.h"
#include "nimbit/utils/assert.h"
#include "nimbit/utils/wide_string_win32.h"

#include <windowsx.h>

#include <cmath>

namespace nimbit::ui {

std::unique_ptr<native_window> create_native_window(window&, native_window_events& events) {
    return std::make_unique<win32::win32_window>(events);
}

namespace win32 {

namespace {

constexpr wchar_t class_name[] = L"NimbitWindow";

LRESULT CALLBACK window_proc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_NCCREATE) {
        const auto* create = reinterpret_cast<const CREATESTRUCTW*>(lparam);
        SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
        if (auto* self = static_cast<win32_window*>(create->lpCreateParams))
            self->adopt(hwnd);
        return DefWindowProcW(hwnd, message, wparam, lparam);
    }
    auto* self = reinterpret_cast<win32_window*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    if (!self)
        return DefWindowProcW(hwnd, message, wparam, lparam);
    // Nothing may unwind into the system's code.
    try {
        return self->handle(message, wparam, lparam);
    } catch (...) {
        return 0;
    }
}

// One class for every window of the module, registered the first time a window is made.
bool register_class() {
    static const bool registered = [] {
        WNDCLASSEXW wc{};
        wc.cbSize = sizeof wc;
        wc.style = CS_DBLCLKS; // double clicks arrive as such
        wc.lpfnWndProc = window_proc;
        wc.hInstance = this_module();
        wc.hCursor = nullptr; // set over the client area in WM_SETCURSOR
        wc.lpszClassName = class_name;
        return RegisterClassExW(&wc) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
    }();
    return registered;
}

POINT screen_point(HWND hwnd, LPARAM lparam) {
    POINT p{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
    ClientToScreen(hwnd, &p);
    return p;
}

UINT dpi_of(HWND hwnd) {
    using get_dpi_for_window = UINT(WINAPI*)(HWND);
    static const auto get = reinterpret_cast<get_dpi_for_window>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow")));
    const UINT dpi = get && hwnd ? get(hwnd) : 0;
    return dpi > 0 ? dpi : 96;
}

} // namespace

win32_window::win32_window(native_window_events& owner) : owner(owner) {}

win32_window::~win32_window() {
    *alive = false;
    if (!hwnd)
        return;
    for (const auto& [id, repeat] : timers)
        KillTimer(hwnd, id);
    timers.clear();
    if (modal) // destroyed inside its own session: the owner must not stay disabled
        if (HWND above = GetWindow(hwnd, GW_OWNER))
            EnableWindow(above, TRUE);
    SetWindowLongPtrW(hwnd, GWLP_USERDATA, 0);
    DestroyWindow(hwnd);
}

void win32_window::create(std::string_view title, const ivec4& frame, uint32_t style, native_window* parent) {
    if (hwnd || !register_class())
        return;
    start_gdiplus();
    if (style & window_style_borderless) {
        // Popups and tooltips: no frame, and no taskbar button.
        style_bits = WS_POPUP;
        ex_style_bits = WS_EX_TOOLWINDOW;
    } else if (style & window_style_titled) {
        style_bits = WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;
        if (style & window_style_resizable)
            style_bits |= WS_THICKFRAME | WS_MAXIMIZEBOX;
    } else {
        style_bits = WS_POPUP | WS_BORDER;
    }
    if (style & window_style_floating)
        ex_style_bits |= WS_EX_TOPMOST;
    const auto* above = dynamic_cast<win32_window*>(parent);
    hwnd = CreateWindowExW(ex_style_bits, class_name, widen(title).c_str(), style_bits, frame.x, frame.y,
                           std::max(frame.w, 1), std::max(frame.h, 1), above ? above->hwnd : nullptr, nullptr,
                           this_module(), this);
    if (!hwnd)
        return;
    RECT client{};
    GetClientRect(hwnd, &client);
    drawer.resize({client.right - client.left, client.bottom - client.top});
    created = true;
}

// --- showing and placing --------------------------------------------------------------------------

void win32_window::show(bool visible, bool focus) {
    if (!hwnd)
        return;
    if (!visible) {
        if (GetCapture() == hwnd)
            ReleaseCapture();
        ShowWindow(hwnd, SW_HIDE);
        return;
    }
    if (focus) {
        ShowWindow(hwnd, SW_SHOW);
        SetForegroundWindow(hwnd);
        SetActiveWindow(hwnd);
        SetFocus(hwnd);
    } else {
        ShowWindow(hwnd, SW_SHOWNOACTIVATE);
    }
}

bool win32_window::is_shown() const {
    return hwnd && IsWindowVisible(hwnd);
}

bool win32_window::has_focus() const {
    return hwnd && GetFocus() == hwnd;
}

void win32_window::set_to_front() {
    if (hwnd)
        SetWindowPos(hwnd, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

void win32_window::set_opacity(float opacity) {
    if (!hwnd)
        return;
    const LONG_PTR ex = GetWindowLongPtrW(hwnd, GWL_EXSTYLE);
    if (opacity >= 1.0f) {
        if (ex & WS_EX_LAYERED)
            SetWindowLongPtrW(hwnd, GWL_EXSTYLE, ex & ~LONG_PTR(WS_EX_LAYERED));
        return;
    }
    if (!(ex & WS_EX_LAYERED))
        SetWindowLongPtrW(hwnd, GWL_EXSTYLE, ex | WS_EX_LAYERED);
    SetLayeredWindowAttributes(hwnd, 0, static_cast<BYTE>(std::clamp(opacity, 0.0f, 1.0f) * 255.0f + 0.5f),
                               LWA_ALPHA);
}

float win32_window::get_dpi() const {
    return static_cast<float>(dpi_of(hwnd));
}

void win32_window::set_rect(const ivec4& frame) {
    if (hwnd)
        SetWindowPos(hwnd, nullptr, frame.x, frame.y, std::max(frame.w, 1), std::max(frame.h, 1),
                     SWP_NOZORDER | SWP_NOACTIVATE);
}

ivec4 win32_window::get_rect() const {
    RECT r{};
    if (!hwnd || !GetWindowRect(hwnd, &r))
        return {};
    return {r.left, r.top, r.right - r.left, r.bottom - r.top};
}

ivec4 win32_window::get_client_rect() const {
    RECT r{};
    if (!hwnd || !GetClientRect(hwnd, &r))
        return {};
    POINT origin{0, 0};
    ClientToScreen(hwnd, &origin);
    return {origin.x, origin.y, r.right - r.left, r.bottom - r.top};
}

_vec2<int> win32_window::frame_for_client(_vec2<int> client) const {
    RECT r{0, 0, client.x, client.y};
    AdjustWindowRectEx(&r, style_bits, FALSE, ex_style_bits);
    return {r.right - r.left, r.bottom - r.top};
}

void win32_window::set_min_size(_vec2<int> size) {
    min_client = size;
}

void win32_window::set_max_size(_vec2<int> size) {
    max_client = size;
} // 0: unlimited

void win32_window::maximize() {
    if (maximized)
        return;
    restored_frame = get_rect();
    maximized = true;
    set_rect(get_screen_rect());
}

void win32_window::restore() {
    if (!maximized)
        return;
    maximized = false;
    set_rect(restored_frame);
}

ivec4 win32_window::get_screen_rect() const {
    MONITORINFO info{};
    info.cbSize = sizeof info;
    HMONITOR monitor = hwnd ? MonitorFromWindow(hwnd, MONITOR_DEFAULTTONEAREST)
                            : MonitorFromPoint(POINT{0, 0}, MONITOR_DEFAULTTOPRIMARY);
    if (!GetMonitorInfoW(monitor, &info))
        return {};
    const RECT& r = info.rcWork;
    return {r.left, r.top, r.right - r.left, r.bottom - r.top};
}

// --- painting -------------------------------------------------------------------------------------

void win32_window::invalidate(const ivec4& r) {
    if (!hwnd || r.w <= 0 || r.h <= 0)
        return;
    const RECT dirty{r.x, r.y, r.x + r.w, r.y + r.h};
    InvalidateRect(hwnd, &dirty, FALSE);
}

void win32_window::flush() {
    if (hwnd)
        UpdateWindow(hwnd);
}

void win32_window::paint() {
    PAINTSTRUCT ps{};
    const HWND target = hwnd;
    HDC dc = BeginPaint(target, &ps);
    if (!dc)
        return;
    const RECT& r = ps.rcPaint;
    const auto token = alive;
    if (r.right > r.left && r.bottom > r.top && drawer.get_surface()) {
        drawer.begin_paint();
        owner.paint({r.left, r.top, r.right - r.left, r.bottom - r.top});
        if (!*token) {
            EndPaint(target, &ps);
            return;
        }
        drawer.end_paint();
        // The back buffer to the screen, the dirty part only.
        HDC memory = CreateCompatibleDC(dc);
        HGDIOBJ previous = SelectObject(memory, drawer.get_surface());
        BitBlt(dc, r.left, r.top, r.right - r.left, r.bottom - r.top, memory, r.left, r.top, SRCCOPY);
        SelectObject(memory, previous);
        DeleteDC(memory);
    }
    EndPaint(target, &ps);
}

// --- input ----------------------------------------------------------------------------------------

bool win32_window::dispatch(event_type type, unsigned long long data) {
    const auto token = alive;
    owner.process_event(type, data);
    return *token;
}

bool win32_window::dispatch_mouse(event_type type, unsigned long long data, POINT screen) {
    begin_pointer_event({screen.x, screen.y});
    const bool still = dispatch(type, data);
    end_pointer_event();
    return still;
}

void win32_window::capture_mouse() {
    if (hwnd)
        SetCapture(hwnd);
}

void win32_window::release_mouse() {
    if (hwnd && GetCapture() == hwnd)
        ReleaseCapture();
}

bool win32_window::key_down(WPARAM wparam, LPARAM lparam) {
    const int key = virtual_key_from_message(wparam, lparam);
    if (is_modifier(key)) {
        // A modifier press is a raw key without a character (once, not while it repeats), so that a
        // shortcut field can record it.
        const bool repeat = (lparam >> 30) & 1;
        return repeat || dispatch(event_type::key_down_raw, pack_pair(key, -1));
    }
    const uint32_t upper = key_character(wparam);
    // Without a character the high half is -1.
    if (!dispatch(event_type::key_down_raw, pack_pair(key, upper != 0 ? static_cast<int32_t>(upper) : -1)))
        return false;
    return dispatch(event_type::key_down, upper);
}

LRESULT win32_window::handle(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_PAINT:
        paint();
        return 0;
    case WM_ERASEBKGND:
        return 1; // the back buffer covers everything
    case WM_SIZE:
        if (wparam != SIZE_MINIMIZED) {
            const _vec2<int> client{LOWORD(lparam), HIWORD(lparam)};
            drawer.resize(client);
            InvalidateRect(hwnd, nullptr, FALSE);
            if (created)
                dispatch(event_type::resize, pack_size(client));
        }
        return 0;
    case WM_GETMINMAXINFO: {
        auto* info = reinterpret_cast<MINMAXINFO*>(lparam);
        if (min_client.x > 0 || min_client.y > 0) {
            const _vec2<int> f = frame_for_client(min_client);
            info->ptMinTrackSize = POINT{std::max<LONG>(info->ptMinTrackSize.x, f.x),
                                         std::max<LONG>(info->ptMinTrackSize.y, f.y)};
        }
        const _vec2<int> f = frame_for_client(max_client);
        if (max_client.x > 0)
            info->ptMaxTrackSize.x = f.x;
        if (max_client.y > 0)
            info->ptMaxTrackSize.y = f.y;
        return 0;
    }
    case WM_SETCURSOR:
        if (LOWORD(lparam) == HTCLIENT) {
            SetCursor(current_cursor());
            return TRUE;
        }
        break;
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
    case WM_MBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
    case WM_RBUTTONDBLCLK:
    case WM_MBUTTONDBLCLK: {
        // Held buttons keep the pointer's messages coming here, outside the window too.
        SetCapture(hwnd);
        const unsigned long long button = (message == WM_RBUTTONDOWN || message == WM_RBUTTONDBLCLK)   ? 2
                                          : (message == WM_MBUTTONDOWN || message == WM_MBUTTONDBLCLK) ? 1
                                                                                                       : 0;
        const event_type type =
            message == WM_LBUTTONDBLCLK ? event_type::mouse_dbl_click : event_type::mouse_down;
        dispatch_mouse(type, button, screen_point(hwnd, lparam));
        return 0;
    }
    case WM_LBUTTONUP:
    case WM_RBUTTONUP:
    case WM_MBUTTONUP: {
        const unsigned long long button = message == WM_RBUTTONUP ? 2 : message == WM_MBUTTONUP ? 1 : 0;
        const HWND self = hwnd;
        const bool still = dispatch_mouse(event_type::mouse_up, button, screen_point(hwnd, lparam));
        if (!(wparam & (MK_LBUTTON | MK_RBUTTON | MK_MBUTTON)) && (!still || GetCapture() == self))
            ReleaseCapture();
        return 0;
    }
    case WM_MOUSEMOVE: {
        if (!tracking_leave) {
            TRACKMOUSEEVENT track{sizeof(TRACKMOUSEEVENT), TME_LEAVE, hwnd, 0};
            tracking_leave = TrackMouseEvent(&track) != FALSE;
            const auto token = alive;
            owner.set_mouse_inside(true);
            if (!*token)
                return 0;
        }
        const bool right_drag = (wparam & MK_RBUTTON) && !(wparam & MK_LBUTTON);
        dispatch_mouse(event_type::mouse_move, right_drag ? 2 : 0, screen_point(hwnd, lparam));
        return 0;
    }
    case WM_MOUSELEAVE: {
        tracking_leave = false;
        const auto token = alive;
        owner.set_mouse_inside(false);
        if (!*token)
            return 0;
        POINT at{};
        GetCursorPos(&at);
        dispatch_mouse(event_type::mouse_leave, 0, at);
        return 0;
    }
    case WM_MOUSEWHEEL: {
        // Screen coordinates here, unlike the other mouse messages.
        const POINT at{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
        const double delta = GET_WHEEL_DELTA_WPARAM(wparam) / double(WHEEL_DELTA) * 40.0;
        if (delta != 0)
            dispatch_mouse(event_type::mouse_wheel, pack_wheel(delta), at);
        return 0;
    }
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
        if (message == WM_SYSKEYDOWN && wparam == VK_F4)
            break; // Alt+F4 closes, through WM_CLOSE
        key_down(wparam, lparam);
        return 0;
    case WM_KEYUP:
    case WM_SYSKEYUP: {
        // Handled here, also for Alt: the system would otherwise open the (absent) window menu.
        const int key = virtual_key_from_message(wparam, lparam);
        if (!is_modifier(key))
            dispatch(event_type::key_up, key_character(wparam));
        return 0;
    }
    case WM_CHAR: {
        auto unit = static_cast<wchar_t>(wparam);
        if (unit >= 0xD800 && unit <= 0xDBFF) { // the first half of a pair waits for the second
            pending_high_surrogate = unit;
            return 0;
        }
        if (unit >= 0xDC00 && unit <= 0xDFFF) {
            const wchar_t high = pending_high_surrogate;
            pending_high_surrogate = 0;
            if (high != 0 && dispatch(event_type::key_char, high))
                dispatch(event_type::key_char, unit);
            return 0;
        }
        pending_high_surrogate = 0;
        // The editing keys as the toolkit names them; other control characters (Control+letter)
        // are shortcuts, not text.
        if (unit == 8)
            unit = 127;
        else if (unit == 10)
            unit = 13;
        else if (unit < 32 && unit != 9 && unit != 13 && unit != 27)
            return 0;
        dispatch(event_type::key_char, unit);
        return 0;
    }
    case WM_SYSCHAR:
        return 0; // Alt is Command: its combinations are shortcuts, never text
    case WM_SYSCOMMAND:
        if ((wparam & 0xFFF0) == SC_KEYMENU)
            return 0;
        break;
    case WM_SETFOCUS:
        dispatch(event_type::focus_gained, 0);
        return 0;
    case WM_KILLFOCUS:
        dispatch(event_type::focus_lost, 0);
        return 0;
    case WM_TIMER: {
        const auto id = static_cast<uint32_t>(wparam);
        auto it = timers.find(id);
        if (it == timers.end())
            return 0;
        if (!it->second) {
            // A single-shot timer is spent once it fires: forgotten before its handler runs.
            KillTimer(hwnd, wparam);
            timers.erase(it);
        }
        owner.process_native_timer(id);
        return 0;
    }
    case WM_CLOSE:
        owner.process_close(); // the toolkit window decides and hides itself
        return 0;
    default:
        break;
    }
    return DefWindowProcW(hwnd, message, wparam, lparam);
}

// --- modal sessions ---------------------------------------------------------------------------------

void win32_window::run_modal(bool fill_screen) {
    NIMBIT_ASSERT(!modal);
    if (!hwnd || modal)
        return;
    if (fill_screen)
        set_rect(get_screen_rect());
    // The window that had the keyboard gets it back afterwards; the owner takes no input meanwhile.
    const HWND previous = GetFocus();
    const HWND above = GetWindow(hwnd, GW_OWNER);
    const bool disable_above = above && IsWindowEnabled(above);
    const auto token = alive;
    modal = true;
    modal_ending = false;
    show(true, true);
    if (disable_above)
        EnableWindow(above, FALSE);
    MSG msg{};
    while (*token && !modal_ending && IsWindowVisible(hwnd)) {
        const BOOL got = GetMessageW(&msg, nullptr, 0, 0);
        if (got == 0) {
            PostQuitMessage(static_cast<int>(msg.wParam)); // for the loop outside
            break;
        }
        if (got < 0)
            break;
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
    if (disable_above && IsWindow(above))
        EnableWindow(above, TRUE);
    if (!*token)
        return;
    modal = false;
    modal_ending = false;
    if (IsWindowVisible(hwnd))
        ShowWindow(hwnd, SW_HIDE);
    if (previous && previous != hwnd && IsWindowVisible(previous)) {
        SetForegroundWindow(GetAncestor(previous, GA_ROOT));
        SetFocus(previous);
    }
}

void win32_window::end_modal() {
    NIMBIT_ASSERT(is_modal());
    // The owner is enabled before the window hides, so that the system hands it the activation.
    if (HWND above = GetWindow(hwnd, GW_OWNER))
        EnableWindow(above, TRUE);
    modal_ending = true;
    ShowWindow(hwnd, SW_HIDE);
    PostMessageW(hwnd, WM_NULL, 0, 0); // wakes the session's loop
}

// --- timers ---------------------------------------------------------------------------------------

void win32_window::start_timer(uint32_t native_id, float seconds, bool repeat) {
    if (!hwnd)
        return;
    const auto ms = static_cast<UINT>(std::clamp(seconds * 1000.0f, 1.0f, 2.0e9f));
    if (SetTimer(hwnd, native_id, ms, nullptr))
        timers[native_id] = repeat;
}

void win32_window::stop_timer(uint32_t native_id) {
    auto it = timers.find(native_id);
    if (it == timers.end())
        return;
    timers.erase(it);
    KillTimer(hwnd, native_id);
}

} // namespace win32
} // namespace nimbit::ui
