// "Verify bandwidth" on the simulator: the width against the one the simulator was set to and
// against the rule applied here to the points sent; the markers and texts of the picture; a flat
// line, points past the end, and the wavelength the window returns to.
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
    static void point(std::int32_t v) {
        const std::uint8_t b[4] = {204, std::uint8_t(v >> 16), std::uint8_t(v >> 8), std::uint8_t(v)};
        recv_message(b, sizeof b);
    }
    bool read_on() const { return rig.window->toolbar_button(3)->isEnabled(); }
    bool ink(int x, int y) const { return window->picVerify().logical_pixel(x, y).lightness() < 100; }
};

// The rule as written for the check: base from points 13 and 65, first largest point, crossings
// strictly above half height searched inward from both ends.
double reference_width(std::vector<double> p) {
    p.resize(81, 0.0);
    std::size_t ip = 0, i = 0, j = 78;
    for (std::size_t k = 0; k <= 78; ++k)
        if (p[k] > p[ip]) ip = k;
    const double h = (p[ip] + (p[65] + p[13]) / 2) / 2;
    while (!(p[i] > h))
        ++i;
    while (!(p[j] > h))
        --j;
    const double f1 = (h - p[i - 1]) * 100 / (p[i] - p[i - 1]), f2 = (h - p[j + 1]) * 100 / (p[j] - p[j + 1]);
    return static_cast<double>(j + 2 - i) * 0.36 - (f1 + f2) * 0.0036;
}

class VerifyWidth : public ::testing::TestWithParam<std::tuple<double, double>> {};

TEST_P(VerifyWidth, MatchesTheLineAndTheRuleOnThePointsSent) {
    const auto [fwhm, noise] = GetParam();
    sim::Options o;
    o.noise_counts = noise;
    o.seed = 19;
    verify_rig v(o);
    const double before = shared.lambda_now;
    v.rig.instrument.control("fwhm " + std::to_string(fwhm));
    ASSERT_TRUE(v.read());
    ASSERT_EQ(v.sent.size(), 79u);
    EXPECT_EQ(v.rig.panel(2), format_text(v.sent.back() * 2.5 / 8388608 * 40, "##0.000") + "%I");
    EXPECT_DOUBLE_EQ(shared.lambda_now, 78);
    EXPECT_TRUE(v.read_on());
    ASSERT_TRUE(v.window->bandwidth());
    const bandwidth_result r = *v.window->bandwidth();
    EXPECT_NEAR(r.width, fwhm, noise > 0 ? 0.2 : 0.15);
    EXPECT_EQ(format_text(r.width, "0.00"), format_text(reference_width(v.sent), "0.00"));

    // Dashes of 5 on, 5 off from row 25 at 60 + 10 px per nm; a text on each of rows 340, 355, 370.
    for (double x : {r.left_nm, r.right_nm}) {
        const int col = 60 + cint(10 * x);
        EXPECT_TRUE(v.ink(col, 25) && v.ink(col, 29) && !v.ink(col, 32) && v.ink(col, 295)) << col;
    }
    for (int row : {340, 355, 370}) {
        int n = 0;
        for (int y = row; y < row + 12; ++y)
            for (int x = 60; x < 200; ++x)
                n += v.ink(x, y);
        EXPECT_GT(n, 40) << row;
    }
    const QString half = format_text(r.width / 2, "0.00");
    EXPECT_TRUE(v.window->picVerify().accessibleDescription().startsWith("Lambda(1)=-" + half +
                                                                         " nm. Lambda(2)=" + half + " nm."));
    const QString shots = qEnvironmentVariable("LUMORA_SHOT_DIR");
    if (!shots.isEmpty() && noise == 0)
        v.window->picVerify().grab_view().save(shots + QStringLiteral("/frmVerify_%1nm.png").arg(fwhm));

    v.rig.window->unload_form();
    EXPECT_EQ(v.rig.panel(6), "Running to previous position...");
    v.rig.run_for(2);
    EXPECT_NEAR(v.rig.instrument.grating_nm(), before, 0.01);
}

INSTANTIATE_TEST_SUITE_P(Fwhm, VerifyWidth,
                         ::testing::Values(std::tuple{1.0, 0.0}, std::tuple{2.0, 0.0}, std::tuple{4.0, 0.0},
                                           std::tuple{1.0, 20000.0}, std::tuple{2.0, 20000.0},
                                           std::tuple{4.0, 20000.0}));

TEST(Verify, PointsPastTheScanAreEvaluatedAgain) {
    verify_rig v;
    v.rig.window->tbToolBar_ButtonClick("Read");
    v.rig.instrument.control("fault silent on");
    for (int i = 0; i < 79; ++i)
        verify_rig::point(1000000 + std::max(0, 2000000 - 200000 * std::abs(i - 39)));
    EXPECT_NEAR(v.window->bandwidth()->width, 3.6, 1e-9);
    const int from = static_cast<int>(v.rig.writes.size());
    verify_rig::point(5000000);
    EXPECT_GE(v.rig.find_write(6, "OK...", from), 0);
    EXPECT_NEAR(v.window->bandwidth()->width, 3.6, 1e-9) << "the peak is sought among points 0..78";
}

TEST(Verify, AFlatLineGivesNothingAndPointsPastTheEndStopAtTheArray) {
    verify_rig v;
    v.rig.window->tbToolBar_ButtonClick("Read");
    v.rig.instrument.control("fault silent on"); // the points come from here instead
    for (int i = 0; i < 79; ++i)
        verify_rig::point(400000);
    EXPECT_FALSE(v.window->bandwidth());
    EXPECT_NE(v.rig.panel(6), "OK...");
    EXPECT_FALSE(v.read_on()) << "the toolbar stays off";
    for (int y = 340; y < 385; ++y)
        for (int x = 60; x < 200; ++x)
            ASSERT_FALSE(v.ink(x, y)) << "no text lines";

    // Points 79 and 80 have their places; 81 has none, and its handling ends there.
    verify_rig::point(5000000);
    verify_rig::point(1000000);
    EXPECT_DOUBLE_EQ(v.window->verify_raw()[79], 5000000);
    EXPECT_EQ(v.window->verify_points(), 81);
    EXPECT_EQ(v.rig.panel(1), "14.8nm");
    verify_rig::point(1000000);
    EXPECT_EQ(v.window->verify_points(), 81);
    EXPECT_EQ(v.rig.panel(1), "14.8nm");

    v.rig.window->unload_form();
    EXPECT_TRUE(v.read_on()) << "closing gives the toolbar back";
}

} // namespace
} // namespace lumora::test
