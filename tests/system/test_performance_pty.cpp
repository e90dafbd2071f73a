// "Performance verification" over the real serial path: lumora-sim on a pseudo-terminal, the program
// on the real clock and event loop, the materials put in by the simulator's control lines.
#include "platform/prompts.h"
#include "pty_program.h"
#include "store/verification_store.h"
#include "system/frmPerformance.h"

#include <QElapsedTimer>
#include <QTableWidget>
#include <gtest/gtest.h>

using namespace lumora;

TEST(PerformancePty, EveryCheckPassesOnATrueInstrumentAndStrayLightFailsOnceSwitchedOn) {
    prompts::script();
    // No detector noise here: the drift is read for six seconds only, where noise would swamp the
    // slope; the rig runs the full ten minutes with noise.
    test::pty_program p({"--speed", "20"}, [](test::pty_program&) {
        // The drift is read on the program's own clock, which the simulator's speed does not
        // shorten. Two replicate scans keep the run short; the rig runs the full six.
        save_verification_settings({{QStringLiteral("Drift minutes"), QStringLiteral("0.1")},
                                    {QStringLiteral("Replicate scans"), QStringLiteral("2")}});
    });
    ASSERT_TRUE(p.live());
    p.window->menu_action("mnuFuncSysPerformance")->trigger();
    auto* dlg = p.window->findChild<frmPerformance*>();
    ASSERT_NE(dlg, nullptr);
    std::vector<QString> answers;
    dlg->make_instrument = [&] {
        auto clock = std::make_shared<QElapsedTimer>();
        clock->start();
        return std::make_unique<link_verification_instrument>(
            event_loop_waiter(), [clock] { return clock->elapsed() / 1000.0; },
            [&](const beam_material& m) {
                static const char* names[] = {"blank", "holmium", "neutral:", "dichromate:", "nitrite"};
                QString name = QString::fromLatin1(names[m.what]);
                if (name.endsWith(':')) name += QString::number(m.amount);
                answers.push_back(p.sim->control("sample " + name));
                return true;
            });
    };
    dlg->cmdRun_Click();
    ASSERT_EQ(dlg->results().size(), 7u);
    for (const check_result& r : dlg->results())
        EXPECT_EQ(r.verdict, processing::verdict::pass)
            << check_name(r.check).toStdString() << " " << r.why.toStdString() << " "
            << (r.items.empty() ? std::string() : r.items.back().value.toStdString());
    for (const QString& a : answers)
        EXPECT_TRUE(a.startsWith("ok sample")) << a.toStdString();

    EXPECT_EQ(p.sim->control("fault stray 0.005"), "ok fault stray 0.005");
    for (int c = 0; c < verification_check_count; ++c)
        if (c != static_cast<int>(verification_check::stray_light))
            dlg->tblChecks()->item(c, 0)->setCheckState(Qt::Unchecked);
    dlg->cmdRun_Click();
    ASSERT_EQ(dlg->results().size(), 1u);
    EXPECT_EQ(dlg->results()[0].verdict, processing::verdict::fail);
    EXPECT_EQ(dlg->tblChecks()->item(3, 5)->text(), QStringLiteral("Fail"));
    // Only the run of every check counts for the reminder.
    const auto history = load_verification_history();
    ASSERT_EQ(history.size(), 8u);
    EXPECT_TRUE(history.front().full_run);
    EXPECT_FALSE(history.back().full_run);
    dlg->close();
    prompts::unscript();
}
