// The calibration fits against a plain least-squares solution, the worked cases of the fits, the
// evaluation of a sample and the axis limits of the calibration plot.
#include "processing/calibration_fit.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>
#include <vector>

namespace lumora {
namespace {

// Least squares by the normal equations, solved by Gaussian elimination with partial pivoting
// in long double; the basis of each fit type as the model says (Conc. on ABS).
struct oracle_fit {
    bool ok = false;
    long double ka = 0, kb = 0, kc = 0, r2 = 0;
};

oracle_fit oracle(int type, std::vector<double> conc, std::vector<double> abs) {
    if (type == 1 || type == 3) { // the origin is one more point
        conc.push_back(0);
        abs.push_back(0);
    }
    const auto basis = [type](long double a) -> std::vector<long double> {
        switch (type) {
        case 1:
            return {a};
        case 2:
            return {a, 1};
        case 3:
            return {a * a, a};
        default:
            return {a * a, a, 1};
        }
    };
    const std::size_t m = type == 1 ? 1 : (type == 4 ? 3 : 2);
    std::array<std::array<long double, 4>, 3> g{}; // the normal equations, right side in column m
    for (std::size_t p = 0; p < conc.size(); ++p) {
        const auto b = basis(abs[p]);
        for (std::size_t i = 0; i < m; ++i) {
            for (std::size_t j = 0; j < m; ++j)
                g[i][j] += b[i] * b[j];
            g[i][m] += b[i] * conc[p];
        }
    }
    for (std::size_t col = 0; col < m; ++col) {
        std::size_t pivot = col;
        for (std::size_t r = col + 1; r < m; ++r)
            if (std::fabs(g[r][col]) > std::fabs(g[pivot][col])) pivot = r;
        std::swap(g[col], g[pivot]);
        if (g[col][col] == 0) return {};
        for (std::size_t r = 0; r < m; ++r) {
            if (r == col) continue;
            const long double f = g[r][col] / g[col][col];
            for (std::size_t c = col; c <= m; ++c)
                g[r][c] -= f * g[col][c];
        }
    }
    std::array<long double, 3> k{};
    for (std::size_t i = 0; i < m; ++i)
        k[i] = g[i][m] / g[i][i];
    oracle_fit f;
    f.ok = true;
    if (type == 1) f.ka = k[0];
    if (type == 2 || type == 3) f.ka = k[0], f.kb = k[1];
    if (type == 4) f.ka = k[0], f.kb = k[1], f.kc = k[2];
    long double mean = 0;
    for (double c : conc)
        mean += c;
    mean /= conc.size();
    long double res = 0, tot = 0;
    for (std::size_t p = 0; p < conc.size(); ++p) {
        const auto b = basis(abs[p]);
        long double model = 0;
        for (std::size_t i = 0; i < m; ++i)
            model += k[i] * b[i];
        res += (conc[p] - model) * (conc[p] - model);
        tot += (conc[p] - mean) * (conc[p] - mean);
    }
    f.r2 = 1 - res / tot;
    return f;
}

calibration_set set_of(const std::vector<double>& conc, const std::vector<double>& abs) {
    calibration_set s;
    s.std_count = static_cast<std::int16_t>(conc.size());
    for (std::size_t i = 0; i < conc.size(); ++i) {
        s.std_conc[i] = conc[i];
        s.std_abs[i] = abs[i];
    }
    return s;
}

void expect_close(long double expected, double actual, double scale, const char* what, int type, int n) {
    EXPECT_NEAR(actual, static_cast<double>(expected), 1e-7 * scale)
        << what << " type " << type << " n " << n;
}

TEST(CalibrationFit, EachFitEqualsLeastSquaresOnSeededSets) {
    std::mt19937_64 rng(20261124);
    std::uniform_real_distribution<double> abs_of(0.02, 3.0), conc_of(0.0, 30000.0);
    int compared = 0;
    for (int round = 0; round < 40; ++round) {
        for (int n = 1; n <= max_standards; ++n) {
            std::vector<double> conc, abs;
            for (int i = 0; i < n; ++i) {
                abs.push_back(abs_of(rng));
                conc.push_back(conc_of(rng));
            }
            for (int type = 1; type <= 4; ++type) {
                if (n < fit_least_standards(type)) continue;
                calibration_set s = set_of(conc, abs);
                ASSERT_TRUE(calcu_fit(s, type)) << "type " << type << " n " << n;
                const oracle_fit o = oracle(type, conc, abs);
                ASSERT_TRUE(o.ok);
                // Coefficients scale with Conc. over powers of ABS: measure them against that.
                const double scale = 30000.0 * 100;
                expect_close(o.ka, s.fit_ka, scale, "Ka", type, n);
                expect_close(o.kb, s.fit_kb, scale, "Kb", type, n);
                expect_close(o.kc, s.fit_kc, scale, "Kc", type, n);
                EXPECT_NEAR(s.fit_r2, static_cast<double>(o.r2), 1e-7) << "R2 type " << type << " n " << n;
                ++compared;
            }
        }
    }
    EXPECT_GT(compared, 2500);
}

TEST(CalibrationFit, WorkedCases) {
    // One standard through zero: (0.5, 10) and the origin.
    calibration_set one = set_of({10}, {0.5});
    one.std_conc[1] = 99;
    one.std_abs[1] = 99;
    ASSERT_TRUE(calcu_1optz(one));
    EXPECT_DOUBLE_EQ(one.fit_ka, 20);
    EXPECT_DOUBLE_EQ(one.fit_r2, 1);
    EXPECT_EQ(one.fit_kb, 0);
    EXPECT_EQ(one.fit_kc, 0);
    EXPECT_EQ(one.std_conc[1], 0);
    EXPECT_EQ(one.std_abs[1], 0);

    // Three standards on an exact parabola.
    calibration_set parabola =
        set_of({2 * 0.25 + 3 * 0.5 + 1, 2 * 1 + 3 * 1 + 1, 2 * 4 + 3 * 2 + 1}, {0.5, 1, 2});
    ASSERT_TRUE(calcu_2opnz(parabola));
    EXPECT_NEAR(parabola.fit_ka, 2, 1e-9);
    EXPECT_NEAR(parabola.fit_kb, 3, 1e-9);
    EXPECT_NEAR(parabola.fit_kc, 1, 1e-9);
    EXPECT_NEAR(parabola.fit_r2, 1, 1e-9);

    // R squared is the figure itself: a line that explains less than the mean goes negative.
    calibration_set poor = set_of({0, 10}, {1, 0.01});
    ASSERT_TRUE(calcu_1optz(poor));
    EXPECT_LT(poor.fit_r2, 0);
}

TEST(CalibrationFit, FailuresKeepTheCoefficients) {
    struct failing {
        int type;
        std::vector<double> conc, abs;
    };
    const failing cases[] = {
        {2, {5, 5, 5}, {0.1, 0.2, 0.4}}, // the same Conc. everywhere: no spread
        {4, {5, 5, 5}, {0.1, 0.2, 0.4}},
        {2, {1, 2, 3}, {0.4, 0.4, 0.4}}, // all ABS equal: D = 0
        {1, {1, 2}, {0, 0}},             // all ABS 0 through zero: S2 = 0
        {3, std::vector<double>(20, 3.0), std::vector<double>(20, 0.0)},
        {5, {1, 2}, {0.1, 0.2}}, // no such fit
    };
    for (const failing& f : cases) {
        calibration_set s = set_of(f.conc, f.abs);
        s.fit_ka = 7, s.fit_kb = 8, s.fit_kc = 9, s.fit_r2 = -5;
        const std::size_t n = f.conc.size();
        s.std_conc[n] = s.std_abs[n] = 42;
        EXPECT_FALSE(calcu_fit(s, f.type)) << f.type;
        EXPECT_EQ(s.fit_ka, 7);
        EXPECT_EQ(s.fit_kb, 8);
        EXPECT_EQ(s.fit_kc, 9);
        EXPECT_EQ(s.fit_r2, -5);
        // The through-zero fits leave the origin behind the standards, at index 20 too.
        const bool origin = f.type == 1 || f.type == 3;
        EXPECT_EQ(s.std_conc[n], origin ? 0 : 42) << f.type;
        EXPECT_EQ(s.std_abs[n], origin ? 0 : 42) << f.type;
    }
}

TEST(CalibrationLimits, FromTheStandards) {
    calibration_set s;
    const std::vector<double> conc{1, 2, 4, 8}, abs{0.25, 0.5, 1.0, 2.0};
    calcu_conc_limite(s, conc, abs);
    EXPECT_EQ(s.conc_min, 0);
    EXPECT_EQ(s.abs_min, 0);
    EXPECT_DOUBLE_EQ(s.conc_max, 8.8);
    EXPECT_DOUBLE_EQ(s.abs_max, 2.2);

    // A negative reading widens the ABS axis downwards; Conc. never widens downwards.
    const std::vector<double> conc2{-1, 3}, abs2{-0.1, 0.3};
    calcu_conc_limite(s, conc2, abs2);
    EXPECT_DOUBLE_EQ(s.abs_min, -0.11);
    EXPECT_EQ(s.conc_min, -1);
    EXPECT_DOUBLE_EQ(s.conc_max, 3.3);

    // A range of 0.1 or less gets 0.1 more at the top.
    const std::vector<double> small{0.05}, small_abs{0.01};
    calcu_conc_limite(s, small, small_abs);
    EXPECT_DOUBLE_EQ(s.conc_max, 0.055 + 0.1);
}

TEST(CalibrationLimits, KnownFactorFollowsTheCurve) {
    calibration_set s;
    s.abs_min = 0;
    s.abs_max = 3;
    s.fit_type = 2;
    s.fit_ka = 2;
    s.fit_kb = 1;
    calcu_conc_limite_factor(s);
    EXPECT_DOUBLE_EQ(s.conc_min, 1);
    EXPECT_NEAR(s.conc_max, 7, 1e-12);
    EXPECT_EQ(s.abs_max, 3); // the user's own range stands

    // Type 3 starts from Kc, whatever its value, and runs the full second-order formula.
    s.fit_type = 3;
    s.fit_ka = -1;
    s.fit_kb = 0;
    s.fit_kc = 0.5;
    calcu_conc_limite_factor(s);
    EXPECT_DOUBLE_EQ(s.conc_max, 0.5); // the curve falls from Kc: the start is the top
    EXPECT_NEAR(s.conc_min, -9 + 0.5, 1e-9);
}

} // namespace
} // namespace lumora
