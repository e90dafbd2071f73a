// Photometry against the simulator on its virtual clock: the cells against the model's
// absorbance, Stop, leaving in a cycle wait, and long runs past the thousandth reading.
#include "photometry_rig.h"
#include "platform/numeric_text.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace lumora;
using lumora::test::photometry_rig;
using lumora::test::photometry_setup_choice;

namespace {

double number(const QString& text) {
    return val(text.toStdString());
}
QString cell(const photometry_rig& p, int row, int col) {
    return p.window->fgdData().TextMatrix(row, col);
}

} // namespace

TEST(PhotometryRun, NeutralFiltersReadTheModelInAbsorbanceAndTransmittance) {
    photometry_rig p;
    p.choose({});
    ASSERT_TRUE(p.zero());
    int row = 2;
    for (double a : {0.1, 1.0, 2.5, 3.5}) {
        p.rig.instrument.control("sample neutral:" + std::to_string(a));
        ASSERT_TRUE(p.read()) << a;
        for (int k = 1; k <= 3; ++k)
            EXPECT_NEAR(number(cell(p, row, k)), std::min(a, 3.0), 0.002) << a << " column " << k;
        ++row;
    }
    EXPECT_EQ(cell(p, 5, 2), QStringLiteral("3.000")) << "this function's ceiling";

    // %T is a measuring change: the grid starts again, the references stay.
    photometry_setup_choice c;
    c.mode = 1;
    p.rig.window->toolbar_button(1)->trigger();
    p.choose(c);
    EXPECT_EQ(cell(p, 0, 0), QStringLiteral("No. (Unit=%T)"));
    row = 1;
    for (double a : {0.1, 1.0, 2.5}) {
        p.rig.instrument.control("sample neutral:" + std::to_string(a));
        ASSERT_TRUE(p.read()) << a;
        for (int k = 1; k <= 3; ++k)
            EXPECT_NEAR(number(cell(p, row, k)), 100 * std::pow(10, -a), 0.2) << a << " column " << k;
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
        EXPECT_EQ(cell(p, 2, k), QStringLiteral("-0.300")) << "0.5 A brighter, held at -0.3";
}

TEST(PhotometryRun, StopGivesTheToolbarBackTheRunGoesOnAndLeavingInTheWaitEndsIt) {
    photometry_rig p;
    photometry_setup_choice c;
    c.cycles = 3;
    c.interval = 5;
    p.choose(c);
    p.rig.window->toolbar_button(3)->trigger();
    ASSERT_TRUE(p.rig.run_until([] { return photometry_run.ph_data_count >= 1; }, 60));
    EXPECT_FALSE(p.rig.window->toolbar_button(3)->isEnabled());
    p.rig.window->toolbar_button(4)->trigger();
    EXPECT_TRUE(p.rig.window->toolbar_button(3)->isEnabled());
    ASSERT_TRUE(p.rig.run_until([&] { return p.window->cycle_waiting(); }, 60));
    EXPECT_EQ(photometry_run.ph_data_count, 3) << "the first cycle went on to its end";
    const auto sent = p.rig.commands_received().size();
    p.rig.window->menu_action("mnuFuncSpectrum")->trigger();
    p.rig.run_for(8);
    const auto after = p.rig.commands_received();
    EXPECT_EQ(std::count(after.begin() + static_cast<std::ptrdiff_t>(sent), after.end(), 6), 0)
        << "no move after leaving";
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
            ASSERT_NEAR(number(cell(p, row, k)), 0.2, 0.002) << row << "," << k;
    p.rig.instrument.control("sample neutral:0.7");
    ASSERT_TRUE(p.read(4000)) << "second run, at " << photometry_run.ph_run_count;
    EXPECT_EQ(photometry_run.ph_data_count, 1000) << "held at the thousandth";
    EXPECT_EQ(photometry_run.ph_run_count, 990);
    const auto sent = p.rig.commands_received();
    EXPECT_GE(std::count(sent.begin(), sent.end(), 6), 10 + 2 * 990) << "twice round the ring";
    EXPECT_NEAR(number(cell(p, 101, 1)), 0.7, 0.002) << "reading 1000, written again and again";
    EXPECT_EQ(cell(p, 101, 2), QString());
}
