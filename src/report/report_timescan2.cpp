// Timescan of fixed interval in the report and the workbook: the page of the run on show, and the
// read data of its grid, which is the run's store.
#include "functions/timescan/timescan_plot.h"
#include "functions/timescan/timescan_setup.h"
#include "functions/timescan_interval/frmTimescan2.h"
#include "functions/timescan_interval/timescan_interval_data.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "plot/palette.h"
#include "plot/plot_scaling.h"
#include "report_parts.h"
#include "report_registry.h"
#include "workbook.h"

#include <algorithm>

namespace lumora {

namespace {

QStringList parameter_lines() {
    const TimescanIntervalSetup& s = timescan_interval_setup;
    const bool t = s.percent_t();
    const char* f = t ? "0.00" : "0.000";
    const QString unit = t ? QStringLiteral(" %T") : QStringLiteral(" ABS");
    return {QStringLiteral("Function = TIMESCAN-Fixed interval"),
            QStringLiteral("Wavelength = ") + format_text(val(s.ti_wavelength.toStdString()), "0") +
                QStringLiteral(" nm"),
            QStringLiteral("Sampling interval = ") + format_text(s.ti_interval, "0.0") +
                QStringLiteral(" sec"),
            QStringLiteral("Delay time = ") + format_text(s.ti_delay, "0.0") + QStringLiteral(" sec"),
            t ? QStringLiteral("Measure mode = %T") : QStringLiteral("Measure mode = ABS"),
            QStringLiteral("Low value = ") + format_text(s.ti_low, f) + unit,
            QStringLiteral("High value = ") + format_text(s.ti_high, f) + unit};
}

// A row is selected unless its number cell ends in "  X".
bool selected(const grid& table, int row) {
    return !table.TextMatrix(row, 0).endsWith(QStringLiteral("  X"));
}

void graph(function_window& window, report_page& page) {
    auto& w = static_cast<frmTimescan2&>(window);
    const grid& table = w.fgdTrack();
    const double k = page.k();

    const bool t = timescan_interval_setup.percent_t();
    axes_text axes = timescan_axes(t);
    axes.y_format = t ? "#0.00" : "#0.000";
    // The page on show: the samples of its 280 steps, a column each.
    report_curve page_curve;
    page_curve.color = curve_color(std::max<int>(1, timescan_interval.ti_curve_count));
    page_curve.gap_after_zero = false;
    const int first = w.page_shown() * page_steps;
    const int samples = table.Rows() - 1;
    int last_column = -1;
    for (int c = 0; c <= 280 && first + c + 1 <= samples; ++c) {
        page_curve.values[static_cast<std::size_t>(c)] =
            val(table.TextMatrix(first + c + 1, 2).toStdString());
        last_column = c;
    }
    std::vector<report_curve> curves;
    if (last_column >= 1) {
        for (int c = last_column + 1; c <= 280; ++c)
            page_curve.values[static_cast<std::size_t>(c)] =
                page_curve.values[static_cast<std::size_t>(last_column)];
        curves.push_back(page_curve);
    }
    report_graph g;
    g.row_of = report_y_to_pixel;
    g.high = timescan_interval.view.view_high;
    g.low = timescan_interval.view.view_low;
    report_draw_graph(page, timescan_interval.view, axes, g, curves);
    page.y = 580 * k;
}

void tables(function_window& window, report_page& page) {
    const grid& table = static_cast<frmTimescan2&>(window).fgdTrack();
    const int samples = table.Rows() - 1;
    {
        report_section(page, QStringLiteral("Read data"));
        report_columns cols(page, {0, 40, 120});
        const QStringList header{QStringLiteral("No."), QStringLiteral("Time"), QStringLiteral("Value")};
        cols.row(header);
        cols.row(header);
        int n = 0;
        for (int r = 1; r <= samples; ++r)
            if (selected(table, r))
                cols.row({QString::number(++n), table.TextMatrix(r, 1), table.TextMatrix(r, 2)});
        cols.close();
    }
}

void body(function_window& window, report_page& page) {
    const double k = page.k();
    const auto& flags = timescan_interval_setup.ti_print_flag;
    page.set_font_size(12);
    page.head(50 * k, 200 * k, QStringLiteral("Graph"));
    if (flags[2] == 1) report_parameters(page, 430, parameter_lines());
    graph(window, page);
    if (flags[3] == 1) tables(window, page);
}

void sheets(function_window& window, workbook& book) {
    copy_grid(static_cast<frmTimescan2&>(window).fgdTrack(), book.add_sheet(QStringLiteral("Read data")));
}

} // namespace

report_piece timescan2_report() {
    report_piece p;
    p.function_id = fid_timescan2;
    p.flags = [] {
        const auto& f = timescan_interval_setup.ti_print_flag;
        return report_flags{f[0] == 1, f[1] == 1};
    };
    p.title = [](QString& lab, QString& subject, QString& op, QString& remark) {
        const auto& t = timescan_interval_setup.ti_report_text;
        lab = t[0];
        subject = t[1];
        op = t[2];
        remark = t[3];
    };
    p.body = body;
    p.graph = graph;
    p.tables = tables;
    p.sheets = sheets;
    return p;
}

} // namespace lumora
