#pragma once
// The program live on the simulator with the Photometry function entered, its setup typed into
// the dialog, and Zero and Read passes run by toolbar. The rig runs no event loop: a pass that
// meets a cycle wait ends it at once (the real timer is the pseudo-terminal test's).
#include "functions/photometry/dlgPhotometry.h"
#include "functions/photometry/frmPhotometry.h"
#include "functions/photometry/photometry_setup.h"
#include "platform/grid.h"
#include "sim_rig.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <gtest/gtest.h>

namespace lumora::test {

struct photometry_setup_choice {
    std::vector<int> lambdas{450, 550, 650};
    int cycles = 1;
    int interval = 0;
    int mode = 0; // 0 ABS, 1 %T, 2 Factor*ABS
    bool advanced = false;
    std::array<int, 4> picks{1, 2, 3, 1};
    std::array<int, 3> signs{1, 0, 0};
};

// Types the choice into the setup dialog; OK is the caller's.
inline void fill_setup(dlgPhotometry& dlg, const photometry_setup_choice& c) {
    dlg.txtInst(0)->setText(QString::number(c.lambdas.size()));
    for (std::size_t i = 0; i < c.lambdas.size(); ++i)
        dlg.txtLambda(static_cast<int>(i))->setText(QString::number(c.lambdas[i]));
    dlg.txtInst(1)->setText(QString::number(c.cycles));
    dlg.txtInst(3)->setText(QString::number(c.interval));
    dlg.cmbMeasure()->setCurrentIndex(c.mode);
    dlg.cmbMeasure_Click();
    dlg.Check2()->setChecked(c.advanced);
    for (int i = 0; i < 4; ++i) {
        dlg.cmbWL_GotFocus(i);
        dlg.cmbWL(i)->setCurrentIndex(c.picks[static_cast<std::size_t>(i)]);
    }
    for (int i = 0; i < 3; ++i)
        dlg.cmbEqu(i)->setCurrentIndex(c.signs[static_cast<std::size_t>(i)]);
}

struct photometry_rig {
    sim_rig rig;
    frmPhotometry* window = nullptr;

    photometry_rig() {
        reset_photometry();
        EXPECT_TRUE(rig.open_port_until_live());
        rig.window->menu_action("mnuFuncPhotometry")->trigger();
        window = qobject_cast<frmPhotometry*>(rig.window->current_function());
    }
    void choose(const photometry_setup_choice& c) {
        auto* dlg = qobject_cast<dlgPhotometry*>(rig.window->current_setup_dialog());
        fill_setup(*dlg, c);
        dlg->cmdOk_Click();
    }
    bool finished() const {
        return shared.measure_mode == mm_lambda_panel && !window->cycle_waiting() &&
               rig.window->toolbar_button(3)->isEnabled();
    }
    // Runs virtual time until the pass has ended, each cycle wait ended when its time is up.
    bool run_pass(double limit = 600) {
        return rig.run_until(
            [&] {
                if (window->cycle_waiting()) window->cycle_wait_end();
                return finished();
            },
            limit);
    }
    // Zero (button 2) or Read (button 3), run to its end.
    bool zero() {
        rig.window->toolbar_button(2)->trigger();
        return run_pass();
    }
    bool read(double limit = 600) {
        rig.window->toolbar_button(3)->trigger();
        return run_pass(limit);
    }
};

} // namespace lumora::test
