// The two Timescan windows and their dialog on their own, fed samples as the link hands them
// over: the curve bookkeeping, the frame rule of the drawing, the read-outs, the setup's checks,
// the pages read back from the grid and the end of a run at the 16-bit sample limit.
#include "functions/function_catalog.h"
#include "functions/timescan/dlgTimescan.h"
#include "functions/timescan/frmTimescan.h"
#include "functions/timescan/timescan_data.h"
#include "functions/timescan/timescan_setup.h"
#include "functions/timescan_interval/frmTimescan2.h"
#include "functions/timescan_interval/timescan_interval_data.h"
#include "link/link_context.h"
#include "link/response_decoder.h"
#include "platform/grid.h"
#include "platform/prompts.h"
#include "plot/palette.h"
#include "plot/plot_scaling.h"
#include "plot/plot_surface.h"
#include "plot/plot_tracking.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <gtest/gtest.h>
#include <memory>

using namespace lumora;

namespace {

constexpr std::int32_t dark = 500, blank = 100500;

// The raw frame of absorbance `a` against the blank at 500 nm.
std::int32_t raw_of(double a) {
    return dark + static_cast<std::int32_t>(std::lround((blank - dark) * std::pow(10.0, -a)));
}

class TimescanWindows : public ::testing::Test {
protected:
    void SetUp() override {
        reset_shared_state();
        apply_start_defaults();
        set_default_colors();
        link_ctx = link_context{};
        main_hooks = {};
        timescan_setup = TimescanSetup{};
        timescan_interval_setup = TimescanIntervalSetup{};
        reset_timescan_data();
        reset_timescan_interval_data();
        shared.dark_by_band[2] = dark;
        shared.reference_intensity[180] = blank;
        shared.link_ready = true;
        prompts::script();
        prompts::clear_shown();
    }
    void TearDown() override {
        span_.reset();
        interval_.reset();
        prompts::unscript();
        link_ctx = link_context{};
    }
    frmTimescan& span_window() {
        span_ = std::make_unique<frmTimescan>(*function_by_id(fid_timescan));
        shared.function_id = fid_timescan;
        return *span_;
    }
    frmTimescan2& interval_window() {
        interval_ = std::make_unique<frmTimescan2>(*function_by_id(fid_timescan2));
        shared.function_id = fid_timescan2;
        return *interval_;
    }
    // A whole fixed-span run, sample k of absorbance a(k).
    template <class F> void span_run(frmTimescan& w, F&& a) {
        shared.measure_mode = mm_timescan;
        w.run(toolbar_routine::read);
        for (int k = 0; k <= 280; ++k)
            w.show_data(raw_of(a(k)));
    }

    std::unique_ptr<frmTimescan> span_;
    std::unique_ptr<frmTimescan2> interval_;
};

} // namespace

TEST_F(TimescanWindows, TwentyOneReadsOverlayTwentyThenStartOverWithoutAWord) {
    frmTimescan& w = span_window();
    for (int run = 1; run <= 20; ++run)
        span_run(w, [run](int) { return run * 0.1; });
    EXPECT_EQ(timescan.ts_curve_count, 20);
    EXPECT_NEAR(timescan.ts_curves[140][20], 2.0, 1e-4);
    EXPECT_EQ(timescan.ts_curve_state[19], 1);
    EXPECT_EQ(shared.measure_mode, mm_lambda_panel) << "sample 280 ends the run";

    shared.measure_mode = mm_timescan;
    w.run(toolbar_routine::read);
    EXPECT_EQ(timescan.ts_curve_count, 1);
    EXPECT_EQ(timescan.ts_curve_state[1], 2);
    EXPECT_EQ(timescan.ts_curve_state[2], 0);
    EXPECT_EQ(timescan.ts_curves[140][20], 0.0) << "the twenty curves go at once";
    EXPECT_TRUE(prompts::shown().empty());
}

TEST_F(TimescanWindows, StretchesOnTheTopRowAreBlackOnTheBottomRowWhite) {
    frmTimescan& w = span_window();
    // ABS 4.5 lies above the high value of 3.0; -0.3 below the low value of 0.
    span_run(w, [](int k) { return k < 140 ? 9.0 : -1.0; });
    EXPECT_EQ(timescan.ts_curves[10][1], 4.5) << "the ceiling is 4.5 whatever the dialog's high";
    EXPECT_EQ(timescan.ts_curves[200][1], -0.3);
    const plot_surface& s = w.picTimescan();
    EXPECT_EQ(s.logical_pixel(plot_left + 50, plot_top), QColor(Qt::black));
    EXPECT_EQ(s.logical_pixel(plot_left + 200, plot_bottom), QColor(Qt::white));
    const bool drop = s.logical_pixel(plot_left + 139, plot_top + 140) == curve_color(1) ||
                      s.logical_pixel(plot_left + 140, plot_top + 140) == curve_color(1);
    EXPECT_TRUE(drop) << "the drop between them in the curve's colour";
}

TEST_F(TimescanWindows, ReadOutsGoByTheReadsViewSpanUntilTheNextRedraw) {
    frmTimescan& w = span_window();
    span_run(w, [](int k) { return k / 280.0; });
    EXPECT_EQ(timescan.view.view_span, 4) << "280 / 70 for a span of 30 s";
    shared.toolbar_locked = false;
    w.tracking().mouse_down(QPoint(plot_left + 140, 100), Qt::RightButton);
    EXPECT_EQ(w.fgdTrack().TextMatrix(1, 1), QStringLiteral("2.00sec"));
    EXPECT_EQ(w.fgdTrack().TextMatrix(1, 0), QStringLiteral("1  V"));
    w.zoom_data();
    EXPECT_EQ(timescan.view.view_span, 30);
    w.tracking().mouse_down(QPoint(plot_left + 140, 100), Qt::RightButton);
    EXPECT_EQ(w.fgdTrack().TextMatrix(1, 1), QStringLiteral("15.00sec")) << "numbering starts again at 1";
    EXPECT_EQ(w.fgdTrack().TextMatrix(1, 2), QStringLiteral("0.500A"));
}

TEST_F(TimescanWindows, SmoothChangesTheWorkingCurveAndOriginalBringsTheRawBack) {
    frmTimescan& w = span_window();
    span_run(w, [](int k) { return 1.0 + (k % 2 ? 0.05 : -0.05); });
    const ts_curve_array raw = timescan.ts_curves;
    w.run(toolbar_routine::smooth);
    EXPECT_NEAR(timescan.ts_curves[100][1], 1.0 + 0.05 * (-17 + 24 + 6) / 35.0, 1e-4);
    EXPECT_EQ(timescan.ts_org_curves, raw) << "the unsmoothed copy stays";
    EXPECT_NEAR(timescan.ts_current[100], timescan.ts_curves[100][1], 1e-12)
        << "the redraw shows the smoothed";
    w.run(toolbar_routine::zoom_original);
    EXPECT_EQ(timescan.ts_curves, raw);
}

TEST_F(TimescanWindows, PeaksOfTheCurveInHandWithTheirTimes) {
    frmTimescan& w = span_window();
    // Two bumps, at samples 70 and 210 of a 30 s span: 7.5 s and 22.5 s.
    span_run(w, [](int k) {
        return std::exp(-(k - 70) * (k - 70) / 50.0) + std::exp(-(k - 210) * (k - 210) / 50.0);
    });
    w.zoom_data();
    w.run(toolbar_routine::peak);
    grid& g = w.fgdPeak();
    ASSERT_EQ(g.Rows(), 3);
    EXPECT_EQ(g.TextMatrix(1, 0), QStringLiteral("1  V"));
    EXPECT_EQ(g.TextMatrix(1, 1), QStringLiteral("7.5sec"));
    EXPECT_EQ(g.TextMatrix(2, 1), QStringLiteral("22.5sec"));
    EXPECT_EQ(g.TextMatrix(2, 2), QStringLiteral("1.000A"));
}

TEST_F(TimescanWindows, SetupChecksClampsAndKeepsAFractionalWavelength) {
    dlgTimescan dlg;
    dlg.txtInst(2)->setText(QStringLiteral("1.0000"));
    dlg.txtInst(3)->setText(QStringLiteral("1.0005"));
    dlg.cmdOk_Click();
    ASSERT_EQ(prompts::shown().size(), 1u);
    EXPECT_EQ(prompts::shown()[0].text, QStringLiteral("High vaule - low value must >=0.001!"));
    EXPECT_EQ(prompts::shown()[0].title, QStringLiteral("Warning"));
    dlg.cmbMeasure()->setCurrentIndex(1);
    dlg.cmbMeasure_Click();
    EXPECT_EQ(dlg.lblInst(4)->text(), QStringLiteral("Low value(%T)="));
    dlg.txtInst(2)->setText(QStringLiteral("50"));
    dlg.txtInst(3)->setText(QStringLiteral("50.005"));
    dlg.cmdOk_Click();
    EXPECT_EQ(prompts::shown().back().text, QStringLiteral("High vaule - low value must >=0.01!"));
    EXPECT_EQ(timescan_setup.ts_mode, 0) << "nothing stored";

    dlg.txtInst(3)->setText(QStringLiteral("500"));
    dlg.txtInst_LostFocus(3);
    EXPECT_EQ(dlg.txtInst(3)->text(), QStringLiteral("120.00"));
    dlg.txtInst(0)->setText(QStringLiteral("3"));
    dlg.txtInst_LostFocus(0);
    EXPECT_EQ(dlg.txtInst(0)->text(), QStringLiteral("15"));
    dlg.txtInst(1)->setText(QStringLiteral("70"));
    dlg.txtInst_LostFocus(1);
    EXPECT_EQ(dlg.txtInst(1)->text(), QStringLiteral("50"));
    dlg.txtInst(5)->setText(QStringLiteral("0.01"));
    dlg.txtInst_LostFocus(5);
    EXPECT_EQ(dlg.txtInst(5)->text(), QStringLiteral("0.1"));
    dlg.cmbInst()->setEditText(QStringLiteral("200"));
    dlg.cmbInst_LostFocus();
    EXPECT_EQ(dlg.cmbInst()->currentText(), QStringLiteral("330"));
    dlg.cmbInst()->setEditText(QStringLiteral("546.5"));
    dlg.cmbInst_LostFocus();
    dlg.cmdOk_Click();
    EXPECT_EQ(timescan_setup.ts_wavelength, QStringLiteral("546.5"));
    EXPECT_EQ(timescan_setup.ts_span, 15.0);
    EXPECT_EQ(timescan_setup.ts_delay, 50.0);
    EXPECT_EQ(timescan_setup.ts_mode, 1);
}

TEST_F(TimescanWindows, FixedIntervalGreysTwoPrintBoxesAndLeavesItsOptions) {
    timescan_setup.ts_print_flag[4] = 0;
    timescan_interval_setup.ti_auto_zoom = 1;
    timescan_interval_setup.ti_overlay = 0;
    int entered = 0;
    main_hooks.enter_function = [&entered](int id) { entered = id; };
    shared.function_id = fid_timescan;
    dlgTimescan dlg;
    EXPECT_FALSE(dlg.Frame2()->isVisibleTo(&dlg));
    dlg.Check2()->setChecked(true);
    dlg.Check2_Click();
    EXPECT_TRUE(dlg.Frame2()->isVisibleTo(&dlg));
    EXPECT_FALSE(dlg.Frame3()->isVisibleTo(&dlg));
    EXPECT_EQ(dlg.Check1(4)->checkState(), Qt::PartiallyChecked);
    EXPECT_FALSE(dlg.Check1(5)->isEnabled());
    dlg.Check2()->setChecked(false);
    dlg.Check2_Click();
    EXPECT_EQ(dlg.Check1(4)->checkState(), Qt::Unchecked) << "the span form's own flag comes back";
    EXPECT_TRUE(dlg.Check1(4)->isEnabled());

    dlg.Check2()->setChecked(true);
    dlg.Check2_Click();
    dlg.chkStandard(0)->setChecked(false);
    dlg.chkStandard(1)->setChecked(true);
    dlg.txtInst(4)->setText(QStringLiteral("120"));
    dlg.cmdOk_Click();
    EXPECT_EQ(entered, fid_timescan2);
    EXPECT_EQ(timescan_interval_setup.ti_stop_time, 120.0);
    EXPECT_EQ(timescan_interval_setup.ti_auto_zoom, 1);
    EXPECT_EQ(timescan_interval_setup.ti_overlay, 0);
}

TEST_F(TimescanWindows, PagesAreDrawnFromTheGridsCellTexts) {
    frmTimescan2& w = interval_window();
    grid& g = w.fgdTrack();
    for (int k = 0; k < 600; ++k)
        g.AddItem(QStringLiteral("%1\t%2\t%3").arg(k).arg(k).arg(k == 300 ? "2.500" : "0.500"));
    w.init();
    EXPECT_EQ(timescan_interval.ti_page_count, 2);
    w.cmdPage_Click(1);
    EXPECT_EQ(w.page_shown(), 2);
    w.cmdPage_Click(0);
    EXPECT_EQ(w.page_shown(), 1);
    EXPECT_EQ(timescan_interval.view.view_start, 280);
    const plot_surface& s = w.picTimescan();
    const int flat = y_to_pixel(0.5, 3.0, 0);
    EXPECT_EQ(s.logical_pixel(plot_left + 10, flat), curve_color(1));
    EXPECT_EQ(s.logical_pixel(plot_left + 20, y_to_pixel(2.5, 3.0, 0)), curve_color(1)) << "sample 300";
    w.run(toolbar_routine::zoom_auto);
    EXPECT_NEAR(timescan_interval.view.view_high, 2.52, 1e-9);
    EXPECT_NEAR(timescan_interval.view.view_low, 0.48, 1e-9);

    // A cell edited by hand is what the plot shows.
    g.setTextMatrix(301, 2, QStringLiteral("0.500"));
    w.zoom_data();
    EXPECT_NE(s.logical_pixel(plot_left + 20, y_to_pixel(2.5, 2.52, 0.48)), curve_color(1));
}

TEST_F(TimescanWindows, RunEndsAtTheSixteenBitSampleLimitAndSaysSo) {
    frmTimescan2& w = interval_window();
    shared.measure_mode = mm_timescan2;
    w.run(toolbar_routine::read);
    timescan_interval_setup.ti_stop_time = 999999;
    timescan_interval.ti_ticks = 700000; // 35371 s: every sample is due
    timescan_interval.ti_sample_index = 32766;
    const std::uint8_t frame[6] = {68, 0, 0x30, 0x00, 0, 0};
    recv_message(frame, sizeof frame);
    EXPECT_EQ(timescan_interval.ti_sample_index, 32767);
    EXPECT_TRUE(prompts::shown().empty());
    recv_message(frame, sizeof frame);
    ASSERT_EQ(prompts::shown().size(), 1u);
    EXPECT_EQ(prompts::shown()[0].title, QStringLiteral("Warning"));
    EXPECT_EQ(prompts::shown()[0].text, QStringLiteral("The run has reached 32767 samples."));
    EXPECT_EQ(shared.measure_mode, mm_lambda_panel);
    EXPECT_EQ(timescan_interval.ti_sample_index, 0);
    EXPECT_TRUE(w.cmdPage(1)->isEnabled());
    const int rows = w.fgdTrack().Rows();
    EXPECT_EQ(w.fgdTrack().TextMatrix(rows - 1, 0), QStringLiteral("32767"));
    recv_message(frame, sizeof frame);
    EXPECT_EQ(w.fgdTrack().Rows(), rows) << "no frame appends after the end";
}
