// The calibration's hot paths: each of the four fits on a span of 20 standards and of 1000
// points, and the whole way from OK of the setup (20 keyed-in standards) to the redrawn plot
// with its equation.
#include "functions/function_catalog.h"
#include "functions/quantitative/dlgQuant.h"
#include "functions/quantitative/frmQuant.h"
#include "functions/quantitative/quant_setup.h"
#include "link/shared_state.h"
#include "platform/grid.h"
#include "platform/prompts.h"
#include "processing/calibration_fit.h"

#include <QLineEdit>
#include <QRadioButton>
#include <QTabBar>
#include <benchmark/benchmark.h>
#include <memory>
#include <random>
#include <vector>

using namespace lumora;

namespace {

struct points {
    std::vector<double> conc, abs;
};

points make_points(std::size_t n) {
    std::mt19937_64 rng(7);
    std::normal_distribution<double> noise(0, 0.002);
    points p;
    for (std::size_t i = 0; i < n; ++i) {
        const double a = 3.0 * static_cast<double>(i + 1) / static_cast<double>(n);
        p.abs.push_back(a + noise(rng));
        p.conc.push_back(12.5 * a + 1.5 * a * a + 0.2);
    }
    return p;
}

template <bool (*Fit)(std::span<const double>, std::span<const double>, fit_coefficients&)>
void BM_Fit(benchmark::State& state) {
    const points p = make_points(static_cast<std::size_t>(state.range(0)));
    fit_coefficients out;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Fit(p.conc, p.abs, out));
        benchmark::DoNotOptimize(out);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Fit<fit_1optz>)->Name("fit_1optz")->Arg(20)->Arg(1000);
BENCHMARK(BM_Fit<fit_1opnz>)->Name("fit_1opnz")->Arg(20)->Arg(1000);
BENCHMARK(BM_Fit<fit_2optz>)->Name("fit_2optz")->Arg(20)->Arg(1000);
BENCHMARK(BM_Fit<fit_2opnz>)->Name("fit_2opnz")->Arg(20)->Arg(1000);

// OK of "Setup Quantitative" with 20 keyed-in standards of a second-order fit: the take-over,
// the window's tables rebuilt, the fit, the limits, the curve with its crosses and the equation.
void BM_OkToPlot(benchmark::State& state) {
    reset_shared_state();
    set_default_colors();
    quant = QuantSetup{};
    prompts::script();
    frmQuant window(*function_by_id(fid_quantitative));
    std::unique_ptr<QDialog> dialog(window.make_setup_dialog(nullptr));
    dialog->setAttribute(Qt::WA_DeleteOnClose, false);
    auto& dlg = *static_cast<dlgQuant*>(dialog.get());
    dlg.Option1(1)->setChecked(true);
    dlg.Option1_Click(1);
    dlg.tspFit()->setCurrentIndex(3);
    dlg.txtStandard()->setText(QStringLiteral("20"));
    const points p = make_points(20);
    for (int r = 1; r <= 20; ++r) {
        dlg.fgdStandard().setTextMatrix(r, 1,
                                        QString::number(p.conc[static_cast<std::size_t>(r - 1)], 'f', 3));
        dlg.fgdStandard().setTextMatrix(r, 2,
                                        QString::number(p.abs[static_cast<std::size_t>(r - 1)], 'f', 3));
    }
    for (auto _ : state) {
        dlg.cmdOk_Click();
        prompts::clear_shown();
    }
    benchmark::DoNotOptimize(quant.cal.fit_r2);
}
BENCHMARK(BM_OkToPlot)->Unit(benchmark::kMicrosecond);

} // namespace
