// Spectrum in the report and the workbook: the graph of the view with its derivative, the track,
// peak and valley tables, and the read data of the active curve.
#include "functions/function_catalog.h"
#include "functions/spectrum/frmSpectrum.h"
#include "functions/spectrum/spectrum_data.h"
#include "functions/spectrum/spectrum_setup.h"
#include "link/shared_state.h"
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

const char* value_format() {
    return spectrum_setup.percent_t() ? "###.00" : "###.0000";
}

double curve_value(int nm, int column) {
    const int p = nm - 320;
    if (p < 0 || p >= wavelength_points) return 0;
    return shared.baseline_curves[static_cast<std::size_t>(p)][static_cast<std::size_t>(column)];
}

QStringList parameter_lines() {
    const SpectrumSetup& s = spectrum_setup;
    const bool t = s.percent_t();
    const char* f = t ? "0.000" : "0.0000";
    const QString unit = t ? QStringLiteral(" %T") : QStringLiteral(" ABS");
    return {QStringLiteral("Function = SPECTRUM"),
            QStringLiteral("Start wavelength = ") + format_text(s.start_lambda, "0") + QStringLiteral(" nm"),
            QStringLiteral("Stop wavelength = ") + format_text(s.stop_lambda, "0") + QStringLiteral(" nm"),
            t ? QStringLiteral("Measure mode = %T") : QStringLiteral("Measure mode = ABS"),
            QStringLiteral("Low value = ") + format_text(s.low_value, f) + unit,
            QStringLiteral("High value = ") + format_text(s.high_value, f) + unit,
            QStringLiteral("Scan speed = ") + speed_name(s.scan_speed)};
}

// Rows of a table that hold one of its marks.
int table_count(const grid& table, int count) {
    return std::clamp(count, 0, std::max(0, table.Rows() - 1));
}

void table_section(report_page& page, const QString& head, const grid& table, const processing::mark* marks,
                   int count, bool with_derivative) {
    report_section(page, head);
    std::vector<int> offsets{0, 40, 120};
    QStringList header{QStringLiteral("No."), QStringLiteral("Lambda"), QStringLiteral("Value")};
    if (with_derivative) {
        offsets.push_back(200);
        header << QStringLiteral("D_Value");
    }
    report_columns cols(page, offsets);
    cols.row(header);
    cols.row(header);
    report_marked_rows(cols, table, marks, table_count(table, count), static_cast<int>(offsets.size()));
    cols.close();
}

void graph(function_window& window, report_page& page) {
    auto& w = static_cast<frmSpectrum&>(window);
    const double k = page.k();
    const plot_view& view = spectrum.view;
    const axes_text axes = spectrum_axes(spectrum_setup.percent_t());
    std::vector<report_curve> curves;
    for (int s = 1; s <= max_curves; ++s)
        if (spectrum.curve_state[static_cast<std::size_t>(s)] != 0)
            curves.push_back(lay_out_curve(view, baseline_curve(s)));
    report_graph g;
    g.row_of = report_y_to_pixel;
    g.high = view.view_high;
    g.low = view.view_low;
    const auto& tracks = spectrum.tracks;
    report_draw_graph(page, view, axes, g, curves,
                      {{spectrum.peak_marks.data(), table_count(w.fgdPeak(), spectrum.peak_count), 9},
                       {spectrum.valley_marks.data(), table_count(w.fgdValley(), spectrum.valley_count), 13},
                       {tracks.track_marks.data(), table_count(w.fgdTrack(), tracks.track_count), 8}});

    const int order = spectrum.derivative_order;
    if (order >= 1) {
        static const char* const titles[] = {"1st Derivative", "2nd Derivative", "3rd Derivative",
                                             "4th Derivative"};
        report_graph d;
        d.top = 580;
        d.bottom = 720;
        d.row_of = PrtDerivateGetPixelY;
        d.high = spectrum.derivative_high;
        d.low = spectrum.derivative_low;
        d.title = QString::fromLatin1(titles[std::clamp(order, 1, 4) - 1]);
        axes_text daxes = axes;
        daxes.y_caption =
            spectrum_setup.percent_t() ? QStringLiteral("(%T/dLambda)") : QStringLiteral("(ABS/dLambda)");
        curve_data dc;
        dc.value_at = [](int nm) {
            const int p = nm - 320;
            return p >= 0 && p < wavelength_points ? spectrum.derivative_curve[static_cast<std::size_t>(p)]
                                                   : 0.0;
        };
        dc.color = curve_color(spectrum.active_curve + 1);
        report_draw_graph(page, view, daxes, d, {lay_out_curve(view, dc)});
        page.y = 780 * k;
    } else {
        page.y = 580 * k;
    }
}

void tables(function_window& window, report_page& page, bool all) {
    auto& w = static_cast<frmSpectrum&>(window);
    const auto& flags = spectrum_setup.print_flags;
    const auto& tracks = spectrum.tracks;
    const int order = spectrum.derivative_order;
    if (all || flags[3] == 1)
        table_section(page, QStringLiteral("Track data"), w.fgdTrack(), tracks.track_marks.data(),
                      tracks.track_count, order >= 1);
    if (all || flags[4] == 1)
        table_section(page, QStringLiteral("Peak data"), w.fgdPeak(), spectrum.peak_marks.data(),
                      spectrum.peak_count, false);
    if (all || flags[5] == 1)
        table_section(page, QStringLiteral("Valley data"), w.fgdValley(), spectrum.valley_marks.data(),
                      spectrum.valley_count, false);
    if (all || flags[6] == 1) {
        report_section(page, QStringLiteral("Read data"));
        report_columns cols(page, {0, 40, 120});
        const QStringList header{QStringLiteral("No."), QStringLiteral("Lambda"), QStringLiteral("Value")};
        cols.row(header);
        cols.row(header);
        const int column = spectrum.active_curve + 1;
        const int first = cint(spectrum_setup.start_lambda), last = cint(spectrum_setup.stop_lambda);
        int n = 0;
        for (int nm = first; nm <= last; ++nm)
            cols.row({QString::number(++n), QString::number(nm) + QStringLiteral("nm"),
                      format_text(curve_value(nm, column), value_format())});
        cols.close();
    }
}

void body(function_window& window, report_page& page) {
    const double k = page.k();
    page.set_font_size(12);
    page.head(50 * k, 200 * k, QStringLiteral("Graph"));
    if (spectrum_setup.print_flags[2] == 1) report_parameters(page, 430, parameter_lines());
    graph(window, page);
    tables(window, page, false);
}

void sheets(function_window& window, workbook& book) {
    auto& w = static_cast<frmSpectrum&>(window);
    copy_grid(w.fgdValley(), book.add_sheet(QStringLiteral("Valley data")), spectrum.valley_count);
    copy_grid(w.fgdPeak(), book.add_sheet(QStringLiteral("Peak data")), spectrum.peak_count);
    copy_grid(w.fgdTrack(), book.add_sheet(QStringLiteral("Track data")), spectrum.tracks.track_count);
    const int first = cint(spectrum_setup.start_lambda), last = cint(spectrum_setup.stop_lambda);
    int n = 0;
    for (int s = 1; s <= max_curves; ++s) {
        const int state = spectrum.curve_state[static_cast<std::size_t>(s)];
        if (state != 1 && state != 2) continue;
        auto& sheet = book.add_sheet(QStringLiteral("Read data") + QString::number(++n));
        sheet.rows.reserve(static_cast<std::size_t>(std::max(0, last - first + 1)));
        for (int nm = first; nm <= last; ++nm) {
            const int r = nm - first;
            sheet.set(r, 0, std::to_string(nm) + "nm");
            sheet.set(r, 1, format_number(curve_value(nm, s), value_format()));
        }
    }
}

} // namespace

report_piece spectrum_report() {
    report_piece p;
    p.function_id = fid_spectrum;
    p.flags = [] {
        return report_flags{spectrum_setup.print_flags[0] == 1, spectrum_setup.print_flags[1] == 1};
    };
    p.title = [](QString& lab, QString& subject, QString& op, QString& remark) {
        lab = spectrum_setup.report_laboratory;
        subject = spectrum_setup.report_subject;
        op = spectrum_setup.report_operator;
        remark = spectrum_setup.report_remark;
    };
    p.body = body;
    p.graph = graph;
    p.tables = [](function_window& w, report_page& page) { tables(w, page, true); };
    p.sheets = sheets;
    return p;
}

} // namespace lumora
