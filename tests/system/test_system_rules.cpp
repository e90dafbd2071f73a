// The light threshold at its edge, and the half-height width with the cases where the evaluation
// has to give up.
#include "system/system_rules.h"

#include <cmath>
#include <gtest/gtest.h>

namespace lumora {
namespace {

TEST(LightCheck, TheThresholdIsStrictlyAboveATenthOfAVolt) {
    const std::int32_t dark = 40000;
    EXPECT_DOUBLE_EQ(light_volts(16777215 + dark, dark), 4.8);
    EXPECT_FALSE(light_level_ok(0.1));
    // 0.1 V lies between 349525 and 349526 counts above the dark.
    EXPECT_FALSE(light_level_ok(light_volts(dark + 349525, dark)));
    EXPECT_TRUE(light_level_ok(light_volts(dark + 349526, dark)));
}

// Base 1000, top 3000 at `at`, flanks of 200 a point: half height 2000 lies exactly on the points
// five either side of the top.
verify_points_array triangle(int at) {
    verify_points_array p{};
    for (int i = 0; i <= verify_last_point; ++i)
        p[static_cast<std::size_t>(i)] = std::max(1000.0, 3000.0 - 200.0 * std::abs(i - at));
    return p;
}

TEST(BandwidthRule, CrossingsInterpolateBetweenThePointsAroundHalfHeight) {
    const auto r = evaluate_bandwidth(triangle(39));
    ASSERT_TRUE(r);
    EXPECT_NEAR(r->width, 10 * 0.36, 1e-9);
    EXPECT_NEAR(r->left_nm, 34 * 0.36, 1e-9);
    // One count less at 44: 43 is the last point above, the crossing 1/201 of a step before 44.
    auto p = triangle(39);
    p[44] -= 1;
    EXPECT_NEAR(evaluate_bandwidth(p)->right_nm, 44 * 0.36 - 0.36 / 201.0, 1e-9);
}

TEST(BandwidthRule, APeakAtTheLastPointReadsTheSpareZeroBesideIt) {
    // Between point 78 (3000) and point 79 (0) the half height 2000 lies a third of the way down.
    EXPECT_NEAR(evaluate_bandwidth(triangle(78))->right_nm, 79 * 0.36 - (2.0 / 3.0) * 0.36, 1e-9);
}

TEST(BandwidthRule, GivesUpWhereTheFormulaWouldFault) {
    verify_points_array flat{};
    flat.fill(500000);
    EXPECT_FALSE(evaluate_bandwidth(flat)) << "a step of no height at the crossing";
    EXPECT_FALSE(evaluate_bandwidth(triangle(0))) << "no point before point 0 to interpolate to";
    // Shoulders as high as the top: no point lies strictly above half height, not even the top.
    auto shoulders = triangle(39);
    shoulders[13] = shoulders[14] = shoulders[65] = 3000;
    EXPECT_FALSE(evaluate_bandwidth(shoulders));
}

} // namespace
} // namespace lumora
