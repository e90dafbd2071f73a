#pragma once
// The program live on the simulator with the Quantitative function entered: the setup keyed in
// as a user does, and Zero and Read by toolbar, each run until the toolbar is back.
#include "functions/quantitative/dlgQuant.h"
#include "functions/quantitative/frmQuant.h"
#include "functions/quantitative/quant_setup.h"
#include "platform/grid.h"
#include "platform/prompts.h"
#include "sim_rig.h"

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QTabBar>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace lumora::test {

struct quant_rig {
    sim_rig rig;
    frmQuant* window = nullptr;

    explicit quant_rig(sim::Options options = {}) : rig(options) {
        quant = QuantSetup{};
        prompts::script();
        EXPECT_TRUE(rig.open_port_until_live());
        rig.window->menu_action("mnuFuncQuant")->trigger();
        window = qobject_cast<frmQuant*>(rig.window->current_function());
    }
    ~quant_rig() { prompts::unscript(); }

    dlgQuant& setup() { return *qobject_cast<dlgQuant*>(rig.window->current_setup_dialog()); }

    // Keys typed into a cell of the standards grid.
    void key_in(int row, int col, const std::string& keys) {
        dlgQuant& dlg = setup();
        dlg.fgdStandard().setCurrentCell(row, col);
        dlg.fgdStandard_EnterCell();
        for (char k : keys)
            dlg.fgdStandard_KeyPress(QLatin1Char(k));
    }
    // The setup keyed in: wavelength, unit, standard type, fit tab (1..4) and the values of the
    // grid, row by row (Conc. alone, Conc. and ABS, or the factors). OK is left to the caller.
    void key_setup(int nm, const char* unit, int std_type, int fit_type,
                   const std::vector<std::vector<std::string>>& rows) {
        dlgQuant& dlg = setup();
        dlg.cmbInst()->setEditText(QString::number(nm));
        dlg.cmbInst_LostFocus();
        dlg.cmbUnit()->setCurrentText(QString::fromLatin1(unit));
        dlg.Option1(std_type)->setChecked(true);
        dlg.Option1_Click(std_type);
        dlg.tspFit()->setCurrentIndex(fit_type - 1);
        if (std_type != 2) dlg.txtStandard()->setText(QString::number(rows.size()));
        for (std::size_t r = 0; r < rows.size(); ++r)
            for (std::size_t c = 0; c < rows[r].size(); ++c)
                key_in(static_cast<int>(r) + 1, static_cast<int>(c) + 1, rows[r][c]);
    }
    bool idle() const { return rig.idle(); }
    // Zero on what is in the beam; then the lambda panel takes the blank as its reference.
    bool zero() {
        rig.window->toolbar_button(2)->trigger();
        const bool done = rig.run_until([&] { return quant.zero_done && idle(); }, 30);
        rig.run_for(1.5);
        return done;
    }
    // Read the next standard or sample with `sample` in the beam.
    bool read(const std::string& sample) {
        rig.instrument.control("sample " + sample);
        const int before = quant.std_read + quant.sample_count;
        rig.window->toolbar_button(3)->trigger();
        const bool done =
            rig.run_until([&] { return quant.std_read + quant.sample_count != before && idle(); }, 30);
        rig.run_for(1.0); // the stream goes on in the lambda panel meanwhile
        return done;
    }
    // The texts of the boxes shown since the last call.
    std::vector<QString> boxes() { return take_shown_texts(); }
};

} // namespace lumora::test
