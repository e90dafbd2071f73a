// Zoom by rectangle and "Auto": which rectangles change the view, how narrow a Y range may get,
// and the margins of the automatic range.
#include "plot/zoom.h"

#include <gtest/gtest.h>

using namespace lumora;

TEST(ZoomCursor, TakesTheRectangleRoundedToWholeUnitsUnlessUnder12WideAndKeepsTheNarrowestYRange) {
    struct row {
        int start, stop;
        double high, low;
        QRect band;
        bool percent_t;
        int new_start, new_stop;
        double new_high, new_low;
    };
    const QRect band(QPoint(100, 50), QPoint(200, 150));
    const double top = 200 * (0.5 / 280) + 50.0; // the top row of a band at 100 on a 50.0..50.5 view
    const row rows[] = {
        {400, 800, 3.0, 0.0, band, false, 457, 600, 250 * (3.0 / 280), 150 * (3.0 / 280)}, // 457.14 nm
        // A 5 by 5 band on 400 nm spans 7.1 nm: nothing changes, Y included.
        {400, 800, 3.0, 0.0, QRect(QPoint(100, 100), QPoint(105, 105)), false, 400, 800, 3.0, 0.0},
        // On 280 nm one column is one nanometre: 11 columns are too few, 12 enough.
        {400, 680, 3.0, 0.0, QRect(QPoint(100, 50), QPoint(111, 150)), false, 400, 680, 3.0, 0.0},
        {400, 680, 3.0, 0.0, QRect(QPoint(100, 50), QPoint(112, 150)), false, 440, 452, 250 * (3.0 / 280),
         150 * (3.0 / 280)},
        {400, 800, 1.0, 1.0, band, false, 400, 800, 1.0, 1.0}, // a view without height is left alone
        // Five rows of a 50.0..50.5 view are 0.0089: under the 0.01 of %T, over the 0.001 of ABS.
        {400, 800, 50.5, 50.0, QRect(QPoint(100, 100), QPoint(200, 105)), true, 457, 600, top, top - 0.01},
        {400, 800, 50.5, 50.0, QRect(QPoint(100, 100), QPoint(200, 105)), false, 457, 600, top,
         195 * (0.5 / 280) + 50.0},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(testing::Message() << r.start << ".." << r.stop << " " << r.band.width() << " wide");
        plot_view v;
        init_view(v, r.start, r.stop, r.high, r.low);
        v.zoom_rect = r.band;
        zoom_cursor(v, r.percent_t);
        EXPECT_EQ(v.view_start, r.new_start);
        EXPECT_EQ(v.view_stop, r.new_stop);
        EXPECT_DOUBLE_EQ(v.view_high, r.new_high);
        EXPECT_DOUBLE_EQ(v.view_low, r.new_low);
        EXPECT_EQ(v.zoomed, r.high > r.low) << "a band too narrow still counts as a zoom";
    }
}

TEST(ZoomAuto, FitsTheScreenCurveWithOnePercentMarginCountingEmptyColumns) {
    plot_view v;
    init_view(v, 400, 800, 3.0, 0.0);
    for (int c = 0; c < 100; ++c)
        v.screen_curve[static_cast<std::size_t>(c)] = 1.0 + c / 99.0;
    zoom_auto(v, false);
    EXPECT_TRUE(v.zoomed);
    EXPECT_DOUBLE_EQ(v.view_high, 2.0 + 0.02);
    EXPECT_DOUBLE_EQ(v.view_low, -0.02) << "the columns the curve has not reached count as 0";
    EXPECT_EQ(v.view_stop, 800);

    v.screen_curve.fill(0.5);
    zoom_auto(v, false);
    EXPECT_DOUBLE_EQ(v.view_high, 0.5005 + 0.001 / 100);
    EXPECT_DOUBLE_EQ(v.view_low, 0.4995 - 0.001 / 100);
    v.screen_curve.fill(80.0);
    zoom_auto(v, true);
    EXPECT_DOUBLE_EQ(v.view_high, 80.005 + 0.01 / 100);
    EXPECT_DOUBLE_EQ(v.view_low, 79.995 - 0.01 / 100);
}
