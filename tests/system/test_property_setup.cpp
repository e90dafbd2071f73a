// "Property setup" on the simulator: the initial wavelength kept in range, the operations with
// what the status bar says of them, the light verdict, the lock after a failed zero search, and
// the way back to where the instrument stood.
#include "platform/prompts.h"
#include "sim_rig.h"
#include "store/database.h"
#include "system/dlgSystem.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <gtest/gtest.h>

namespace lumora::test {
namespace {

struct setup_rig {
    sim_rig rig;
    dlgSystem* d = nullptr;
    setup_rig() {
        prompts::script();
        EXPECT_TRUE(rig.open_port_until_live());
    }
    ~setup_rig() { prompts::unscript(); }
    void open() {
        rig.window->menu_action("mnuFuncSysSetup")->trigger();
        d = rig.window->findChild<dlgSystem*>(QStringLiteral("dlgSystem"));
        ASSERT_NE(d, nullptr);
        const QString shots = qEnvironmentVariable("LUMORA_SHOT_DIR");
        if (!shots.isEmpty()) d->grab().save(shots + "/dlgSystem.png");
    }
    QString box() {
        rig.run_until([] { return !prompts::shown().empty(); }, 30);
        const QString text = prompts::shown().empty() ? QString() : prompts::shown().back().text;
        prompts::clear_shown();
        return text;
    }
    std::vector<bool> enabled() const { // the four operations and Exit
        std::vector<bool> out;
        for (int i = 0; i < 4; ++i)
            out.push_back(d->cmdOption(i)->isEnabled());
        out.push_back(d->cmdOk()->isEnabled());
        return out;
    }
};

const std::vector<bool> all_on(5, true), all_off(5, false);

TEST(PropertySetup, WavelengthOperationsAndExit) {
    setup_rig s;
    db_execute("update system set ParaName='default wl', ParaValue='200' where ParaName='Default WL'");
    const double before = shared.lambda_now;
    s.open();
    EXPECT_EQ(s.d->txtOption()->text(), "330") << "a stored 200, found by a name in other letters";
    for (const auto& [typed, kept] : {std::pair{"5000", "1100"}, {"abc", "330"}, {"650", "650"}}) {
        s.d->txtOption()->setText(typed);
        s.d->cmdOption(0)->click();
        EXPECT_EQ(s.box(), "Wavelength saved!");
        EXPECT_EQ(db_query("SELECT ParaValue FROM system where ParaName='Default WL'").Fields(0), kept);
    }

    s.d->cmdOption(1)->click();
    EXPECT_EQ(s.enabled(), all_off);
    EXPECT_EQ(s.rig.panel(1), "0nm");
    ASSERT_TRUE(s.rig.run_until([&] { return s.rig.panel(6) == "Zero found..."; }, 30));
    EXPECT_EQ(s.enabled(), all_on);

    const int from = static_cast<int>(s.rig.writes.size());
    s.d->cmdOption(2)->click();
    EXPECT_EQ(s.enabled(), all_off);
    ASSERT_TRUE(s.rig.run_until([&] { return s.rig.panel(6) == "Baseline saved..."; }, 120));
    EXPECT_EQ(s.enabled(), all_on);
    for (const char* step : {"Baseline scanning...", "Scanning completed...", "Saving baseline 10% done...",
                             "Saving baseline 110% done..."})
        EXPECT_GE(s.rig.find_write(6, step, from), 0) << step;

    s.d->cmdOption(3)->click();
    EXPECT_EQ(s.rig.panel(6), "Check light intensity...");
    EXPECT_EQ(s.box(), "Light intensity level OK.");
    EXPECT_EQ(s.enabled(), all_on);
    EXPECT_EQ(s.d->findChild<QLabel*>("lblLamp_0")->text(), "Vis lamp status = ") << "no reply feeds it";

    s.d->cmdOk()->click();
    EXPECT_FALSE(s.d->isVisible());
    EXPECT_EQ(s.rig.panel(6), "Running to previous position...");
    s.rig.run_for(2);
    EXPECT_NEAR(s.rig.instrument.grating_nm(), before, 0.01) << "not the 650 nm just stored";
}

TEST(PropertySetup, LowLightAndAFailedZeroSearch) {
    setup_rig s;
    s.open();
    s.rig.instrument.control("sample neutral:2");
    s.d->cmdOption(3)->click();
    EXPECT_EQ(s.box(), "Light intensity level too low.");

    s.rig.instrument.control("fault zero_fail on");
    const std::vector<bool> search_only{false, true, false, false, false};
    for (int attempt = 0; attempt < 2; ++attempt) {
        s.d->cmdOption(1)->click();
        EXPECT_EQ(s.box(), "Zero searching failed, please check light source or sample compartment, then "
                           "repeat this procedure again.");
        EXPECT_EQ(s.enabled(), search_only);
        EXPECT_FALSE(s.d->txtOption()->isEnabled());
        s.d->close();
        s.d->reject();
        EXPECT_TRUE(s.d->isVisible()) << "neither the title bar nor Escape closes it";
    }
    s.rig.instrument.control("fault zero_fail off");
    s.d->cmdOption(1)->click();
    ASSERT_TRUE(s.rig.run_until([&] { return s.rig.panel(6) == "Zero found..."; }, 30));
    EXPECT_EQ(s.enabled(), all_on);
    s.d->close();
    EXPECT_FALSE(s.d->isVisible());
}

} // namespace
} // namespace lumora::test
