// The simulated host on screen on Windows: loads the plug-in into a simulated session and shows the
// host's main window, whose menu bar has the Effect menu at index 5, built from the project. The
// window shows the project outline and a script console; a 30 ms timer calls the idle hooks, as
// the host does; closing the window runs the death hooks. Every change is written to the session
// record (a JSON file), as hostsim-app does.
//
//   hostsim-win [--project file.json] [--plugins folder] [--root folder] [--news-url url]
//               [--record file.json] [--control]
//
// With --control it also reads lines from standard input, one command each:
//   menu <category>/<effect>   sends that Effect menu item's command, as clicking it does
//   console <word> [number]    runs the word in the script console
//   select <layer>             selects that layer of the active composition (alone)
//   activate, deactivate       brings the main window to the foreground, or another window
//   quit                       quits (death hooks, record written)

#include "hostsim/app/host_app_options.h"
#include "hostsim/app_win32/event_timing_win32.h"
#include "hostsim/sim_host.h"
#include "hostsim/sim_platform.h"
#include "hostsim/sim_record.h"
#include "nimbit/utils/wide_string_win32.h"

#include <windows.h>

#include <cstdio>
#include <deque>
#include <exception>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr UINT ControlLine = WM_APP + 1; // lines from standard input are waiting in the queue
constexpr int ExecuteButton = 100;

struct App {
    HostAppOptions options;
    std::unique_ptr<hostsim::SimHost> host;
    hostsim::SessionState state;
    HWND window = nullptr, outline = nullptr, field = nullptr, output = nullptr;
    WNDPROC hostProc = nullptr;
    std::string shownOutline, writtenRecord, consoleText;
};
App app;

// Lines read from standard input wait here; the thread message only wakes the loop. A plug-in's
// modal loop drops thread messages, so every idle tick drains the queue too and no line is lost.
std::mutex controlMutex;
std::deque<std::string> controlLines;

template <typename T> void AppendBounded(std::vector<T>& list, std::vector<T>&& more, size_t limit) {
    list.insert(list.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    if (list.size() > limit)
        list.erase(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(list.size() - limit));
}

// The Windows edit controls break lines with CR LF.
std::wstring EditText(const std::string& text) {
    std::wstring out;
    for (wchar_t c : nimbit::widen(text)) {
        if (c == L'\n')
            out += L'\r';
        out += c;
    }
    return out;
}

void Refresh() {
    app.state.active = GetForegroundWindow() == app.window;
    AppendBounded(app.state.keys, TakeKeyTimings(), 200);
    app.state.windows = ListVisibleWindows();
    const std::string outline = hostsim::ProjectOutline(*app.host);
    if (outline != app.shownOutline) {
        app.shownOutline = outline;
        SetWindowTextW(app.outline, EditText(outline).c_str());
    }
    const std::string record = hostsim::SessionRecord(*app.host, app.state);
    if (record != app.writtenRecord && hostsim::WriteFileAtomically(app.options.record, record))
        app.writtenRecord = record;
}

void RunConsole(const std::string& line) {
    hostsim::ConsoleCall call = hostsim::RunConsoleLine(*app.host, line);
    if (call.word.empty())
        return;
    // A status script holds long hexadecimal image strings: its first lines tell enough.
    const std::string shown = call.result.size() > 400 ? call.result.substr(0, 400) + "..." : call.result;
    app.consoleText +=
        "execute(\"" + call.word + "\") -> " + std::to_string(call.status) + ", " + shown + "\n";
    app.state.console.push_back(std::move(call));
    SetWindowTextW(app.output, EditText(app.consoleText).c_str());
    SendMessageW(app.output, EM_LINESCROLL, 0, 0xFFFF);
    Refresh();
}

// The Effect menu item category/name of the menu bar, found by its text as the artist reads it.
void PerformMenuPath(const std::string& path) {
    const size_t slash = path.find('/');
    auto find = [](HMENU menu, const std::string& title) -> int {
        for (int i = 0; menu != nullptr && i < GetMenuItemCount(menu); ++i) {
            wchar_t text[256] = {};
            GetMenuStringW(menu, static_cast<UINT>(i), text, 256, MF_BYPOSITION);
            std::string shown = nimbit::narrow(text);
            for (size_t at = shown.find("&&"); at != std::string::npos; at = shown.find("&&", at + 1))
                shown.erase(at, 1);
            if (shown == title)
                return i;
        }
        return -1;
    };
    const HMENU effects = GetSubMenu(GetMenu(app.window), 5);
    const int category = slash == std::string::npos ? -1 : find(effects, path.substr(0, slash));
    const HMENU items = category >= 0 && !(GetMenuState(effects, category, MF_BYPOSITION) & MF_GRAYED)
                            ? GetSubMenu(effects, category)
                            : nullptr;
    const int item = items != nullptr ? find(items, path.substr(slash + 1)) : -1;
    if (item < 0) {
        std::fprintf(stderr, "hostsim-win: no enabled menu item %s\n", path.c_str());
        return;
    }
    SendMessageW(app.window, WM_COMMAND, MAKEWPARAM(GetMenuItemID(items, item), 0), 0);
    Refresh();
}

void SelectLayer(const std::string& name) {
    if (hostsim::Item* comp = app.host->ActiveItem()) {
        for (auto& layer : comp->layers) {
            const hostsim::Item* source = app.host->FindItem(layer->sourceItem);
            layer->selected =
                layer->name == name || (layer->name.empty() && source != nullptr && source->name == name);
        }
    }
    Refresh();
}

void RunControlLine(const std::string& line) {
    const size_t space = line.find(' ');
    const std::string command = line.substr(0, space);
    const std::string argument = space == std::string::npos ? "" : line.substr(space + 1);
    if (command == "menu")
        PerformMenuPath(argument);
    else if (command == "console")
        RunConsole(argument);
    else if (command == "select")
        SelectLayer(argument);
    else if (command == "activate" || command == "deactivate")
        hostsim::platform::SetMainWindowActive(app.window, command == "activate");
    else if (command == "quit")
        PostQuitMessage(0);
    else if (!command.empty())
        std::fprintf(stderr, "hostsim-win: unknown control line: %s\n", line.c_str());
}

void RunQueuedControlLines() {
    for (;;) {
        std::string line;
        {
            std::lock_guard lock(controlMutex);
            if (controlLines.empty())
                return;
            line = std::move(controlLines.front());
            controlLines.pop_front();
        }
        RunControlLine(line);
    }
}

// The host's window procedure, with the console's button and the layout added.
LRESULT CALLBACK AppProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    try {
        if (message == WM_COMMAND && LOWORD(wParam) == ExecuteButton && lParam != 0) {
            wchar_t text[1024] = {};
            GetWindowTextW(app.field, text, 1024);
            SetWindowTextW(app.field, L"");
            RunConsole(nimbit::narrow(text));
            return 0;
        }
        if (message == WM_SIZE) {
            const int width = LOWORD(lParam), height = HIWORD(lParam);
            MoveWindow(app.outline, 10, 10, width - 20, height - 170, TRUE);
            MoveWindow(app.field, 10, height - 150, width - 110, 24, TRUE);
            MoveWindow(GetDlgItem(window, ExecuteButton), width - 90, height - 150, 80, 24, TRUE);
            MoveWindow(app.output, 10, height - 116, width - 20, 106, TRUE);
        }
    } catch (...) {
        // nothing crosses a window procedure
    }
    return CallWindowProcW(app.hostProc, window, message, wParam, lParam);
}

HWND AddControl(const wchar_t* type, DWORD style, int id) {
    return CreateWindowExW(WS_EX_CLIENTEDGE, type, L"", WS_CHILD | WS_VISIBLE | style, 0, 0, 10, 10,
                           app.window, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                           GetModuleHandleW(nullptr), nullptr);
}

bool StartSession() {
    app.host =
        std::make_unique<hostsim::SimHost>(hostsim::LoadModelFile(app.options.project), app.options.root);
    app.host->Materialize();
    if (!app.options.newsUrl.empty())
        hostsim::platform::SetEnvironment("QUILLO_NEWS_URL", app.options.newsUrl);
    if (!app.host->LoadPlugins(app.options.plugins)) {
        std::fprintf(stderr, "hostsim-win: %s\n", app.host->loadError.c_str());
        return false;
    }
    app.window = static_cast<HWND>(app.host->MainWindow());
    if (app.window == nullptr)
        return false;
    const hostsim::Project* project = app.host->CurrentProject();
    SetWindowTextW(
        app.window,
        nimbit::widen("Simulated Host - " + (project != nullptr ? project->name : "no project")).c_str());
    app.outline = AddControl(L"EDIT", ES_MULTILINE | ES_READONLY | WS_VSCROLL, 0);
    app.field = AddControl(L"EDIT", ES_AUTOHSCROLL, 0);
    CreateWindowExW(0, L"BUTTON", L"execute", WS_CHILD | WS_VISIBLE | BS_PUSHBUTTON, 0, 0, 10, 10, app.window,
                    reinterpret_cast<HMENU>(static_cast<INT_PTR>(ExecuteButton)), GetModuleHandleW(nullptr),
                    nullptr);
    app.output = AddControl(L"EDIT", ES_MULTILINE | ES_READONLY | WS_VSCROLL, 0);
    app.hostProc = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(app.window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(AppProc)));
    app.host->ScriptInitialize();
    app.host->StartPlugin();
    ShowWindow(app.window, SW_SHOW);
    hostsim::platform::SetMainWindowActive(app.window, true);
    return true;
}

} // namespace

int main(int argc, char** argv) {
    std::vector<std::string> arguments = hostsim::CommandLineArguments(argc, argv);
    std::vector<char*> argv8;
    for (std::string& argument : arguments)
        argv8.push_back(argument.data());
    app.options = ParseHostAppOptions(static_cast<int>(argv8.size()), argv8.data());
    if (!app.options.ok)
        return 2;
    try {
        if (!StartSession())
            return 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "hostsim-win: %s\n", e.what());
        return 1;
    }
    if (app.options.control) {
        std::thread([thread = GetCurrentThreadId()] {
            for (std::string line; std::getline(std::cin, line);) {
                if (!line.empty() && line.back() == '\r')
                    line.pop_back();
                {
                    std::lock_guard lock(controlMutex);
                    controlLines.push_back(line);
                }
                PostThreadMessageW(thread, ControlLine, 0, 0);
            }
        }).detach();
    }
    SetTimer(nullptr, 0, 30, nullptr);
    Refresh();
    std::printf("hostsim-win: session record %s, files under %s\n", app.options.record.c_str(),
                app.options.root.c_str());
    std::fflush(stdout);
    long ticks = 0;
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        NoteMessageTaken(message);
        if (message.hwnd == nullptr && message.message == ControlLine) {
            RunQueuedControlLines();
        } else if (message.hwnd == nullptr && message.message == WM_TIMER) {
            RunQueuedControlLines();
            app.host->RunIdle(1);
            // The tick count reaches the record about once a second; it shows that idle calls go on.
            if (++ticks % 32 == 1)
                app.state.idleTicks = ticks;
        } else {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        NoteMessageHandled(message);
        // Checked after every message, so that a window's first paint is timed when it happens.
        AppendBounded(app.state.shownWindows, TakeShownWindows(), 100);
        if (message.hwnd == nullptr && message.message == WM_TIMER)
            Refresh();
    }
    app.host->RunDeath();
    ++app.state.deathHooksRun;
    app.host->ScriptTerminate();
    Refresh();
    return 0;
}
