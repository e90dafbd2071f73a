#include "frmQuant.h"

#include "dlgQuant.h"
#include "functions/dialog_parts.h"
#include "functions/stats_panel.h"
#include "link/command_ring.h"
#include "link/link_context.h"
#include "link/photometric.h"
#include "link/protocol.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "plot/calibration_plot.h"
#include "plot/plot_surface.h"
#include "quant_setup.h"

#include <QHBoxLayout>
#include <QScrollArea>
#include <QTabBar>
#include <QVBoxLayout>
#include <algorithm>

namespace lumora {
namespace {

// The weighting chosen on the statistics tab, kept for the session while the window comes and
// goes; the stored batches keep their layout and do not carry it.
stats_weighting session_weighting = stats_weighting::none;

double number(const QString& text) {
    return val(text.toStdString());
}

QString row_label(int row, bool valid) {
    return QString::number(row) + (valid ? QStringLiteral("  V") : QStringLiteral("  X"));
}

int standard_count() {
    return std::clamp<int>(quant.cal.std_count, 1, max_standards);
}

} // namespace

frmQuant::frmQuant(const function_entry& entry, QWidget* parent) : function_window(entry, parent) {
    surface_ = new plot_surface(QSize(400, 420));
    surface_->setObjectName(QStringLiteral("picQuant"));
    scroll_ = new QScrollArea(this);
    scroll_->setObjectName(QStringLiteral("picScroll"));
    scroll_->setWidget(surface_);
    scroll_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    scroll_->setMinimumWidth(240);
    tabs_ = new QTabBar(this);
    tabs_->setObjectName(QStringLiteral("tspData"));
    auto* right = new QVBoxLayout;
    right->addWidget(tabs_);
    stats_ = add_calibration_tables(this, tabs_, right, tables_, frames_, session_weighting,
                                    [this] { update_statistics(); });
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(scroll_, 3);
    layout->addLayout(right, 2);
    connect(tabs_, &QTabBar::currentChanged, this, &frmQuant::show_table);
    connect(tables_[1], &QTableWidget::cellClicked, this, [this](int row, int) { fgdSample_Click(row); });

    link_ctx.hooks.set_reading(
        mm_quantitative, [this](std::int32_t mean) { show_data(mean); },
        [this](std::int32_t value) { show_zero(value); }, [] { return quant.zero_done; });

    // Form load
    set_form_visible(true);
    init_data_area();
    clear_form();
}

frmQuant::~frmQuant() {
    link_ctx.hooks.clear_reading(mm_quantitative);
}

void frmQuant::set_form_visible(bool visible) {
    function_window::set_form_visible(visible);
    tabs_->setVisible(visible);
    show_table(visible ? tabs_->currentIndex() : -1);
}

void frmQuant::show_table(int index) {
    show_only_frame(frames_, index);
}

void frmQuant::init_data_area() {
    for (grid* g : tables_) {
        g->setRows(1);
        g->setCols(3);
        for (int c = 0; c < 3; ++c)
            g->setColWidth(c, 100);
    }
    tables_[0]->setTextMatrix(0, 0, QStringLiteral("No."));
    sample_headers();
}

void frmQuant::sample_headers() {
    grid& s = fgdSample();
    s.Clear();
    s.setRows(1);
    s.setTextMatrix(0, 0, QStringLiteral("No."));
    s.setTextMatrix(0, 1, QStringLiteral("ABS"));
    s.setTextMatrix(0, 2, QStringLiteral("Conc."));
    sample_stats_headers(s, 3);
}

calibration_stats frmQuant::statistics() const {
    const calibration_set& c = quant.cal;
    const stats_weighting w = stats_->chosen();
    if (quant.std_type == 2 || quant.reading_std) {
        calibration_stats none = calibration_statistics(c.fit_type, w, {}, {});
        none.why =
            quant.std_type == 2 ? "the calibration is a known factor" : "the standards are not all read";
        return none;
    }
    const auto n = static_cast<std::size_t>(standard_count());
    return calibration_statistics(c.fit_type, w, std::span(c.std_conc.data(), n),
                                  std::span(c.std_abs.data(), n));
}

sample_prediction frmQuant::prediction(const calibration_stats& s, int row) const {
    if (row < 1 || row > std::min<int>(quant.sample_count, max_samples)) return {};
    const auto i = static_cast<std::size_t>(row);
    // From the reading as shown, as the Conc. column has it.
    return predict_sample(s, number(format_text(quant.sample_abs[i], "0.000")), 1, quant.sample_conc[i]);
}

std::vector<labelled_prediction> frmQuant::sample_predictions(const calibration_stats& s) const {
    std::vector<labelled_prediction> out;
    for (int r = 1; r <= std::clamp<int>(quant.sample_count, 0, max_samples); ++r)
        out.push_back({QString::number(r), prediction(s, r)});
    return out;
}

void frmQuant::update_statistics() {
    const calibration_stats s = statistics();
    stats_->show_stats(s, quant.unit);
    grid& g = fgdSample();
    const int count = std::min<int>({quant.sample_count, max_samples, g.Rows() - 1});
    for (int r = 1; r <= count; ++r)
        show_sample_prediction(g, r, 3, prediction(s, r));
}

void frmQuant::draw_frame() {
    draw_calibration_frame(*surface_, quant.cal, quant.unit);
    describe_plot();
}

void frmQuant::describe_plot() {
    const calibration_set& s = quant.cal;
    surface_->setAccessibleName(QStringLiteral("Quantitative plot"));
    surface_->setAccessibleDescription(
        QStringLiteral("Conc. %1 to %2, %3 to %4 ABS. %5, Ka %6, Kb %7, Kc %8, R squared %9.")
            .arg(format_text(s.conc_min, "#0.000"), format_text(s.conc_max, "#0.000"),
                 format_text(s.abs_min, "#0.000"), format_text(s.abs_max, "#0.000"),
                 QString::fromLatin1(fit_equation_setup(s.fit_type)), format_text(s.fit_ka, "0.0000"),
                 format_text(s.fit_kb, "0.0000"), format_text(s.fit_kc, "0.0000"),
                 format_text(s.fit_r2, "0.0000")));
}

bool frmQuant::fit(int fit_type) {
    if (calcu_fit(quant.cal, fit_type)) return true;
    prompts::message_box(QStringLiteral("Invalid input!"), box_icon::critical, QStringLiteral("Warning"));
    return false;
}

void frmQuant::draw_calibration(bool from_table) {
    calibration_set& s = quant.cal;
    if (from_table) {
        // The table is the store: the limits come from the cells as they are shown.
        const int n = standard_count();
        std::array<double, max_standards> conc{}, abs{};
        for (int r = 1; r <= n; ++r) {
            conc[static_cast<std::size_t>(r - 1)] = number(fgdData().TextMatrix(r, 1));
            abs[static_cast<std::size_t>(r - 1)] = number(fgdData().TextMatrix(r, 2));
        }
        calcu_conc_limite(s, std::span(conc.data(), static_cast<std::size_t>(n)),
                          std::span(abs.data(), static_cast<std::size_t>(n)));
    } else {
        s.abs_min = quant.low_abs;
        s.abs_max = quant.high_abs;
        calcu_conc_limite_factor(s);
    }
    plot_surface::batch batch(*surface_);
    draw_calibration_frame(*surface_, s, quant.unit);
    const bool crosses = setup_ ? setup_->standard_type() != 2 : quant.std_type != 2;
    if (s.fit_type == 3 || s.fit_type == 4)
        draw_2op(*surface_, s, standard_count(), crosses);
    else
        draw_1op(*surface_, s, standard_count(), crosses);
    show_equation(*surface_, s);
    describe_plot();
}

void frmQuant::clear_form() {
    QuantSetup& q = quant;
    calibration_set& s = q.cal;
    const int n = standard_count();
    q.std_read = 0;
    q.sample_count = 0;
    grid& data = fgdData();
    data.Clear();
    data.setRows(n + 1);
    data.Clear();
    sample_headers();
    data.setTextMatrix(0, 0, QStringLiteral("No."));
    for (int r = 1; r <= n; ++r)
        data.setTextMatrix(r, 0, row_label(r, true));
    // The standards as the dialog holds them while it is open, else as they were taken over.
    const grid* standards = setup_ ? &setup_->fgdStandard() : nullptr;
    const int fit_type = setup_ ? setup_->fit_type() : s.fit_type;
    const auto standard_cell = [standards](int r, int c, double stored) {
        return standards ? number(standards->TextMatrix(r, c)) : stored;
    };
    switch (q.std_type) {
    case 2: {
        data.Clear();
        data.setRows(1);
        q.std_read = 0;
        q.reading_std = false;
        s.fit_r2 = 1.0;
        s.fit_ka = standard_cell(1, 1, s.fit_ka);
        s.fit_kb = fit_type >= 2 ? standard_cell(1, 2, s.fit_kb) : 0;
        s.fit_kc = fit_type == 4 ? standard_cell(1, 3, s.fit_kc) : 0;
        draw_calibration(false);
        break;
    }
    case 1: {
        data.setTextMatrix(0, 1, QStringLiteral("Conc."));
        data.setTextMatrix(0, 2, QStringLiteral("ABS"));
        q.reading_std = false;
        for (int r = 1; r <= n; ++r) {
            const auto i = static_cast<std::size_t>(r - 1);
            s.std_conc[i] = standard_cell(r, 1, s.std_conc[i]);
            s.std_abs[i] = standard_cell(r, 2, s.std_abs[i]);
            data.setTextMatrix(r, 1, format_text(s.std_conc[i], "0.000"));
            data.setTextMatrix(r, 2, format_text(s.std_abs[i], "0.000"));
        }
        // A failed fit leaves the calibration in force, and its picture with it.
        if (fit(fit_type)) draw_calibration(true);
        break;
    }
    default: {
        data.setTextMatrix(0, 1, QStringLiteral("Conc."));
        data.setTextMatrix(0, 2, QStringLiteral("ABS"));
        q.reading_std = true;
        double largest = 0;
        for (int r = 1; r <= n; ++r) {
            const auto i = static_cast<std::size_t>(r - 1);
            s.std_conc[i] = standard_cell(r, 1, s.std_conc[i]);
            data.setTextMatrix(r, 1, format_text(s.std_conc[i], "0.000"));
            if (r == 1 || s.std_conc[i] > largest) largest = s.std_conc[i];
        }
        s.conc_max = largest;
        s.conc_min = 0;
        draw_frame();
        break;
    }
    }
    update_statistics();
    if (main_hooks.toolbar_enable_function) main_hooks.toolbar_enable_function();
}

void frmQuant::tell_next_step() {
    const bool standards = quant.std_type == 0;
    prompts::message_box(standards ? QStringLiteral("Please press RUN to read standards!")
                                   : QStringLiteral("Please press RUN to read samples!"),
                         box_icon::information, QStringLiteral("Information"));
    tabs_->setCurrentIndex(standards ? 0 : 1);
}

QDialog* frmQuant::make_setup_dialog(QWidget* parent) {
    auto* dlg = new dlgQuant(parent);
    dlg->setAttribute(Qt::WA_DeleteOnClose);
    setup_ = dlg;
    connect(dlg, &dlgQuant::setup_taken, this, &frmQuant::clear_form);
    connect(dlg, &dlgQuant::clear_requested, this, &frmQuant::clear_form);
    connect(dlg, &dlgQuant::setup_done, this, [this] {
        if (!quant.loading) tell_next_step();
        quant.loading = false;
    });
    return dlg;
}

void frmQuant::run(toolbar_routine routine) {
    function_window::run(routine);
    switch (routine) {
    case toolbar_routine::zero:
        zero();
        break;
    case toolbar_routine::read_standard_or_sample:
        if (quant.reading_std)
            read_standard();
        else
            read_sample();
        break;
    default:
        break;
    }
}

bool frmQuant::batch_check() {
    if (quant.sample_count < max_samples) return true;
    const box_answer a =
        prompts::message_box(QStringLiteral("Data number >100, restart from 1 ?"), box_icon::exclamation,
                             QStringLiteral("Warning"), box_buttons::ok_cancel);
    if (a != box_answer::ok) return false;
    quant.sample_count = 0;
    sample_headers();
    return true;
}

bool frmQuant::has_data() const {
    return quant.sample_count > 0 || quant.std_read > 0 || quant.std_type != 0;
}

void frmQuant::zero() {
    quant.zero_done = false;
    shared.link_ready = false;
    set_target_lambda(number(quant.lambda));
    if (begin_exchange()) send_message(cmd_read_lambda);
}

void frmQuant::read_standard() {
    shared.link_ready = false;
    if (main_hooks.toolbar_disable_function) main_hooks.toolbar_disable_function();
    set_target_lambda(number(quant.lambda));
    if (begin_exchange()) send_message(cmd_goto_lambda);
}

void frmQuant::read_sample() {
    read_standard(); // the same move; show_data tells the two apart by reading_std
}

void frmQuant::show_zero(std::int32_t) {
    if (quant.zero_done) return;
    if (main_hooks.toolbar_enable_function) main_hooks.toolbar_enable_function();
    quant.zero_done = true;
    shared.measure_mode = mm_lambda_panel;
}

void frmQuant::show_data(std::int32_t mean) {
    if (!show_now_abs(mean)) return;
    QuantSetup& q = quant;
    const double a = shared.now_abs;
    set_panel(2, format_text(a, "#0.000") + QStringLiteral("A"));
    if (!q.reading_std) {
        grid& g = fgdSample();
        const int row = q.sample_count + 1;
        if (g.Rows() < row + 1) g.setRows(row + 1);
        g.setTextMatrix(row, 1, format_text(a, "#0.000"));
        g.setTextMatrix(row, 0, row_label(row, true));
        if (row <= max_samples) {
            const auto i = static_cast<std::size_t>(row);
            q.sample_abs[i] = a;
            // Conc. of the reading as shown: three decimals.
            const double shown = number(format_text(a, "0.000"));
            const calibration_set& s = q.cal;
            q.sample_conc[i] = conc_from_abs(s.fit_type, s.fit_ka, s.fit_kb, s.fit_kc, shown);
            g.setTextMatrix(row, 2, format_text(q.sample_conc[i], "#0.000"));
            ++q.sample_count;
            q.sample_valid[i] = true;
            show_sample_prediction(g, row, 3, prediction(statistics(), row));
        }
        // Past the last row the reading is only shown; the toolbar still comes back, and with
        // it the question whether to restart from 1.
        advance_run();
        return;
    }
    const int row = q.std_read + 1;
    if (row > max_standards) throw run_fault{"index out of range"};
    fgdData().setTextMatrix(row, 2, format_text(a, "#0.000"));
    q.cal.std_abs[static_cast<std::size_t>(row - 1)] = a;
    ++q.std_read;
    fgdData().setTextMatrix(row, 0, row_label(row, true));
    advance_run();
}

void frmQuant::advance_run() {
    QuantSetup& q = quant;
    shared.link_ready = true;
    end_run_on_blank();
    if (!q.reading_std) {
        if (main_hooks.toolbar_enable_for) main_hooks.toolbar_enable_for(fid_quantitative);
        if (q.sample_count >= max_samples) {
            const box_answer a = prompts::message_box(QStringLiteral("Data number >100, restart from 1 ?"),
                                                      box_icon::exclamation, QStringLiteral("Warning"),
                                                      box_buttons::ok_cancel);
            if (a == box_answer::ok) {
                q.sample_count = 0;
                sample_headers();
            }
        }
        return;
    }
    if (main_hooks.toolbar_enable_function) main_hooks.toolbar_enable_function();
    if (q.std_read < standard_count()) return;
    // The calibration is complete: from now on it counts as keyed in.
    q.std_type = 1;
    q.sample_count = 0;
    q.reading_std = false;
    if (fit(q.cal.fit_type)) draw_calibration(true);
    update_statistics();
    prompts::message_box(QStringLiteral("Please press RUN to read samples!"), box_icon::information,
                         QStringLiteral("Information"));
    tabs_->setCurrentIndex(1);
}

void frmQuant::load_old_data() {
    sample_headers();
    grid& g = fgdSample();
    const int count = std::clamp<int>(quant.sample_count, 0, max_samples);
    g.setRows(count + 1);
    for (int i = 1; i <= count; ++i) {
        const auto k = static_cast<std::size_t>(i);
        g.setTextMatrix(i, 0, row_label(i, quant.sample_valid[k]));
        g.setTextMatrix(i, 1, format_text(quant.sample_abs[k], "#0.000"));
        g.setTextMatrix(i, 2, format_text(quant.sample_conc[k], "#0.000"));
    }
    update_statistics();
}

void frmQuant::fgdSample_Click(int row) {
    if (row < 1 || row > quant.sample_count || row > max_samples) return;
    bool& valid = quant.sample_valid[static_cast<std::size_t>(row)];
    valid = !valid;
    fgdSample().setTextMatrix(row, 0, row_label(row, valid));
}

} // namespace lumora
