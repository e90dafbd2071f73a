// Painting curves: the surface's pixel grid, the axes, draw_data in both of its ways against a
// plainly written layout, clipping colours, and the whole redraw with its gaps and active curve.
#include "link/shared_state.h"
#include "platform/prompts.h"
#include "plot/curve_drawing.h"
#include "plot/palette.h"
#include "plot/plot_scaling.h"
#include "plot/plot_surface.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <set>

using namespace lumora;

namespace {

// Curves by the nanometre in the columns of baseline_curves, and seeded random walks.
double& stored(int nm, int column) {
    return shared
        .baseline_curves[static_cast<std::size_t>(nm - first_index_nm)][static_cast<std::size_t>(column)];
}

void fill_random_walk(int column, unsigned seed) {
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> step(-0.08, 0.08);
    double v = 1.5;
    for (int nm = first_index_nm; nm < first_index_nm + wavelength_points; ++nm)
        stored(nm, column) = v = std::clamp(v + step(gen), 0.2, 2.8);
}

// The layout of a whole curve as the drawing rules read, written out plainly.
std::array<double, plot_columns> expected_layout(int column, int start, int stop) {
    std::array<double, plot_columns> sc{};
    const int span = stop - start;
    if (span >= 280) {
        for (int c = 0; c <= 280; ++c)
            sc[static_cast<std::size_t>(c)] =
                stored(static_cast<int>(std::nearbyint(span / 280.0 * c)) + start, column);
        return sc;
    }
    const double f = 280.0 / span;
    for (int n = 0; n <= span; ++n) {
        const int p1 = static_cast<int>(std::nearbyint(n * f)),
                  p2 = static_cast<int>(std::nearbyint((n + 1) * f));
        const double a = stored(start + n, column), b = stored(start + n + 1, column);
        for (int k = 0; k <= p2 - p1 && p1 + k <= 280; ++k)
            sc[static_cast<std::size_t>(p1 + k)] = k * ((b - a) / (p2 - p1)) + a;
    }
    return sc;
}

struct drawing_fixture : ::testing::Test {
    plot_surface surface{QSize(400, 520)};
    plot_view view;
    void SetUp() override {
        reset_shared_state();
        set_default_colors();
        reset_pixel_warnings();
        prompts::script();
    }
    void TearDown() override { prompts::unscript(); }
    void set_view(int start, int stop, double high, double low) { init_view(view, start, stop, high, low); }

    // Every column's point lies on the painted line, and a column holds paint only between the
    // rows of its neighbours: nothing strays off the curve.
    void expect_curve_pixels(const QColor& color) {
        for (int c = 0; c <= 280; ++c) {
            const int y =
                y_to_pixel(view.screen_curve[static_cast<std::size_t>(c)], view.view_high, view.view_low);
            ASSERT_EQ(surface.logical_pixel(60 + c, y), color) << "column " << c;
            int lo = y, hi = y;
            for (int d : {c - 1, c + 1}) {
                if (d < 0 || d > 280) continue;
                const int yd =
                    y_to_pixel(view.screen_curve[static_cast<std::size_t>(d)], view.view_high, view.view_low);
                lo = std::min(lo, yd);
                hi = std::max(hi, yd);
            }
            for (int row = 21; row < 300; ++row) {
                if (row < lo || row > hi) {
                    ASSERT_EQ(surface.logical_pixel(60 + c, row), plot_interior()) << c << "," << row;
                }
            }
        }
    }
};

} // namespace

TEST_F(drawing_fixture, OneLogicalPixelIsExactlyTwoByTwoDevicePixels) {
    const auto painted = [this](const QColor& color) {
        QRect r;
        int n = 0;
        for (int y = 0; y < surface.image().height(); ++y)
            for (int x = 0; x < surface.image().width(); ++x)
                if (surface.image().pixelColor(x, y) == color) {
                    r |= QRect(x, y, 1, 1);
                    ++n;
                }
        return std::pair{r, n};
    };
    surface.clear(Qt::white);
    surface.line(10, 20, 30, 20, Qt::black);
    surface.line(5, 40, 5, 50, Qt::red);
    surface.filled_box(QRect(QPoint(100, 100), QPoint(102, 101)), Qt::blue);
    ASSERT_EQ(surface.image().size(), QSize(800, 1040));
    EXPECT_EQ(painted(Qt::black), std::pair(QRect(QPoint(20, 40), QPoint(61, 41)), 42 * 2));
    EXPECT_EQ(painted(Qt::red), std::pair(QRect(QPoint(10, 80), QPoint(11, 101)), 2 * 22));
    EXPECT_EQ(painted(Qt::blue), std::pair(QRect(QPoint(200, 200), QPoint(205, 203)), 6 * 4));
}

TEST_F(drawing_fixture, AxesDrawTheSunkenFrameTicksAndAlignedLabels) {
    set_view(400, 800, 3.0, 0.0);
    draw_axes(surface, view, spectrum_axes(false));
    const QColor black(Qt::black), white(Qt::white);
    EXPECT_EQ(surface.logical_pixel(200, 20), black);
    EXPECT_EQ(surface.logical_pixel(59, 150), black);
    EXPECT_EQ(surface.logical_pixel(200, 300), white);
    EXPECT_EQ(surface.logical_pixel(341, 150), white);
    EXPECT_EQ(surface.logical_pixel(340, 299), plot_interior());
    for (int i = 0; i < 41; ++i) {
        const int x = 60 + 7 * i, y = 20 + 7 * i;
        const int bottom_end = i % 8 == 0 ? 310 : 305, left_end = i % 8 == 0 ? 50 : 55;
        ASSERT_EQ(surface.logical_pixel(x, bottom_end), black) << i;
        ASSERT_EQ(surface.logical_pixel(x + 1, bottom_end), white) << i;
        ASSERT_EQ(surface.logical_pixel(x, bottom_end + 1), plot_background()) << i;
        ASSERT_EQ(surface.logical_pixel(left_end, y), black) << i;
        ASSERT_EQ(surface.logical_pixel(left_end, y + 1), white) << i;
        ASSERT_EQ(surface.logical_pixel(left_end - 1, y), plot_background()) << i;
    }
    // Y labels end at column 45: ink left of it in each label's rows, none in 46..49.
    for (int i = 0; i <= 5; ++i) {
        int ink_left = 0, ink_right = 0;
        for (int row = 56 * i + 14; row < 56 * i + 14 + surface.text_height(); ++row)
            for (int col = 20; col <= 49; ++col)
                (col <= 45 ? ink_left : ink_right) += surface.logical_pixel(col, row).lightness() < 100;
        EXPECT_GT(ink_left, 0) << "label " << i;
        EXPECT_EQ(ink_right, 0) << "label " << i;
    }
}

TEST_F(drawing_fixture, ScanPaintingMatchesTheWholeLayoutInBothWaysAndResumesWhereItStopped) {
    // 400 and exactly 280 nm take the first way (a column a step), 100 nm the second.
    for (const auto& [start, stop] : {std::pair{400, 800}, std::pair{400, 680}, std::pair{450, 550}}) {
        SCOPED_TRACE(stop - start);
        fill_random_walk(1, static_cast<unsigned>(start + stop));
        set_view(start, stop, 3.0, 0.0);
        draw_axes(surface, view, spectrum_axes(false));
        const int span = stop - start;
        for (int last = start - 10; last <= stop + 10; ++last) {
            draw_data(surface, view, baseline_curve(1, last));
            if (span >= 280) {
                int reached = 0;
                while (reached <= 280 && std::nearbyint(span / 280.0 * reached) + start <= last)
                    ++reached;
                ASSERT_EQ(view.plot_column, reached) << "after " << last;
                ASSERT_EQ(view.draw_position, 0);
            } else {
                // Three points are held back: nanometre n is painted once n + start <= last - 2.
                const int painted = std::clamp(last - 2 - start + 1, 0, span);
                ASSERT_EQ(view.draw_position, painted) << "after " << last;
            }
        }
        EXPECT_EQ(view.screen_curve, expected_layout(1, start, stop));
        expect_curve_pixels(curve_color(1));
        // The whole redraw lays the same curve out the same way.
        const auto scanned = view.screen_curve;
        zoom_data(surface, view, spectrum_axes(false), {baseline_curve(1)}, 0);
        EXPECT_EQ(view.screen_curve, scanned);
    }
}

TEST_F(drawing_fixture, ATwoNanometreSpanIsTwoStraightSegmentsOf140Columns) {
    stored(500, 3) = 1.0;
    stored(501, 3) = 2.0;
    stored(502, 3) = 1.5;
    set_view(500, 502, 3.0, 0.0);
    draw_axes(surface, view, spectrum_axes(false));
    draw_data(surface, view, baseline_curve(3));
    const std::pair<std::size_t, double> points[] = {
        {0, 1.0}, {70, 1.5}, {140, 2.0}, {210, 1.75}, {280, 1.5}};
    for (const auto& [c, v] : points)
        EXPECT_DOUBLE_EQ(view.screen_curve[c], v) << c;
    expect_curve_pixels(curve_color(3));
}

TEST_F(drawing_fixture, ClippedStretchesAreBlackOnTheTopRowAndWhiteOnTheBottomRow) {
    for (int nm = 400; nm <= 700; ++nm)
        stored(nm, 1) = nm < 450 ? 2.0 : nm < 500 ? 0.5 : nm < 550 ? -1.0 : 0.5;
    set_view(400, 680, 1.0, 0.0);
    surface.clear(Qt::gray); // no frame: the clipped lines themselves must carry the colour
    draw_data(surface, view, baseline_curve(1));
    EXPECT_EQ(surface.logical_pixel(60 + 20, 20), QColor(Qt::black));
    EXPECT_EQ(surface.logical_pixel(60 + 120, 300), QColor(Qt::white));
    EXPECT_EQ(surface.logical_pixel(60 + 75, 160), curve_color(1));
    EXPECT_EQ(surface.logical_pixel(60 + 20, 21), QColor(Qt::gray));
    EXPECT_EQ(surface.logical_pixel(60 + 100, 295), curve_color(1)) << "the step down keeps the colour";
}

TEST_F(drawing_fixture, RedrawLeavesGapsAfterZerosAndKeepsTheActiveCurve) {
    for (int nm = 330; nm <= 1100; ++nm) {
        stored(nm, 1) = 1.0;
        stored(nm, 2) = 2.0;
    }
    stored(500, 1) = 0.0;
    set_view(400, 680, 3.0, 0.0);
    zoom_data(surface, view, spectrum_axes(false), {baseline_curve(1), baseline_curve(2)}, 0);
    for (int c = 0; c <= 280; ++c)
        ASSERT_EQ(view.screen_curve[static_cast<std::size_t>(c)], c == 100 ? 0.0 : 1.0) << c;
    const int y1 = y_to_pixel(1.0, 3.0, 0.0);
    // The line down into the zero at column 100 is drawn, the one out of it is not.
    EXPECT_EQ(surface.logical_pixel(60 + 100, 299), curve_color(1));
    for (int row = y1 + 2; row < 299; ++row)
        ASSERT_EQ(surface.logical_pixel(60 + 101, row), plot_interior()) << row;
    EXPECT_EQ(surface.logical_pixel(60 + 101, y1), curve_color(1));
    EXPECT_EQ(surface.logical_pixel(60 + 200, y_to_pixel(2.0, 3.0, 0.0)), curve_color(2));

    zoom_data(surface, view, spectrum_axes(false), {baseline_curve(1), baseline_curve(2)}, -1);
    EXPECT_EQ(view.screen_curve, (std::array<double, plot_columns>{}));
    // No curves: frame and labels alone.
    zoom_data(surface, view, spectrum_axes(false), {}, -1);
    EXPECT_EQ(surface.logical_pixel(60 + 200, y_to_pixel(2.0, 3.0, 0.0)), plot_interior());

    std::set<QRgb> colours; // twenty curves can be told apart
    for (int column = 1; column <= 20; ++column)
        colours.insert(curve_color(column).rgb());
    EXPECT_EQ(colours.size(), 20u);
}

// ---- Copied line shapes against the painter, pixel for pixel ---------------------------------

namespace {

// The first pixel where two images differ, for the failure message.
std::string first_difference(const QImage& a, const QImage& b) {
    if (a.size() != b.size()) return "sizes differ";
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            if (a.pixel(x, y) != b.pixel(x, y))
                return QStringLiteral("device pixel (%1, %2): %3 against %4")
                    .arg(x)
                    .arg(y)
                    .arg(a.pixel(x, y), 8, 16)
                    .arg(b.pixel(x, y), 8, 16)
                    .toStdString();
    return {};
}

// A scene painted twice from the same view: with every line handed to the painter on its own
// (one pen per line) and with the shapes copied. The images must match to the pixel.
template <class Scene> void expect_same_pixels(const plot_view& view, Scene scene) {
    plot_surface plain(QSize(400, 520)), copied(QSize(400, 520));
    plain.set_line_shapes(false);
    plot_view v1 = view, v2 = view;
    scene(plain, v1);
    scene(copied, v2);
    EXPECT_EQ(first_difference(plain.image(), copied.image()), "");
    EXPECT_EQ(v1.screen_curve, v2.screen_curve);
}

} // namespace

TEST_F(drawing_fixture, CopiedLineShapesMatchThePainterAnywhereOnTheSurface) {
    // Random lines of every slope, some of no length, many across the image's edges; an opaque
    // colour given in HSV, a translucent one and plain ones, one call per colour.
    std::mt19937 gen(7);
    std::uniform_int_distribution<int> x(-3, 402), y(-3, 522), step(-6, 6), rise(-300, 300);
    const QColor colours[] = {QColor(Qt::black), QColor::fromHsvF(0.31f, 0.77f, 0.53f),
                              QColor(255, 0, 0, 128), curve_color(4)};
    std::vector<std::pair<std::vector<QLine>, QColor>> calls;
    for (int i = 0; i < 40; ++i) {
        std::vector<QLine> lines;
        for (int k = 0; k < 60; ++k) {
            const int x1 = x(gen), y1 = y(gen);
            lines.emplace_back(x1, y1, x1 + step(gen), y1 + (k % 3 == 0 ? rise(gen) : step(gen)));
        }
        calls.emplace_back(std::move(lines), colours[i % 4]);
    }
    plot_view unused;
    expect_same_pixels(unused, [&](plot_surface& s, plot_view&) {
        s.clear(plot_interior());
        for (const auto& [lines, colour] : calls)
            s.lines(lines, colour);
    });
}

TEST_F(drawing_fixture, RedrawScenesMatchLineByLinePainting) {
    // Twenty random walks, some held against the top and bottom rows, one with gaps of zeros.
    for (int column = 1; column <= 20; ++column)
        fill_random_walk(column, static_cast<unsigned>(column));
    for (int nm = 600; nm <= 1100; nm += 37)
        stored(nm, 5) = 0.0;
    for (int nm = 700; nm <= 760; ++nm)
        stored(nm, 6) = 0.0;
    std::vector<curve_data> curves;
    for (int column = 1; column <= 20; ++column)
        curves.push_back(baseline_curve(column));
    curves[7].color = QColor::fromHsvF(0.6f, 0.4f, 0.8f);

    struct scene {
        int start, stop;
        double high, low;
    };
    // The whole range, a tight Y range where most lines clip, a 100 nm zoom (the second way) and
    // a 20 nm one with steep stretches.
    for (const scene& sc : {scene{330, 1100, 3.0, 0.0}, scene{330, 1100, 1.6, 1.4}, scene{500, 600, 2.5, 0.5},
                            scene{640, 660, 2.0, 1.0}}) {
        SCOPED_TRACE(testing::Message()
                     << sc.start << ".." << sc.stop << " nm, " << sc.low << ".." << sc.high);
        set_view(sc.start, sc.stop, sc.high, sc.low);
        expect_same_pixels(view, [&](plot_surface& s, plot_view& v) {
            zoom_data(s, v, spectrum_axes(false), curves, 4);
            std::array<double, plot_columns> derivative{};
            draw_derivative_window(s, v, {2, 0.5, -0.5, QStringLiteral("(ABS)"), "#0.0000"},
                                   spectrum_axes(false));
            curve_data slope = curves[2];
            slope.value_at = [](int nm) { return stored(nm + 1, 3) - stored(nm, 3); };
            draw_derivative_curve(s, v, slope, derivative, 0.05, -0.05);
        });
    }
    // A scan painted point by point.
    set_view(450, 550, 3.0, 0.0);
    expect_same_pixels(view, [&](plot_surface& s, plot_view& v) {
        draw_axes(s, v, spectrum_axes(true));
        for (int last = 440; last <= 560; ++last)
            draw_data(s, v, baseline_curve(9, last));
    });
}
