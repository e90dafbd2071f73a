#pragma once
// The program live on the simulator with Kinetic entered, set up through its dialog, and runs by
// toolbar. Every sample taken is recorded with its frame count and the model's absorbance then.
#include "functions/kinetic/dlgKinetic.h"
#include "functions/kinetic/frmKinetic.h"
#include "functions/kinetic/kinetic_data.h"
#include "sim_rig.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <gtest/gtest.h>

namespace lumora::test {

struct kinetic_sample {
    std::int32_t ticks;
    double model; // the model's absorbance when the frame arrived
};

struct kinetic_setup_values {
    int points = 5, lag = 30, rate = 60, delay = 0;
    double factor = 1000;
    QString unit = QStringLiteral("U/L");
    bool auto_zoom = false;
    double low = 0, high = 3;
};

struct kinetic_rig {
    sim_rig rig;
    std::vector<kinetic_sample> taken;

    kinetic_rig() {
        reset_kinetic();
        EXPECT_TRUE(rig.open_port_until_live());
        rig.window->menu_action("mnuFuncKinetic")->trigger();
    }
    dlgKinetic* setup() const { return qobject_cast<dlgKinetic*>(rig.window->current_setup_dialog()); }
    frmKinetic* window() const { return qobject_cast<frmKinetic*>(rig.window->current_function()); }
    // The dialog again, from the toolbar.
    dlgKinetic& open_setup() {
        rig.window->toolbar_button(1)->trigger();
        return *setup();
    }
    static void type(dlgKinetic& dlg, int index, double value) {
        dlg.txtInst(index)->setText(QString::number(value));
        dlg.txtInst_LostFocus(index);
    }
    bool apply(dlgKinetic& dlg, const kinetic_setup_values& v) {
        dlg.cmbInst()->setEditText(QStringLiteral("500"));
        dlg.cmbInst_LostFocus();
        type(dlg, 0, v.points);
        type(dlg, 1, v.lag);
        type(dlg, 2, v.rate);
        type(dlg, 3, v.delay);
        type(dlg, 4, v.low);
        type(dlg, 5, v.high);
        type(dlg, 6, v.factor);
        dlg.cmbUnit()->setCurrentText(v.unit);
        dlg.chkStandard(0)->setChecked(v.auto_zoom);
        const bool ok = dlg.cmdOk_Click();
        record();
        return ok;
    }
    // Wraps the window's sample routine to note the frame count and the model at each sample.
    void record() {
        auto& hook = link_ctx.hooks.timed[mm_kinetic];
        if (!hook.show_data) return;
        auto inner = hook.show_data;
        hook.show_data = [this, inner](std::int32_t raw) {
            taken.push_back({kinetic.kn_ticks, rig.instrument.true_absorbance(500)});
            inner(raw);
        };
    }
    bool zero() {
        rig.instrument.control("sample blank");
        rig.window->toolbar_button(2)->trigger();
        rig.run_for(1.5);
        return rig.run_until([] { return shared.measure_mode == mm_lambda_panel && !shared.zero_pending; },
                             30);
    }
    bool read(double limit) {
        taken.clear();
        rig.window->toolbar_button(3)->trigger();
        return rig.run_until([&] { return rig.idle(); }, limit);
    }
};

} // namespace lumora::test
