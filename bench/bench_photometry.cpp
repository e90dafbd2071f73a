// A thousand Photometry readings through the window, as the decoder hands them over: conversion,
// the cell text, column R from the row's cell texts, the marks, the panel text and the move to
// the next wavelength, into a grid that grows by 20 rows at a time.
#include "functions/function_catalog.h"
#include "functions/photometry/frmPhotometry.h"
#include "functions/photometry/photometry_setup.h"
#include "link/link_context.h"
#include "link/shared_state.h"
#include "platform/grid.h"

#include <benchmark/benchmark.h>

using namespace lumora;

namespace {

// range(0): wavelengths a row (10: R once a row; 1: R on every reading).
void BM_PhotometryThousandReadings(benchmark::State& state) {
    reset_shared_state();
    reset_photometry();
    PhotometrySetup& s = photometry_setup;
    s.ph_lambda_count = static_cast<std::int16_t>(state.range(0));
    for (std::size_t i = 0; i < s.ph_lambda.size(); ++i)
        s.ph_lambda[i] = 400 + 50 * static_cast<double>(i);
    s.ph_cycle_number = 99;
    s.ph_advanced = 1;
    s.ph_wl_pick = {1, 2, 3, 4};
    s.ph_sign = {1, 0, 0};
    s.ph_k1 = 2;
    s.ph_k2 = 0.5;
    QString panels[7];
    link_ctx.hooks.set_panel = [&panels](int n, const QString& t) { panels[n] = t; };
    shared.reference_intensity.fill(2'000'000);
    shared.dark_by_band = {5000, 5000, 5000, 5000, 5000};
    frmPhotometry window(*function_by_id(fid_photometry));
    for (auto _ : state) {
        state.PauseTiming();
        window.clear_form();
        shared.measure_mode = mm_photometry;
        window.read();
        state.ResumeTiming();
        std::int32_t raw = 900'000;
        for (int i = 0; i < 1000; ++i) {
            if (shared.measure_mode != mm_photometry) { // a run of 990 has ended: Read again
                shared.measure_mode = mm_photometry;
                window.read();
            }
            window.show_data(raw);
            raw = raw == 900'000 ? 950'000 : 900'000;
        }
    }
    state.SetItemsProcessed(state.iterations() * 1000);
    state.counters["grid_rows"] = window.fgdData().Rows();
    benchmark::DoNotOptimize(panels[2]);
    link_ctx.hooks = {};
}
BENCHMARK(BM_PhotometryThousandReadings)->Arg(10)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace
