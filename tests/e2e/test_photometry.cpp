// Photometry against the simulator: Zero and Read passes through the whole program, the cells
// against the model's absorbance, the cycle wait, and long runs that pass the thousandth reading.
#include "functions/photometry/photometry_rules.h"
#include "photometry_rig.h"
#include "platform/numeric_text.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace lumora;
using lumora::test::photometry_rig;
using lumora::test::photometry_setup_choice;

namespace {

// With LUMORA_SHOT_DIR set, keeps a picture of the window for a look by eye.
void keep_picture(QWidget& w, const char* name) {
    const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR");
    if (dir.isEmpty()) return;
    w.grab().save(dir + "/" + name + ".png");
}

double number(const QString& text) {
    return val(text.toStdString());
}

} // namespace

TEST(PhotometryRun, ZeroOnBlankThenCyclesOfTheDyeWithTheEquation) {
    photometry_rig p;
    ASSERT_NE(p.window, nullptr);
    ASSERT_NE(p.setup(), nullptr) << "entering opens the setup dialog";
    photometry_setup_choice c;
    c.cycles = 3;
    c.interval = 2;
    c.advanced = true;
    c.picks = {1, 2, 3, 1}; // R = K1 * (450 - 550) + K2 * (650 + 450)
    c.signs = {1, 0, 0};
    c.k1 = QStringLiteral("2");
    c.k2 = QStringLiteral("0.5");
    p.choose(c, [](dlgPhotometry& dlg) { keep_picture(dlg, "photometry_dialog"); });
    grid& g = p.window->fgdData();
    ASSERT_EQ(g.Cols(), 5);
    EXPECT_EQ(g.TextMatrix(0, 0), QStringLiteral("No. (Unit=ABS)"));
    EXPECT_EQ(g.TextMatrix(0, 1), QStringLiteral("      450nm"));
    EXPECT_EQ(g.TextMatrix(0, 4), QStringLiteral("               R"));
    EXPECT_TRUE(g.item(0, 1)->textAlignment() & Qt::AlignRight);

    ASSERT_TRUE(p.zero());
    EXPECT_NE(p.rig.find_write(2, "0.000A"), -1);
    EXPECT_EQ(p.cell(1, 0), QStringLiteral("1  V Zero"));
    for (int k = 1; k <= 3; ++k)
        EXPECT_EQ(p.cell(1, k), QStringLiteral("0.000")) << k;
    EXPECT_EQ(p.waits, 0) << "a Zero pass is one reading per wavelength, no cycles";

    p.rig.instrument.control("sample dye");
    const int from = static_cast<int>(p.rig.writes.size());
    int frames_ignored = 0;
    p.rig.window->toolbar_button(3)->trigger();
    EXPECT_EQ(p.rig.panel(6), QStringLiteral("Preparing..."));
    ASSERT_TRUE(p.run_pass(600, [&] {
        // The window stays live in the wait and takes no reading from the frames that come.
        const int held = photometry_run.ph_data_count;
        p.rig.run_for(1.0);
        if (p.rig.instrument.streaming()) ++frames_ignored;
        EXPECT_EQ(photometry_run.ph_data_count, held);
        EXPECT_EQ(shared.measure_mode, mm_photometry);
        p.window->fgdData_Click(1);
        EXPECT_EQ(p.cell(1, 0), QStringLiteral("1  X Zero"));
        p.window->fgdData_Click(1);
    }));
    EXPECT_EQ(p.waits, 2) << "between cycles, not after the last";
    EXPECT_EQ(frames_ignored, 2) << "the instrument streamed through both waits";
    EXPECT_NE(p.rig.find_write(6, "OK", from), -1);
    EXPECT_EQ(photometry_run.ph_data_count, 12);
    for (int b : {1, 2, 3, 15, 16})
        EXPECT_TRUE(p.rig.window->toolbar_button(b)->isEnabled()) << b;
    EXPECT_FALSE(p.rig.window->toolbar_button(4)->isEnabled());

    const int nm[3] = {450, 550, 650};
    for (int row = 2; row <= 4; ++row) {
        EXPECT_EQ(p.cell(row, 0), QStringLiteral("%1  V").arg(row));
        for (int k = 1; k <= 3; ++k)
            EXPECT_NEAR(number(p.cell(row, k)), p.model(nm[k - 1]), 0.002) << row << "," << k;
        const double r = 2 * (number(p.cell(row, 1)) - number(p.cell(row, 2))) +
                         0.5 * (number(p.cell(row, 3)) + number(p.cell(row, 1)));
        EXPECT_NEAR(number(p.cell(row, 4)), r, 0.0005) << row;
        EXPECT_EQ(p.cell(row, 4).indexOf('.'), p.cell(row, 4).size() - 4) << "three places";
    }
    p.window->fgdData_Click(3);
    EXPECT_EQ(p.cell(3, 0), QStringLiteral("3  X"));
    EXPECT_EQ(photometry_run.ph_marks[6].selected, 0);
    EXPECT_EQ(photometry_run.ph_marks[8].selected, 0);
    EXPECT_EQ(photometry_run.ph_marks[9].selected, 1);
    p.rig.window->resize(900, 600);
    keep_picture(*p.window, "photometry_grid");
    keep_picture(*p.rig.window, "photometry_main");
}

TEST(PhotometryRun, NeutralFiltersReadTheModelInAbsorbanceAndTransmittance) {
    photometry_rig p;
    p.choose({});
    ASSERT_TRUE(p.zero());
    int row = 2;
    for (double a : {0.1, 1.0, 2.5}) {
        p.rig.instrument.control("sample neutral:" + std::to_string(a));
        ASSERT_TRUE(p.read()) << a;
        for (int k = 1; k <= 3; ++k)
            EXPECT_NEAR(number(p.cell(row, k)), a, 0.002) << a << " column " << k;
        ++row;
    }
    p.rig.instrument.control("sample neutral:3.5");
    ASSERT_TRUE(p.read());
    for (int k = 1; k <= 3; ++k)
        EXPECT_EQ(p.cell(row, k), QStringLiteral("3.000")) << "this function's ceiling";
    EXPECT_EQ(p.rig.panel(2), QStringLiteral("3.000A"));

    // %T: a measuring change, so the grid starts again; the references stay.
    photometry_setup_choice c;
    c.mode = 1;
    p.rig.window->toolbar_button(1)->trigger();
    p.choose(c);
    EXPECT_EQ(photometry_run.ph_data_count, 0);
    EXPECT_EQ(p.cell(0, 0), QStringLiteral("No. (Unit=%T)"));
    row = 1;
    for (double a : {0.1, 1.0, 2.5}) {
        p.rig.instrument.control("sample neutral:" + std::to_string(a));
        ASSERT_TRUE(p.read()) << a;
        for (int k = 1; k <= 3; ++k)
            EXPECT_NEAR(number(p.cell(row, k)), 100 * std::pow(10, -a), 0.2) << a << " column " << k;
        ++row;
    }
}

TEST(PhotometryRun, AZeroOnAFilterMakesItTheReference) {
    photometry_rig p;
    p.choose({});
    p.rig.instrument.control("sample neutral:0.5");
    ASSERT_TRUE(p.zero());
    p.rig.instrument.control("sample blank");
    ASSERT_TRUE(p.read());
    for (int k = 1; k <= 3; ++k)
        EXPECT_EQ(p.cell(2, k), QStringLiteral("-0.300")) << "0.5 A brighter, held at -0.3";
}

TEST(PhotometryRun, StopGivesTheToolbarBackAndTheRunGoesOn) {
    photometry_rig p;
    photometry_setup_choice c;
    c.cycles = 2;
    p.choose(c);
    p.rig.instrument.control("sample dye");
    p.rig.window->toolbar_button(3)->trigger();
    ASSERT_TRUE(p.rig.run_until([] { return photometry_run.ph_data_count >= 2; }, 60));
    EXPECT_FALSE(p.rig.window->toolbar_button(3)->isEnabled());
    p.rig.window->toolbar_button(4)->trigger();
    EXPECT_TRUE(p.rig.window->toolbar_button(3)->isEnabled());
    EXPECT_EQ(shared.measure_mode, mm_photometry);
    ASSERT_TRUE(p.run_pass());
    EXPECT_EQ(photometry_run.ph_data_count, 6);
}

TEST(PhotometryRun, LeavingTheFunctionInACycleWaitEndsTheRun) {
    photometry_rig p;
    photometry_setup_choice c;
    c.cycles = 3;
    c.interval = 5;
    p.choose(c);
    p.rig.window->toolbar_button(3)->trigger();
    ASSERT_TRUE(p.rig.run_until([&] { return p.window->cycle_waiting(); }, 60));
    const auto sent = p.rig.commands_received().size();
    p.rig.window->menu_action("mnuFuncSpectrum")->trigger();
    p.rig.run_for(8);
    for (std::size_t i = sent; i < p.rig.commands_received().size(); ++i)
        EXPECT_NE(p.rig.commands_received()[i], 6) << "no move after leaving";
    EXPECT_EQ(photometry_run.ph_data_count, 3);
}

TEST(PhotometryRun, TwoLongRunsPassTheThousandthReadingAndWrapTheRing) {
    photometry_rig p;
    photometry_setup_choice c;
    c.lambdas = {400, 450, 500, 550, 600, 650, 700, 750, 800, 850};
    c.cycles = 99;
    p.choose(c);
    ASSERT_TRUE(p.zero());
    p.rig.instrument.control("sample neutral:0.2");
    ASSERT_TRUE(p.read(4000)) << "first run, at " << photometry_run.ph_data_count;
    EXPECT_EQ(photometry_run.ph_data_count, 1000);
    for (int row = 2; row <= 100; row += 49)
        for (int k = 1; k <= 10; ++k)
            ASSERT_NEAR(number(p.cell(row, k)), 0.2, 0.002) << row << "," << k;
    ASSERT_TRUE(p.read(4000)) << "second run, at " << photometry_run.ph_run_count;
    EXPECT_EQ(photometry_run.ph_data_count, 1000) << "held at the thousandth";
    EXPECT_EQ(photometry_run.ph_run_count, 990);
    int moves = 0;
    for (int code : p.rig.commands_received())
        moves += code == 6;
    EXPECT_GE(moves, 10 + 2 * 990) << "twice round the thousand slots of the ring";
    p.rig.instrument.control("sample neutral:0.7");
    ASSERT_TRUE(p.read(4000));
    EXPECT_NEAR(number(p.cell(101, 1)), 0.7, 0.002) << "reading 1000, written again and again";
    EXPECT_EQ(p.cell(101, 2), QString());
    EXPECT_EQ(photometry_run.ph_data_count, 1000);
}
