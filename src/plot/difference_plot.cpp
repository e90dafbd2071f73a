#include "difference_plot.h"

#include "palette.h"
#include "platform/numeric_text.h"
#include "plot_surface.h"

#include <algorithm>

namespace lumora {

void draw_difference_frame(plot_surface& surface, double diff_min, double diff_max, double conc_min,
                           double conc_max, const QString& unit) {
    plot_surface::batch batch(surface);
    const QColor black(Qt::black), white(Qt::white);
    surface.filled_box(QRect(QPoint(60, difference_top + 1), QPoint(340, difference_bottom - 1)),
                       plot_interior());
    surface.line(59, difference_top, 341, difference_top, black);
    surface.line(59, difference_top, 59, difference_bottom, black);
    surface.line(59, difference_bottom, 341, difference_bottom, white);
    surface.line(341, difference_top, 341, difference_bottom, white);
    surface.line(60, difference_zero_row, 340, difference_zero_row, standard_color(8));
    for (int i = 0; i < 41; ++i) {
        const int x = 60 + 7 * i;
        const int end = i % 8 == 0 ? difference_bottom + 10 : difference_bottom + 5;
        surface.line(x, difference_bottom + 1, x, end, black);
    }
    for (int i = 0; i <= 20; ++i) {
        const int y = difference_top + 7 * i;
        const int end = i % 8 == 0 ? 50 : 55;
        surface.line(58, y, end, y, black);
    }
    surface.text(45, difference_top - 14, QStringLiteral("(Diff)"), text_align::right);
    surface.text(45, difference_top - 2, format_text(diff_max, "###0.000"), text_align::right);
    surface.text(45, difference_zero_row - 6, format_text(0, "###0.000"), text_align::right);
    surface.text(45, difference_bottom - 10, format_text(diff_min, "###0.000"), text_align::right);
    for (int i = 0; i <= 5; ++i) {
        const double x = conc_min + i * (conc_max - conc_min) / 5;
        surface.text(56 * i + 60, difference_bottom + 11, format_text(x, "#0.00"), text_align::center);
    }
    const QString caption = QStringLiteral("Conc(") + unit + QStringLiteral(")");
    surface.text(200, difference_bottom + 25, caption, text_align::center);
}

int difference_row(double diff, double diff_min, double diff_max) {
    const int y = difference_bottom - cint((diff - diff_min) * 140 / (diff_max - diff_min));
    return std::clamp(y, difference_top, difference_bottom);
}

void mark_cross(plot_surface& surface, int x, int y, const QColor& color) {
    surface.line(x - 2, y, x + 2, y, color);
    surface.line(x, y - 2, x, y + 2, color);
}

} // namespace lumora
