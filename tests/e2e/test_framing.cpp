// Replies that reach the program merged, split or in bursts, as they do when the interface is
// busy: every baseline and sample point must still land at its own nanometre, and every scan and
// the start-up must end.
#include "platform/prompts.h"
#include "pty_program.h"
#include "sim/model.h"
#include "spectrum_rig.h"

#include <QLabel>
#include <QRandomGenerator>
#include <QThread>
#include <QTimer>
#include <gtest/gtest.h>

using namespace lumora;
using lumora::test::spectrum_rig;

namespace {

// The blank's detector counts at each nanometre: what a baseline scan must store there.
std::vector<std::uint32_t> blank_counts() {
    sim::Model model(1, 0.0, "blank");
    std::vector<std::uint32_t> counts;
    for (int i = 0; i < wavelength_points; ++i)
        counts.push_back(model.sample_counts(i + 320, 0));
    return counts;
}

// Index of the first stored baseline point that differs from the blank's counts, or -1.
int first_misplaced_baseline_point() {
    static const std::vector<std::uint32_t> expected = blank_counts();
    for (int i = 0; i < wavelength_points; ++i)
        if (shared.reference_intensity[static_cast<std::size_t>(i)] != expected[static_cast<std::size_t>(i)])
            return i;
    return -1;
}

struct chunking {
    std::uint64_t seed;
    int largest_piece; // 1: one byte at a time
};

class ChunkedReplies : public ::testing::TestWithParam<chunking> {};

} // namespace

TEST_P(ChunkedReplies, StartupAndAFullRangeScanKeepEveryPointAtItsNanometre) {
    spectrum_rig s([](test::sim_rig& rig) { rig.chunk_replies(GetParam().seed, GetParam().largest_piece); });
    ASSERT_NE(s.window, nullptr) << "panel 6: " << s.rig.panel(6).toStdString();
    EXPECT_EQ(first_misplaced_baseline_point(), -1) << "start-up baseline";
    EXPECT_GT(s.rig.window->MSComm1().counts().cut + s.rig.window->MSComm1().counts().joined, 100u);
    s.set_range(330, 1100, false, 3.0);
    ASSERT_TRUE(s.scan(2)) << "baseline scan";
    EXPECT_EQ(spectrum.scan_count, spectrum.scan_total + 1);
    s.rig.instrument.control("sample holmium");
    ASSERT_TRUE(s.scan(3)) << "sample scan";
    EXPECT_EQ(spectrum.scan_count, spectrum.scan_total);
    for (int nm = 320; nm < 1110; ++nm)
        ASSERT_NEAR(shared.baseline_curves[static_cast<std::size_t>(nm - 320)][1],
                    s.rig.instrument.true_absorbance(nm), 0.002)
            << nm << " nm";
    EXPECT_EQ(s.rig.window->MSComm1().counts().dropped, 0u);
}

INSTANTIATE_TEST_SUITE_P(Seeded, ChunkedReplies,
                         ::testing::Values(chunking{1, 1}, chunking{2, 4}, chunking{3, 9}, chunking{4, 40}),
                         [](const auto& info) {
                             return "seed" + std::to_string(info.param.seed) + "_upto" +
                                    std::to_string(info.param.largest_piece) + "bytes";
                         });

TEST(StalledInterface, StartupBaselineKeepsAllPointsWhileTheWindowFreezesAtRandom) {
    test::pty_program program({"--speed", "4"});
    // The interface freezes for 200 ms at random moments, as a long repaint or a busy machine does.
    QRandomGenerator rng(7);
    QTimer stall;
    stall.setSingleShot(true);
    int stalls = 0;
    QObject::connect(&stall, &QTimer::timeout, [&] {
        QThread::msleep(200);
        ++stalls;
        stall.start(static_cast<int>(rng.bounded(50, 400)));
    });
    stall.start(10);
    ASSERT_TRUE(program.live()) << "panel 6: " << program.panel(6).toStdString();
    stall.stop();
    EXPECT_GT(stalls, 5);
    EXPECT_EQ(first_misplaced_baseline_point(), -1);
    EXPECT_EQ(program.panel(1), QStringLiteral("500nm"));
    EXPECT_GT(program.window->MSComm1().counts().cut, 0u) << "the stalls merged replies";
}

TEST(StalledInterface, BurstsFromTheInstrumentLoseNothingAndKillingItClosesTheRealPort) {
    test::pty_program program({"--speed", "4"}, [](test::pty_program& p) {
        EXPECT_EQ(p.sim->control("fault burst on"), QStringLiteral("ok fault burst on"));
    });
    ASSERT_TRUE(program.live()) << "panel 6: " << program.panel(6).toStdString();
    EXPECT_EQ(first_misplaced_baseline_point(), -1);
    EXPECT_GT(program.window->MSComm1().counts().cut, 100u);
    EXPECT_EQ(program.window->MSComm1().counts().dropped, 0u);

    program.sim.reset(); // the instrument is gone: its end of the pseudo-terminal closes
    ASSERT_TRUE(test::wait_until([&] { return !program.window->MSComm1().PortOpen(); }, 5000));
    EXPECT_EQ(program.panel(4), QStringLiteral("Off-line"));
    EXPECT_TRUE(program.panel(6).startsWith("Port closed: ")) << program.panel(6).toStdString();
}

TEST(SilentInstrument, GreysTheReadingAndSaysSoUntilTheFirstFrameBack) {
    test::sim_rig rig;
    ASSERT_TRUE(rig.open_port_until_live());
    QLabel* reading = rig.window->sbStatusBar().panel(2);
    rig.instrument.control("fault silent on");
    const auto received = rig.instrument.received_log().size();
    rig.run_for(1.5);
    EXPECT_TRUE(reading->isEnabled()) << "1.5 s of silence is not yet a lost instrument";
    rig.run_for(1.0);
    EXPECT_FALSE(reading->isEnabled());
    EXPECT_EQ(rig.panel(6), QStringLiteral("No reply from the instrument..."));
    EXPECT_EQ(rig.panel(4), QStringLiteral("On-line"));
    rig.run_for(10);
    EXPECT_EQ(rig.instrument.received_log().size(), received) << "nothing is sent to a silent instrument";
    EXPECT_TRUE(prompts::shown().empty());

    rig.instrument.control("fault silent off");
    rig.run_for(0.2);
    EXPECT_TRUE(reading->isEnabled());
    EXPECT_TRUE(rig.panel(6).startsWith("OK")) << rig.panel(6).toStdString();
}

TEST(LostPort, ClosesItselfKeepsTheCurvesAndAReconnectGivesTheFunctionBack) {
    spectrum_rig s;
    s.set_range(400, 700, false);
    ASSERT_TRUE(s.scan(2));
    s.rig.instrument.control("sample holmium");
    ASSERT_TRUE(s.scan(3));
    const double at_536 = shared.baseline_curves[536 - 320][1];

    // The device goes away in the middle of the next scan.
    s.rig.window->toolbar_button(3)->trigger();
    ASSERT_TRUE(s.rig.run_until([&] { return s.rig.window->scan_locked(); }, 10));
    s.rig.run_for(1);
    s.rig.pipe->break_device(QStringLiteral("Input/output error"));
    EXPECT_FALSE(s.rig.window->MSComm1().PortOpen());
    EXPECT_EQ(s.rig.panel(4), QStringLiteral("Off-line"));
    EXPECT_EQ(s.rig.panel(6), QStringLiteral("Port closed: Input/output error"));
    EXPECT_FALSE(s.rig.window->scan_locked());
    EXPECT_TRUE(s.rig.window->menu_action("mnuSet")->isEnabled());
    s.rig.window->toolbar_button(4)->trigger(); // Stop

    s.rig.window->show_port_dialog();
    s.rig.window->port_dialog().findChild<QPushButton*>("cmdPortOpen")->click();
    ASSERT_TRUE(s.rig.run_until(
        [&] { return s.rig.panel(6).startsWith("OK.") && s.rig.panel(4) == QStringLiteral("On-line"); },
        120));
    EXPECT_EQ(shared.function_id, fid_spectrum);
    EXPECT_EQ(s.rig.window->current_function(), s.window) << "the window stayed";
    EXPECT_TRUE(s.rig.window->toolbar_button(3)->isEnabled());
    EXPECT_GE(spectrum.curve_count, 1);
    EXPECT_EQ(shared.baseline_curves[536 - 320][1], at_536) << "the finished curve is kept";
    EXPECT_TRUE(s.scan(3)) << "and the function reads again";
}
