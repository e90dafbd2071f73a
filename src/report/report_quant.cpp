// Quantitative in the report and the workbook: the calibration with its fit block, the standards
// and the samples, and the equation sheet.
#include "functions/quantitative/frmQuant.h"
#include "functions/quantitative/quant_setup.h"
#include "link/shared_state.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "plot/plot_scaling.h"
#include "report_parts.h"
#include "report_registry.h"
#include "workbook.h"

#include <algorithm>

namespace lumora {

namespace {

const char* const fit_names[] = {"Fit type = 1st order through zero", "Fit type = 1st order not through zero",
                                 "Fit type = 2nd order through zero",
                                 "Fit type = 2nd order not through zero"};
const char* const std_types[] = {"Standard type = Known Conc. and read ABS",
                                 "Standard type = Known Conc. and keyin ABS", "Standard type = Known factor"};

// How many coefficients the fit has: Ka; Ka, Kb; Ka, Kb; Ka, Kb, Kc.
int coefficient_count(int fit_type) {
    return fit_type == 1 ? 1 : fit_type == 4 ? 3 : 2;
}

QStringList parameter_lines() {
    const calibration_set& c = quant.cal;
    QStringList lines{
        QStringLiteral("Function = QUANTITATIVE"),
        QStringLiteral("Wavelength = ") + format_text(val(quant.lambda.toStdString()), "0") +
            QStringLiteral(" nm"),
        QStringLiteral("Low value = ") + format_text(quant.low_abs, "0.000") + QStringLiteral(" ABS"),
        QStringLiteral("High value = ") + format_text(quant.high_abs, "0.000") + QStringLiteral(" ABS"),
        QStringLiteral("Unit = ") + quant.unit,
        QString::fromLatin1(std_types[std::clamp<int>(quant.std_type, 0, 2)]),
        QStringLiteral("Standard number = ") + format_text(c.std_count, "0")};
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

void calibration_graph(report_page& page) {
    const calibration_set& c = quant.cal;
    axes_text axes;
    axes.y_caption = QStringLiteral("(ABS)");
    axes.x_caption = QStringLiteral("Conc(") + quant.unit + QLatin1Char(')');
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

void tables(function_window& window, report_page& page, bool all) {
    auto& w = static_cast<frmQuant&>(window);
    if (all || quant.print_flags[3] == 1) {
        report_section(page, QStringLiteral("Standard data"));
        report_columns cols(page, {0, 40, 120});
        const QStringList header{QStringLiteral("No."), QStringLiteral("Conc."), QStringLiteral("Value")};
        cols.row(header);
        cols.row(header);
        const grid& data = w.fgdData();
        for (int r = 1; r < data.Rows(); ++r)
            cols.row({data.TextMatrix(r, 0), data.TextMatrix(r, 1), data.TextMatrix(r, 2)});
        cols.close();
    }
    // The samples always print: the valid ones, numbered as they stand.
    report_section(page, QStringLiteral("Sample data"));
    report_columns cols(page, {0, 40, 120});
    const QStringList header{QStringLiteral("No."), QStringLiteral("Value"), QStringLiteral("Conc.")};
    cols.row(header);
    cols.row(header);
    const grid& samples = w.fgdSample();
    const int count = std::min<int>(std::clamp<int>(quant.sample_count, 0, max_samples), samples.Rows() - 1);
    int n = 0;
    for (int r = 1; r <= count; ++r)
        if (quant.sample_valid[static_cast<std::size_t>(r)])
            cols.row({QString::number(++n), samples.TextMatrix(r, 1), samples.TextMatrix(r, 2)});
    cols.close();
}

void body(function_window& window, report_page& page) {
    const double k = page.k();
    page.set_font_size(12);
    page.head(50 * k, 200 * k, QStringLiteral("Graph"));
    if (quant.print_flags[2] == 1) report_parameters(page, 430, parameter_lines());
    calibration_graph(page);
    page.y = 580 * k;
    tables(window, page, false);
}

} // namespace

// The equation sheet: the plot's label, the coefficients the fit has and R2, a line a row.
void quant_equation_sheet(workbook& book) {
    auto& sheet = book.add_sheet(QStringLiteral("Equation"));
    const calibration_set& c = quant.cal;
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

namespace {

void sheets(function_window& window, workbook& book) {
    auto& w = static_cast<frmQuant&>(window);
    quant_equation_sheet(book);
    copy_grid(w.fgdSample(), book.add_sheet(QStringLiteral("Sample data")), quant.sample_count);
    copy_grid(w.fgdData(), book.add_sheet(QStringLiteral("Standard data")), quant.cal.std_count);
}

} // namespace

report_piece quant_report() {
    report_piece p;
    p.function_id = fid_quantitative;
    p.flags = [] { return report_flags{quant.print_flags[0] == 1, quant.print_flags[1] == 1}; };
    p.title = [](QString& lab, QString& subject, QString& op, QString& remark) {
        lab = quant.report_laboratory;
        subject = quant.report_subject;
        op = quant.report_operator;
        remark = quant.report_remark;
    };
    p.body = body;
    p.graph = [](function_window&, report_page& page) {
        calibration_graph(page);
        page.y = 580.0 * page.k();
    };
    p.tables = [](function_window& w, report_page& page) { tables(w, page, true); };
    p.sheets = sheets;
    return p;
}

} // namespace lumora
