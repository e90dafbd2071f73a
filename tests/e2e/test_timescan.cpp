// Both Timescans against the simulator, noise off, so that each value names its frame: the
// sample schedule on the frame clock, the values against the model, the ends of the runs, and
// the pages of the interval form.
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "plot/palette.h"
#include "plot/plot_surface.h"
#include "plot/plot_tracking.h"
#include "timescan_rig.h"

#include <cmath>

using namespace lumora;
using lumora::test::timescan_rig;

namespace {

// The first frame count whose time reaches `due`; the first frame after Read counts 1.
std::int32_t first_frame_at(double due) {
    std::int32_t n = static_cast<std::int32_t>(std::floor(due / frame_seconds));
    while (n * frame_seconds < due)
        ++n;
    while (n > 1 && (n - 1) * frame_seconds >= due)
        --n;
    return std::max(n, 1);
}

// Somewhere inside the square, column x holds the colour.
bool curve_in_column(const plot_surface& s, int x, const QColor& color) {
    for (int y = plot_top; y <= plot_bottom; ++y)
        if (s.logical_pixel(x, y) == color) return true;
    return false;
}

// Top and left frame lines black, bottom and right white, all along.
bool frame_intact(const plot_surface& s) {
    for (int y = plot_top; y < plot_bottom; ++y)
        if (s.logical_pixel(plot_left - 1, y) != QColor(Qt::black) ||
            s.logical_pixel(plot_right + 1, y) != QColor(Qt::white))
            return false;
    for (int x = plot_left; x <= plot_right; ++x)
        if (s.logical_pixel(x, plot_top) != QColor(Qt::black) ||
            s.logical_pixel(x, plot_bottom) != QColor(Qt::white))
            return false;
    return true;
}

void keep_picture(QWidget& window, plot_surface& plot, const char* name) {
    const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR");
    if (dir.isEmpty()) return;
    window.resize(760, 900);
    window.grab().save(dir + "/" + name + "_window.png");
    plot.grab_view().save(dir + "/" + name + "_plot.png");
}

} // namespace

TEST(TimescanSpan, EachSampleIsTheFirstFrameDueAndMatchesTheModel) {
    for (const double span : {15.0, 30.0, 600.0})
        for (const double delay : {0.0, 5.0}) {
            SCOPED_TRACE(testing::Message() << "span " << span << " delay " << delay);
            timescan_rig t;
            t.set_span(span, delay);
            ASSERT_NE(t.span_window(), nullptr);
            ASSERT_TRUE(t.zero());
            t.rig.instrument.control("sample reaction:0.02");
            const int from = static_cast<int>(t.rig.writes.size());
            ASSERT_TRUE(t.read(span + delay + 20));
            ASSERT_EQ(t.taken.size(), 281u);
            for (std::size_t k = 0; k < t.taken.size(); ++k) {
                const double due = delay + static_cast<double>(k) * span / 280;
                ASSERT_EQ(t.taken[k].ticks, first_frame_at(due)) << "sample " << k;
                ASSERT_NEAR(timescan.ts_curves[k][1], t.taken[k].model, 0.002) << "sample " << k;
                ASSERT_EQ(timescan.ts_org_curves[k][1], timescan.ts_curves[k][1]);
            }
            EXPECT_EQ(timescan.ts_ticks, t.taken.back().ticks) << "the run ends on the frame of sample 280";
            EXPECT_EQ(timescan.ts_sample_index, 281);
            EXPECT_EQ(t.rig.panel(6), QStringLiteral("OK"));
            EXPECT_EQ(t.rig.panel(1), QStringLiteral("500nm"));
            if (delay == 0) continue;
            // The delay counts down in panel 1; once reading, no countdown is written.
            const int countdown = t.rig.find_write(1, "- 4.9sec", from);
            EXPECT_NE(countdown, -1);
            const int reading = t.rig.find_write(6, "Reading...", from);
            EXPECT_GT(reading, countdown);
            EXPECT_EQ(t.rig.find_write(1, "- 0.0sec", reading), -1) << "no countdown once reading";
            EXPECT_GT(t.rig.find_write(6, "OK", reading), reading);
        }
}

TEST(TimescanSpan, StopKeepsWhatWasTakenAndTheRestStaysZero) {
    timescan_rig t;
    t.set_span(30, 0);
    ASSERT_TRUE(t.zero());
    t.rig.instrument.control("sample neutral:0.5");
    t.rig.window->toolbar_button(3)->trigger();
    t.rig.run_for(10);
    t.rig.window->toolbar_button(4)->trigger();
    EXPECT_EQ(shared.measure_mode, mm_lambda_panel);
    EXPECT_EQ(timescan.ts_sample_index, 0);
    const std::size_t got = t.taken.size();
    ASSERT_GT(got, 50u);
    ASSERT_LT(got, 281u);
    EXPECT_NEAR(timescan.ts_curves[got - 1][1], 0.5, 0.002);
    EXPECT_EQ(timescan.ts_curves[got][1], 0.0);
    t.rig.run_for(2);
    EXPECT_EQ(t.taken.size(), got) << "no sample after Stop";
}

// The run's own move arms the lambda panel's zero; the run's end must drop it, or the sample in the
// beam becomes the reference and every later Read at that wavelength reads near 0.
TEST(TimescanSpan, EveryReadStaysAgainstTheBlank) {
    timescan_rig t;
    t.set_span(15, 0);
    ASSERT_TRUE(t.zero());
    t.rig.instrument.control("sample neutral:0.5");
    for (int run = 1; run <= 2; ++run) {
        ASSERT_TRUE(t.read(25));
        t.rig.run_for(1.5); // ten frames on the lambda panel between the runs
        EXPECT_NEAR(timescan.ts_curves[140][static_cast<std::size_t>(run)], 0.5, 0.002) << "run " << run;
    }
    EXPECT_EQ(t.rig.panel(2), QStringLiteral("0.500A"));
    // The second Read overlays: curve 1 stays, curve 2 is the current one.
    EXPECT_EQ(timescan.ts_curve_count, 2);
    EXPECT_EQ(timescan.ts_curve_state[1], 1);
    EXPECT_EQ(timescan.ts_curve_state[2], 2);
    EXPECT_EQ(timescan.ts_selected_curve, 1);
}

TEST(TimescanInterval, RowsASecondUntilTheStopTime) {
    timescan_rig t;
    t.set_interval(60, 1, 0);
    frmTimescan2* w = t.interval_window();
    ASSERT_NE(w, nullptr);
    EXPECT_EQ(shared.function_id, fid_timescan2);
    ASSERT_TRUE(t.zero());
    t.rig.instrument.control("sample reaction:0.02");
    ASSERT_TRUE(t.read(90));
    grid& g = w->fgdTrack();
    ASSERT_EQ(g.Rows(), 62) << "rows 0 to 60 under the header";
    for (int k = 0; k <= 60; ++k) {
        ASSERT_EQ(g.TextMatrix(k + 1, 0), QString::number(k));
        ASSERT_EQ(g.TextMatrix(k + 1, 1), format_text(k, "###0.0"));
        ASSERT_NEAR(val(g.TextMatrix(k + 1, 2).toStdString()), t.taken[static_cast<std::size_t>(k)].model,
                    0.002);
        ASSERT_EQ(t.taken[static_cast<std::size_t>(k)].ticks, first_frame_at(k));
    }
    EXPECT_NE(t.rig.panel(6), QStringLiteral("OK")) << "the end writes no OK";
    EXPECT_TRUE(w->cmdPage(0)->isEnabled());
    EXPECT_TRUE(w->cmdPage(1)->isEnabled());
}

TEST(TimescanInterval, EndTestOnlyRunsWhileReading) {
    timescan_rig t;
    t.set_interval(1, 1, 50);
    ASSERT_TRUE(t.zero());
    double ended_at = 0;
    link_ctx.hooks.timed[mm_timescan2].stop_now = [&ended_at, w = t.interval_window()] {
        ended_at = timescan_interval.ti_ticks * frame_seconds;
        w->stop_now();
    };
    ASSERT_TRUE(t.read(80));
    EXPECT_GE(ended_at, 51.0);
    EXPECT_LT(ended_at, 51.0 + frame_seconds);
    EXPECT_EQ(t.interval_window()->fgdTrack().Rows(), 3) << "samples at 50 and 51 s";
}

TEST(TimescanInterval, LongRunPagesBy280) {
    timescan_rig t;
    t.set_interval(150, 0.1, 0);
    frmTimescan2* w = t.interval_window();
    ASSERT_TRUE(t.zero());
    t.rig.instrument.control("sample reaction:0.005");
    ASSERT_TRUE(t.read(180));
    const int samples = w->fgdTrack().Rows() - 1;
    ASSERT_GT(samples, 1000);
    EXPECT_EQ(timescan_interval.ti_page_count, (samples - 1) / 280);
    EXPECT_EQ(w->page_shown(), timescan_interval.ti_page_count);
    w->cmdPage_Click(1);
    EXPECT_EQ(w->page_shown(), timescan_interval.ti_page_count) << "Next at the last page does nothing";
    while (w->page_shown() > 0)
        w->cmdPage_Click(0);
    w->cmdPage_Click(0);
    EXPECT_EQ(w->page_shown(), 0);
    w->cmdPage_Click(1);
    w->cmdPage_Click(1);
    EXPECT_EQ(w->page_shown(), 2);
    EXPECT_EQ(timescan_interval.view.view_start, 56) << "page 2 starts at 2 x 280 x 0.1 s";
    const plot_surface& s = w->picTimescan();
    EXPECT_TRUE(curve_in_column(s, plot_left, curve_color(1)));
    EXPECT_TRUE(curve_in_column(s, plot_right, curve_color(1))) << "281 samples fill columns 60 to 340";
    EXPECT_TRUE(frame_intact(s));
    keep_picture(*w, w->picTimescan(), "timescan_interval_page3");
}

TEST(TimescanSpan, TwentyOverlaidSawtoothsFillTheSquareWithTracksAndPeaks) {
    timescan_rig t;
    t.set_span(15, 0);
    frmTimescan* w = t.span_window();
    for (int run = 1; run <= 20; ++run) {
        // Each run's arrival re-arms a zero that the lambda panel takes after it: zero anew.
        ASSERT_TRUE(t.zero());
        const QString sample = QStringLiteral("sample reaction:%1").arg(0.01 * run);
        t.rig.instrument.control(sample.toStdString());
        t.rig.window->toolbar_button(3)->trigger();
        // A fresh cuvette every 4 s: the reading climbs and drops back, a tooth at a time.
        for (int i = 0; i < 5 && shared.measure_mode == mm_timescan; ++i) {
            t.rig.run_for(4);
            t.rig.instrument.control(sample.toStdString());
        }
        ASSERT_EQ(shared.measure_mode, mm_lambda_panel) << "run " << run;
    }
    EXPECT_EQ(timescan.ts_curve_count, 20);
    const plot_surface& s = w->picTimescan();
    // Sample 280 of the last curve stands in column 340; the frame around the square is intact.
    EXPECT_TRUE(curve_in_column(s, plot_right, curve_color(20)));
    EXPECT_TRUE(frame_intact(s));

    t.rig.window->toolbar_button(9)->trigger(); // Peak
    EXPECT_GE(w->fgdPeak().Rows(), 4) << "a peak before each drop";
    EXPECT_GE(w->fgdValley().Rows(), 4);
    for (int x : {120, 200, 300})
        w->tracking().mouse_down(QPoint(x, 150), Qt::RightButton);
    EXPECT_EQ(w->fgdTrack().Rows(), 4);
    EXPECT_EQ(w->fgdTrack().TextMatrix(3, 1), QStringLiteral("8.57sec"))
        << "column 240 by the Read's view span of 10 s, until the next redraw";
    keep_picture(*w, w->picTimescan(), "timescan_span_20_curves");
}
