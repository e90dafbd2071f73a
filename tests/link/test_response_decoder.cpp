// The replies of the instrument: the start-up sequence from connect to the preset wavelength, and
// what each reply does to the counters, the panels and the ring, including the broken ones.
#include "link/photometric.h"
#include "link_fixture.h"

using namespace lumora;
using lumora::test::link_test;

namespace {

class StartUp : public link_test {
protected:
    void SetUp() override {
        link_test::SetUp();
        shared.function_id = fid_startup;
        shared.measure_mode = mm_lambda_panel; // as the port open leaves it
        shared.default_lambda = 546;
        shared.software_name = QStringLiteral("Lumora UV");
    }
    // The next tick must put exactly these bytes on the wire.
    void expect_tick_sends(const QByteArray& wire, int threshold) {
        pipe->written.clear();
        Timer1_Timer();
        EXPECT_EQ(pipe->written, wire);
        EXPECT_EQ(port->RThreshold, threshold);
    }
};

class Decoder : public link_test {};

} // namespace

TEST_F(StartUp, EveryReplyLeadsToTheNextCommandUpToThePresetWavelength) {
    shared.lambda_now = 330;
    baseline_at_start = true;
    send_message(cmd_connect);
    reply({1});
    EXPECT_EQ(panels[4], QStringLiteral("On-line"));
    EXPECT_EQ(texts(6), (std::vector<QString>{"Connecting...", "OK", "Zero searching..."}));
    EXPECT_EQ(com_port_saves, 1);
    expect_tick_sends(bytes({3}), 1);

    reply({3});
    reply({rsp_zero_found});
    EXPECT_EQ(texts(6).at(4), QStringLiteral("Zero found..."));
    EXPECT_EQ(panels[6], QStringLiteral("Receiving error data..."));
    expect_tick_sends(bytes({2}), 7);

    reply({2, 9, 9, 9, 9, 9, 9});
    EXPECT_EQ(panels[6], QStringLiteral("Receiving dark voltage..."));
    expect_tick_sends(bytes({4}), 1);

    reply({4});
    EXPECT_EQ(port->RThreshold, 6);
    for (std::int32_t dark : {1000, 2000, 3000, 4000})
        frame(rsp_dark_value, dark);
    EXPECT_EQ(shared.dark_by_gain, (std::array<std::int32_t, 4>{1000, 2000, 3000, 4000}));
    expect_tick_sends(bytes({13}), 6);

    reply({13, 3, 0, 1, 2, 3});
    EXPECT_EQ(shared.dark_by_band, (std::array<std::int32_t, 5>{4000, 1000, 2000, 3000, 4000}));
    EXPECT_EQ(panels[6], QStringLiteral("Read gain OK"));
    expect_tick_sends(bytes({5}), 1);

    reply({5});
    EXPECT_EQ(panels[6], QStringLiteral("Baseline scanning..."));
    EXPECT_EQ(panels[2], QStringLiteral("0.000A"));
    EXPECT_EQ(port->RThreshold, 6);
    EXPECT_EQ(locks, std::vector<bool>{true});
    const std::size_t panel1_before = texts(1).size();
    for (int i = 0; i < wavelength_points; ++i)
        frame(rsp_baseline_point, 100000 + i);
    EXPECT_EQ(shared.baseline_count, wavelength_points);
    EXPECT_EQ(shared.reference_intensity[0], 100000);
    EXPECT_EQ(shared.reference_intensity[790], 100790);
    EXPECT_EQ(shared.baseline_curves[400][0], 100400);
    EXPECT_EQ(shared.baseline_curves[400][1], 0) << "only column 0 holds the baseline";
    const std::vector<QString> nm = texts(1);
    ASSERT_EQ(nm.size() - panel1_before, 771u) << "330 to 1100 nm only";
    EXPECT_EQ(nm[panel1_before], QStringLiteral("330nm"));
    EXPECT_EQ(nm.back(), QStringLiteral("1100nm"));

    frame(rsp_scan_end, 0);
    EXPECT_EQ(baseline_saves, 1);
    EXPECT_EQ(locks, (std::vector<bool>{true, false}));
    EXPECT_EQ(count_calls("enable_menus"), 1);
    EXPECT_EQ(shared.function_id, fid_no_function);
    EXPECT_EQ(shared.lambda_now, 546);
    EXPECT_EQ(shared.lambda_now_int, 546);
    EXPECT_EQ(panels[6], QStringLiteral("Running to preset position..."));
    expect_tick_sends(bytes({6, 2, 34}), 1);

    reply({6});
    EXPECT_EQ(port->RThreshold, 6);
    frame(rsp_lambda_now, 540);
    EXPECT_EQ(panels[1], QStringLiteral("540nm"));
    frame(rsp_arrived, 1500);
    EXPECT_EQ(shared.dark_by_band[2], 1500);
    EXPECT_EQ(panels[6], QStringLiteral("OK"));
    panels.erase(2);
    frames(10, 50000);
    EXPECT_EQ(shared.reference_intensity[226], 50000) << "the first reading after arrival is the zero";
    EXPECT_EQ(panels[2], QStringLiteral("0.000A"));
    EXPECT_EQ(panels[6], QStringLiteral("OK."));
}

TEST_F(StartUp, GainReplyWithoutBaselineScanFinishesStartUpAndSystemSetupAlwaysScans) {
    shared.dark_by_gain = {11, 22, 33, 44};
    reply({13, 0, 1, 2, 3, 0});
    EXPECT_EQ(shared.function_id, fid_no_function);
    EXPECT_EQ(queued(), bytes({6, 2, 34}));
    EXPECT_EQ(shared.dark_by_band, (std::array<std::int32_t, 5>{11, 22, 33, 44, 11}));

    shared.function_id = fid_system;
    reply({13, 0, 0, 0, 0, 0});
    EXPECT_EQ(queued(), bytes({5}));
    EXPECT_EQ(shared.function_id, fid_system);

    shared.function_id = fid_spectrum;
    const int head = shared.ring_head;
    reply({13, 0, 0, 0, 0, 0});
    EXPECT_EQ(shared.ring_head, head) << "outside start-up and setup the gains are only stored";
}

TEST_F(StartUp, FailedZeroSearchWarnsAndSendsNothingFurther) {
    reply({rsp_zero_failed});
    EXPECT_EQ(panels[6], QStringLiteral("Zero searching failed!"));
    ASSERT_EQ(prompts::shown().size(), 1u);
    EXPECT_EQ(prompts::shown()[0].title, QStringLiteral("Warning"));
    EXPECT_EQ(prompts::shown()[0].icon, box_icon::critical);
    EXPECT_EQ(prompts::shown()[0].text,
              QStringLiteral("Zero searching failed, please check light source or sample "
                             "compartment, then execute Lumora UV again."));
    EXPECT_EQ(shared.ring_head, 0);
    Timer1_Timer();
    EXPECT_TRUE(pipe->written.isEmpty());
    EXPECT_FALSE(shared.zero_failed) << "the system flag belongs to System setup";

    // System setup keeps the flag, and clears it again on a zero found.
    shared.function_id = fid_system;
    reply({rsp_zero_failed});
    EXPECT_TRUE(shared.zero_failed);
    EXPECT_EQ(prompts::shown().at(1).text,
              QStringLiteral("Zero searching failed, please check light source or "
                             "sample compartment, then repeat this procedure again."));
    EXPECT_EQ(count_calls("system_enable_zero_search"), 1);
    reply({rsp_zero_found});
    EXPECT_FALSE(shared.zero_failed);
    EXPECT_EQ(count_calls("system_enable_function"), 1);
    EXPECT_EQ(shared.ring_head, 0);
}

TEST_F(Decoder, ImpossibleGainIndexStallsWithNoText) {
    shared.function_id = fid_startup;
    shared.dark_by_gain = {1, 2, 3, 4};
    reply({13, 1, 2, 4, 0, 0});
    EXPECT_EQ(shared.dark_by_band, (std::array<std::int32_t, 5>{2, 3, 0, 0, 0}))
        << "indexes before the fault stand";
    EXPECT_TRUE(panels.empty());
    EXPECT_EQ(shared.ring_head, 0);
    EXPECT_EQ(shared.function_id, fid_startup);
}

TEST_F(Decoder, DarkValuesCountToFourAndAFifthIsAbandoned) {
    shared.function_id = fid_startup;
    reply({4});
    for (std::int32_t dark : {10, 20, 30, 40})
        frame(rsp_dark_value, dark);
    EXPECT_EQ(shared.ring_head, 1);
    frame(rsp_dark_value, 50);
    EXPECT_EQ(shared.dark_count, 4);
    EXPECT_EQ(shared.dark_by_gain, (std::array<std::int32_t, 4>{10, 20, 30, 40}));
    EXPECT_EQ(shared.ring_head, 1) << "no second gain request";

    // Photometry's Zero reads the darks and then starts its reading.
    shared.function_id = fid_photometry;
    shared.measure_mode = mm_photometry;
    reply({4});
    for (std::int32_t dark : {10, 20, 30, 40})
        frame(rsp_dark_value, dark);
    EXPECT_EQ(count_calls("photometry_read"), 1);
    EXPECT_EQ(shared.ring_head, 1);
}

TEST_F(Decoder, BaselinePointPastTheArraysIsAbandonedAndSpectrumTakesItsOwn) {
    shared.measure_mode = mm_lambda_panel;
    shared.baseline_count = 790;
    frame(rsp_baseline_point, 77);
    EXPECT_EQ(shared.reference_intensity[790], 77);
    EXPECT_EQ(panels.count(1), 0u) << "1110 nm is outside the user's range";
    frame(rsp_baseline_point, 78);
    EXPECT_EQ(shared.baseline_count, 791);
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
    EXPECT_EQ(panels[6], QStringLiteral("OK"));

    shared.zero_pending = false;
    shared.lambda_now = 379.5;
    frame(rsp_arrived, 999);
    EXPECT_EQ(shared.dark_by_band, (std::array<std::int32_t, 5>{321, 0, 0, 0, 0})) << "379.5 nm has no band";
    EXPECT_TRUE(shared.zero_pending);
}

TEST_F(Decoder, ScanEchoesSetTheirCountersAndRaiseTheLock) {
    shared.scan_start_lambda = 390;
    shared.dark_count = 3;
    reply({10});
    EXPECT_EQ(shared.baseline_count, 70);
    EXPECT_EQ(shared.dark_count, 0);
    reply({11});
    EXPECT_EQ(shared.sample_count, 80) << "from Spectrum's own start wavelength";
    shared.verify_count = 9;
    reply({12});
    EXPECT_EQ(shared.verify_count, 0);
    EXPECT_EQ(locks, (std::vector<bool>{true, true, true}));
    EXPECT_EQ(port->RThreshold, 6);

    frame(rsp_sample_point, 1234);
    frame(rsp_bandwidth_point, 4321);
    EXPECT_EQ(shared.sample_count, 81);
    EXPECT_EQ(shared.verify_count, 1);
    EXPECT_EQ(count_calls("spectrum_show_data"), 1);
    EXPECT_EQ(count_calls("verify_show_data"), 1);

    shared.function_id = fid_spectrum;
    shared.measure_mode = mm_spectrum;
    shared.reading_index = 4;
    frame(rsp_read_begin, 0);
    EXPECT_EQ(panels[6], QStringLiteral("Baseline scanning..."));
    EXPECT_EQ(shared.reading_index, 0);
    link_ctx.hooks.spectrum_in_sample_pass = [] { return true; };
    frame(rsp_read_begin, 0);
    EXPECT_EQ(panels[6], QStringLiteral("Sample scanning..."));
    frame(rsp_scan_end, 0);
    EXPECT_EQ(locks.back(), false);
    EXPECT_EQ(baseline_saves, 0) << "a Spectrum scan is not the stored baseline";
}

TEST_F(Decoder, UnknownFirstByteChangesOnlyTheCounter) {
    shared.reading_index = 3;
    shared.dark_count = 2;
    port->RThreshold = 6;
    const auto readings = shared.readings;
    for (int code : {0, 14, 16, 18, 50, 69, 255})
        frame(code, 0x123456);
    EXPECT_EQ(shared.unknown_reply_count, 7);
    EXPECT_EQ(shared.reading_index, 3);
    EXPECT_EQ(shared.dark_count, 2);
    EXPECT_EQ(shared.readings, readings);
    EXPECT_EQ(shared.ring_head, 0);
    EXPECT_EQ(port->RThreshold, 6);
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
    EXPECT_EQ(panels[6], QStringLiteral("Read gain OK"));

    shared.measure_mode = mm_spectrum;
    reply({rsp_intensity, 0xff, 0xff, 0xff});
    EXPECT_EQ(shared.readings[0], 16777215) << "four bytes carry a full 24-bit value";
    reply({rsp_intensity, 0xff, 0xff});
    EXPECT_EQ(shared.readings[1], 0);
    EXPECT_EQ(shared.reading_index, 2);
}

TEST_F(Decoder, ReceiveEventHandsTheBufferedBytesToTheDecoder) {
    QObject::connect(port.get(), &comm_port::OnComm, [] { on_comm_event(); });
    shared.measure_mode = mm_spectrum;
    port->RThreshold = 6;
    pipe->inject(bytes({rsp_intensity, 0, 1}));
    EXPECT_EQ(shared.reading_index, 0) << "three of six bytes wait";
    pipe->inject(bytes({2, 0, 0, rsp_intensity, 0, 0}));
    EXPECT_EQ(shared.reading_index, 1) << "a second frame in the same buffer is dropped with the first";
    EXPECT_EQ(shared.readings[0], 258);
    EXPECT_EQ(port->InBufferCount(), 0);

    port->RThreshold = 0;
    pipe->inject(QByteArray(comm_port::in_buffer_size + 1, char(rsp_intensity)));
    EXPECT_EQ(port->InBufferCount(), 0) << "an overflowing buffer is read and thrown away";
    EXPECT_EQ(shared.reading_index, 1);
}
