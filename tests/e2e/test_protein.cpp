// Protein analysis on the simulator: replicates of every standard and sample, their averages and
// spread, the fit's Cal-Conc. and Diff, both plots; the setup's assay table and limits; a blank
// standard that ends the fit's follow-up; a calibration with a negative reading.
#include "platform/numeric_text.h"
#include "plot/calibration_plot.h"
#include "plot/difference_plot.h"
#include "plot/palette.h"
#include "plot/plot_surface.h"
#include "protein_rig.h"

#include <QLayout>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabWidget>
#include <cmath>

namespace lumora::test {
namespace {

double cell_number(const QString& text) {
    return val(text.toStdString());
}

// The %CV cell as the samples' rule gives it from the cells above it.
QString expected_sample_cv(const protein_rig& p, int avg_row, int rep) {
    const double m = cell_number(p.sample(avg_row, 2));
    double sum = 0;
    for (int r = avg_row - rep; r < avg_row; ++r)
        sum += std::pow(cell_number(p.sample(r, 2)) - m, 2);
    const double cv = m == 0 ? 0 : 100 * std::sqrt(sum / (rep - 1)) / m;
    return format_text(cv, "#0.000") + "%";
}

void keep_picture(frmProtein& window, const QString& name) {
    const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR");
    if (dir.isEmpty()) return;
    window.resize(1000, 520);
    window.grab().save(dir + "/" + name + "_window.png");
    window.picProtein().grab_view().save(dir + "/" + name + "_plot.png");
    const int tab = window.tspData()->currentIndex();
    window.tspData()->setCurrentIndex(0);
    window.grab().save(dir + "/" + name + "_standards.png");
    window.tspData()->setCurrentIndex(tab);
}

int pixels_of(const plot_surface& pic, const QColor& color, int top, int bottom) {
    int n = 0;
    for (int y = top; y <= bottom; ++y)
        for (int x = 60; x <= 340; ++x)
            n += pic.logical_pixel(x, y) == color;
    return n;
}

// Three standards read three times each with fit 2, on the BCA wavelength.
void calibrate(protein_rig& p) {
    p.key_setup(5, 3, 3, 2, {"0.25", "0.5", "1.0"});
    p.boxes();
    p.setup().cmdOk_Click();
    ASSERT_EQ(p.boxes(), std::vector<QString>{"Please press RUN to read standards!"});
    EXPECT_EQ(p.window->tspData()->currentIndex(), 0);
    ASSERT_TRUE(p.zero());
    for (const char* c : {"0.25", "0.5", "1.0"})
        for (int j = 0; j < 3; ++j)
            ASSERT_TRUE(p.read(std::string("standard:") + c)) << c;
}

} // namespace

TEST(Protein, SetupAssaysLimitsAndRefusals) {
    protein_rig p;
    dlgProtein& dlg = p.setup();
    dlg.cmbInst()->setCurrentIndex(5);
    dlg.cmbInst_Click();
    EXPECT_EQ(dlg.cmbInst()->currentText(), "Bicinchoninate(BCA)");
    EXPECT_EQ(dlg.txtLambda()->text(), "562");
    EXPECT_FALSE(dlg.txtLambda()->isEnabled());
    dlg.cmbInst()->setCurrentIndex(6);
    dlg.cmbInst_Click();
    EXPECT_TRUE(dlg.txtLambda()->isEnabled()) << "General frees the wavelength";
    // Out of range is brought in silently.
    const std::vector<std::pair<QString, QString>> lambdas{
        {"200", "330"}, {"2000", "1100"}, {"612.4", "612"}};
    for (const auto& [typed, shown] : lambdas) {
        dlg.txtLambda()->setText(typed);
        dlg.txtLambda_LostFocus();
        EXPECT_EQ(dlg.txtLambda()->text(), shown) << typed.toStdString();
    }
    const std::vector<std::tuple<int, QString, QString>> fields{
        {2, "9", "5"}, {2, "0", "1"}, {3, "-2", "1"}, {3, "4", "4"}, {4, "70", "50"}, {4, "-1", "0"}};
    for (const auto& [i, typed, shown] : fields) {
        dlg.txtInst(i)->setText(typed);
        dlg.txtInst_LostFocus(i);
        EXPECT_EQ(dlg.txtInst(i)->text(), shown) << i << " " << typed.toStdString();
    }
    p.boxes();
    // The standards are refused in the order of the checks, and nothing is taken over.
    dlg.tspFit()->setCurrentIndex(3);
    dlg.txtStandard()->setText("2");
    dlg.cmdOk_Click();
    dlg.tspFit()->setCurrentIndex(1);
    p.key_in(1, "40000");
    p.key_in(2, "1");
    dlg.cmdOk_Click();
    p.key_in(1, "0");
    p.key_in(2, "0");
    dlg.cmdOk_Click();
    EXPECT_EQ(p.boxes(),
              (std::vector<QString>{"The standard number must >=3!",
                                    "The Conc. number must >=0 or <=30000!\nPlease key in again.",
                                    "There must be one Conc. value >0 at least!\nPlease key in again."}));
    // Letters do not get into a Conc. cell.
    p.key_in(1, "1a.5");
    EXPECT_EQ(dlg.fgdStandard().TextMatrix(1, 1), "1.5");
    dlg.txtInst(4)->setText("50");
    dlg.cmdOk_Click();
    EXPECT_EQ(p.boxes(), std::vector<QString>{"Please press RUN to read standards!"});
    EXPECT_EQ(protein.lambda, "612");
    EXPECT_EQ(protein.std_reps, 1);
    EXPECT_EQ(protein.sample_reps, 4);
    EXPECT_EQ(protein.delay, 50) << "kept, though nothing waits for it";
    EXPECT_EQ(protein.cal.std_conc[0], 1.5);
    // The layout the setup leaves: one replicate and an average per standard, Conc. filled in.
    EXPECT_EQ(p.window->fgdData().Rows(), 2 * 2 + 1);
    EXPECT_EQ(p.data(1, 0), "1-1");
    EXPECT_EQ(p.data(2, 0), "Avg1");
    EXPECT_EQ(p.data(2, 1), "1.500");
    EXPECT_EQ(p.data(4, 0), "Avg2");
    EXPECT_EQ(p.window->fgdSample().Rows(), 4 + 2);
}

TEST(Protein, ReplicatesAveragesAndTheDifferencePlot) {
    sim::Options noisy;
    noisy.noise_counts = 5000;
    noisy.seed = 17;
    protein_rig p(noisy);
    calibrate(p);
    const char* labels[12] = {"1-1", "1-2",  "1-3", "Avg1", "2-1", "2-2",
                              "2-3", "Avg2", "3-1", "3-2",  "3-3", "Avg3"};
    EXPECT_EQ(p.window->fgdData().Rows(), 13);
    for (int r = 1; r <= 12; ++r)
        EXPECT_EQ(p.data(r, 0), labels[r - 1]) << r;
    const double nominal[3] = {0.25, 0.5, 1.0};
    for (int k = 0; k < 3; ++k) {
        const int avg = 4 * k + 4;
        double sum = 0;
        for (int r = avg - 3; r < avg; ++r)
            sum += cell_number(p.data(r, 2));
        EXPECT_EQ(p.data(avg, 2), format_text(sum / 3, "#0.000")) << k;
        EXPECT_DOUBLE_EQ(protein.cal.std_abs[static_cast<std::size_t>(k)], cell_number(p.data(avg, 2)));
        // The standards' spread is taken on Cal-Conc. around the nominal Conc.
        double ss = 0;
        for (int r = avg - 3; r < avg; ++r)
            ss += std::pow(cell_number(p.data(r, 3)) - nominal[k], 2);
        EXPECT_EQ(p.data(avg, 5), format_text(100 * std::sqrt(ss / 2) / nominal[k], "#0.000") + "%") << k;
    }
    const calibration_set& s = protein.cal;
    for (int r = 1; r <= 12; ++r) {
        const double cal = conc_from_abs(2, s.fit_ka, s.fit_kb, 0, cell_number(p.data(r, 2)));
        EXPECT_EQ(p.data(r, 3), format_text(cal, "#0.000")) << r;
        EXPECT_EQ(p.data(r, 4), format_text(cal - cell_number(p.data(r, 1)), "#0.000")) << r;
        EXPECT_EQ(p.data(r, 5).isEmpty(), r % 4 != 0) << r;
    }
    EXPECT_EQ(p.boxes(), std::vector<QString>{"Please press RUN to read samples!"});
    EXPECT_EQ(p.window->tspData()->currentIndex(), 1);
    EXPECT_GT(s.fit_r2, 0.999);

    // Both plots: the curve, the average marks in the first curve colour and the replicates in
    // light blue, each also in the difference plot, whose zero line runs along row 470.
    const plot_surface& pic = p.window->picProtein();
    EXPECT_GT(pixels_of(pic, standard_color(12), 20, 300), 200) << "the curve";
    EXPECT_GT(pixels_of(pic, standard_color(9), 20, 300), 0);
    EXPECT_GT(pixels_of(pic, standard_color(9), 400, 540), 0);
    for (int r = 4; r <= 12; r += 4) {
        const int x = std::clamp(calibration_column(cell_number(p.data(r, 1)), s), 60, 340);
        const int y = difference_row(cell_number(p.data(r, 4)), protein.diff_min, protein.diff_max);
        EXPECT_EQ(pic.logical_pixel(x - 2, y), curve_color(1)) << r;
    }
    EXPECT_EQ(pic.logical_pixel(200, difference_zero_row), standard_color(8));
    EXPECT_EQ(pic.logical_pixel(200, difference_zero_row + 3), plot_interior());
    p.window->resize(1000, 520);
    p.window->layout()->activate();
    EXPECT_GT(pic.logical_size().height(), p.window->PicScroll()->viewport()->height());
    EXPECT_GT(p.window->PicScroll()->verticalScrollBar()->maximum(), 0) << "the picture scrolls";
    keep_picture(*p.window, "protein_3x3");

    // A sample read three times: its rows, its average back within 1 %, its spread by the rule.
    for (int j = 0; j < 3; ++j)
        ASSERT_TRUE(p.read("standard:0.5"));
    EXPECT_EQ(p.sample(1, 0), "1-1");
    EXPECT_EQ(p.sample(3, 0), "1-3");
    EXPECT_EQ(p.sample(4, 0), "Avg1");
    EXPECT_NEAR(cell_number(p.sample(4, 2)), 0.5, 0.005);
    EXPECT_EQ(p.sample(4, 3), expected_sample_cv(p, 4, 3));
    EXPECT_NE(p.sample(4, 3), "0.000%") << "the simulator's noise shows";
    EXPECT_EQ(p.window->fgdSample().Rows(), 3 + 4 + 2);

    // More groups: the spread the %CV cells report follows the spread of all the readings.
    double pooled = 0, all_sum = 0, all_sq = 0;
    const int groups = 6;
    for (int g = 1; g < groups; ++g)
        for (int j = 0; j < 3; ++j)
            ASSERT_TRUE(p.read("standard:0.5"));
    for (int g = 1; g <= groups; ++g) {
        EXPECT_EQ(p.sample(4 * g, 3), expected_sample_cv(p, 4 * g, 3)) << g;
        const double cv = cell_number(p.sample(4 * g, 3));
        pooled += cv * cv;
        for (int r = 4 * g - 3; r < 4 * g; ++r) {
            all_sum += cell_number(p.sample(r, 2));
            all_sq += std::pow(cell_number(p.sample(r, 2)), 2);
        }
    }
    const double n = 3.0 * groups, mean = all_sum / n;
    const double spread = 100 * std::sqrt((all_sq - n * mean * mean) / (n - 1)) / mean;
    EXPECT_GT(spread, 0.05);
    EXPECT_NEAR(std::sqrt(pooled / groups), spread, 0.6 * spread);
}

TEST(Protein, WithoutNoiseTheSpreadIsZero) {
    protein_rig p;
    calibrate(p);
    p.boxes();
    for (int j = 0; j < 3; ++j)
        ASSERT_TRUE(p.read("standard:0.8"));
    EXPECT_EQ(p.sample(4, 3), "0.000%");
    EXPECT_NEAR(cell_number(p.sample(4, 2)), 0.8, 0.008);
    EXPECT_TRUE(p.boxes().empty()) << "no limit and no question";
}

TEST(Protein, ABlankStandardEndsTheFollowUpWithoutAWord) {
    protein_rig p;
    p.key_setup(6, 3, 1, 2, {"0.5", "0", "1.0"});
    p.setup().cmdOk_Click();
    ASSERT_TRUE(p.zero());
    p.boxes();
    for (const char* c : {"0.5", "0", "1.0"})
        for (int j = 0; j < 3; ++j)
            ASSERT_TRUE(p.read(std::string("standard:") + c));
    EXPECT_TRUE(p.boxes().empty()) << "no message";
    EXPECT_NE(p.data(12, 3), "") << "Cal-Conc. and Diff of every row stay";
    EXPECT_NE(p.data(12, 4), "");
    EXPECT_TRUE(p.data(4, 5).endsWith("%")) << "the standard before the blank has its spread";
    EXPECT_EQ(p.data(8, 5), "");
    EXPECT_EQ(p.data(12, 5), "");
    EXPECT_EQ(pixels_of(p.window->picProtein(), standard_color(12), 20, 300), 0) << "no plot";
    EXPECT_EQ(p.window->tspData()->currentIndex(), 0);
    // The next Read reads a sample, with the coefficients the fit set.
    ASSERT_TRUE(p.read("standard:0.5"));
    EXPECT_EQ(protein.std_read, 9);
    EXPECT_EQ(p.sample(1, 0), "1-1");
    EXPECT_EQ(p.sample(2, 0), "Avg1");
    EXPECT_NEAR(cell_number(p.sample(2, 2)), 0.5, 0.01);
}

TEST(Protein, ANegativeReadingIsInvalidDataButTheCalibrationStands) {
    protein_rig p;
    p.key_setup(6, 1, 1, 2, {"0.5", "1.0"});
    p.setup().cmdOk_Click();
    ASSERT_TRUE(p.zero("neutral:0.3"));
    p.boxes();
    ASSERT_TRUE(p.read("blank"));
    ASSERT_TRUE(p.read("neutral:0.6"));
    EXPECT_LT(cell_number(p.data(1, 2)), 0);
    EXPECT_EQ(p.boxes(), (std::vector<QString>{"Invalid data!", "Please press RUN to read samples!"}));
    EXPECT_LT(protein.cal.abs_min, 0);
    EXPECT_FALSE(protein.reading_std);
}

TEST(Protein, AFitWithoutSolutionStillMovesOnToSamples) {
    protein_rig p;
    p.key_setup(6, 2, 1, 2, {"0.5", "1.0"});
    p.setup().cmdOk_Click();
    ASSERT_TRUE(p.zero());
    p.boxes();
    // Every reading the same ABS: a straight line with an offset has no solution.
    for (int j = 0; j < 4; ++j)
        ASSERT_TRUE(p.read("standard:0.5"));
    EXPECT_EQ(p.boxes(), (std::vector<QString>{"Invalid input!", "Please press RUN to read samples!"}));
    EXPECT_EQ(protein.cal.fit_ka, 1.0) << "the coefficients stand";
    EXPECT_EQ(p.data(1, 3), "") << "no Cal-Conc. without a fit";
    ASSERT_TRUE(p.read("standard:0.5"));
    EXPECT_EQ(p.sample(2, 0), "Avg1");
}

} // namespace lumora::test
