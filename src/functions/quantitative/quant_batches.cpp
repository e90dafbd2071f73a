// Quantitative's stored batches: the setup with its standards and coefficients, and in a result
// batch the sample count and each sample's ABS and Conc. A result batch keeps the standards as the
// table shows them ("0.000"); a parameter batch keeps them whole.
#include "frmQuant.h"
#include "link/shared_state.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "quant_setup.h"

#include <QTabBar>

namespace lumora {
namespace {

row_writer setup_rows(bool result) {
    const QuantSetup& q = quant;
    const calibration_set& s = q.cal;
    const int n = std::clamp<int>(s.std_count, 0, max_standards);
    row_writer w;
    w.add(q.lambda);
    w.add(q.low_abs);
    w.add(q.high_abs);
    w.add(q.unit);
    w.add(n);
    w.add(s.fit_type);
    w.add(q.std_type);
    for (const auto* values : {&s.std_conc, &s.std_abs})
        for (int i = 0; i < n; ++i) {
            const double v = (*values)[static_cast<std::size_t>(i)];
            if (result)
                w.add(format_text(v, "0.000"));
            else
                w.add(v);
        }
    w.add(s.fit_ka);
    w.add(s.fit_kb);
    w.add(s.fit_kc);
    for (const QString& text : {q.report_laboratory, q.report_subject, q.report_operator, q.report_remark})
        w.add(text);
    for (int flag : q.print_flags)
        w.add(flag);
    return w;
}

void read_setup(row_cursor& r) {
    QuantSetup& q = quant;
    calibration_set& s = q.cal;
    q.lambda = r.text();
    q.low_abs = r.number();
    q.high_abs = r.number();
    q.unit = r.text();
    const int n = std::clamp(r.integer(), 1, max_standards);
    s.std_count = static_cast<std::int16_t>(n);
    s.fit_type = static_cast<std::int16_t>(std::clamp(r.integer(), 1, 4));
    q.std_type = static_cast<std::int16_t>(std::clamp(r.integer(), 0, 2));
    for (auto* values : {&s.std_conc, &s.std_abs})
        for (int i = 0; i < n; ++i)
            (*values)[static_cast<std::size_t>(i)] = r.number();
    s.fit_ka = r.number();
    s.fit_kb = r.number();
    s.fit_kc = r.number();
    for (QString* text : {&q.report_laboratory, &q.report_subject, &q.report_operator, &q.report_remark})
        *text = r.text();
    for (auto& flag : q.print_flags)
        flag = static_cast<std::int16_t>(r.integer());
    q.cal.abs_max = q.high_abs;
}

} // namespace

bool frmQuant::batch_data() const {
    return !tables_[1]->TextMatrix(1, 1).isEmpty();
}

std::vector<batch_row> frmQuant::result_rows() const {
    row_writer w = setup_rows(true);
    const int count = std::clamp<int>(quant.sample_count, 0, max_samples);
    w.add(count);
    w.restart(QStringLiteral("D"));
    for (int i = 1; i <= count; ++i) {
        w.add(quant.sample_abs[static_cast<std::size_t>(i)]);
        w.add(quant.sample_conc[static_cast<std::size_t>(i)]);
    }
    return w.rows;
}

std::vector<batch_row> frmQuant::parameter_rows() const {
    return setup_rows(false).rows;
}

void frmQuant::load_result(const std::vector<batch_row>& rows) {
    row_cursor p(rows, QStringLiteral("P"));
    read_setup(p);
    quant.loading = true;
    tabs_->setCurrentIndex(1);
    clear_form();
    // A batch cut short holds no more samples than it has rows for.
    row_cursor d(rows, QStringLiteral("D"));
    const int count =
        std::clamp(p.integer(), 0, std::min<int>(max_samples, static_cast<int>(d.remaining() / 2)));
    quant.sample_count = static_cast<std::int16_t>(count);
    for (int i = 1; i <= count; ++i) {
        const auto k = static_cast<std::size_t>(i);
        quant.sample_abs[k] = d.number();
        quant.sample_conc[k] = d.number();
        quant.sample_valid[k] = true;
    }
    load_old_data();
    quant.loading = false;
    // The toolbar of a window holding samples, as after a reading.
    if (main_hooks.toolbar_enable_for) main_hooks.toolbar_enable_for(fid_quantitative);
    prompts::message_box(QStringLiteral("Please press RUN to read samples!"), box_icon::information,
                         QStringLiteral("Information"));
    tabs_->setCurrentIndex(1);
}

void frmQuant::read_parameters(const std::vector<batch_row>& rows) {
    row_cursor p(rows, QStringLiteral("P"));
    read_setup(p);
}

void frmQuant::parameters_loaded() {
    clear_form();
    tell_next_step();
}

} // namespace lumora
