#include "nimbit/ui/win32/win32_util.h"

#include <mutex>

namespace nimbit::ui::win32 {

bool start_gdiplus() {
    static bool started = [] {
        Gdiplus::GdiplusStartupInput input;
        ULONG_PTR token = 0;
        return Gdiplus::GdiplusStartup(&token, &input, nullptr) == Gdiplus::Ok;
    }();
    return started;
}

HINSTANCE this_module() {
    static HMODULE module = [] {
        HMODULE m = nullptr;
        // The address of a function of ours: the module is the DLL this code is linked into.
        if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                    GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                                reinterpret_cast<LPCWSTR>(&this_module), &m))
            m = GetModuleHandleW(nullptr);
        return m;
    }();
    return module;
}

com_scope::com_scope() {
    const HRESULT hr = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    // RPC_E_CHANGED_MODE: the host made this thread multi-threaded; COM is usable all the same.
    usable = SUCCEEDED(hr) || hr == RPC_E_CHANGED_MODE;
    owned = SUCCEEDED(hr);
}

com_scope::~com_scope() {
    if (owned)
        CoUninitialize();
}

} // namespace nimbit::ui::win32
