#include "difference_plot.h"

#include "palette.h"
#include "platform/numeric_text.h"
#include "plot_surface.h"

#include <algorithm>
#include <cmath>

namespace lumora {

void draw_difference_frame(plot_surface& surface, double diff_min, double diff_max, double conc_min,
                           double conc_max, const QString& unit, int top, const QString& caption) {
    const int bottom = top + (difference_bottom - difference_top);
    const int zero_row = top + (difference_zero_row - difference_top);
    plot_surface::batch batch(surface);
    const QColor black(Qt::black), white(Qt::white);
    surface.filled_box(QRect(QPoint(60, top + 1), QPoint(340, bottom - 1)), plot_interior());
    surface.line(59, top, 341, top, black);
    surface.line(59, top, 59, bottom, black);
    surface.line(59, bottom, 341, bottom, white);
    surface.line(341, top, 341, bottom, white);
    surface.line(60, zero_row, 340, zero_row, standard_color(8));
    for (int i = 0; i < 41; ++i) {
        const int x = 60 + 7 * i;
        const int end = i % 8 == 0 ? bottom + 10 : bottom + 5;
        surface.line(x, bottom + 1, x, end, black);
    }
    for (int i = 0; i <= 20; ++i) {
        const int y = top + 7 * i;
        const int end = i % 8 == 0 ? 50 : 55;
        surface.line(58, y, end, y, black);
    }
    surface.text(45, top - 14, caption, text_align::right);
    surface.text(45, top - 2, format_text(diff_max, "###0.000"), text_align::right);
    surface.text(45, zero_row - 6, format_text(0, "###0.000"), text_align::right);
    surface.text(45, bottom - 10, format_text(diff_min, "###0.000"), text_align::right);
    for (int i = 0; i <= 5; ++i) {
        const double x = conc_min + i * (conc_max - conc_min) / 5;
        surface.text(56 * i + 60, bottom + 11, format_text(x, "#0.00"), text_align::center);
    }
    surface.text(200, bottom + 25, QStringLiteral("Conc(") + unit + QStringLiteral(")"), text_align::center);
}

int difference_row(double diff, double diff_min, double diff_max, int top) {
    const int height = difference_bottom - difference_top;
    const int y = top + height - cint((diff - diff_min) * height / (diff_max - diff_min));
    return std::clamp(y, top, top + height);
}

void draw_residual_plot(plot_surface& surface, std::span<const double> conc,
                        std::span<const double> residuals, double s_yx, double conc_min, double conc_max,
                        const QString& unit) {
    plot_surface::batch batch(surface);
    surface.clear(Qt::white);
    double limit = 2 * s_yx;
    for (double r : residuals)
        limit = std::max(limit, std::abs(r));
    limit = limit > 0 ? limit * 1.1 : 0.001;
    draw_difference_frame(surface, -limit, limit, conc_min, conc_max, unit, residual_top,
                          QStringLiteral("(Resid.)"));
    const std::size_t n = std::min(conc.size(), residuals.size());
    if (n == 0 || !(conc_max > conc_min)) return;
    const QColor band = standard_color(12);
    for (int sign : {-1, 1}) {
        const int y = difference_row(sign * 2 * s_yx, -limit, limit, residual_top);
        surface.line(60, y, 340, y, band, Qt::DashLine);
    }
    for (std::size_t i = 0; i < n; ++i) {
        const int x = 60 + cint((conc[i] - conc_min) * 280 / (conc_max - conc_min));
        mark_cross(surface, x, difference_row(residuals[i], -limit, limit, residual_top), standard_color(1));
    }
}

void mark_cross(plot_surface& surface, int x, int y, const QColor& color) {
    surface.line(x - 2, y, x + 2, y, color);
    surface.line(x, y - 2, x, y + 2, color);
}

} // namespace lumora
