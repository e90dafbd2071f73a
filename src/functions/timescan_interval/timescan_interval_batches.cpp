// The fixed-interval Timescan's stored batches: 16 setup rows (17 in a parameter batch, whose
// third row is the stop time), then the value of each sample as its grid row shows it.
#include "frmTimescan2.h"
#include "functions/timescan/timescan_setup.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "timescan_interval_data.h"

#include <QSignalBlocker>

namespace lumora {
namespace {

std::vector<batch_row> setup_rows(bool with_stop_time) {
    const TimescanIntervalSetup& s = timescan_interval_setup;
    row_writer w;
    w.add(s.ti_wavelength);
    w.add(s.ti_interval);
    if (with_stop_time) w.add(s.ti_stop_time);
    w.add(s.ti_delay);
    w.add(s.ti_mode);
    w.add(s.ti_low);
    w.add(s.ti_high);
    w.add(s.ti_auto_zoom);
    w.add(s.ti_overlay);
    for (const QString& text : s.ti_report_text)
        w.add(text);
    for (int i = 0; i < 4; ++i)
        w.add(s.ti_print_flag[static_cast<std::size_t>(i)]);
    return w.rows;
}

void read_setup(row_cursor& r, bool with_stop_time) {
    TimescanIntervalSetup& s = timescan_interval_setup;
    s.ti_wavelength = r.text();
    s.ti_interval = r.number();
    if (with_stop_time) s.ti_stop_time = r.number();
    s.ti_delay = r.number();
    s.ti_mode = static_cast<std::int16_t>(r.integer());
    s.ti_low = r.number();
    s.ti_high = r.number();
    s.ti_auto_zoom = static_cast<std::int16_t>(r.integer());
    s.ti_overlay = static_cast<std::int16_t>(r.integer());
    for (QString& text : s.ti_report_text)
        text = r.text();
    for (int i = 0; i < 4; ++i)
        s.ti_print_flag[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(r.integer());
}

} // namespace

std::vector<batch_row> frmTimescan2::result_rows() const {
    std::vector<batch_row> rows = setup_rows(false);
    row_writer w(QStringLiteral("D"));
    for (int row = 1; row < table_->Rows(); ++row)
        w.add(table_->TextMatrix(row, 2));
    rows.insert(rows.end(), w.rows.begin(), w.rows.end());
    return rows;
}

std::vector<batch_row> frmTimescan2::parameter_rows() const {
    return setup_rows(true);
}

void frmTimescan2::load_result(const std::vector<batch_row>& rows) {
    row_cursor p(rows, QStringLiteral("P"));
    read_setup(p, false);
    clear_form();
    row_cursor d(rows, QStringLiteral("D"));
    // A sample's index is 16 bits wide, as in a run.
    const int samples = static_cast<int>(std::min<std::size_t>(d.remaining(), INT16_MAX));
    const double interval = timescan_interval_setup.ti_interval;
    table_->setRows(samples + 1);
    {
        // Cells of rows the view already has: it reads them when it paints, so the per-cell change
        // notices of a long run are left out and the view is repainted once.
        const QSignalBlocker quiet(table_->model());
        for (int k = 0; k < samples; ++k) {
            // Each row as a measured run writes it: index, time, value.
            table_->setTextMatrix(k + 1, 0, QString::number(k));
            table_->setTextMatrix(k + 1, 1, format_text(k * interval, "###0.0"));
            table_->setTextMatrix(k + 1, 2, d.text());
        }
    }
    table_->viewport()->update();
    if (samples == 0) return;
    timescan_interval_data& t = timescan_interval;
    t.ti_curve_count = 1;
    t.ti_curve_state[1] = 2;
    t.ti_page_count = static_cast<std::int16_t>((samples - 1) / page_steps);
    page_shown_ = t.ti_page_count;
    if (timescan_interval_setup.ti_auto_zoom == 1) zoom_auto();
    zoom_data();
    stop_now(); // the window as a run leaves it
}

void frmTimescan2::read_parameters(const std::vector<batch_row>& rows) {
    row_cursor p(rows, QStringLiteral("P"));
    read_setup(p, true);
}

void frmTimescan2::parameters_loaded() {
    clear_form();
}

} // namespace lumora
