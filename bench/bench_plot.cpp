// The plot's hot paths: one scan point painted as it arrives (draw_data resuming where it
// stopped), and the whole redraw of twenty curves after a change of view. A scan brings at most
// one point per nanometre, far slower than either; the figures show the headroom.
#include "link/shared_state.h"
#include "plot/curve_drawing.h"
#include "plot/palette.h"
#include "plot/plot_surface.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <memory>

using namespace lumora;

namespace {

void fill_curves(int count) {
    for (int s = 1; s <= count; ++s)
        for (int p = 0; p < wavelength_points; ++p) {
            const double nm = p + first_index_nm;
            shared.baseline_curves[static_cast<std::size_t>(p)][static_cast<std::size_t>(s)] =
                0.1 * s + 0.8 * std::exp(-0.5 * std::pow((nm - 536.0) / 6.0, 2)) + 0.2 * std::sin(nm / 37.0);
        }
}

// One scan point painted as it arrives, resuming where the last one stopped. Span 400 nm takes
// the first way (about 0.7 columns per point), span 100 nm the second (2.8 columns per point).
// The view starts over when the scan passes its end, as a new scan's init would.
void BM_ScanPoint(benchmark::State& state) {
    reset_shared_state();
    set_default_colors();
    fill_curves(1);
    plot_surface surface(QSize(400, 520));
    plot_view view;
    const int start = static_cast<int>(state.range(0)), stop = static_cast<int>(state.range(1));
    init_view(view, start, stop, 3.0, 0.0);
    draw_axes(surface, view, spectrum_axes(false));
    curve_data curve = baseline_curve(1);
    int last = start - 10;
    for (auto _ : state) {
        if (++last > stop + 10) {
            last = start - 9;
            view.plot_column = 0;
            view.draw_position = 0;
        }
        curve.last_stored_x = last;
        draw_data(surface, view, curve);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ScanPoint)->Args({400, 800})->Args({500, 600})->Unit(benchmark::kMicrosecond);

// Axes and twenty curves over the whole range 330..1100 nm (the first way), or on a 100 nm
// zoom (the second way).
void BM_ZoomData_20Curves(benchmark::State& state) {
    reset_shared_state();
    set_default_colors();
    fill_curves(20);
    plot_surface surface(QSize(400, 520));
    plot_view view;
    const int start = static_cast<int>(state.range(0)), stop = static_cast<int>(state.range(1));
    init_view(view, start, stop, 3.0, 0.0);
    std::vector<curve_data> curves;
    for (int s = 1; s <= 20; ++s)
        curves.push_back(baseline_curve(s));
    for (auto _ : state)
        zoom_data(surface, view, spectrum_axes(false), curves, 19);
    benchmark::DoNotOptimize(view.screen_curve[140]);
}
BENCHMARK(BM_ZoomData_20Curves)->Args({330, 1100})->Args({500, 600})->Unit(benchmark::kMillisecond);

// The same redraw on a surface that has drawn nothing yet: every line shape is met for the first
// time and drawn by the painter once, as on the window's first redraw.
void BM_ZoomData_20Curves_FirstTime(benchmark::State& state) {
    reset_shared_state();
    set_default_colors();
    fill_curves(20);
    plot_view view;
    init_view(view, 330, 1100, 3.0, 0.0);
    std::vector<curve_data> curves;
    for (int s = 1; s <= 20; ++s)
        curves.push_back(baseline_curve(s));
    for (auto _ : state) {
        state.PauseTiming();
        auto surface = std::make_unique<plot_surface>(QSize(400, 520));
        state.ResumeTiming();
        zoom_data(*surface, view, spectrum_axes(false), curves, 19);
        state.PauseTiming();
        surface.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_ZoomData_20Curves_FirstTime)->Unit(benchmark::kMillisecond);

} // namespace
