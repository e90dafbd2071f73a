#include "curve_drawing.h"

#include "link/shared_state.h"
#include "palette.h"
#include "platform/numeric_text.h"
#include "plot_scaling.h"
#include "plot_surface.h"

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

struct layout_rules {
    bool wait_for_data;  // a scan in progress: stop where the data end
    bool gap_after_zero; // the redraw: no line from a column whose value is exactly 0
};

// The line that joins column c - 1 to column c.
void join(plot_surface& s, const plot_view& v, int c, const QColor& color, const layout_rules& rules) {
    if (c <= 0) return;
    const double from = v.screen_curve[static_cast<std::size_t>(c - 1)];
    if (rules.gap_after_zero && from == 0) return;
    const int y1 = y_to_pixel(from, v.view_high, v.view_low);
    const int y2 = y_to_pixel(v.screen_curve[static_cast<std::size_t>(c)], v.view_high, v.view_low);
    QColor pen = color;
    if (y1 == plot_top && y2 == plot_top) pen = Qt::black;
    if (y1 == plot_bottom && y2 == plot_bottom) pen = Qt::white;
    s.line(c + plot_left - 1, y1, c + plot_left, y2, pen);
}

// Span of 280 or more: one stored point per column, the nearest to the column's position.
void lay_out_by_column(plot_surface& s, plot_view& v, const curve_data& curve, const layout_rules& rules) {
    const double per_column = v.view_span / 280.0;
    for (int c = v.plot_column; c <= 280; ++c) {
        const int w = cint(per_column * c) + v.view_start;
        if (rules.wait_for_data && w > curve.last_stored_x) return;
        if (w >= curve.first_valid_x) v.screen_curve[static_cast<std::size_t>(c)] = curve.value_at(w);
        join(s, v, c, curve.color, rules);
        v.plot_column = static_cast<std::int16_t>(c + 1);
    }
}

// Span under 280: each nanometre spreads over several columns, filled by a straight line between
// the stored points at its two ends.
void lay_out_by_point(plot_surface& s, plot_view& v, const curve_data& curve, const layout_rules& rules) {
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
            v.screen_curve[static_cast<std::size_t>(c)] = k * slope + a;
            join(s, v, c, curve.color, rules);
        }
        v.draw_position = n + 1;
    }
}

void lay_out(plot_surface& s, plot_view& v, const curve_data& curve, const layout_rules& rules) {
    if (v.view_span <= 0) return; // no range to spread over the columns
    if (v.view_span >= 280)
        lay_out_by_column(s, v, curve, rules);
    else
        lay_out_by_point(s, v, curve, rules);
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
    lay_out(surface, view, curve, {true, false});
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
        lay_out(surface, view, curves[i], {false, true});
        if (static_cast<int>(i) == active_index) active = view.screen_curve;
    }
    view.screen_curve = active;
}

} // namespace lumora
