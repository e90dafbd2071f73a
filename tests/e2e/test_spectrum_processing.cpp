// Spectrum's processing on a scanned holmium filter: peak and valley search, smoothing and
// "Original", the second derivative, and the curve arithmetic with its refusal at 20 curves.
#include "functions/spectrum/spectrum_tools.h"
#include "platform/grid.h"
#include "platform/prompts.h"
#include "plot/plot_surface.h"
#include "spectrum_rig.h"

using namespace lumora;
using lumora::test::spectrum_rig;

namespace {

constexpr double holmium_bands[] = {416.3, 451.4, 467.8, 485.2, 536.6, 640.5};

// A holmium filter scanned over 400..700 nm in ABS.
struct holmium_rig : spectrum_rig {
    holmium_rig() {
        set_range(400, 700, false, 1.2);
        EXPECT_TRUE(scan(2));
        rig.instrument.control("sample holmium");
        EXPECT_TRUE(scan(3));
    }
};

double nm_of(const QString& cell) {
    return cell.left(cell.indexOf("nm")).toDouble();
}

} // namespace

TEST(SpectrumProcessing, PeakFindsTheHolmiumBandsAndDerivativeShowsThem) {
    holmium_rig h;
    h.rig.window->toolbar_button(9)->trigger(); // Peak
    const grid& peaks = h.window->fgdPeak();
    ASSERT_EQ(spectrum.peak_count, 6) << "the six bands of 400..700 nm";
    for (int r = 1; r <= spectrum.peak_count; ++r) {
        EXPECT_TRUE(peaks.TextMatrix(r, 0).startsWith("  V"));
        EXPECT_NEAR(nm_of(peaks.TextMatrix(r, 1)), holmium_bands[r - 1], 1.6) << "row " << r;
        EXPECT_EQ(spectrum.peak_marks[static_cast<std::size_t>(r - 1)].flag, -1);
    }
    EXPECT_GT(spectrum.valley_count, 0) << "the dips between the bands";

    // A click on a row takes it out of the report, a second click puts it back.
    h.window->table_row_click(1, 2);
    EXPECT_EQ(peaks.TextMatrix(2, 0), QStringLiteral("  X2"));
    EXPECT_EQ(spectrum.peak_marks[1].flag, 0);
    h.window->table_row_click(1, 2);
    EXPECT_EQ(peaks.TextMatrix(2, 0), QStringLiteral("  V2"));

    // The second derivative has a minimum at each band.
    h.window->derivative(2);
    EXPECT_EQ(spectrum.derivative_order, 2);
    EXPECT_EQ(h.window->fgdTrack().TextMatrix(0, 3), QStringLiteral("D-Value"));
    for (double band : holmium_bands) {
        const int p = static_cast<int>(std::lround(band)) - 320;
        double here = spectrum.derivative_curve[static_cast<std::size_t>(p)];
        for (int d = -2; d <= 2; ++d)
            here = std::min(here, spectrum.derivative_curve[static_cast<std::size_t>(p + d)]);
        EXPECT_LT(here, spectrum.derivative_curve[static_cast<std::size_t>(p - 6)]) << band;
        EXPECT_LT(here, spectrum.derivative_curve[static_cast<std::size_t>(p + 6)]) << band;
        EXPECT_LT(here, 0.0) << band;
    }
    EXPECT_LT(spectrum.derivative_low, 0.0);
    EXPECT_GT(spectrum.derivative_high, 0.0);
    const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR");
    if (!dir.isEmpty()) h.window->picSpectrum().grab_view().save(dir + "/holmium_derivative_plot.png");
}

TEST(SpectrumProcessing, SmoothingActsOnTheCurveAndOriginalBringsTheScanBack) {
    holmium_rig h;
    const auto scanned = shared.baseline_curves;
    frmPopup popup([&](int points) { h.window->smooth(points); });
    popup.tbPopup_ButtonClick("Smooth low");
    frmPopup again([&](int points) { h.window->smooth(points); });
    again.tbPopup_ButtonClick("SMOOTH LOW");
    const int band = 451 - 320;
    EXPECT_LT(shared.baseline_curves[band][1], scanned[band][1]) << "a narrow band loses height";
    EXPECT_EQ(shared.baseline_curves[band][0], scanned[band][0]) << "the baseline is not smoothed";
    h.rig.window->toolbar_button(8)->trigger(); // Original
    for (int p = 0; p < wavelength_points; ++p)
        ASSERT_EQ(shared.baseline_curves[static_cast<std::size_t>(p)][1],
                  scanned[static_cast<std::size_t>(p)][1])
            << p;
}

TEST(SpectrumProcessing, ArithmeticMakesADifferenceCurveAndRefusesAtTwentyCurves) {
    holmium_rig h;
    h.rig.instrument.control("sample blank");
    ASSERT_TRUE(h.scan(3));
    frmAdvance advance([&] { h.window->zoom_data(); });
    advance.cmbScan(0)->setCurrentIndex(0);
    advance.cmbScan(1)->setCurrentIndex(1);
    advance.cmbOperator(0)->setCurrentIndex(1); // "-"
    advance.txtScan(2)->setText("0");
    advance.cmdOK_Click();
    ASSERT_EQ(spectrum.curve_count, 3);
    EXPECT_EQ(spectrum.active_curve, 2);
    EXPECT_EQ(spectrum.curve_state[3], 2);
    for (int nm = 390; nm < 710; ++nm) {
        const auto p = static_cast<std::size_t>(nm - 320);
        ASSERT_NEAR(shared.baseline_curves[p][3], shared.baseline_curves[p][1] - shared.baseline_curves[p][2],
                    1e-12);
        ASSERT_EQ(spectrum.org_curves[p][3], shared.baseline_curves[p][3]);
    }
    EXPECT_EQ(shared.baseline_curves[380 - 320][3], 0.0) << "outside the scan range stays 0";

    spectrum.curve_count = 20;
    prompts::script();
    prompts::clear_shown();
    frmAdvance full([] {});
    const auto before = shared.baseline_curves;
    full.cmdOK_Click();
    prompts::unscript();
    ASSERT_EQ(prompts::shown().size(), 1u);
    EXPECT_EQ(prompts::shown()[0].title, QStringLiteral("Warning"));
    EXPECT_EQ(spectrum.curve_count, 20);
    EXPECT_EQ(shared.baseline_curves, before) << "nothing is written past the arrays";
}
