#include "nimbit/ui/native_input.h"

#include "nimbit/ui/mouse.h"
#include "nimbit/ui/win32/key_map.h"
#include "nimbit/ui/win32/win32_util.h"

namespace nimbit::ui {

namespace {
int pointer_event_depth = 0;
_vec2<int> pointer_event_position;
HCURSOR chosen_cursor = nullptr;
} // namespace

void win32::begin_pointer_event(_vec2<int> screen_position) {
    ++pointer_event_depth;
    pointer_event_position = screen_position;
}

void win32::end_pointer_event() {
    if (pointer_event_depth > 0)
        --pointer_event_depth;
}

HCURSOR win32::current_cursor() {
    return chosen_cursor ? chosen_cursor : LoadCursorW(nullptr, IDC_ARROW);
}

_vec2<int> native_get_pointer_position() {
    if (pointer_event_depth > 0)
        return pointer_event_position;
    POINT p{};
    GetCursorPos(&p);
    return {p.x, p.y};
}

bool native_is_button_down(uint32_t button) {
    // The virtual buttons are the physical ones: a left-handed set-up swaps them.
    const bool swapped = GetSystemMetrics(SM_SWAPBUTTON) != 0;
    int vk = 0;
    switch (button) {
    case 0:
        vk = swapped ? VK_RBUTTON : VK_LBUTTON;
        break;
    case 1:
        vk = VK_MBUTTON;
        break;
    case 2:
        vk = swapped ? VK_LBUTTON : VK_RBUTTON;
        break;
    default:
        return false;
    }
    return (GetAsyncKeyState(vk) & 0x8000) != 0;
}

bool native_is_key_down(int key_code) {
    const UINT vk = win32::windows_key(key_code);
    return vk != 0 && (GetAsyncKeyState(static_cast<int>(vk)) & 0x8000) != 0;
}

std::string native_get_key_name(int key_code) {
    return win32::virtual_key_name(key_code);
}

float native_get_screen_dpi() {
    HDC screen = GetDC(nullptr);
    const int dpi = screen ? GetDeviceCaps(screen, LOGPIXELSX) : 0;
    if (screen)
        ReleaseDC(nullptr, screen);
    return dpi > 0 ? static_cast<float>(dpi) : 96.0f;
}

void native_set_cursor(uint32_t kind) {
    LPCWSTR name = IDC_ARROW;
    switch (static_cast<cursor>(kind)) {
    case cursor::ibeam:
        name = IDC_IBEAM;
        break;
    case cursor::hand:
        name = IDC_HAND;
        break;
    case cursor::resize_horizontal:
        name = IDC_SIZEWE;
        break;
    case cursor::resize_vertical:
        name = IDC_SIZENS;
        break;
    case cursor::wait:
        name = IDC_WAIT;
        break;
    case cursor::arrow:
    default:
        break;
    }
    chosen_cursor = LoadCursorW(nullptr, name);
    SetCursor(chosen_cursor);
}

} // namespace nimbit::ui
