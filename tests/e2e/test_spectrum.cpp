// Spectrum against the simulator: a baseline and sample scans through the whole program, the
// stored values against the model's absorbance, and the curve bookkeeping of overlay and reset.
#include "plot/plot_surface.h"
#include "plot/zoom.h"
#include "spectrum_rig.h"

#include <QLabel>
#include <gtest/gtest.h>

using namespace lumora;
using lumora::test::spectrum_rig;

namespace {

// With LUMORA_SHOT_DIR set, keeps pictures of the window and its plot for a look by eye.
void keep_picture(frmSpectrum& window, const char* name) {
    const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR");
    if (dir.isEmpty()) return;
    window.resize(760, 900);
    window.grab().save(dir + "/" + name + "_window.png");
    window.picSpectrum().grab_view().save(dir + "/" + name + "_plot.png");
}

} // namespace

TEST(SpectrumScan, HolmiumAbsorbanceMatchesTheModelAtEveryNanometre) {
    spectrum_rig s;
    ASSERT_NE(s.window, nullptr);
    s.set_range(400, 700, false);
    EXPECT_EQ(spectrum_setup.start_lambda, 400.0);
    EXPECT_EQ(spectrum_setup.stop_lambda, 700.0);

    ASSERT_TRUE(s.scan(2)) << "baseline scan";
    EXPECT_EQ(spectrum.scan_first_nm, 390);
    EXPECT_EQ(spectrum.scan_last_nm, 710);
    EXPECT_EQ(spectrum.scan_count, 321) << "the baseline takes scan_total + 1 points";
    EXPECT_EQ(spectrum.curve_count, 0);
    EXPECT_NE(s.rig.find_write(6, "Baseline scanning..."), -1);

    s.rig.instrument.control("sample holmium");
    ASSERT_TRUE(s.scan(3)) << "sample scan";
    EXPECT_EQ(spectrum.curve_count, 1);
    EXPECT_EQ(spectrum.scan_count, 320) << "the sample takes one point fewer";
    EXPECT_NE(s.rig.find_write(6, "Sample scanning..."), -1);
    double worst = 0;
    for (int nm = 390; nm < 710; ++nm) {
        const double stored = shared.baseline_curves[static_cast<std::size_t>(nm - 320)][1];
        const double model = s.rig.instrument.true_absorbance(nm);
        worst = std::max(worst, std::abs(stored - model));
        ASSERT_NEAR(stored, model, 0.002) << nm << " nm";
        ASSERT_EQ(spectrum.org_curves[static_cast<std::size_t>(nm - 320)][1], stored);
    }
    EXPECT_EQ(shared.baseline_curves[710 - 320][1], 0.0) << "scan_last_nm itself is not stored";
    EXPECT_LT(worst, 0.002);
    EXPECT_EQ(shared.lambda_now, 700.0);
    EXPECT_EQ(s.rig.panel(1), QStringLiteral("700nm"));
    EXPECT_EQ(spectrum.active_curve, 0);
    keep_picture(*s.window, "holmium");

    // A rubber band over 440..480 nm zooms the view there.
    spectrum.view.zoom_rect = QRect(QPoint(60 + 37, 40), QPoint(60 + 75, 250));
    zoom_cursor(spectrum.view, false);
    s.window->zoom_data();
    EXPECT_GE(spectrum.view.view_start, 438);
    EXPECT_LE(spectrum.view.view_stop, 482);
    keep_picture(*s.window, "holmium_zoomed");
}

TEST(SpectrumScan, PercentTOfANeutralFilterAndTheCurveBookkeepingOfOverlay) {
    spectrum_rig s;
    s.set_range(500, 560, true);
    ASSERT_TRUE(s.scan(2));
    s.rig.instrument.control("sample neutral:0.3");
    ASSERT_TRUE(s.scan(3));
    for (int nm = 490; nm < 570; ++nm)
        ASSERT_NEAR(shared.baseline_curves[static_cast<std::size_t>(nm - 320)][1], 100 * std::pow(10, -0.3),
                    0.05)
            << nm;
    ASSERT_TRUE(s.scan(3));
    EXPECT_EQ(spectrum.curve_count, 2) << "overlay on keeps the first curve";
    EXPECT_EQ(spectrum.curve_state[2], 2);

    // Overlay off: each Read replaces curve 1.
    spectrum_setup.overlay_screen = 0;
    ASSERT_TRUE(s.scan(3));
    ASSERT_TRUE(s.scan(3));
    EXPECT_EQ(spectrum.curve_count, 1);

    s.rig.run_for(5); // the instrument rests after a scan: nothing is due, so it is not silent
    EXPECT_TRUE(s.rig.window->sbStatusBar().panel(2)->isEnabled());
    EXPECT_NE(s.rig.panel(6), QStringLiteral("No reply from the instrument..."));
}

TEST(SpectrumScan, TheTwentyFirstReadStartsAgainFromAnEmptyWindow) {
    spectrum_rig s;
    s.set_range(600, 620, false);
    ASSERT_TRUE(s.scan(2));
    for (int i = 0; i < 20; ++i) {
        s.rig.instrument.control("sample neutral:" + std::to_string(0.07 * (i + 1)));
        ASSERT_TRUE(s.scan(3)) << i;
    }
    EXPECT_NEAR(shared.baseline_curves[610 - 320][20], 1.4, 0.002);
    EXPECT_EQ(spectrum.curve_count, 20);
    keep_picture(*s.window, "twenty");
    ASSERT_TRUE(s.scan(3));
    EXPECT_EQ(spectrum.curve_count, 1);
    EXPECT_NE(shared.baseline_curves[600 - 320][0], 0.0) << "the baseline survives the clearing";
}

TEST(SpectrumScan, ALostPointLeavesStopToGetTheToolbarBack) {
    spectrum_rig s;
    s.set_range(500, 560, false);
    ASSERT_TRUE(s.scan(2));
    s.rig.instrument.control("fault drop:25 on");
    s.rig.window->toolbar_button(3)->trigger();
    // The drop also swallows the scan end now and then: the silence then lifts the lock.
    ASSERT_TRUE(s.rig.run_until([&] { return s.rig.window->scan_locked(); }, 10));
    ASSERT_TRUE(s.rig.run_until([&] { return !s.rig.window->scan_locked(); }, 60));
    s.rig.run_for(4);
    EXPECT_LT(spectrum.scan_count, spectrum.scan_total) << "points were lost";
    EXPECT_FALSE(s.rig.window->toolbar_button(3)->isEnabled());
    ASSERT_TRUE(s.rig.window->toolbar_button(4)->isEnabled()) << "Stop is the way out";
    s.rig.window->toolbar_button(4)->trigger();
    EXPECT_TRUE(s.rig.window->toolbar_button(3)->isEnabled());
    EXPECT_FALSE(s.rig.window->toolbar_button(4)->isEnabled());
}
