// The inverse fit of ABS on Conc. that the calibration keeps beside itself; the spread and the
// Diff limits are checked through the tables that show them.
#include "processing/replicate_stats.h"

#include <gtest/gtest.h>
#include <vector>

using namespace lumora;

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
