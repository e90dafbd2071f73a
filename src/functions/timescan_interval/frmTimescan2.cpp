#include "frmTimescan2.h"

#include "functions/timescan/dlgTimescan.h"
#include "functions/timescan/timescan_data.h"
#include "functions/timescan/timescan_plot.h"
#include "functions/timescan/timescan_setup.h"
#include "link/command_ring.h"
#include "link/link_context.h"
#include "link/photometric.h"
#include "link/protocol.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "plot/palette.h"
#include "plot/plot_scaling.h"
#include "plot/plot_surface.h"
#include "timescan_interval_data.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QTabBar>
#include <QVBoxLayout>

namespace lumora {

timescan_interval_data timescan_interval;

void reset_timescan_interval_data() {
    timescan_interval = timescan_interval_data{};
}

namespace {

bool percent_t() {
    return timescan_interval_setup.percent_t();
}

double wavelength() {
    return val(timescan_interval_setup.ti_wavelength.toStdString());
}

// The first time of the page shown [s]; the plot's X labels hold it as a 16-bit whole number.
void set_page_start(plot_view& v, int page) {
    const double start = page * timescan_interval_setup.ti_interval * page_steps;
    const double stop = start + timescan_interval_setup.ti_interval * page_steps;
    v.view_start = static_cast<std::int16_t>(std::clamp(cint(start), 0, 32767));
    v.view_stop = static_cast<std::int16_t>(std::clamp(cint(stop), 0, 32767));
    update_span(v);
    v.view_nm_per_pixel = timescan_interval_setup.ti_interval;
}

} // namespace

frmTimescan2::frmTimescan2(const function_entry& entry, QWidget* parent) : function_window(entry, parent) {
    surface_ = new plot_surface(QSize(400, 340));
    surface_->setObjectName(QStringLiteral("picTimescan"));
    scroll_ = new QScrollArea(this);
    scroll_->setObjectName(QStringLiteral("picScroll"));
    scroll_->setWidget(surface_);
    scroll_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    label_ = new QLabel(this);
    label_->setObjectName(QStringLiteral("lblValue"));
    const char* page_captions[2] = {"Prev. screen", "Next screen"};
    auto* page_row = new QHBoxLayout;
    for (int i = 0; i < 2; ++i) {
        auto* b = new QPushButton(QString::fromLatin1(page_captions[i]), this);
        b->setObjectName(QStringLiteral("cmdPage_%1").arg(i));
        connect(b, &QPushButton::clicked, this, [this, i] { cmdPage_Click(i); });
        pages_[static_cast<std::size_t>(i)] = b;
        page_row->addWidget(b);
    }
    page_row->addStretch();
    tabs_ = new QTabBar(this);
    tabs_->setObjectName(QStringLiteral("tspData"));
    tabs_->addTab(QStringLiteral("Read data"));
    table_ = new grid(this);
    table_->setObjectName(QStringLiteral("fgdTrack"));
    // Rows of one height: a run of thousands of rows scrolls without measuring each one.
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    connect(table_, &QTableWidget::cellClicked, this, [this](int row, int) { table_row_click(row); });
    connect(surface_, &plot_surface::mouse_moved, this,
            [this](QPoint pos, Qt::MouseButtons) { picTimescan_MouseMove(pos); });
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(scroll_, 5);
    scroll_->setMinimumHeight(350); // the whole square with its labels
    layout->addWidget(label_);
    layout->addLayout(page_row);
    layout->addWidget(tabs_);
    layout->addWidget(table_, 2);

    timed_schedule& t = link_ctx.hooks.timed[mm_timescan2];
    t.ticks = &timescan_interval.ti_ticks;
    t.taken = &timescan_interval.ti_sample_index;
    t.reading = [] { return timescan_interval.ti_zero_done != 0; };
    t.plan = [] {
        const TimescanIntervalSetup& s = timescan_interval_setup;
        timed_plan p;
        p.start = s.ti_delay;
        p.step = s.ti_interval;
        p.end = s.ti_stop_time + s.ti_delay;
        return p;
    };
    t.show_zero = [this](std::int32_t) { show_zero(); };
    t.show_data = [this](std::int32_t raw) { show_data(raw); };
    t.stop_now = [this] { stop_now(); };
    timescan_windows.interval_clear_form = [this] { clear_form(); };

    // Form load
    set_form_visible(true);
    init();
    timescan_interval.ti_curve_count = 0;
    init_data_area();
    timescan_interval.view.zoomed = false;
    set_track(false);
    draw_frame();
    timescan_interval.view.zoomed = true;
}

frmTimescan2::~frmTimescan2() {
    link_ctx.hooks.timed[mm_timescan2] = {};
    timescan_windows.interval_clear_form = nullptr;
}

void frmTimescan2::set_form_visible(bool visible) {
    function_window::set_form_visible(visible);
    label_->setVisible(visible);
    tabs_->setVisible(visible);
    table_->setVisible(visible);
}

void frmTimescan2::set_track(bool visible) {
    surface_->set_overlay_line(0, QLine(200, plot_top, 200, plot_bottom + 1), visible);
    surface_->set_overlay_line(1, QLine(plot_left, 160, plot_right + 1, 160), visible);
}

void frmTimescan2::init() {
    const TimescanIntervalSetup& s = timescan_interval_setup;
    timescan_interval.ti_page_count =
        static_cast<std::int16_t>(fix((table_->Rows() - 1) / double(page_steps)));
    page_shown_ = timescan_interval.ti_page_count;
    plot_view& v = timescan_interval.view;
    v.view_high = s.ti_high;
    v.view_low = s.ti_low;
    set_page_start(v, page_shown_);
    v.zoom_rect = QRect(QPoint(plot_left, plot_top), QPoint(plot_right, plot_bottom));
}

void frmTimescan2::init_data_area() {
    if (table_->Rows() < 1) table_->setRows(1);
    if (table_->Cols() < 3) table_->setCols(3);
    for (int c = 0; c < 3; ++c)
        table_->setColWidth(c, 100);
    table_->setTextMatrix(0, 0, QStringLiteral("No."));
    table_->setTextMatrix(0, 1, QStringLiteral("Time"));
    table_->setTextMatrix(0, 2, QStringLiteral("Value"));
}

void frmTimescan2::draw_frame() {
    draw_axes(*surface_, timescan_interval.view, timescan_axes(percent_t()));
    label_->setText(QStringLiteral("Time= ") +
                    format_text(timescan_interval.view.view_start, "###0.00sec  ") +
                    QStringLiteral("Data= "));
    describe_plot();
}

void frmTimescan2::describe_plot() {
    plot_legend legend;
    legend.function = QString::fromLatin1(entry().caption);
    legend.x_unit = QStringLiteral("sec");
    legend.y_unit = percent_t() ? QStringLiteral("%T") : QStringLiteral("ABS");
    legend.y_format = timescan_axes(percent_t()).y_format;
    legend.curves = table_->Rows() > 1 ? 1 : 0;
    legend.shown = legend.curves;
    legend.active = legend.curves;
    lumora::describe_plot(*surface_, timescan_interval.view, legend);
}

void frmTimescan2::clear_form() {
    table_->setRows(1);
    table_->Clear();
    timescan_interval.ti_curve_count = 0;
    timescan_interval.ti_curve_state.fill(0);
    init_data_area();
    init();
    draw_frame();
}

bool frmTimescan2::has_data() const {
    return table_->Rows() > 1;
}

double frmTimescan2::cell_value(int k) const {
    return val(table_->TextMatrix(k + 1, 2).toStdString());
}

void frmTimescan2::read() {
    if (main_hooks.toolbar_enable_stop) main_hooks.toolbar_enable_stop();
    set_track(false);
    timescan_interval.ti_page_count = 0;
    init_data_area();
    init();
    timescan_interval.view.zoomed = false;
    init();
    clear_form();
    for (QPushButton* b : pages_)
        b->setEnabled(false);
    for (auto& state : timescan_interval.ti_curve_state)
        if (state == 2) state = 1;
    ++timescan_interval.ti_curve_count;
    timescan_interval.ti_curve_state[static_cast<std::size_t>(timescan_interval.ti_curve_count)] = 2;
    set_target_lambda(wavelength());
    timescan_interval.ti_sample_index = 0;
    timescan_interval.ti_ticks = 0;
    begin_exchange();
    send_message(cmd_goto_lambda);
}

void frmTimescan2::zero() {
    timescan_interval.ti_ticks = 0;
    timescan_interval.ti_zero_done = 0;
    set_target_lambda(wavelength());
    begin_exchange();
    send_message(cmd_read_lambda);
    set_track(false);
    set_panel(2, QStringLiteral("0.000A"));
}

void frmTimescan2::show_zero() {
    timescan_interval.ti_zero_done = 1;
    if (main_hooks.toolbar_enable_function) main_hooks.toolbar_enable_function();
    shared.measure_mode = mm_lambda_panel;
}

void frmTimescan2::show_data(std::int32_t raw) {
    timescan_interval_data& d = timescan_interval;
    const TimescanIntervalSetup& s = timescan_interval_setup;
    const int k = d.ti_sample_index;
    const sample_value v = timed_sample(raw, shared.lambda_now_int, d.last_trans);
    d.last_trans = v.trans;
    const double value = percent_t() ? v.percent_t : v.abs;
    const double time = k * s.ti_interval;
    table_->AddItem(QString::number(k) + QLatin1Char('\t') + format_text(time, "###0.0") + QLatin1Char('\t') +
                    format_text(value, percent_t() ? "##0.00" : "#0.000"));
    draw_data(k);
    format_text(time_text_, time, "###0.0sec");
    set_panel(1, time_text_);
    if (k >= INT16_MAX) {
        // The sample index is 16 bits wide: the run cannot go on. It ends as Stop ends it, and
        // says why, rather than leave a run whose every frame would append again.
        stop_now();
        prompts::message_box(QStringLiteral("The run has reached 32767 samples."), box_icon::exclamation,
                             QStringLiteral("Warning"));
        throw run_fault{"overflow"};
    }
    d.ti_sample_index = static_cast<std::int16_t>(k + 1);
    table_->scrollToBottom();
    timed_value_text(value_text_, value, percent_t());
    set_panel(2, value_text_);
    if (d.ti_sample_index - d.ti_page_count * page_steps > page_steps) {
        ++d.ti_page_count;
        page_shown_ = d.ti_page_count;
        set_page_start(d.view, d.ti_page_count);
        draw_frame();
    }
}

void frmTimescan2::draw_data(int k) {
    const int c = k - timescan_interval.ti_page_count * page_steps;
    if (c <= 0 || c > page_steps) return;
    const TimescanIntervalSetup& s = timescan_interval_setup;
    const int y0 = y_to_pixel(cell_value(k - 1), s.ti_high, s.ti_low);
    const int y1 = y_to_pixel(cell_value(k), s.ti_high, s.ti_low);
    draw_stretch(*surface_, c, y0, y1, curve_color(std::max<int>(1, timescan_interval.ti_curve_count)));
}

void frmTimescan2::draw_data_page(int column) {
    const int first = page_shown_ * page_steps;
    if (column <= 0 || first + column >= table_->Rows() - 1) return;
    const plot_view& v = timescan_interval.view;
    const int y1 =
        y_to_pixel(val(table_->TextMatrix(first + column, 2).toStdString()), v.view_high, v.view_low);
    const int y2 =
        y_to_pixel(val(table_->TextMatrix(first + column + 1, 2).toStdString()), v.view_high, v.view_low);
    draw_stretch(*surface_, column, y1, y2, curve_color(std::max<int>(1, timescan_interval.ti_curve_count)));
}

void frmTimescan2::cmdPage_Click(int index) {
    if (index == 0 && page_shown_ >= 1) --page_shown_;
    if (index == 1 && page_shown_ < timescan_interval.ti_page_count) ++page_shown_;
    zoom_data();
}

void frmTimescan2::zoom_auto() {
    const int first = page_shown_ * page_steps;
    const int samples = table_->Rows() - 1;
    if (first >= samples) return;
    double largest = cell_value(first), smallest = largest;
    for (int k = first; k <= first + page_steps && k < samples; ++k) {
        largest = std::max(largest, cell_value(k));
        smallest = std::min(smallest, cell_value(k));
    }
    const double least = percent_t() ? 0.01 : 0.001;
    if (largest - smallest < least) {
        largest += least / 2;
        smallest -= least / 2;
    }
    plot_view& v = timescan_interval.view;
    v.view_high = largest + (largest - smallest) / 100;
    v.view_low = smallest - (largest - smallest) / 100;
    v.zoomed = true;
}

void frmTimescan2::zoom_data() {
    plot_surface::batch batch(*surface_);
    set_page_start(timescan_interval.view, page_shown_);
    draw_frame();
    for (int c = 0; c <= page_steps; ++c)
        draw_data_page(c);
}

void frmTimescan2::stop_now() {
    end_run_on_blank();
    timescan_interval.ti_sample_index = 0;
    timescan_interval.ti_ticks = 0;
    if (main_hooks.toolbar_enable_for) main_hooks.toolbar_enable_for(fid_timescan2);
    for (QPushButton* b : pages_)
        b->setEnabled(true);
    set_track(true);
}

void frmTimescan2::table_row_click(int row) {
    if (row < 1 || row >= table_->Rows()) return;
    QString text = table_->TextMatrix(row, 0);
    const bool marked_off = text.endsWith(QStringLiteral("  X"));
    if (text.endsWith(QStringLiteral("  V")) || marked_off) text.chop(3);
    table_->setTextMatrix(row, 0, text + (marked_off ? QStringLiteral("  V") : QStringLiteral("  X")));
}

void frmTimescan2::picTimescan_MouseMove(QPoint pos) {
    if (shared.toolbar_locked) return;
    const int c = pos.x() - plot_left;
    const int k = page_shown_ * page_steps + c;
    if (c < 0 || c > page_steps || pos.y() < plot_top || pos.y() > plot_bottom || k >= table_->Rows() - 1)
        return;
    const double time = page_shown_ * page_steps * timescan_interval_setup.ti_interval +
                        c * timescan_interval_setup.ti_interval;
    label_->setText(QStringLiteral("Time= ") + format_text(time, "###0.00sec  ") + QStringLiteral("Data= ") +
                    format_text(cell_value(k), percent_t() ? "##0.000" : "#0.0000"));
}

QDialog* frmTimescan2::make_setup_dialog(QWidget* parent) {
    auto* dlg = new dlgTimescan(parent);
    dlg->setAttribute(Qt::WA_DeleteOnClose);
    return dlg;
}

void frmTimescan2::run(toolbar_routine routine) {
    function_window::run(routine);
    try {
        switch (routine) {
        case toolbar_routine::read:
            read();
            break;
        case toolbar_routine::zero:
            zero();
            break;
        case toolbar_routine::stop_now:
            stop_now();
            break;
        case toolbar_routine::zoom_auto:
            zoom_auto();
            zoom_data();
            break;
        case toolbar_routine::zoom_original:
            zoom_data(); // zoom_cursor does nothing here
            break;
        default:
            break;
        }
    } catch (const run_fault&) {
    }
}

} // namespace lumora
