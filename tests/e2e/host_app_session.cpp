#include "host_app_session.h"
#include "tests/support/private_xvfb.h"

#include "hostsim/sim_host.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace e2e {

namespace {

using Clock = std::chrono::steady_clock;

// Polling interval: short against the application's 30 ms idle tick.
constexpr auto Poll = std::chrono::milliseconds(20);

std::vector<char*> Argv(const std::vector<std::string>& args) {
    std::vector<char*> argv;
    for (const std::string& a : args)
        argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    return argv;
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

bool Expired(Clock::time_point start, double timeout) {
    return std::chrono::duration<double>(Clock::now() - start).count() > timeout;
}

} // namespace

HostAppSession::HostAppSession(const SessionOptions& options) {
    if (options.root.empty()) {
        char pattern[] = "/tmp/quillo-e2e-XXXXXX";
        if (mkdtemp(pattern) == nullptr)
            return;
        root = pattern;
        ownRoot = true;
    } else {
        root = options.root;
    }
    recordPath = root + "/session.json";
    std::filesystem::remove(recordPath); // a record left by an earlier session is not this one's
    std::filesystem::create_directories(root + "/home");
    std::filesystem::create_directories(root + "/disk");
    if (options.prepare)
        options.prepare(root + "/disk");
    const std::string& project = options.project;

    if (!screen.Start())
        return;
    display = screen.Name();

    // The application reads control lines from a pipe and prints into a log in the root.
    int controlPipe[2];
    if (pipe(controlPipe) != 0)
        return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, controlPipe[0], STDIN_FILENO);
    posix_spawn_file_actions_addclose(&actions, controlPipe[1]);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, (root + "/app.log").c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    std::vector<std::string> env;
    for (char** e = environ; *e != nullptr; ++e) {
        const std::string entry = *e;
        if (entry.rfind("DISPLAY=", 0) != 0 && entry.rfind("HOME=", 0) != 0)
            env.push_back(entry);
    }
    // The application's own defaults go into the run's folder, never the real home.
    env.push_back("DISPLAY=" + display);
    env.push_back("HOME=" + root + "/home");
    const std::vector<std::string> args = {QUILLO_HOST_APP, "--project",
                                           project.empty() ? std::string(QUILLO_SAMPLE_PROJECT) : project,
                                           "--root", root + "/disk", "--record", recordPath,
                                           // A port nothing listens on: the news check fails fast.
                                           "--news-url", "http://127.0.0.1:9/news", "--control"};
    if (posix_spawn(&app, QUILLO_HOST_APP, &actions, nullptr, Argv(args).data(), Argv(env).data()) != 0)
        app = -1;
    posix_spawn_file_actions_destroy(&actions);
    close(controlPipe[0]);
    control = controlPipe[1];
    fcntl(control, F_SETFD, FD_CLOEXEC);
}

bool VirtualDisplay::Start() {
    // No reset when the last client leaves: xdotool probes connect and leave before the application
    // arrives.
    server = quillo_test::start_private_xvfb(name, true);
    return server > 0;
}

VirtualDisplay::~VirtualDisplay() {
    quillo_test::stop_private_xvfb(server);
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
    if (ownRoot && !std::getenv("QUILLO_E2E_KEEP")) {
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
    }
}

std::string HostAppSession::Log() const {
    return ReadFile(root + "/app.log");
}

nlohmann::json HostAppSession::Record() const {
    const std::string text = ReadFile(recordPath);
    nlohmann::json record = nlohmann::json::parse(text, nullptr, false);
    return record.is_discarded() ? nlohmann::json() : record;
}

bool HostAppSession::WaitForRecord(const std::function<bool(const nlohmann::json&)>& done,
                                   double timeout) const {
    const auto start = Clock::now();
    for (;;) {
        const nlohmann::json record = Record();
        if (record.is_object() && done(record))
            return true;
        if (Expired(start, timeout))
            return false;
        std::this_thread::sleep_for(Poll);
    }
}

bool HostAppSession::WaitForIdleTicks(long ticks, double timeout) const {
    const nlohmann::json now = Record();
    const long from = now.is_object() ? now.value("idleTicks", 0L) : 0L;
    return WaitForRecord([&](const nlohmann::json& r) { return r.value("idleTicks", 0L) >= from + ticks; },
                         timeout);
}

std::string HostAppSession::Xdotool(const std::vector<std::string>& args, bool* ok) const {
    return e2e::Xdotool(display, args, ok);
}

std::string Xdotool(const std::string& display, const std::vector<std::string>& args, bool* ok) {
    std::vector<std::string> argv = {"xdotool"};
    argv.insert(argv.end(), args.begin(), args.end());
    const std::vector<std::string> env = {"DISPLAY=" + display, "PATH=/usr/bin:/bin"};
    int out[2];
    if (ok != nullptr)
        *ok = false;
    if (display.empty() || pipe(out) != 0)
        return {};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid = -1;
    const bool spawned =
        posix_spawnp(&pid, "xdotool", &actions, nullptr, Argv(argv).data(), Argv(env).data()) == 0;
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    std::string text;
    char buffer[512];
    for (ssize_t n; spawned && (n = read(out[0], buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<size_t>(n));
    close(out[0]);
    int status = 0;
    if (spawned)
        waitpid(pid, &status, 0);
    if (ok != nullptr)
        *ok = spawned && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return text;
}

std::vector<WindowGeometry> HostAppSession::VisibleWindows() const {
    std::vector<WindowGeometry> windows;
    std::istringstream ids(Xdotool({"search", "--onlyvisible", "--name", "."}));
    for (unsigned long id; ids >> id;) {
        WindowGeometry w;
        w.id = id;
        std::istringstream shell(Xdotool({"getwindowgeometry", "--shell", std::to_string(id)}));
        for (std::string line; std::getline(shell, line);) {
            const size_t eq = line.find('=');
            if (eq == std::string::npos)
                continue;
            const std::string key = line.substr(0, eq);
            const int value = std::atoi(line.c_str() + eq + 1);
            if (key == "X")
                w.x = value;
            else if (key == "Y")
                w.y = value;
            else if (key == "WIDTH")
                w.width = value;
            else if (key == "HEIGHT")
                w.height = value;
        }
        windows.push_back(w);
    }
    return windows;
}

bool HostAppSession::WaitForWindow(const std::string& title, WindowGeometry* found, double timeout) const {
    const auto start = Clock::now();
    while (!Expired(start, timeout)) {
        for (const WindowGeometry& w : VisibleWindows()) {
            if (Xdotool({"getwindowname", std::to_string(w.id)}) == title + "\n") {
                if (found != nullptr)
                    *found = w;
                return true;
            }
        }
        std::this_thread::sleep_for(Poll);
    }
    return false;
}

bool HostAppSession::ClickAt(int x, int y) const {
    bool ok = false;
    Xdotool(
        {"mousemove", std::to_string(x), std::to_string(y), "mousedown", "1", "sleep", "0.1", "mouseup", "1"},
        &ok);
    return ok;
}

bool HostAppSession::ClickMenuPath(const std::vector<int>& path) const {
    // A menu is drawn as a column: a title row, then one row per item, rows of the same height;
    // a submenu opens against the right edge of the menu that holds its item.
    constexpr int RowHeight = 20, TitleRows = 1;
    WindowGeometry menu, mainMenu;
    bool haveMain = false;
    for (const WindowGeometry& w : VisibleWindows()) {
        if (w.x == 0 && w.y == 0) {
            menu = w;
            haveMain = true;
        }
    }
    if (!haveMain)
        return false;
    for (size_t level = 0; level < path.size(); ++level) {
        const int y = menu.y + (TitleRows + path[level]) * RowHeight + RowHeight / 2 + 1;
        if (!ClickAt(menu.x + menu.width / 3, y))
            return false;
        if (level + 1 == path.size())
            break;
        if (level == 0)
            mainMenu = menu;
        const int edge = menu.x + menu.width;
        const auto start = Clock::now();
        bool opened = false;
        // Opened once it shows at the edge with the same place and size on two polls running: a
        // menu window can be placed after it is mapped.
        WindowGeometry seen;
        while (!opened && !Expired(start, 5.0)) {
            WindowGeometry now;
            for (const WindowGeometry& w : VisibleWindows()) {
                if (w.x == edge && w.width > 0)
                    now = w;
            }
            opened = now.id != 0 && now.id == seen.id && now.y == seen.y && now.height == seen.height;
            seen = now;
            if (opened)
                menu = now;
            else
                std::this_thread::sleep_for(Poll);
        }
        if (!opened)
            return false;
    }
    // Opened submenus stay attached after a choice; clicking the main menu's item again closes
    // them, so that the next walk starts from the main menu alone. A click that arrives while the
    // menu is still finishing the choice can be lost, so it is repeated until they are gone.
    if (path.size() > 1) {
        const int edge = mainMenu.x + mainMenu.width;
        const int y = mainMenu.y + (TitleRows + path[0]) * RowHeight + RowHeight / 2 + 1;
        for (int attempt = 0;; ++attempt) {
            if (attempt == 4)
                return false;
            ClickAt(mainMenu.x + mainMenu.width / 3, y);
            const auto start = Clock::now();
            bool open = true;
            while (open && !Expired(start, 1.5)) {
                open = false;
                for (const WindowGeometry& w : VisibleWindows())
                    open = open || w.x == edge;
                if (open)
                    std::this_thread::sleep_for(Poll);
            }
            if (!open)
                break;
        }
    }
    return true;
}

bool HostAppSession::TypeLine(const std::string& text) const {
    bool typed = false, entered = false;
    Xdotool({"type", "--delay", "15", text}, &typed);
    Xdotool({"key", "Return"}, &entered);
    return typed && entered;
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
    bool ok = false;
    Xdotool(args, &ok);
    return ok;
}

bool HostAppSession::Keys(const std::vector<std::string>& keys) const {
    std::vector<std::string> args = {"key", "--delay", "40"};
    args.insert(args.end(), keys.begin(), keys.end());
    bool ok = false;
    Xdotool(args, &ok);
    return ok;
}

bool HostAppSession::Type(const std::string& text) const {
    bool ok = false;
    Xdotool({"type", "--delay", "40", text}, &ok);
    return ok;
}

nlohmann::json HostAppSession::WindowInRecord(const std::string& title) const {
    const nlohmann::json record = Record();
    if (!record.is_object() || !record.contains("windows"))
        return {};
    for (const nlohmann::json& w : record["windows"]) {
        if (w.value("title", "") == title)
            return w;
    }
    return {};
}

void HostAppSession::Signal(int signal) const {
    if (app > 0)
        kill(app, signal);
}

int HostAppSession::WaitForExit(double timeout) {
    const auto start = Clock::now();
    while (app > 0) {
        int status = 0;
        const pid_t done = waitpid(app, &status, WNOHANG);
        if (done == app) {
            app = -1;
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
        if (Expired(start, timeout))
            return -1;
        std::this_thread::sleep_for(Poll);
    }
    return -1;
}

std::vector<int> EffectMenuPath(const std::string& project, const std::string& category,
                                const std::string& name) {
    hostsim::SimHost host(hostsim::LoadModelFile(project), "/nonexistent");
    const hostsim::MenuItem& main = host.MainMenu();
    const int effectIndex = host.GetModel().effectMenuIndex;
    if (effectIndex < 0 || static_cast<size_t>(effectIndex) >= main.submenu.size())
        return {};
    const hostsim::MenuItem& effects = *main.submenu[static_cast<size_t>(effectIndex)];
    for (size_t c = 0; c < effects.submenu.size(); ++c) {
        if (effects.submenu[c]->title != category)
            continue;
        const auto& items = effects.submenu[c]->submenu;
        for (size_t i = 0; i < items.size(); ++i) {
            if (items[i]->title == name)
                return {effectIndex, static_cast<int>(c), static_cast<int>(i)};
        }
    }
    return {};
}

nlohmann::json ActiveLayer(const nlohmann::json& record, const std::string& name) {
    if (!record.contains("compositions"))
        return {};
    for (const nlohmann::json& comp : record["compositions"]) {
        if (!comp.value("active", false))
            continue;
        for (const nlohmann::json& layer : comp["layers"]) {
            if (layer.value("name", "") == name)
                return layer;
        }
    }
    return {};
}

} // namespace e2e
