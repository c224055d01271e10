#include "host_app_session.h"
#include "tests/foundation/temp_folder.h"
#include "tests/support/private_xvfb.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace e2e {

// Every 20 ms: short against the application's 30 ms idle tick.
bool Poll(const std::function<bool()>& done, double timeout) {
    const auto start = std::chrono::steady_clock::now();
    while (!done()) {
        if (std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() > timeout)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

// No reset when the last client leaves: xdotool probes connect and leave before the application.
HostAppSession::HostAppSession(const SessionOptions& options)
    : server(quillo_test::start_private_xvfb(display, true)), root(options.root) {
    if (root.empty()) {
        char pattern[] = "/tmp/quillo-e2e-XXXXXX";
        if (mkdtemp(pattern) == nullptr)
            return;
        root = pattern;
        ownRoot = true;
    }
    recordPath = root + "/session.json";
    std::filesystem::remove(recordPath); // a record left by an earlier session is not this one's
    std::filesystem::create_directories(root + "/home");
    std::filesystem::create_directories(root + "/disk");
    if (options.prepare)
        options.prepare(root + "/disk");
    int controlPipe[2];
    if (server <= 0 || pipe(controlPipe) != 0)
        return;
    // Control lines come through a pipe; the output goes to a log in the root.
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, controlPipe[0], STDIN_FILENO);
    posix_spawn_file_actions_addclose(&actions, controlPipe[1]);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, (root + "/app.log").c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    // Run through env: the application's own defaults go into the run's folder, never the real home.
    const std::vector<std::string> args = {"/usr/bin/env", "DISPLAY=" + display, "HOME=" + root + "/home",
                                           QUILLO_HOST_APP, "--project",
                                           options.project.empty() ? QUILLO_SAMPLE_PROJECT : options.project,
                                           "--root", root + "/disk", "--record", recordPath,
                                           // A port nothing listens on: the news check fails fast.
                                           "--news-url", "http://127.0.0.1:9/news", "--control"};
    std::vector<char*> argv;
    for (const std::string& a : args)
        argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    if (posix_spawn(&app, args[0].c_str(), &actions, nullptr, argv.data(), environ) != 0)
        app = -1;
    posix_spawn_file_actions_destroy(&actions);
    close(controlPipe[0]);
    control = controlPipe[1];
    fcntl(control, F_SETFD, FD_CLOEXEC);
}

HostAppSession::~HostAppSession() {
    if (control >= 0)
        close(control);
    if (app > 0) {
        kill(app, SIGTERM);
        if (WaitForExit(5.0) < 0) {
            kill(app, SIGKILL);
            waitpid(app, nullptr, 0);
        }
    }
    quillo_test::stop_private_xvfb(server);
    std::error_code ignored;
    if (ownRoot && !std::getenv("QUILLO_E2E_KEEP"))
        std::filesystem::remove_all(root, ignored);
}

std::string HostAppSession::Log() const {
    return read_text(nimbit::file_path(root + "/app.log"));
}

json HostAppSession::Record() const {
    const json record = json::parse(read_text(nimbit::file_path(recordPath)), nullptr, false);
    return record.is_discarded() ? json() : record;
}

bool HostAppSession::WaitForRecord(const std::function<bool(const json&)>& done, double timeout) const {
    return Poll(
        [&] {
            const json record = Record();
            return record.is_object() && done(record);
        },
        timeout);
}

bool HostAppSession::WaitForIdleTicks(long ticks, double timeout) const {
    const long from = Record().is_object() ? Record().value("idleTicks", 0L) : 0L;
    return WaitForRecord([&](const json& r) { return r.value("idleTicks", 0L) >= from + ticks; }, timeout);
}

bool HostAppSession::Run(const std::string& program, const std::vector<std::string>& args,
                         std::string* out) const {
    std::string command = "DISPLAY=" + display + " " + program;
    for (const std::string& arg : args) { // each argument single-quoted for the shell
        command += " '";
        for (char c : arg)
            command += c == '\'' ? std::string("'\\''") : std::string(1, c);
        command += "'";
    }
    std::FILE* pipe = server <= 0 ? nullptr : popen((command + " 2>/dev/null").c_str(), "r");
    if (pipe == nullptr)
        return false;
    std::string text;
    char buffer[512];
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        text.append(buffer, n);
    if (out != nullptr)
        *out = text;
    return pclose(pipe) == 0;
}

std::vector<WindowGeometry> HostAppSession::VisibleWindows(const std::string& name) const {
    // One run for all: each window's geometry as WINDOW=, X=, Y=, WIDTH=, HEIGHT= and SCREEN= lines.
    std::string shell;
    Xdotool({"search", "--onlyvisible", "--name", name, "getwindowgeometry", "--shell", "%@"}, &shell);
    std::vector<WindowGeometry> windows;
    WindowGeometry w;
    int used = 0;
    for (size_t at = 0;
         std::sscanf(shell.c_str() + at, " WINDOW=%lu X=%d Y=%d WIDTH=%d HEIGHT=%d SCREEN=%*d%n", &w.id, &w.x,
                     &w.y, &w.width, &w.height, &used) == 5;
         at += static_cast<size_t>(used))
        windows.push_back(w);
    return windows;
}

bool HostAppSession::WaitForWindow(const std::string& title, WindowGeometry* found) const {
    return Poll(
        [&] {
            const std::vector<WindowGeometry> windows = VisibleWindows("^" + title + "$");
            if (found != nullptr && !windows.empty())
                *found = windows.back();
            return !windows.empty();
        },
        10.0);
}

bool HostAppSession::ClickAt(int x, int y) const {
    return Xdotool({"mousemove", std::to_string(x), std::to_string(y), "mousedown", "1", "sleep", "0.1",
                    "mouseup", "1"});
}

bool HostAppSession::ClickMenuPath(const std::vector<int>& path) const {
    // A menu is drawn as a column: a title row, then one row per item, rows of the same height; a
    // submenu opens against the right edge of the menu that holds its item.
    constexpr int RowHeight = 20;
    auto rowY = [](const WindowGeometry& m, int index) {
        return m.y + (1 + index) * RowHeight + RowHeight / 2 + 1;
    };
    // The newest window whose left edge is at x (and its top at y, unless that is -1).
    auto at = [this](int x, int y) {
        WindowGeometry found;
        for (const WindowGeometry& w : VisibleWindows())
            if (w.x == x && w.width > 0 && (y < 0 || w.y == y))
                found = w;
        return found;
    };
    const WindowGeometry mainMenu = at(0, 0);
    if (mainMenu.id == 0)
        return false;
    WindowGeometry menu = mainMenu;
    for (size_t level = 0; level < path.size(); ++level) {
        if (!ClickAt(menu.x + menu.width / 3, rowY(menu, path[level])))
            return false;
        if (level + 1 == path.size())
            break;
        // Opened once it shows at the edge with the same place and size on two polls running: a
        // menu window can be placed after it is mapped.
        WindowGeometry seen;
        const int edge = menu.x + menu.width;
        if (!Poll(
                [&] {
                    const WindowGeometry now = at(edge, -1);
                    const bool steady =
                        now.id != 0 && now.id == seen.id && now.y == seen.y && now.height == seen.height;
                    seen = now;
                    return steady;
                },
                5.0))
            return false;
        menu = seen;
    }
    // Opened submenus stay attached after a choice; clicking the main menu's item again closes
    // them. A click that arrives while the menu is still finishing the choice can be lost, so it
    // is repeated until they are gone.
    for (int attempt = 0; attempt < 4 && path.size() > 1; ++attempt) {
        ClickAt(mainMenu.x + mainMenu.width / 3, rowY(mainMenu, path[0]));
        if (Poll([&] { return at(mainMenu.x + mainMenu.width, -1).id == 0; }, 1.5))
            return true;
    }
    return path.size() == 1;
}

void HostAppSession::Control(const std::string& line) const {
    const std::string text = line + "\n";
    if (control >= 0 && write(control, text.data(), text.size()) < 0)
        return;
}

bool HostAppSession::Chord(const std::vector<std::string>& keys) const {
    // Held long enough for the host's 30 ms idle routine to see all of them down together.
    std::vector<std::string> args;
    for (const std::string& key : keys)
        args.insert(args.end(), {"keydown", key});
    args.insert(args.end(), {"sleep", "0.12"});
    for (auto key = keys.rbegin(); key != keys.rend(); ++key)
        args.insert(args.end(), {"keyup", *key});
    return Xdotool(args);
}

bool HostAppSession::Keys(const std::vector<std::string>& keys) const {
    std::vector<std::string> args = {"key", "--delay", "40"};
    args.insert(args.end(), keys.begin(), keys.end());
    return Xdotool(args);
}

bool HostAppSession::Type(const std::string& text, int delay) const {
    return Xdotool({"type", "--delay", std::to_string(delay), text});
}

double HostAppSession::ScreenBrightness(int x, int y) const {
    std::string mean;
    const std::string at = "1x1+" + std::to_string(x) + "+" + std::to_string(y);
    return Run("import", {"-window", "root", "-crop", at, "-format", "%[fx:mean]", "info:"}, &mean)
               ? std::atof(mean.c_str())
               : -1;
}

void HostAppSession::Signal(int signal) const {
    if (app > 0)
        kill(app, signal);
}

int HostAppSession::WaitForExit(double timeout) {
    int status = 0;
    if (app <= 0 || !Poll([&] { return waitpid(app, &status, WNOHANG) == app; }, timeout))
        return -1;
    app = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace e2e
