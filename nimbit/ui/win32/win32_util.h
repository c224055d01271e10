#pragma once

// What the Win32 backend's files share: the system headers in the right order, GDI+ started once,
// the module the windows belong to, colours and the pointer position of the event being handled.

#include <windows.h>
// After windows.h: GDI+ needs the COM interfaces (left out by WIN32_LEAN_AND_MEAN) and, with
// NOMINMAX, min and max under its own namespace.
#include <objidl.h>

#include <algorithm>
namespace Gdiplus {
using std::max;
using std::min;
} // namespace Gdiplus
#include <gdiplus.h>

#include "nimbit/graphics/vec.h"

namespace nimbit::ui::win32 {

// Starts GDI+ for the process on first use (false when it cannot start); it is never shut down,
// since a plug-in cannot know when the last of its objects is gone.
bool start_gdiplus();

// The module (the plug-in DLL or the executable) that holds this code, for window classes.
HINSTANCE this_module();

inline Gdiplus::Color to_color(const vec4& c) {
    auto byte = [](float v) {
        return static_cast<BYTE>(std::clamp(v, 0.0f, 1.0f) * 255.0f + 0.5f);
    };
    return Gdiplus::Color(byte(c.w), byte(c.x), byte(c.y), byte(c.z));
}

// While a mouse message is dispatched, the pointer is where that message says it was: the toolkit
// hit-tests with the pointer position, and the two differ when messages queue up (or are posted).
void begin_pointer_event(_vec2<int> screen_position);
void end_pointer_event();

// The cursor native_set_cursor chose, which windows show over their client area.
HCURSOR current_cursor();

// Whether COM could be initialised on this thread; uninitialises on destruction when it did.
class com_scope {
public:
    com_scope();
    ~com_scope();
    com_scope(const com_scope&) = delete;
    com_scope& operator=(const com_scope&) = delete;
    bool ok() const { return usable; }

private:
    bool usable = false;
    bool owned = false;
};

} // namespace nimbit::ui::win32
