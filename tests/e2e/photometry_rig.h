#pragma once
// The program live on the simulator with the Photometry function entered, its setup made in the
// dialog, and Zero and Read passes run by toolbar. The rig runs no event loop, so it stands in
// for the cycle timer as it does for Timer1: a wait ends when its interval of virtual time is up.
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
#include <initializer_list>

namespace lumora::test {

struct photometry_setup_choice {
    std::vector<int> lambdas{450, 550, 650};
    int cycles = 1;
    int interval = 0;
    int mode = 0; // 0 ABS, 1 %T, 2 Factor*ABS
    bool advanced = false;
    std::array<int, 4> picks{1, 2, 3, 1};
    std::array<int, 3> signs{1, 0, 0};
    QString k1 = QStringLiteral("1"), k2 = QStringLiteral("1");
};

// Fills the setup dialog as a user types, then OK; `before_ok` sees the filled dialog.
template <class F> void fill_setup(dlgPhotometry& dlg, const photometry_setup_choice& c, F&& before_ok) {
    dlg.txtInst(0)->setText(QString::number(c.lambdas.size()));
    for (std::size_t i = 0; i < c.lambdas.size(); ++i)
        dlg.txtLambda(static_cast<int>(i))->setText(QString::number(c.lambdas[i]));
    dlg.txtInst(1)->setText(QString::number(c.cycles));
    dlg.txtInst(3)->setText(QString::number(c.interval));
    dlg.cmbMeasure()->setCurrentIndex(c.mode);
    dlg.cmbMeasure_Click();
    dlg.Check2()->setChecked(c.advanced);
    dlg.txtInst(4)->setText(c.k1);
    dlg.txtInst(5)->setText(c.k2);
    for (int i = 0; i < 4; ++i) {
        dlg.cmbWL_GotFocus(i);
        dlg.cmbWL(i)->setCurrentIndex(c.picks[static_cast<std::size_t>(i)]);
    }
    for (int i = 0; i < 3; ++i)
        dlg.cmbEqu(i)->setCurrentIndex(c.signs[static_cast<std::size_t>(i)]);
    before_ok(dlg);
    dlg.cmdOk_Click();
}
inline void fill_setup(dlgPhotometry& dlg, const photometry_setup_choice& c) {
    fill_setup(dlg, c, [](dlgPhotometry&) {});
}

struct photometry_rig {
    sim_rig rig;
    frmPhotometry* window = nullptr;
    int waits = 0; // cycle waits seen

    explicit photometry_rig(sim::Options options = {}) : rig(options) {
        reset_photometry();
        EXPECT_TRUE(rig.open_port_until_live());
        rig.window->menu_action("mnuFuncPhotometry")->trigger();
        window = qobject_cast<frmPhotometry*>(rig.window->current_function());
    }
    dlgPhotometry* setup() { return qobject_cast<dlgPhotometry*>(rig.window->current_setup_dialog()); }
    // Fills the dialog as a user types, then OK.
    void choose(const photometry_setup_choice& c) { fill_setup(*setup(), c); }
    // The same, with a look at the filled dialog before OK.
    template <class F> void choose(const photometry_setup_choice& c, F&& before_ok) {
        fill_setup(*setup(), c, before_ok);
    }
    bool finished() const {
        return shared.measure_mode == mm_lambda_panel && !window->cycle_waiting() &&
               rig.window->toolbar_button(3)->isEnabled();
    }
    // Runs virtual time until the pass has ended; `during_wait` runs once per cycle wait.
    template <class F> bool run_pass(double limit, F&& during_wait) {
        double waited = 0;
        for (double t = 0; t < limit; t += 0.05) {
            if (finished()) return true;
            if (window->cycle_waiting()) {
                if (waited == 0) {
                    ++waits;
                    during_wait();
                }
                waited += 0.05;
                if (waited >= photometry_setup.ph_cycle_interval - 1e-9) {
                    window->cycle_wait_end();
                    waited = 0;
                }
            }
            rig.run_for(0.05);
        }
        return finished();
    }
    bool run_pass(double limit = 600) {
        return run_pass(limit, [] {});
    }
    // Zero (button 2) or Read (button 3), run to its end.
    bool zero(double limit = 600) {
        rig.window->toolbar_button(2)->trigger();
        return run_pass(limit);
    }
    bool read(double limit = 600) {
        rig.window->toolbar_button(3)->trigger();
        return run_pass(limit);
    }
    QString cell(int row, int col) const { return window->fgdData().TextMatrix(row, col); }
    // The simulator's own answer to "absorbance NM" for the sample in the beam.
    double model(int nm) { return std::stod(rig.instrument.control("absorbance " + std::to_string(nm))); }
};

} // namespace lumora::test
