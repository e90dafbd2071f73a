// System setup and the bandwidth check over the real serial path: lumora-sim on a
// pseudo-terminal, the program on the real clock and event loop.
#include "app/frmMain.h"
#include "link/frmPortSet.h"
#include "link/shared_state.h"
#include "platform/comm_port.h"
#include "platform/prompts.h"
#include "platform/status_bar.h"
#include "sim_process.h"
#include "store/database.h"
#include "store/settings_store.h"
#include "support/wait.h"
#include "system/dlgSystem.h"
#include "system/frmVerify.h"

#include <QAction>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace lumora;

TEST(SystemPty, PropertySetupAndBandwidthOverARealPseudoTerminal) {
    QTemporaryDir dir;
    test::sim_process sim(dir.path(), {"--speed", "4", "--sample", "line656"});
    ASSERT_TRUE(QFile::exists(sim.link)) << sim.process.readAllStandardError().toStdString();
    qputenv("LUMORA_COM1", sim.link.toLocal8Bit());
    reset_shared_state();
    prompts::script();
    ASSERT_EQ(db_open_file(dir.path() + "/Lumora.db", true), QString());
    load_settings();
    {
        frmMain window(make_serial_backend());
        const auto panel = [&](int n) { return window.sbStatusBar().text(n); };
        window.Form_Load();
        set_default_colors();
        window.show_port_dialog();
        window.port_dialog().findChild<QPushButton*>("cmdPortOpen")->click();
        ASSERT_TRUE(test::wait_until(
            [&] { return shared.function_id == fid_no_function && panel(6).startsWith("OK."); }, 60000));
        const double before = shared.lambda_now;

        window.menu_action("mnuFuncSysSetup")->trigger();
        auto* dlg = window.findChild<dlgSystem*>("dlgSystem");
        ASSERT_NE(dlg, nullptr);
        dlg->txtOption()->setText("650");
        dlg->cmdOption(0)->click();
        dlg->cmdOption(3)->click();
        ASSERT_TRUE(test::wait_until([] { return prompts::shown().size() == 2; }, 10000));
        EXPECT_EQ(prompts::shown()[0].text, "Wavelength saved!");
        EXPECT_EQ(prompts::shown()[1].text, "Light intensity level OK.");
        dlg->cmdOk()->click();
        EXPECT_EQ(panel(6), "Running to previous position...");

        EXPECT_EQ(sim.control("fwhm 2.0"), "ok fwhm 2.000");
        window.menu_action("mnuFuncSysVerify")->trigger();
        auto* verify = qobject_cast<frmVerify*>(window.current_function());
        ASSERT_NE(verify, nullptr);
        window.tbToolBar_ButtonClick("Read");
        ASSERT_TRUE(test::wait_until([&] { return panel(6) == "OK..."; }, 20000));
        EXPECT_EQ(verify->verify_points(), 79);
        ASSERT_TRUE(verify->bandwidth());
        EXPECT_NEAR(verify->bandwidth()->width, 2.0, 0.15);
        EXPECT_TRUE(panel(2).endsWith("%I"));

        window.unload_form();
        EXPECT_DOUBLE_EQ(shared.lambda_now, before);
        ASSERT_TRUE(test::wait_until([&] { return panel(6).startsWith("OK."); }, 10000))
            << "the live reading is back at the wavelength before";
        EXPECT_EQ(db_query("SELECT ParaValue FROM system where ParaName='Default WL'").Fields(0), "650");
    }
    prompts::unscript();
    db_close();
}
