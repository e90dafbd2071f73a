#pragma once
// The program live on the simulator with the Protein function entered: the setup keyed in as a
// user does, and Zero and Read by toolbar, each run until the toolbar is back.
#include "functions/protein/dlgProtein.h"
#include "functions/protein/frmProtein.h"
#include "functions/protein/protein_setup.h"
#include "platform/grid.h"
#include "platform/prompts.h"
#include "sim_rig.h"

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QTabBar>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace lumora::test {

struct protein_rig {
    sim_rig rig;
    frmProtein* window = nullptr;

    explicit protein_rig(sim::Options options = {}) : rig(options) {
        protein = ProteinSetup{};
        prompts::script();
        EXPECT_TRUE(rig.open_port_until_live());
        rig.window->menu_action("mnuFuncProtein")->trigger();
        window = qobject_cast<frmProtein*>(rig.window->current_function());
    }
    ~protein_rig() { prompts::unscript(); }

    dlgProtein& setup() { return *qobject_cast<dlgProtein*>(rig.window->current_setup_dialog()); }

    void key_in(int row, const std::string& keys) {
        dlgProtein& dlg = setup();
        dlg.fgdStandard().setCurrentCell(row, 1);
        dlg.fgdStandard_EnterCell();
        for (char k : keys)
            dlg.fgdStandard_KeyPress(QLatin1Char(k));
    }
    // The setup keyed in: assay, replicates of standards and samples, fit tab and the Conc. of
    // the standards. OK is left to the caller.
    void key_setup(int assay, int std_reps, int sample_reps, int fit_type,
                   const std::vector<std::string>& conc) {
        dlgProtein& dlg = setup();
        dlg.cmbInst()->setCurrentIndex(assay);
        dlg.cmbInst_Click();
        dlg.txtInst(2)->setText(QString::number(std_reps));
        dlg.txtInst_LostFocus(2);
        dlg.txtInst(3)->setText(QString::number(sample_reps));
        dlg.txtInst_LostFocus(3);
        dlg.tspFit()->setCurrentIndex(fit_type - 1);
        dlg.txtStandard()->setText(QString::number(conc.size()));
        for (std::size_t r = 0; r < conc.size(); ++r)
            key_in(static_cast<int>(r) + 1, conc[r]);
    }
    bool idle() const { return rig.idle(); }
    bool zero(const std::string& sample = "blank") {
        rig.instrument.control("sample " + sample);
        rig.window->toolbar_button(2)->trigger();
        const bool done = rig.run_until([&] { return protein.zero_done && idle(); }, 30);
        rig.run_for(1.5);
        return done;
    }
    bool read(const std::string& sample) {
        rig.instrument.control("sample " + sample);
        const int before = protein.std_read + protein.sample_rows;
        rig.window->toolbar_button(3)->trigger();
        const bool done =
            rig.run_until([&] { return protein.std_read + protein.sample_rows != before && idle(); }, 30);
        rig.run_for(1.0);
        return done;
    }
    std::vector<QString> boxes() { return take_shown_texts(); }
    QString data(int r, int c) const { return window->fgdData().TextMatrix(r, c); }
    QString sample(int r, int c) const { return window->fgdSample().TextMatrix(r, c); }
};

} // namespace lumora::test
