// Protein analysis in the report and the workbook: the calibration with its fit block, the
// difference plot under it, the standards with their replicates and the samples, and the
// equation sheet.
#include "functions/protein/frmProtein.h"
#include "functions/protein/protein_setup.h"
#include "link/shared_state.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "plot/palette.h"
#include "plot/plot_scaling.h"
#include "report_fit.h"
#include "report_parts.h"
#include "report_registry.h"
#include "report_stats.h"
#include "workbook.h"

#include <algorithm>

namespace lumora {

namespace {

QStringList parameter_lines() {
    const ProteinSetup& p = protein;
    const auto& assays = protein_assays();
    const int assay = std::clamp<int>(p.assay, 0, static_cast<int>(assays.size()) - 1);
    QStringList lines{QStringLiteral("Function = PROTEIN ANALYSIS"),
                      QStringLiteral("Assay type = ") +
                          QString::fromLatin1(assays[static_cast<std::size_t>(assay)].name),
                      QStringLiteral("Wavelength = ") + format_text(val(p.lambda.toStdString()), "0") +
                          QStringLiteral(" nm"),
                      QStringLiteral("No of standard replicate = ") + QString::number(p.std_reps),
                      QStringLiteral("No of sample replicate = ") + QString::number(p.sample_reps),
                      QStringLiteral("Delay time(sec) = ") + QString::number(p.delay),
                      QStringLiteral("Unit = ") + p.unit,
                      QStringLiteral("Standard number = ") + format_text(p.cal.std_count, "0")};
    lines << report_fit_lines(p.cal);
    return lines;
}

// The Diff of every filled standards row under the calibration, over the same Conc. range; the
// caption is the one the derivative graphs carry.
void difference_graph(function_window& window, report_page& page) {
    const auto& w = static_cast<frmProtein&>(window);
    const ProteinSetup& p = protein;
    const calibration_set& c = p.cal;
    axes_text axes;
    axes.y_caption = QStringLiteral("(ABS/dLambda)");
    axes.x_caption = QStringLiteral("Conc(") + p.unit + QLatin1Char(')');
    axes.y_format = "###0.000";
    axes.x_format = "###0.000";
    axes.round_x_labels = false;
    report_graph g;
    g.top = 580;
    g.bottom = 720;
    g.row_of = PrtDerivateGetPixelY;
    g.high = p.diff_max;
    g.low = p.diff_min;
    g.title = QStringLiteral("Difference");
    g.x_low = c.conc_min;
    g.x_high = c.conc_max > c.conc_min ? c.conc_max : c.conc_min + 1;
    report_draw_graph(page, plot_view{}, axes, g, {});
    if (p.diff_max <= p.diff_min) return;
    const double k = page.k();
    const grid& data = w.fgdData();
    const int rep = std::clamp<int>(p.std_reps, 1, max_replicates);
    const int rows = std::min<int>(p.data_rows, data.Rows() - 1);
    for (int r = 1; r <= rows; ++r) {
        const QString diff = data.TextMatrix(r, 4);
        if (diff.isEmpty()) continue;
        const double conc = val(data.TextMatrix(r, 1).toStdString());
        const double x = (100 + std::clamp((conc - g.x_low) / (g.x_high - g.x_low) * 280, 0.0, 280.0)) * k;
        const double y = PrtDerivateGetPixelY(val(diff.toStdString()), p.diff_max, p.diff_min) * k;
        const QColor color = r % (rep + 1) == 0 ? curve_color(1) : standard_color(9);
        page.line(x - 2 * k, y, x + 2 * k, y, color);
        page.line(x, y - 2 * k, x, y + 2 * k, color);
    }
}

void graphs(function_window& window, report_page& page) {
    report_calibration_graph(page, protein.cal, protein.unit);
    difference_graph(window, page);
    page.y = 780 * page.k();
}

void tables(function_window& window, report_page& page, bool all) {
    auto& w = static_cast<frmProtein&>(window);
    if (all || protein.print_flags[3] == 1) {
        report_section(page, QStringLiteral("Standard data"));
        report_columns cols(page, {0, 40, 85, 130, 205, 255});
        const grid& data = w.fgdData();
        for (int r = 0; r < data.Rows(); ++r) {
            QStringList cells;
            for (int c = 0; c < 6; ++c)
                cells << data.TextMatrix(r, c);
            cols.row(cells);
            if (r == 0) cols.row(cells); // the head over both columns
        }
        cols.close();
    }
    // The samples always print: every row read, with its average rows.
    report_section(page, QStringLiteral("Sample data"));
    report_columns cols(page, {0, 50, 120, 190});
    const grid& samples = w.fgdSample();
    const int count = std::min<int>(protein.sample_rows, samples.Rows() - 1);
    for (int r = 0; r <= count; ++r) {
        QStringList cells;
        for (int c = 0; c < 4; ++c)
            cells << samples.TextMatrix(r, c);
        cols.row(cells);
        if (r == 0) cols.row(cells);
    }
    cols.close();
}

void body(function_window& window, report_page& page) {
    const double k = page.k();
    page.set_font_size(12);
    page.head(50 * k, 200 * k, QStringLiteral("Graph"));
    if (protein.print_flags[2] == 1) report_parameters(page, 430, parameter_lines());
    graphs(window, page);
    tables(window, page, false);
}

void sheets(function_window& window, workbook& book) {
    auto& w = static_cast<frmProtein&>(window);
    // With "Print statistics" ticked the statistics sheet comes too; made first, it is written
    // last, after the function's own sheets.
    if (report_print_statistics) {
        const calibration_stats s = w.statistics();
        calibration_statistics_sheet(book, s, protein.unit, w.sample_predictions(s));
    }
    equation_sheet(book, protein.cal);
    // The sample table's own four columns; its statistics columns are on the statistics sheet.
    copy_grid(w.fgdSample(), book.add_sheet(QStringLiteral("Sample data")), protein.sample_rows, 3);
    copy_grid(w.fgdData(), book.add_sheet(QStringLiteral("Standard data")), w.fgdData().Rows() - 1);
}

} // namespace

report_piece protein_report() {
    report_piece p;
    p.function_id = fid_protein;
    p.flags = [] { return report_flags{protein.print_flags[0] == 1, protein.print_flags[1] == 1}; };
    p.title = [](QString& lab, QString& subject, QString& op, QString& remark) {
        lab = protein.report_laboratory;
        subject = protein.report_subject;
        op = protein.report_operator;
        remark = protein.report_remark;
    };
    p.body = body;
    p.graph = graphs;
    p.tables = [](function_window& w, report_page& page) { tables(w, page, true); };
    p.sheets = sheets;
    p.statistics = [](function_window& window, report_page& page) {
        const auto& w = static_cast<frmProtein&>(window);
        const calibration_stats s = w.statistics();
        report_calibration_statistics(page, s, protein.unit, w.sample_predictions(s));
    };
    return p;
}

} // namespace lumora
