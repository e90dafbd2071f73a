// Smoothing and derivative kernels: known answers on polynomials (including those that the rows
// give where they differ from the published ones), and the working range.
#include "processing/kernels.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <random>

using namespace lumora::processing;

namespace {

using smoother = bool (*)(curve_array&, int, int, int);
using deriver = bool (*)(const curve_array&, int, int, int, point_array&);
using curve_fn = std::function<double(double)>; // of x = wavelength - 720 nm, point p - 400

constexpr int col = 3;
constexpr int first_nm = 320, last_nm = 1110; // a scan of 330..1100 nm

struct kernels : ::testing::Test {
    std::unique_ptr<curve_array> curves = std::make_unique<curve_array>();
    point_array derivative{};
    void fill(const curve_fn& f) {
        for (std::size_t p = 0; p < curves->size(); ++p)
            (*curves)[p][col] = f(static_cast<double>(p) - 400);
    }
    // The first and last points where `differs` holds.
    static std::pair<int, int> span(const std::function<bool(std::size_t)>& differs) {
        std::pair<int, int> s{-1, -1};
        for (std::size_t p = 0; p < spectrum_points; ++p)
            if (differs(p)) {
                if (s.first < 0) s.first = static_cast<int>(p);
                s.second = static_cast<int>(p);
            }
        return s;
    }
};

} // namespace

TEST_F(kernels, SmoothingKeepsConstantsLinesAndForTheQuadraticRowsParabolas) {
    // Smooth25Point's 322 at d = 5 (342 in the published row) takes 2 * 20 * 25 off the second
    // moment, so a parabola comes out lower by 1000 / 5135.
    const struct {
        smoother run;
        int reach;
        double parabola_offset;
    } rows[] = {{Smooth9Point, 4, 0}, {Smooth17Point, 8, 0}, {Smooth25Point, 12, -1000.0 / 5135}};
    const curve_fn inputs[] = {[](double) { return 0.5; }, [](double x) { return 0.2 + 0.001 * x; },
                               [](double x) { return x * x; }};
    for (const auto& k : rows) {
        for (int i = 0; i < 3; ++i) {
            fill(inputs[i]);
            ASSERT_TRUE(k.run(*curves, col, first_nm, last_nm));
            const point_range r = working_range(k.reach, first_nm, last_nm);
            for (int p = r.first; p <= r.last; ++p)
                ASSERT_NEAR((*curves)[p][col], inputs[i](p - 400.0) + (i == 2 ? k.parabola_offset : 0), 1e-8)
                    << "reach " << k.reach << " point " << p;
        }
    }
}

TEST_F(kernels, DerivativesOfPolynomialsGiveTheirKnownValues) {
    const auto constant = [](double c) { return [c](double) { return c; }; };
    const struct {
        deriver run;
        int reach;
        curve_fn f, expected;
    } rows[] = {
        {Derivate17Point1st, 8, [](double x) { return 0.3 + 0.001 * x; }, constant(0.001)},
        {Derivate17Point1st, 8, [](double x) { return x * x * x / 1e6; },
         [](double x) { return 3 * x * x / 1e6; }},
        // 11649 at d = 2 (16649 published) leaves a first moment of 1756060 against the norm 1776060.
        {Derivate25Point1st, 12, [](double x) { return 0.001 * x; }, constant(0.001 * 1756060 / 1776060)},
        {Derivate17Point2nd, 8, [](double x) { return x * x; }, constant(2)},
        {Derivate25Point2nd, 12, [](double x) { return x * x; }, constant(2)},
        {Derivate17Point3rd, 8, [](double x) { return x * x * x; }, constant(6)},
        {Derivate25Point3rd, 12, [](double x) { return x * x * x; }, constant(6)},
        // The fourth-derivative row is no true fourth derivative: a line gives 0, but a parabola
        // gives minus its second moment 6976 over 8398.
        {Derivate17Point4th, 8, [](double x) { return 0.7 + 0.01 * x; }, constant(0)},
        {Derivate17Point4th, 8, [](double x) { return x * x; }, constant(-6976.0 / 8398)},
    };
    for (const auto& k : rows) {
        fill(k.f);
        ASSERT_TRUE(k.run(*curves, col, first_nm, last_nm, derivative));
        const point_range r = working_range(k.reach, first_nm, last_nm);
        for (int p = r.first; p <= r.last; ++p)
            ASSERT_NEAR(derivative[p], k.expected(p - 400.0), 1e-7) << "reach " << k.reach << " point " << p;
    }
}

TEST_F(kernels, OnlyTheWorkingRangeChangesAndItStartsOnePointFurtherInThanItEnds) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> noise(0.0, 1.0);
    for (auto& point : *curves)
        for (double& v : point)
            v = noise(rng);
    const curve_array before = *curves;
    // A scan of 400..500 nm runs over points 70..190.
    for (auto [run, reach] :
         {std::pair<smoother, int>{Smooth9Point, 4}, {Smooth17Point, 8}, {Smooth25Point, 12}}) {
        *curves = before;
        ASSERT_TRUE(run(*curves, col, 390, 510));
        EXPECT_EQ(span([&](std::size_t p) { return (*curves)[p][col] != before[p][col]; }),
                  std::pair(71 + reach, 190 - reach));
        for (std::size_t p = 0; p < spectrum_points; ++p)
            (*curves)[p][col] = before[p][col];
        EXPECT_EQ(*curves, before) << "a smoothing wrote outside its column";
    }
    for (auto [run, reach] : {std::pair<deriver, int>{Derivate17Point3rd, 8}, {Derivate25Point2nd, 12}}) {
        derivative.fill(9.0);
        ASSERT_TRUE(run(before, col, 390, 510, derivative));
        EXPECT_EQ(span([&](std::size_t p) { return derivative[p] != 0; }),
                  std::pair(71 + reach, 190 - reach));
    }
}

TEST_F(kernels, ColumnsAndRangesOutsideTheArraysAreRefusedWithoutAWrite) {
    fill([](double x) { return x; });
    const curve_array before = *curves;
    derivative.fill(9.0);
    EXPECT_FALSE(Smooth9Point(*curves, 21, first_nm, last_nm));
    EXPECT_FALSE(Smooth25Point(*curves, col, 300, 1110));                  // would read below 320 nm
    EXPECT_FALSE(Derivate17Point1st(*curves, col, 320, 1120, derivative)); // beyond 1110 nm
    EXPECT_EQ(*curves, before);
    EXPECT_EQ(derivative[400], 9.0);
    // Counters that no scan has set give an empty range: nothing to do, and no fault.
    EXPECT_TRUE(Smooth17Point(*curves, col, 0, 0));
    EXPECT_EQ(*curves, before);
    EXPECT_TRUE(Derivate17Point2nd(*curves, col, 0, 0, derivative));
    EXPECT_EQ(span([&](std::size_t p) { return derivative[p] != 0; }), std::pair(-1, -1));
}
