#pragma once

// One run of the simulated host on screen: its own Xvfb, the application with the plug-in and a
// project, xdotool as the artist, and the application's session record to wait on.

#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace e2e {

using nlohmann::json;

struct WindowGeometry {
    unsigned long id = 0;
    int x = 0, y = 0, width = 0, height = 0;
};

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
    explicit HostAppSession(const SessionOptions& options = {}); // check Started()
    ~HostAppSession();
    HostAppSession(const HostAppSession&) = delete;
    HostAppSession& operator=(const HostAppSession&) = delete;

    bool Started() const { return app > 0; }
    std::string Log() const; // what the application printed
    // The simulated disk's folder.
    std::string Disk() const { return root + "/disk"; }

    json Record() const; // the latest session record (null until one is written)
    bool WaitForRecord(const std::function<bool(const json&)>& done, double timeout = 10.0) const;
    // Waits until the application's idle routine has run at least ticks more times.
    bool WaitForIdleTicks(long ticks, double timeout = 10.0) const;

    // Runs a program of the X display's (xdotool, ImageMagick's import) with the arguments; true when
    // it succeeded, its standard output in out.
    bool Run(const std::string& program, const std::vector<std::string>& args,
             std::string* out = nullptr) const;
    bool Xdotool(const std::vector<std::string>& args, std::string* out = nullptr) const {
        return Run("xdotool", args, out);
    }
    // The visible windows whose name matches the pattern (all for "."), newest last.
    std::vector<WindowGeometry> VisibleWindows(const std::string& name = ".") const;
    bool WaitForWindow(const std::string& title, WindowGeometry* found = nullptr) const;
    // A click as a person makes it: the button held for a tenth of a second.
    bool ClickAt(int x, int y) const;
    // Opens the main menu's item at index path[0], then in each opened submenu the item at the next
    // index, by clicking where the menus are drawn (one item per row of the menu's height).
    bool ClickMenuPath(const std::vector<int>& path) const;
    // Holds the keys down in order (X key symbol names), then lets them go in reverse order.
    bool Chord(const std::vector<std::string>& keys) const;
    bool Keys(const std::vector<std::string>& keys) const; // pressed and released in turn
    bool Type(const std::string& text, int delay = 40) const;
    // The mean of the screen's red, green and blue at a point, 0 to 1 (-1 when it could not be read).
    double ScreenBrightness(int x, int y) const;
    void Control(const std::string& line) const; // a control line (see hostsim/app/main.mm)
    void Signal(int signal) const;
    // The application's exit status, or -1 when it did not end in time.
    int WaitForExit(double timeout = 10.0);

private:
    std::string display; // ":N", of an Xvfb of the session's own, ended with it
    pid_t server = -1;
    std::string root, recordPath;
    bool ownRoot = false;
    pid_t app = -1;
    int control = -1;
};

// Polls done until it holds (true) or timeout seconds pass (false).
bool Poll(const std::function<bool()>& done, double timeout);

} // namespace e2e
