// Typing one character into a field that holds 200 and painting the field again, as a keystroke
// in the search popup does.
#include "nimbit/ui/input_box.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "nimbit/ui/window.h"

#include <benchmark/benchmark.h>

#include <string>

using namespace nimbit;
using namespace nimbit::ui;

static void BM_InsertCharacterAndRepaint(benchmark::State& state) {
    window win;
    win.create("bench", {0, 0, 600, 60});
    win.show();
    input_box box;
    box.create(win.get_root(), {10, 10, 560, 26});
    box.focus();
    const std::string start(200, 'e');
    auto& native = offscreen::native_of(win);
    box.set_text(start);
    native.paint_pending();
    int typed = 0;
    for (auto _ : state) {
        // Keep the field at 200 characters: each round inserts in the middle, and one round in a
        // hundred (untimed) resets it.
        if (++typed == 100) {
            state.PauseTiming();
            box.set_text(start);
            box.get_inside().set_caret(100);
            native.paint_pending();
            native.get_canvas().clear_calls();
            typed = 0;
            state.ResumeTiming();
        }
        offscreen::events_of(win).process_event(event_type::key_char, u'x');
        native.paint_pending();
        native.get_canvas().clear_calls();
    }
    benchmark::DoNotOptimize(box.get_inside().get_caret());
}
BENCHMARK(BM_InsertCharacterAndRepaint)->Unit(benchmark::kMicrosecond);
