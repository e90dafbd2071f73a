// Quantitative over the real serial path: lumora-sim on a pseudo-terminal, the program on the
// real clock and event loop; Beer-Lambert standards read, a sample evaluated by their line.
#include "functions/quantitative/dlgQuant.h"
#include "functions/quantitative/frmQuant.h"
#include "functions/quantitative/quant_setup.h"
#include "platform/grid.h"
#include "platform/prompts.h"
#include "pty_program.h"

#include <QComboBox>
#include <QLineEdit>
#include <QTabBar>
#include <gtest/gtest.h>

using namespace lumora;

TEST(QuantSerialPath, StandardsAndASampleOverARealPseudoTerminal) {
    quant = QuantSetup{};
    prompts::script();
    test::pty_program p({"--speed", "4"});
    ASSERT_TRUE(p.live());
    p.window->menu_action("mnuFuncQuant")->trigger();
    auto* form = qobject_cast<frmQuant*>(p.window->current_function());
    auto* dlg = qobject_cast<dlgQuant*>(p.window->current_setup_dialog());
    ASSERT_TRUE(form && dlg);
    dlg->cmbInst()->setEditText(QStringLiteral("480"));
    dlg->cmbInst_LostFocus();
    dlg->tspFit()->setCurrentIndex(1);
    dlg->txtStandard()->setText(QStringLiteral("2"));
    const char concs[2] = {'2', '8'};
    for (int r = 1; r <= 2; ++r) {
        dlg->fgdStandard().setCurrentCell(r, 1);
        dlg->fgdStandard_EnterCell();
        dlg->fgdStandard_KeyPress(QLatin1Char(concs[r - 1]));
    }
    dlg->cmdOk_Click();
    const auto idle = [&] { return p.idle(); };
    p.window->toolbar_button(2)->trigger(); // Zero on the blank
    ASSERT_TRUE(test::wait_until([&] { return quant.zero_done && idle(); }, 20000));
    test::wait_until([] { return false; }, 1500); // the panel takes the blank as reference
    for (const char* c : {"standard:2", "standard:8", "standard:3"}) {
        p.sim->control(QStringLiteral("sample ") + c);
        test::wait_until([] { return false; }, 300); // the beam settles
        const int before = quant.std_read + quant.sample_count;
        p.window->toolbar_button(3)->trigger();
        ASSERT_TRUE(
            test::wait_until([&] { return quant.std_read + quant.sample_count != before && idle(); }, 20000))
            << c;
    }
    EXPECT_EQ(quant.std_type, 1);
    EXPECT_NEAR(quant.cal.fit_kb, 0, 0.02);
    EXPECT_GE(quant.cal.fit_r2, 0.9999); // two standards: the line goes through both
    EXPECT_NEAR(quant.sample_conc[1], 3.0, 0.03);
    EXPECT_EQ(form->fgdSample().TextMatrix(1, 0), "1  V");
    prompts::unscript();
}
