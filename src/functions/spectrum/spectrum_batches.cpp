// Spectrum's stored batches: the 21 setup rows, then the curves in use, each row's position being
// its wavelength in nm and its curve number counting the stored curves from 1.
#include "frmSpectrum.h"
#include "link/shared_state.h"
#include "platform/numeric_text.h"
#include "plot/zoom.h"
#include "spectrum_data.h"
#include "spectrum_setup.h"

#include <map>

namespace lumora {
namespace {

std::vector<batch_row> setup_rows() {
    const SpectrumSetup& s = spectrum_setup;
    row_writer w;
    w.add(s.start_lambda);
    w.add(s.stop_lambda);
    w.add(s.spectrum_mode);
    w.add(s.low_value);
    w.add(s.high_value);
    w.add(s.scan_speed);
    for (int flag : {s.auto_zoom, s.auto_peak, s.auto_valley, s.overlay_screen})
        w.add(flag);
    for (const QString& text : {s.report_laboratory, s.report_subject, s.report_operator, s.report_remark})
        w.add(text);
    for (int flag : s.print_flags)
        w.add(flag);
    return w.rows;
}

void read_setup(row_cursor& r) {
    SpectrumSetup& s = spectrum_setup;
    s.start_lambda = r.number();
    s.stop_lambda = r.number();
    s.spectrum_mode = static_cast<std::int16_t>(r.integer());
    s.low_value = r.number();
    s.high_value = r.number();
    s.scan_speed = static_cast<std::int16_t>(r.integer());
    for (std::int16_t* flag : {&s.auto_zoom, &s.auto_peak, &s.auto_valley, &s.overlay_screen})
        *flag = static_cast<std::int16_t>(r.integer());
    for (QString* text : {&s.report_laboratory, &s.report_subject, &s.report_operator, &s.report_remark})
        *text = r.text();
    for (auto& flag : s.print_flags)
        flag = static_cast<std::int16_t>(r.integer());
}

} // namespace

std::vector<batch_row> frmSpectrum::result_rows() const {
    std::vector<batch_row> rows = setup_rows();
    row_writer w(QStringLiteral("D"));
    const int first = cint(spectrum_setup.start_lambda), last = cint(spectrum_setup.stop_lambda);
    int set = 0;
    for (int column = 1; column <= spectrum.curve_count && column <= max_curves; ++column) {
        const int state = spectrum.curve_state[static_cast<std::size_t>(column)];
        if (state != 1 && state != 2) continue;
        ++set;
        for (int nm = first; nm <= last; ++nm) {
            const int p = nm - first_index_nm;
            if (p < 0 || p >= wavelength_points) continue;
            w.add_at(
                nm,
                stored_text(
                    shared.baseline_curves[static_cast<std::size_t>(p)][static_cast<std::size_t>(column)]),
                set);
        }
    }
    rows.insert(rows.end(), w.rows.begin(), w.rows.end());
    return rows;
}

std::vector<batch_row> frmSpectrum::parameter_rows() const {
    return setup_rows();
}

void frmSpectrum::load_result(const std::vector<batch_row>& rows) {
    row_cursor p(rows, QStringLiteral("P"));
    read_setup(p);
    clear_form();
    // Curve numbers in their stored order; gaps between them close up.
    std::map<int, int> column_of;
    for (const batch_row& r : rows) {
        if (r.type != QLatin1String("D")) continue;
        auto [it, added] = column_of.try_emplace(r.set, static_cast<int>(column_of.size()) + 1);
        const int column = it->second;
        const int point = r.seq - first_index_nm;
        if (column > max_curves || point < 0 || point >= wavelength_points) continue;
        shared.baseline_curves[static_cast<std::size_t>(point)][static_cast<std::size_t>(column)] =
            val(r.value.toStdString());
    }
    const int count = std::min(static_cast<int>(column_of.size()), max_curves);
    spectrum.curve_count = static_cast<std::int16_t>(count);
    for (int column = 1; column <= count; ++column) {
        spectrum.curve_state[static_cast<std::size_t>(column)] = column == count ? 2 : 1;
        save_org_data(column);
    }
    if (count == 0) return;
    spectrum.active_curve = static_cast<std::int16_t>(count - 1);
    zoom_data();
    if (spectrum_setup.auto_zoom == 1) {
        zoom_auto(spectrum.view, spectrum_setup.percent_t());
        zoom_data();
    }
    if (spectrum_setup.auto_peak == 1) search_peak();
    if (spectrum_setup.auto_valley == 1) search_valley();
    set_track(true);
    describe_plot();
    if (main_hooks.toolbar_enable_for) main_hooks.toolbar_enable_for(fid_spectrum);
}

void frmSpectrum::read_parameters(const std::vector<batch_row>& rows) {
    row_cursor p(rows, QStringLiteral("P"));
    read_setup(p);
}

void frmSpectrum::parameters_loaded() {
    clear_form();
}

} // namespace lumora
