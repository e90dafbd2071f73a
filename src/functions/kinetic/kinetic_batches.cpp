// Kinetic's stored batches: 20 setup rows, the 281 samples of the last run as "D" rows, and the
// output table as "V" rows, its four cells of each row as the table shows them. A load redraws the
// curve with its crosses and fit line and rebuilds the output rows from those cells.
#include "frmKinetic.h"
#include "kinetic_data.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"

#include <algorithm>

namespace lumora {
namespace {

row_writer setup_rows() {
    const KineticSetup& s = kinetic_setup;
    row_writer w;
    w.add(s.kn_wavelength);
    w.add(int{s.kn_sampling_number});
    w.add(int{s.kn_lag});
    w.add(int{s.kn_rate});
    w.add(int{s.kn_delay});
    w.add(s.kn_low);
    w.add(s.kn_high);
    w.add(s.kn_factor);
    w.add(s.kn_unit);
    w.add(int{s.kn_auto_zoom});
    for (const QString& text : s.kn_report_text)
        w.add(text);
    for (std::int16_t flag : s.kn_print_flag)
        w.add(int{flag});
    return w;
}

std::int16_t bounded(int value, int low, int high) {
    return static_cast<std::int16_t>(std::clamp(value, low, high));
}

// Out-of-range values from a damaged batch fall back into the ranges the setup dialog allows.
void read_setup(row_cursor& r) {
    KineticSetup& s = kinetic_setup;
    s.kn_wavelength = r.text();
    s.kn_sampling_number = bounded(r.integer(), 2, 99);
    s.kn_lag = bounded(r.integer(), 2, 9999);
    s.kn_rate = bounded(r.integer(), 15, 9999);
    s.kn_delay = bounded(r.integer(), 0, 50);
    s.kn_low = r.number();
    s.kn_high = r.number();
    s.kn_factor = r.number();
    s.kn_unit = r.text();
    s.kn_auto_zoom = bounded(r.integer(), 0, 1);
    for (QString& text : s.kn_report_text)
        text = r.text();
    for (auto& flag : s.kn_print_flag)
        flag = bounded(r.integer(), 0, 1);
    s.derive();
}

} // namespace

bool frmKinetic::batch_data() const {
    return kinetic.kn_run_count != 0;
}

std::vector<batch_row> frmKinetic::result_rows() const {
    row_writer w = setup_rows();
    w.restart(QStringLiteral("D"));
    for (double v : kinetic.kn_samples)
        w.add(v);
    w.restart(QStringLiteral("V"));
    const grid& g = *tables_[2];
    for (int row = 1; row < g.Rows(); ++row)
        for (int column = 1; column <= 4; ++column)
            w.add(g.TextMatrix(row, column));
    return w.rows;
}

std::vector<batch_row> frmKinetic::parameter_rows() const {
    return setup_rows().rows;
}

void frmKinetic::load_result(const std::vector<batch_row>& rows) {
    row_cursor p(rows, QStringLiteral("P"));
    read_setup(p);
    clear_form();
    row_cursor d(rows, QStringLiteral("D"));
    const bool has_curve = !d.at_end();
    for (double& v : kinetic.kn_samples)
        v = d.at_end() ? 0.0 : d.number();
    row_cursor v(rows, QStringLiteral("V"));
    while (v.remaining() >= 4) {
        kn_output o;
        o.lambda = val(v.text().toStdString());
        o.abs0 = static_cast<float>(val(v.text().toStdString()));
        o.dabs_dt = static_cast<float>(val(v.text().toStdString()));
        o.dc_dt = static_cast<float>(val(v.text().toStdString()));
        kinetic.outputs.push_back(o);
    }
    kinetic.kn_run_count =
        std::max<std::int32_t>(static_cast<std::int32_t>(kinetic.outputs.size()), has_curve ? 1 : 0);
    for (grid* g : tables_)
        g->Clear();
    init_data_area();
    write_outputs();
    if (!has_curve) return;
    init();
    if (kinetic_setup.kn_auto_zoom == 1) zoom_auto();
    zoom_data();
    set_track(true);
}

void frmKinetic::read_parameters(const std::vector<batch_row>& rows) {
    row_cursor p(rows, QStringLiteral("P"));
    read_setup(p);
}

void frmKinetic::parameters_loaded() {
    clear_form();
}

} // namespace lumora
