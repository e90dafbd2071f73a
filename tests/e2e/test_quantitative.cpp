// Quantitative on the simulator: a calibration read from Beer-Lambert standards gives the model
// back and evaluates samples by it; a calibration that cannot be fitted still moves on to the
// samples; the 100-sample question; a known factor; what the calibration plot shows.
#include "plot/calibration_plot.h"
#include "plot/palette.h"
#include "plot/plot_surface.h"
#include "quant_rig.h"

#include <QTabWidget>
#include <cmath>

namespace lumora::test {
namespace {

constexpr int kNm = 480;

// With LUMORA_SHOT_DIR set, keeps pictures of the window and its plot for a look by eye.
void keep_picture(frmQuant& window, const QString& name) {
    const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR");
    if (dir.isEmpty()) return;
    window.resize(900, 520);
    window.grab().save(dir + "/" + name + "_window.png");
    window.picQuant().grab_view().save(dir + "/" + name + "_plot.png");
}

// Pixels of `color` in the plot square.
int pixels_of(const plot_surface& pic, const QColor& color) {
    int n = 0;
    for (int y = 20; y <= 300; ++y)
        for (int x = 60; x <= 340; ++x)
            n += pic.logical_pixel(x, y) == color;
    return n;
}

// Pixels darker than the background in the equation block under the plot.
int text_pixels(const plot_surface& pic, int top, int bottom) {
    int n = 0;
    for (int y = top; y <= bottom; ++y)
        for (int x = 60; x <= 300; ++x)
            n += pic.logical_pixel(x, y).lightness() < 100;
    return n;
}

// Reads four standards with fit `type` and returns the rig ready for samples.
void calibrate(quant_rig& q, int type) {
    q.key_setup(kNm, "mg/dL", 0, type, {{"1"}, {"2"}, {"4"}, {"8"}});
    q.boxes();
    if (!qEnvironmentVariable("LUMORA_SHOT_DIR").isEmpty()) {
        q.setup().tsp1()->setCurrentIndex(1);
        q.setup().grab().save(qEnvironmentVariable("LUMORA_SHOT_DIR") + "/dlgQuant_standard.png");
    }
    q.setup().cmdOk_Click();
    ASSERT_EQ(q.boxes(), std::vector<QString>{"Please press RUN to read standards!"});
    EXPECT_EQ(q.window->tspData()->currentIndex(), 0);
    ASSERT_TRUE(q.zero());
    for (const char* c : {"1", "2", "4", "8"})
        ASSERT_TRUE(q.read(std::string("standard:") + c)) << c;
    EXPECT_EQ(q.boxes(), std::vector<QString>{"Please press RUN to read samples!"});
    EXPECT_EQ(q.window->tspData()->currentIndex(), 1);
    EXPECT_EQ(quant.std_type, 1) << "a read calibration counts as keyed in from now on";
}

class QuantReadStandards : public ::testing::TestWithParam<int> {};

TEST_P(QuantReadStandards, GiveTheModelBackAndSamplesFollowIt) {
    const int type = GetParam();
    quant_rig q;
    calibrate(q, type);
    // Beer-Lambert: Conc. over ABS is the same for every standard.
    q.rig.instrument.control("sample standard:1");
    const double per_unit = q.rig.instrument.true_absorbance(kNm);
    ASSERT_GT(per_unit, 0.1);
    const calibration_set& s = quant.cal;
    // The slope is Ka of a straight line and Kb of the second order, whose Ka and Kc vanish.
    const double slope = type == 4 ? s.fit_kb : s.fit_ka;
    EXPECT_NEAR(slope, 1 / per_unit, 0.005 / per_unit);
    if (type == 2) {
        EXPECT_NEAR(s.fit_kb, 0, 0.01);
    }
    if (type == 4) {
        EXPECT_NEAR(s.fit_ka, 0, 0.01);
        EXPECT_NEAR(s.fit_kc, 0, 0.01);
    }
    EXPECT_GE(s.fit_r2, 0.9999);
    for (int r = 1; r <= 4; ++r)
        EXPECT_EQ(q.window->fgdData().TextMatrix(r, 0), QString::number(r) + "  V");
    EXPECT_EQ(q.window->fgdData().TextMatrix(4, 2).toDouble(), std::round(8 * per_unit * 1000) / 1000);

    for (double c : {3.0, 6.5}) {
        ASSERT_TRUE(q.read("standard:" + std::to_string(c)));
        const int row = quant.sample_count;
        EXPECT_NEAR(quant.sample_conc[static_cast<std::size_t>(row)], c, 0.01 * c);
        EXPECT_EQ(q.window->fgdSample().TextMatrix(row, 0), QString::number(row) + "  V");
        // Conc. comes from the reading cut to three decimals.
        const double shown = q.window->fgdSample().TextMatrix(row, 1).toDouble();
        EXPECT_DOUBLE_EQ(quant.sample_conc[static_cast<std::size_t>(row)],
                         conc_from_abs(type, s.fit_ka, s.fit_kb, s.fit_kc, shown));
    }
    EXPECT_EQ(quant.sample_count, 2);
    // A click flips a sample's mark; a row past the count is left alone.
    q.window->fgdSample_Click(2);
    EXPECT_EQ(q.window->fgdSample().TextMatrix(2, 0), "2  X");
    q.window->fgdSample_Click(3);
    EXPECT_EQ(q.window->fgdSample().TextMatrix(3, 0), "");

    // The plot: a light blue cross at each standard, centred on the calibration line.
    const plot_surface& pic = q.window->picQuant();
    for (int k = 0; k < 4; ++k) {
        const int x = std::clamp(calibration_column(s.std_conc[static_cast<std::size_t>(k)], s), 60, 340);
        const int y = std::clamp(calibration_row(s.std_abs[static_cast<std::size_t>(k)], s), 20, 300);
        EXPECT_EQ(pic.logical_pixel(x - 2, y), standard_color(9)) << k;
        EXPECT_EQ(pic.logical_pixel(x, y + 2), standard_color(9)) << k;
        const double line_conc =
            conc_from_abs(type, s.fit_ka, s.fit_kb, s.fit_kc, s.std_abs[static_cast<std::size_t>(k)]);
        EXPECT_LE(std::abs(calibration_column(line_conc, s) - x), 1)
            << "cross off the line, standard " << k + 1;
    }
    EXPECT_GT(text_pixels(pic, 340, 340 + 4 * pic.text_height()), 100) << "the equation block";
    keep_picture(*q.window, QStringLiteral("quant_type%1").arg(type));
    EXPECT_TRUE(pic.accessibleDescription().contains("R squared 1.0000") ||
                pic.accessibleDescription().contains("R squared 0.9999"));

    // Every OK starts afresh: the readings are wiped and the next step told again.
    q.rig.window->toolbar_button(1)->trigger();
    q.setup().cmdOk_Click();
    EXPECT_EQ(q.boxes(), std::vector<QString>{"Please press RUN to read samples!"});
    EXPECT_EQ(quant.sample_count, 0);
    EXPECT_EQ(q.window->fgdSample().TextMatrix(1, 1), "");
    EXPECT_NEAR(type == 4 ? quant.cal.fit_kb : quant.cal.fit_ka, 1 / per_unit, 0.006 / per_unit)
        << "refitted from the ABS kept to three decimals";
}

INSTANTIATE_TEST_SUITE_P(Types, QuantReadStandards, ::testing::Values(1, 2, 4));

TEST(Quantitative, AFailedFitStillMovesOnToSamples) {
    quant_rig q;
    q.key_setup(kNm, "None", 0, 2, {{"1"}, {"2"}});
    q.setup().cmdOk_Click();
    ASSERT_TRUE(q.zero());
    q.boxes();
    // Both standards read as the same ABS: a straight line with an offset has no solution.
    ASSERT_TRUE(q.read("standard:1"));
    ASSERT_TRUE(q.read("standard:1"));
    EXPECT_EQ(q.boxes(), (std::vector<QString>{"Invalid input!", "Please press RUN to read samples!"}));
    EXPECT_EQ(quant.std_type, 1);
    EXPECT_FALSE(quant.reading_std);
    EXPECT_EQ(quant.cal.fit_ka, 1.0);
    EXPECT_EQ(quant.cal.fit_kb, 1.0);
    // Samples are still read, with the coefficients that stand.
    ASSERT_TRUE(q.read("standard:1"));
    const double a = q.window->fgdSample().TextMatrix(1, 1).toDouble();
    EXPECT_DOUBLE_EQ(quant.sample_conc[1], a + 1.0);
}

TEST(Quantitative, KnownFactorAndTheHundredthSample) {
    quant_rig q;
    q.key_setup(kNm, "U/L", 2, 4, {{"2", "0", "0"}});
    q.setup().cmdOk_Click();
    EXPECT_EQ(q.boxes(), std::vector<QString>{"Please press RUN to read samples!"});
    EXPECT_EQ(quant.cal.fit_r2, 1.0);
    EXPECT_EQ(quant.cal.fit_ka, 2.0);
    EXPECT_EQ(quant.cal.conc_min, 0.0);
    EXPECT_NEAR(quant.cal.conc_max, 18.0, 1e-9);
    // The curve, no crosses, and the equation block down to R squared (Kc is its fourth line).
    const plot_surface& pic = q.window->picQuant();
    EXPECT_GT(pixels_of(pic, standard_color(12)), 200);
    EXPECT_EQ(pixels_of(pic, standard_color(9)), 0);
    EXPECT_GT(text_pixels(pic, 340 + 4 * pic.text_height(), 340 + 5 * pic.text_height()), 20);
    keep_picture(*q.window, QStringLiteral("quant_factor"));
    ASSERT_TRUE(q.zero());
    ASSERT_TRUE(q.read("neutral:0.5"));
    EXPECT_NEAR(quant.sample_conc[1], 2 * 0.5 * 0.5, 0.005);

    // Up to 100 samples; the 100th asks whether to start again, and Cancel keeps them.
    prompts::script({box_answer::cancel, box_answer::cancel, box_answer::cancel});
    for (int i = 2; i <= 100; ++i)
        ASSERT_TRUE(q.read("neutral:0.1")) << i;
    EXPECT_EQ(q.boxes(), std::vector<QString>{"Data number >100, restart from 1 ?"});
    EXPECT_EQ(quant.sample_count, 100);
    // Read sets the mode before it asks; dropped at the question, nothing goes out, but the
    // stream still runs into the function: its next reading lands on row 101 and asks again.
    q.rig.instrument.clear_received_log();
    q.rig.window->toolbar_button(3)->trigger();
    EXPECT_EQ(q.boxes(), std::vector<QString>{"Data number >100, restart from 1 ?"});
    EXPECT_EQ(shared.measure_mode, mm_quantitative);
    EXPECT_TRUE(q.rig.window->toolbar_button(16)->isEnabled());
    ASSERT_TRUE(q.rig.run_until([] { return shared.measure_mode == mm_lambda_panel; }, 5));
    EXPECT_TRUE(q.rig.commands_received().empty());
    EXPECT_EQ(q.boxes(), std::vector<QString>{"Data number >100, restart from 1 ?"});
    EXPECT_EQ(quant.sample_count, 100);
    EXPECT_EQ(q.window->fgdSample().TextMatrix(100, 0), "100  V");
    EXPECT_EQ(q.window->fgdSample().TextMatrix(101, 1), "0.100");
    EXPECT_EQ(q.window->fgdSample().TextMatrix(101, 2), "");
    // OK starts from row 1.
    ASSERT_TRUE(q.read("neutral:0.3"));
    EXPECT_EQ(quant.sample_count, 1);
    EXPECT_NEAR(quant.sample_conc[1], 2 * 0.3 * 0.3, 0.005); // Ka A^2 with Kb and Kc 0
    EXPECT_EQ(q.window->fgdSample().TextMatrix(2, 1), "");
}

} // namespace
} // namespace lumora::test
