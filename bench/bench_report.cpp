// The report and the export: report_make of a Spectrum with 771 read rows at scale 1.0 (the
// page model, the texts measured with their fonts), and the workbook of a fixed-interval run at
// the 16-bit sample limit, 32,767 rows, from the grid's cells to a complete .xlsx. In the same
// run the same cells are written by openpyxl as the reference; the ratio is reported as
// `openpyxl_ratio` (how many times longer the reference took).
#include "functions/function_catalog.h"
#include "functions/spectrum/frmSpectrum.h"
#include "functions/spectrum/spectrum_data.h"
#include "functions/spectrum/spectrum_setup.h"
#include "functions/timescan/timescan_setup.h"
#include "functions/timescan_interval/frmTimescan2.h"
#include "functions/timescan_interval/timescan_interval_data.h"
#include "link/link_context.h"
#include "link/shared_state.h"
#include "platform/grid.h"
#include "report/report_make.h"
#include "report/workbook.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cmath>

using namespace lumora;

namespace {

void BM_ReportMakeSpectrum771(benchmark::State& state) {
    reset_shared_state();
    set_default_colors();
    spectrum_setup = SpectrumSetup{};
    spectrum_setup.start_lambda = 330;
    spectrum_setup.stop_lambda = 1100;
    reset_spectrum_data();
    spectrum_init();
    frmSpectrum window(*function_by_id(fid_spectrum));
    for (int nm = 320; nm <= 1110; ++nm)
        shared.baseline_curves[static_cast<std::size_t>(nm - 320)][1] =
            0.05 + 0.8 * std::exp(-(nm - 536.6) * (nm - 536.6) / 18.0);
    spectrum.curve_count = 1;
    spectrum.curve_state[1] = 2;
    window.zoom_data();
    window.search_peak();
    int pages = 0;
    for (auto _ : state) {
        auto page = report_make(window, 1.0);
        pages = page->pages();
        benchmark::DoNotOptimize(page);
    }
    state.counters["pages"] = pages;
}
BENCHMARK(BM_ReportMakeSpectrum771)->Unit(benchmark::kMillisecond);

constexpr int interval_rows = 32767;

void fill_interval_grid(grid& g) {
    g.setRows(interval_rows + 1);
    g.setTextMatrix(0, 0, "No.");
    g.setTextMatrix(0, 1, "Time");
    g.setTextMatrix(0, 2, "Value");
    for (int r = 1; r <= interval_rows; ++r) {
        g.setTextMatrix(r, 0, QString::number(r) + "  V");
        g.setTextMatrix(r, 1, QString::number((r - 1) * 0.5, 'f', 1));
        g.setTextMatrix(r, 2, QString::number(0.5 + 0.0001 * (r % 5000), 'f', 4));
    }
}

// Seconds openpyxl takes for the same cells, written in its own process from a TSV file.
double openpyxl_seconds(const grid& g, const QTemporaryDir& dir) {
    const QString tsv = dir.filePath("cells.tsv");
    QFile f(tsv);
    if (!f.open(QIODevice::WriteOnly)) return 0;
    for (int r = 0; r < g.Rows(); ++r) {
        QStringList cells;
        for (int c = 0; c < g.Cols(); ++c)
            cells << g.TextMatrix(r, c);
        f.write((cells.join('\t') + '\n').toUtf8());
    }
    f.close();
    QProcess p;
    p.start("/usr/bin/python3",
            {QStringLiteral(LUMORA_OPENPYXL_SCRIPT), tsv, dir.filePath("reference.xlsx"), "Read data"});
    if (!p.waitForFinished(600000) || p.exitCode() != 0) return 0;
    return p.readAllStandardOutput().trimmed().toDouble();
}

void BM_ExportTimescan2Grid32767(benchmark::State& state) {
    reset_shared_state();
    timescan_interval_setup = TimescanIntervalSetup{};
    reset_timescan_interval_data();
    frmTimescan2 window(*function_by_id(fid_timescan2));
    fill_interval_grid(window.fgdTrack());
    QTemporaryDir dir;
    const QString path = dir.filePath("long.xlsx");
    double total = 0;
    int runs = 0;
    for (auto _ : state) {
        const auto t0 = std::chrono::steady_clock::now();
        workbook book;
        copy_grid(window.fgdTrack(), book.add_sheet("Read data"));
        QString reason;
        if (!book.save(path, reason)) state.SkipWithError(reason.toUtf8().constData());
        total += std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        ++runs;
    }
    const double ours = runs ? total / runs : 0;
    const double reference = openpyxl_seconds(window.fgdTrack(), dir);
    state.counters["openpyxl_s"] = reference;
    state.counters["openpyxl_ratio"] = ours > 0 ? reference / ours : 0;
}
BENCHMARK(BM_ExportTimescan2Grid32767)->Unit(benchmark::kMillisecond)->Iterations(5);

} // namespace
