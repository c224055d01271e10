// Figures for the toolkit core: event dispatch, and the popup's per-keystroke rebuild of its rows
// (create, lay out and paint thousands of row widgets on the offscreen backend).

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/event_manager.h"
#include "nimbit/ui/offscreen/offscreen_window.h"
#include "nimbit/ui/widget.h"
#include "nimbit/ui/window.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

namespace {

using namespace nimbit;
using namespace nimbit::ui;

struct source : event_object {};

void BM_DispatchToFourCallbacks(benchmark::State& state) {
    source s;
    int hits = 0;
    for (int i = 0; i < 4; ++i)
        event_manager::instance().add_event(
            &s, &s, event_type::custom, [&hits](const event_info& e) { hits += static_cast<int>(e.data); });
    for (auto _ : state)
        benchmark::DoNotOptimize(event_manager::instance().fire_event(&s, event_type::custom, 1));
    benchmark::DoNotOptimize(hits);
}
BENCHMARK(BM_DispatchToFourCallbacks);

// Like a result row of the popup: a background, a name and a category, painted from the theme's
// colours; the list listens to each row's mouse_down.
struct row : widget {
    std::string text;
    void paint(const event_info&) {
        drawer& d = get_window()->get_drawer();
        const ivec4 r{0, 0, get_rect().w, get_rect().h};
        d.set_brush_color({0.15f, 0.15f, 0.16f, 1.0f});
        d.draw_rect(r);
        d.set_text_color({1, 1, 1, 1});
        d.draw_text({4, 0, r.w - 40, r.h}, text);
        d.draw_text({r.w - 36, 0, 36, r.h}, "Blur");
    }
};

struct list_window : window {
    widget list;
    int clicks = 0;
    list_window(ivec4 frame) {
        create("rows", frame);
        list.create(get_root(), {0, 0, frame.w, frame.h});
    }
};

// Columns of rows so that every one of them lies in the window and is painted.
void BM_RebuildRows(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    constexpr int columns = 16, row_w = 120, row_h = 10;
    const int rows_per_column = (count + columns - 1) / columns;
    list_window win({0, 0, columns * (row_w + 5), rows_per_column * (row_h + 1)});
    auto& os = offscreen::native_of(win);
    for (auto _ : state) {
        auto rows = std::make_unique<row[]>(static_cast<size_t>(count));
        for (int i = 0; i < count; ++i) {
            row& r = rows[static_cast<size_t>(i)];
            r.text = "Gaussian Blur";
            r.create(win.list, {0, 0, row_w, row_h});
            event_manager::instance().add_event(&r, &r, event_type::draw, &row::paint);
            win.list.add_child_event(r, event_type::mouse_down, [&win](const event_info&) { ++win.clicks; });
        }
        for (int i = 0; i < count; ++i)
            rows[static_cast<size_t>(i)].set_rect(
                {(i / rows_per_column) * (row_w + 5), (i % rows_per_column) * (row_h + 1), row_w, row_h});
        os.get_canvas().clear_calls();
        win.list.update(true);
        state.PauseTiming();
        if (os.get_canvas().calls_named("draw_rect").size() != static_cast<size_t>(count))
            state.SkipWithError("not every row was painted");
        state.ResumeTiming();
        win.list.remove_all_children();
        rows.reset();
    }
    state.counters["rows"] = count;
}
BENCHMARK(BM_RebuildRows)->Arg(4000)->Unit(benchmark::kMillisecond);

// The popup's real shape: a list in a small window, most rows outside the visible area.
void BM_RebuildRowsInPopup(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    list_window win({0, 0, 420, 600});
    for (auto _ : state) {
        auto rows = std::make_unique<row[]>(static_cast<size_t>(count));
        for (int i = 0; i < count; ++i) {
            row& r = rows[static_cast<size_t>(i)];
            r.text = "Gaussian Blur";
            r.create(win.list, {0, i * 24, 420, 24});
            event_manager::instance().add_event(&r, &r, event_type::draw, &row::paint);
        }
        offscreen::native_of(win).get_canvas().clear_calls();
        win.list.update(true);
        rows.reset(); // rows leave their parent one by one, front first
    }
}
BENCHMARK(BM_RebuildRowsInPopup)->Arg(5000)->Unit(benchmark::kMillisecond);

} // namespace
