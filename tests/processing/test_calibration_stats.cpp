// The calibration statistics against independent computations: table values of t and F, a
// worked example from a textbook, long double normal equations, the textbook inverse-prediction
// formula, and the coverage of the prediction interval on readings from the simulator's model.
#include "processing/calibration_stats.h"
#include "processing/distributions.h"
#include "sim/model.h"

#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace lumora;

namespace {

// Least squares by the normal equations in long double, for y on the powers of x listed.
struct ref_fit {
    std::vector<long double> beta, se;
    long double s = 0;
};
ref_fit reference(const std::vector<double>& x, const std::vector<double>& y, const std::vector<int>& powers,
                  const std::vector<double>& w) {
    const std::size_t p = powers.size(), n = x.size();
    std::vector<std::vector<long double>> a(p, std::vector<long double>(2 * p, 0));
    std::vector<long double> rhs(p, 0);
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j < p; ++j) {
            rhs[j] += w[i] * std::pow((long double)x[i], powers[j]) * y[i];
            for (std::size_t k = 0; k < p; ++k)
                a[j][k] += w[i] * std::pow((long double)x[i], powers[j] + powers[k]);
        }
    for (std::size_t j = 0; j < p; ++j)
        a[j][p + j] = 1;
    for (std::size_t c = 0; c < p; ++c) { // Gauss-Jordan, the matrix is positive definite
        const long double d = a[c][c];
        for (auto& v : a[c])
            v /= d;
        for (std::size_t r = 0; r < p; ++r)
            if (r != c) {
                const long double f = a[r][c];
                for (std::size_t k = 0; k < 2 * p; ++k)
                    a[r][k] -= f * a[c][k];
            }
    }
    ref_fit out;
    out.beta.assign(p, 0);
    for (std::size_t j = 0; j < p; ++j)
        for (std::size_t k = 0; k < p; ++k)
            out.beta[j] += a[j][p + k] * rhs[k];
    long double ss = 0;
    for (std::size_t i = 0; i < n; ++i) {
        long double f = 0;
        for (std::size_t j = 0; j < p; ++j)
            f += out.beta[j] * std::pow((long double)x[i], powers[j]);
        ss += w[i] * (y[i] - f) * (y[i] - f);
    }
    out.s = std::sqrt(ss / (long double)(n - p));
    for (std::size_t j = 0; j < p; ++j)
        out.se.push_back(out.s * std::sqrt(a[j][p + j]));
    return out;
}

} // namespace

TEST(Distributions, MatchPrintedTables) {
    EXPECT_NEAR(student_t_quantile(0.975, 1), 12.706, 5e-4);
    EXPECT_NEAR(student_t_quantile(0.975, 5), 2.571, 5e-4);
    EXPECT_NEAR(student_t_quantile(0.975, 30), 2.042, 5e-4);
    EXPECT_NEAR(student_t_quantile(0.95, 10), 1.812, 5e-4);
    EXPECT_NEAR(student_t_quantile(0.025, 5), -2.571, 5e-4);
    EXPECT_NEAR(f_quantile(0.95, 2, 10), 4.10, 5e-3);
    EXPECT_NEAR(f_quantile(0.95, 1, 10), 4.96, 5e-3);
    EXPECT_NEAR(f_quantile(0.95, 3, 20), 3.10, 5e-3);
    EXPECT_NEAR(f_quantile(0.99, 4, 12), 5.41, 5e-3);
    // The tail is the complement of the quantile it came from.
    EXPECT_NEAR(f_upper_tail(f_quantile(0.95, 7, 3), 7, 3), 0.05, 1e-9);
    EXPECT_NEAR(incomplete_beta(2, 3, 0.4), 0.5248, 1e-4);
    EXPECT_TRUE(std::isnan(student_t_quantile(0.975, 0)));
    EXPECT_TRUE(std::isnan(f_quantile(1.5, 2, 3)));
}

// The fluorescence calibration worked through in Miller & Miller, "Statistics and Chemometrics
// for Analytical Chemistry" (chapter 5): x in pg/ml, y in fluorescence units, figures compared to
// the precision printed there. The book works s(y/x) and s(a) out from its rounded residuals, so
// those two agree to 1e-4.
TEST(CalibrationStats, TextbookWorkedExample) {
    const std::vector<double> x{0, 2, 4, 6, 8, 10, 12}, y{2.1, 5.0, 9.0, 12.6, 17.3, 21.0, 24.7};
    const calibration_stats s = calibration_statistics(2, stats_weighting::none, x, y);
    ASSERT_TRUE(s.ok) << s.why;
    EXPECT_EQ(s.df, 5);
    EXPECT_NEAR(s.beta[1], 1.93, 0.005);
    EXPECT_NEAR(s.beta[0], 1.52, 0.005);
    EXPECT_NEAR(std::sqrt(s.r2), 0.9989, 5e-5);
    EXPECT_NEAR(s.s_yx, 0.4329, 1e-4);
    EXPECT_NEAR(s.beta_se[1], 0.0409, 5e-5);
    EXPECT_NEAR(s.beta_se[0], 0.2950, 1e-4);
    const double y0[3] = {2.9, 13.5, 23.0}, x0[3] = {0.72, 6.21, 11.13}, sx0[3] = {0.26, 0.24, 0.26};
    for (int i = 0; i < 3; ++i) {
        const sample_prediction p = predict_sample(s, y0[i], 1, 0);
        ASSERT_TRUE(p.ok);
        EXPECT_NEAR(p.conc, x0[i], 0.005);
        EXPECT_NEAR(p.se, sx0[i], 0.005);
    }
}

TEST(CalibrationStats, AgreesWithLongDoubleNormalEquations) {
    std::mt19937_64 rng(7);
    std::normal_distribution<double> noise(0, 0.004);
    std::vector<double> c, a;
    for (int level = 1; level <= 8; ++level)
        for (int rep = 0; rep < 3; ++rep) {
            const double x = 12.5 * level; // a unit with large numbers: conditioning matters
            c.push_back(x);
            a.push_back(0.02 + 0.008 * x - 1.5e-5 * x * x + noise(rng));
        }
    const std::vector<double> ones(c.size(), 1.0);
    struct model {
        int type;
        std::vector<int> powers;
    };
    for (const model& m : {model{1, {1}}, model{2, {0, 1}}, model{3, {1, 2}}, model{4, {0, 1, 2}}}) {
        const calibration_stats s = calibration_statistics(m.type, stats_weighting::none, c, a);
        ASSERT_TRUE(s.ok) << m.type;
        const ref_fit r = reference(c, a, m.powers, ones);
        EXPECT_EQ(s.df, static_cast<int>(c.size() - m.powers.size()))
            << "through zero keeps n - 1 for type 1";
        EXPECT_NEAR(s.s_yx, (double)r.s, 1e-9 * s.s_yx) << m.type;
        for (std::size_t j = 0; j < m.powers.size(); ++j) {
            const auto k = static_cast<std::size_t>(m.powers[j]);
            EXPECT_NEAR(s.beta[k], (double)r.beta[j], 1e-8 * std::abs((double)r.beta[j]))
                << m.type << " " << k;
            EXPECT_NEAR(s.beta_se[k], (double)r.se[j], 1e-7 * (double)r.se[j]) << m.type << " " << k;
        }
    }
    // The weighted straight lines: weights 1/x and 1/x^2 scaled to add up to n.
    for (auto wt : {stats_weighting::inverse_x, stats_weighting::inverse_x2}) {
        std::vector<double> w;
        double sum = 0;
        for (double x : c)
            sum += wt == stats_weighting::inverse_x ? 1 / x : 1 / (x * x);
        for (double x : c)
            w.push_back((wt == stats_weighting::inverse_x ? 1 / x : 1 / (x * x)) * c.size() / sum);
        const calibration_stats s = calibration_statistics(2, wt, c, a);
        ASSERT_TRUE(s.ok);
        const ref_fit r = reference(c, a, {0, 1}, w);
        EXPECT_NEAR(s.beta[1], (double)r.beta[1], 1e-9 * s.beta[1]);
        EXPECT_NEAR(s.beta_se[0], (double)r.se[0], 1e-7 * s.beta_se[0]);
        EXPECT_NEAR(s.s_yx, (double)r.s, 1e-9 * s.s_yx);
        // The textbook's weighted inverse prediction, the weight at x0 taken from its own 1/x law.
        const double y0 = 0.45;
        const int m = 3;
        const sample_prediction p = predict_sample(s, y0, m, 0);
        long double sw = 0, swx = 0, swy = 0, swxx = 0;
        for (std::size_t i = 0; i < c.size(); ++i) {
            sw += w[i];
            swx += w[i] * c[i];
            swy += w[i] * a[i];
            swxx += w[i] * c[i] * c[i];
        }
        const long double xw = swx / sw, yw = swy / sw, b = r.beta[1];
        const long double x0 = (y0 - r.beta[0]) / b;
        const long double w0 = (wt == stats_weighting::inverse_x ? 1 / x0 : 1 / (x0 * x0)) * c.size() / sum;
        const long double sx0 =
            r.s / b *
            std::sqrt(1 / (w0 * m) + 1 / sw + (y0 - yw) * (y0 - yw) / (b * b * (swxx - sw * xw * xw)));
        EXPECT_NEAR(p.conc, (double)x0, 1e-9 * p.conc);
        EXPECT_NEAR(p.se, (double)sx0, 1e-7 * p.se);
    }
    // Through zero: x0 = y0 / b, s(x0) = s / b sqrt(1/m + y0^2 / (b^2 sum x^2)), t on n - 1.
    const calibration_stats s1 = calibration_statistics(1, stats_weighting::none, c, a);
    long double sxx = 0;
    for (double x : c)
        sxx += (long double)x * x;
    const sample_prediction p1 = predict_sample(s1, 0.5, 2, 0);
    const long double b = s1.beta[1];
    EXPECT_NEAR(p1.se, (double)(s1.s_yx / b * std::sqrt(0.5L + 0.25L / (b * b * sxx))), 1e-9);
    EXPECT_NEAR(s1.t95, student_t_quantile(0.975, static_cast<double>(c.size() - 1)), 1e-12);
}

TEST(CalibrationStats, LinearityTestsTellCurvesFromLines) {
    // Replicates: a bent response fails the lack-of-fit test, a straight one passes.
    std::vector<double> c, straight, bent;
    const double jitter[3] = {-0.002, 0.0005, 0.0015};
    for (int level = 1; level <= 6; ++level)
        for (int rep = 0; rep < 3; ++rep) {
            c.push_back(level);
            straight.push_back(0.1 * level + jitter[rep] * (level % 2 ? 1 : -1));
            bent.push_back(0.1 * level - 0.004 * level * level + jitter[rep]);
        }
    const calibration_stats ok = calibration_statistics(2, stats_weighting::none, c, straight);
    const calibration_stats bad = calibration_statistics(2, stats_weighting::none, c, bent);
    EXPECT_EQ(ok.test.test, linearity_test::kind::lack_of_fit);
    EXPECT_EQ(ok.test.df1, 4);
    EXPECT_EQ(ok.test.df2, 12);
    EXPECT_FALSE(ok.test.significant) << ok.test.p;
    EXPECT_TRUE(bad.test.significant) << bad.test.p;
    // The second-order fit follows the bend: no lack of fit left.
    EXPECT_FALSE(calibration_statistics(4, stats_weighting::none, c, bent).test.significant);

    // One reading per standard: Mandel's test from five standards on.
    const std::vector<double> x{1, 2, 3, 4, 5, 6}, line{0.101, 0.199, 0.302, 0.398, 0.501, 0.600},
        curve{0.097, 0.184, 0.264, 0.336, 0.401, 0.456};
    const calibration_stats m1 = calibration_statistics(2, stats_weighting::none, x, line);
    const calibration_stats m2 = calibration_statistics(1, stats_weighting::none, x, curve);
    EXPECT_EQ(m1.test.test, linearity_test::kind::mandel);
    EXPECT_FALSE(m1.test.significant);
    EXPECT_TRUE(m2.test.significant);
    EXPECT_EQ(m2.test.df2, 4) << "through zero the quadratic keeps n - 2";
    const calibration_stats few =
        calibration_statistics(2, stats_weighting::none, std::span(x).first(4), std::span(line).first(4));
    EXPECT_EQ(few.test.test, linearity_test::kind::none);
    bool says_not_enough = false;
    for (const stats_line& l : stats_lines(few, "mg/L"))
        says_not_enough |= l.label == "Linearity test" && l.value.starts_with(not_enough_data);
    EXPECT_TRUE(says_not_enough);
}

TEST(CalibrationStats, DegenerateInputSaysNotEnoughData) {
    const std::vector<double> one_c{2, 2, 2}, one_a{0.4, 0.41, 0.39};
    const std::vector<double> c{1, 2, 3, 4}, flat{0.3, 0.3, 0.3, 0.3}, noslope{0.3, 0.5, 0.5, 0.3};
    const std::vector<double> c0{0, 1, 2}, a0{0.0, 0.1, 0.2};
    struct bad_case {
        int type;
        stats_weighting w;
        std::span<const double> conc, abs;
    };
    for (const bad_case& b :
         {bad_case{2, stats_weighting::none, one_c, one_a},
          bad_case{1, stats_weighting::none, std::span(c).first(1), std::span(flat).first(1)},
          bad_case{2, stats_weighting::none, c, flat}, bad_case{2, stats_weighting::none, c, noslope},
          bad_case{4, stats_weighting::none, std::span(c).first(3), std::span(noslope).first(3)},
          bad_case{2, stats_weighting::inverse_x, c0, a0},
          bad_case{2, stats_weighting::none, std::span(c).first(2), std::span(a0).first(2)}}) {
        const calibration_stats s = calibration_statistics(b.type, b.w, b.conc, b.abs);
        EXPECT_FALSE(s.ok) << b.type << " n " << b.conc.size();
        EXPECT_FALSE(s.why.empty());
        const sample_prediction p = predict_sample(s, 0.3, 1, 0);
        EXPECT_FALSE(p.ok);
        EXPECT_EQ(sample_flags(p), "not enough data");
        EXPECT_EQ(stats_lines(s, "None").back().value.rfind(not_enough_data, 0), 0u);
    }
    // A reading no concentration can give on a parabola has no prediction either.
    const std::vector<double> pc{1, 2, 3, 4, 5}, pa{0.2, 0.35, 0.45, 0.5, 0.52};
    const calibration_stats s = calibration_statistics(4, stats_weighting::none, pc, pa);
    ASSERT_TRUE(s.ok);
    EXPECT_FALSE(predict_sample(s, 2.0, 1, 3).ok);
    EXPECT_FALSE(predict_sample(s, NAN, 1, 3).ok);
}

TEST(CalibrationStats, FlagsRangeLoqAndTurningCurves) {
    const std::vector<double> c{0, 0, 0, 1, 2, 4, 8}, a{0.002, -0.001, 0.0, 0.101, 0.199, 0.402, 0.799};
    const calibration_stats s = calibration_statistics(2, stats_weighting::none, c, a);
    ASSERT_TRUE(s.ok);
    // Three blanks: the LOD comes from their spread, 3.3 sd / slope.
    EXPECT_EQ(s.blank_readings, 3);
    const double sd = std::sqrt(((0.002 - 1.0 / 3000) * (0.002 - 1.0 / 3000) +
                                 (0.001 + 1.0 / 3000) * (0.001 + 1.0 / 3000) + (1.0 / 3000) * (1.0 / 3000)) /
                                2);
    EXPECT_NEAR(s.lod, 3.3 * sd / s.beta[1], 1e-12);
    EXPECT_EQ(sample_flags(predict_sample(s, 0.9, 1, 9)), "above range");
    EXPECT_EQ(sample_flags(predict_sample(s, -0.05, 1, 0)), "below range, below LOQ");
    EXPECT_EQ(sample_flags(predict_sample(s, s.beta[0] + s.beta[1] * s.loq * 0.8, 1, 0)), "below LOQ");
    EXPECT_EQ(sample_flags(predict_sample(s, 0.3, 1, 3)), "");

    // A parabola that turns at Conc. 5 inside standards 1..8: readings near its top have two
    // concentrations; the one nearest the function's own Conc. is taken.
    std::vector<double> pc, pa;
    for (double x = 1; x <= 8; x += 1) {
        pc.push_back(x);
        pa.push_back(0.2 * x - 0.02 * x * x + (static_cast<int>(x) % 2 ? 0.001 : -0.001));
    }
    const calibration_stats q = calibration_statistics(4, stats_weighting::none, pc, pa);
    ASSERT_TRUE(q.ok);
    EXPECT_TRUE(q.turns);
    EXPECT_NEAR(q.turn_conc, 5, 0.1);
    const sample_prediction low = predict_sample(q, 0.42, 1, 3.5), high = predict_sample(q, 0.42, 1, 6.5);
    EXPECT_TRUE(low.not_unique);
    EXPECT_LT(low.conc, 5);
    EXPECT_GT(high.conc, 5);
    EXPECT_EQ(sample_flags(low), "not unique");
    bool warned = false;
    for (const stats_line& l : stats_lines(q, "mg/L"))
        warned |= l.label == "Warning";
    EXPECT_TRUE(warned);
    EXPECT_FALSE(predict_sample(q, 0.2, 1, 1.2).not_unique) << "below the second root's reach";
}

// Readings built the way the simulator's detector makes them: counts through the sample with
// Gaussian noise, against a blank read the same way, rounded to the three decimals shown.
TEST(CalibrationStats, PredictionIntervalCoversTheTrueConcentration) {
    constexpr double nm = 540;
    int covered = 0, total = 0;
    for (std::uint64_t set = 0; set < 100; ++set) {
        sim::Model model(1000 + set, 0, "blank");
        const double open = model.optics().open_beam(nm), dark = model.optics().dark_at(nm);
        sim::Model noisy(1000 + set, 0.002 * std::log(10.0) * open, "blank");
        const double blank = noisy.sample_counts(nm, 0) - dark;
        const auto read = [&](double conc) {
            noisy.compartment().load("standard:" + std::to_string(conc), 0);
            const double a = std::log10(blank / (noisy.sample_counts(nm, 0) - dark));
            return std::round(a * 1000) / 1000;
        };
        std::vector<double> c, a;
        for (double x : {0.1, 0.2, 0.3, 0.4, 0.5, 0.6})
            for (int rep = 0; rep < 2; ++rep) {
                c.push_back(x);
                a.push_back(read(x));
            }
        const calibration_stats s = calibration_statistics(2, stats_weighting::none, c, a);
        ASSERT_TRUE(s.ok);
        std::mt19937_64 pick(set);
        std::uniform_real_distribution<double> where(0.1, 0.6);
        for (int k = 0; k < 20; ++k) {
            const double truth = std::round(where(pick) * 1e4) / 1e4;
            const double mean = (read(truth) + read(truth)) / 2;
            const sample_prediction p = predict_sample(s, mean, 2, truth);
            ASSERT_TRUE(p.ok);
            covered += p.low <= truth && truth <= p.high;
            ++total;
        }
    }
    EXPECT_EQ(total, 2000);
    const double share = static_cast<double>(covered) / total;
    std::printf("coverage %.4f\n", share);
    EXPECT_GE(share, 0.93);
    EXPECT_LE(share, 0.97);
}
