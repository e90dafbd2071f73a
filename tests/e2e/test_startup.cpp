// The instrument's start-up, the live reading and the store, with the whole program against the
// simulator on a virtual clock.
#include "link/command_ring.h"
#include "link/frmPortSet.h"
#include "link/link_context.h"
#include "link/protocol.h"
#include "platform/prompts.h"
#include "sim_rig.h"

#include <QCheckBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <gtest/gtest.h>

using namespace lumora;
using lumora::test::sim_rig;

namespace {

void press(QWidget& parent, const char* name) {
    auto* b = parent.findChild<QPushButton*>(QString::fromLatin1(name));
    ASSERT_NE(b, nullptr) << name;
    b->click();
}

} // namespace

TEST(Startup, FirstRunScansTheBaselineSavesItAndShowsTheLiveReading) {
    sim_rig rig;
    auto& dlg = rig.window->port_dialog();
    EXPECT_TRUE(shared.baseline_missing);
    EXPECT_TRUE(dlg.Check1()->isChecked()) << "no stored baseline forces the scan";
    EXPECT_FALSE(dlg.Check1()->isEnabled());
    EXPECT_TRUE(dlg.Option1(0)->isChecked());
    EXPECT_EQ(rig.window->windowTitle(), QStringLiteral("Lumora"));

    press(dlg, "cmdPortOpen");
    EXPECT_TRUE(dlg.isHidden());
    EXPECT_EQ(shared.function_id, fid_startup);
    ASSERT_TRUE(rig.run_until([&] { return rig.live(); }, 120)) << rig.panel(6).toStdString();

    // The status bar told every step, in order.
    int at = 0;
    for (const auto& [panel, text] :
         std::vector<std::pair<int, const char*>>{{6, "Connecting..."},
                                                  {4, "On-line"},
                                                  {6, "Zero searching..."},
                                                  {6, "Zero found..."},
                                                  {6, "Receiving error data..."},
                                                  {6, "Receiving dark voltage..."},
                                                  {6, "Read gain OK"},
                                                  {6, "Baseline scanning..."},
                                                  {1, "330nm"},
                                                  {1, "1100nm"},
                                                  {6, "Saving baseline..."},
                                                  {6, "Saving baseline 10% done..."},
                                                  {6, "Saving baseline 110% done..."},
                                                  {6, "Baseline saved..."},
                                                  {6, "Running to preset position..."},
                                                  {1, "500nm"},
                                                  {2, "0.000A"},
                                                  {6, "OK."}}) {
        const int found = rig.find_write(panel, QString::fromLatin1(text), at);
        ASSERT_GE(found, 0) << "panel " << panel << " \"" << text << "\" after write " << at;
        at = found;
    }
    EXPECT_EQ(rig.find_write(1, "1101nm"), -1) << "panel 1 counts only 330..1100";

    // On the wire: connect, zero, error data, dark, gain, baseline, then 500 nm.
    const std::vector<int> expected{1, 3, 2, 4, 13, 5, 6};
    EXPECT_EQ(rig.commands_received(), expected);
    EXPECT_EQ(shared.measure_mode, mm_lambda_panel);
    EXPECT_EQ(shared.lambda_now, 500.0);
    EXPECT_FALSE(shared.baseline_missing);
    EXPECT_EQ(rig.panel(2), QStringLiteral("0.000A")) << "a go-to zeroes the reading on arrival";

    // The stored baseline is the scan, point for point, and the port was saved.
    record_set bl =
        db_query("SELECT ParaValue,ParaName FROM system where ParaName like 'BL%' order by paraname");
    ASSERT_EQ(bl.RecordCount(), wavelength_points);
    for (int i = 0; !bl.EOF_(); bl.MoveNext(), ++i) {
        ASSERT_EQ(bl.Fields(1), QString("BL%1").arg(i, 3, 10, QChar('0')));
        ASSERT_DOUBLE_EQ(bl.Fields(0).toDouble(), shared.baseline_curves[static_cast<std::size_t>(i)][0])
            << i;
        ASSERT_GT(shared.baseline_curves[static_cast<std::size_t>(i)][0], 0.0) << i;
    }
    record_set port = db_query("SELECT ParaValue FROM system where ParaName='ComPort'");
    ASSERT_EQ(port.RecordCount(), 1);
    EXPECT_EQ(port.Fields(0), QStringLiteral("1"));

    // A filter of 0.5 A in the beam reads 0.500A against the blank zeroed at 500 nm.
    rig.instrument.control("sample neutral:0.5");
    rig.run_for(1.5);
    EXPECT_EQ(rig.panel(2), QStringLiteral("0.500A"));
}

TEST(Startup, LaterStartsRestorePortBaselineAndWavelengthMaySkipTheScanAndHoldTheWavelength) {
    QTemporaryDir dir;
    std::array<double, wavelength_points> first_baseline{};
    {
        sim_rig rig({}, dir.path());
        rig.window->port_dialog().Option1(2)->click(); // the simulator is found on any "Com n" here
        press(rig.window->port_dialog(), "cmdPortOpen");
        ASSERT_TRUE(rig.run_until([&] { return rig.live(); }, 120));
        first_baseline = shared.reference_intensity;
        db_execute("update system set ParaValue='650' where ParaName='Default WL'");
    }
    sim_rig rig({}, dir.path());
    EXPECT_EQ(shared.com_port, 3);
    EXPECT_EQ(shared.default_lambda, 650.0);
    EXPECT_FALSE(shared.baseline_missing);
    for (int i = 0; i < wavelength_points; ++i)
        ASSERT_DOUBLE_EQ(shared.reference_intensity[static_cast<std::size_t>(i)],
                         first_baseline[static_cast<std::size_t>(i)]);
    auto& dlg = rig.window->port_dialog();
    EXPECT_TRUE(dlg.Option1(2)->isChecked());
    EXPECT_FALSE(dlg.Check1()->isChecked());
    EXPECT_TRUE(dlg.Check1()->isEnabled());

    press(dlg, "cmdPortOpen");
    ASSERT_TRUE(rig.run_until([&] { return rig.live(); }, 60));
    EXPECT_EQ(rig.find_write(6, "Baseline scanning..."), -1);
    const std::vector<int> expected{1, 3, 2, 4, 13, 6};
    EXPECT_EQ(rig.commands_received(), expected);
    EXPECT_EQ(rig.panel(1), QStringLiteral("650nm"));
    // The stored baseline is good at 650 nm: %T of the blank is 100 after the arrival zero.
    shared.lambda_show_mode = 1;
    rig.run_for(1.0);
    EXPECT_EQ(rig.panel(2), QStringLiteral("100.0%T"));

    // A default wavelength out of range is rewritten to 500 at the next start.
    db_execute("update system set ParaValue='1101' where ParaName='Default WL'");
    rig.window.reset();
    db_close();
    sim_rig third({}, dir.path());
    EXPECT_EQ(shared.default_lambda, 500.0);
    EXPECT_EQ(db_query("SELECT ParaValue FROM system where ParaName='Default WL'").Fields(0),
              QStringLiteral("500"));
}

TEST(Startup, EmptySystemTableGetsDefaultWavelengthRowAndForcesTheBaseline) {
    QTemporaryDir dir;
    ASSERT_EQ(db_open_file(dir.path() + "/Lumora.db", false), QString());
    reset_shared_state();
    load_settings();
    record_set rows = db_query("SELECT ParaName,ParaValue FROM system");
    ASSERT_EQ(rows.RecordCount(), 1);
    EXPECT_EQ(rows.Fields(0), QStringLiteral("Default WL"));
    EXPECT_EQ(rows.Fields(1), QStringLiteral("500"));
    EXPECT_TRUE(shared.baseline_missing);
    EXPECT_EQ(shared.default_lambda, 0.0) << "the inserted value takes effect at the next start";
    EXPECT_TRUE(shared.software_name.isEmpty());
    db_close();
}

TEST(StartupFaults, FailedZeroSearchWarnsAndStopsTheSequence) {
    sim_rig rig;
    rig.instrument.control("fault zero_fail on");
    prompts::script();
    prompts::clear_shown();
    press(rig.window->port_dialog(), "cmdPortOpen");
    rig.run_for(10);
    prompts::unscript();
    ASSERT_EQ(prompts::shown().size(), 1u);
    EXPECT_EQ(prompts::shown()[0].title, QStringLiteral("Warning"));
    EXPECT_EQ(prompts::shown()[0].icon, box_icon::critical);
    EXPECT_EQ(
        prompts::shown()[0].text,
        QStringLiteral("Zero searching failed, please check light source or sample compartment, then execute "
                       "Lumora again."));
    EXPECT_EQ(rig.panel(6), QStringLiteral("Zero searching failed!"));
    const std::vector<int> expected{1, 3};
    EXPECT_EQ(rig.commands_received(), expected) << "nothing is sent after the failure";
    EXPECT_EQ(shared.function_id, fid_startup);
}

TEST(StartupFaults, SilentInstrumentGetsTwentyPingsThenSilenceAndNoError) {
    sim_rig rig;
    rig.instrument.control("fault silent on");
    prompts::script();
    prompts::clear_shown();
    press(rig.window->port_dialog(), "cmdPortOpen");
    rig.run_for(5);
    EXPECT_EQ(rig.panel(4), QStringLiteral("Off-line")) << "no answer, no On-line";
    EXPECT_EQ(rig.panel(6), QStringLiteral("Connecting..."));
    // A later exchange pings twenty times, once a tick, and then waits in silence.
    begin_exchange();
    send_message(cmd_goto_lambda);
    rig.run_for(5);
    EXPECT_EQ(rig.pings_received(), 20);
    EXPECT_EQ(shared.ping_count, 20);
    EXPECT_FALSE(shared.link_ready);
    EXPECT_TRUE(prompts::shown().empty());
    prompts::unscript();
}

TEST(StartupFaults, GarbageAndShortFramesNeverStopTheProgram) {
    sim_rig rig;
    press(rig.window->port_dialog(), "cmdPortOpen");
    ASSERT_TRUE(rig.run_until([&] { return rig.live(); }, 120));
    // Short frames are dropped after the silence and never shown as readings.
    std::vector<QString> readings;
    QObject::connect(&rig.window->sbStatusBar(), &status_bar::panel_written, [&](int n, const QString& t) {
        if (n == 2) readings.push_back(t);
    });
    rig.instrument.control("fault short_frames on");
    rig.run_for(5);
    rig.instrument.control("fault short_frames off");
    EXPECT_GT(rig.window->MSComm1().counts().dropped, 50u);
    for (const QString& r : readings)
        EXPECT_EQ(r, QStringLiteral("0.000A")) << "a short frame was read as a reading";
    rig.instrument.control("fault garbage on");
    rig.run_for(10);
    EXPECT_GT(shared.unknown_reply_count, 0) << "garbage first bytes are counted";
    rig.instrument.control("fault garbage off");
    // A new exchange brings the stream back in step.
    set_target_lambda(600);
    begin_exchange();
    send_message(cmd_goto_lambda);
    rig.run_for(3);
    EXPECT_EQ(rig.panel(1), QStringLiteral("600nm"));
    EXPECT_EQ(rig.panel(2), QStringLiteral("0.000A"));
}

TEST(PortDialog, AFailedOpenSaysWhyThenOpenCloseAndReopenRunTheSequenceFromConnect) {
    sim_rig rig;
    auto& dlg = rig.window->port_dialog();
    rig.pipe->fail_next_open = QStringLiteral("Permission denied");
    press(dlg, "cmdPortOpen");
    EXPECT_FALSE(dlg.isHidden());
    EXPECT_TRUE(rig.panel(6).contains("Permission denied")) << rig.panel(6).toStdString();
    EXPECT_EQ(shared.function_id, fid_startup);
    EXPECT_TRUE(rig.instrument.received_log().empty());

    rig.pipe->fail_next_open.clear(); // the device is there now
    press(dlg, "cmdPortOpen");
    ASSERT_TRUE(rig.run_until([&] { return rig.live(); }, 120));
    rig.window->show_port_dialog();
    press(dlg, "cmdPortClose");
    EXPECT_FALSE(rig.window->MSComm1().PortOpen());
    EXPECT_EQ(rig.panel(4), QStringLiteral("Off-line"));
    EXPECT_FALSE(dlg.isHidden()) << "the dialog stays open after Port close";
    rig.run_for(1);
    const auto writes_before = rig.writes.size();
    rig.run_for(1);
    EXPECT_EQ(rig.writes.size(), writes_before) << "nothing arrives on a closed port";

    rig.instrument.clear_received_log();
    press(dlg, "cmdPortOpen");
    ASSERT_TRUE(rig.run_until([&] { return rig.live(); }, 60));
    ASSERT_FALSE(rig.commands_received().empty());
    EXPECT_EQ(rig.commands_received().front(), 1);
}
