// Timescan of fixed span in the report and the workbook: the graph of its overlaid runs with the
// marks, the track, peak and valley tables, and a sheet per run.
#include "functions/timescan/frmTimescan.h"
#include "functions/timescan/timescan_data.h"
#include "functions/timescan/timescan_plot.h"
#include "functions/timescan/timescan_setup.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "plot/palette.h"
#include "plot/plot_scaling.h"
#include "report_parts.h"
#include "report_registry.h"
#include "workbook.h"

#include <algorithm>
#include <cmath>

namespace lumora {

namespace {

QStringList parameter_lines() {
    const TimescanSetup& s = timescan_setup;
    const bool t = s.percent_t();
    const char* f = t ? "0.00" : "0.000";
    const QString unit = t ? QStringLiteral(" %T") : QStringLiteral(" ABS");
    return {QStringLiteral("Function = TIMESCAN-Fixed span"),
            QStringLiteral("Wavelength = ") + format_text(val(s.ts_wavelength.toStdString()), "0") +
                QStringLiteral(" nm"),
            QStringLiteral("Span time = ") + format_text(s.ts_span, "0.0") + QStringLiteral(" sec"),
            QStringLiteral("Delay time = ") + format_text(s.ts_delay, "0.0") + QStringLiteral(" sec"),
            t ? QStringLiteral("Measure mode = %T") : QStringLiteral("Measure mode = ABS"),
            QStringLiteral("Low value = ") + format_text(s.ts_low, f) + unit,
            QStringLiteral("High value = ") + format_text(s.ts_high, f) + unit};
}

// A run as the screen lays it over the view: between the two samples either side of a column's time.
report_curve run_curve(int s) {
    const plot_view& v = timescan.view;
    const double span = timescan_setup.ts_span;
    report_curve out;
    out.color = curve_color(s);
    out.gap_after_zero = false;
    for (int c = 0; c <= 280; ++c) {
        const double position = span > 0 ? (v.view_start + c * v.view_span / 280.0) * 280 / span : 0;
        const int i = std::clamp(static_cast<int>(std::floor(position)), 0, 280);
        const int j = std::min(i + 1, 280);
        const double a = timescan.ts_curves[static_cast<std::size_t>(i)][static_cast<std::size_t>(s)];
        const double b = timescan.ts_curves[static_cast<std::size_t>(j)][static_cast<std::size_t>(s)];
        out.values[static_cast<std::size_t>(c)] = a + (b - a) * std::clamp(position - i, 0.0, 1.0);
    }
    return out;
}

int table_count(const grid& table, int count) {
    return std::clamp(count, 0, std::max(0, table.Rows() - 1));
}

void timescan_tables(report_page& page, function_window& window, bool all) {
    auto& w = static_cast<frmTimescan&>(window);
    const QStringList header{QStringLiteral("No."), QStringLiteral("Time"), QStringLiteral("Value")};
    const struct {
        const char* head;
        const grid& table;
        const processing::mark* marks;
        int count;
        int flag;
    } sections[] = {
        {"Track data", w.fgdTrack(), timescan.tracks.track_marks.data(), timescan.tracks.track_count, 3},
        {"Peak data", w.fgdPeak(), timescan.peak_marks.data(), timescan.peak_count, 4},
        {"Valley data", w.fgdValley(), timescan.valley_marks.data(), timescan.valley_count, 5},
    };
    for (const auto& s : sections) {
        if (!all && timescan_setup.ts_print_flag[static_cast<std::size_t>(s.flag)] != 1) continue;
        report_section(page, QString::fromLatin1(s.head));
        report_columns cols(page, {0, 40, 120});
        cols.row(header);
        cols.row(header);
        report_marked_rows(cols, s.table, s.marks, table_count(s.table, s.count), 3);
        cols.close();
    }
}

void timescan_graph(report_page& page, function_window& window) {
    auto& w = static_cast<frmTimescan&>(window);
    const bool t = timescan_setup.percent_t();
    axes_text axes = timescan_axes(t);
    axes.y_format = t ? "#0.00" : "#0.000";
    std::vector<report_curve> curves;
    for (int s = 1; s <= timescan.ts_curve_count && s <= ts_max_curves; ++s) {
        const int state = timescan.ts_curve_state[static_cast<std::size_t>(s)];
        if (state == 1 || state == 2) curves.push_back(run_curve(s));
    }
    report_graph g;
    g.row_of = report_y_to_pixel;
    g.high = timescan.view.view_high;
    g.low = timescan.view.view_low;
    report_draw_graph(
        page, timescan.view, axes, g, curves,
        {{timescan.peak_marks.data(), table_count(w.fgdPeak(), timescan.peak_count), 9},
         {timescan.valley_marks.data(), table_count(w.fgdValley(), timescan.valley_count), 13},
         {timescan.tracks.track_marks.data(), table_count(w.fgdTrack(), timescan.tracks.track_count), 8}});
}

void body(function_window& window, report_page& page) {
    const double k = page.k();
    page.set_font_size(12);
    page.head(50 * k, 200 * k, QStringLiteral("Graph"));
    if (timescan_setup.ts_print_flag[2] == 1) report_parameters(page, 430, parameter_lines());
    timescan_graph(page, window);
    page.y = 580 * k;
    timescan_tables(page, window, false);
}

void sheets(function_window& window, workbook& book) {
    auto& w = static_cast<frmTimescan&>(window);
    copy_grid(w.fgdValley(), book.add_sheet(QStringLiteral("Valley data")), timescan.valley_count, 2);
    copy_grid(w.fgdPeak(), book.add_sheet(QStringLiteral("Peak data")), timescan.peak_count, 2);
    copy_grid(w.fgdTrack(), book.add_sheet(QStringLiteral("Track data")), timescan.tracks.track_count, 2);
    const bool t = timescan_setup.percent_t();
    int n = 0;
    for (int s = 1; s <= ts_max_curves; ++s) {
        const int state = timescan.ts_curve_state[static_cast<std::size_t>(s)];
        if (state != 1 && state != 2) continue;
        auto& sheet = book.add_sheet(QStringLiteral("Read data") + QString::number(++n));
        for (int k = 0; k < ts_samples; ++k) {
            sheet.set(k, 0, format_number(timescan_setup.ts_span / 280 * k, "#0.00") + "sec");
            sheet.set(
                k, 1,
                format_number(timescan.ts_curves[static_cast<std::size_t>(k)][static_cast<std::size_t>(s)],
                              t ? "##0.00" : "##0.0000"));
        }
    }
}

} // namespace

report_piece timescan_report() {
    report_piece p;
    p.function_id = fid_timescan;
    p.flags = [] {
        return report_flags{timescan_setup.ts_print_flag[0] == 1, timescan_setup.ts_print_flag[1] == 1};
    };
    p.title = [](QString& lab, QString& subject, QString& op, QString& remark) {
        const auto& t = timescan_setup.ts_report_text;
        lab = t[0];
        subject = t[1];
        op = t[2];
        remark = t[3];
    };
    p.body = body;
    p.graph = [](function_window& w, report_page& page) { timescan_graph(page, w); };
    p.tables = [](function_window& w, report_page& page) { timescan_tables(page, w, true); };
    p.sheets = sheets;
    return p;
}

} // namespace lumora
