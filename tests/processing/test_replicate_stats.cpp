// The spread of replicates, the Diff limits and the inverse fit of ABS on Conc.
#include "processing/replicate_stats.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

using namespace lumora;

TEST(ReplicateStats, CvIsSampleSpreadOverTheCentreInPercent) {
    // 0.9, 1.0, 1.1 around 1: sd = sqrt(0.02 / 2) = 0.1, so 10 %.
    const std::array<double, 3> x{0.9, 1.0, 1.1};
    EXPECT_NEAR(replicate_cv(x, 1.0), 10.0, 1e-9);
    // Around another centre the spread grows: the centre is given, not the group's own mean.
    EXPECT_NEAR(replicate_cv(x, 0.5), 100 * std::sqrt((0.16 + 0.25 + 0.36) / 2) / 0.5, 1e-9);
    const std::array<double, 3> same{0.25, 0.25, 0.25};
    EXPECT_EQ(replicate_cv(same, 0.25), 0.0);
    const std::array<double, 3> zeros{0.0, 0.001, -0.001};
    EXPECT_EQ(replicate_cv(zeros, 0.0), 0.0) << "a mean of 0 shows 0, not a division";
    // A standard's spread around a nominal Conc. of 0 has no answer.
    EXPECT_FALSE(standard_cv(x, 0.0).has_value());
    ASSERT_TRUE(standard_cv(x, 1.0).has_value());
    EXPECT_NEAR(*standard_cv(x, 1.0), 10.0, 1e-9);
}

TEST(ReplicateStats, DiffLimitWidensTheLargestMagnitude) {
    const std::vector<double> d{0.01, -0.05, 0.02};
    EXPECT_NEAR(diff_limit(d), 0.055, 1e-12);
    EXPECT_EQ(diff_limit(std::vector<double>{0, 0, 0}), 0.001);
    EXPECT_EQ(diff_limit(std::vector<double>{}), 0.001);
}

TEST(ReplicateStats, InverseFitExchangesTheVariables) {
    // ABS = 0.5 Conc. + 0.1 exactly.
    const std::vector<double> conc{1, 2, 4}, abs{0.6, 1.1, 2.1};
    fit_coefficients f;
    ASSERT_TRUE(inverse_fit(2, conc, abs, f));
    EXPECT_NEAR(f.ka, 0.5, 1e-12);
    EXPECT_NEAR(f.kb, 0.1, 1e-12);
    // Through zero with the origin appended: T1 / Q.
    const std::vector<double> c0{2, 4, 0}, a0{1, 2, 0};
    ASSERT_TRUE(inverse_fit(1, c0, a0, f));
    EXPECT_NEAR(f.ka, 0.5, 1e-12);
    // ABS = 0.1 C^2 + 0.2 C + 0.3 over three Conc.
    const std::vector<double> c2{1, 2, 3}, a2{0.6, 1.1, 1.8};
    ASSERT_TRUE(inverse_fit(4, c2, a2, f));
    EXPECT_NEAR(f.ka, 0.1, 1e-9);
    EXPECT_NEAR(f.kb, 0.2, 1e-9);
    EXPECT_NEAR(f.kc, 0.3, 1e-9);
    // Two distinct Conc. cannot carry a parabola: its determinant is 0.
    const std::vector<double> c3{1, 1, 2}, a3{0.5, 0.6, 1.0};
    f = {};
    EXPECT_FALSE(inverse_fit(4, c3, a3, f));
    EXPECT_FALSE(inverse_fit(3, std::vector<double>{5, 5, 0}, std::vector<double>{1, 1, 0}, f));
    EXPECT_EQ(f.ka, 0.0) << "a failed fit leaves the coefficients alone";
}
