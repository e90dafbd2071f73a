// Peak and valley search on the 281 screen values: thresholds, nearest bases, thinning, plateaus,
// the 100-row limit, and a plain-loop oracle on seeded random curves.
#include "processing/peak_search.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace lumora::processing;

namespace {

search_setup setup(int n = 2, double h = 0.005, int start = 400, int span = 400) {
    return {h, n, start, span, [](double v) { return 300 - static_cast<int>(std::lround(v * 100)); }};
}

// A bump of `height` on a flat `base`, a gaussian of 8 columns' width at `centre`.
screen_array bump(int centre, double height, double base = 0.2) {
    screen_array s{};
    for (std::size_t c = 0; c < s.size(); ++c)
        s[c] = base + height * std::exp(-std::pow((static_cast<double>(c) - centre) / 8.0, 2));
    return s;
}

std::vector<int> columns(const search_result& r) {
    std::vector<int> out;
    for (int k = 0; k < r.count; ++k)
        out.push_back(r.finds[static_cast<std::size_t>(k)].column);
    return out;
}

// The rule written out plainly for peaks; a valley is a peak of the negated curve, except that its
// height test takes the absolute difference.
std::vector<int> oracle(const screen_array& s, int n, double h, bool valley) {
    const auto v = [&](int c) { return valley ? -s[c] : s[c]; };
    std::vector<bool> cand(281), base(281);
    for (int i = n; i <= 280 - n; ++i) {
        cand[i] = v(i) > v(i - n) && v(i) > v(i + n);
        base[i] = v(i) < v(i - n) && v(i) < v(i + n);
    }
    base[0] = base[279] = true;
    const auto tall = [&](int i, int j) { return valley ? std::fabs(s[i] - s[j]) > h : s[i] - s[j] > h; };
    for (int i = 0; i <= 280; ++i) {
        int l = i - 1, r = i + 1;
        while (cand[i] && !base[l])
            --l;
        while (cand[i] && r <= 279 && !base[r])
            ++r;
        cand[i] = cand[i] && tall(i, l) && tall(i, r);
    }
    for (int i = 0; i < 280; ++i)
        if (cand[i]) (v(i + 1) >= v(i) ? cand[i] : cand[i + 1]) = false;
    std::vector<int> out;
    for (int i = 0; i <= 280 && out.size() < 100; ++i)
        if (cand[i]) out.push_back(i);
    return out;
}

} // namespace

TEST(peak_search, AFlatCurveFindsNothingAndOneBumpFindsItsTop) {
    mark_array marks{};
    marks.fill(mark{0, 7, 7});
    screen_array flat{};
    flat.fill(0.4);
    EXPECT_EQ(search_peak(flat, setup(), marks).boxes + search_valley(flat, setup(), marks).boxes, 0);

    const search_result r = search_peak(bump(140, 0.1), setup(), marks);
    ASSERT_EQ(r.count, 1);
    EXPECT_EQ(r.boxes, 1);
    EXPECT_FALSE(r.limit_reached);
    EXPECT_EQ(r.finds[0].lambda, 600); // 140 * 400 / 280 + 400
    EXPECT_DOUBLE_EQ(r.finds[0].value, 0.3);
    EXPECT_EQ(r.finds[0].row, 270);
    EXPECT_EQ((std::array{marks[0].flag, marks[0].column, marks[0].row}),
              (std::array<std::int16_t, 3>{-1, 140, 270}));
    EXPECT_EQ(marks[1].column, 7) << "records past the count are left as they were";
    EXPECT_EQ(search_valley(bump(140, 0.1), setup(), marks).count, 0);
    EXPECT_EQ(columns(search_valley(bump(70, -0.1), setup(), marks)), std::vector<int>{70});

    // Wavelengths are whole nanometres of the view: 100 * 400 / 280 + 400 = 542.86 is 543, and on
    // a 2 nm view, where a column is 1/140 nm, 400.5 rounds to 400 and 401.5 to 402.
    EXPECT_EQ(search_peak(bump(100, 0.1), setup(), marks).finds[0].lambda, 543);
    EXPECT_EQ(search_peak(bump(70, 0.1), setup(2, 0.005, 400, 2), marks).finds[0].lambda, 400);
    EXPECT_EQ(search_peak(bump(210, 0.1), setup(2, 0.005, 400, 2), marks).finds[0].lambda, 402);
}

TEST(peak_search, TheHeightMustExceedTheThresholdStrictlyAndTheHalfWidthFollowsTheSetup) {
    mark_array marks{};
    const struct {
        double height;
        bool percent_t;
        int found;
    } rows[] = {{0.005, false, 0}, {0.0051, false, 1}, {0.006, true, 0}, {0.05, true, 0}, {0.051, true, 1}};
    for (const auto& row : rows) {
        const search_setup s = setup(2, search_threshold(row.percent_t));
        EXPECT_EQ(search_peak(bump(140, row.height, 0.0), s, marks).count, row.found) << row.height;
        EXPECT_EQ(search_valley(bump(140, -row.height, 0.0), s, marks).count, row.found) << row.height;
    }
    const int n[] = {search_half_width(400, 800), search_half_width(400, 440), search_half_width(400, 439),
                     search_half_width(400, 425), search_half_width(400, 424)};
    EXPECT_EQ(std::vector<int>(std::begin(n), std::end(n)), (std::vector<int>{2, 2, 4, 4, 6}));
}

TEST(peak_search, BasesThinningAndPlateausFollowTheScreenRule) {
    mark_array marks{};
    // Two tops with a shallow dip between: each is measured against the dip, its nearest base,
    // not against the floor, and neither stands 0.005 above it.
    screen_array s{};
    const double twin[] = {0.02,  0.04,  0.06,  0.08, 0.1,  0.099, 0.098,
                           0.097, 0.098, 0.099, 0.1,  0.08, 0.06,  0.04};
    std::copy(std::begin(twin), std::end(twin), s.begin() + 126);
    EXPECT_EQ(search_peak(s, setup(), marks).count, 0);

    // Adjacent candidates on a rising flank give way to the right until the top; a candidate whose
    // right neighbour is higher but no candidate is lost with it (the 1.2 at 103 is never found).
    s = {};
    s[101] = 0.3, s[102] = 0.9, s[103] = 1.0, s[104] = 0.2;
    EXPECT_EQ(columns(search_peak(s, setup(), marks)), std::vector<int>{103});
    s = {};
    s[101] = 0.5, s[102] = 1.0, s[103] = 1.2, s[104] = 0.5, s[105] = 1.5, s[106] = 1.0;
    EXPECT_EQ(columns(search_peak(s, setup(), marks)), std::vector<int>{105});

    // A flat top wider than 2n columns has no column above both neighbours n away; a narrower one
    // has, but its right neighbour is as high, so the thinning drops it too.
    for (int n : {2, 4}) {
        for (int width : {1, 2 * n - 1, 2 * n + 1}) {
            s = {};
            std::fill_n(s.begin() + 140, width, 1.0);
            EXPECT_EQ(search_peak(s, setup(n), marks).count, width == 1 ? 1 : 0) << n << " " << width;
        }
    }

    // A valley needs only to differ from its bases: one that lies above its left base is found,
    // while the mirrored peak, below its left base, is not.
    s.fill(1.0);
    for (int c = 0; c < 20; ++c)
        s[static_cast<std::size_t>(c)] = c * 0.05;
    s[140] = 0.99;
    EXPECT_EQ(columns(search_valley(s, setup(), marks)), std::vector<int>{140});
    std::transform(s.begin(), s.end(), s.begin(), [](double v) { return -v; });
    EXPECT_EQ(search_peak(s, setup(), marks).count, 0);
}

TEST(peak_search, AHundredRowsAndOneMoreBoxThenTheSearchStops) {
    // Period 5 with tops at 0 and 2 and n = 4: 108 finds from column 7 on, at 7, 10, 12, 15, ...
    screen_array s{};
    for (std::size_t c = 0; c < s.size(); ++c)
        s[c] = (c % 5 == 0 || c % 5 == 2) ? 1.0 : 0.0;
    mark_array marks{};
    const search_result r = search_peak(s, setup(4), marks);
    EXPECT_EQ(r.count, 100);
    EXPECT_EQ(r.boxes, 101);
    EXPECT_TRUE(r.limit_reached);
    EXPECT_EQ(marks[99].column, 255);
    EXPECT_EQ(r.finds[100].column, 257) << "the 101st is boxed";
    EXPECT_EQ(marks[100].flag, 0) << "but has no record";
}

TEST(peak_search, AgreesWithThePlainRuleOnRandomCurves) {
    std::mt19937 rng(2024);
    std::normal_distribution<double> step(0.0, 0.01);
    mark_array marks{};
    for (int trial = 0; trial < 300; ++trial) {
        screen_array s{};
        double y = 1.0;
        for (double& v : s)
            v = std::round((y += step(rng)) * 1000) / 1000; // whole milli-units, so ties occur
        const int n = 2 + 2 * (trial % 3);
        ASSERT_EQ(columns(search_peak(s, setup(n), marks)), oracle(s, n, 0.005, false)) << trial;
        ASSERT_EQ(columns(search_valley(s, setup(n), marks)), oracle(s, n, 0.005, true)) << trial;
    }
}
