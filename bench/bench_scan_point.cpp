// One point of the start-up baseline scan: rsp_baseline_point into the reference and the
// baseline column, and the wavelength in panel 1.
#include "alloc_counter.h"
#include "bench_link.h"

#include "link/protocol.h"
#include "link/response_decoder.h"

using namespace lumora;
using namespace lumora::bench;

namespace {

void BM_BaselinePoint_LambdaPanel(benchmark::State& state) {
    reset_shared_state();
    apply_start_defaults();
    link_ctx = link_context{};
    long long panel_writes = 0;
    link_ctx.hooks.set_panel = [&panel_writes](int n, const QString& text) {
        panels[static_cast<std::size_t>(n)] = text;
        ++panel_writes;
    };
    shared.function_id = fid_startup;
    shared.measure_mode = mm_lambda_panel;
    const auto point = frame(rsp_baseline_point, 4500000);
    const long long before = allocations();
    for (auto _ : state) {
        if (shared.baseline_count >= wavelength_points) shared.baseline_count = 0; // the next scan
        recv_message(point.data(), point.size());
    }
    report(state, allocations() - before);
    // 771 of the 791 points lie in 330..1100 nm and show their wavelength.
    state.counters["panel_writes_per_point"] =
        benchmark::Counter(static_cast<double>(panel_writes) / static_cast<double>(state.iterations()));
    link_ctx = link_context{};
}
BENCHMARK(BM_BaselinePoint_LambdaPanel);

// A sample point handed to Spectrum (here a hook that only counts): the decoder's share of a scan.
void BM_SamplePoint_ToSpectrum(benchmark::State& state) {
    reset_shared_state();
    apply_start_defaults();
    link_ctx = link_context{};
    long long handed = 0;
    link_ctx.hooks.spectrum_show_data = [&handed](std::int32_t v) { handed += v; };
    shared.function_id = fid_spectrum;
    shared.measure_mode = mm_spectrum;
    const auto point = frame(rsp_sample_point, 4500000);
    const long long before = allocations();
    for (auto _ : state) {
        if (shared.sample_count >= wavelength_points) shared.sample_count = 0;
        recv_message(point.data(), point.size());
    }
    report(state, allocations() - before);
    benchmark::DoNotOptimize(handed);
    link_ctx = link_context{};
}
BENCHMARK(BM_SamplePoint_ToSpectrum);

} // namespace

BENCHMARK_MAIN();
