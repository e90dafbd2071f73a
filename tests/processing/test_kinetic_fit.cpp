// The kinetic rate fit against an oracle written out step by step from the rules of the fit,
// each single-precision value stored in a float of its own; and the cases a user meets: two
// points, a falling reaction, a factor of 0, samples at the clamps.
#include "processing/kinetic_fit.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>

using namespace lumora::processing;

namespace {

using curve = std::array<double, kinetic_samples>;

// Half to even by hand: the nearest integer, and between two the even one.
int round_half_even(float v) {
    const float below = std::floor(v);
    const float rest = v - below;
    int n = static_cast<int>(below);
    if (rest > 0.5f || (rest == 0.5f && n % 2 != 0)) ++n;
    return n;
}

struct oracle_result {
    float ka, kb, abs0, dabs_dt, dc_dt;
    std::array<int, 100> s;
};

oracle_result oracle(const curve& samples, int n, int rate, int lag, double factor) {
    oracle_result o{};
    volatile float m = static_cast<float>(rate) / 6.0f;
    volatile float mm = m + m;
    volatile float window = mm + static_cast<float>(rate);
    volatile float k = 280.0f / window;
    volatile float dt = static_cast<float>(rate) / static_cast<float>(n - 1);
    double y[100] = {};
    for (int i = 0; i < n; ++i) {
        volatile float idt = static_cast<float>(i) * dt;
        volatile float t = idt + m;
        volatile float kt = k * t;
        o.s[static_cast<std::size_t>(i)] = round_half_even(kt);
        y[i] = samples[static_cast<std::size_t>(o.s[static_cast<std::size_t>(i)])];
    }
    o.abs0 = static_cast<float>(y[0]);
    volatile float sx = 0, sxx = 0;
    double sy = 0, sxy = 0;
    for (int i = 0; i < n; ++i) {
        volatile float idt = static_cast<float>(i) * dt;
        volatile float x = idt + static_cast<float>(lag);
        volatile float xx = x * x;
        sx = sx + x;
        sxx = sxx + xx;
        sy += y[i];
        sxy += y[i] * static_cast<double>(x);
    }
    volatile float nsxx = static_cast<float>(n) * sxx;
    volatile float sx2 = sx * sx;
    volatile float d = nsxx - sx2;
    o.ka = static_cast<float>((n * sxy - static_cast<double>(sx) * sy) / static_cast<double>(d));
    o.kb = static_cast<float>((sy * static_cast<double>(sxx) - sxy * static_cast<double>(sx)) /
                              static_cast<double>(d));
    volatile float end = o.ka * static_cast<float>(lag + rate);
    end = end + o.kb;
    volatile float start = o.ka * static_cast<float>(lag);
    start = start + o.kb;
    volatile float da = end - start;
    o.dabs_dt = static_cast<float>(static_cast<double>(da) * 60 / rate);
    o.dc_dt = static_cast<float>(factor * static_cast<double>(o.dabs_dt));
    return o;
}

std::string printed(double v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.4f", v);
    return buf;
}

kinetic_result fit(const curve& c, int n, int rate, int lag, double factor = 1.0) {
    return kinetic_fit(c, {n, rate, lag, factor});
}

} // namespace

TEST(KineticFit, MatchesTheOracleToThePrintedDigitOnRandomCurves) {
    std::mt19937 gen(20261124);
    std::uniform_int_distribution<int> points(2, 99), rate(15, 9999), lag(2, 9999);
    std::uniform_real_distribution<double> level(-0.3, 3.0), slope(-0.01, 0.01), noise(-0.02, 0.02);
    for (int run = 0; run < 3000; ++run) {
        const int n = points(gen), r = rate(gen), l = lag(gen);
        const double factor = run % 7 == 0 ? 0.0 : 10000.0 * (run % 13) / 13;
        const double a = level(gen), b = slope(gen);
        curve c{};
        for (std::size_t k = 0; k < c.size(); ++k)
            c[k] = std::clamp(a + b * static_cast<double>(k) + noise(gen), -0.3, 4.5);
        SCOPED_TRACE(testing::Message() << "N " << n << " R " << r << " L " << l << " factor " << factor);
        const kinetic_result got = fit(c, n, r, l, factor);
        const oracle_result want = oracle(c, n, r, l, factor);
        ASSERT_EQ(got.points, n);
        for (int i = 0; i < n; ++i)
            ASSERT_EQ(got.sample[static_cast<std::size_t>(i)], want.s[static_cast<std::size_t>(i)])
                << "point " << i;
        ASSERT_EQ(printed(got.abs0), printed(want.abs0));
        ASSERT_EQ(printed(got.ka), printed(want.ka));
        ASSERT_EQ(printed(got.kb), printed(want.kb));
        ASSERT_EQ(printed(got.dabs_dt), printed(want.dabs_dt));
        ASSERT_EQ(printed(got.dc_dt), printed(want.dc_dt));
    }
}

TEST(KineticFit, PointsSpanTheRateStretchFromSample35To245) {
    const curve c{};
    for (int r = 15; r <= 9999; ++r)
        for (const int n : {2, 3, 5, 7, 99}) {
            const kinetic_result got = fit(c, n, r, 2);
            ASSERT_EQ(got.sample[0], 35) << "R " << r << " N " << n;
            ASSERT_EQ(got.sample[static_cast<std::size_t>(n - 1)], 245) << "R " << r << " N " << n;
            for (int i = 1; i < n; ++i)
                ASSERT_GE(got.sample[static_cast<std::size_t>(i)],
                          got.sample[static_cast<std::size_t>(i - 1)]);
        }
}

TEST(KineticFit, AHalfStepRoundsToTheEvenSample) {
    // R 15, N 5: the points fall at 35, 87.5, 140, 192.5 and 245 samples.
    const kinetic_result got = fit(curve{}, 5, 15, 2);
    EXPECT_EQ(got.sample[1], 88);
    EXPECT_EQ(got.sample[3], 192);
}

TEST(KineticFit, RatesOfALineAndOfTwoPoints) {
    // A line rising 0.002 A per second over samples of 80 s: 0.12 A a minute, whatever the lag.
    // Points 1 and 3 are read half a sample late and early while x stays nominal: a few tenths
    // of a percent.
    curve c{};
    const double step = 80.0 / 280;
    for (std::size_t k = 0; k < c.size(); ++k)
        c[k] = 0.3 + 0.002 * (20 + static_cast<double>(k) * step);
    for (const int lag : {2, 30, 120}) {
        const kinetic_result got = fit(c, 5, 60, lag, 1000);
        EXPECT_NEAR(got.dabs_dt, 0.12, 0.0006) << "lag " << lag;
        EXPECT_FLOAT_EQ(got.dc_dt, 1000 * got.dabs_dt);
        EXPECT_NEAR(got.abs0, c[35], 1e-6);
        EXPECT_NEAR(got.ka * 60, got.dabs_dt, 1e-5);
    }
    // Two points: the line goes through both, and a fall shows as a negative rate.
    curve two{};
    two[35] = 1.25;
    two[245] = 1.0;
    const kinetic_result got = fit(two, 2, 15, 2, 0.0);
    EXPECT_NEAR(got.dabs_dt, (1.0 - 1.25) * 60 / 15, 1e-5);
    EXPECT_NEAR(got.ka * 2 + got.kb, 1.25, 1e-5);
    EXPECT_NEAR(got.ka * 17 + got.kb, 1.0, 1e-5);
    EXPECT_EQ(got.dc_dt, 0.0f);
    EXPECT_EQ(printed(got.dabs_dt).front(), '-');
}

TEST(KineticFit, ClampedSamplesEnterAsTheyStand) {
    curve c{};
    c.fill(4.5);
    c[245] = -0.3;
    const kinetic_result got = fit(c, 2, 15, 2);
    EXPECT_NEAR(got.dabs_dt, (-0.3 - 4.5) * 60 / 15, 1e-4);
    EXPECT_EQ(got.abs0, 4.5f);
}

TEST(KineticFit, WhereTheRunStands) {
    EXPECT_DOUBLE_EQ(kinetic_start_time(30, 0, 60), 20.0);
    EXPECT_DOUBLE_EQ(kinetic_start_time(2, 0, 15), -0.5);
    EXPECT_DOUBLE_EQ(kinetic_start_time(2, 30, 15), 29.5);
    EXPECT_DOUBLE_EQ(kinetic_window(60), 80.0);
    EXPECT_NEAR(kinetic_window(9999) / 280, 47.6, 0.02);
}
