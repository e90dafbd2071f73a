// The kinetic rate fit against an oracle written out step by step, each single-precision value
// stored in a float of its own; and two points, a fall and a factor of 0.
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

TEST(KineticFit, TwoPointsAFallAndAFactorOf0) {
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
