// The frame clock of the timed functions: each frame counts 0.05053 s, a countdown before the
// delay, and at most one sample a frame once one is due; the fixed-interval end test; Kinetic's
// texts through the same steps.
#include "link_fixture.h"

using namespace lumora;

namespace {

class TimedSteps : public lumora::test::link_test {
protected:
    std::int32_t ticks = 0;
    std::int16_t taken = 0;
    bool reading = true;
    timed_plan plan;
    std::vector<std::int32_t> sample_ticks; // the frame count of each sample taken
    int stops = 0;

    void SetUp() override {
        link_test::SetUp();
        shared.link_ready = true;
        for (int mode : {mm_timescan, mm_kinetic, mm_timescan2}) {
            timed_schedule& s = link_ctx.hooks.timed[static_cast<std::size_t>(mode)];
            s = timed_schedule{};
            s.ticks = &ticks;
            s.taken = &taken;
            s.reading = [this] { return reading; };
            s.plan = [this] { return plan; };
            s.show_zero = record("show_zero");
            s.show_data = [this](std::int32_t) {
                sample_ticks.push_back(ticks);
                ++taken; // the window's show_data advances its index
            };
            s.stop_now = [this] { ++stops; };
        }
    }
    void run(int mode, int n) {
        shared.measure_mode = static_cast<std::int16_t>(mode);
        frames(n, 1000);
    }
};

} // namespace

TEST_F(TimedSteps, SpanScheduleTakesTheFirstFrameAtOrPastEachDueTime) {
    plan.start = 5;
    plan.step = 15.0 / 280; // the shortest span: just above one frame
    run(mm_timescan, 420);
    ASSERT_FALSE(sample_ticks.empty());
    for (std::size_t k = 0; k < sample_ticks.size(); ++k) {
        const double due = 5 + static_cast<double>(k) * 15 / 280;
        ASSERT_GE(sample_ticks[k] * frame_seconds, due) << k;
        ASSERT_LT((sample_ticks[k] - 1) * frame_seconds, due) << "the first frame that reaches it, " << k;
    }
    EXPECT_EQ(ticks, 420);
    EXPECT_EQ(stops, 0) << "the fixed span ends itself after sample 280";
}

TEST_F(TimedSteps, LateSamplesAreNotMadeUp) {
    plan.step = 0.01; // five due per frame
    run(mm_timescan2, 10);
    EXPECT_EQ(sample_ticks, (std::vector<std::int32_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
}

TEST_F(TimedSteps, CountdownBeforeTheDelayThenReading) {
    plan.start = 5;
    plan.step = 1;
    run(mm_timescan, 1);
    EXPECT_EQ(panels[1], QStringLiteral("- 4.9sec"));
    EXPECT_TRUE(sample_ticks.empty());
    EXPECT_NE(panels[6], QStringLiteral("Reading..."));
    run(mm_timescan, 98); // 99 frames: 5.0025 s
    EXPECT_EQ(panels[1], QStringLiteral("- 0.0sec"));
    run(mm_timescan, 1);
    EXPECT_EQ(panels[6], QStringLiteral("Reading..."));
    EXPECT_EQ(sample_ticks, std::vector<std::int32_t>{99});
}

TEST_F(TimedSteps, ZeroStageHandsTheFirstFrameToShowZero) {
    reading = false;
    shared.reading_index = 4;
    run(mm_timescan2, 1);
    EXPECT_EQ(calls, (decltype(calls){{"show_zero", 1000}}));
    EXPECT_EQ(shared.reading_index, 0);
    EXPECT_EQ(ticks, 1) << "the counter runs in the zero stage too";
    EXPECT_TRUE(sample_ticks.empty());
}

TEST_F(TimedSteps, IntervalEndTestFollowsTheSampleOnlyWhileReading) {
    plan.start = 50;
    plan.step = 1;
    plan.end = 51;          // stop time 1 s after a 50 s delay
    run(mm_timescan2, 989); // 49.97 s: still counting down
    EXPECT_EQ(stops, 0);
    run(mm_timescan2, 20); // 1009 frames: 50.98 s
    EXPECT_EQ(stops, 0);
    run(mm_timescan2, 1); // 1010 frames: 51.04 s
    EXPECT_EQ(stops, 1);
    EXPECT_EQ(sample_ticks.back(), 1010) << "the sample due at 51 s is taken before the end test";
}

TEST_F(TimedSteps, KineticSharesTheClockWithItsOwnTexts) {
    plan.start = 10;
    plan.lag_from = 4;
    plan.step = 1;
    run(mm_kinetic, 20); // 1.01 s
    EXPECT_EQ(panels[6], QStringLiteral("delay..."));
    EXPECT_EQ(panels[1], QStringLiteral("-3.0sec"));
    run(mm_kinetic, 80); // 5.05 s
    EXPECT_EQ(panels[6], QStringLiteral("lag time..."));
    EXPECT_EQ(panels[1], QStringLiteral("1.1sec"));
    run(mm_kinetic, 100); // 10.1 s
    EXPECT_EQ(panels[6], QStringLiteral("reading..."));
    EXPECT_EQ(sample_ticks.size(), 1u);
}
