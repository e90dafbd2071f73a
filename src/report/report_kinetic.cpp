// Kinetic in the report and the workbook: the graph of the last run with its crosses and fit
// line, the setup with the fitted equation, the track, sampled and output tables, and the sheets.
#include "functions/kinetic/frmKinetic.h"
#include "functions/kinetic/kinetic_data.h"
#include "link/shared_state.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "plot/palette.h"
#include "plot/plot_scaling.h"
#include "report_parts.h"
#include "report_registry.h"
#include "report_stats.h"
#include "workbook.h"

#include <algorithm>
#include <functional>

namespace lumora {

namespace {

QStringList parameter_lines() {
    const KineticSetup& s = kinetic_setup;
    const auto sec = [](int value) { return QString::number(value) + QStringLiteral(" sec"); };
    return {QStringLiteral("Function = KINETIC"),
            QStringLiteral("Wavelength = ") + format_text(val(s.kn_wavelength.toStdString()), "0") +
                QStringLiteral(" nm"),
            QStringLiteral("Sample number = ") + QString::number(s.kn_sampling_number),
            QStringLiteral("Lag time = ") + sec(s.kn_lag),
            QStringLiteral("Rate time = ") + sec(s.kn_rate),
            QStringLiteral("Delay time = ") + sec(s.kn_delay),
            QStringLiteral("Low value = ") + format_text(s.kn_low, "0.000") + QStringLiteral(" ABS"),
            QStringLiteral("High value = ") + format_text(s.kn_high, "0.000") + QStringLiteral(" ABS"),
            QStringLiteral("Factor = ") + format_text(s.kn_factor, "0.000"),
            QStringLiteral("Unit = ") + s.kn_unit,
            QStringLiteral("Equation:"),
            QStringLiteral("ABS = Ka * T + Kb"),
            QStringLiteral("Ka = ") + format_text(kinetic.fit.ka, "#0.0000"),
            QStringLiteral("Kb = ") + format_text(kinetic.fit.kb, "#0.0000")};
}

int table_count(const grid& table, int count) {
    return std::clamp(count, 0, std::max(0, table.Rows() - 1));
}

// Rows 1..count of a table, each numbered from 1, with cells 1..cols - 1; only the selected ones
// when `selected` says which.
void numbered_rows(report_columns& out, const grid& table, int count, int cols,
                   const std::function<bool(int)>& selected) {
    int number = 0;
    for (int row = 1; row <= count; ++row) {
        if (selected && !selected(row)) continue;
        QStringList cells{QString::number(++number)};
        for (int c = 1; c < cols; ++c)
            cells << table.TextMatrix(row, c);
        out.row(cells);
    }
}

void kinetic_tables(report_page& page, function_window& window, bool all) {
    auto& w = static_cast<frmKinetic&>(window);
    const auto& flags = kinetic_setup.kn_print_flag;
    if (all || flags[3] == 1) {
        report_section(page, QStringLiteral("Track data"));
        report_columns cols(page, {0, 40, 120, 200});
        const QStringList header{QStringLiteral("No."), QStringLiteral("Time"), QStringLiteral("Org. Data"),
                                 QStringLiteral("Fit Data")};
        cols.row(header);
        cols.row(header);
        report_marked_rows(cols, w.fgdTrack(), kinetic.tracks.track_marks.data(),
                           table_count(w.fgdTrack(), kinetic.tracks.track_count), 4);
        cols.close();
    }
    if (all || flags[4] == 1) {
        report_section(page, QStringLiteral("Sampled data"));
        report_columns cols(page, {0, 40, 120, 200});
        const QStringList header{QStringLiteral("No."), QStringLiteral("Time"), QStringLiteral("Value"),
                                 QStringLiteral("Diff.")};
        cols.row(header);
        cols.row(header);
        numbered_rows(cols, w.fgdPeak(), table_count(w.fgdPeak(), kinetic.cross_count), 4, {});
        cols.close();
    }
    if (all || flags[5] == 1) {
        report_section(page, QStringLiteral("Output data"));
        report_columns cols(page, {0, 30, 110, 170, 240});
        const QStringList header{QStringLiteral("No."), QStringLiteral("Lambda"), QStringLiteral("ABS0"),
                                 QStringLiteral("dABS/dT"), QStringLiteral("dC/dT")};
        cols.row(header);
        cols.row(header);
        const int count = table_count(w.fgdValley(), static_cast<int>(kinetic.outputs.size()));
        numbered_rows(cols, w.fgdValley(), count, 5,
                      [](int row) { return kinetic.outputs[static_cast<std::size_t>(row - 1)].flag != 0; });
        cols.close();
    }
}

// The fit line over the fit stretch, in the graph's scale, as the screen draws it.
void print_linear_fit(report_page& page, const report_graph& g) {
    const double k = page.k();
    const QColor color = standard_color(5);
    int last = g.row_of(kinetic.kn_fit[kn_first_fit], g.high, g.low);
    for (int c = kn_first_fit + 1; c <= kn_last_fit; ++c) {
        const int y = g.row_of(kinetic.kn_fit[static_cast<std::size_t>(c)], g.high, g.low);
        page.line((c + 99) * k, last * k, (c + 100) * k, y * k, color);
        last = y;
    }
}

void kinetic_graph(report_page& page, function_window& window) {
    auto& w = static_cast<frmKinetic&>(window);
    axes_text axes;
    axes.y_caption = QStringLiteral("(ABS)");
    axes.x_caption = QStringLiteral("Time(sec)");
    axes.y_format = "#0.000";
    axes.x_format = "0.0";
    axes.round_x_labels = false;
    report_curve run;
    run.color = standard_color(12);
    run.gap_after_zero = false;
    std::copy(kinetic.kn_samples.begin(), kinetic.kn_samples.end(), run.values.begin());
    report_graph g;
    g.row_of = report_y_to_pixel;
    g.high = kinetic.view.view_high;
    g.low = kinetic.view.view_low;
    std::vector<report_curve> curves;
    if (kinetic.kn_run_count > 0) curves.push_back(run);
    report_draw_graph(
        page, kinetic.view, axes, g, curves,
        {{kinetic.cross_marks.data(), table_count(w.fgdPeak(), kinetic.cross_count), 9},
         {kinetic.tracks.track_marks.data(), table_count(w.fgdTrack(), kinetic.tracks.track_count), 8}});
    if (kinetic.kn_run_count > 0) print_linear_fit(page, g);
}

void body(function_window& window, report_page& page) {
    const double k = page.k();
    page.set_font_size(12);
    page.head(50 * k, 200 * k, QStringLiteral("Graph"));
    if (kinetic_setup.kn_print_flag[2] == 1) report_parameters(page, 430, parameter_lines());
    kinetic_graph(page, window);
    page.y = 580 * k;
    kinetic_tables(page, window, false);
}

void sheets(function_window& window, workbook& book) {
    // With "Print statistics" ticked the statistics sheet comes too; made first, it is written
    // last, after the function's own sheets.
    if (report_print_statistics)
        rate_statistics_sheet(book, static_cast<frmKinetic&>(window).rate_statistics());
    auto& w = static_cast<frmKinetic&>(window);
    copy_grid(w.fgdValley(), book.add_sheet(QStringLiteral("Output data")),
              table_count(w.fgdValley(), static_cast<int>(kinetic.outputs.size())), 4);
    copy_grid(w.fgdPeak(), book.add_sheet(QStringLiteral("Sampled data")),
              table_count(w.fgdPeak(), kinetic.cross_count), 3);
    copy_grid(w.fgdTrack(), book.add_sheet(QStringLiteral("Track data")),
              table_count(w.fgdTrack(), kinetic.tracks.track_count), 3);
    auto& sheet = book.add_sheet(QStringLiteral("Read data"));
    for (int k = 0; k < kn_samples_count; ++k) {
        sheet.set(k, 0, format_number(kinetic_setup.sample_time(k), "#0.00") + "sec");
        sheet.set(k, 1, format_number(kinetic.kn_samples[static_cast<std::size_t>(k)], "##0.0000"));
    }
}

} // namespace

report_piece kinetic_report() {
    report_piece p;
    p.function_id = fid_kinetic;
    p.flags = [] {
        return report_flags{kinetic_setup.kn_print_flag[0] == 1, kinetic_setup.kn_print_flag[1] == 1};
    };
    p.title = [](QString& lab, QString& subject, QString& op, QString& remark) {
        const auto& t = kinetic_setup.kn_report_text;
        lab = t[0];
        subject = t[1];
        op = t[2];
        remark = t[3];
    };
    p.body = body;
    p.graph = [](function_window& w, report_page& page) { kinetic_graph(page, w); };
    p.tables = [](function_window& w, report_page& page) { kinetic_tables(page, w, true); };
    p.sheets = sheets;
    p.statistics = [](function_window& window, report_page& page) {
        report_rate_statistics(page, static_cast<frmKinetic&>(window).rate_statistics());
    };
    return p;
}

} // namespace lumora
