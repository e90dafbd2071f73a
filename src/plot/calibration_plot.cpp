#include "calibration_plot.h"

#include "curve_drawing.h"
#include "palette.h"
#include "platform/numeric_text.h"
#include "plot_surface.h"

#include <QLine>
#include <algorithm>
#include <vector>

namespace lumora {
namespace {

// Beyond the left edge lies the plot's interior colour, beyond the right the white frame line.
QColor left_edge_color() {
    return plot_interior();
}

void draw_curve(plot_surface& surface, const calibration_set& s, int count, bool crosses) {
    plot_surface::batch batch(surface);
    const double step = (s.abs_max - s.abs_min) / 280;
    const QColor curve = standard_color(12), white(Qt::white), left = left_edge_color();
    int x_before = 0;
    for (int i = 0; i <= 280; ++i) {
        const double a = i * step;
        const double c = conc_from_abs(s.fit_type, s.fit_ka, s.fit_kb, s.fit_kc, a);
        const int x = std::clamp(calibration_column(c, s), 59, 340);
        if (i >= 1) {
            const QColor* pen = &curve;
            if (x_before == 59 && x == 59) pen = &left;
            if (x_before == 340 && x == 340) pen = &white;
            surface.line(x_before, 302 - i, x, 301 - i, *pen);
        }
        x_before = x;
    }
    if (!crosses || s.abs_max == s.abs_min) return;
    const QColor blue = standard_color(9);
    const int n = std::clamp(count, 0, max_standards);
    for (int k = 0; k < n; ++k) {
        const auto i = static_cast<std::size_t>(k);
        const int x = std::clamp(calibration_column(s.std_conc[i], s), 60, 340);
        const int y = std::clamp(calibration_row(s.std_abs[i], s), 20, 300);
        surface.line(x - 2, y, x + 2, y, blue);
        surface.line(x, y - 2, x, y + 2, blue);
    }
}

QString number_text(double x) {
    return format_text(x, "0.0000");
}

} // namespace

int calibration_column(double conc, const calibration_set& s) {
    return 59 + cint((conc - s.conc_min) * 280 / (s.conc_max - s.conc_min));
}

int calibration_row(double abs, const calibration_set& s) {
    return 300 - cint((abs - s.abs_min) * 280 / (s.abs_max - s.abs_min));
}

void draw_calibration_frame(plot_surface& surface, const calibration_set& s, const QString& unit) {
    plot_surface::batch batch(surface);
    plot_view view;
    view.view_high = s.abs_max;
    view.view_low = s.abs_min;
    axes_text text;
    text.y_caption = QStringLiteral("(ABS)");
    text.x_caption = unit.isEmpty() || unit == QLatin1String("None") ? QStringLiteral("Conc.")
                                                                     : QStringLiteral("Conc.(%1)").arg(unit);
    text.y_format = "#0.000";
    text.x_format = "#0.000";
    draw_axes(surface, view, text);
    // The X labels are Conc., which need not start at a whole number: written over the
    // nanometre labels of the shared frame.
    surface.filled_box(QRect(QPoint(0, 311), QPoint(surface.logical_size().width() - 1, 323)),
                       plot_background());
    for (int i = 0; i <= 5; ++i) {
        const double x = s.conc_min + i * (s.conc_max - s.conc_min) / 5;
        surface.text(56 * i + 60, 310, format_text(x, "#0.00"), text_align::center);
    }
}

void draw_1op(plot_surface& surface, const calibration_set& s, int count, bool crosses) {
    draw_curve(surface, s, count, crosses);
}

void draw_2op(plot_surface& surface, const calibration_set& s, int count, bool crosses) {
    draw_curve(surface, s, count, crosses);
}

void show_equation(plot_surface& surface, const calibration_set& s) {
    plot_surface::batch batch(surface);
    const int h = surface.text_height();
    const int x = 60;
    int y = 340;
    const bool second_order = s.fit_type == 3 || s.fit_type == 4;
    surface.text(x, y, QString::fromLatin1(fit_equation(s.fit_type)));
    if (second_order)
        surface.text(x + surface.text_width(QStringLiteral("Conc. = Ka * ABS")), y - 3, QStringLiteral("2"));
    y += h;
    surface.text(x, y, QStringLiteral("Ka = ") + number_text(s.fit_ka));
    y += h;
    if (s.fit_type != 1) {
        surface.text(x, y, QStringLiteral("Kb = ") + number_text(s.fit_kb));
        y += h;
    }
    if (s.fit_type == 4) {
        surface.text(x, y, QStringLiteral("Kc = ") + number_text(s.fit_kc));
        y += h;
    }
    surface.text(x, y, QStringLiteral("R   =") + number_text(s.fit_r2));
    surface.text(x + surface.text_width(QStringLiteral("R")), y - 3, QStringLiteral("2"));
}

} // namespace lumora
