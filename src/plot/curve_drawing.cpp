#include "curve_drawing.h"

#include "link/shared_state.h"
#include "palette.h"
#include "platform/numeric_text.h"
#include "plot_scaling.h"
#include "plot_surface.h"

#include <limits>
#include <span>

namespace lumora {
namespace {

// ---- Axes -------------------------------------------------------------------------------------

constexpr int tick_count = 41;
constexpr int tick_pitch = 7;

void draw_frame(plot_surface& s) {
    s.filled_box(QRect(QPoint(plot_left, plot_top + 1), QPoint(plot_right, plot_bottom - 1)),
                 plot_interior());
    const QColor black(Qt::black), white(Qt::white);
    s.line(plot_left - 1, plot_top, plot_right, plot_top, black);           // top
    s.line(plot_left - 1, plot_top, plot_left - 1, plot_bottom - 1, black); // left
    s.line(plot_left - 1, plot_bottom, plot_right + 1, plot_bottom, white); // bottom
    s.line(plot_right + 1, plot_top, plot_right + 1, plot_bottom, white);   // right
}

// Each tick is a black line with a white one beside it, for the same sunken look as the frame.
// Every 8th tick (56 pixels, a fifth of the plot) is long and meets a label.
void draw_ticks(plot_surface& s) {
    const QColor black(Qt::black), white(Qt::white);
    for (int i = 0; i < tick_count; ++i) {
        const bool long_tick = i % 8 == 0;
        const int x = plot_left + tick_pitch * i;
        const int bottom_end = long_tick ? 310 : 305;
        s.line(x, plot_bottom + 1, x, bottom_end, black);
        s.line(x + 1, plot_bottom + 1, x + 1, bottom_end, white);
        const int y = plot_top + tick_pitch * i;
        const int left_end = long_tick ? 50 : 55;
        s.line(plot_left - 2, y, left_end, y, black);
        s.line(plot_left - 2, y + 1, left_end, y + 1, white);
    }
}

void draw_labels(plot_surface& s, const plot_view& v, const axes_text& text) {
    for (int i = 0; i <= 5; ++i) {
        const double y = v.view_high - i * (v.view_high - v.view_low) / 5;
        s.text(45, 56 * i + 14, QString::fromStdString(format_number(y, text.y_format)), text_align::right);
        double x = v.view_start + 56 * i * v.view_nm_per_pixel;
        if (text.round_x_labels) x = cint(x);
        s.text(56 * i + 60, 310, QString::fromStdString(format_number(x, text.x_format)), text_align::center);
    }
    s.text(45, 30, text.y_caption, text_align::right);
    s.text(340, 325, text.x_caption, text_align::right);
}

// ---- Curves -----------------------------------------------------------------------------------

// Where a layout goes: the column values it fills, and the rows of a value in its plot window
// (the upper plot, or the derivative window below it).
struct layout_target {
    std::array<double, plot_columns>& values;
    int (*row_of)(double value, double high, double low);
    double high, low;
    int top, bottom; // a line along either edge takes the edge's colour
};

struct layout_rules {
    bool wait_for_data;  // a scan in progress: stop where the data end
    bool gap_after_zero; // the redraw: no line from a column whose value is exactly 0
};

layout_target upper_plot(plot_view& v) {
    return {v.screen_curve, y_to_pixel, v.view_high, v.view_low, plot_top, plot_bottom};
}

// The lines that join each column to the one before, on their way to the surface. Consecutive
// lines of one colour go out together under one pen; the stretches keep their order, so where a
// clipped stretch meets the curve the later line still paints the shared end pixel, as it would
// line by line. A line starts on the row the one before ended on, which is kept rather than
// worked out again.
class curve_joins {
public:
    curve_joins(plot_surface& s, const layout_target& t, const QColor& color, const layout_rules& rules)
        : surface_(s), t_(t), color_(color), rules_(rules) {}
    curve_joins(const curve_joins&) = delete;
    curve_joins& operator=(const curve_joins&) = delete;
    ~curve_joins() { flush(); }

    // The line that joins column c - 1 to column c.
    void join(int c) {
        if (c <= 0) return;
        const double from = t_.values[static_cast<std::size_t>(c - 1)];
        if (rules_.gap_after_zero && from == 0) return;
        const int y1 = row(from);
        const int y2 = row(t_.values[static_cast<std::size_t>(c)]);
        static const QColor black(Qt::black), white(Qt::white);
        const QColor* pen = &color_;
        if (y1 == t_.top && y2 == t_.top) pen = &black;
        if (y1 == t_.bottom && y2 == t_.bottom) pen = &white;
        if (count_ > 0 && (*pen != pending_color_ || count_ == pending_.size())) flush();
        pending_color_ = *pen;
        pending_[count_++] = QLine(c + plot_left - 1, y1, c + plot_left, y2);
    }

private:
    int row(double value) {
        if (!(value == last_value_)) {
            last_value_ = value;
            last_row_ = t_.row_of(value, t_.high, t_.low);
        }
        return last_row_;
    }
    void flush() {
        if (count_ > 0) surface_.lines(std::span(pending_.data(), count_), pending_color_);
        count_ = 0;
    }

    plot_surface& surface_;
    const layout_target& t_;
    const QColor& color_;
    const layout_rules& rules_;
    double last_value_ = std::numeric_limits<double>::quiet_NaN();
    int last_row_ = 0;
    std::array<QLine, 64> pending_;
    std::size_t count_ = 0;
    QColor pending_color_;
};

// Span of 280 or more: one stored point per column, the nearest to the column's position.
void lay_out_by_column(curve_joins& joins, plot_view& v, const layout_target& t, const curve_data& curve,
                       const layout_rules& rules) {
    const double per_column = v.view_span / 280.0;
    for (int c = v.plot_column; c <= 280; ++c) {
        const int w = cint(per_column * c) + v.view_start;
        if (rules.wait_for_data && w > curve.last_stored_x) return;
        if (w >= curve.first_valid_x) t.values[static_cast<std::size_t>(c)] = curve.value_at(w);
        joins.join(c);
        v.plot_column = static_cast<std::int16_t>(c + 1);
    }
}

// Span under 280: each nanometre spreads over several columns, filled by a straight line between
// the stored points at its two ends.
void lay_out_by_point(curve_joins& joins, plot_view& v, const layout_target& t, const curve_data& curve,
                      const layout_rules& rules) {
    const double f = 280.0 / v.view_span;
    for (;;) {
        const double n = v.draw_position;
        const int p1 = cint(n * f);
        const int p2 = cint((n + 1) * f);
        if (p1 > 280) return;
        const int wa = cint(n) + v.view_start;
        // The stretch needs its right end b; three points are held back.
        if (rules.wait_for_data && wa > curve.last_stored_x - 2 * curve.x_step) return;
        const double a = wa >= curve.first_valid_x ? curve.value_at(wa) : 0.0;
        const double b = wa + 1 >= curve.first_valid_x ? curve.value_at(wa + 1) : 0.0;
        const int width = p2 - p1; // at least 1, since f > 1
        const double slope = (b - a) / width;
        for (int k = 0; k <= width; ++k) {
            const int c = p1 + k;
            if (c > 280) return;
            t.values[static_cast<std::size_t>(c)] = k * slope + a;
            joins.join(c);
        }
        v.draw_position = n + 1;
    }
}

void lay_out(plot_surface& s, plot_view& v, const layout_target& t, const curve_data& curve,
             const layout_rules& rules) {
    if (v.view_span <= 0) return; // no range to spread over the columns
    curve_joins joins(s, t, curve.color, rules);
    if (v.view_span >= 280)
        lay_out_by_column(joins, v, t, curve, rules);
    else
        lay_out_by_point(joins, v, t, curve, rules);
}

} // namespace

axes_text spectrum_axes(bool percent_t) {
    axes_text t;
    t.y_caption = percent_t ? QStringLiteral("(%T)") : QStringLiteral("(ABS)");
    t.x_caption = QStringLiteral("Wavelength(nm)");
    t.y_format = percent_t ? "#0.000" : "#0.0000";
    t.x_format = "###0.0";
    return t;
}

void draw_axes(plot_surface& surface, const plot_view& view, const axes_text& text) {
    plot_surface::batch batch(surface);
    surface.clear(plot_background());
    draw_ticks(surface);
    draw_frame(surface);
    draw_labels(surface, view, text);
}

curve_data baseline_curve(int column, int last_stored_nm) {
    curve_data d;
    d.value_at = [column](int nm) {
        const int p = nm - first_index_nm;
        if (p < 0 || p >= wavelength_points || column < 0 || column >= curve_columns) return 0.0;
        return shared.baseline_curves[static_cast<std::size_t>(p)][static_cast<std::size_t>(column)];
    };
    d.first_valid_x = first_index_nm;
    d.last_stored_x = last_stored_nm;
    d.color = curve_color(column);
    return d;
}

void draw_data(plot_surface& surface, plot_view& view, const curve_data& curve) {
    plot_surface::batch batch(surface);
    lay_out(surface, view, upper_plot(view), curve, {true, false});
}

void zoom_data(plot_surface& surface, plot_view& view, const axes_text& text,
               const std::vector<curve_data>& curves, int active_index) {
    update_span(view);
    plot_surface::batch batch(surface);
    draw_axes(surface, view, text);
    std::array<double, plot_columns> active{};
    for (std::size_t i = 0; i < curves.size(); ++i) {
        view.plot_column = 0;
        view.draw_position = 0;
        lay_out(surface, view, upper_plot(view), curves[i], {false, true});
        if (static_cast<int>(i) == active_index) active = view.screen_curve;
    }
    view.screen_curve = active;
}

void draw_derivative_window(plot_surface& surface, const plot_view& view, const derivative_axes& axes,
                            const axes_text& x_text) {
    plot_surface::batch batch(surface);
    const QColor black(Qt::black), white(Qt::white);
    surface.filled_box(
        QRect(QPoint(plot_left, derivative_top + 1), QPoint(plot_right, derivative_bottom - 1)),
        plot_interior());
    surface.line(plot_left - 1, derivative_top, plot_right, derivative_top, black);
    surface.line(plot_left - 1, derivative_top, plot_left - 1, derivative_bottom - 1, black);
    surface.line(plot_left - 1, derivative_bottom, plot_right + 1, derivative_bottom, white);
    surface.line(plot_right + 1, derivative_top, plot_right + 1, derivative_bottom, white);
    for (int i = 0; i < tick_count; ++i) {
        const int x = plot_left + tick_pitch * i;
        const int end = i % 8 == 0 ? derivative_bottom + 10 : derivative_bottom + 5;
        surface.line(x, derivative_bottom + 1, x, end, black);
        surface.line(x + 1, derivative_bottom + 1, x + 1, end, white);
    }
    for (int i = 0; i < 21; ++i) {
        const int y = derivative_top + tick_pitch * i;
        const int end = i % 4 == 0 ? 50 : 55;
        surface.line(plot_left - 2, y, end, y, black);
        surface.line(plot_left - 2, y + 1, end, y + 1, white);
    }
    static const char* const titles[4] = {"1st Derivative", "2nd Derivative", "3rd Derivative",
                                          "4th Derivative"};
    if (axes.order >= 1 && axes.order <= 4)
        surface.text(60, 335, QString::fromLatin1(titles[axes.order - 1]));
    surface.text(45, 360, axes.y_caption, text_align::right);
    for (int i = 0; i <= 5; ++i) {
        const double y = axes.high - i * (axes.high - axes.low) / 5;
        surface.text(45, 28 * i + 344, QString::fromStdString(format_number(y, axes.y_format)),
                     text_align::right);
        double x = view.view_start + 56 * i * view.view_nm_per_pixel;
        if (x_text.round_x_labels) x = cint(x);
        surface.text(56 * i + 60, 500, QString::fromStdString(format_number(x, x_text.x_format)),
                     text_align::center);
    }
}

void draw_derivative_curve(plot_surface& surface, const plot_view& view, const curve_data& curve,
                           std::array<double, plot_columns>& screen_derivative, double high, double low) {
    plot_surface::batch batch(surface);
    plot_view positions = view; // the layout's own running column, apart from the upper plot's
    positions.plot_column = 0;
    positions.draw_position = 0;
    const layout_target target{screen_derivative, DerivateGetPixelY, high, low,
                               derivative_top,    derivative_bottom};
    lay_out(surface, positions, target, curve, {false, false});
}

} // namespace lumora
