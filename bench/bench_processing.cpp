// The processing kernels on a full 330..1100 nm scan (points 0..790 of one curve column), and the
// peak and valley search on the 281 columns of a screen curve.
#include "processing/kernels.h"
#include "processing/peak_search.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <memory>

using namespace lumora::processing;

namespace {

constexpr int column = 1;
constexpr int scan_first_nm = 320, scan_last_nm = 1110;

// A curve of a few absorption bands with a little ripple, one point per nanometre.
std::unique_ptr<curve_array> make_curves() {
    auto curves = std::make_unique<curve_array>();
    for (int p = 0; p < spectrum_points; ++p) {
        const double nm = p + 320.0;
        (*curves)[static_cast<std::size_t>(p)][column] = 0.2 + 0.8 * std::exp(-std::pow((nm - 450) / 25, 2)) +
                                                         0.5 * std::exp(-std::pow((nm - 640) / 12, 2)) +
                                                         0.002 * std::sin(nm / 3);
    }
    return curves;
}

template <bool (*Smooth)(curve_array&, int, int, int)> void BM_Smooth(benchmark::State& state) {
    const auto original = make_curves();
    auto curves = std::make_unique<curve_array>(*original);
    for (auto _ : state) {
        // Smoothing works in place: each pass smooths the last result, as pressing the button again does.
        Smooth(*curves, column, scan_first_nm, scan_last_nm);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * (scan_last_nm - scan_first_nm + 1));
}

template <bool (*Derivate)(const curve_array&, int, int, int, point_array&)>
void BM_Derivate(benchmark::State& state) {
    const auto curves = make_curves();
    auto derivative = std::make_unique<point_array>();
    for (auto _ : state) {
        Derivate(*curves, column, scan_first_nm, scan_last_nm, *derivative);
        benchmark::DoNotOptimize(derivative->data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * (scan_last_nm - scan_first_nm + 1));
}

BENCHMARK(BM_Smooth<Smooth9Point>)->Name("Smooth9Point");
BENCHMARK(BM_Smooth<Smooth17Point>)->Name("Smooth17Point");
BENCHMARK(BM_Smooth<Smooth25Point>)->Name("Smooth25Point");
BENCHMARK(BM_Derivate<Derivate17Point1st>)->Name("Derivate17Point1st");
BENCHMARK(BM_Derivate<Derivate17Point2nd>)->Name("Derivate17Point2nd");
BENCHMARK(BM_Derivate<Derivate17Point3rd>)->Name("Derivate17Point3rd");
BENCHMARK(BM_Derivate<Derivate17Point4th>)->Name("Derivate17Point4th");
BENCHMARK(BM_Derivate<Derivate25Point1st>)->Name("Derivate25Point1st");
BENCHMARK(BM_Derivate<Derivate25Point2nd>)->Name("Derivate25Point2nd");
BENCHMARK(BM_Derivate<Derivate25Point3rd>)->Name("Derivate25Point3rd");

// The screen curve of the same spectrum on a 400..800 nm view, 10/7 nm a column, searched with the
// half width of a 400 nm setup; rows come from the screen's mapping for 0..1.2 ABS.
void BM_Search(benchmark::State& state, bool valley) {
    screen_array screen{};
    for (int c = 0; c < screen_columns; ++c) {
        const double nm = 400 + c * 400.0 / 280;
        screen[static_cast<std::size_t>(c)] = 0.2 + 0.8 * std::exp(-std::pow((nm - 450) / 25, 2)) +
                                              0.5 * std::exp(-std::pow((nm - 640) / 12, 2)) +
                                              0.02 * std::sin(nm / 3);
    }
    search_setup setup{search_threshold(false), search_half_width(400, 800), 400, 400,
                       [](double v) { return 300 - static_cast<int>(std::lround(v / 1.2 * 280)); }};
    mark_array marks{};
    int found = 0;
    for (auto _ : state) {
        const search_result r =
            valley ? search_valley(screen, setup, marks) : search_peak(screen, setup, marks);
        found = r.count;
        benchmark::DoNotOptimize(r);
    }
    state.counters["found"] = found;
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(BM_Search, search_peak, false)->Name("search_peak");
BENCHMARK_CAPTURE(BM_Search, search_valley, true)->Name("search_valley");

} // namespace

BENCHMARK_MAIN();
