// One Spectrum sample point through the window: conversion, storage, the incremental draw and
// the panel texts, as the decoder hands it over during a scan.
#include "functions/function_catalog.h"
#include "functions/spectrum/frmSpectrum.h"
#include "functions/spectrum/spectrum_data.h"
#include "functions/spectrum/spectrum_setup.h"
#include "link/link_context.h"
#include "link/shared_state.h"

#include <benchmark/benchmark.h>

using namespace lumora;

namespace {

void BM_SpectrumSamplePoint(benchmark::State& state) {
    reset_shared_state();
    reset_spectrum_data();
    spectrum_setup = SpectrumSetup{};
    spectrum_setup.start_lambda = 330;
    spectrum_setup.stop_lambda = static_cast<double>(state.range(0));
    QString panels[7];
    link_ctx.hooks.set_panel = [&panels](int n, const QString& t) { panels[n] = t; };
    for (auto& row : shared.baseline_curves)
        row[0] = 2'000'000;
    shared.dark_by_band = {5000, 5000, 5000, 5000, 5000};
    frmSpectrum window(*function_by_id(fid_spectrum));
    spectrum.curve_count = 1;
    std::int32_t raw = 900'000;
    for (auto _ : state) {
        if (spectrum.scan_count >= spectrum.scan_total) {
            state.PauseTiming();
            window.init();
            state.ResumeTiming();
        }
        window.show_data(raw);
        raw = raw == 900'000 ? 950'000 : 900'000;
    }
    state.SetItemsProcessed(state.iterations());
    benchmark::DoNotOptimize(panels[2]);
    link_ctx.hooks = {};
}
BENCHMARK(BM_SpectrumSamplePoint)->Arg(1100)->Arg(430)->Unit(benchmark::kMicrosecond);

} // namespace
