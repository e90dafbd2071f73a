// The instrument's side of the wire protocol, command by command, on the virtual clock.
#include "sim_helpers.h"

#include <gtest/gtest.h>

#include <optional>

namespace lumora::sim {
namespace {

using testing::exchange;
using testing::send;
using testing::values;
using testing::with_code;
using Bytes = std::vector<std::uint8_t>;

constexpr double kFrame = 0.05053;     // [s] the intensity frame clock the PC counts time by
constexpr double kByte = 10.0 / 57600; // [s] one byte at 57600 baud, 8N1

// The start-up exchanges as the program expects them; an end-to-end test runs the sequence.
TEST(SimProtocol, ShortExchangesAnswerWithTheirFixedRepliesAndTheZeroSearchTakesItsTime) {
    Instrument inst;
    EXPECT_EQ(exchange(inst, {kCmdPing}, 0.1).at(0).bytes, (Bytes{120, 0, 0, 0, 0, 0}));
    EXPECT_EQ(exchange(inst, {kCmdConnect}, 0.1).at(0).bytes, Bytes{1});
    EXPECT_EQ(exchange(inst, {kCmdReadErrorData}, 0.1).at(0).bytes.size(), 7u);
    const auto gain = exchange(inst, {kCmdReadGain}, 0.1).at(0).bytes;
    ASSERT_EQ(gain.size(), 6u);
    EXPECT_LT(*std::max_element(gain.begin() + 1, gain.end()), 4) << "a gain index for each band";
    for (const std::uint32_t dark : values(with_code(exchange(inst, {kCmdReadDark}, 0.5), kRspDarkValue)))
        EXPECT_TRUE(dark > 1000u && dark < 100000u) << dark;

    const auto replies = exchange(inst, {kCmdSearchZero}, 3.0);
    ASSERT_EQ(replies.size(), 2u);
    EXPECT_EQ(replies[1].bytes, Bytes{kRspZeroFound});
    EXPECT_NEAR(replies[1].t - replies[0].t, 1.5, 0.01);
}

TEST(SimProtocol, GotoReportsTheMoveThenTheDarkOfTheBandThenStreams) {
    Instrument inst;
    const auto dark = testing::dark_by_band(inst);
    const auto replies = exchange(inst, {kCmdGotoLambda, 3, 0x20}, 3.0); // 800 nm, 300 nm from 500
    EXPECT_EQ(replies.at(0).bytes, Bytes{kCmdGotoLambda});

    const auto moving = with_code(replies, kRspLambdaNow);
    ASSERT_GE(moving.size(), 10u); // 0.6 s at 500 nm/s, a report every 50 ms
    EXPECT_EQ(frame_value(moving.back().bytes), 800u);
    for (std::size_t i = 1; i < moving.size(); ++i)
        EXPECT_GT(frame_value(moving[i].bytes), frame_value(moving[i - 1].bytes));

    const auto arrived = with_code(replies, kRspArrived);
    ASSERT_EQ(arrived.size(), 1u);
    EXPECT_EQ(frame_value(arrived[0].bytes), dark[4]);
    EXPECT_GT(arrived[0].t, moving.back().t);

    const auto stream = with_code(replies, kRspIntensity);
    ASSERT_GT(stream.size(), 40u);
    EXPECT_GT(stream[0].t, arrived[0].t);
}

TEST(SimProtocol, PingGoesOutBetweenFramesWithoutStoppingTheStream) {
    Instrument inst;
    exchange(inst, {kCmdZeroHere}, 0.52);
    send(inst, {kCmdPing, kCmdPing});
    const auto after = inst.advance(0.5);
    const auto pings = with_code(after, kRspPing);
    const auto stream = with_code(after, kRspIntensity);
    EXPECT_EQ(pings.size(), 2u);
    ASSERT_GE(stream.size(), 9u);
    EXPECT_LT(pings[1].t, stream[0].t);
    for (std::size_t i = 1; i < stream.size(); ++i)
        EXPECT_NEAR(stream[i].t - stream[i - 1].t, kFrame, 1e-9);
    EXPECT_EQ(inst.counters().commands, 3u);
}

TEST(SimProtocol, NewCommandCancelsARunningScan) {
    Instrument inst;
    send(inst, {kCmdScanBaseline});
    const auto first = inst.advance(2.01);
    EXPECT_FALSE(with_code(first, kRspBaselinePoint).empty());
    const auto rest = exchange(inst, {kCmdZeroHere}, 1.0);
    EXPECT_TRUE(with_code(rest, kRspBaselinePoint).empty());
    EXPECT_TRUE(with_code(rest, kRspScanEnd).empty());
    EXPECT_EQ(rest.at(0).bytes, Bytes{kCmdZeroHere});
    EXPECT_GT(with_code(rest, kRspIntensity).size(), 15u);
}

TEST(SimProtocol, UnknownBytesAndIncompletePayloadsChangeNothing) {
    Instrument inst;
    exchange(inst, {kCmdZeroHere}, 0.2);
    send(inst, {0, 14, 200, 255});
    send(inst, {kCmdGotoLambda, 1}); // the low byte never comes
    auto later = inst.advance(0.3);
    EXPECT_EQ(inst.counters().discarded_commands, 1u);
    EXPECT_TRUE(with_code(later, kCmdGotoLambda).empty());
    EXPECT_GE(with_code(later, kRspIntensity).size(), 5u);

    // A ping after the time-out is a ping, not the missing payload byte.
    send(inst, {kCmdPing});
    later = inst.advance(0.1);
    EXPECT_EQ(with_code(later, kRspPing).size(), 1u);
    EXPECT_EQ(inst.counters().ignored_bytes, 4u);
    EXPECT_EQ(inst.counters().discarded_commands, 1u);

    // A payload split over two chunks within the time-out is one command.
    send(inst, {kCmdGotoLambda, 1});
    inst.advance(0.03);
    const auto split = exchange(inst, {244}, 0.5);
    EXPECT_EQ(split.at(0).bytes, Bytes{kCmdGotoLambda});
    EXPECT_EQ(frame_value(with_code(split, kRspLambdaNow).back().bytes), 500u);
}

struct RangeCase {
    std::uint8_t command, point_code, speed_bits;
    int start, end;
    double interval;
};

class SimRangeScan : public ::testing::TestWithParam<RangeCase> {};

TEST_P(SimRangeScan, SendsOnePointPerNanometreInclusiveAtTheChosenSpeed) {
    const RangeCase c = GetParam();
    Instrument inst;
    const auto replies = exchange(inst, {c.command, static_cast<std::uint8_t>(c.start >> 8),
                                         static_cast<std::uint8_t>(c.start & 255),
                                         static_cast<std::uint8_t>((c.end >> 8) | c.speed_bits),
                                         static_cast<std::uint8_t>(c.end & 255)});
    EXPECT_EQ(replies.at(0).bytes, Bytes{c.command});
    EXPECT_EQ(frame_value(with_code(replies, kRspLambdaNow).back().bytes),
              static_cast<std::uint32_t>(c.start));
    const auto begin = with_code(replies, kRspReadBegin);
    const auto points = with_code(replies, c.point_code);
    ASSERT_EQ(begin.size(), 1u);
    ASSERT_EQ(points.size(), static_cast<std::size_t>(c.end - c.start + 1));
    EXPECT_NEAR(points[0].t - begin[0].t, c.interval, 1e-9);
    for (std::size_t i = 1; i < points.size(); ++i)
        EXPECT_NEAR(points[i].t - points[i - 1].t, c.interval, 1e-9);
    EXPECT_EQ(replies.back().bytes[0], kRspScanEnd);
    EXPECT_NEAR(inst.grating_nm(), c.end, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(SpeedsAndCodes, SimRangeScan,
                         ::testing::Values(RangeCase{kCmdScanBaselineRange, kRspBaselinePoint, 0, 320, 400,
                                                     0.010},
                                           RangeCase{kCmdScanSample, kRspSamplePoint, 16, 500, 620, 0.020},
                                           RangeCase{kCmdScanSample, kRspSamplePoint, 32, 1000, 1100, 0.040},
                                           RangeCase{kCmdScanSample, kRspSamplePoint, 0, 700, 700, 0.010}));

TEST(SimProtocol, RepliesNeverOverlapOnTheWireAndSpeedScalesEveryDelay) {
    for (const double speed : {1.0, 10.0}) {
        Instrument inst({speed});
        std::vector<Emission> all;
        const auto pinging = [&](int pings) {
            for (int i = 0; i < pings; ++i) {
                send(inst, {kCmdPing});
                for (auto& e : inst.advance(0.013 / speed))
                    all.push_back(std::move(e));
            }
        };
        send(inst, {kCmdReadDark});
        pinging(8);
        send(inst, {kCmdGotoLambda, 2, 0x58}); // 600 nm, 100 nm from where the grating rests
        pinging(20);
        for (auto& e : inst.advance(1.0 / speed))
            all.push_back(std::move(e));

        for (std::size_t i = 1; i < all.size(); ++i)
            EXPECT_GE(all[i].t - all[i - 1].t, all[i].bytes.size() * kByte / speed - 1e-12);
        EXPECT_NEAR(with_code(all, kRspDarkValue).at(1).t - with_code(all, kRspDarkValue).at(0).t,
                    0.03 / speed, 7 * kByte / speed);
        const auto moving = with_code(all, kRspLambdaNow);
        ASSERT_EQ(moving.size(), 4u); // 0.2 s at 500 nm/s
        for (std::size_t i = 1; i < moving.size(); ++i)
            EXPECT_NEAR(moving[i].t - moving[i - 1].t, 0.05 / speed, 7 * kByte / speed);
        const auto stream = with_code(all, kRspIntensity);
        ASSERT_GE(stream.size(), 10u);
        EXPECT_NEAR(stream.back().t - stream[stream.size() - 2].t, kFrame / speed, 1e-9);
    }
}

TEST(SimProtocol, AMovedInstrumentGoesOnWithItsStream) {
    std::optional<Instrument> first(std::in_place, Options{1.0, 1, 0.0, "neutral:1"});
    const auto before = values(with_code(exchange(*first, {kCmdZeroHere}, 0.2), kRspIntensity));
    Instrument second(std::move(*first));
    first.reset();
    const auto after = values(with_code(second.advance(0.2), kRspIntensity));
    ASSERT_FALSE(after.empty());
    EXPECT_EQ(after[0], before.at(0));
}

TEST(SimProtocol, NextEmissionTimeIsExactWithoutFaults) {
    Instrument inst;
    send(inst, {kCmdGotoLambda, 2, 0});
    for (int i = 0; i < 30; ++i) {
        const double t = inst.next_emission_time();
        const auto out = inst.advance(t - inst.now());
        ASSERT_EQ(out.size(), 1u) << "at " << t;
        EXPECT_NEAR(out[0].t, t, 1e-9);
    }
    EXPECT_EQ(Instrument().next_emission_time(), std::numeric_limits<double>::infinity());
}

} // namespace
} // namespace lumora::sim
