// Photometry's stored batches: the setup rows, then the readings as the grid shows them, one row
// each, in reading order. The positions run on from the setup into the readings.
#include "frmPhotometry.h"
#include "photometry_rules.h"
#include "photometry_setup.h"
#include "platform/grid.h"

namespace lumora {
namespace {

row_writer setup_rows() {
    const PhotometrySetup& s = photometry_setup;
    row_writer w;
    const int n = std::clamp<int>(s.ph_lambda_count, 1, ph_max_lambdas);
    w.add(n);
    for (int k = 0; k < n; ++k)
        w.add(s.ph_lambda[static_cast<std::size_t>(k)]);
    w.add(s.ph_mode);
    w.add(s.ph_unit);
    w.add(static_cast<double>(s.ph_factor));
    w.add(s.ph_cycle_number);
    w.add(s.ph_cycle_interval);
    for (const QString& text : s.ph_report_text)
        w.add(text);
    for (int flag : s.ph_print_flag)
        w.add(flag);
    w.add(s.ph_advanced);
    for (int pick : s.ph_wl_pick)
        w.add(pick);
    for (int sign : s.ph_sign)
        w.add(sign);
    w.add(s.ph_k1);
    w.add(s.ph_k2);
    return w;
}

std::int16_t small(row_cursor& r) {
    return static_cast<std::int16_t>(r.integer());
}

void read_setup(row_cursor& r) {
    PhotometrySetup& s = photometry_setup;
    s.ph_lambda_count = static_cast<std::int16_t>(std::clamp(r.integer(), 1, ph_max_lambdas));
    for (int k = 0; k < s.ph_lambda_count; ++k)
        s.ph_lambda[static_cast<std::size_t>(k)] = r.number();
    s.ph_mode = small(r);
    s.ph_unit = r.text();
    s.ph_factor = static_cast<float>(r.number());
    s.ph_cycle_number = small(r);
    s.ph_cycle_interval = small(r);
    for (QString& text : s.ph_report_text)
        text = r.text();
    for (auto& flag : s.ph_print_flag)
        flag = small(r);
    s.ph_advanced = small(r);
    for (auto& pick : s.ph_wl_pick)
        pick = small(r);
    for (auto& sign : s.ph_sign)
        sign = small(r);
    s.ph_k1 = r.number();
    s.ph_k2 = r.number();
}

} // namespace

std::vector<batch_row> frmPhotometry::result_rows() const {
    row_writer w = setup_rows();
    w.go_on_as(QStringLiteral("D"));
    const int n = std::clamp<int>(photometry_setup.ph_lambda_count, 1, ph_max_lambdas);
    for (int i = 0; i < photometry_run.ph_data_count; ++i) {
        const ph_cell at = ph_cell_of(i, n);
        w.add(grid_->TextMatrix(at.row, at.col));
    }
    return w.rows;
}

std::vector<batch_row> frmPhotometry::parameter_rows() const {
    return setup_rows().rows;
}

void frmPhotometry::load_result(const std::vector<batch_row>& rows) {
    row_cursor p(rows, QStringLiteral("P"));
    read_setup(p);
    clear_form();
    const PhotometrySetup& s = photometry_setup;
    PhotometryRun& r = photometry_run;
    const int n = s.ph_lambda_count;
    row_cursor d(rows, QStringLiteral("D"));
    const int count = static_cast<int>(std::min<std::size_t>(d.remaining(), ph_max_readings));
    grid& g = *grid_;
    g.setRows((count / 20 / n + 1) * 20);
    for (int i = 0; i < count; ++i) {
        const ph_cell at = ph_cell_of(i, n);
        if (at.row >= g.Rows()) g.setRows(at.row + 1);
        set_number(at.row, at.col, d.text());
        r.ph_marks[static_cast<std::size_t>(i)] = {1, 0};
    }
    r.ph_data_count = static_cast<std::int16_t>(count);
    for (int row = 1; (row - 1) * n < count; ++row) {
        g.setTextMatrix(row, 0, ph_row_label(row, true, false));
        // The equation's value of a whole row, as the run gave it.
        if (s.ph_advanced == 1 && row * n <= count) {
            const double value_r = ph_equation(s, [&g, row](int col) { return g.TextMatrix(row, col); });
            const double c = ph_term_value(g.TextMatrix(row, n)); // the row's last reading
            set_number(row, n + 1, ph_r_text(s.ph_mode, value_r, c));
        }
    }
}

void frmPhotometry::read_parameters(const std::vector<batch_row>& rows) {
    row_cursor p(rows, QStringLiteral("P"));
    read_setup(p);
}

void frmPhotometry::parameters_loaded() {
    clear_form();
}

} // namespace lumora
