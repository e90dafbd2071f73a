// Fault switches and the control lines that set them.
#include "sim_helpers.h"

#include <gtest/gtest.h>

namespace lumora::sim {
namespace {

using testing::exchange;
using testing::send;
using testing::with_code;

// What a silent instrument and a failed zero search do to the program is an end-to-end test.
TEST(SimFaults, SilentAndZeroFailSwitchOnAndOff) {
    Instrument inst;
    EXPECT_EQ(inst.control("fault silent on"), "ok fault silent on");
    inst.control("fault zero_fail on");
    EXPECT_TRUE(exchange(inst, {kCmdPing, kCmdGotoLambda, 2, 0}, 1.0).empty());
    EXPECT_NE(inst.control("state").find("faults=silent,zero_fail"), std::string::npos);
    inst.control("fault silent off");
    EXPECT_EQ(exchange(inst, {kCmdPing}, 0.1).size(), 1u) << "what came in while silent was not acted on";
    EXPECT_EQ(exchange(inst, {kCmdSearchZero}, 2.0).back().bytes, std::vector<std::uint8_t>{kRspZeroFailed});
    inst.control("fault zero_fail off");
    EXPECT_EQ(exchange(inst, {kCmdSearchZero}, 2.0).back().bytes, std::vector<std::uint8_t>{kRspZeroFound});
}

TEST(SimFaults, GarbageComesBetweenIntactFrames) {
    Instrument inst;
    inst.control("fault garbage on");
    const auto out = exchange(inst, {kCmdZeroHere}, 20.0);
    std::size_t frames = 0, junk = 0;
    for (const Emission& e : out) {
        if (e.bytes.size() == kFrameSize && e.bytes[0] == kRspIntensity)
            ++frames;
        else if (e.bytes.size() < kFrameSize && e.bytes != std::vector<std::uint8_t>{kCmdZeroHere})
            ++junk;
    }
    EXPECT_NEAR(frames, 20.0 / 0.05053, 2);
    EXPECT_GT(junk, frames / 20);
    EXPECT_LT(junk, frames / 3);
}

TEST(SimFaults, ShortFramesLoseBytesButPingsStayWhole) {
    Instrument inst;
    inst.control("fault short_frames on");
    const auto out = exchange(inst, {kCmdZeroHere, kCmdPing}, 2.0);
    ASSERT_EQ(with_code(out, kRspPing).at(0).bytes.size(), kFrameSize);
    const auto stream = with_code(out, kRspIntensity);
    ASSERT_GT(stream.size(), 30u);
    for (const Emission& e : stream)
        EXPECT_LT(e.bytes.size(), kFrameSize);
}

TEST(SimFaults, DropLosesEveryNthFrameUntilSwitchedOff) {
    Instrument inst;
    EXPECT_EQ(inst.control("fault drop:4 on"), "ok fault drop:4 on");
    auto stream = with_code(exchange(inst, {kCmdZeroHere}, 40 * 0.05053 + 0.01), kRspIntensity);
    EXPECT_EQ(stream.size(), 30u);
    EXPECT_NEAR(stream[3].t - stream[2].t, 2 * 0.05053, 1e-9); // the fourth frame is missing
    EXPECT_EQ(inst.counters().dropped_frames, 10u);

    EXPECT_EQ(inst.control("fault drop:4 off"), "ok fault drop:4 off");
    stream = with_code(inst.advance(40 * 0.05053 + 0.01), kRspIntensity);
    EXPECT_EQ(stream.size(), 40u);
    EXPECT_EQ(inst.control("fault drop:0 on").rfind("error: ", 0), 0u);
    EXPECT_EQ(inst.control("fault mains_hum on").rfind("error: ", 0), 0u);
    EXPECT_EQ(inst.control("fault garbage maybe").rfind("error: ", 0), 0u);
    EXPECT_NE(inst.control("state").find("faults=none"), std::string::npos);
}

TEST(SimFaults, BurstSendsTwoToFiveRepliesAsOneWriteAndLosesNone) {
    Instrument inst;
    EXPECT_EQ(inst.control("fault burst on"), "ok fault burst on");
    const auto out = exchange(inst, {kCmdZeroHere}, 10 * 0.05053 + 0.01);
    std::vector<std::uint8_t> all;
    std::size_t writes = 0;
    for (const Emission& e : out) {
        ++writes;
        all.insert(all.end(), e.bytes.begin(), e.bytes.end());
        if (e.bytes.front() == kRspIntensity) {
            EXPECT_GE(e.bytes.size(), 2 * kFrameSize);
            EXPECT_LE(e.bytes.size(), 5 * kFrameSize);
            EXPECT_EQ(e.bytes.size() % kFrameSize, 0u) << "replies are whole, only grouped";
        }
    }
    EXPECT_LT(writes, 8u);
    EXPECT_EQ(inst.control("fault burst off"), "ok fault burst off");
    // Switched off, whatever was held leaves with the next reply; nothing is lost on the way.
    const auto rest = inst.advance(0.06);
    for (const Emission& e : rest)
        all.insert(all.end(), e.bytes.begin(), e.bytes.end());
    EXPECT_EQ(all.size(), 1 + 11 * kFrameSize) << "the echo and eleven frames";
    EXPECT_NE(inst.control("state").find("faults=none"), std::string::npos);
}

} // namespace
} // namespace lumora::sim
