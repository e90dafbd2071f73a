#include "frmPhotometry.h"
#include "functions/dialog_parts.h"

#include "dlgPhotometry.h"
#include "link/command_ring.h"
#include "link/link_context.h"
#include "link/photometric.h"
#include "link/protocol.h"
#include "photometry_rules.h"
#include "photometry_setup.h"
#include "platform/grid.h"

#include <QHeaderView>
#include <QVBoxLayout>

namespace lumora {
namespace {

int lambda_count() {
    const int n = photometry_setup.ph_lambda_count;
    return n < 1 ? 1 : n > ph_max_lambdas ? ph_max_lambdas : n;
}

void right_align(grid& g, int row, int col) {
    if (QTableWidgetItem* it = g.item(row, col)) it->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
}

// A cell of a wavelength or R column: its text right aligned, as the header sets the column.
void set_number_cell(grid& g, int row, int col, const QString& text) {
    const bool fresh = !g.item(row, col);
    g.setTextMatrix(row, col, text);
    if (fresh) right_align(g, row, col);
}

} // namespace

frmPhotometry::frmPhotometry(const function_entry& entry, QWidget* parent) : function_window(entry, parent) {
    grid_ = new grid(this);
    grid_->setObjectName(QStringLiteral("fgdData"));
    grid_->setAccessibleName(QStringLiteral("Photometry readings"));
    grid_->horizontalHeader()->setHighlightSections(false);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(grid_);
    layout->addLayout(quick_print_buttons(this, false));
    connect(grid_, &QTableWidget::cellClicked, this, [this](int row, int) { fgdData_Click(row); });

    cycle_timer_.setSingleShot(true);
    connect(&cycle_timer_, &QTimer::timeout, this, &frmPhotometry::cycle_wait_end);

    auto& h = link_ctx.hooks;
    h.show_data[mm_photometry] = [this](std::int32_t mean) { show_data(mean); };
    h.photometry_zero_flag = [] { return photometry_run.ph_zeroing; };
    h.photometry_read = [this] { read(); };

    // Form load
    set_form_visible(true);
    clear_form();
}

frmPhotometry::~frmPhotometry() {
    // Leaving the function ends a cycle wait with it.
    cycle_timer_.stop();
    auto& h = link_ctx.hooks;
    h.show_data[mm_photometry] = nullptr;
    h.photometry_zero_flag = nullptr;
    h.photometry_read = nullptr;
}

void frmPhotometry::set_form_visible(bool visible) {
    function_window::set_form_visible(visible);
    grid_->setVisible(visible);
}

void frmPhotometry::clear_form() {
    const PhotometrySetup& s = photometry_setup;
    const int n = lambda_count();
    grid& g = *grid_;
    g.clearContents();
    g.setRows(20);
    g.setCols(n + 1 + (s.ph_advanced ? 1 : 0));
    g.setColWidth(0, 100); // 1500 twips
    g.setTextMatrix(0, 0, ph_unit_header(s.ph_mode, s.ph_unit));
    // Widths that fit the header texts as the header draws them.
    const QFontMetrics fm = g.horizontalHeader()->fontMetrics();
    for (int k = 1; k <= n; ++k) {
        const QString header = ph_lambda_header(s.ph_lambda[static_cast<std::size_t>(k - 1)]);
        g.setTextMatrix(0, k, header);
        right_align(g, 0, k);
        g.setColWidth(k, std::max(72, fm.horizontalAdvance(header) + 12));
    }
    if (s.ph_advanced) {
        g.setTextMatrix(0, n + 1, ph_r_header());
        right_align(g, 0, n + 1);
        g.setColWidth(n + 1, std::max(72, fm.horizontalAdvance(ph_r_header()) + 12));
    }
    // Row 0 holds the headers as texts; shown as the grid's own header it stays in view while
    // a long run scrolls the rows.
    for (int k = 0; k < g.Cols(); ++k) {
        auto* header = new QTableWidgetItem(g.TextMatrix(0, k));
        header->setTextAlignment(k == 0 ? Qt::AlignLeft | Qt::AlignVCenter
                                        : Qt::AlignRight | Qt::AlignVCenter);
        g.setHorizontalHeaderItem(k, header);
    }
    g.setColWidth(0, std::max(100, fm.horizontalAdvance(g.TextMatrix(0, 0)) + 16));
    g.horizontalHeader()->show();
    g.setRowHidden(0, true);
    photometry_run.ph_data_count = 0;
    photometry_run.ph_run_count = 0;
}

void frmPhotometry::set_number(int row, int col, const QString& text) {
    set_number_cell(*grid_, row, col, text);
}

void frmPhotometry::set_zero_flag(bool zeroing) {
    photometry_run.ph_zeroing = zeroing;
}

bool frmPhotometry::has_data() const {
    return photometry_run.ph_data_count > 0;
}

void frmPhotometry::move_to_column(int column) {
    set_target_lambda(photometry_setup.ph_lambda[static_cast<std::size_t>(column)]);
}

void frmPhotometry::read() {
    if (main_hooks.toolbar_disable_function) main_hooks.toolbar_disable_function();
    cycle_timer_.stop();
    photometry_run.ph_run_count = 0;
    const int n = lambda_count();
    const ph_cell at = ph_cell_of(photometry_run.ph_data_count, n);
    move_to_column(at.col - 1);
    // The mark of a Zero row says so from its first reading on.
    grid_->setTextMatrix(at.row, 0, ph_row_label(at.row, true, photometry_run.ph_zeroing));
    shared.reading_index = 0; // frames of the stream so far are no part of this reading
    begin_exchange();
    send_message(cmd_goto_lambda);
    // Stop stays live: it gives the toolbar back while the run goes on.
    if (main_hooks.toolbar_enable_stop) main_hooks.toolbar_enable_stop();
}

void frmPhotometry::zero() {
    cycle_timer_.stop();
    begin_exchange();
    send_message(cmd_read_dark);
    set_panel(2, QStringLiteral("0.000A"));
}

bool frmPhotometry::show_now_abs(std::int32_t value) {
    return ph_show_now_abs(value);
}

void frmPhotometry::show_data(std::int32_t value) {
    // Frames that come during the wait between two cycles are not readings.
    if (cycle_timer_.isActive()) return;
    PhotometryRun& r = photometry_run;
    const PhotometrySetup& s = photometry_setup;
    const int n = lambda_count();
    const ph_cell at = ph_cell_of(r.ph_data_count, n);
    show_now_abs(value);
    grid& g = *grid_;
    double c = 0;
    const QString text = ph_cell_text(s.ph_mode, r.ph_abs, r.ph_percent_t, s.ph_factor, &c);
    if (at.row >= g.Rows()) g.setRows(at.row + 1);
    set_number_cell(g, at.row, at.col, text);
    set_panel(2, text + ph_panel_unit(s.ph_mode));
    if (s.ph_advanced == 1 && (r.ph_data_count + 1) % n == 0) {
        const double value_r = ph_equation(s, [&g, &at](int col) { return g.TextMatrix(at.row, col); });
        set_number_cell(g, at.row, n + 1, ph_r_text(s.ph_mode, value_r, c));
    }
    const auto index = static_cast<std::size_t>(r.ph_data_count);
    r.ph_marks[index] = {1, static_cast<std::int16_t>(r.ph_zeroing ? 1 : 0)};
    if (r.ph_data_count < ph_max_readings) ++r.ph_data_count;
    if (r.ph_run_count == INT16_MAX) throw run_fault{"overflow"};
    ++r.ph_run_count;
    if (r.ph_data_count == (g.Rows() - 1) * n) g.setRows(g.Rows() + 20);
    check_complete();
}

void frmPhotometry::check_complete() {
    PhotometryRun& r = photometry_run;
    const PhotometrySetup& s = photometry_setup;
    const int n = lambda_count();
    const int target = r.ph_zeroing ? n : n * s.ph_cycle_number;
    if (r.ph_run_count < target) {
        // A cycle has ended: the next one starts after the interval, the window live meanwhile.
        if (r.ph_data_count % n == 0 && s.ph_cycle_interval != 0) {
            grid_->viewport()->update();
            cycle_timer_.start(s.ph_cycle_interval * 1000);
            return;
        }
        start_reading();
    } else {
        set_panel(6, QStringLiteral("OK"));
        if (main_hooks.toolbar_enable_for) main_hooks.toolbar_enable_for(fid_photometry);
        r.ph_zeroing = false;
        end_run_on_blank();
    }
}

void frmPhotometry::cycle_wait_end() {
    cycle_timer_.stop();
    try {
        start_reading();
    } catch (const run_fault&) {
    }
}

void frmPhotometry::start_reading() {
    const PhotometryRun& r = photometry_run;
    const int n = lambda_count();
    const ph_cell at = ph_cell_of(r.ph_data_count, n);
    move_to_column(at.col - 1);
    if (at.row >= grid_->Rows()) grid_->setRows(at.row + 1);
    grid_->setTextMatrix(at.row, 0, ph_row_label(at.row, true, r.ph_zeroing));
    // After a cycle wait the frames of the stream were counted all along: the reading at the
    // next wavelength starts from none, or the old wavelength could complete it before the move.
    shared.reading_index = 0;
    begin_exchange();
    shared.measure_mode = mm_photometry;
    send_message(cmd_goto_lambda);
}

void frmPhotometry::stop_now() {
    set_panel(6, QStringLiteral("STOP, please wait..."));
    const int n = lambda_count();
    if (photometry_run.ph_data_count % n == 0)
        photometry_run.ph_run_count = static_cast<std::int16_t>(photometry_setup.ph_cycle_number * n);
}

void frmPhotometry::fgdData_Click(int row) {
    PhotometryRun& r = photometry_run;
    const int n = lambda_count();
    if (row < 1 || n * row > r.ph_data_count || (row - 1) * n >= ph_max_readings + 1) return;
    const std::size_t first = static_cast<std::size_t>((row - 1) * n);
    const bool select = r.ph_marks[first].selected == 0;
    for (std::size_t i = first; i < first + static_cast<std::size_t>(n) && i < r.ph_marks.size(); ++i)
        r.ph_marks[i].selected = select ? 1 : 0;
    grid_->setTextMatrix(row, 0, ph_row_label(row, select, r.ph_marks[first].zero != 0));
}

QDialog* frmPhotometry::make_setup_dialog(QWidget* parent) {
    auto* dlg = new dlgPhotometry(parent);
    dlg->setAttribute(Qt::WA_DeleteOnClose);
    connect(dlg, &dlgPhotometry::setup_changed, this, &frmPhotometry::clear_form);
    connect(dlg, &dlgPhotometry::clear_requested, this, &frmPhotometry::clear_form);
    return dlg;
}

void frmPhotometry::run(toolbar_routine routine) {
    function_window::run(routine);
    try {
        switch (routine) {
        case toolbar_routine::zero:
            zero();
            break;
        case toolbar_routine::read:
            read();
            break;
        default:
            break;
        }
    } catch (const run_fault&) {
    }
}

} // namespace lumora
