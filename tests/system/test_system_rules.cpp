// The two judgements on plain numbers: the light threshold at its edge, and the half-height width
// of the emission line with the cases where the evaluation has to give up.
#include "system/system_rules.h"

#include <gtest/gtest.h>

#include <cmath>

namespace lumora {
namespace {

TEST(LightCheck, TheThresholdIsStrictlyAboveATenthOfAVolt) {
    EXPECT_FALSE(light_level_ok(0.1));
    EXPECT_TRUE(light_level_ok(std::nextafter(0.1, 1.0)));
    // 16777215 counts are 4.8 V above the dark; 0.1 V lies between 349525 and 349526 counts.
    const std::int32_t dark = 40000;
    EXPECT_DOUBLE_EQ(light_volts(16777215 + dark, dark), 4.8);
    EXPECT_FALSE(light_level_ok(light_volts(dark + 349525, dark)));
    EXPECT_TRUE(light_level_ok(light_volts(dark + 349526, dark)));
    EXPECT_FALSE(light_level_ok(light_volts(dark - 1000, dark))) << "a reading under the dark";
}

// A triangle on a base of 1000, peak 3000 at `at`, flanks falling 200 a point: the half height is
// 2000, five points from the peak, so the width is ten points.
verify_points_array triangle(int at) {
    verify_points_array p{};
    for (int i = 0; i <= verify_last_point; ++i)
        p[static_cast<std::size_t>(i)] = std::max(1000.0, 3000.0 - 200.0 * std::abs(i - at));
    return p;
}

TEST(BandwidthRule, CrossingsAreStrictlyAboveHalfHeight) {
    // Points 34 and 44 sit exactly at half height: they are not crossings, so each crossing lies
    // on the step outward of them, interpolated to exactly them (100 % of that step).
    const auto r = evaluate_bandwidth(triangle(39));
    ASSERT_TRUE(r);
    EXPECT_NEAR(r->width, 10 * 0.36, 1e-9);
    EXPECT_NEAR(r->left_nm, 34 * 0.36, 1e-9);
    EXPECT_NEAR(r->right_nm, 44 * 0.36, 1e-9);

    // One count less at 44 makes 43 the last point above, and the crossing lies 1/201 of the step
    // 43 -> 44 before point 44.
    auto p = triangle(39);
    p[44] -= 1;
    const auto moved = evaluate_bandwidth(p);
    ASSERT_TRUE(moved);
    EXPECT_NEAR(moved->right_nm, 44 * 0.36 - 0.36 / 201.0, 1e-9);
}

TEST(BandwidthRule, TheFirstOfEqualPeaksAndAPeakOffCentreReadWide) {
    // Two equal tops at 39 and 40: the first is the peak; the right flank is found from the right.
    auto flat_top = triangle(39);
    for (int i = 40; i <= verify_last_point; ++i)
        flat_top[static_cast<std::size_t>(i)] = flat_top[static_cast<std::size_t>(i - 1)];
    flat_top[40] = 3000;
    for (int i = 41; i <= verify_last_point; ++i)
        flat_top[static_cast<std::size_t>(i)] = std::max(1000.0, 3000.0 - 200.0 * (i - 40));
    const auto r = evaluate_bandwidth(flat_top);
    ASSERT_TRUE(r);
    EXPECT_NEAR(r->width, 11 * 0.36, 1e-9);

    // A Gaussian sampled off its centre by half a step still gives about its width, a little wide.
    verify_points_array g{};
    for (int i = 0; i <= verify_last_point; ++i) {
        const double u = ((i - 39) * 0.36 - 0.18) / 2.0;
        g[static_cast<std::size_t>(i)] = 1e5 + 5e6 * std::exp(-4 * std::log(2.0) * u * u);
    }
    const auto off = evaluate_bandwidth(g);
    ASSERT_TRUE(off);
    EXPECT_GT(off->width, 2.0);
    EXPECT_LT(off->width, 2.15);
}

TEST(BandwidthRule, APeakAtTheLastPointReadsTheSpareZeroBesideIt) {
    const auto p = triangle(verify_last_point);
    const auto r = evaluate_bandwidth(p);
    ASSERT_TRUE(r);
    // The right crossing interpolates between point 78 (3000) and point 79 (0): h = 2000 lies a
    // third of the way down from 79, so xr = 79 * 0.36 - 66.67 % of a step.
    EXPECT_NEAR(r->right_nm, 79 * 0.36 - (2000.0 / 3000.0) * 0.36, 1e-9);
    auto with_neighbour = p;
    with_neighbour[79] = 1000;
    EXPECT_NE(evaluate_bandwidth(with_neighbour)->right_nm, r->right_nm) << "point 79 is what is read";
}

TEST(BandwidthRule, GivesUpWhereTheFormulaWouldFault) {
    verify_points_array flat{};
    for (int i = 0; i <= verify_last_point; ++i)
        flat[static_cast<std::size_t>(i)] = 500000;
    EXPECT_FALSE(evaluate_bandwidth(flat)) << "a flat line: a step of no height at the crossing";
    // A peak on point 0 with the left flank above half height: no point before it to interpolate to.
    EXPECT_FALSE(evaluate_bandwidth(triangle(0)));
    // Shoulders as high as the top: half height is the top itself, no point lies above it, the
    // search runs past the peak onto a step of no height.
    auto shoulders = triangle(39);
    shoulders[13] = shoulders[14] = shoulders[65] = 3000;
    EXPECT_FALSE(evaluate_bandwidth(shoulders));
}

} // namespace
} // namespace lumora
