// "Property setup" on the simulator: the initial wavelength kept in the store, the three
// operations with what the status bar says of them, the light check's verdict, the lock after a
// failed zero search, and the way back to where the instrument stood.
#include "platform/prompts.h"
#include "sim_rig.h"
#include "store/database.h"
#include "system/dlgSystem.h"

#include <QAction>
#include <QLineEdit>
#include <QTabWidget>
#include <gtest/gtest.h>

namespace lumora::test {
namespace {

struct setup_rig {
    sim_rig rig;
    explicit setup_rig(sim::Options options = {}) : rig(options) {
        prompts::script();
        EXPECT_TRUE(rig.open_port_until_live());
    }
    ~setup_rig() { prompts::unscript(); }

    dlgSystem* open() {
        rig.window->menu_action("mnuFuncSysSetup")->trigger();
        return rig.window->findChild<dlgSystem*>(QStringLiteral("dlgSystem"));
    }
    std::vector<QString> boxes() {
        std::vector<QString> out;
        for (const shown_box& b : prompts::shown())
            out.push_back(b.text);
        prompts::clear_shown();
        return out;
    }
    // The enabled state of the four operations and Exit.
    std::vector<bool> enabled(const dlgSystem& d) const {
        std::vector<bool> out;
        for (int i = 0; i < 4; ++i)
            out.push_back(d.cmdOption(i)->isEnabled());
        out.push_back(d.cmdOk()->isEnabled());
        return out;
    }
    QString stored_wavelength() const {
        return db_query("SELECT ParaValue FROM system where ParaName='Default WL'").Fields(0);
    }
};

// With LUMORA_SHOT_DIR set, keeps a picture of the dialog for a look by eye.
void keep_picture(QWidget& w, const QString& name) {
    const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR");
    if (!dir.isEmpty()) w.grab().save(dir + "/" + name + ".png");
}

const std::vector<bool> all_on{true, true, true, true, true};
const std::vector<bool> all_off{false, false, false, false, false};

TEST(PropertySetup, InitialWavelengthIsKeptWithinItsRange) {
    setup_rig s;
    db_execute("update system set ParaValue='200' where ParaName='Default WL'");
    dlgSystem* d = s.open();
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(d->windowTitle(), "Property Setup");
    EXPECT_EQ(shared.function_id, fid_system);
    EXPECT_EQ(d->txtOption()->text(), "330") << "a stored 200 is shown limited";
    keep_picture(*d, "dlgSystem");

    d->txtOption()->setText("650");
    d->cmdOption(0)->click();
    EXPECT_EQ(s.boxes(), std::vector<QString>{"Wavelength saved!"});
    EXPECT_EQ(prompts::shown().size(), 0u);
    EXPECT_EQ(s.stored_wavelength(), "650");

    // Out of range, typed and sent before the field lost its focus: the limit still applies.
    for (const auto& [typed, kept] : {std::pair{"5000", "1100"}, {"12", "330"}, {"abc", "330"}}) {
        d->txtOption()->setText(typed);
        d->cmdOption(0)->click();
        EXPECT_EQ(d->txtOption()->text(), kept) << typed;
        EXPECT_EQ(s.stored_wavelength(), kept) << typed;
    }
    d->txtOption()->setText("1234.6");
    d->txtOption_LostFocus();
    EXPECT_EQ(d->txtOption()->text(), "1100");
    d->txtOption()->setText("512.4");
    d->txtOption_LostFocus();
    EXPECT_EQ(d->txtOption()->text(), "512");
    s.boxes();

    // A second opening shows what was stored, whatever the case of the stored name.
    db_execute("update system set ParaName='DEFAULT wl', ParaValue='777' where ParaName='Default WL'");
    d->close();
    d = s.open();
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(d->txtOption()->text(), "777");
    EXPECT_DOUBLE_EQ(shared.default_lambda, 777);
}

TEST(PropertySetup, OperationsLockTheDialogUntilTheyEndAndExitReturnsToTheWavelengthBefore) {
    setup_rig s;
    const double before = shared.lambda_now;
    dlgSystem* d = s.open();
    ASSERT_NE(d, nullptr);
    d->txtOption()->setText("650");
    d->cmdOption(0)->click();
    s.boxes();

    // Zero search
    const int from = static_cast<int>(s.rig.writes.size());
    d->cmdOption(1)->click();
    EXPECT_EQ(s.enabled(*d), all_off);
    EXPECT_FALSE(d->txtOption()->isEnabled());
    EXPECT_EQ(s.rig.panel(1), "0nm");
    EXPECT_EQ(s.rig.panel(2), "0.000A");
    ASSERT_TRUE(s.rig.run_until([&] { return s.rig.panel(6) == "Zero found..."; }, 30));
    EXPECT_EQ(s.enabled(*d), all_on);
    EXPECT_GE(s.rig.find_write(6, "Zero searching...", from), 0);

    // Baseline scan: darks, gains, 791 points, then the save with its progress
    const int scan_from = static_cast<int>(s.rig.writes.size());
    d->cmdOption(2)->click();
    EXPECT_EQ(s.enabled(*d), all_off);
    ASSERT_TRUE(s.rig.run_until([&] { return s.rig.panel(6) == "Baseline saved..."; }, 120));
    EXPECT_EQ(s.enabled(*d), all_on);
    int at = scan_from;
    for (const char* step : {"Baseline scanning...", "Scanning completed...", "Saving baseline 10% done...",
                             "Saving baseline 110% done...", "Baseline saved..."}) {
        at = s.rig.find_write(6, step, at);
        EXPECT_GE(at, 0) << step;
    }
    EXPECT_EQ(db_query("SELECT count(*) FROM system where ParaName like 'BL%'").Fields(0), "791");

    // Light check on a blank
    d->cmdOption(3)->click();
    EXPECT_EQ(s.enabled(*d), all_off);
    EXPECT_EQ(s.rig.panel(6), "Check light intensity...");
    ASSERT_TRUE(s.rig.run_until([&] { return !prompts::shown().empty(); }, 10));
    EXPECT_EQ(s.boxes(), std::vector<QString>{"Light intensity level OK."});
    EXPECT_EQ(shared.measure_mode, mm_lambda_panel);
    EXPECT_EQ(s.enabled(*d), all_on);

    // Exit: back to where the instrument stood at opening, not to the stored 650 nm
    s.rig.instrument.clear_received_log();
    d->cmdOk()->click();
    EXPECT_FALSE(d->isVisible());
    EXPECT_EQ(s.rig.panel(6), "Running to previous position...");
    EXPECT_EQ(shared.function_id, fid_no_function);
    EXPECT_DOUBLE_EQ(shared.lambda_now, before);
    s.rig.run_for(2);
    EXPECT_NEAR(s.rig.instrument.grating_nm(), before, 0.01);
    EXPECT_NE(before, 650);
}

TEST(PropertySetup, LittleLightIsTooLow) {
    setup_rig s;
    dlgSystem* d = s.open();
    ASSERT_NE(d, nullptr);
    s.rig.instrument.control("sample neutral:2");
    d->cmdOption(3)->click();
    ASSERT_TRUE(s.rig.run_until([&] { return !prompts::shown().empty(); }, 10));
    EXPECT_EQ(s.boxes(), std::vector<QString>{"Light intensity level too low."});
    EXPECT_EQ(prompts::shown().size(), 0u);
}

TEST(PropertySetup, AFailedZeroSearchLeavesOnlyTheSearchUntilOneSucceeds) {
    setup_rig s;
    dlgSystem* d = s.open();
    ASSERT_NE(d, nullptr);
    s.rig.instrument.control("fault zero_fail on");
    d->cmdOption(1)->click();
    ASSERT_TRUE(s.rig.run_until([&] { return s.rig.panel(6) == "Zero searching failed!"; }, 30));
    ASSERT_EQ(prompts::shown().size(), 1u);
    EXPECT_EQ(prompts::shown()[0].title, "Warning");
    EXPECT_EQ(prompts::shown()[0].icon, box_icon::critical);
    EXPECT_EQ(s.boxes(), std::vector<QString>{"Zero searching failed, please check light source or sample "
                                              "compartment, then repeat this procedure again."});
    EXPECT_EQ(s.enabled(*d), (std::vector<bool>{false, true, false, false, false}));
    EXPECT_FALSE(d->txtOption()->isEnabled());
    EXPECT_TRUE(d->tsp1()->isEnabled());
    keep_picture(*d, "dlgSystem_zero_failed");

    d->close();
    EXPECT_TRUE(d->isVisible()) << "the title bar's close is refused";
    d->reject();
    EXPECT_TRUE(d->isVisible()) << "and so is Escape";

    // A second failure keeps the lock; a success lifts it.
    d->cmdOption(1)->click();
    ASSERT_TRUE(s.rig.run_until([&] { return !prompts::shown().empty(); }, 30));
    s.boxes();
    EXPECT_EQ(s.enabled(*d), (std::vector<bool>{false, true, false, false, false}));
    s.rig.instrument.control("fault zero_fail off");
    d->cmdOption(1)->click();
    ASSERT_TRUE(s.rig.run_until([&] { return s.rig.panel(6) == "Zero found..."; }, 30));
    EXPECT_EQ(s.enabled(*d), all_on);
    EXPECT_FALSE(shared.zero_failed);
    d->close();
    EXPECT_FALSE(d->isVisible());
    EXPECT_EQ(s.rig.panel(6), "Running to previous position...");
}

TEST(PropertySetup, LampLabelsKeepTheirTextWithoutALampReply) {
    setup_rig s;
    dlgSystem* d = s.open();
    ASSERT_NE(d, nullptr);
    d->cmdOption(3)->click();
    ASSERT_TRUE(s.rig.run_until([&] { return !prompts::shown().empty(); }, 10));
    auto* vis = d->findChild<QLabel*>("lblLamp_0");
    auto* uv = d->findChild<QLabel*>("lblLamp_1");
    ASSERT_TRUE(vis && uv);
    EXPECT_EQ(vis->text(), "Vis lamp status = ");
    EXPECT_EQ(uv->text(), "UV lamp status = ");
    // Counts in ten-minute units: 90 is 15 hours.
    const std::uint8_t reply[12] = {0, 0, 0, 0, 0, 0, 0, 90, 0, 0, 0, 3};
    d->show_lamp_hour(reply, sizeof reply);
    EXPECT_EQ(vis->text(), "Vis lamp status = 15.0 hour(s) used.");
    EXPECT_EQ(uv->text(), "UV lamp status = 0.5 hour(s) used.");
}

} // namespace
} // namespace lumora::test
