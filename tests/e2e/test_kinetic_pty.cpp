// Kinetic on the real serial path: lumora-sim serves a pseudo-terminal, the program drives it
// through QSerialPort and the real event loop, and its frames are the clock of the run.
#include "functions/kinetic/dlgKinetic.h"
#include "functions/kinetic/frmKinetic.h"
#include "functions/kinetic/kinetic_data.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "pty_program.h"

#include <QComboBox>
#include <QLineEdit>
#include <gtest/gtest.h>

using namespace lumora;

TEST(KineticPty, AFallingReactionGivesItsRateOverThePseudoTerminal) {
    reset_kinetic();
    // At speed 1: the reaction runs on the simulator's clock and the run on its frames.
    test::pty_program p({});
    ASSERT_TRUE(p.live());
    p.window->resize(1100, 800);
    p.window->show();
    p.window->menu_action("mnuFuncKinetic")->trigger();
    auto* fn = qobject_cast<frmKinetic*>(p.window->current_function());
    auto* dlg = qobject_cast<dlgKinetic*>(p.window->current_setup_dialog());
    ASSERT_TRUE(fn && dlg);
    dlg->txtInst(1)->setText(QStringLiteral("2"));  // lag
    dlg->txtInst(2)->setText(QStringLiteral("15")); // rate: the run starts at once
    dlg->txtInst(6)->setText(QStringLiteral("1000"));
    dlg->cmbUnit()->setCurrentText(QStringLiteral("U/L"));
    ASSERT_TRUE(dlg->cmdOk_Click());
    const auto idle = [&] { return p.idle(); };

    EXPECT_EQ(p.sim->control("sample blank"), QStringLiteral("ok sample blank"));
    p.window->toolbar_button(2)->trigger();
    ASSERT_TRUE(test::wait_until(idle, 30000)) << p.panel(6).toStdString();
    test::wait_until([] { return false; }, 1000); // the reference settles

    p.sim->control("sample reaction:-0.002");
    p.window->toolbar_button(3)->trigger();
    ASSERT_TRUE(test::wait_until([] { return kinetic.kn_sample_index == 36; }, 30000));
    const double at_lag = val(p.sim->control(QStringLiteral("absorbance 500")).toStdString());
    ASSERT_TRUE(test::wait_until(idle, 60000)) << kinetic.kn_sample_index;
    EXPECT_EQ(p.panel(6), QStringLiteral("OK"));
    EXPECT_NEAR(kinetic.fit.dabs_dt, -0.12, 0.0012);
    EXPECT_NEAR(kinetic.fit.abs0, at_lag, 0.003);
    grid& out = fn->fgdValley();
    ASSERT_EQ(out.Rows(), 2);
    EXPECT_EQ(out.TextMatrix(1, 1), QStringLiteral("500.00nm"));
    EXPECT_TRUE(out.TextMatrix(1, 3).startsWith('-'));
    EXPECT_NEAR(val(out.TextMatrix(1, 4).toStdString()), -120.0, 1.2);
}
