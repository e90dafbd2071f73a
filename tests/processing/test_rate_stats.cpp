// How straight a kinetic rate is: its standard error and R^2 against the textbook formulas, and
// the search for the longest straight stretch of a run.
#include "processing/rate_stats.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace lumora::processing;

TEST(RateStats, StandardErrorAndR2OfTheWindow) {
    std::array<double, kinetic_samples> samples{};
    std::mt19937_64 rng(3);
    std::normal_distribution<double> noise(0, 0.002);
    for (int k = 0; k < kinetic_samples; ++k)
        samples[static_cast<std::size_t>(k)] = 0.1 + 0.002 * k + noise(rng);
    const kinetic_input in{11, 30, 2, 1.0};
    const kinetic_result r = kinetic_fit(samples, in);
    const rate_stats s = rate_statistics(samples, r, in);
    ASSERT_TRUE(s.ok);
    EXPECT_EQ(s.n, 11);
    // The textbook: s(b) = sqrt(SSres / (n - 2) / Sxx) over the fit's own points, times 60.
    double sx = 0, sy = 0;
    for (int i = 0; i < 11; ++i) {
        sx += i * 3.0;
        sy += samples[static_cast<std::size_t>(r.sample[static_cast<std::size_t>(i)])];
    }
    double sxx = 0, syy = 0, sxy = 0;
    for (int i = 0; i < 11; ++i) {
        const double x = i * 3.0 - sx / 11,
                     y = samples[static_cast<std::size_t>(r.sample[static_cast<std::size_t>(i)])] - sy / 11;
        sxx += x * x;
        syy += y * y;
        sxy += x * y;
    }
    const double b = sxy / sxx, ss = syy - b * sxy;
    EXPECT_NEAR(s.rate_se, std::sqrt(ss / 9 / sxx) * 60, 1e-12);
    EXPECT_NEAR(s.r2, 1 - ss / syy, 1e-12);
    EXPECT_NEAR(b * 60, r.dabs_dt, 1e-4) << "the same line as the rate";
    EXPECT_FALSE(s.curved);

    // A bend in the window drops R^2 under the limit.
    for (int k = 0; k < kinetic_samples; ++k)
        samples[static_cast<std::size_t>(k)] = 1 - std::exp(-k / 60.0);
    const rate_stats bent = rate_statistics(samples, kinetic_fit(samples, in), in);
    EXPECT_TRUE(bent.ok);
    EXPECT_TRUE(bent.curved) << bent.r2;

    // Two points, or a flat run, have no R^2.
    samples.fill(0.5);
    EXPECT_FALSE(rate_statistics(samples, kinetic_fit(samples, in), in).ok);
    const kinetic_input two{2, 30, 2, 1.0};
    EXPECT_FALSE(rate_statistics(samples, kinetic_fit(samples, two), two).ok);
}

TEST(RateStats, LongestStraightStretchEndsWhereTheCurveBends) {
    // Straight up to sample 180, then levelling off; noise 0.002 A.
    std::array<double, kinetic_samples> samples{};
    std::mt19937_64 rng(11);
    std::normal_distribution<double> noise(0, 0.002);
    for (int k = 0; k < kinetic_samples; ++k) {
        const double t = k;
        const double clean = t <= 180 ? 0.005 * t : 0.9 + 0.005 * (t - 180) - 0.0002 * (t - 180) * (t - 180);
        samples[static_cast<std::size_t>(k)] = clean + noise(rng);
    }
    const straight_stretch s = longest_straight(samples, 20);
    ASSERT_TRUE(s.found);
    EXPECT_NEAR(s.noise, 0.002, 0.0005);
    EXPECT_LE(s.first, 5);
    EXPECT_GE(s.last, 170);
    EXPECT_LE(s.last, 200);

    // A curve that bends all along: no stretch of the length asked for is straight.
    for (int k = 0; k < kinetic_samples; ++k)
        samples[static_cast<std::size_t>(k)] = std::round(1000 * 1e-5 * k * k) / 1000;
    EXPECT_FALSE(longest_straight(samples, 150).found);
    EXPECT_FALSE(longest_straight(std::span(samples).first(3), 4).found);
}
