#include "nimbit/utils/wide_string_win32.h"

#include <windows.h>

namespace nimbit {

std::wstring widen(std::string_view utf8) {
    if (utf8.empty())
        return {};
    const int size = static_cast<int>(utf8.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0);
    std::wstring wide(static_cast<size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), length);
    return wide;
}

std::string narrow(std::wstring_view utf16) {
    if (utf16.empty())
        return {};
    const int size = static_cast<int>(utf16.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, utf16.data(), size, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, utf16.data(), size, text.data(), length, nullptr, nullptr);
    return text;
}

} // namespace nimbit
