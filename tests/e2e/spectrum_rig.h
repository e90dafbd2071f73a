#pragma once
// The program live on the simulator with the Spectrum function entered, and scans by toolbar.
#include "functions/spectrum/dlgSpectrum.h"
#include "functions/spectrum/frmSpectrum.h"
#include "functions/spectrum/spectrum_data.h"
#include "functions/spectrum/spectrum_setup.h"
#include "sim_rig.h"

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <gtest/gtest.h>

namespace lumora::test {

struct spectrum_rig {
    sim_rig rig;
    frmSpectrum* window = nullptr;

    spectrum_rig() : spectrum_rig([](sim_rig&) {}) {}
    // `prepare` sets the rig up before the port opens (faults, the way replies arrive).
    template <class F> explicit spectrum_rig(F&& prepare) {
        prepare(rig);
        spectrum_setup = SpectrumSetup{};
        reset_spectrum_data();
        EXPECT_TRUE(rig.open_port_until_live());
        rig.window->menu_action("mnuFuncSpectrum")->trigger();
        window = qobject_cast<frmSpectrum*>(rig.window->current_function());
    }
    dlgSpectrum& setup() { return *qobject_cast<dlgSpectrum*>(rig.window->current_setup_dialog()); }
    // The setup dialog's range, unit and (in ABS) a high value of `high`, then OK.
    void set_range(int start, int stop, bool percent_t, double high = 1.5) {
        dlgSpectrum& dlg = setup();
        dlg.cmbInst(1)->setEditText(QString::number(stop));
        dlg.cmbInst_LostFocus(1);
        dlg.cmbInst(0)->setEditText(QString::number(start));
        dlg.cmbInst_LostFocus(0);
        dlg.cmbMeasure()->setCurrentIndex(percent_t ? 1 : 0);
        dlg.cmbMeasure_Click();
        if (!percent_t) {
            dlg.txtInst(4)->setText(QString::number(high));
            dlg.txtInst_LostFocus(4);
        }
        dlg.cmdOk_Click();
    }
    // Clicks a toolbar button and runs until the scan has ended and the toolbar is back.
    bool scan(int button) {
        rig.window->toolbar_button(button)->trigger();
        return rig.run_until(
            [&] {
                return !rig.window->scan_locked() && shared.measure_mode == mm_lambda_panel &&
                       rig.window->toolbar_button(3)->isEnabled();
            },
            120);
    }
};

} // namespace lumora::test
