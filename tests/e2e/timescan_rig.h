#pragma once
// The program live on the simulator with a Timescan entered, set up through its dialog, and runs
// by toolbar. Every sample taken is recorded with its frame count and the model's absorbance at
// that moment, so a test can name the frame behind each value.
#include "functions/timescan/dlgTimescan.h"
#include "functions/timescan/frmTimescan.h"
#include "functions/timescan/timescan_data.h"
#include "functions/timescan/timescan_setup.h"
#include "functions/timescan_interval/frmTimescan2.h"
#include "functions/timescan_interval/timescan_interval_data.h"
#include "sim_rig.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <gtest/gtest.h>

namespace lumora::test {

struct taken_sample {
    std::int32_t ticks;
    double model; // the model's absorbance when the frame arrived
};

struct timescan_rig {
    sim_rig rig;
    std::vector<taken_sample> taken;

    timescan_rig() {
        timescan_setup = TimescanSetup{};
        timescan_interval_setup = TimescanIntervalSetup{};
        reset_timescan_data();
        reset_timescan_interval_data();
        EXPECT_TRUE(rig.open_port_until_live());
        rig.window->menu_action("mnuFuncTimescan")->trigger();
    }
    dlgTimescan& setup() { return *qobject_cast<dlgTimescan*>(rig.window->current_setup_dialog()); }
    frmTimescan* span_window() const { return qobject_cast<frmTimescan*>(rig.window->current_function()); }
    frmTimescan2* interval_window() const {
        return qobject_cast<frmTimescan2*>(rig.window->current_function());
    }
    void type(QLineEdit* field, double value, int index) {
        field->setText(QString::number(value));
        setup().txtInst_LostFocus(index);
    }
    // The setup of a fixed-span run at 500 nm in ABS, then OK.
    void set_span(double span, double delay) {
        dlgTimescan& dlg = setup();
        type(dlg.txtInst(0), span, 0);
        type(dlg.txtInst(1), delay, 1);
        dlg.cmdOk_Click();
        record(mm_timescan);
    }
    // "Fixed interval" ticked, then OK: the second window replaces the first.
    void set_interval(double stop, double interval, double delay) {
        dlgTimescan& dlg = setup();
        dlg.Check2()->setChecked(true);
        dlg.Check2_Click();
        type(dlg.txtInst(4), stop, 4);
        type(dlg.txtInst(5), interval, 5);
        type(dlg.txtInst(1), delay, 1);
        dlg.cmdOk_Click();
        record(mm_timescan2);
    }
    // Wraps the window's sample routine to note the frame count and the model at each sample.
    void record(int mode) {
        auto& hook = link_ctx.hooks.timed[static_cast<std::size_t>(mode)];
        auto inner = hook.show_data;
        hook.show_data = [this, inner, mode](std::int32_t raw) {
            const std::int32_t ticks = mode == mm_timescan ? timescan.ts_ticks : timescan_interval.ti_ticks;
            taken.push_back({ticks, rig.instrument.true_absorbance(500)});
            inner(raw);
        };
    }
    // Zero with the blank in the beam, until the reference at the wavelength is stored.
    bool zero() {
        rig.instrument.control("sample blank");
        rig.window->toolbar_button(2)->trigger();
        rig.run_for(1.5); // the move, the arrival and ten frames for the reference
        return rig.run_until([] { return shared.measure_mode == mm_lambda_panel && !shared.zero_pending; },
                             30);
    }
    // Read, and run until the run is over and the toolbar is back.
    bool read(double limit) {
        taken.clear();
        rig.window->toolbar_button(3)->trigger();
        return rig.run_until([&] { return rig.idle(); }, limit);
    }
};

} // namespace lumora::test
