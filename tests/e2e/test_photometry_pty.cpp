// Photometry on the real clock: lumora-sim serves a pseudo-terminal, the program drives it
// through QSerialPort and the real event loop, and the cycle wait is the real single-shot timer.
#include "photometry_rig.h"
#include "platform/numeric_text.h"
#include "pty_program.h"

#include <QTest>
#include <gtest/gtest.h>

using namespace lumora;

namespace {

// With LUMORA_SHOT_DIR set, keeps a picture of a window for a look by eye.
void keep_picture(QWidget& w, const char* name) {
    const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR");
    if (!dir.isEmpty()) w.grab().save(dir + "/" + name + ".png");
}

double number(const QString& text) {
    return val(text.toStdString());
}

} // namespace

TEST(PhotometryPty, CyclesWithAWaitOnTheRealClockKeepTheWindowLive) {
    reset_photometry();
    test::pty_program p({"--speed", "4"});
    ASSERT_TRUE(p.live());
    p.window->resize(900, 600);
    p.window->show();
    p.window->menu_action("mnuFuncPhotometry")->trigger();
    auto* fn = qobject_cast<frmPhotometry*>(p.window->current_function());
    ASSERT_NE(fn, nullptr);
    test::photometry_setup_choice c;
    c.cycles = 3;
    c.interval = 2;
    c.advanced = true;
    c.signs = {1, 0, 0}; // R = K1 * (WL1 - WL2) + K2 * (WL3 + WL4), K1 = 2, K2 = 0.5
    auto* dlg = qobject_cast<dlgPhotometry*>(p.window->current_setup_dialog());
    test::fill_setup(*dlg, c);
    dlg->txtInst(4)->setText(QStringLiteral("2"));
    dlg->txtInst(5)->setText(QStringLiteral("0.5"));
    keep_picture(*dlg, "photometry_dialog");
    dlg->cmdOk_Click();
    grid& g = fn->fgdData();
    const auto idle = [&] {
        return shared.measure_mode == mm_lambda_panel && !fn->cycle_waiting() &&
               p.window->toolbar_button(3)->isEnabled();
    };

    EXPECT_EQ(g.TextMatrix(0, 0), QStringLiteral("No. (Unit=ABS)"));
    EXPECT_EQ(g.horizontalHeaderItem(1)->text(), QStringLiteral("      450nm"));
    EXPECT_TRUE(g.horizontalHeaderItem(1)->textAlignment() & Qt::AlignRight);
    EXPECT_EQ(g.TextMatrix(0, 4), QStringLiteral("               R"));

    EXPECT_EQ(p.sim->control("sample blank"), QStringLiteral("ok sample blank"));
    p.window->toolbar_button(2)->trigger();
    ASSERT_TRUE(test::wait_until(idle, 30000)) << p.panel(6).toStdString();
    EXPECT_EQ(p.panel(2), QStringLiteral("0.000A"));
    EXPECT_EQ(g.TextMatrix(1, 0), QStringLiteral("1  V Zero"));
    for (int k = 1; k <= 3; ++k)
        EXPECT_EQ(g.TextMatrix(1, k), QStringLiteral("0.000"));

    p.sim->control("sample dye");
    p.window->toolbar_button(3)->trigger();
    EXPECT_EQ(p.panel(6), QStringLiteral("Preparing..."));
    // In the first wait a click on a full row goes through the event loop like any other.
    ASSERT_TRUE(test::wait_until([&] { return fn->cycle_waiting(); }, 30000));
    const int held = photometry_run.ph_data_count;
    const QRect cell = g.visualItemRect(g.item(2, 0));
    QTest::mouseClick(g.viewport(), Qt::LeftButton, {}, cell.center());
    EXPECT_EQ(g.TextMatrix(2, 0), QStringLiteral("2  X"));
    QTest::mouseClick(g.viewport(), Qt::LeftButton, {}, cell.center());
    EXPECT_EQ(g.TextMatrix(2, 0), QStringLiteral("2  V"));
    test::wait_until([] { return false; }, 500);
    EXPECT_TRUE(fn->cycle_waiting());
    EXPECT_EQ(photometry_run.ph_data_count, held) << "frames in the wait are no readings";

    ASSERT_TRUE(test::wait_until(idle, 60000)) << photometry_run.ph_data_count;
    EXPECT_EQ(p.panel(6), QStringLiteral("OK"));
    EXPECT_EQ(photometry_run.ph_data_count, 12);
    for (int b : {1, 2, 3, 15, 16})
        EXPECT_TRUE(p.window->toolbar_button(b)->isEnabled()) << b;
    EXPECT_FALSE(p.window->toolbar_button(4)->isEnabled());
    const int nm[3] = {450, 550, 650};
    for (int row = 2; row <= 4; ++row) {
        for (int k = 1; k <= 3; ++k)
            EXPECT_NEAR(number(g.TextMatrix(row, k)),
                        number(p.sim->control(QStringLiteral("absorbance %1").arg(nm[k - 1]))), 0.002)
                << row << "," << k;
        const double r = 2 * (number(g.TextMatrix(row, 1)) - number(g.TextMatrix(row, 2))) +
                         0.5 * (number(g.TextMatrix(row, 3)) + number(g.TextMatrix(row, 1)));
        EXPECT_NEAR(number(g.TextMatrix(row, 4)), r, 0.0005) << row;
    }
    fn->fgdData_Click(3);
    EXPECT_EQ(g.TextMatrix(3, 0), QStringLiteral("3  X"));
    keep_picture(*p.window, "photometry_main");
}
