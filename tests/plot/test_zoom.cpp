// Zoom by rectangle and "Auto": which rectangles change the view, how narrow a Y range may get,
// and the margins of the automatic range.
#include "plot/zoom.h"

#include <gtest/gtest.h>

using namespace lumora;

namespace {
plot_view view_of(int start, int stop, double high, double low, int left, int top, int right, int bottom) {
    plot_view v;
    init_view(v, start, stop, high, low);
    v.zoom_rect = QRect(QPoint(left, top), QPoint(right, bottom));
    return v;
}
} // namespace

TEST(ZoomCursor, TakesTheRectangleRoundedToWholeUnitsUnlessItIsUnder12Wide) {
    plot_view v = view_of(400, 800, 3.0, 0.0, 100, 50, 200, 150);
    zoom_cursor(v, false);
    EXPECT_TRUE(v.zoomed);
    EXPECT_EQ(v.view_start, 457); // 400 + 40 * 400 / 280 = 457.14
    EXPECT_EQ(v.view_stop, 600);
    EXPECT_DOUBLE_EQ(v.view_high, 250 * (3.0 / 280));
    EXPECT_DOUBLE_EQ(v.view_low, 150 * (3.0 / 280));

    // A 5 by 5 band on 400 nm spans 7.1 nm: nothing changes, Y included.
    plot_view small = view_of(400, 800, 3.0, 0.0, 100, 100, 105, 105);
    zoom_cursor(small, false);
    EXPECT_EQ(small.view_stop, 800);
    EXPECT_DOUBLE_EQ(small.view_high, 3.0);
    // On 280 nm one column is one nanometre: 11 columns are too few, 12 enough.
    plot_view eleven = view_of(400, 680, 3.0, 0.0, 100, 50, 111, 150);
    zoom_cursor(eleven, false);
    EXPECT_EQ(eleven.view_stop, 680);
    plot_view twelve = view_of(400, 680, 3.0, 0.0, 100, 50, 112, 150);
    zoom_cursor(twelve, false);
    EXPECT_EQ(twelve.view_start, 440);
    EXPECT_EQ(twelve.view_stop, 452);
    // A view without height is left alone.
    plot_view flat = view_of(400, 800, 1.0, 1.0, 100, 50, 200, 150);
    zoom_cursor(flat, false);
    EXPECT_FALSE(flat.zoomed);
    EXPECT_EQ(flat.view_start, 400);
}

TEST(ZoomCursor, AFlatBandKeepsTheNarrowestRangeMeasuredDownFromItsTop) {
    // %T view 50.0..50.5: five rows are 0.0089 %T, under the 0.01 that a view keeps.
    plot_view pt = view_of(400, 800, 50.5, 50.0, 100, 100, 200, 105);
    zoom_cursor(pt, true);
    const double top = 200 * (0.5 / 280) + 50.0;
    EXPECT_DOUBLE_EQ(pt.view_high, top);
    EXPECT_DOUBLE_EQ(pt.view_low, top - 0.01);
    // The same band in ABS is wide enough for its 0.001.
    plot_view abs = view_of(400, 800, 50.5, 50.0, 100, 100, 200, 105);
    zoom_cursor(abs, false);
    EXPECT_DOUBLE_EQ(abs.view_low, 195 * (0.5 / 280) + 50.0);
}

TEST(ZoomAuto, FitsTheScreenCurveWithOnePercentMarginCountingEmptyColumns) {
    plot_view v = view_of(400, 800, 3.0, 0.0, 60, 20, 340, 300);
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
