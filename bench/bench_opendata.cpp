// The open-data exports as the File menu and lumora-data run them, files written to disk included:
// 20 full-range Spectrum curves as JCAMP-DX (a file per curve, and one compound file), and a
// 32,767-sample fixed-interval Timescan batch as CSV. Each should stay under 100 ms. Writing to disk
// includes the flush to the device that makes the renamed file complete after a power cut.
#include "functions/function_catalog.h"
#include "functions/function_window.h"
#include "functions/spectrum/spectrum_data.h"
#include "functions/spectrum/spectrum_setup.h"
#include "functions/timescan/timescan_setup.h"
#include "link/shared_state.h"
#include "opendata/exporters.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cmath>
#include <memory>

using namespace lumora;
using namespace lumora::opendata;

namespace {

const export_source source{QStringLiteral("bench"), QStringLiteral("bench"), QStringLiteral("bench"), {}};

void BM_SpectrumJcamp(benchmark::State& state) {
    const auto format = state.range(0) == 0 ? export_format::jcamp : export_format::jcamp_compound;
    reset_shared_state();
    // The window first: opening it clears the curves.
    std::unique_ptr<function_window> window(make_function_window(*function_by_id(fid_spectrum)));
    reset_spectrum_data();
    spectrum_setup.start_lambda = first_index_nm;
    spectrum_setup.stop_lambda = first_index_nm + wavelength_points - 1;
    spectrum.curve_count = max_curves;
    for (int column = 1; column <= max_curves; ++column) {
        spectrum.curve_state[static_cast<std::size_t>(column)] = 1;
        for (int p = 0; p < wavelength_points; ++p)
            shared.baseline_curves[static_cast<std::size_t>(p)][static_cast<std::size_t>(column)] =
                1.5 + std::sin(p / 37.0 + column) / 3;
        save_org_data(column);
    }
    QTemporaryDir dir;
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::vector<out_file> files = spectrum_export(*window, format, source);
        if (files.empty() || (state.range(1) == 1 && !write_all(dir.path(), files).isEmpty()))
            state.SkipWithError("export failed");
        bytes = 0;
        for (const out_file& f : files)
            bytes += static_cast<std::size_t>(f.bytes.size());
    }
    state.counters["bytes"] = static_cast<double>(bytes);
}
// Args: a file per curve (0) or one compound file (1); the text only (0) or written to disk (1).
BENCHMARK(BM_SpectrumJcamp)->ArgsProduct({{0, 1}, {0, 1}})->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Timescan2Csv(benchmark::State& state) {
    reset_shared_state();
    timescan_interval_setup.ti_interval = 0.5;
    std::unique_ptr<function_window> window(make_function_window(*function_by_id(fid_timescan2)));
    std::vector<batch_row> rows;
    for (const batch_row& r : window->result_rows())
        rows.push_back(r);
    row_writer w(QStringLiteral("D"));
    for (int k = 0; k < 32767; ++k)
        w.add(k % 2 ? QStringLiteral("1.250") : QStringLiteral("0.875"));
    rows.insert(rows.end(), w.rows.begin(), w.rows.end());
    window->load_result(rows);
    QTemporaryDir dir;
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::vector<out_file> files = timescan_interval_export(*window, export_format::csv, source);
        if (files.empty() || (state.range(0) == 1 && !write_all(dir.path(), files).isEmpty()))
            state.SkipWithError("export failed");
        bytes = static_cast<std::size_t>(files.front().bytes.size());
    }
    state.counters["bytes"] = static_cast<double>(bytes);
}
// Arg: the text only (0) or written to disk (1).
BENCHMARK(BM_Timescan2Csv)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
