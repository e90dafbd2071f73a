// The replies of the instrument: what each reply does to the counters, the panels and the ring,
// including the broken ones. The start-up sequence as a whole runs against the simulator in an
// end-to-end test; here are the decisions and edges it cannot see.
#include "link_fixture.h"

using namespace lumora;
using Decoder = lumora::test::link_test;

TEST_F(Decoder, GainReplyStoresTheDarkByBandAndDecidesTheNextStep) {
    shared.function_id = fid_startup;
    shared.default_lambda = 546;
    shared.dark_by_gain = {11, 22, 33, 44};
    reply({13, 0, 1, 2, 3, 0});
    EXPECT_EQ(shared.dark_by_band, (std::array<std::int32_t, 5>{11, 22, 33, 44, 11}));
    // Without a baseline scan the start-up ends: menus on, off to the preset wavelength.
    EXPECT_EQ(count_calls("enable_menus"), 1);
    EXPECT_EQ(shared.function_id, fid_no_function);
    EXPECT_EQ(panels[6], QStringLiteral("Running to preset position..."));
    EXPECT_EQ(queued(), bytes({6, 2, 34}));

    shared.function_id = fid_system;
    reply({13, 0, 0, 0, 0, 0});
    EXPECT_EQ(queued(), bytes({5})) << "System setup always scans";
    shared.function_id = fid_spectrum;
    const int head = shared.ring_head;
    reply({13, 0, 0, 0, 0, 0});
    EXPECT_EQ(panels[6], QStringLiteral("Read gain OK"));
    EXPECT_EQ(shared.ring_head, head) << "outside start-up and setup the gains are only stored";

    // An impossible gain index stalls with no text; the indexes before it stand.
    shared.function_id = fid_startup;
    panels.clear();
    reply({13, 1, 2, 4, 0, 0});
    EXPECT_EQ(shared.dark_by_band, (std::array<std::int32_t, 5>{22, 33, 11, 11, 11}));
    EXPECT_TRUE(panels.empty());
    EXPECT_EQ(shared.ring_head, head);
}

TEST_F(Decoder, FailedZeroSearchWarnsAndOnlySystemSetupKeepsTheFlag) {
    shared.function_id = fid_startup;
    reply({rsp_zero_failed});
    EXPECT_FALSE(shared.zero_failed) << "the system flag belongs to System setup";
    shared.function_id = fid_system;
    reply({rsp_zero_failed});
    EXPECT_EQ(panels[6], QStringLiteral("Zero searching failed!"));
    EXPECT_TRUE(shared.zero_failed);
    ASSERT_EQ(prompts::shown().size(), 2u);
    EXPECT_TRUE(prompts::shown()[1].text.endsWith(QStringLiteral("then repeat this procedure again.")));
    EXPECT_EQ(count_calls("system_enable_zero_search"), 1);
    reply({rsp_zero_found});
    EXPECT_FALSE(shared.zero_failed);
    EXPECT_EQ(count_calls("system_enable_function"), 1);
    EXPECT_EQ(shared.ring_head, 0);
}

TEST_F(Decoder, DarkValuesCountToFourThenAskForTheGainsAndAFifthIsAbandoned) {
    shared.function_id = fid_startup;
    reply({4});
    frame(rsp_dark_value, 10);
    frame(rsp_dark_value, 20);
    frame(rsp_dark_value, 30);
    EXPECT_EQ(shared.ring_head, 0);
    frame(rsp_dark_value, 40);
    EXPECT_EQ(queued(), bytes({13}));
    frame(rsp_dark_value, 50);
    EXPECT_EQ(shared.dark_by_gain, (std::array<std::int32_t, 4>{10, 20, 30, 40}));
    EXPECT_EQ(shared.ring_head, 1) << "no second gain request";

    // System setup asks for the gains too; Photometry's Zero starts its reading instead.
    shared.function_id = fid_system;
    reply({4});
    frame(rsp_dark_value, 7, 4);
    EXPECT_EQ(shared.ring_head, 2);
    shared.function_id = fid_photometry;
    shared.measure_mode = mm_photometry;
    reply({4});
    frame(rsp_dark_value, 7, 4);
    EXPECT_EQ(count_calls("photometry_read"), 1);
    EXPECT_EQ(shared.ring_head, 2);
}

TEST_F(Decoder, BaselinePointsFillTheArraysShowOnly330To1100AndSpectrumTakesItsOwn) {
    const std::pair<int, const char*> rows[] = {{9, ""}, {10, "330nm"}, {780, "1100nm"}, {781, ""}};
    for (const auto& [count, text] : rows) {
        panels.clear();
        shared.baseline_count = static_cast<std::int16_t>(count);
        frame(rsp_baseline_point, 100 + count);
        EXPECT_EQ(panels[1], QString::fromLatin1(text)) << count;
        EXPECT_EQ(shared.reference_intensity[static_cast<std::size_t>(count)], 100 + count);
        EXPECT_EQ(shared.baseline_curves[static_cast<std::size_t>(count)][0], 100 + count);
    }
    shared.baseline_count = 790;
    frame(rsp_baseline_point, 77);
    frame(rsp_baseline_point, 78);
    EXPECT_EQ(shared.baseline_count, 791) << "a point past the arrays is abandoned";
    EXPECT_EQ(shared.reference_intensity[790], 77);

    shared.measure_mode = mm_spectrum;
    shared.baseline_count = 20;
    frame(rsp_baseline_point, 5000);
    EXPECT_EQ(calls.back(), std::make_pair(std::string("show_base_line"), 5000));
    EXPECT_EQ(shared.baseline_count, 21);
    EXPECT_EQ(shared.reference_intensity[20], 0);
}

TEST_F(Decoder, LambdaNowAbove1100ShowsOnlyInSpectrum) {
    shared.measure_mode = mm_lambda_panel;
    frame(rsp_lambda_now, 1101);
    EXPECT_EQ(panels.count(1), 0u);
    frame(rsp_lambda_now, 1100);
    EXPECT_EQ(panels[1], QStringLiteral("1100nm"));
    shared.measure_mode = mm_spectrum;
    frame(rsp_lambda_now, 1101);
    EXPECT_EQ(panels[1], QStringLiteral("1101nm"));
}

TEST_F(Decoder, ArrivalStoresTheDarkOfTheBandReachedAndRearmsTheZero) {
    shared.reading_index = 6;
    shared.lambda_now = 379;
    frame(rsp_arrived, 321);
    EXPECT_EQ(shared.dark_by_band, (std::array<std::int32_t, 5>{321, 0, 0, 0, 0}));
    EXPECT_EQ(shared.reading_index, 0);
    EXPECT_TRUE(shared.zero_pending);
    shared.lambda_now = 379.5;
    frame(rsp_arrived, 999);
    EXPECT_EQ(shared.dark_by_band, (std::array<std::int32_t, 5>{321, 0, 0, 0, 0})) << "379.5 nm has no band";
}

TEST_F(Decoder, EchoesWaitForWholeFramesAndScanEchoesRaiseTheLock) {
    const std::pair<int, bool> echoes[] = {
        {cmd_read_dark, false},          {cmd_scan_baseline, true}, {cmd_goto_lambda, false},
        {cmd_read_lambda, false},        {cmd_zero_here, false},    {cmd_spare_9, false},
        {cmd_scan_baseline_range, true}, {cmd_scan_sample, true},   {cmd_scan_bandwidth, true}};
    for (const auto& [code, lock] : echoes) {
        SCOPED_TRACE(code);
        port->RThreshold = 1;
        locks.clear();
        reply({code});
        EXPECT_EQ(port->RThreshold, 6);
        EXPECT_EQ(locks, std::vector<bool>(lock ? 1 : 0, true));
    }
    // The connect echo puts the link on-line; outside start-up it asks for nothing further.
    reply({cmd_connect});
    EXPECT_EQ(panels[4], QStringLiteral("On-line"));
    EXPECT_EQ(panels[6], QStringLiteral("OK"));
    EXPECT_EQ(count_calls("save_com_port"), 1);
    EXPECT_EQ(shared.ring_head, 0);
}

TEST_F(Decoder, ScanEchoesStartTheirCountersAndThePointsGoToTheirWindows) {
    shared.scan_start_lambda = 390;
    shared.baseline_count = 9;
    reply({5});
    EXPECT_EQ(shared.baseline_count, 0);
    shared.dark_count = 3;
    reply({10});
    EXPECT_EQ(shared.baseline_count, 70);
    EXPECT_EQ(shared.dark_count, 0);
    reply({11});
    EXPECT_EQ(shared.sample_count, 80) << "from Spectrum's own start wavelength";
    shared.verify_count = 9;
    reply({12});
    EXPECT_EQ(shared.verify_count, 0);
    frame(rsp_sample_point, 1234);
    frame(rsp_bandwidth_point, 4321);
    EXPECT_EQ(shared.sample_count, 81);
    EXPECT_EQ(shared.verify_count, 1);
    EXPECT_EQ(calls, (decltype(calls){{"spectrum_show_data", 1234}, {"verify_show_data", 4321}}));

    shared.function_id = fid_spectrum;
    shared.measure_mode = mm_spectrum;
    shared.reading_index = 4;
    panels.clear();
    frame(rsp_read_begin, 0);
    EXPECT_EQ(panels[6], QStringLiteral("Baseline scanning..."));
    EXPECT_EQ(shared.reading_index, 0);
    link_ctx.hooks.spectrum_in_sample_pass = [] { return true; };
    frame(rsp_read_begin, 0);
    EXPECT_EQ(panels[6], QStringLiteral("Sample scanning..."));
    frame(rsp_scan_end, 0);
    EXPECT_EQ(locks.back(), false);
    EXPECT_EQ(count_calls("save_baseline"), 0) << "a Spectrum scan is not the stored baseline";
}

TEST_F(Decoder, UnknownFirstByteChangesOnlyTheCounter) {
    shared.reading_index = 3;
    shared.dark_count = 2;
    for (int code : {0, 14, 16, 18, 50, 69, 255})
        frame(code, 0x123456);
    EXPECT_EQ(shared.unknown_reply_count, 7);
    EXPECT_EQ(shared.reading_index, 3);
    EXPECT_EQ(shared.dark_count, 2);
    EXPECT_EQ(shared.ring_head, 0);
    EXPECT_TRUE(panels.empty());
    EXPECT_TRUE(calls.empty());
}

TEST_F(Decoder, ShortBufferReadsAsZeroAndIsStillUsed) {
    reply({4});
    reply({rsp_dark_value, 0x12});
    EXPECT_EQ(shared.dark_count, 1);
    EXPECT_EQ(shared.dark_by_gain[0], 0);
    shared.dark_by_gain = {7, 8, 9, 10};
    reply({13, 2});
    EXPECT_EQ(shared.dark_by_band, (std::array<std::int32_t, 5>{9, 7, 7, 7, 7}));
    shared.measure_mode = mm_spectrum;
    reply({rsp_intensity, 0xff, 0xff, 0xff});
    EXPECT_EQ(shared.readings[0], 16777215) << "four bytes carry a full 24-bit value";
    reply({rsp_intensity, 0xff, 0xff});
    EXPECT_EQ(shared.readings[1], 0);
}

TEST_F(Decoder, ReceiveEventHandsTheDecoderOneReplyAtATime) {
    QObject::connect(port.get(), &comm_port::OnComm, [] { on_comm_event(); });
    shared.measure_mode = mm_spectrum;
    port->RThreshold = 6;
    pipe->inject(bytes({rsp_intensity, 0, 1}));
    EXPECT_EQ(shared.reading_index, 0) << "three of six bytes wait";
    pipe->inject(bytes({2, 0, 0, rsp_intensity, 0, 0, 3, 0, 0, rsp_intensity, 0}));
    EXPECT_EQ(shared.reading_index, 2) << "the second frame of the buffer is a reply of its own";
    EXPECT_EQ(shared.readings[0], 258);
    EXPECT_EQ(shared.readings[1], 3);
    EXPECT_EQ(port->InBufferCount(), 2) << "the start of a third frame waits for its rest";
    EXPECT_EQ(port->counts().joined, 1u);
    EXPECT_EQ(port->counts().cut, 2u);

    // The threshold the decoder sets for the next reply is the one the rest is cut at: echo 4
    // (one byte) sets 6 for the four dark values behind it in the same buffer.
    port->Input();
    shared.dark_count = 0;
    port->RThreshold = 1;
    QByteArray burst = bytes({cmd_read_dark});
    for (std::uint8_t d = 1; d <= 4; ++d)
        burst += bytes({rsp_dark_value, 0, 0, d, 0, 0});
    pipe->inject(burst);
    EXPECT_EQ(shared.dark_count, 4);
    EXPECT_EQ(shared.dark_by_gain[3], 4);

    port->RThreshold = 0;
    pipe->inject(QByteArray(comm_port::in_buffer_size + 1, char(rsp_intensity)));
    EXPECT_EQ(port->InBufferCount(), 0) << "an overflowing buffer is read and thrown away";
}
