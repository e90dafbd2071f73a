// Kinetic on the real serial path: lumora-sim serves a pseudo-terminal, the program drives it
// through QSerialPort and the real event loop, and its frames are the clock of the run.
#include "app/frmMain.h"
#include "functions/kinetic/dlgKinetic.h"
#include "functions/kinetic/frmKinetic.h"
#include "functions/kinetic/kinetic_data.h"
#include "link/frmPortSet.h"
#include "link/shared_state.h"
#include "platform/comm_port.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "platform/status_bar.h"
#include "sim_process.h"
#include "store/database.h"
#include "store/settings_store.h"
#include "support/wait.h"

#include <QAction>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace lumora;
using lumora::test::sim_process;

TEST(KineticPty, AFallingReactionGivesItsRateOverThePseudoTerminal) {
    QTemporaryDir dir;
    // At speed 1: the reaction runs on the simulator's clock and the run on its frames.
    sim_process sim(dir.path(), {});
    ASSERT_TRUE(QFile::exists(sim.link)) << sim.process.readAllStandardError().toStdString();
    qputenv("LUMORA_COM1", sim.link.toLocal8Bit());
    reset_shared_state();
    reset_kinetic();
    ASSERT_EQ(db_open_file(dir.path() + "/Lumora.db", true), QString());
    load_settings();
    {
        frmMain window(make_serial_backend());
        window.Form_Load();
        set_default_colors();
        window.show_port_dialog();
        window.port_dialog().findChild<QPushButton*>("cmdPortOpen")->click();
        ASSERT_TRUE(test::wait_until(
            [&] {
                return shared.function_id == fid_no_function &&
                       window.sbStatusBar().text(6).startsWith("OK.");
            },
            60000));
        window.resize(1100, 800);
        window.show();
        window.menu_action("mnuFuncKinetic")->trigger();
        auto* fn = qobject_cast<frmKinetic*>(window.current_function());
        ASSERT_NE(fn, nullptr);
        auto* dlg = qobject_cast<dlgKinetic*>(window.current_setup_dialog());
        ASSERT_NE(dlg, nullptr);
        dlg->txtInst(1)->setText(QStringLiteral("2"));  // lag
        dlg->txtInst(2)->setText(QStringLiteral("15")); // rate: the run starts at once
        dlg->txtInst(6)->setText(QStringLiteral("1000"));
        dlg->cmbUnit()->setCurrentText(QStringLiteral("U/L"));
        ASSERT_TRUE(dlg->cmdOk_Click());
        const auto idle = [&] {
            return shared.measure_mode == mm_lambda_panel && window.toolbar_button(3)->isEnabled();
        };

        EXPECT_EQ(sim.control("sample blank"), QStringLiteral("ok sample blank"));
        window.toolbar_button(2)->trigger();
        ASSERT_TRUE(test::wait_until(idle, 30000)) << window.sbStatusBar().text(6).toStdString();
        test::wait_until([] { return false; }, 1000); // the reference settles

        sim.control("sample reaction:-0.002");
        window.toolbar_button(3)->trigger();
        ASSERT_TRUE(test::wait_until([] { return kinetic.kn_sample_index == 36; }, 30000));
        const double at_lag = val(sim.control(QStringLiteral("absorbance 500")).toStdString());
        ASSERT_TRUE(test::wait_until(idle, 60000)) << kinetic.kn_sample_index;
        EXPECT_EQ(window.sbStatusBar().text(6), QStringLiteral("OK"));
        EXPECT_NEAR(kinetic.fit.dabs_dt, -0.12, 0.0012);
        EXPECT_NEAR(kinetic.fit.abs0, at_lag, 0.003);
        grid& out = fn->fgdValley();
        ASSERT_EQ(out.Rows(), 2);
        EXPECT_EQ(out.TextMatrix(1, 1), QStringLiteral("500.00nm"));
        EXPECT_TRUE(out.TextMatrix(1, 3).startsWith('-'));
        EXPECT_NEAR(val(out.TextMatrix(1, 4).toStdString()), -120.0, 1.2);
        window.close();
    }
    db_close();
    qunsetenv("LUMORA_COM1");
}
