// Kinetic against the simulator, noise off: the sample schedule on the frame clock, the rate of
// a reaction of known speed, the output rows over runs, Stop, the dialog's rules, and the plot.
#include "functions/timescan/timescan_data.h"
#include "kinetic_rig.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "plot/dlgZoom.h"
#include "plot/palette.h"
#include "plot/plot_scaling.h"
#include "plot/plot_surface.h"

#include <QTabBar>
#include <cmath>

using namespace lumora;
using lumora::test::kinetic_rig;
using lumora::test::kinetic_setup_values;

namespace {

std::int32_t first_frame_at(double due) {
    std::int32_t n = static_cast<std::int32_t>(std::floor(due / frame_seconds));
    while (n * frame_seconds < due)
        ++n;
    while (n > 1 && (n - 1) * frame_seconds >= due)
        --n;
    return std::max(n, 1);
}

bool color_in_column(const plot_surface& s, int x, const QColor& color) {
    for (int y = plot_top; y <= plot_bottom; ++y)
        if (s.logical_pixel(x, y) == color) return true;
    return false;
}

void keep_picture(frmKinetic& w, const char* name) {
    const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR");
    if (dir.isEmpty()) return;
    w.window()->resize(1100, 800);
    w.window()->grab().save(dir + "/" + name + "_main.png");
    w.grab().save(dir + "/" + name + "_window.png");
    w.picKinetic().grab_view().save(dir + "/" + name + "_plot.png");
}

} // namespace

TEST(Kinetic, TheUsersRunFromLagToRateAndTheOutputRowsThatStay) {
    prompts::script();
    prompts::clear_shown();
    kinetic_rig t;
    ASSERT_NE(t.setup(), nullptr);
    ASSERT_TRUE(t.apply(*t.setup(), {}));
    frmKinetic* w = t.window();
    ASSERT_NE(w, nullptr);
    ASSERT_TRUE(t.zero());
    t.rig.instrument.control("sample reaction:0.002");
    const int from = static_cast<int>(t.rig.writes.size());
    ASSERT_TRUE(t.read(150));

    // The stages in panel 6, with the lag counting up in panel 1.
    const int lag = t.rig.find_write(6, "lag time...", from);
    ASSERT_NE(lag, -1);
    EXPECT_NE(t.rig.find_write(1, "10.0sec", lag), -1);
    const int reading = t.rig.find_write(6, "reading...", lag);
    ASSERT_GT(reading, lag);
    EXPECT_EQ(t.rig.find_write(6, "delay...", from), -1) << "no delay was set";
    EXPECT_GT(t.rig.find_write(6, "OK", reading), reading);
    EXPECT_EQ(t.rig.panel(1), QStringLiteral("500nm"));

    // 281 samples, each on the first frame due, each the model's absorbance then.
    ASSERT_EQ(t.taken.size(), 281u);
    for (std::size_t k = 0; k < t.taken.size(); ++k) {
        const double due = 20.0 + static_cast<double>(k) * 80 / 280;
        ASSERT_EQ(t.taken[k].ticks, first_frame_at(due)) << "sample " << k;
        ASSERT_NEAR(kinetic.kn_samples[k], t.taken[k].model, 0.002) << "sample " << k;
    }

    // The rate and the row of the output table.
    EXPECT_NEAR(kinetic.fit.dabs_dt, 0.12, 0.0012);
    EXPECT_FLOAT_EQ(kinetic.fit.dc_dt, static_cast<float>(1000 * static_cast<double>(kinetic.fit.dabs_dt)));
    EXPECT_NEAR(kinetic.fit.abs0, t.taken[35].model, 0.002);
    grid& out = w->fgdValley();
    ASSERT_EQ(out.Rows(), 2);
    EXPECT_EQ(out.TextMatrix(1, 0), QStringLiteral("1  V"));
    EXPECT_EQ(out.TextMatrix(1, 1), QStringLiteral("500.00nm"));
    EXPECT_EQ(out.TextMatrix(1, 2), format_text(kinetic.fit.abs0, "#0.000") + "A");
    EXPECT_EQ(out.TextMatrix(1, 3), format_text(kinetic.fit.dabs_dt, "#0.0000"));
    EXPECT_EQ(out.TextMatrix(1, 4), format_text(kinetic.fit.dc_dt, "#0.0000"));

    // Five fit points in the sampled table, the differences of the values as shown.
    grid& points = w->fgdPeak();
    ASSERT_EQ(points.Rows(), 6);
    EXPECT_EQ(points.TextMatrix(1, 1), QStringLiteral("30.0sec"));
    EXPECT_EQ(points.TextMatrix(5, 1), QStringLiteral("90.0sec"));
    EXPECT_TRUE(points.TextMatrix(1, 3).isEmpty());
    for (int r = 2; r <= 5; ++r) {
        const double shown =
            val(points.TextMatrix(r, 2).toStdString()) - val(points.TextMatrix(r - 1, 2).toStdString());
        EXPECT_EQ(points.TextMatrix(r, 3), format_text(shown, "#0.000") + "A") << "row " << r;
    }

    // The picture: the line from column 95 to 306 through the crosses, the curve in light red.
    plot_surface& p = w->picKinetic();
    EXPECT_TRUE(color_in_column(p, 95, standard_color(5)));
    EXPECT_TRUE(color_in_column(p, 306, standard_color(5)));
    EXPECT_FALSE(color_in_column(p, 94, standard_color(5)));
    EXPECT_FALSE(color_in_column(p, 307, standard_color(5)));
    EXPECT_TRUE(color_in_column(p, 70, standard_color(12)) && color_in_column(p, 330, standard_color(12)));
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(color_in_column(p, 60 + cross_sample(kinetic_setup, i, 5) + 2, standard_color(9))) << i;
    keep_picture(*w, "kinetic_run");

    // Tracking: a right click adds the sample under it, up to 100 rows and no question.
    for (int i = 0; i < 105; ++i)
        w->plot_pressed(QPoint(100 + i, 150), Qt::RightButton);
    EXPECT_EQ(kinetic.tracks.track_count, 100);
    EXPECT_EQ(w->fgdTrack().Rows(), 101);
    EXPECT_TRUE(prompts::shown().empty());
    // Row 1 is column 100, sample 40: its own value and the fit's there.
    EXPECT_EQ(w->fgdTrack().TextMatrix(1, 2), format_text(kinetic.kn_samples[40], "#0.000") + "A");
    EXPECT_EQ(w->fgdTrack().TextMatrix(1, 3), format_text(kinetic.kn_fit[40], "#0.000") + "A");
    EXPECT_EQ(w->fgdTrack().TextMatrix(1, 1), format_text(kinetic_setup.sample_time(40), "#0.0sec"));
    w->table_row_click(0, 1);
    EXPECT_EQ(w->fgdTrack().TextMatrix(1, 0), QStringLiteral("1  X"));
    w->table_row_click(2, 1);
    EXPECT_EQ(w->fgdValley().TextMatrix(1, 0), QStringLiteral("1  X"));
    // A second Read keeps the first row and adds its own.
    ASSERT_TRUE(t.read(150));
    ASSERT_EQ(out.Rows(), 3);
    EXPECT_EQ(out.TextMatrix(1, 1), QStringLiteral("500.00nm"));
    EXPECT_EQ(out.TextMatrix(2, 0), QStringLiteral("2  V"));
    prompts::unscript();
}

TEST(Kinetic, TheRateOfAReactionWhateverTheLagDelayAndSign) {
    struct case_ {
        const char* sample;
        double rate_per_s;
        kinetic_setup_values v;
    };
    kinetic_setup_values lag30{};
    kinetic_setup_values delayed{};
    delayed.delay = 30;
    kinetic_setup_values early{};
    early.lag = 2;
    early.rate = 15;
    kinetic_setup_values falling{};
    falling.lag = 5;
    falling.rate = 30;
    const case_ cases[] = {{"reaction:0.002", 0.002, delayed},
                           {"reaction:0.0005", 0.0005, lag30},
                           {"reaction:0.002", 0.002, early},
                           {"reaction:-0.001", -0.001, falling}};
    for (const case_& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << c.sample << " lag " << c.v.lag << " rate " << c.v.rate << " delay " << c.v.delay);
        kinetic_rig t;
        ASSERT_TRUE(t.apply(*t.setup(), c.v));
        ASSERT_TRUE(t.zero());
        t.rig.instrument.control(std::string("sample ") + c.sample);
        const int from = static_cast<int>(t.rig.writes.size());
        ASSERT_TRUE(t.read(c.v.delay + c.v.lag + 2.0 * c.v.rate + 20));
        ASSERT_EQ(t.taken.size(), 281u);
        EXPECT_NEAR(kinetic.fit.dabs_dt, 60 * c.rate_per_s, std::abs(0.6 * c.rate_per_s));
        EXPECT_NEAR(kinetic.fit.dc_dt, 1000 * kinetic.fit.dabs_dt, 0.01);
        EXPECT_NEAR(kinetic.fit.abs0, t.taken[35].model, 0.002);
        if (c.rate_per_s < 0) {
            EXPECT_TRUE(t.window()->fgdValley().TextMatrix(1, 3).startsWith('-'));
        }
        if (c.v.delay > 0) {
            const int delay = t.rig.find_write(6, "delay...", from);
            EXPECT_NE(delay, -1);
            EXPECT_GT(t.rig.find_write(6, "lag time...", delay), delay);
        }
        if (c.v.rate == 15) {
            // Sample 0 stands for -0.5 s: the run starts at once, catching up a frame at a time,
            // and sample 35 is on time.
            EXPECT_EQ(t.rig.find_write(6, "lag time...", from), -1);
            EXPECT_EQ(t.taken[0].ticks, 1);
            EXPECT_EQ(t.taken[35].ticks, first_frame_at(2.0));
            keep_picture(*t.window(), "kinetic_early");
        }
    }
}

TEST(Kinetic, StopLeavesNoFitAndZeroesTheTimescanCounters) {
    kinetic_rig t;
    ASSERT_TRUE(t.apply(*t.setup(), {}));
    ASSERT_TRUE(t.zero());
    t.rig.instrument.control("sample reaction:0.002");
    timescan.ts_sample_index = 17;
    timescan.ts_ticks = 400;
    t.rig.window->toolbar_button(3)->trigger();
    t.rig.run_for(40);
    const std::size_t got = t.taken.size();
    ASSERT_GT(got, 10u);
    t.rig.window->toolbar_button(4)->trigger();
    EXPECT_EQ(shared.measure_mode, mm_lambda_panel);
    EXPECT_EQ(timescan.ts_sample_index, 0);
    EXPECT_EQ(timescan.ts_ticks, 0);
    t.rig.run_for(3);
    EXPECT_EQ(t.taken.size(), got) << "no sample after Stop";
    EXPECT_EQ(t.window()->fgdValley().Rows(), 1) << "no output row for a stopped run";
    EXPECT_EQ(t.window()->fgdPeak().Rows(), 1);
}

TEST(Kinetic, AutoZoomDrawsTheFitInTheZoomedScale) {
    kinetic_rig t;
    kinetic_setup_values v;
    v.auto_zoom = true;
    ASSERT_TRUE(t.apply(*t.setup(), v));
    ASSERT_TRUE(t.zero());
    t.rig.instrument.control("sample reaction:0.002");
    ASSERT_TRUE(t.read(150));
    const plot_view& view = kinetic.view;
    EXPECT_LT(view.view_high, 0.5);
    EXPECT_GT(view.view_low, 0.0);
    // The zoomed curve spans the square: near the bottom at the start, near the top at the end.
    plot_surface& p = t.window()->picKinetic();
    EXPECT_TRUE(color_in_column(p, 95, standard_color(5)));
    const int y_first = y_to_pixel(kinetic.kn_fit[35], view.view_high, view.view_low);
    const int y_last = y_to_pixel(kinetic.kn_fit[246], view.view_high, view.view_low);
    EXPECT_GT(y_first - y_last, 150) << "the line climbs most of the zoomed square";
    // The line meets every cross: at each cross's column the magenta lies within its arms.
    for (int i = 0; i < kinetic.cross_count; ++i) {
        const mark& m = kinetic.cross_marks[static_cast<std::size_t>(i)];
        bool met = false;
        for (int y = m.row - 2; y <= m.row + 2; ++y)
            met = met || p.logical_pixel(60 + m.column, y) == standard_color(5);
        EXPECT_TRUE(met) << "cross " << i << " at column " << 60 + m.column << ", row " << m.row;
    }
    keep_picture(*t.window(), "kinetic_auto_zoom");

    // Typed in: a new absorbance range, the time axis of the run kept; Original goes back.
    const plot_view run_view = view;
    t.rig.window->toolbar_button(7)->trigger();
    auto* zoom = t.rig.window->findChild<dlgZoom*>();
    ASSERT_NE(zoom, nullptr);
    EXPECT_FALSE(zoom->txtInst(0)->isEnabled());
    zoom->txtInst(2)->setText(QStringLiteral("0.1"));
    zoom->txtInst(3)->setText(QStringLiteral("0.2"));
    zoom->cmdOk_Click();
    EXPECT_DOUBLE_EQ(view.view_low, 0.1);
    EXPECT_DOUBLE_EQ(view.view_high, 0.2);
    EXPECT_EQ(view.view_start, run_view.view_start);
    EXPECT_EQ(view.view_stop, run_view.view_stop);
    t.rig.window->toolbar_button(8)->trigger();
    EXPECT_DOUBLE_EQ(view.view_high, 3.0);
    EXPECT_EQ(t.window()->fgdPeak().Rows(), 6) << "a redraw rewrites the fit points";
}

TEST(Kinetic, DialogRules) {
    prompts::script();
    prompts::clear_shown();
    kinetic_rig t;
    dlgKinetic& dlg = *t.setup();
    if (const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR"); !dir.isEmpty())
        dlg.grab().save(dir + "/kinetic_setup.png");
    // Clamped in silence; a wavelength with a fraction stays as typed.
    kinetic_rig::type(dlg, 0, 150);
    EXPECT_EQ(dlg.txtInst(0)->text(), QStringLiteral("99"));
    kinetic_rig::type(dlg, 2, 3);
    EXPECT_EQ(dlg.txtInst(2)->text(), QStringLiteral("15"));
    kinetic_rig::type(dlg, 6, 20000);
    EXPECT_EQ(dlg.txtInst(6)->text(), QStringLiteral("10000.000"));
    dlg.cmbInst()->setEditText(QStringLiteral("512.5"));
    dlg.cmbInst_LostFocus();
    EXPECT_EQ(dlg.cmbInst()->currentText(), QStringLiteral("512.5"));
    EXPECT_TRUE(prompts::shown().empty());

    // The one refusal: nothing is stored and the dialog stays.
    kinetic_rig::type(dlg, 4, 1.0);
    kinetic_rig::type(dlg, 5, 1.0005);
    EXPECT_FALSE(dlg.cmdOk_Click());
    ASSERT_EQ(prompts::shown().size(), 1u);
    EXPECT_EQ(prompts::shown()[0].text, QStringLiteral("High vaule - low value must >=0.001!"));
    EXPECT_EQ(kinetic_setup.kn_sampling_number, 5);
    EXPECT_EQ(kinetic_setup.kn_wavelength, QStringLiteral("500"));

    ASSERT_TRUE(t.apply(dlg, {}));
    EXPECT_DOUBLE_EQ(kinetic_setup.kn_start_time, 20.0);
    EXPECT_DOUBLE_EQ(kinetic_setup.kn_window, 80.0);
    ASSERT_TRUE(t.zero());
    t.rig.instrument.control("sample reaction:0.002");
    ASSERT_TRUE(t.read(150));
    ASSERT_EQ(t.window()->fgdValley().Rows(), 2);

    // The same setup again keeps the output; a new factor alone clears it.
    ASSERT_TRUE(t.apply(t.open_setup(), {}));
    EXPECT_EQ(t.window()->fgdValley().Rows(), 2);
    kinetic_setup_values v;
    v.factor = 500;
    ASSERT_TRUE(t.apply(t.open_setup(), v));
    EXPECT_EQ(t.window()->fgdValley().Rows(), 1);
    EXPECT_TRUE(kinetic.outputs.empty());
    prompts::unscript();
}
