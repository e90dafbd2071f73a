// Protein's two hot paths: the fit's follow-up over 20 standards of 5 replicates (Cal-Conc.,
// Diff and %CV columns, the limits, both plots redrawn), and one sample reading through the
// window into a sample table that already holds 1000 rows.
#include "functions/function_catalog.h"
#include "functions/protein/frmProtein.h"
#include "functions/protein/protein_rows.h"
#include "functions/protein/protein_setup.h"
#include "link/link_context.h"
#include "link/shared_state.h"
#include "platform/grid.h"
#include "platform/prompts.h"

#include <benchmark/benchmark.h>
#include <random>

using namespace lumora;

namespace {

void prepare_link() {
    reset_shared_state();
    set_default_colors();
    prompts::script();
    link_ctx.hooks.set_panel = [](int, const QString&) {};
    shared.reference_intensity.fill(2'000'000);
    shared.dark_by_band = {5000, 5000, 5000, 5000, 5000};
}

// 20 standards of 5 replicates each read, ABS near 0.05 per unit with a little scatter.
void BM_FitFollowUp(benchmark::State& state) {
    prepare_link();
    protein = ProteinSetup{};
    protein.std_reps = 5;
    protein.cal.std_count = 20;
    protein.cal.fit_type = static_cast<std::int16_t>(state.range(0));
    for (std::size_t i = 0; i < 20; ++i)
        protein.cal.std_conc[i] = static_cast<double>(i + 1);
    frmProtein window(*function_by_id(fid_protein));
    std::mt19937_64 rng(11);
    std::normal_distribution<double> scatter(0, 0.003);
    for (int k = 1; k <= 20; ++k)
        for (int j = 0; j < 5; ++j)
            add_standard_reading(window.fgdData(), protein, 0.05 * k + scatter(rng));
    for (auto _ : state) {
        benchmark::DoNotOptimize(window.refit_standards());
    }
    state.counters["rows"] = protein.data_rows;
    link_ctx.hooks = {};
}
BENCHMARK(BM_FitFollowUp)->Arg(2)->Arg(4)->Unit(benchmark::kMicrosecond);

// One reading as the decoder hands it over, with 1000 rows already in fgdSample; every 200
// readings the table is cut back to 1000 rows outside the timing.
void BM_SampleReading(benchmark::State& state) {
    prepare_link();
    protein = ProteinSetup{};
    protein.sample_reps = 3;
    protein.cal.fit_type = 2;
    protein.cal.fit_ka = 20;
    protein.cal.fit_kb = 0.1;
    frmProtein window(*function_by_id(fid_protein));
    protein.reading_std = false;
    grid& g = window.fgdSample();
    const auto refill = [&] {
        protein.sample_rows = 0;
        g.setRows(protein.sample_reps + 2);
        while (protein.sample_rows < 1000)
            add_sample_reading(g, protein, 0.4);
    };
    refill();
    std::int32_t raw = 900'000;
    int done = 0;
    for (auto _ : state) {
        if (++done % 200 == 0) {
            state.PauseTiming();
            refill();
            state.ResumeTiming();
        }
        shared.measure_mode = mm_protein;
        window.show_data(raw);
        raw = raw == 900'000 ? 950'000 : 900'000;
    }
    state.counters["rows"] = g.Rows();
    link_ctx.hooks = {};
}
BENCHMARK(BM_SampleReading)->Unit(benchmark::kMicrosecond);

} // namespace
