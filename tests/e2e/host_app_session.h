#pragma once

// One run of the simulated host on screen: its own Xvfb, the application with the plug-in and a
// project, xdotool as the artist, and the application's session record to wait on.

#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace e2e {

struct WindowGeometry {
    unsigned long id = 0;
    int x = 0, y = 0, width = 0, height = 0;
};

// An Xvfb of our own (so that parallel tests never share a screen), ended with the object.
class VirtualDisplay {
public:
    VirtualDisplay() = default;
    ~VirtualDisplay();
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;
    // Starts the server and waits until it answers; false when it cannot be started.
    bool Start();
    const std::string& Name() const { return name; } // ":N", empty until started

private:
    std::string name;
    pid_t server = -1;
};

// Runs xdotool on display with the arguments (one per element); its standard output.
std::string Xdotool(const std::string& display, const std::vector<std::string>& args, bool* ok = nullptr);

struct SessionOptions {
    std::string project; // the sample project when empty
    // The run's folder (the simulated disk is its "disk" folder): a fresh one, removed with the
    // session, when empty; a given one is kept, so that a second session finds the first one's files.
    std::string root;
    // Called with the simulated disk's folder before the application starts, to lay down files.
    std::function<void(const std::string& disk)> prepare;
};

class HostAppSession {
public:
    // Starts Xvfb and the application. Check Started().
    explicit HostAppSession(const SessionOptions& options = {});
    ~HostAppSession();
    HostAppSession(const HostAppSession&) = delete;
    HostAppSession& operator=(const HostAppSession&) = delete;

    bool Started() const { return app > 0; }
    const std::string& Root() const { return root; }
    std::string Log() const; // what the application printed

    // The latest session record (null until the application has written one).
    nlohmann::json Record() const;
    // Polls the record until done holds for it; false when timeout seconds pass first.
    bool WaitForRecord(const std::function<bool(const nlohmann::json&)>& done, double timeout = 10.0) const;
    // Waits until the application's idle routine has run at least ticks more times.
    bool WaitForIdleTicks(long ticks, double timeout = 10.0) const;

    // Runs xdotool with the arguments (one per element); its standard output.
    std::string Xdotool(const std::vector<std::string>& args, bool* ok = nullptr) const;
    // The visible windows, newest last.
    std::vector<WindowGeometry> VisibleWindows() const;
    // Waits for a visible window named exactly title.
    bool WaitForWindow(const std::string& title, WindowGeometry* found = nullptr,
                       double timeout = 10.0) const;
    // A click as a person makes it: the button held for a tenth of a second.
    bool ClickAt(int x, int y) const;
    // Opens the main menu's item at index path[0], then in each opened submenu the item at the next
    // index, by clicking where the menus are drawn (one item per row of the menu's height).
    bool ClickMenuPath(const std::vector<int>& path) const;
    // Types text into the focused window, then presses Return.
    bool TypeLine(const std::string& text) const;
    // Sends a control line to the application (see hostsim/app/main.mm).
    void Control(const std::string& line) const;
    // Holds the keys down in order (X key symbol names: "ctrl", "shift", "super", "space", "k"), then
    // lets them go in reverse order, as fingers play a chord.
    bool Chord(const std::vector<std::string>& keys) const;
    // Presses and releases each key in turn (X key symbol names).
    bool Keys(const std::vector<std::string>& keys) const;
    // Types text as key presses.
    bool Type(const std::string& text) const;

    // The application's visible window titled title in the latest record (null json when none).
    nlohmann::json WindowInRecord(const std::string& title) const;

    // Sends a signal to the application.
    void Signal(int signal) const;
    // Waits for the application to end; its exit status, or -1 when it did not end in time.
    int WaitForExit(double timeout = 10.0);

private:
    VirtualDisplay screen;
    std::string root, display, recordPath;
    bool ownRoot = false;
    pid_t app = -1;
    int control = -1;
};

// Indices of the Effect menu's category titled category and of its item titled name, as the
// application builds them from project (main menu index 5, then these two).
std::vector<int> EffectMenuPath(const std::string& project, const std::string& category,
                                const std::string& name);

// The layer of the active composition named name in a record (null json when missing).
nlohmann::json ActiveLayer(const nlohmann::json& record, const std::string& name);

} // namespace e2e
