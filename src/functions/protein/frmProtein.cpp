#include "frmProtein.h"

#include "dlgProtein.h"
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
#include "plot/difference_plot.h"
#include "plot/palette.h"
#include "plot/plot_surface.h"
#include "processing/replicate_stats.h"
#include "protein_rows.h"
#include "protein_setup.h"

#include <QHBoxLayout>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabBar>
#include <QVBoxLayout>
#include <algorithm>
#include <vector>

namespace lumora {
namespace {

// The weighting chosen on the statistics tab, kept for the session while the window comes and
// goes; the stored batches keep their layout and do not carry it.
stats_weighting session_weighting = stats_weighting::none;

double number(const QString& text) {
    return val(text.toStdString());
}

int std_reps() {
    return std::clamp<int>(protein.std_reps, 1, max_replicates);
}

int standard_count() {
    return std::clamp<int>(protein.cal.std_count, 1, max_standards);
}

// The spread of Conc. over the points of the forward fit (the origin included for the
// through-zero types), and for type 1 the sum of ABS squared: the tests that fail a fit before
// any determinant is formed.
bool fit_fails_early(const calibration_set& s, int points) {
    double mean = 0, s2 = 0;
    for (int i = 0; i < points; ++i) {
        mean += s.std_conc[static_cast<std::size_t>(i)];
        s2 += s.std_abs[static_cast<std::size_t>(i)] * s.std_abs[static_cast<std::size_t>(i)];
    }
    mean /= points;
    double ss = 0;
    for (int i = 0; i < points; ++i)
        ss += (s.std_conc[static_cast<std::size_t>(i)] - mean) *
              (s.std_conc[static_cast<std::size_t>(i)] - mean);
    return ss == 0 || (s.fit_type == 1 && s2 == 0);
}

} // namespace

frmProtein::frmProtein(const function_entry& entry, QWidget* parent) : function_window(entry, parent) {
    // Both plots and the equation between them: taller than the frame, which scrolls.
    surface_ = new plot_surface(QSize(400, 590));
    surface_->setObjectName(QStringLiteral("picProtein"));
    scroll_ = new QScrollArea(this);
    scroll_->setObjectName(QStringLiteral("PicScroll"));
    scroll_->setWidget(surface_);
    scroll_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    scroll_->setMinimumWidth(240);
    scroll_->setMaximumWidth(surface_->width() + 24);
    scroll_->horizontalScrollBar()->setObjectName(QStringLiteral("HScroll1"));
    scroll_->verticalScrollBar()->setObjectName(QStringLiteral("VScroll1"));
    tabs_ = new QTabBar(this);
    tabs_->setObjectName(QStringLiteral("tspData"));
    auto* right = new QVBoxLayout;
    right->addWidget(tabs_);
    stats_ = add_calibration_tables(this, tabs_, right, tables_, frames_, session_weighting,
                                    [this] { update_statistics(); });
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(scroll_, 3);
    layout->addLayout(right, 2);
    connect(tabs_, &QTabBar::currentChanged, this, &frmProtein::show_table);

    link_ctx.hooks.set_reading(
        mm_protein, [this](std::int32_t mean) { show_data(mean); },
        [this](std::int32_t value) { show_zero(value); }, [] { return protein.zero_done; });

    // Form load
    set_form_visible(true);
    init_data_area();
    clear_form();
}

frmProtein::~frmProtein() {
    link_ctx.hooks.clear_reading(mm_protein);
}

void frmProtein::set_form_visible(bool visible) {
    function_window::set_form_visible(visible);
    tabs_->setVisible(visible);
    show_table(visible ? tabs_->currentIndex() : -1);
}

void frmProtein::show_table(int index) {
    show_only_frame(frames_, index);
}

void frmProtein::init_data_area() {
    const int cols[2] = {6, 4};
    for (int t = 0; t < 2; ++t) {
        grid& g = *tables_[static_cast<std::size_t>(t)];
        g.setRows(1);
        g.setCols(cols[t]);
        for (int c = 0; c < cols[t]; ++c)
            g.setColWidth(c, 100);
    }
}

void frmProtein::clear_form() {
    ProteinSetup& p = protein;
    p.sample_rows = 0;
    p.data_rows = 0;
    p.std_read = 0;
    fitted_ = false;
    const int rep = std_reps(), n = standard_count();
    const int sample_rep = std::clamp<int>(p.sample_reps, 1, max_replicates);
    grid& data = fgdData();
    grid& sample = fgdSample();
    data.Clear();
    data.setRows((rep + 1) * n + 1);
    data.Clear();
    sample.Clear();
    sample.setRows(sample_rep + 2);
    sample.Clear();
    const char* data_heads[6] = {"No.", "Conc.", "ABS", "Cal-Conc.", "Diff", "%CV"};
    for (int c = 0; c < 6; ++c)
        data.setTextMatrix(0, c, QString::fromLatin1(data_heads[c]));
    const char* sample_heads[4] = {"No.", "ABS", "Conc.", "%CV"};
    for (int c = 0; c < 4; ++c)
        sample.setTextMatrix(0, c, QString::fromLatin1(sample_heads[c]));
    sample_stats_headers(sample, 4);
    p.reading_std = true;
    double largest = 0;
    for (int k = 1; k <= n; ++k) {
        const double conc = p.cal.std_conc[static_cast<std::size_t>(k - 1)];
        const QString text = format_text(conc, "0.000");
        const int first = (k - 1) * (rep + 1) + 1;
        for (int j = 0; j < rep; ++j) {
            data.setTextMatrix(first + j, 0, replicate_label(first + j, rep));
            data.setTextMatrix(first + j, 1, text);
        }
        data.setTextMatrix(first + rep, 0, QStringLiteral("Avg%1").arg(k));
        data.setTextMatrix(first + rep, 1, text);
        if (k == 1 || conc > largest) largest = conc;
    }
    p.cal.conc_max = largest;
    p.cal.conc_min = 0;
    DiffDrawWindow();
    update_statistics();
    if (main_hooks.toolbar_enable_function) main_hooks.toolbar_enable_function();
}

calibration_stats frmProtein::statistics() const {
    const ProteinSetup& p = protein;
    const stats_weighting w = stats_->chosen();
    if (p.reading_std || !fitted_) {
        calibration_stats none = calibration_statistics(p.cal.fit_type, w, {}, {});
        none.why = "the standards are not all read";
        return none;
    }
    // Every replicate as a point of its own: the average rows would hide the spread that the
    // lack-of-fit test weighs.
    const grid& data = fgdData();
    const int rep = std_reps();
    std::vector<double> conc, abs;
    for (int r = 1; r <= std::min<int>(p.data_rows, data.Rows() - 1); ++r) {
        if (r % (rep + 1) == 0 || data.TextMatrix(r, 2).isEmpty()) continue;
        conc.push_back(number(data.TextMatrix(r, 1)));
        abs.push_back(number(data.TextMatrix(r, 2)));
    }
    return calibration_statistics(p.cal.fit_type, w, conc, abs);
}

sample_prediction frmProtein::prediction(const calibration_stats& s, int average_row) const {
    const int rep = std::clamp<int>(protein.sample_reps, 1, max_replicates);
    const grid& g = fgdSample();
    if (average_row % (rep + 1) != 0 || average_row > std::min<int>(protein.sample_rows, g.Rows() - 1))
        return {};
    double sum = 0;
    for (int j = average_row - rep; j < average_row; ++j)
        sum += number(g.TextMatrix(j, 1));
    return predict_sample(s, sum / rep, rep, number(g.TextMatrix(average_row, 2)));
}

std::vector<labelled_prediction> frmProtein::sample_predictions(const calibration_stats& s) const {
    std::vector<labelled_prediction> out;
    const int rep = std::clamp<int>(protein.sample_reps, 1, max_replicates);
    const grid& g = fgdSample();
    for (int r = rep + 1; r <= std::min<int>(protein.sample_rows, g.Rows() - 1); r += rep + 1)
        out.push_back({g.TextMatrix(r, 0), prediction(s, r)});
    return out;
}

void frmProtein::update_statistics() {
    const calibration_stats s = statistics();
    stats_->show_stats(s, protein.unit);
    const int rep = std::clamp<int>(protein.sample_reps, 1, max_replicates);
    grid& g = fgdSample();
    const int rows = std::min<int>(protein.sample_rows, g.Rows() - 1);
    for (int r = rep + 1; r <= rows; r += rep + 1)
        show_sample_prediction(g, r, 4, prediction(s, r));
}

void frmProtein::DiffDrawWindow() {
    const ProteinSetup& p = protein;
    const calibration_set& s = p.cal;
    plot_surface::batch batch(*surface_);
    draw_calibration_frame(*surface_, s, p.unit);
    draw_difference_frame(*surface_, p.diff_min, p.diff_max, s.conc_min, s.conc_max, p.unit);
    if (fitted_) {
        if (s.fit_type == 3 || s.fit_type == 4)
            draw_2op(*surface_, s, standard_count(), false);
        else
            draw_1op(*surface_, s, standard_count(), false);
        draw_marks();
        show_equation(*surface_, s);
    }
    describe_plot();
}

void frmProtein::draw_marks() {
    const ProteinSetup& p = protein;
    const calibration_set& s = p.cal;
    if (s.abs_max == s.abs_min || s.conc_max == s.conc_min) return;
    const grid& data = fgdData();
    const int rep = std_reps();
    const QColor average = curve_color(1), replicate = standard_color(9);
    const int rows = std::min<int>(p.data_rows, data.Rows() - 1);
    for (int r = 1; r <= rows; ++r) {
        const QColor& color = r % (rep + 1) == 0 ? average : replicate;
        const int x = std::clamp(calibration_column(number(data.TextMatrix(r, 1)), s), 60, 340);
        const int y = std::clamp(calibration_row(number(data.TextMatrix(r, 2)), s), 20, 300);
        mark_cross(*surface_, x, y, color);
        mark_cross(*surface_, x, difference_row(number(data.TextMatrix(r, 4)), p.diff_min, p.diff_max),
                   color);
    }
}

void frmProtein::describe_plot() {
    const ProteinSetup& p = protein;
    const calibration_set& s = p.cal;
    surface_->setAccessibleName(QStringLiteral("Protein plot"));
    surface_->setAccessibleDescription(
        QStringLiteral(
            "Conc. %1 to %2, %3 to %4 ABS, Diff %5 to %6. %7, Ka %8, Kb %9, Kc %10, R squared %11.")
            .arg(format_text(s.conc_min, "#0.000"), format_text(s.conc_max, "#0.000"),
                 format_text(s.abs_min, "#0.000"), format_text(s.abs_max, "#0.000"),
                 format_text(p.diff_min, "###0.000"), format_text(p.diff_max, "###0.000"),
                 QString::fromLatin1(fit_equation_setup(s.fit_type)), format_text(s.fit_ka, "0.0000"),
                 format_text(s.fit_kb, "0.0000"))
            .arg(format_text(s.fit_kc, "0.0000"), format_text(s.fit_r2, "0.0000")));
}

frmProtein::refit_result frmProtein::refit_standards() {
    ProteinSetup& p = protein;
    calibration_set& s = p.cal;
    const int n = standard_count();
    const int type = s.fit_type;
    const bool through_zero = type == 1 || type == 3;
    if (through_zero) {
        s.std_conc[static_cast<std::size_t>(n)] = 0;
        s.std_abs[static_cast<std::size_t>(n)] = 0;
    }
    const int points = n + (through_zero ? 1 : 0);
    if (!fit_fails_early(s, points)) {
        // The inverse fit comes before the forward determinant is tested; its own is not
        // guarded, and a zero there is a division without an answer.
        const auto count = static_cast<std::size_t>(points);
        if (!inverse_fit(type, std::span<const double>(s.std_conc.data(), count),
                         std::span<const double>(s.std_abs.data(), count), p.inverse))
            return refit_result::fault;
    }
    if (!calcu_fit(s, type)) {
        prompts::message_box(QStringLiteral("Invalid input!"), box_icon::critical, QStringLiteral("Warning"));
        return refit_result::invalid_input;
    }
    if (!fill_fit_columns(fgdData(), p)) return refit_result::fault;
    protein_limits(fgdData(), p);
    fitted_ = true;
    DiffDrawWindow();
    update_statistics();
    return refit_result::done;
}

QDialog* frmProtein::make_setup_dialog(QWidget* parent) {
    auto* dlg = new dlgProtein(parent);
    dlg->setAttribute(Qt::WA_DeleteOnClose);
    setup_ = dlg;
    connect(dlg, &dlgProtein::setup_taken, this, &frmProtein::clear_form);
    connect(dlg, &dlgProtein::setup_done, this, [this] {
        if (!protein.loading) {
            tabs_->setCurrentIndex(0);
            prompts::message_box(QStringLiteral("Please press RUN to read standards!"), box_icon::information,
                                 QStringLiteral("Information"));
        }
        protein.loading = false;
    });
    return dlg;
}

void frmProtein::run(toolbar_routine routine) {
    function_window::run(routine);
    switch (routine) {
    case toolbar_routine::zero:
        zero();
        break;
    case toolbar_routine::read_standard_or_sample:
        if (protein.reading_std)
            read_standard();
        else
            read_sample();
        break;
    default:
        break;
    }
}

bool frmProtein::has_data() const {
    return protein.sample_rows > 0 || protein.std_read > 0;
}

void frmProtein::zero() {
    protein.zero_done = false;
    shared.link_ready = false;
    set_target_lambda(number(protein.lambda));
    if (begin_exchange()) send_message(cmd_read_lambda);
}

void frmProtein::read_standard() {
    shared.link_ready = false;
    if (main_hooks.toolbar_disable_function) main_hooks.toolbar_disable_function();
    set_target_lambda(number(protein.lambda));
    if (begin_exchange()) send_message(cmd_goto_lambda);
}

void frmProtein::read_sample() {
    read_standard(); // the same move; show_data tells the two apart by reading_std
}

void frmProtein::show_zero(std::int32_t) {
    if (protein.zero_done) return;
    if (main_hooks.toolbar_enable_function) main_hooks.toolbar_enable_function();
    protein.zero_done = true;
    shared.measure_mode = mm_lambda_panel;
}

void frmProtein::show_data(std::int32_t mean) {
    if (!show_now_abs(mean)) return;
    const double a = shared.now_abs;
    set_panel(2, format_text(a, "#0.000") + QStringLiteral("A"));
    if (protein.reading_std) {
        if (!add_standard_reading(fgdData(), protein, a)) throw run_fault{"index out of range"};
    } else {
        add_sample_reading(fgdSample(), protein, a);
        const int rep = std::clamp<int>(protein.sample_reps, 1, max_replicates);
        if (protein.sample_rows % (rep + 1) == 0)
            show_sample_prediction(fgdSample(), protein.sample_rows, 4,
                                   prediction(statistics(), protein.sample_rows));
    }
    advance_run();
}

void frmProtein::advance_run() {
    ProteinSetup& p = protein;
    shared.link_ready = true;
    end_run_on_blank();
    if (!p.reading_std) {
        if (main_hooks.toolbar_enable_for) main_hooks.toolbar_enable_for(fid_protein);
        return;
    }
    if (main_hooks.toolbar_enable_function) main_hooks.toolbar_enable_function();
    if (p.std_read < std_reps() * standard_count()) return;
    p.sample_rows = 0;
    p.reading_std = false;
    if (refit_standards() == refit_result::fault) return;
    if (p.cal.abs_min < 0)
        prompts::message_box(QStringLiteral("Invalid data!"), box_icon::critical, QStringLiteral("Warning"));
    set_panel(6, QStringLiteral("OK"));
    prompts::message_box(QStringLiteral("Please press RUN to read samples!"), box_icon::information,
                         QStringLiteral("Information"));
    tabs_->setCurrentIndex(1);
}

} // namespace lumora
