#include "report_fit.h"

#include "platform/numeric_text.h"
#include "plot/plot_scaling.h"
#include "report_parts.h"
#include "workbook.h"

#include <algorithm>
#include <string>

namespace lumora {

namespace {

const char* const fit_names[] = {"Fit type = 1st order through zero", "Fit type = 1st order not through zero",
                                 "Fit type = 2nd order through zero",
                                 "Fit type = 2nd order not through zero"};
// How many coefficients the fit has: Ka; Ka, Kb; Ka, Kb; Ka, Kb, Kc.
int coefficient_count(int fit_type) {
    return fit_type == 1 ? 1 : fit_type == 4 ? 3 : 2;
}

} // namespace

QStringList report_fit_lines(const calibration_set& c) {
    QStringList lines;
    if (c.fit_type < 1 || c.fit_type > 4) return lines;
    lines << QString::fromLatin1(fit_names[c.fit_type - 1]);
    // The superscript 2 of ABS stands in the gap the plot's label leaves for it.
    lines << QString::fromLatin1(fit_equation(c.fit_type))
                 .replace(QStringLiteral("ABS    "), QStringLiteral("ABS\u00b2    "));
    const double k[] = {c.fit_ka, c.fit_kb, c.fit_kc};
    const char* names[] = {"Ka = ", "Kb = ", "Kc = "};
    for (int i = 0; i < coefficient_count(c.fit_type); ++i)
        lines << QString::fromLatin1(names[i]) + format_text(k[i], "0.0000");
    lines << QStringLiteral("R\u00b2  = ") + format_text(c.fit_r2, "0.0000");
    return lines;
}

void report_calibration_graph(report_page& page, const calibration_set& c, const QString& unit) {
    axes_text axes;
    axes.y_caption = QStringLiteral("(ABS)");
    axes.x_caption = QStringLiteral("Conc(") + unit + QLatin1Char(')');
    axes.y_format = "#0.000";
    axes.x_format = "###0.000";
    axes.round_x_labels = false;
    report_graph g;
    g.row_of = report_y_to_pixel;
    g.high = c.abs_max;
    g.low = c.abs_min;
    g.x_low = c.conc_min;
    g.x_high = c.conc_max > c.conc_min ? c.conc_max : c.conc_min + 1;
    plot_view view;
    report_draw_graph(page, view, axes, g, {});
    const double k = page.k();
    const double x_span = g.x_high - g.x_low;
    auto column = [&](double conc) { return 100 + std::clamp((conc - g.x_low) / x_span * 280, 0.0, 280.0); };
    if (c.fit_type >= 1 && c.fit_type <= 4 && c.abs_max > c.abs_min) {
        double x1 = column(conc_from_abs(c.fit_type, c.fit_ka, c.fit_kb, c.fit_kc, c.abs_min));
        int y1 = report_y_to_pixel(c.abs_min, c.abs_max, c.abs_min);
        for (int i = 1; i <= 140; ++i) {
            const double a = c.abs_min + (c.abs_max - c.abs_min) * i / 140;
            const double x2 = column(conc_from_abs(c.fit_type, c.fit_ka, c.fit_kb, c.fit_kc, a));
            const int y2 = report_y_to_pixel(a, c.abs_max, c.abs_min);
            page.line(x1 * k, y1 * k, x2 * k, y2 * k, Qt::blue);
            x1 = x2;
            y1 = y2;
        }
    }
    if (c.abs_max > c.abs_min) {
        for (int i = 0; i < std::clamp<int>(c.std_count, 0, 20); ++i) {
            const double x = column(c.std_conc[static_cast<std::size_t>(i)]) * k;
            const double y =
                report_y_to_pixel(c.std_abs[static_cast<std::size_t>(i)], c.abs_max, c.abs_min) * k;
            page.line(x - 3 * k, y, x + 3 * k, y, Qt::red);
            page.line(x, y - 3 * k, x, y + 3 * k, Qt::red);
        }
    }
}

// The equation sheet: the plot's label, the coefficients the fit has and R2, a line a row.
void equation_sheet(workbook& book, const calibration_set& c) {
    auto& sheet = book.add_sheet(QStringLiteral("Equation"));
    if (c.fit_type < 1 || c.fit_type > 4) return;
    int row = 0;
    std::string label = fit_equation(c.fit_type);
    if (const auto gap = label.find("ABS    "); gap != std::string::npos) label.replace(gap, 3, "ABS2");
    sheet.set(row++, 0, label);
    const double k[] = {c.fit_ka, c.fit_kb, c.fit_kc};
    const char* names[] = {"Ka = ", "Kb = ", "Kc = "};
    for (int i = 0; i < coefficient_count(c.fit_type); ++i)
        sheet.set(row++, 0, std::string(names[i]) + format_number(k[i], "0.0000"));
    sheet.set(row, 0, "R2   =" + format_number(c.fit_r2, "0.0000"));
}

} // namespace lumora
