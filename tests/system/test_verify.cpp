// "Verify bandwidth" on the simulator: the width found on the 656.1 nm line against the width the
// simulator was set to, and against the evaluation done here on the points as they were sent; the
// picture's markers and texts; what the window does with a flat line and with points past the
// end; and the wavelength it returns to.
#include "link/response_decoder.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "plot/plot_surface.h"
#include "sim_rig.h"
#include "system/frmVerify.h"

#include <QAction>
#include <cmath>
#include <gtest/gtest.h>

namespace lumora::test {
namespace {

struct verify_rig {
    sim_rig rig;
    frmVerify* window = nullptr;
    std::vector<double> sent; // the points as the decoder handed them over

    explicit verify_rig(sim::Options options = {}) : rig(options) {
        prompts::script();
        EXPECT_TRUE(rig.open_port_until_live());
        rig.window->menu_action("mnuFuncSysVerify")->trigger();
        window = qobject_cast<frmVerify*>(rig.window->current_function());
        auto show = link_ctx.hooks.verify_show_data;
        link_ctx.hooks.verify_show_data = [this, show](std::int32_t raw) {
            sent.push_back(raw);
            show(raw);
        };
    }
    ~verify_rig() { prompts::unscript(); }

    bool read() {
        sent.clear();
        rig.window->tbToolBar_ButtonClick("Read");
        return rig.run_until([this] { return rig.panel(6) == "OK..." && !rig.window->scan_locked(); }, 30);
    }
    // A point of the scan as the instrument sends it.
    static void point(std::int32_t value) {
        const std::uint8_t b[4] = {204, static_cast<std::uint8_t>(value >> 16),
                                   static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
        recv_message(b, sizeof b);
    }
    bool read_button_on() const { return rig.window->toolbar_button(3)->isEnabled(); }
};

// The half-height width taken from the points 0..78 the way the window is to take it: base from
// points 13 and 65, first largest point, crossings strictly above half height.
double reference_width(std::vector<double> p) {
    p.resize(81, 0.0);
    const double b = (p[65] + p[13]) / 2;
    std::size_t ip = 0;
    for (std::size_t i = 0; i <= 78; ++i)
        if (p[i] > p[ip]) ip = i;
    const double h = (p[ip] + b) / 2;
    std::size_t i = 0;
    while (!(p[i] > h))
        ++i;
    std::size_t j = 78;
    while (!(p[j] > h))
        --j;
    const double f1 = (h - p[i - 1]) * 100 / (p[i] - p[i - 1]);
    const double f2 = (h - p[j + 1]) * 100 / (p[j] - p[j + 1]);
    return static_cast<double>(j + 1 - (i - 1)) * 0.36 - (f1 + f2) * 0.0036;
}

// With LUMORA_SHOT_DIR set, keeps the window and its plot for a look by eye.
void keep_picture(frmVerify& window, const QString& name) {
    const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR");
    if (dir.isEmpty()) return;
    window.resize(460, 440);
    window.grab().save(dir + "/" + name + "_window.png");
    window.picVerify().grab_view().save(dir + "/" + name + "_plot.png");
}

bool dark(const plot_surface& pic, int x, int y) {
    return pic.logical_pixel(x, y).lightness() < 100;
}

class VerifyWidth : public ::testing::TestWithParam<double> {};

TEST_P(VerifyWidth, MatchesTheLineAndTheRuleOnThePointsSent) {
    const double fwhm = GetParam();
    verify_rig v;
    ASSERT_NE(v.window, nullptr);
    EXPECT_EQ(v.window->windowTitle(), "Verify Bandwidth");
    const double before = shared.lambda_now;
    v.rig.instrument.control("sample line656");
    v.rig.instrument.control("fwhm " + std::to_string(fwhm));
    ASSERT_TRUE(v.read());
    ASSERT_EQ(v.sent.size(), 79u);
    EXPECT_EQ(v.window->verify_points(), 79);
    EXPECT_GE(v.rig.find_write(6, "Measuring bandwidth..."), 0);
    EXPECT_EQ(v.rig.panel(1), "14.0nm") << "point 78";
    EXPECT_EQ(v.rig.panel(2), format_text(v.sent.back() * 2.5 / 8388608 * 40, "##0.000") + "%I");
    EXPECT_DOUBLE_EQ(shared.lambda_now, 78) << "the scan's end stands in for the wavelength";
    EXPECT_TRUE(v.read_button_on());

    ASSERT_TRUE(v.window->bandwidth());
    const bandwidth_result r = *v.window->bandwidth();
    EXPECT_NEAR(r.width, fwhm, 0.15);
    EXPECT_EQ(format_text(r.width, "0.00"), format_text(reference_width(v.sent), "0.00"));

    // Dashed markers at 60 + 10 px per nm on each crossing, 5 on and 5 off from row 25 to 300.
    const plot_surface& pic = v.window->picVerify();
    for (double x : {r.left_nm, r.right_nm}) {
        const int col = 60 + cint(10 * x);
        EXPECT_TRUE(dark(pic, col, 25) && dark(pic, col, 29) && dark(pic, col, 295)) << col;
        EXPECT_FALSE(dark(pic, col, 32)) << "a gap at column " << col;
    }
    // The half-height crossings lie symmetric about the line's centre, point 39 (140.4 px).
    EXPECT_NEAR((r.left_nm + r.right_nm) / 2, 39 * 0.36, 0.05);
    // The three texts below the plot, each on its row.
    for (int row : {340, 355, 370}) {
        int ink = 0;
        for (int y = row; y < row + 12; ++y)
            for (int x = 60; x < 200; ++x)
                ink += dark(pic, x, y);
        EXPECT_GT(ink, 40) << "row " << row;
    }
    const QString described = pic.accessibleDescription();
    const QString half = format_text(r.width / 2, "0.00");
    EXPECT_TRUE(described.contains("Lambda(1)=-" + half + " nm")) << described.toStdString();
    EXPECT_TRUE(described.contains("Lambda(2)=" + half + " nm"));
    EXPECT_TRUE(described.contains("Bandwidth=" + format_text(r.width, "0.00") + " nm"));
    keep_picture(*v.window, QStringLiteral("frmVerify_%1nm").arg(fwhm, 0, 'f', 1));

    // Closing puts the instrument back where it stood before the window opened.
    v.rig.window->unload_form();
    EXPECT_EQ(v.rig.panel(6), "Running to previous position...");
    EXPECT_DOUBLE_EQ(shared.lambda_now, before);
    EXPECT_EQ(shared.function_id, fid_no_function);
    v.rig.run_for(2);
    EXPECT_NEAR(v.rig.instrument.grating_nm(), before, 0.01);
}

INSTANTIATE_TEST_SUITE_P(Fwhm, VerifyWidth, ::testing::Values(1.0, 2.0, 4.0));

TEST(Verify, NoiseKeepsTheWidthClose) {
    sim::Options o;
    o.noise_counts = 20000;
    o.seed = 19;
    verify_rig v(o);
    for (double fwhm : {1.0, 2.0, 4.0}) {
        v.rig.instrument.control("fwhm " + std::to_string(fwhm));
        ASSERT_TRUE(v.read()) << fwhm;
        ASSERT_TRUE(v.window->bandwidth());
        EXPECT_NEAR(v.window->bandwidth()->width, fwhm, 0.2);
        EXPECT_EQ(format_text(v.window->bandwidth()->width, "0.00"),
                  format_text(reference_width(v.sent), "0.00"));
    }
}

TEST(Verify, AFlatLineEndsTheEvaluationWithNoResult) {
    verify_rig v;
    v.rig.window->tbToolBar_ButtonClick("Read");
    EXPECT_FALSE(v.read_button_on());
    v.rig.instrument.control("fault silent on"); // the points come from here instead
    for (int i = 0; i < 79; ++i)
        verify_rig::point(400000);
    EXPECT_EQ(v.window->verify_points(), 79);
    EXPECT_FALSE(v.window->bandwidth());
    EXPECT_NE(v.rig.panel(6), "OK...");
    EXPECT_FALSE(v.read_button_on()) << "the toolbar stays off until the window closes";
    int ink = 0;
    for (int y = 340; y < 385; ++y)
        for (int x = 60; x < 200; ++x)
            ink += dark(v.window->picVerify(), x, y);
    EXPECT_EQ(ink, 0) << "no text lines";
    v.rig.window->unload_form();
    EXPECT_TRUE(v.read_button_on()) << "closing gives the toolbar back";
    EXPECT_FALSE(shared.toolbar_locked);
}

TEST(Verify, PointsPastTheScanAreEvaluatedAgainUntilTheArrayEnds) {
    verify_rig v;
    v.rig.window->tbToolBar_ButtonClick("Read");
    v.rig.instrument.control("fault silent on");
    // A triangle, top at 39, width ten points.
    for (int i = 0; i < 79; ++i)
        verify_rig::point(1000000 + std::max(0, 2000000 - 200000 * std::abs(i - 39)));
    ASSERT_TRUE(v.window->bandwidth());
    EXPECT_NEAR(v.window->bandwidth()->width, 3.6, 1e-9);
    const std::int16_t count = shared.verify_count;

    // Point 79, higher than all: stored, and evaluated again, where the peak is still sought
    // among points 0..78.
    const int from = static_cast<int>(v.rig.writes.size());
    verify_rig::point(5000000);
    EXPECT_EQ(v.window->verify_points(), 80);
    EXPECT_DOUBLE_EQ(v.window->verify_raw()[79], 5000000);
    EXPECT_GE(v.rig.find_write(6, "OK...", from), 0);
    ASSERT_TRUE(v.window->bandwidth());
    EXPECT_NEAR(v.window->bandwidth()->width, 3.6, 1e-9);
    verify_rig::point(1000000);
    EXPECT_EQ(v.window->verify_points(), 81);
    EXPECT_EQ(shared.verify_count, count + 2);

    // Point 81 has no place: its handling ends there, nothing counts it.
    verify_rig::point(1000000);
    EXPECT_EQ(v.window->verify_points(), 81);
    EXPECT_EQ(shared.verify_count, count + 2);
    EXPECT_DOUBLE_EQ(v.window->verify_curve()[81], 1000000 * 2.5 / 8388608);
}

} // namespace
} // namespace lumora::test
