// Kinetic's hot paths: one sample as the decoder hands a due frame over (value, the stretch on
// the plot, panels 1 and 2), and zoom_data: the frame, 280 stretches, the crosses and their
// table, the fit with its text block, and the fit line.
#include "functions/function_catalog.h"
#include "functions/kinetic/frmKinetic.h"
#include "functions/kinetic/kinetic_data.h"
#include "link/link_context.h"
#include "link/response_decoder.h"
#include "link/shared_state.h"

#include <benchmark/benchmark.h>
#include <cmath>

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

void BM_KineticSample(benchmark::State& state) {
    set_up_link();
    reset_kinetic();
    frmKinetic window(*function_by_id(fid_kinetic));
    window.resize(760, 1000);
    window.show();
    shared.measure_mode = mm_kinetic;
    kinetic.kn_running = true;
    kinetic.kn_ticks = 1'000'000; // every frame is a due sample
    int which = 0;
    for (auto _ : state) {
        if (kinetic.kn_sample_index >= 280) {
            // The last sample ends the run with the fit: not part of a sample's cost.
            state.PauseTiming();
            kinetic.kn_sample_index = 0;
            kinetic.kn_ticks = 1'000'000;
            state.ResumeTiming();
        }
        recv_message(frames[which], 6);
        which ^= 1;
    }
    state.SetItemsProcessed(state.iterations());
    link_ctx.hooks = {};
}
BENCHMARK(BM_KineticSample)->Unit(benchmark::kMicrosecond);

void BM_KineticZoomData(benchmark::State& state) {
    set_up_link();
    reset_kinetic();
    kinetic_setup.kn_sampling_number = static_cast<std::int16_t>(state.range(0));
    kinetic_setup.kn_lag = 30;
    kinetic_setup.kn_rate = 60;
    kinetic_setup.derive();
    frmKinetic window(*function_by_id(fid_kinetic));
    window.resize(760, 1000);
    window.show();
    for (int k = 0; k < kn_samples_count; ++k)
        kinetic.kn_samples[static_cast<std::size_t>(k)] = 0.5 + 0.002 * k + 0.01 * std::sin(k * 0.7);
    kinetic.kn_run_count = 1;
    window.zoom_auto();
    for (auto _ : state)
        window.zoom_data();
    link_ctx.hooks = {};
}
BENCHMARK(BM_KineticZoomData)->Arg(5)->Arg(99)->Unit(benchmark::kMillisecond);

} // namespace
