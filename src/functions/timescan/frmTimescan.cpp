#include "frmTimescan.h"
#include "functions/dialog_parts.h"
#include "functions/mark_rows.h"

#include "dlgTimescan.h"
#include "link/command_ring.h"
#include "link/link_context.h"
#include "link/photometric.h"
#include "link/protocol.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "plot/palette.h"
#include "plot/plot_scaling.h"
#include "plot/plot_surface.h"
#include "plot/plot_tracking.h"
#include "plot/zoom.h"
#include "processing/peak_search.h"
#include "timescan_data.h"
#include "timescan_plot.h"
#include "timescan_setup.h"

#include <QLabel>
#include <QScrollArea>
#include <QTabBar>
#include <QVBoxLayout>
#include <cmath>

namespace lumora {
namespace {

bool percent_t() {
    return timescan_setup.percent_t();
}

double wavelength() {
    return val(timescan_setup.ts_wavelength.toStdString());
}

void write_heads(grid& g) {
    g.Clear();
    g.setRows(1);
    if (g.Cols() < 3) g.setCols(3);
    for (int c = 0; c < 3; ++c)
        g.setColWidth(c, 100);
    g.setTextMatrix(0, 0, QStringLiteral("No."));
    g.setTextMatrix(0, 1, QStringLiteral("Time"));
    g.setTextMatrix(0, 2, QStringLiteral("Value"));
}

} // namespace

frmTimescan::frmTimescan(const function_entry& entry, QWidget* parent) : function_window(entry, parent) {
    surface_ = new plot_surface(QSize(400, 340));
    surface_->setObjectName(QStringLiteral("picTimescan"));
    scroll_ = new QScrollArea(this);
    scroll_->setObjectName(QStringLiteral("picScroll"));
    scroll_->setWidget(surface_);
    scroll_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    for (int i = 0; i < 2; ++i) {
        auto* l = new QLabel(this);
        l->setObjectName(QStringLiteral("lblValue_%1").arg(i));
        labels_[static_cast<std::size_t>(i)] = l;
    }
    tabs_ = new QTabBar(this);
    tabs_->setObjectName(QStringLiteral("tspData"));
    const char* captions[3] = {"Track data", "Peak data", "Valley data"};
    const char* names[3] = {"fgdTrack", "fgdPeak", "fgdValley"};
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(scroll_, 5);
    scroll_->setMinimumHeight(350); // the whole square with its labels
    layout->addWidget(labels_[0]);
    layout->addWidget(labels_[1]);
    layout->addLayout(quick_print_buttons(this, true));
    layout->addWidget(tabs_);
    add_table_frames(this, tabs_, layout, 2, captions, names, tables_, frames_);
    connect(tabs_, &QTabBar::currentChanged, this, &frmTimescan::show_table);
    for (int i = 0; i < 3; ++i)
        connect(tables_[static_cast<std::size_t>(i)], &QTableWidget::cellClicked, this,
                [this, i](int row, int) { table_row_click(i, row); });

    tracking_ = new plot_tracking(*surface_, timescan.view, *tables_[0], *labels_[0], *labels_[1],
                                  timescan.tracks, timescan_tracking(percent_t()), this);
    tracking_->hooks.locked = [] { return shared.toolbar_locked; };
    tracking_->hooks.zoom = [this] {
        zoom_cursor(timescan.view, percent_t());
        zoom_data();
    };
    tracking_->hooks.track_restart = tracking_->hooks.zoom;

    timed_schedule& t = link_ctx.hooks.timed[mm_timescan];
    t.ticks = &timescan.ts_ticks;
    t.taken = &timescan.ts_sample_index;
    t.reading = [] { return timescan.ts_zero_done != 0; };
    t.plan = [] {
        timed_plan p;
        p.start = timescan_setup.ts_delay;
        p.step = timescan_setup.ts_span / 280;
        return p;
    };
    t.show_zero = [this](std::int32_t) { show_zero(); };
    t.show_data = [this](std::int32_t raw) { show_data(raw); };
    t.stop_now = nullptr;
    timescan_windows.span_clear_form = [this] { clear_form(); };

    // Form load
    set_form_visible(true);
    clear_form();
    init();
    init_data_area();
    timescan.view.zoomed = false;
    set_track(false);
}

frmTimescan::~frmTimescan() {
    link_ctx.hooks.timed[mm_timescan] = {};
    timescan_windows.span_clear_form = nullptr;
}

void frmTimescan::show_table(int index) {
    show_only_frame(frames_, index);
}

void frmTimescan::set_form_visible(bool visible) {
    function_window::set_form_visible(visible);
    tabs_->setVisible(visible);
    labels_[0]->setVisible(visible);
    labels_[1]->setVisible(visible);
    frames_[0]->setVisible(visible);
    frames_[1]->setVisible(false);
    frames_[2]->setVisible(false);
}

void frmTimescan::set_track(bool visible) {
    tracking_->set_track(visible);
}

void frmTimescan::init() {
    const TimescanSetup& s = timescan_setup;
    init_view(timescan.view, 0, s.ts_span, s.ts_high, s.ts_low);
}

void frmTimescan::init_data_area() {
    for (grid* g : tables_)
        write_heads(*g);
    // Emptied tables number their rows from 1 again.
    timescan.tracks.track_count = 0;
    timescan.peak_count = timescan.valley_count = 0;
}

void frmTimescan::draw_frame() {
    draw_axes(*surface_, timescan.view, timescan_axes(percent_t()));
    tracking_->set_config(timescan_tracking(percent_t()));
    tracking_->reset_readout(timescan.view.view_start);
    describe_plot();
}

void frmTimescan::describe_plot() {
    plot_legend legend;
    legend.function = QString::fromLatin1(entry().caption);
    legend.x_unit = QStringLiteral("sec");
    legend.y_unit = percent_t() ? QStringLiteral("%T") : QStringLiteral("ABS");
    legend.y_format = timescan_axes(percent_t()).y_format;
    legend.curves = timescan.ts_curve_count;
    for (int s = 1; s <= timescan.ts_curve_count && s <= ts_max_curves; ++s) {
        const int state = timescan.ts_curve_state[static_cast<std::size_t>(s)];
        if (state == 1 || state == 2) ++legend.shown;
        if (state == 2) legend.active = s;
    }
    lumora::describe_plot(*surface_, timescan.view, legend);
}

void frmTimescan::clear_form() {
    for (grid* g : tables_)
        g->Clear();
    timescan.ts_curve_count = 0;
    timescan.ts_curve_state.fill(0);
    timescan.tracks = track_state{};
    timescan.peak_count = timescan.valley_count = 0;
    clear_tscan_array();
    init_data_area();
    init();
    draw_frame();
}

void frmTimescan::curve_check() {
    // Overlay off: each Read draws curve 1 anew.
    if (timescan_setup.ts_overlay != 0) return;
    timescan.ts_curve_count = 0;
    for (auto& row : timescan.ts_curves)
        row[1] = 0;
    draw_frame();
}

bool frmTimescan::has_data() const {
    return timescan.ts_curve_count > 0;
}

void frmTimescan::read() {
    if (main_hooks.toolbar_enable_stop) main_hooks.toolbar_enable_stop();
    set_track(false);
    init_data_area();
    init();
    zoom_cursor(timescan.view, percent_t());
    zoom_data();
    timescan.view.zoomed = false;
    init();
    if (timescan.ts_curve_count >= ts_max_curves) clear_form(); // the oldest twenty go at once
    for (auto& state : timescan.ts_curve_state)
        if (state == 2) state = 1;
    ++timescan.ts_curve_count;
    timescan.ts_curve_state[static_cast<std::size_t>(timescan.ts_curve_count)] = 2;
    set_target_lambda(wavelength());
    timescan.ts_sample_index = 0;
    timescan.ts_ticks = 0;
    // The read-outs go by this span until the next zoom_data; the sampling does not use it.
    timescan.view.view_span = static_cast<std::int16_t>(read_view_span(timescan_setup.ts_span));
    timescan.view.view_nm_per_pixel = timescan.view.view_span / 280.0;
    begin_exchange();
    send_message(cmd_goto_lambda);
}

void frmTimescan::zero() {
    timescan.ts_zero_done = 0;
    timescan.ts_ticks = 0;
    set_target_lambda(wavelength());
    begin_exchange();
    send_message(cmd_read_lambda);
    set_track(false);
    set_panel(2, QStringLiteral("0.000A"));
}

void frmTimescan::show_zero() {
    timescan.ts_zero_done = 1;
    if (main_hooks.toolbar_enable_function) main_hooks.toolbar_enable_function();
    shared.measure_mode = mm_lambda_panel;
    set_track(true);
}

void frmTimescan::show_data(std::int32_t raw) {
    const int k = timescan.ts_sample_index;
    const int column = timescan.ts_curve_count;
    if (k < 0 || k >= ts_samples || column < 1 || column > ts_max_curves)
        throw run_fault{"index out of range"};
    const sample_value v = timed_sample(raw, shared.lambda_now_int, timescan.last_trans);
    timescan.last_trans = v.trans;
    timescan.ts_abs = v.abs;
    timescan.ts_percent_t = v.percent_t;
    const double value = percent_t() ? v.percent_t : v.abs;
    timescan.ts_curves[static_cast<std::size_t>(k)][static_cast<std::size_t>(column)] = value;
    timescan.ts_org_curves[static_cast<std::size_t>(k)][static_cast<std::size_t>(column)] = value;
    timescan.ts_current[static_cast<std::size_t>(k)] = value;
    draw_data(k);
    format_text(time_text_, timescan_setup.ts_span / 280 * k, "###0.0sec");
    set_panel(1, time_text_);
    timescan.ts_sample_index = static_cast<std::int16_t>(k + 1);
    timed_value_text(value_text_, value, percent_t());
    set_panel(2, value_text_);
    if (timescan.ts_sample_index > 280) stop_ok();
}

void frmTimescan::draw_data(int k) {
    const int column = timescan.ts_curve_count;
    if (k < 0 || k >= ts_samples || column < 1 || column > ts_max_curves) return;
    const auto c = static_cast<std::size_t>(column);
    const double value = timescan.ts_curves[static_cast<std::size_t>(k)][c];
    timescan.view.screen_curve[static_cast<std::size_t>(k)] = value;
    if (k == 0) return;
    const TimescanSetup& s = timescan_setup;
    const int y0 = y_to_pixel(timescan.ts_curves[static_cast<std::size_t>(k - 1)][c], s.ts_high, s.ts_low);
    const int y1 = y_to_pixel(value, s.ts_high, s.ts_low);
    draw_stretch(*surface_, k, y0, y1, curve_color(column));
}

void frmTimescan::stop_ok() {
    timescan.ts_selected_curve = static_cast<std::int16_t>(timescan.ts_curve_count - 1);
    set_panel(6, QStringLiteral("OK"));
    if (main_hooks.toolbar_enable_for) main_hooks.toolbar_enable_for(fid_timescan);
    set_panel(1, format_text(wavelength(), "###0nm"));
    if (timescan_setup.ts_auto_zoom == 1) {
        zoom_auto();
        zoom_data();
    }
    end_run_on_blank();
    set_track(true);
    describe_plot();
}

void frmTimescan::stop_now() {
    end_run_on_blank();
    timescan.ts_sample_index = 0;
    timescan.ts_ticks = 0;
    if (main_hooks.toolbar_enable_for) main_hooks.toolbar_enable_for(fid_timescan);
    set_track(true);
}

void frmTimescan::zoom_auto() {
    plot_view& v = timescan.view;
    const double span = timescan_setup.ts_span;
    const auto column = static_cast<std::size_t>(timescan.ts_selected_curve + 1);
    if (column < 1 || column > ts_max_curves || span <= 0) return;
    const int first = std::clamp(fix(v.view_start * 280 / span), 0, 280);
    double largest = timescan.ts_curves[static_cast<std::size_t>(first)][column], smallest = largest;
    for (int i = first; i <= 280; ++i) {
        const double t = span * i / 280;
        if (t < v.view_start || t > v.view_stop) continue;
        largest = std::max(largest, timescan.ts_curves[static_cast<std::size_t>(i)][column]);
        smallest = std::min(smallest, timescan.ts_curves[static_cast<std::size_t>(i)][column]);
    }
    const double least = percent_t() ? 0.01 : 0.001;
    if (largest - smallest < least) {
        largest += least / 2;
        smallest -= least / 2;
    }
    v.view_high = largest + (largest - smallest) / 100;
    v.view_low = smallest - (largest - smallest) / 100;
    v.zoomed = true;
}

void frmTimescan::zoom_data() {
    plot_view& v = timescan.view;
    update_span(v);
    plot_surface::batch batch(*surface_);
    draw_axes(*surface_, v, timescan_axes(percent_t()));
    const double span = timescan_setup.ts_span;
    std::array<double, plot_columns> active{};
    for (int s = 1; s <= timescan.ts_curve_count && s <= ts_max_curves; ++s) {
        const int state = timescan.ts_curve_state[static_cast<std::size_t>(s)];
        if (state != 1 && state != 2) continue;
        std::array<double, plot_columns> shown{};
        const QColor color = curve_color(s);
        int y_before = 0;
        for (int c = 0; c <= 280; ++c) {
            // Between the two samples either side of the column's time, on a straight line.
            const double position = span > 0 ? (v.view_start + c * v.view_span / 280.0) * 280 / span : 0;
            const int i = std::clamp(static_cast<int>(std::floor(position)), 0, 280);
            const int j = std::min(i + 1, 280);
            const double a = timescan.ts_curves[static_cast<std::size_t>(i)][static_cast<std::size_t>(s)];
            const double b = timescan.ts_curves[static_cast<std::size_t>(j)][static_cast<std::size_t>(s)];
            const double f = std::clamp(position - i, 0.0, 1.0);
            shown[static_cast<std::size_t>(c)] = a + (b - a) * f;
            const int y = y_to_pixel(shown[static_cast<std::size_t>(c)], v.view_high, v.view_low);
            if (c > 0) draw_stretch(*surface_, c, y_before, y, color);
            y_before = y;
        }
        if (state == 2) active = shown;
    }
    v.screen_curve = active;
    timescan.ts_current = active;
    tracking_->set_config(timescan_tracking(percent_t()));
    tracking_->reset_readout(v.view_start);
    init_data_area();
    describe_plot();
}

void frmTimescan::smooth_data() {
    smooth5(timescan.ts_curves, timescan.ts_selected_curve + 1);
    zoom_data();
}

namespace {

processing::search_setup search_parameters() {
    processing::search_setup p;
    p.threshold = percent_t() ? 0.3 : 0.003;
    p.half_width = 2; // the window runs over samples 2..278
    p.view_start = timescan.view.view_start;
    p.view_span = timescan.view.view_span;
    const double high = timescan.view.view_high, low = timescan.view.view_low;
    p.row_of = [high, low](double value) { return y_to_pixel(value, high, low); };
    return p;
}

// Light blue crosses on the plot and rows in the table, at most 100.
std::int16_t show_finds(plot_surface& surface, grid& table, const processing::search_result& r) {
    write_heads(table);
    table.setRows(1);
    const QColor color = standard_color(9);
    const plot_view& v = timescan.view;
    for (int k = 0; k < r.boxes; ++k) {
        const auto& f = r.finds[static_cast<std::size_t>(k)];
        const int x = plot_left + f.column;
        surface.line(x - 2, f.row - 2, x + 2, f.row + 2, color);
        surface.line(x - 2, f.row + 2, x + 2, f.row - 2, color);
        if (k >= r.count) break;
        const double time = f.column * v.view_span / 280.0 + v.view_start;
        table.AddItem(QStringLiteral("%1  V\t%2\t%3")
                          .arg(k + 1)
                          .arg(format_text(time, "###0.0sec"))
                          .arg(percent_t() ? format_text(f.value, "#0.00") + QStringLiteral("%T")
                                           : format_text(f.value, "#0.000") + QStringLiteral("A")));
    }
    surface.update();
    return r.count;
}

} // namespace

void frmTimescan::search_peak() {
    const auto r = processing::search_peak(timescan.ts_current, search_parameters(), timescan.peak_marks);
    timescan.peak_count = show_finds(*surface_, *tables_[1], r);
}

void frmTimescan::search_valley() {
    const auto r = processing::search_valley(timescan.ts_current, search_parameters(), timescan.valley_marks);
    timescan.valley_count = show_finds(*surface_, *tables_[2], r);
}

void frmTimescan::table_row_click(int table, int row) {
    processing::mark* marks = nullptr;
    int count = 0;
    switch (table) {
    case 0:
        marks = timescan.tracks.track_marks.data();
        count = timescan.tracks.track_count;
        break;
    case 1:
        marks = timescan.peak_marks.data();
        count = timescan.peak_count;
        break;
    case 2:
        marks = timescan.valley_marks.data();
        count = timescan.valley_count;
        break;
    default:
        return;
    }
    toggle_mark_row(*tables_[static_cast<std::size_t>(table)], marks, count, row, true);
}

QDialog* frmTimescan::make_setup_dialog(QWidget* parent) {
    auto* dlg = new dlgTimescan(parent);
    dlg->setAttribute(Qt::WA_DeleteOnClose);
    return dlg;
}

void frmTimescan::run(toolbar_routine routine) {
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
            init();
            zoom_cursor(timescan.view, percent_t());
            copy_org_data_ts();
            zoom_data();
            break;
        case toolbar_routine::smooth:
            smooth_data();
            break;
        case toolbar_routine::peak:
            search_peak();
            search_valley();
            break;
        default:
            break;
        }
    } catch (const run_fault&) {
    }
}

} // namespace lumora
