#pragma once

// The Win32 backend's tests: the shared driver (win32_session.cpp) and the platform window under a
// toolkit window.

#include "tests/support/backend_conformance.h"

#include "nimbit/ui/win32/native_window.h"

namespace win32_test {

inline nimbit::ui::win32::win32_window& native(nimbit::ui::window& w) {
    return dynamic_cast<nimbit::ui::win32::win32_window&>(w.get_native());
}

} // namespace win32_test
