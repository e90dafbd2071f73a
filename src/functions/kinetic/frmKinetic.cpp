#include "frmKinetic.h"

#include "dlgKinetic.h"
#include "functions/dialog_parts.h"
#include "functions/mark_rows.h"
#include "functions/timescan/timescan_data.h"
#include "functions/timescan/timescan_plot.h"
#include "kinetic_data.h"
#include "link/command_ring.h"
#include "link/link_context.h"
#include "link/photometric.h"
#include "link/protocol.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "plot/curve_drawing.h"
#include "plot/dlgZoom.h"
#include "plot/palette.h"
#include "plot/plot_scaling.h"
#include "plot/plot_surface.h"
#include "processing/calibration_stats.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QTabBar>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

namespace lumora {
namespace {

double wavelength() {
    return val(kinetic_setup.kn_wavelength.toStdString());
}

axes_text kinetic_axes() {
    axes_text t;
    t.y_caption = QStringLiteral("(ABS)");
    t.x_caption = QStringLiteral("Time(sec)");
    t.y_format = "#0.0000";
    t.x_format = "###0.0";
    t.round_x_labels = false;
    return t;
}

void write_heads(grid& g, std::initializer_list<const char*> heads) {
    g.Clear();
    g.setRows(1);
    const int n = static_cast<int>(heads.size());
    if (g.Cols() < n) g.setCols(n);
    int c = 0;
    for (const char* h : heads) {
        g.setColWidth(c, 100);
        g.setTextMatrix(0, c++, QString::fromLatin1(h));
    }
}

void track_heads(grid& g) {
    write_heads(g, {"No.", "Time", "Org. Data", "Fit Data"});
}
void cross_heads(grid& g) {
    write_heads(g, {"No.", "Time", "Value", "Diff."});
}
void output_heads(grid& g) {
    write_heads(g, {"No.", "Lambda", "ABS0", "dABS/dT", "dC/dT"});
}

QPolygon track_triangle(int x, int y) {
    return QPolygon({QPoint(x, y), QPoint(x + 3, y - 7), QPoint(x - 3, y - 7)});
}

} // namespace

frmKinetic::frmKinetic(const function_entry& entry, QWidget* parent) : function_window(entry, parent) {
    surface_ = new plot_surface(QSize(400, 440));
    surface_->setObjectName(QStringLiteral("picKinetic"));
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
    const char* captions[3] = {"Track data", "Sampled data", "Output data"};
    const char* names[3] = {"fgdTrack", "fgdPeak", "fgdValley"};
    // The plot with its rate text and read-outs on the left, the tables beside it.
    auto* columns = new QHBoxLayout(this);
    auto* left = new QVBoxLayout;
    auto* layout = new QVBoxLayout;
    columns->addLayout(left, 0);
    columns->addLayout(layout, 1);
    left->addWidget(scroll_, 1);
    scroll_->setMinimumWidth(420);
    scroll_->setMinimumHeight(450); // the square, its labels and the rate below
    left->addWidget(labels_[0]);
    left->addWidget(labels_[1]);
    rate_label_ = new QLabel(this);
    rate_label_->setObjectName(QStringLiteral("lblRateStats"));
    left->addWidget(rate_label_);
    QBoxLayout* buttons = quick_print_buttons(this, true);
    linear_range_ = new QPushButton(QStringLiteral("Linear range"), this);
    linear_range_->setObjectName(QStringLiteral("cmdLinearRange"));
    linear_range_->setAccessibleDescription(
        QStringLiteral("Finds the longest straight stretch of the run and offers it as the rate window"));
    buttons->insertWidget(buttons->count() - 1, linear_range_);
    connect(linear_range_, &QPushButton::clicked, this, &frmKinetic::linear_range);
    left->addLayout(buttons);
    layout->addWidget(tabs_);
    add_table_frames(this, tabs_, layout, 2, captions, names, tables_, frames_);
    connect(tabs_, &QTabBar::currentChanged, this, &frmKinetic::show_table);
    for (int i = 0; i < 3; ++i)
        connect(tables_[static_cast<std::size_t>(i)], &QTableWidget::cellClicked, this,
                [this, i](int row, int) { table_row_click(i, row); });
    connect(surface_, &plot_surface::mouse_pressed, this, &frmKinetic::plot_pressed);
    connect(surface_, &plot_surface::mouse_moved, this,
            [this](QPoint pos, Qt::MouseButtons) { plot_moved(pos); });

    timed_schedule& t = link_ctx.hooks.timed[mm_kinetic];
    t.ticks = &kinetic.kn_ticks;
    t.taken = &kinetic.kn_sample_index;
    t.reading = [] { return kinetic.kn_zero_done != 0; };
    t.plan = [] { return kinetic_plan(kinetic_setup); };
    t.show_zero = [this](std::int32_t) { show_zero(); };
    t.show_data = [this](std::int32_t raw) { show_data(raw); };
    t.stop_now = nullptr;
    kinetic_window.clear_form = [this] { clear_form(); };

    // Form load
    set_form_visible(true);
    init();
    init_data_area();
    write_outputs();
    set_track(false);
    draw_frame();
}

frmKinetic::~frmKinetic() {
    link_ctx.hooks.timed[mm_kinetic] = {};
    kinetic_window.clear_form = nullptr;
}

void frmKinetic::show_table(int index) {
    show_only_frame(frames_, index);
}

void frmKinetic::set_form_visible(bool visible) {
    function_window::set_form_visible(visible);
    tabs_->setVisible(visible);
    labels_[0]->setVisible(visible);
    labels_[1]->setVisible(visible);
    show_table(visible ? tabs_->currentIndex() : -1);
}

void frmKinetic::set_track(bool visible) {
    tracking_ = visible;
    if (!visible) {
        surface_->set_overlay_line(0, {}, false);
        surface_->set_overlay_line(1, {}, false);
    }
}

void frmKinetic::init() {
    const KineticSetup& s = kinetic_setup;
    init_view(kinetic.view, s.sample_time(0), s.sample_time(280), s.kn_high, s.kn_low);
}

void frmKinetic::init_data_area() {
    track_heads(*tables_[0]);
    cross_heads(*tables_[1]);
    kinetic.tracks.track_count = 0;
    kinetic.cross_count = 0;
}

void frmKinetic::write_outputs() {
    grid& g = *tables_[2];
    output_heads(g);
    for (std::size_t i = 0; i < kinetic.outputs.size(); ++i)
        g.AddItem(output_row(static_cast<int>(i) + 1, kinetic.outputs[i]));
}

void frmKinetic::draw_frame() {
    draw_axes(*surface_, kinetic.view, kinetic_axes());
    labels_[0]->setText(QStringLiteral("Time= ") + format_text(kinetic.view.view_start, "###0.0sec  ") +
                        QStringLiteral("Org. Data=0.000  Fit Data=0.000"));
    labels_[1]->clear();
    describe_plot();
}

void frmKinetic::describe_plot() {
    plot_legend legend;
    legend.function = QString::fromLatin1(entry().caption);
    legend.x_unit = QStringLiteral("sec");
    legend.y_unit = QStringLiteral("ABS");
    legend.y_format = kinetic_axes().y_format;
    legend.curves = legend.shown = legend.active = kinetic.kn_run_count > 0 ? 1 : 0;
    lumora::describe_plot(*surface_, kinetic.view, legend);
}

void frmKinetic::clear_form() {
    clear_kinetic_data();
    rate_stats_ = {};
    show_rate_stats();
    for (grid* g : tables_)
        g->Clear();
    init_data_area();
    write_outputs();
    init();
    draw_frame();
}

bool frmKinetic::has_data() const {
    return kinetic.kn_run_count > 0;
}

void frmKinetic::read() {
    ++kinetic.kn_run_count;
    rate_stats_ = {};
    show_rate_stats();
    if (main_hooks.toolbar_enable_stop) main_hooks.toolbar_enable_stop();
    set_track(false);
    init();
    init_data_area();
    draw_frame();
    kinetic.kn_samples.fill(0);
    kinetic.kn_fit.fill(0);
    kinetic.kn_running = true;
    set_target_lambda(wavelength());
    kinetic.kn_sample_index = 0;
    kinetic.kn_ticks = 0;
    begin_exchange();
    send_message(cmd_goto_lambda);
}

void frmKinetic::zero() {
    kinetic.kn_zero_done = 0;
    set_target_lambda(wavelength());
    begin_exchange();
    send_message(cmd_read_lambda);
    set_panel(2, QStringLiteral("0.000A"));
}

void frmKinetic::show_zero() {
    kinetic.kn_zero_done = 1;
    if (main_hooks.toolbar_enable_function) main_hooks.toolbar_enable_function();
    shared.measure_mode = mm_lambda_panel;
}

void frmKinetic::show_data(std::int32_t raw) {
    const int k = kinetic.kn_sample_index;
    if (k < 0 || k >= kn_samples_count) throw run_fault{"index out of range"};
    const sample_value v = timed_sample(raw, shared.lambda_now_int, kinetic.last_trans);
    kinetic.last_trans = v.trans;
    kinetic.kn_samples[static_cast<std::size_t>(k)] = v.abs;
    const KineticSetup& s = kinetic_setup;
    // Samples caught up at once when the run starts before its own time zero are kept, not drawn.
    if (s.sample_time(k) > 0) draw_data(k);
    kinetic.kn_sample_index = static_cast<std::int16_t>(k + 1);
    format_text(time_text_, s.sample_time(k + 1), "###0.0sec");
    set_panel(1, time_text_);
    timed_value_text(value_text_, v.abs, false);
    set_panel(2, value_text_);
    if (kinetic.kn_sample_index > 280) {
        set_panel(6, QStringLiteral("OK"));
        stop_ok();
    }
}

void frmKinetic::draw_data(int k) {
    if (k <= 0 || k >= kn_samples_count) return;
    const plot_view& v = kinetic.view;
    const int y0 = y_to_pixel(kinetic.kn_samples[static_cast<std::size_t>(k - 1)], v.view_high, v.view_low);
    const int y1 = y_to_pixel(kinetic.kn_samples[static_cast<std::size_t>(k)], v.view_high, v.view_low);
    surface_->line(k + plot_left - 1, y0, k + plot_left, y1, standard_color(12));
}

void frmKinetic::stop_ok() {
    kinetic.kn_running = false;
    if (main_hooks.toolbar_enable_for) main_hooks.toolbar_enable_for(fid_kinetic);
    if (kinetic_setup.kn_auto_zoom == 1) {
        zoom_auto();
        zoom_data();
    }
    set_panel(1, format_text(wavelength(), "###0nm"));
    if (kinetic_setup.kn_auto_zoom != 1) {
        // zoom_data has done these already
        plot_surface::batch batch(*surface_);
        draw_cross(kinetic_setup.kn_sampling_number);
        calculate();
        draw_linear_fit();
    }
    kn_output o;
    o.lambda = wavelength();
    o.abs0 = kinetic.fit.abs0;
    o.dabs_dt = kinetic.fit.dabs_dt;
    o.dc_dt = kinetic.fit.dc_dt;
    kinetic.outputs.push_back(o);
    tables_[2]->AddItem(output_row(static_cast<int>(kinetic.outputs.size()), o));
    end_run_on_blank();
    set_track(true);
    describe_plot();
}

void frmKinetic::stop_kinetic() {
    // The main window has set measure_mode 1 and given the toolbar back. The counters zeroed are
    // Timescan's: Read sets Kinetic's own, and a stopped run keeps its samples without a fit.
    kinetic.kn_running = false;
    end_run_on_blank();
    timescan.ts_sample_index = 0;
    timescan.ts_ticks = 0;
    set_track(true);
}

void frmKinetic::draw_cross(int n) {
    const KineticSetup& s = kinetic_setup;
    n = std::clamp(n, 2, 99);
    // The rows are written in place, the table sized once: a redraw with 99 points stays cheap.
    grid& g = *tables_[1];
    if (g.Cols() < 4) g.setCols(4);
    g.setRows(n + 1);
    const char* heads[4] = {"No.", "Time", "Value", "Diff."};
    for (int c = 0; c < 4; ++c)
        g.setTextMatrix(0, c, QString::fromLatin1(heads[c]));
    const QColor color = standard_color(9);
    const plot_view& v = kinetic.view;
    plot_surface::batch batch(*surface_);
    std::array<QLine, 2 * 99> strokes{};
    double before = 0;
    for (int i = 0; i < n; ++i) {
        const int k = cross_sample(s, i, n);
        const double value = kinetic.kn_samples[static_cast<std::size_t>(k)];
        const QStringList cells =
            cross_row(i + 1, s.sample_time(k), value, i > 0 ? &before : nullptr).split(QLatin1Char('\t'));
        for (int c = 0; c < 4; ++c)
            g.setTextMatrix(i + 1, c, c < cells.size() ? cells[c] : QString());
        before = value;
        const int x = plot_left + k;
        const int y = y_to_pixel(value, v.view_high, v.view_low);
        kinetic.cross_marks[static_cast<std::size_t>(i)] = {-1, static_cast<std::int16_t>(k),
                                                            static_cast<std::int16_t>(y)};
        strokes[static_cast<std::size_t>(2 * i)] = QLine(x - 2, y - 2, x + 2, y + 2);
        strokes[static_cast<std::size_t>(2 * i + 1)] = QLine(x - 2, y + 2, x + 2, y - 2);
    }
    surface_->lines(std::span(strokes.data(), static_cast<std::size_t>(2 * n)), color);
    kinetic.cross_count = static_cast<std::int16_t>(n);
}

void frmKinetic::calculate() {
    const KineticSetup& s = kinetic_setup;
    processing::kinetic_input in;
    in.points = s.kn_sampling_number;
    in.rate = s.kn_rate;
    in.lag = s.kn_lag;
    in.factor = s.kn_factor;
    kinetic.fit = processing::kinetic_fit(kinetic.kn_samples, in);
    rate_stats_ = processing::rate_statistics(kinetic.kn_samples, kinetic.fit, in);
    show_rate_stats();
    plot_surface& p = *surface_;
    const fit_block block = fit_text_block(
        s, kinetic.fit, [&p](const QString& text) { return p.text_width(text); }, p.text_height());
    plot_surface::batch batch(p);
    for (const fit_text& t : block.texts)
        p.text(t.x, t.y, t.text);
    for (const fit_glyph& g : block.glyphs)
        p.text(g.x, g.y, QString(QChar(0x0394)));
}

void frmKinetic::show_rate_stats() {
    const processing::rate_stats& r = rate_stats_;
    if (r.n == 0) {
        rate_label_->clear();
        return;
    }
    if (!r.ok) {
        rate_label_->setText(QStringLiteral("Rate SE: not enough data"));
        return;
    }
    QString text = QStringLiteral("Rate SE = %1 A/min, R\u00b2 of the rate window = %2")
                       .arg(QString::fromStdString(stats_number(r.rate_se, 3)), format_text(r.r2, "0.0000"));
    if (r.curved) text += QStringLiteral("  -  not straight: R\u00b2 < 0.998");
    rate_label_->setText(text);
    rate_label_->setStyleSheet(r.curved ? QStringLiteral("color: #c00000") : QString());
}

void frmKinetic::linear_range() {
    if (kinetic.kn_running || rate_stats_.n == 0) {
        prompts::message_box(QStringLiteral("Linear range needs a finished run: press Read first."),
                             box_icon::information, QStringLiteral("Linear range"));
        return;
    }
    KineticSetup& s = kinetic_setup;
    constexpr int least_rate = 15, least_lag = 2, most = 9999; // the setup's own limits
    const int min_samples = static_cast<int>(std::ceil(least_rate / s.step())) + 1;
    const processing::straight_stretch found = processing::longest_straight(kinetic.kn_samples, min_samples);
    const int lag = std::max(least_lag, static_cast<int>(std::ceil(s.sample_time(found.first) - 1e-9)));
    const int rate = std::min(most, static_cast<int>(std::floor(s.sample_time(found.last) + 1e-9)) - lag);
    if (!found.found || rate < least_rate) {
        prompts::message_box(
            QStringLiteral("No straight stretch of %1 s or more in this run.").arg(least_rate),
            box_icon::information, QStringLiteral("Linear range"));
        return;
    }
    const QString question =
        QStringLiteral(
            "The absorbance rises in a straight line within its noise (%1 A) from %2 s to %3 s.\n"
            "Use lag time %4 s and rate time %5 s as the rate window? The window is cleared for the next "
            "Read, as on any change of the setup.")
            .arg(QString::fromStdString(stats_number(found.noise, 2)),
                 format_text(s.sample_time(found.first), "0.0"),
                 format_text(s.sample_time(found.last), "0.0"))
            .arg(lag)
            .arg(rate);
    if (prompts::message_box(question, box_icon::question, QStringLiteral("Linear range"),
                             box_buttons::yes_no) != box_answer::yes)
        return;
    s.kn_lag = static_cast<std::int16_t>(lag);
    s.kn_rate = static_cast<std::int16_t>(rate);
    s.derive();
    kinetic.kn_dirty = true;
    clear_form();
}

void frmKinetic::draw_linear_fit() {
    const KineticSetup& s = kinetic_setup;
    kinetic.kn_fit.fill(0);
    const plot_view& v = kinetic.view;
    const double step = s.step();
    double t = s.kn_lag;
    int last = 0;
    std::array<QLine, kn_last_fit - kn_first_fit> lines{};
    for (int i = 0; i <= kn_last_fit - kn_first_fit; ++i) {
        const double value = static_cast<double>(kinetic.fit.ka) * t + static_cast<double>(kinetic.fit.kb);
        kinetic.kn_fit[static_cast<std::size_t>(i + kn_first_fit)] = value;
        const int y = y_to_pixel(value, v.view_high, v.view_low);
        if (i > 0) lines[static_cast<std::size_t>(i - 1)] = QLine(i + 94, last, i + 95, y);
        last = y;
        t += step;
    }
    surface_->lines(lines, standard_color(5));
}

void frmKinetic::zoom_auto() {
    auto_range(kinetic.kn_samples, kinetic.view.view_high, kinetic.view.view_low);
    kinetic.view.zoomed = true;
}

void frmKinetic::zoom_data() {
    plot_view& v = kinetic.view;
    plot_surface::batch batch(*surface_);
    draw_axes(*surface_, v, kinetic_axes());
    std::array<QLine, kn_samples_count - 1> lines{};
    int y_before = y_to_pixel(kinetic.kn_samples[0], v.view_high, v.view_low);
    for (int k = 1; k < kn_samples_count; ++k) {
        const int y = y_to_pixel(kinetic.kn_samples[static_cast<std::size_t>(k)], v.view_high, v.view_low);
        lines[static_cast<std::size_t>(k - 1)] = QLine(k + plot_left - 1, y_before, k + plot_left, y);
        y_before = y;
    }
    surface_->lines(lines, standard_color(12));
    // The track table empties with the redraw; draw_cross rewrites the sampled table itself.
    track_heads(*tables_[0]);
    kinetic.tracks.track_count = 0;
    draw_cross(kinetic_setup.kn_sampling_number);
    calculate();
    draw_linear_fit();
    describe_plot();
}

void frmKinetic::plot_pressed(QPoint pos, Qt::MouseButton button) {
    if (button != Qt::RightButton || kinetic.kn_running || shared.toolbar_locked) return;
    if (pos.x() < plot_left || pos.x() > plot_right || pos.y() < plot_top || pos.y() > plot_bottom) return;
    track_state& tr = kinetic.tracks;
    if (tr.track_count >= track_limit) return; // the table is full; nothing is asked
    const int k = pos.x() - plot_left;
    const double value = kinetic.kn_samples[static_cast<std::size_t>(k)];
    const double fit = kinetic.kn_fit[static_cast<std::size_t>(k)];
    const int y = y_to_pixel(value, kinetic.view.view_high, kinetic.view.view_low);
    tables_[0]->AddItem(track_row(tr.track_count + 1, kinetic_setup.sample_time(k), value, fit));
    tr.track_marks[static_cast<std::size_t>(tr.track_count)] = {-1, static_cast<std::int16_t>(k),
                                                                static_cast<std::int16_t>(y)};
    ++tr.track_count;
    surface_->polygon(track_triangle(pos.x(), y), standard_color(8));
}

void frmKinetic::plot_moved(QPoint pos) {
    if (!tracking_ || kinetic.kn_running) return;
    if (pos.x() < plot_left || pos.x() > plot_right || pos.y() < plot_top || pos.y() > plot_bottom) return;
    const int k = pos.x() - plot_left;
    surface_->set_overlay_line(0, QLine(pos.x(), plot_top + 1, pos.x(), plot_bottom - 1), true);
    labels_[0]->setText(QStringLiteral("Time= ") + format_text(kinetic_setup.sample_time(k), "###0.0sec  ") +
                        QStringLiteral("Org. Data= ") +
                        format_text(kinetic.kn_samples[static_cast<std::size_t>(k)], "#0.000") +
                        QStringLiteral("  ") + QStringLiteral("Fit Data= ") +
                        format_text(kinetic.kn_fit[static_cast<std::size_t>(k)], "#0.000"));
}

void frmKinetic::table_row_click(int table, int row) {
    if (table == 0) {
        toggle_mark_row(*tables_[0], kinetic.tracks.track_marks.data(), kinetic.tracks.track_count, row,
                        true);
        return;
    }
    if (table != 2 || row < 1 || row > static_cast<int>(kinetic.outputs.size())) return;
    kn_output& o = kinetic.outputs[static_cast<std::size_t>(row - 1)];
    o.flag = o.flag ? 0 : -1;
    tables_[2]->setTextMatrix(
        row, 0, QString::number(row) + (o.flag ? QStringLiteral("  V") : QStringLiteral("  X")));
}

QDialog* frmKinetic::make_setup_dialog(QWidget* parent) {
    auto* dlg = new dlgKinetic(parent);
    dlg->setAttribute(Qt::WA_DeleteOnClose);
    return dlg;
}

void frmKinetic::run(toolbar_routine routine) {
    function_window::run(routine);
    try {
        switch (routine) {
        case toolbar_routine::read:
            read();
            break;
        case toolbar_routine::zero:
            zero();
            break;
        case toolbar_routine::stop_kinetic:
            stop_kinetic();
            break;
        case toolbar_routine::zoom_auto:
            zoom_auto();
            zoom_data();
            break;
        case toolbar_routine::zoom_original:
            init();
            zoom_data();
            break;
        case toolbar_routine::zoom_dialog: {
            // The time axis belongs to the run: only the absorbance range is typed in.
            zoom_fields fields;
            fields.labels = {QStringLiteral("Start time(sec)="), QStringLiteral("Stop time(sec)="),
                             QStringLiteral("Low value(ABS)="), QStringLiteral("High value(ABS)=")};
            const plot_view run_view = kinetic.view;
            auto* dlg = new dlgZoom(
                kinetic.view, fields,
                [this, run_view] {
                    kinetic.view.view_start = run_view.view_start;
                    kinetic.view.view_stop = run_view.view_stop;
                    update_span(kinetic.view);
                    zoom_data();
                },
                window());
            dlg->txtInst(0)->setEnabled(false);
            dlg->txtInst(1)->setEnabled(false);
            dlg->setAttribute(Qt::WA_DeleteOnClose);
            dlg->setWindowModality(Qt::WindowModal);
            dlg->show();
            break;
        }
        default:
            break;
        }
    } catch (const run_fault&) {
    }
}

} // namespace lumora
