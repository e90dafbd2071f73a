// Quantitative in the report and the workbook: the calibration with its fit block, the standards
// and the samples, and the equation sheet.
#include "functions/quantitative/frmQuant.h"
#include "functions/quantitative/quant_setup.h"
#include "link/shared_state.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "plot/plot_scaling.h"
#include "report_fit.h"
#include "report_parts.h"
#include "report_registry.h"
#include "report_stats.h"
#include "workbook.h"

#include <algorithm>

namespace lumora {

namespace {

const char* const std_types[] = {"Standard type = Known Conc. and read ABS",
                                 "Standard type = Known Conc. and keyin ABS", "Standard type = Known factor"};

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
    lines << report_fit_lines(c);
    return lines;
}

void calibration_graph(report_page& page) {
    report_calibration_graph(page, quant.cal, quant.unit);
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

namespace {

void sheets(function_window& window, workbook& book) {
    auto& w = static_cast<frmQuant&>(window);
    // With "Print statistics" ticked the statistics sheet comes too; made first, it is written
    // last, after the function's own sheets.
    if (report_print_statistics) {
        const calibration_stats s = w.statistics();
        calibration_statistics_sheet(book, s, quant.unit, w.sample_predictions(s));
    }
    equation_sheet(book, quant.cal);
    // The sample table's own three columns; its statistics columns are on the statistics sheet.
    copy_grid(w.fgdSample(), book.add_sheet(QStringLiteral("Sample data")), quant.sample_count, 2);
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
    p.statistics = [](function_window& window, report_page& page) {
        const auto& w = static_cast<frmQuant&>(window);
        const calibration_stats s = w.statistics();
        report_calibration_statistics(page, s, quant.unit, w.sample_predictions(s));
    };
    return p;
}

} // namespace lumora
