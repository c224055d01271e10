// A full repaint of the showcase window through the AppKit backend: every control drawn by the
// native drawer and the window's backing store flushed to the window server. Runs on $DISPLAY, or
// on an Xvfb of its own when there is none.
#include "nimbit/ui/cocoa/native_app.h"
#include "nimbit/ui/showcase.h"
#include "nimbit/ui/window.h"
#include "tests/support/private_xvfb.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

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
        std::string name;
        server = quillo_test::start_private_xvfb(name);
        if (server < 0) {
            std::fprintf(stderr, "cocoa_bench: no display and Xvfb did not start\n");
            return 1;
        }
        setenv("DISPLAY", name.c_str(), 1);
    }
    if (!nimbit::ui::cocoa::start_application()) {
        std::fprintf(stderr, "cocoa_bench: cannot reach the display\n");
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    quillo_test::stop_private_xvfb(server);
    return 0;
}
