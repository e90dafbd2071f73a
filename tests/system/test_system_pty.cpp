// System setup and the bandwidth check over the real serial path: lumora-sim on a
// pseudo-terminal, the program on the real clock and event loop.
#include "platform/prompts.h"
#include "pty_program.h"
#include "system/dlgSystem.h"
#include "system/frmVerify.h"

#include <QLineEdit>
#include <gtest/gtest.h>

using namespace lumora;

TEST(SystemPty, PropertySetupAndBandwidthOverARealPseudoTerminal) {
    prompts::script();
    test::pty_program p({"--speed", "4", "--sample", "line656"});
    ASSERT_TRUE(p.live());
    const double before = shared.lambda_now;

    p.window->menu_action("mnuFuncSysSetup")->trigger();
    auto* dlg = p.window->findChild<dlgSystem*>("dlgSystem");
    ASSERT_NE(dlg, nullptr);
    dlg->txtOption()->setText("650");
    dlg->cmdOption(0)->click();
    dlg->cmdOption(3)->click();
    ASSERT_TRUE(test::wait_until([] { return prompts::shown().size() == 2; }, 10000));
    EXPECT_EQ(prompts::shown()[0].text, "Wavelength saved!");
    EXPECT_EQ(prompts::shown()[1].text, "Light intensity level OK.");
    dlg->cmdOk()->click();
    EXPECT_EQ(p.panel(6), "Running to previous position...");

    EXPECT_EQ(p.sim->control("fwhm 2.0"), "ok fwhm 2.000");
    p.window->menu_action("mnuFuncSysVerify")->trigger();
    auto* verify = qobject_cast<frmVerify*>(p.window->current_function());
    ASSERT_NE(verify, nullptr);
    p.window->tbToolBar_ButtonClick("Read");
    ASSERT_TRUE(test::wait_until([&] { return p.panel(6) == "OK..."; }, 20000));
    EXPECT_EQ(verify->verify_points(), 79);
    ASSERT_TRUE(verify->bandwidth());
    EXPECT_NEAR(verify->bandwidth()->width, 2.0, 0.15);
    EXPECT_TRUE(p.panel(2).endsWith("%I"));

    p.window->unload_form();
    EXPECT_DOUBLE_EQ(shared.lambda_now, before);
    ASSERT_TRUE(test::wait_until([&] { return p.panel(6).startsWith("OK."); }, 10000))
        << "the live reading is back at the wavelength before";
    EXPECT_EQ(db_query("SELECT ParaValue FROM system where ParaName='Default WL'").Fields(0), "650");
    prompts::unscript();
}
