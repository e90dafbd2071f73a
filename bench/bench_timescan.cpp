// The Timescans' hot paths: one sample of each window as the decoder hands a due frame over
// (value, the incremental stretch, the panels, and for the interval form the grid row), and
// the redraw of the last page of a grid at the 16-bit sample limit from its cell texts.
#include "functions/function_catalog.h"
#include "functions/timescan/frmTimescan.h"
#include "functions/timescan/timescan_data.h"
#include "functions/timescan/timescan_setup.h"
#include "functions/timescan_interval/frmTimescan2.h"
#include "functions/timescan_interval/timescan_interval_data.h"
#include "link/link_context.h"
#include "link/response_decoder.h"
#include "link/shared_state.h"
#include "platform/grid.h"
#include "plot/plot_surface.h"

#include <benchmark/benchmark.h>

using namespace lumora;

namespace {

QString panels[7];

void set_up_link() {
    reset_shared_state();
    set_default_colors();
    link_ctx = link_context{};
    link_ctx.hooks.set_panel = [](int n, const QString& t) { panels[n] = t; };
    shared.link_ready = true;
    shared.lambda_now = 500;
    shared.lambda_now_int = 500;
    shared.dark_by_band = {5000, 5000, 5000, 5000, 5000};
    shared.reference_intensity[180] = 2'000'000;
}

// Two frames of different value, so that each stretch is a slanted line.
const std::uint8_t frames[2][6] = {{68, 0x0d, 0xbb, 0xa0, 0, 0}, {68, 0x0e, 0x7e, 0xf0, 0, 0}};

void BM_TimescanSpanSample(benchmark::State& state) {
    set_up_link();
    reset_timescan_data();
    timescan_setup = TimescanSetup{};
    frmTimescan window(*function_by_id(fid_timescan));
    window.resize(760, 900);
    window.show();
    timescan.ts_curve_count = 1;
    shared.measure_mode = mm_timescan;
    timescan.ts_ticks = 1'000'000; // every frame is a due sample
    int which = 0;
    for (auto _ : state) {
        if (timescan.ts_sample_index > 280 || shared.measure_mode != mm_timescan) {
            state.PauseTiming();
            shared.measure_mode = mm_timescan;
            timescan.ts_sample_index = 0;
            timescan.ts_ticks = 1'000'000;
            state.ResumeTiming();
        }
        recv_message(frames[which], 6);
        which ^= 1;
    }
    state.SetItemsProcessed(state.iterations());
    link_ctx.hooks = {};
}
BENCHMARK(BM_TimescanSpanSample)->Unit(benchmark::kMicrosecond);

void BM_TimescanIntervalSample(benchmark::State& state) {
    set_up_link();
    reset_timescan_interval_data();
    timescan_interval_setup = TimescanIntervalSetup{};
    timescan_interval_setup.ti_stop_time = 999999;
    frmTimescan2 window(*function_by_id(fid_timescan2));
    window.resize(760, 900);
    window.show(); // the grid scrolls as the user sees it
    timescan_interval.ti_curve_count = 1;
    shared.measure_mode = mm_timescan2;
    timescan_interval.ti_ticks = 1'000'000;
    int which = 0;
    for (auto _ : state) {
        if (timescan_interval.ti_sample_index >= 20000) {
            state.PauseTiming();
            window.clear_form();
            timescan_interval.ti_sample_index = 0;
            timescan_interval.ti_page_count = 0;
            state.ResumeTiming();
        }
        recv_message(frames[which], 6);
        which ^= 1;
    }
    state.SetItemsProcessed(state.iterations());
    link_ctx.hooks = {};
}
BENCHMARK(BM_TimescanIntervalSample)->Unit(benchmark::kMicrosecond);

// The last page of a grid of 32,767 rows: the header and samples 0..32765.
void BM_DrawDataPageLast(benchmark::State& state) {
    set_up_link();
    reset_timescan_interval_data();
    timescan_interval_setup = TimescanIntervalSetup{};
    frmTimescan2 window(*function_by_id(fid_timescan2));
    grid& g = window.fgdTrack();
    g.setRows(32767);
    for (int k = 0; k < 32766; ++k) {
        g.setTextMatrix(k + 1, 0, QString::number(k));
        g.setTextMatrix(k + 1, 1, QString::number(k));
        g.setTextMatrix(k + 1, 2, k % 2 ? QStringLiteral("1.250") : QStringLiteral("1.750"));
    }
    window.init();                                    // the last page is shown: samples 32760..32765
    if (state.range(0) == 1) window.cmdPage_Click(0); // the last full page: 32480..32760
    for (auto _ : state) {
        plot_surface::batch batch(window.picTimescan());
        for (int c = 0; c <= 280; ++c)
            window.draw_data_page(c);
    }
    state.counters["page"] = window.page_shown();
    link_ctx.hooks = {};
}
BENCHMARK(BM_DrawDataPageLast)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace
