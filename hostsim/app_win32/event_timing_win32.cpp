#include "hostsim/app_win32/event_timing_win32.h"

#include "nimbit/utils/wide_string_win32.h"

#include <algorithm>
#include <cwctype>

namespace {

std::vector<hostsim::KeyTiming> pendingKeys;
hostsim::KeyTiming current; // the key press being dispatched
bool keyInFlight = false;
bool awaitingCharacter = false; // the press's WM_CHAR, which the text and its repaint come with
std::vector<HWND> visibleBefore;
bool visibleNoted = false;

std::vector<HWND> ThreadWindows() {
    std::vector<HWND> list;
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND w, LPARAM out) -> BOOL {
            reinterpret_cast<std::vector<HWND>*>(out)->push_back(w);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&list));
    return list;
}

std::vector<HWND> VisibleThreadWindows() {
    std::vector<HWND> list = ThreadWindows();
    list.erase(std::remove_if(list.begin(), list.end(), [](HWND w) { return !IsWindowVisible(w); }),
               list.end());
    return list;
}

std::string Title(HWND window) {
    wchar_t text[256] = {};
    if (window != nullptr)
        GetWindowTextW(window, text, 256);
    return nimbit::narrow(text);
}

// Paints what is waiting to be painted in every visible window, children included, before
// returning - what the loop would do once the queue is empty.
void PaintVisibleWindows() {
    for (HWND w : VisibleThreadWindows())
        RedrawWindow(w, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
}

// The message's time stamp is the tick count (milliseconds, 32 bits) when the input arrived. The
// difference is taken modulo that width; a press older than a minute is not timed.
double PressAgeMs() {
    const DWORD age = GetTickCount() - static_cast<DWORD>(GetMessageTime());
    return age < 60000 ? static_cast<double>(age) : -1;
}

bool IsKeyPress(UINT message) {
    return message == WM_KEYDOWN || message == WM_SYSKEYDOWN;
}

} // namespace

double MonotonicMs() {
    static const LONGLONG frequency = [] {
        LARGE_INTEGER f{};
        QueryPerformanceFrequency(&f);
        return f.QuadPart;
    }();
    LARGE_INTEGER now{};
    QueryPerformanceCounter(&now);
    return static_cast<double>(now.QuadPart / frequency) * 1000.0 +
           static_cast<double>(now.QuadPart % frequency) * 1000.0 / static_cast<double>(frequency);
}

namespace {

void FinishKey() {
    if (pendingKeys.size() < 1000)
        pendingKeys.push_back(current);
    keyInFlight = awaitingCharacter = false;
}

double SincePressMs() {
    return current.pressedAtMs >= 0 ? MonotonicMs() - current.pressedAtMs : -1;
}

} // namespace

void NoteMessageTaken(const MSG& message) {
    // The character a press waited for comes first if at all (posted messages before input).
    if (awaitingCharacter && message.message != WM_CHAR && message.message != WM_SYSCHAR)
        FinishKey();
    if (!IsKeyPress(message.message) || message.hwnd == nullptr)
        return;
    current = hostsim::KeyTiming{};
    current.keyCode = static_cast<unsigned short>(message.wParam);
    const UINT character = MapVirtualKeyW(static_cast<UINT>(message.wParam), MAPVK_VK_TO_CHAR) & 0x7FFFFFFF;
    if (character >= 0x20 && character < 0x7F)
        current.characters = std::string(1, static_cast<char>(std::towlower(static_cast<wint_t>(character))));
    current.window = Title(GetAncestor(message.hwnd, GA_ROOT));
    const double dispatchedMs = MonotonicMs();
    current.queuedMs = PressAgeMs();
    current.pressedAtMs = current.queuedMs >= 0 ? dispatchedMs - current.queuedMs : -1;
    keyInFlight = true;
}

void NoteMessageHandled(const MSG& message) {
    if (!keyInFlight)
        return;
    if (IsKeyPress(message.message) && !awaitingCharacter) {
        PaintVisibleWindows();
        current.latencyMs = SincePressMs();
        // The toolkit takes text from the WM_CHAR that TranslateMessage posted: the press is done
        // once that one is handled too (when it never comes, the time above stands).
        MSG next{};
        if (PeekMessageW(&next, message.hwnd, WM_CHAR, WM_DEADCHAR, PM_NOREMOVE) ||
            PeekMessageW(&next, message.hwnd, WM_SYSCHAR, WM_SYSDEADCHAR, PM_NOREMOVE))
            awaitingCharacter = true;
        else
            FinishKey();
    } else if (awaitingCharacter && (message.message == WM_CHAR || message.message == WM_SYSCHAR)) {
        const wchar_t unit = static_cast<wchar_t>(message.wParam);
        if (unit >= 0x20 && unit != 0x7F)
            current.characters = nimbit::narrow(std::wstring(1, unit));
        PaintVisibleWindows();
        current.latencyMs = SincePressMs();
        FinishKey();
    }
}

std::vector<hostsim::KeyTiming> TakeKeyTimings() {
    std::vector<hostsim::KeyTiming> taken;
    taken.swap(pendingKeys);
    return taken;
}

std::vector<hostsim::WindowShown> TakeShownWindows() {
    std::vector<hostsim::WindowShown> shown;
    const std::vector<HWND> visibleNow = VisibleThreadWindows();
    if (visibleNoted) {
        for (HWND w : visibleNow) {
            if (std::find(visibleBefore.begin(), visibleBefore.end(), w) != visibleBefore.end())
                continue;
            RedrawWindow(w, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
            shown.push_back({Title(w), MonotonicMs()});
        }
    }
    visibleBefore = visibleNow;
    visibleNoted = true;
    return shown;
}

std::vector<hostsim::VisibleWindow> ListVisibleWindows() {
    std::vector<hostsim::VisibleWindow> list;
    const HWND foreground = GetForegroundWindow(), active = GetActiveWindow();
    for (HWND w : VisibleThreadWindows()) {
        RECT r{};
        GetWindowRect(w, &r);
        list.push_back({Title(w), static_cast<int>(r.left), static_cast<int>(r.top),
                        static_cast<int>(r.right - r.left), static_cast<int>(r.bottom - r.top),
                        w == foreground || w == active});
    }
    return list;
}
