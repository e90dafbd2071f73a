// Quantitative over the real serial path: lumora-sim on a pseudo-terminal, the program on the
// real clock and event loop; Beer-Lambert standards read, a sample evaluated by their line.
#include "app/frmMain.h"
#include "functions/quantitative/dlgQuant.h"
#include "functions/quantitative/frmQuant.h"
#include "functions/quantitative/quant_setup.h"
#include "link/frmPortSet.h"
#include "link/shared_state.h"
#include "platform/comm_port.h"
#include "platform/grid.h"
#include "platform/prompts.h"
#include "platform/status_bar.h"
#include "store/database.h"
#include "store/settings_store.h"
#include "support/wait.h"

#include <QAction>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace lumora;

TEST(QuantSerialPath, StandardsAndASampleOverARealPseudoTerminal) {
    QTemporaryDir dir;
    const QString link = dir.path() + "/com1";
    QProcess sim;
    sim.setProgram(QStringLiteral(LUMORA_SIM_EXE));
    sim.setArguments({"--link", link, "--speed", "4"});
    sim.start();
    ASSERT_TRUE(sim.waitForStarted(5000));
    ASSERT_TRUE(test::wait_until([&] { return QFile::exists(link); }, 5000));
    qputenv("LUMORA_COM1", link.toLocal8Bit());
    const auto sample = [&sim](const char* name) {
        sim.write(QByteArray("sample ") + name + "\n");
        sim.waitForBytesWritten(1000);
        test::wait_until([] { return false; }, 300); // the answer line, and the beam settles
    };

    reset_shared_state();
    quant = QuantSetup{};
    prompts::script();
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
        window.menu_action("mnuFuncQuant")->trigger();
        auto* form = qobject_cast<frmQuant*>(window.current_function());
        auto* dlg = qobject_cast<dlgQuant*>(window.current_setup_dialog());
        ASSERT_TRUE(form && dlg);
        dlg->cmbInst()->setEditText(QStringLiteral("480"));
        dlg->cmbInst_LostFocus();
        dlg->tspFit()->setCurrentIndex(1);
        dlg->txtStandard()->setText(QStringLiteral("2"));
        const char* concs[2] = {"2", "8"};
        for (int r = 1; r <= 2; ++r) {
            dlg->fgdStandard().setCurrentCell(r, 1);
            dlg->fgdStandard_EnterCell();
            dlg->fgdStandard_KeyPress(QLatin1Char(concs[r - 1][0]));
        }
        dlg->cmdOk_Click();
        const auto idle = [&] {
            return shared.measure_mode == mm_lambda_panel && window.toolbar_button(3)->isEnabled();
        };
        window.toolbar_button(2)->trigger(); // Zero on the blank
        ASSERT_TRUE(test::wait_until([&] { return quant.zero_done && idle(); }, 20000));
        test::wait_until([] { return false; }, 1500); // the panel takes the blank as reference
        for (const char* c : {"standard:2", "standard:8", "standard:3"}) {
            sample(c);
            const int before = quant.std_read + quant.sample_count;
            window.toolbar_button(3)->trigger();
            ASSERT_TRUE(test::wait_until(
                [&] { return quant.std_read + quant.sample_count != before && idle(); }, 20000))
                << c;
        }
        EXPECT_EQ(quant.std_type, 1);
        EXPECT_NEAR(quant.cal.fit_kb, 0, 0.02);
        EXPECT_GE(quant.cal.fit_r2, 0.9999); // two standards: the line goes through both
        EXPECT_NEAR(quant.sample_conc[1], 3.0, 0.03);
        EXPECT_EQ(form->fgdSample().TextMatrix(1, 0), "1  V");
        window.close();
    }
    db_close();
    prompts::unscript();
    qunsetenv("LUMORA_COM1");
    sim.terminate();
    sim.waitForFinished(3000);
}
