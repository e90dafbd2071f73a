// The fixed-span Timescan's stored batches: 16 setup rows, then each curve in use as 281 samples,
// its positions from 1 and its curve number counting the stored curves from 1. The last two print
// flags are no part of the layout and keep their values on a load.
#include "frmTimescan.h"
#include "platform/numeric_text.h"
#include "timescan_data.h"
#include "timescan_setup.h"

#include <map>

namespace lumora {
namespace {

std::vector<batch_row> setup_rows() {
    const TimescanSetup& s = timescan_setup;
    row_writer w;
    w.add(s.ts_wavelength);
    w.add(s.ts_span);
    w.add(s.ts_delay);
    w.add(s.ts_mode);
    w.add(s.ts_low);
    w.add(s.ts_high);
    w.add(s.ts_auto_zoom);
    w.add(s.ts_overlay);
    for (const QString& text : s.ts_report_text)
        w.add(text);
    for (int i = 0; i < 4; ++i)
        w.add(s.ts_print_flag[static_cast<std::size_t>(i)]);
    return w.rows;
}

void read_setup(row_cursor& r) {
    TimescanSetup& s = timescan_setup;
    s.ts_wavelength = r.text();
    s.ts_span = r.number();
    s.ts_delay = r.number();
    s.ts_mode = static_cast<std::int16_t>(r.integer());
    s.ts_low = r.number();
    s.ts_high = r.number();
    s.ts_auto_zoom = static_cast<std::int16_t>(r.integer());
    s.ts_overlay = static_cast<std::int16_t>(r.integer());
    for (QString& text : s.ts_report_text)
        text = r.text();
    for (int i = 0; i < 4; ++i)
        s.ts_print_flag[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(r.integer());
}

} // namespace

std::vector<batch_row> frmTimescan::result_rows() const {
    std::vector<batch_row> rows = setup_rows();
    row_writer w(QStringLiteral("D"));
    int set = 0;
    for (int column = 1; column <= timescan.ts_curve_count && column <= ts_max_curves; ++column) {
        const int state = timescan.ts_curve_state[static_cast<std::size_t>(column)];
        if (state != 1 && state != 2) continue;
        ++set;
        for (int k = 0; k < ts_samples; ++k)
            w.add_at(k + 1,
                     stored_text(
                         timescan.ts_curves[static_cast<std::size_t>(k)][static_cast<std::size_t>(column)]),
                     set);
    }
    rows.insert(rows.end(), w.rows.begin(), w.rows.end());
    return rows;
}

std::vector<batch_row> frmTimescan::parameter_rows() const {
    return setup_rows();
}

void frmTimescan::load_result(const std::vector<batch_row>& rows) {
    row_cursor p(rows, QStringLiteral("P"));
    read_setup(p);
    clear_form();
    std::map<int, int> column_of; // stored curve number to column, gaps closed
    for (const batch_row& r : rows) {
        if (r.type != QLatin1String("D")) continue;
        auto [it, added] = column_of.try_emplace(r.set, static_cast<int>(column_of.size()) + 1);
        const int column = it->second, k = r.seq - 1;
        if (column > ts_max_curves || k < 0 || k >= ts_samples) continue;
        const double value = val(r.value.toStdString());
        timescan.ts_curves[static_cast<std::size_t>(k)][static_cast<std::size_t>(column)] = value;
        load_org_data_ts(column, k, value);
    }
    const int count = std::min(static_cast<int>(column_of.size()), ts_max_curves);
    timescan.ts_curve_count = static_cast<std::int16_t>(count);
    for (int column = 1; column <= count; ++column)
        timescan.ts_curve_state[static_cast<std::size_t>(column)] = column == count ? 2 : 1;
    if (count == 0) return;
    timescan.ts_selected_curve = static_cast<std::int16_t>(count - 1);
    zoom_data();
    stop_ok(); // the window as a run leaves it
}

void frmTimescan::read_parameters(const std::vector<batch_row>& rows) {
    row_cursor p(rows, QStringLiteral("P"));
    read_setup(p);
}

void frmTimescan::parameters_loaded() {
    clear_form();
}

} // namespace lumora
