// Photometry in the report and the workbook: its parameter block and the readings of the grid, a
// row across the whole width.
#include "functions/photometry/frmPhotometry.h"
#include "functions/photometry/photometry_setup.h"
#include "link/shared_state.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "report_parts.h"
#include "report_registry.h"
#include "workbook.h"

#include <algorithm>

namespace lumora {

namespace {

int lambda_count() {
    return std::clamp<int>(photometry_setup.ph_lambda_count, 1, ph_max_lambdas);
}

QString wl_pick(int pick) {
    const PhotometrySetup& s = photometry_setup;
    if (pick < 1 || pick > lambda_count()) return QStringLiteral("None");
    return format_text(s.ph_lambda[static_cast<std::size_t>(pick - 1)], "0") + QStringLiteral(" nm");
}

QString sign(int s) {
    return s == 0 ? QStringLiteral("+") : QStringLiteral("-");
}

QStringList parameter_lines() {
    const PhotometrySetup& s = photometry_setup;
    const int n = lambda_count();
    QStringList lines{QStringLiteral("Function = PHOTOMETRY"),
                      QStringLiteral("Wavelength number = ") + QString::number(n)};
    for (int i = 0; i < n; ++i)
        lines << QStringLiteral("WL") + QString::number(i + 1) + QStringLiteral(" = ") +
                     format_text(s.ph_lambda[static_cast<std::size_t>(i)], "0") + QStringLiteral(" nm");
    if (s.ph_mode == 2) {
        lines << QStringLiteral("Measure mode = Factor*ABS") << QStringLiteral("Unit = ") + s.ph_unit
              << QStringLiteral("Factor = ") + format_text(s.ph_factor, "0.000");
    } else {
        lines << (s.ph_mode == 1 ? QStringLiteral("Measure mode = %T")
                                 : QStringLiteral("Measure mode = ABS"));
    }
    lines << QStringLiteral("Cycle interval = ") + format_text(s.ph_cycle_interval, "0 sec");
    if (s.ph_advanced == 1) {
        lines << QStringLiteral("Advanced equation");
        lines << QStringLiteral("R=") + format_text(s.ph_k1, "0.000") + QStringLiteral("*(") +
                     wl_pick(s.ph_wl_pick[0]) + sign(s.ph_sign[0]) + wl_pick(s.ph_wl_pick[1]) +
                     QStringLiteral(")") + sign(s.ph_sign[1]) + format_text(s.ph_k2, "0.000") +
                     QStringLiteral("*(") + wl_pick(s.ph_wl_pick[2]) + sign(s.ph_sign[2]) +
                     wl_pick(s.ph_wl_pick[3]) + QStringLiteral(")");
    }
    return lines;
}

// The column step across the page: the row number at 50 and up to eleven columns after it.
constexpr int column_step = 55;

// The report heads the R column "  R", the quick print "R".
void photometry_rows(report_page& page, const grid& table, const QString& r_head) {
    const PhotometrySetup& s = photometry_setup;
    const PhotometryRun& r = photometry_run;
    const int n = lambda_count();
    const int cols = n + (s.ph_advanced == 1 ? 1 : 0);
    const double k = page.k();
    auto line = [&](const QStringList& cells) {
        page.break_test();
        for (int i = 0; i < cells.size(); ++i)
            page.text((50 + column_step * i) * k, page.y, cells[i]);
        page.y += page.text_height();
    };
    QStringList head{QStringLiteral("No.")};
    for (int i = 0; i < n; ++i)
        head << format_text(s.ph_lambda[static_cast<std::size_t>(i)], "0nm");
    if (s.ph_advanced == 1) head << r_head;
    line(head);
    const int rows = (r.ph_data_count + n - 1) / n;
    for (int row = 1; row <= rows; ++row) {
        const auto& mark = r.ph_marks[static_cast<std::size_t>((row - 1) * n)];
        if (!mark.selected) continue;
        QStringList cells{QString::number(row) + (mark.zero ? QStringLiteral("-z") : QString())};
        for (int c = 1; c <= cols; ++c)
            cells << table.TextMatrix(row, c);
        line(cells);
    }
}

void body(function_window& window, report_page& page) {
    auto& w = static_cast<frmPhotometry&>(window);
    const auto& flags = photometry_setup.ph_print_flag;
    if (flags[2] == 1)
        report_parameters(page, 50, parameter_lines());
    else
        page.y = 200.0 * page.k();
    if (flags[3] == 1) {
        report_section(page, QStringLiteral("Output data"));
        photometry_rows(page, w.fgdData(), QStringLiteral("  R"));
    }
}

void sheets(function_window& window, workbook& book) {
    copy_grid(static_cast<frmPhotometry&>(window).fgdData(), book.add_sheet(QStringLiteral("Read data")));
}

} // namespace

report_piece photometry_report() {
    report_piece p;
    p.function_id = fid_photometry;
    p.flags = [] {
        return report_flags{photometry_setup.ph_print_flag[0] == 1, photometry_setup.ph_print_flag[1] == 1};
    };
    p.title = [](QString& lab, QString& subject, QString& op, QString& remark) {
        const auto& t = photometry_setup.ph_report_text;
        lab = t[0];
        subject = t[1];
        op = t[2];
        remark = t[3];
    };
    p.body = body;
    p.tables = [](function_window& w, report_page& page) {
        page.set_font_size(12);
        photometry_rows(page, static_cast<frmPhotometry&>(w).fgdData(), QStringLiteral("R"));
    };
    p.sheets = sheets;
    return p;
}

} // namespace lumora
