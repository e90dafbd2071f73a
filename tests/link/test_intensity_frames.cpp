// The intensity stream: ten frames make a reading, and the reading goes where measure_mode says:
// the live reading and heartbeat of the lambda panel, or the function that is measuring.
#include "link_fixture.h"

using namespace lumora;

namespace {

class IntensityFrames : public lumora::test::link_test {
protected:
    void SetUp() override {
        link_test::SetUp();
        shared.measure_mode = mm_lambda_panel;
        shared.lambda_now = 500; // index 180, band 2
        shared.dark_by_band[2] = 500;
        shared.reference_intensity[180] = 80500;
        panels[6] = QStringLiteral("OK");
    }
};

} // namespace

TEST_F(IntensityFrames, PendingZeroMakesTheMeanTheReferenceAtTheRoundedWavelength) {
    shared.lambda_now = 500.6; // index 181
    shared.zero_pending = true;
    for (int v : {79995, 79996, 79997, 79998, 79999, 80000, 80001, 80002, 80003, 80004})
        frame(rsp_intensity, v);
    EXPECT_EQ(shared.reference_intensity[181], 79999) << "the mean is truncated";
    EXPECT_EQ(shared.reference_intensity[180], 80500);
    EXPECT_FALSE(shared.zero_pending);
    EXPECT_EQ(panels[2], QStringLiteral("0.000A"));

    shared.lambda_show_mode = 1;
    frames(10, 79999);
    EXPECT_EQ(panels[2], QStringLiteral("100.0%T"));
    shared.lambda_show_mode = 0;
    frames(10, 500 + 7949); // a tenth of the signal above the dark, against the kept reference
    EXPECT_EQ(panels[2], QStringLiteral("1.000A"));
}

TEST_F(IntensityFrames, ReferenceEqualToTheDarkFreezesTheDisplayUntilTheNextTransmission) {
    shared.reference_intensity[180] = 500;
    frames(10, 30000);
    EXPECT_EQ(panels.count(2), 0u) << "the division by zero ends the frame's handling";
    EXPECT_EQ(panels[6], QStringLiteral("OK"));
    frames(3, 30000);
    EXPECT_EQ(shared.reading_index, 13);
    EXPECT_EQ(panels.count(2), 0u);

    shared.reference_intensity[180] = 80500;
    Timer1_Timer(); // transmits the unfilled slot behind ring_head, which resets the index
    EXPECT_EQ(shared.reading_index, 0);
    frames(10, 80500);
    EXPECT_EQ(panels[2], QStringLiteral("0.000A"));
}

TEST_F(IntensityFrames, FunctionsGetTheirReadingsOnlyOnceTheLinkIsReady) {
    shared.measure_mode = mm_photometry;
    shared.link_ready = false;
    frames(10, 100);
    EXPECT_TRUE(calls.empty()) << "frames before rsp_ping are ignored";
    shared.link_ready = true;
    for (int i = 0; i < 20; ++i)
        frame(rsp_intensity, 100 + i % 10);
    EXPECT_EQ(calls, (decltype(calls){{"show_data 2", 104}, {"show_data 2", 104}})) << "1045 / 10, truncated";

    calls.clear();
    for (int mode : {mm_timescan, mm_kinetic, mm_timescan2})
        for (bool ready : {false, true}) {
            shared.link_ready = ready;
            shared.measure_mode = static_cast<std::int16_t>(mode);
            frame(rsp_intensity, 700 + mode);
        }
    EXPECT_EQ(calls,
              (decltype(calls){{"timed_frame 3", 703}, {"timed_frame 4", 704}, {"timed_frame 8", 708}}))
        << "every frame, once the link is ready";

    shared.link_ready = true;
    shared.measure_mode = mm_spectrum;
    calls.clear();
    panel_log.clear();
    frames(25, 1);
    EXPECT_TRUE(calls.empty());
    EXPECT_TRUE(panel_log.empty());
}

// A busy interface hands over old frames in a burst after the ping's echo: none of them may make a
// reading before the move has arrived, or the reading is of the old position and the late arrival
// re-arms the lambda panel's zero on the sample.
TEST_F(IntensityFrames, NoFunctionReadsBetweenItsMoveAndTheArrival) {
    for (int mode : {mm_photometry, mm_quantitative, mm_timescan}) {
        SCOPED_TRACE(mode);
        calls.clear();
        shared.measure_mode = static_cast<std::int16_t>(mode);
        begin_exchange();
        send_message(cmd_goto_lambda);
        shared.link_ready = true; // the echo of the ping
        frames(25, 300);
        EXPECT_TRUE(calls.empty()) << "old frames, before the arrival";
        frame(rsp_arrived, 0);
        frames(10, 400);
        ASSERT_FALSE(calls.empty());
        EXPECT_EQ(calls.front().second, 400);
        EXPECT_TRUE(shared.zero_pending) << "the arrival still arms the lambda panel's zero";
    }
    shared.measure_mode = mm_lambda_panel;
    begin_exchange();
    send_message(cmd_goto_lambda);
    panel_log.clear();
    frames(10, 40500);
    EXPECT_FALSE(panel_log.empty()) << "the lambda panel shows the stream while a move is on its way";
}

TEST_F(IntensityFrames, ProteinAndQuantitativeZeroOnOneFrameThenAverageTen) {
    for (int mode : {mm_protein, mm_quantitative}) {
        SCOPED_TRACE(mode);
        calls.clear();
        shared.measure_mode = static_cast<std::int16_t>(mode);
        shared.link_ready = false;
        frame(rsp_intensity, 4241);
        shared.link_ready = true;
        shared.reading_index = 5;
        reading_flag = false;
        frame(rsp_intensity, 4242);
        EXPECT_EQ(shared.reading_index, 0);
        frame(rsp_intensity, 4243);
        reading_flag = true;
        for (int i = 0; i < 10; ++i)
            frame(rsp_intensity, 2000 + 2 * i);
        const std::string m = std::to_string(mode);
        EXPECT_EQ(calls, (decltype(calls){
                             {"show_zero " + m, 4242}, {"show_zero " + m, 4243}, {"show_data " + m, 2009}}));
    }
}

TEST_F(IntensityFrames, LightCheckHandsOneReadingToSystemSetupAndReturnsToTheLambdaPanel) {
    shared.measure_mode = mm_light_check;
    frames(9, 123456);
    EXPECT_TRUE(calls.empty());
    frame(rsp_intensity, 123456);
    EXPECT_EQ(calls, (decltype(calls){{"check_light_level", 123456}}));
    EXPECT_EQ(shared.measure_mode, mm_lambda_panel);
    EXPECT_EQ(shared.reading_index, 0);
    EXPECT_EQ(panels.count(2), 0u) << "the light check reading is not shown";
}
