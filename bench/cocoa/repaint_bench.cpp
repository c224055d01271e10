// A full repaint of the showcase window through the AppKit backend: every control drawn by the
// native drawer and the window's backing store flushed to the window server. Runs on $DISPLAY, or
// on an Xvfb of its own when there is none.
#include "nimbit/ui/cocoa/native_app.h"
#include "nimbit/ui/showcase.h"
#include "nimbit/ui/window.h"

#include <benchmark/benchmark.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Starts Xvfb on a display number it picks itself; it goes down with this process.
pid_t start_xvfb() {
    int fds[2];
    if (pipe(fds) != 0)
        return -1;
    const std::string fd = std::to_string(fds[1]);
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent)
            _exit(1);
        close(fds[0]);
        execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", "1280x800x24", "-nolisten", "tcp",
               static_cast<char*>(nullptr));
        _exit(127);
    }
    close(fds[1]);
    std::string number;
    char c;
    while (read(fds[0], &c, 1) == 1 && c != '\n')
        number += c;
    close(fds[0]);
    if (pid < 0 || number.empty())
        return -1;
    setenv("DISPLAY", (":" + number).c_str(), 1);
    return pid;
}

void BM_ShowcaseFullRepaint(benchmark::State& state) {
    using namespace nimbit;
    ui::cocoa::autorelease_pool pool;
    ui::window w;
    w.create("showcase", {100, 100, ui::showcase_size.x, ui::showcase_size.y});
    const auto parts = ui::build_showcase(w);
    w.show();
    ui::cocoa::run_until([&] { return w.is_shown(); }, 5.0);
    ui::cocoa::process_events(0.2);
    const ivec4 all{0, 0, ui::showcase_size.x, ui::showcase_size.y};
    for (auto _ : state) {
        w.update_rect(all);
        w.flush_updates();
    }
    w.hide();
}
BENCHMARK(BM_ShowcaseFullRepaint)->Unit(benchmark::kMillisecond)->MinTime(1.0);

} // namespace

int main(int argc, char** argv) {
    pid_t server = -1;
    const char* display = std::getenv("DISPLAY");
    if (!display || !*display) {
        server = start_xvfb();
        if (server < 0) {
            std::fprintf(stderr, "cocoa_bench: no display and Xvfb did not start\n");
            return 1;
        }
    }
    if (!nimbit::ui::cocoa::start_application()) {
        std::fprintf(stderr, "cocoa_bench: cannot reach the display\n");
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (server > 0) {
        kill(server, SIGTERM);
        waitpid(server, nullptr, 0);
    }
    return 0;
}
