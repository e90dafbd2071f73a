// The mouse on the plot: rubber band zoom, cross-hair read-outs, track rows with their marks and
// the question at 100 rows, and a typed wavelength.
#include "platform/grid.h"
#include "platform/prompts.h"
#include "plot/palette.h"
#include "plot/plot_scaling.h"
#include "plot/plot_surface.h"
#include "plot/plot_tracking.h"

#include <QCoreApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QTest>
#include <gtest/gtest.h>

using namespace lumora;

namespace {

struct tracking_fixture : ::testing::Test {
    plot_surface surface{QSize(400, 520)};
    plot_view view;
    grid table;
    QLabel value0, value1;
    track_state tracks;
    plot_tracking tracking{surface, view, table, value0, value1, tracks, spectrum_tracking(false)};
    int zooms = 0;
    bool running = false;
    std::array<double, plot_columns> derivative_curve{};
    std::int16_t derivative_order = 0;

    void SetUp() override {
        reset_pixel_warnings();
        prompts::script();
        prompts::clear_shown();
        init_view(view, 400, 800, 3.0, 0.0);
        for (int c = 0; c <= 280; ++c) {
            view.screen_curve[static_cast<std::size_t>(c)] = c / 100.0;
            derivative_curve[static_cast<std::size_t>(c)] = -c / 1000.0;
        }
        table.setCols(3);
        table.setRows(1);
        surface.clear(plot_interior());
        tracking.hooks.locked = [this] { return running; };
        tracking.hooks.zoom = [this] { ++zooms; };
        tracking.hooks.derivative = [this] {
            return derivative_display{derivative_order, &derivative_curve, 0.0, -0.5};
        };
    }
    void TearDown() override { prompts::unscript(); }
    void right_click(int x, int y) { tracking.mouse_down(QPoint(x, y), Qt::RightButton); }
    // A move as the window system delivers it, buttons as given.
    void move_to(QPoint p, Qt::MouseButtons buttons = Qt::NoButton) {
        QMouseEvent e(QEvent::MouseMove, QPointF(p), surface.mapToGlobal(QPointF(p)), Qt::NoButton, buttons,
                      {});
        QCoreApplication::sendEvent(&surface, &e);
    }
};

} // namespace

TEST_F(tracking_fixture, ALeftDragZoomsOnTheBandWidenedToFivePixels) {
    tracking.set_track(true);
    QTest::mousePress(&surface, Qt::LeftButton, {}, QPoint(100, 100));
    EXPECT_TRUE(surface.rubber_band_visible());
    EXPECT_FALSE(surface.overlay_visible(0));
    EXPECT_EQ(value0.text(), QStringLiteral("X1=457.14nm  Y1=2.1429"));
    move_to(QPoint(102, 103), Qt::LeftButton);
    EXPECT_EQ(value1.text(), QStringLiteral("X2=460.00nm  Y2=2.1107"));
    QTest::mouseRelease(&surface, Qt::LeftButton, {}, QPoint(103, 102));
    EXPECT_EQ(view.zoom_rect, QRect(QPoint(100, 100), QPoint(105, 105)));
    EXPECT_EQ(zooms, 1);
    EXPECT_FALSE(surface.rubber_band_visible());
    EXPECT_TRUE(surface.overlay_visible(0) && value1.text().isEmpty());

    // Presses are held so that the smallest band fits; releases to the square.
    tracking.mouse_down(QPoint(400, 5), Qt::LeftButton);
    EXPECT_EQ(view.zoom_rect.topLeft(), QPoint(335, 20));
    tracking.mouse_up(QPoint(500, 500), Qt::LeftButton);
    EXPECT_EQ(view.zoom_rect.bottomRight(), QPoint(340, 300));

    // While the toolbar runs, the mouse does nothing.
    running = true;
    tracking.mouse_down(QPoint(150, 150), Qt::LeftButton);
    tracking.mouse_down(QPoint(150, 150), Qt::RightButton);
    EXPECT_FALSE(surface.rubber_band_visible());
    EXPECT_EQ(tracks.track_count, 0);
}

TEST_F(tracking_fixture, TheCrossHairRunsOnTheCurveAndReadsItAndItsDerivative) {
    tracking.set_track(true);
    EXPECT_EQ(surface.overlay_line(0), QLine(200, 20, 200, 301));
    EXPECT_EQ(surface.overlay_line(1), QLine(60, 160, 341, 160));
    EXPECT_FALSE(surface.overlay_visible(2)) << "no derivative on show";

    derivative_order = 1;
    tracking.set_track(true);
    EXPECT_TRUE(surface.overlay_visible(2));
    move_to(QPoint(150, 250));
    const int row = y_to_pixel(0.9, 3.0, 0.0);
    // Overlays only: the image under the lines is untouched, the view the user sees carries them.
    EXPECT_NE(surface.grab_view().pixelColor(300, 200), surface.image().pixelColor(300, 200));
    EXPECT_EQ(surface.overlay_line(0), QLine(150, 20, 150, 301));
    EXPECT_EQ(surface.overlay_line(1), QLine(60, row, 341, row)) << "on the curve, not at the mouse";
    EXPECT_EQ(value0.text(), QStringLiteral("WL= 528.57nm  Data= 0.9000"));
    EXPECT_EQ(value1.text(), QStringLiteral("Derivative Data= -0.0900"));

    tracking.set_config(spectrum_tracking(true));
    tracking.mouse_move(QPoint(150, 250));
    EXPECT_EQ(value0.text(), QStringLiteral("WL= 528.57nm  Data= 0.900"));
    tracking.reset_readout(400);
    EXPECT_EQ(value0.text(), QStringLiteral("WL=400.00nm  Data=100.000"));
    EXPECT_TRUE(value1.text().isEmpty());
}

TEST_F(tracking_fixture, ARightClickWritesATrackRowAndMarksTheCurve) {
    derivative_order = 1;
    right_click(130, 40);
    ASSERT_EQ(tracks.track_count, 1);
    EXPECT_EQ(table.TextMatrix(1, 0), QStringLiteral("  V1"));
    EXPECT_EQ(table.TextMatrix(1, 1), QStringLiteral("500.00nm"));
    EXPECT_EQ(table.TextMatrix(1, 2), QStringLiteral("0.7000"));
    EXPECT_EQ(table.TextMatrix(1, 3), QStringLiteral("-0.0700"));
    const int y = y_to_pixel(0.7, 3.0, 0.0);
    const int dy = DerivateGetPixelY(-0.07, 0.0, -0.5);
    EXPECT_EQ(tracks.track_marks[0].column, 70);
    EXPECT_EQ(tracks.track_marks[0].row, y);
    EXPECT_EQ(tracks.derivative_track_marks[0].row, dy);
    // The dark grey triangle: its point on the curve, its base 7 rows up.
    for (const QPoint p :
         {QPoint(130, y), QPoint(133, y - 7), QPoint(127, y - 7), QPoint(130, y - 7), QPoint(130, dy)})
        EXPECT_EQ(surface.logical_pixel(p.x(), p.y()), standard_color(8)) << p.x() << "," << p.y();
}

TEST_F(tracking_fixture, The101stRightClickAsksToRestartAndCancelKeeps100) {
    for (int i = 0; i < 100; ++i)
        right_click(61 + i, 100);
    ASSERT_EQ(tracks.track_count, 100);
    EXPECT_EQ(table.TextMatrix(100, 0), QStringLiteral("  V100"));

    prompts::script({box_answer::cancel});
    right_click(250, 100);
    ASSERT_EQ(prompts::shown().size(), 1u);
    EXPECT_EQ(prompts::shown()[0].text, QStringLiteral("Data number >100, restart from 1 ?"));
    EXPECT_EQ(prompts::shown()[0].buttons, box_buttons::ok_cancel);
    EXPECT_EQ(tracks.track_count, 100);
    EXPECT_TRUE(table.TextMatrix(101, 0).isEmpty());
    EXPECT_EQ(table.TextMatrix(1, 1), QStringLiteral("401.43nm"));

    prompts::script({box_answer::ok});
    right_click(250, 100);
    EXPECT_EQ(tracks.track_count, 1);
    EXPECT_EQ(table.TextMatrix(1, 1), QStringLiteral("671.43nm"));
    EXPECT_TRUE(table.TextMatrix(2, 0).isEmpty()) << "the old rows are gone";
}

TEST_F(tracking_fixture, ATypedWavelengthIsTestedByItsRoundedValueAndNeverAsks) {
    init_view(view, 360, 460, 3.0, 0.0);
    prompts::script({}, {QStringLiteral("460.4"), QStringLiteral("abc"), QStringLiteral("461"), QString()});
    for (int i = 0; i < 4; ++i)
        tracking.lblValue_Click();
    ASSERT_EQ(tracks.track_count, 1) << "460.4 only: inside the view by its rounding";
    EXPECT_EQ(table.TextMatrix(1, 1), QStringLiteral("460.00nm"));
    EXPECT_EQ(surface.overlay_line(0).x1(), 340);
    EXPECT_EQ(value0.text(), QStringLiteral("WL= 460.00nm  Data= 2.8000"));
    ASSERT_EQ(prompts::shown().size(), 6u) << "four questions, two refusals";
    EXPECT_EQ(prompts::shown()[2].text, QStringLiteral("Invalid input!"));
    EXPECT_EQ(prompts::shown()[4].text, QStringLiteral("Invalid input!"));

    // At 100 rows a typed point asks nothing and the count stays at 100.
    tracks.track_count = 100;
    prompts::clear_shown();
    prompts::script({}, {QStringLiteral("410")});
    QTest::mouseClick(&value0, Qt::LeftButton);
    ASSERT_EQ(prompts::shown().size(), 1u);
    EXPECT_EQ(tracks.track_count, 100);
    EXPECT_EQ(table.TextMatrix(101, 1), QStringLiteral("410.00nm"));
    EXPECT_EQ(tracks.track_marks[100].column, 140);

    // From the keyboard: the read-out takes the focus, and Enter or Space asks as a click does.
    EXPECT_TRUE(value0.focusPolicy() & Qt::TabFocus);
    prompts::script({}, {QString(), QString()});
    QTest::keyClick(&value0, Qt::Key_Return);
    QTest::keyClick(&value0, Qt::Key_Space);
    QTest::keyClick(&value0, Qt::Key_X);
    EXPECT_EQ(prompts::shown().size(), 3u);
}
