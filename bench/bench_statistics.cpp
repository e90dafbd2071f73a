// The "Statistics" tab of a calibration with 20 standards read 5 times each and 1000 samples:
// the statistics with every sample's inverse prediction, and the whole tab with its table, its
// residual plot and the sample table's three statistics columns written.
#include "functions/stats_panel.h"
#include "platform/grid.h"
#include "plot/plot_surface.h"
#include "processing/calibration_stats.h"

#include <benchmark/benchmark.h>
#include <random>
#include <vector>

using namespace lumora;

namespace {

struct readings {
    std::vector<double> conc, abs, samples;
};

readings make_readings() {
    std::mt19937_64 rng(11);
    std::normal_distribution<double> noise(0, 0.003);
    std::uniform_real_distribution<double> where(0, 22);
    readings r;
    for (int level = 1; level <= 20; ++level)
        for (int rep = 0; rep < 5; ++rep) {
            r.conc.push_back(level);
            r.abs.push_back(0.05 * level + noise(rng));
        }
    for (int i = 0; i < 1000; ++i)
        r.samples.push_back(0.05 * where(rng) + noise(rng));
    return r;
}

void BM_StatisticsCompute(benchmark::State& state) {
    const readings r = make_readings();
    const auto fit_type = static_cast<int>(state.range(0));
    for (auto _ : state) {
        const calibration_stats s =
            calibration_statistics(fit_type, stats_weighting::inverse_x, r.conc, r.abs);
        std::vector<labelled_prediction> out;
        out.reserve(r.samples.size());
        for (double a : r.samples)
            out.push_back({QString(), predict_sample(s, a, 1, a / 0.05)});
        benchmark::DoNotOptimize(stats_lines(s, "mg/L"));
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(BM_StatisticsCompute)->Name("statistics_compute")->Arg(2)->Arg(4)->Unit(benchmark::kMillisecond);

void BM_StatisticsTab(benchmark::State& state) {
    const readings r = make_readings();
    stats_panel panel;
    grid samples;
    samples.setCols(3);
    samples.setRows(1001);
    sample_stats_headers(samples, 3);
    for (auto _ : state) {
        const calibration_stats s = calibration_statistics(2, stats_weighting::none, r.conc, r.abs);
        panel.show_stats(s, QStringLiteral("mg/L"));
        for (int i = 0; i < 1000; ++i) {
            const double a = r.samples[static_cast<std::size_t>(i)];
            show_sample_prediction(samples, i + 1, 3, predict_sample(s, a, 1, a / 0.05));
        }
    }
}
BENCHMARK(BM_StatisticsTab)->Name("statistics_tab")->Unit(benchmark::kMillisecond);

} // namespace
