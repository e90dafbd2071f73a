#include "frmSpectrum.h"
#include "functions/dialog_parts.h"
#include "functions/mark_rows.h"

#include "dlgSpectrum.h"
#include "link/command_ring.h"
#include "link/link_context.h"
#include "link/photometric.h"
#include "link/protocol.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "plot/dlgZoom.h"
#include "plot/frmColor.h"
#include "plot/palette.h"
#include "plot/plot_scaling.h"
#include "plot/plot_surface.h"
#include "plot/plot_tracking.h"
#include "plot/zoom.h"
#include "processing/kernels.h"
#include "processing/peak_search.h"
#include "spectrum_data.h"
#include "spectrum_setup.h"
#include "spectrum_tools.h"

#include <QLabel>
#include <QScrollArea>
#include <QTabBar>
#include <QVBoxLayout>

namespace lumora {

frmSpectrum::frmSpectrum(const function_entry& entry, QWidget* parent) : function_window(entry, parent) {
    surface_ = new plot_surface(QSize(400, 520));
    surface_->setObjectName(QStringLiteral("picSpectrum"));
    scroll_ = new QScrollArea(this);
    scroll_->setObjectName(QStringLiteral("picScroll"));
    scroll_->setWidget(surface_);
    scroll_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    for (int i = 0; i < 2; ++i) {
        auto* l = new QLabel(this);
        l->setObjectName(QStringLiteral("lblValue_%1").arg(i));
        l->setTextInteractionFlags(Qt::NoTextInteraction);
        labels_[static_cast<std::size_t>(i)] = l;
    }
    tabs_ = new QTabBar(this);
    tabs_->setObjectName(QStringLiteral("tspData"));
    const char* captions[3] = {"Track data", "Peak data", "Valley data"};
    const char* names[3] = {"fgdTrack", "fgdPeak", "fgdValley"};
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(scroll_, 5);
    scroll_->setMinimumHeight(240);
    layout->addWidget(labels_[0]);
    layout->addWidget(labels_[1]);
    layout->addWidget(tabs_);
    add_table_frames(this, tabs_, layout, 2, captions, names, tables_, frames_);
    connect(tabs_, &QTabBar::currentChanged, this, &frmSpectrum::show_table);
    for (int i = 0; i < 3; ++i)
        connect(tables_[static_cast<std::size_t>(i)], &QTableWidget::cellClicked, this,
                [this, i](int row, int) { table_row_click(i, row); });

    tracking_ = new plot_tracking(*surface_, spectrum.view, *tables_[0], *labels_[0], *labels_[1],
                                  spectrum.tracks, spectrum_tracking(spectrum_setup.percent_t()), this);
    tracking_->hooks.locked = [] { return shared.toolbar_locked; };
    tracking_->hooks.zoom = [this] {
        zoom_cursor(spectrum.view, spectrum_setup.percent_t());
        zoom_data();
    };
    tracking_->hooks.derivative = [] {
        derivative_display d;
        d.order = spectrum.derivative_order;
        d.screen_derivative = &spectrum.screen_derivative;
        d.high = spectrum.derivative_high;
        d.low = spectrum.derivative_low;
        return d;
    };

    auto& h = link_ctx.hooks;
    h.spectrum_show_base_line = [this](std::int32_t raw) { show_base_line(raw); };
    h.spectrum_show_data = [this](std::int32_t raw) { show_data(raw); };
    h.spectrum_in_sample_pass = [] { return spectrum.scan_kind != 0; };
    h.spectrum_start_lambda = [] { return spectrum_setup.start_lambda; };

    // Form load
    set_form_visible(true);
    clear_form();
    init();
    init_data_area();
    hide_tracks();
}

frmSpectrum::~frmSpectrum() {
    auto& h = link_ctx.hooks;
    h.spectrum_show_base_line = nullptr;
    h.spectrum_show_data = nullptr;
    h.spectrum_in_sample_pass = nullptr;
    h.spectrum_start_lambda = nullptr;
}

axes_text frmSpectrum::axes() const {
    return spectrum_axes(spectrum_setup.percent_t());
}

void frmSpectrum::show_table(int index) {
    show_only_frame(frames_, index);
}

void frmSpectrum::hide_tracks() {
    tracking_->set_track(false);
}

void frmSpectrum::set_track(bool visible) {
    tracking_->set_track(visible);
}

void frmSpectrum::set_form_visible(bool visible) {
    function_window::set_form_visible(visible);
    tabs_->setVisible(visible);
    labels_[0]->setVisible(visible);
    labels_[1]->setVisible(visible);
    frames_[0]->setVisible(visible);
    frames_[1]->setVisible(false);
    frames_[2]->setVisible(false);
}

void frmSpectrum::init() {
    spectrum_init();
    tables_[0]->setCols(3);
}

void frmSpectrum::init_data_area() {
    for (grid* g : tables_) {
        g->Clear();
        if (g->Rows() < 1) g->setRows(1);
        if (g->Cols() < 3) g->setCols(3);
        for (int c = 0; c < g->Cols(); ++c)
            g->setColWidth(c, 100);
        g->setTextMatrix(0, 0, QStringLiteral("No."));
        g->setTextMatrix(0, 1, QStringLiteral("Lambda"));
        g->setTextMatrix(0, 2, QStringLiteral("Value"));
    }
}

void frmSpectrum::draw_frame() {
    draw_axes(*surface_, spectrum.view, axes());
    derivative_shown_ = 0;
    tracking_->set_config(spectrum_tracking(spectrum_setup.percent_t()));
    tracking_->reset_readout(spectrum_setup.start_lambda);
    describe_plot();
}

void frmSpectrum::describe_plot() {
    plot_legend legend;
    legend.function = QString::fromLatin1(entry().caption);
    legend.x_unit = QStringLiteral("nm");
    legend.y_unit = spectrum_setup.percent_t() ? QStringLiteral("%T") : QStringLiteral("ABS");
    legend.y_format = axes().y_format;
    legend.curves = spectrum.curve_count;
    for (int s = 1; s <= spectrum.curve_count && s <= max_curves; ++s) {
        const int state = spectrum.curve_state[static_cast<std::size_t>(s)];
        if (state == 1 || state == 2) ++legend.shown;
        if (state == 2) legend.active = s;
    }
    legend.derivative_order = derivative_shown_;
    lumora::describe_plot(*surface_, spectrum.view, legend);
}

void frmSpectrum::zoom_data() {
    std::vector<curve_data> curves;
    int active = -1;
    for (int s = 1; s <= spectrum.curve_count; ++s) {
        const int state = spectrum.curve_state[static_cast<std::size_t>(s)];
        if (state != 1 && state != 2) continue;
        if (state == 2) active = static_cast<int>(curves.size());
        curves.push_back(baseline_curve(s));
    }
    // The redraw clears the whole surface, the derivative window too: a derivative is painted
    // again only by its button, so the lower plot never shows a curve that has gone.
    lumora::zoom_data(*surface_, spectrum.view, axes(), curves, active);
    derivative_shown_ = 0;
    tracking_->set_config(spectrum_tracking(spectrum_setup.percent_t()));
    tracking_->reset_readout(spectrum_setup.start_lambda);
    init_data_area();
    describe_plot();
}

void frmSpectrum::clear_form() {
    if (main_hooks.toolbar_enable_function) main_hooks.toolbar_enable_function();
    spectrum.curve_count = 0;
    clear_array();
    init_data_area();
    init();
    draw_frame();
}

void frmSpectrum::curve_check() {
    // Single-curve mode: each Read replaces curve 1.
    if (spectrum_setup.overlay_screen != 0) return;
    spectrum.curve_count = 0;
    for (auto& row : shared.baseline_curves)
        row[1] = 0;
    draw_frame();
}

bool frmSpectrum::has_data() const {
    return spectrum.curve_count > 0;
}

void frmSpectrum::read_base_line() {
    init();
    spectrum.scan_kind = 0;
    draw_frame();
    set_target_lambda(spectrum_setup.start_lambda);
    shared.scan_start_lambda = spectrum.scan_first_nm;
    shared.scan_end_lambda = spectrum.scan_last_nm;
    shared.scan_speed = spectrum_setup.scan_speed;
    begin_exchange();
    send_message(cmd_scan_baseline_range);
    set_panel(2, QStringLiteral("0.000A"));
    hide_tracks();
    // Stop stays live: a reply lost on the line would otherwise leave the window scanning.
    if (main_hooks.toolbar_enable_stop) main_hooks.toolbar_enable_stop();
}

void frmSpectrum::read() {
    if (main_hooks.toolbar_disable_function) main_hooks.toolbar_disable_function();
    init_data_area();
    init();
    zoom_cursor(spectrum.view, spectrum_setup.percent_t());
    zoom_data();
    spectrum.view.zoomed = false;
    init();
    spectrum.scan_kind = -1;
    if (spectrum.curve_count >= max_curves) clear_form(); // the 21st scan starts an empty window
    if (spectrum.curve_count > 1)
        for (auto& state : spectrum.curve_state)
            if (state == 2) state = 1;
    ++spectrum.curve_count;
    spectrum.curve_state[static_cast<std::size_t>(spectrum.curve_count)] = 2;
    set_target_lambda(spectrum_setup.start_lambda);
    shared.scan_start_lambda = spectrum.scan_first_nm;
    shared.scan_end_lambda = spectrum.scan_last_nm;
    shared.scan_speed = spectrum_setup.scan_speed;
    begin_exchange();
    send_message(cmd_scan_sample);
    hide_tracks();
    if (main_hooks.toolbar_enable_stop) main_hooks.toolbar_enable_stop();
}

void frmSpectrum::show_base_line(std::int32_t raw) {
    const int w = spectrum.scan_count + spectrum.scan_first_nm;
    shared.net_signal = raw;
    if (w >= first_index_nm) {
        if (w - first_index_nm >= wavelength_points) throw run_fault{"index out of range"};
        shared.baseline_curves[static_cast<std::size_t>(w - first_index_nm)][0] = raw;
    }
    ++spectrum.scan_count;
    const plot_view& v = spectrum.view;
    double shown = w;
    if (shown < v.view_start) shown = spectrum_setup.start_lambda;
    if (shown > v.view_stop) shown = spectrum_setup.stop_lambda;
    set_panel(1, format_text(shown, "###0nm"));
    if (spectrum.scan_count > spectrum.scan_total) {
        shared.lambda_now = spectrum.view.view_stop;
        set_panel(1, format_text(shared.lambda_now, "###0nm"));
        set_panel(6, QStringLiteral("OK"));
        finish_scan();
    }
}

void frmSpectrum::show_data(std::int32_t raw) {
    const SpectrumSetup& s = spectrum_setup;
    // The instrument also sends scan_last_nm; the sample pass has ended one point before it, and
    // a finished curve is never written again.
    if (fix(static_cast<double>(spectrum.scan_total) / spectrum.scan_step) <= spectrum.scan_count) return;
    const int w = spectrum.scan_step * spectrum.scan_count + spectrum.scan_first_nm;
    const std::int32_t dark = dark_for_nm(w);
    shared.net_signal = raw - dark;
    const int column = spectrum.curve_count;
    if (w >= first_index_nm) {
        const int p = w - first_index_nm;
        if (p >= wavelength_points || column < 1 || column > max_curves)
            throw run_fault{"index out of range"};
        const double value =
            convert_sample(raw, dark, shared.baseline_curves[static_cast<std::size_t>(p)][0], s.percent_t());
        shared.baseline_curves[static_cast<std::size_t>(p)][static_cast<std::size_t>(column)] = value;
        spectrum.org_curves[static_cast<std::size_t>(p)][static_cast<std::size_t>(column)] = value;
    }
    ++spectrum.scan_count;
    lumora::draw_data(*surface_, spectrum.view, baseline_curve(column, last_stored_nm()));
    surface_->update();

    const plot_view& v = spectrum.view;
    double column_nm = v.view_start + v.plot_column * v.view_span / 280.0;
    if (column_nm < s.start_lambda) column_nm = s.start_lambda;
    if (column_nm > s.stop_lambda) column_nm = s.stop_lambda;
    set_panel(1, format_text(column_nm, "###0nm"));
    if (w >= s.start_lambda && w <= s.stop_lambda && w >= first_index_nm) {
        const double value = shared.baseline_curves[static_cast<std::size_t>(w - first_index_nm)]
                                                   [static_cast<std::size_t>(column)];
        set_panel(2, s.percent_t() ? format_text(value, "##0.000") + QStringLiteral("%T")
                                   : format_text(value, "#0.0000") + QStringLiteral("A"));
    }
    if (fix(static_cast<double>(spectrum.scan_total) / spectrum.scan_step) <= spectrum.scan_count) {
        shared.lambda_now = s.stop_lambda;
        set_panel(1, format_text(shared.lambda_now, "###0nm"));
        set_panel(6, QStringLiteral("OK"));
        finish_scan();
    }
}

void frmSpectrum::finish_scan() {
    const SpectrumSetup& s = spectrum_setup;
    spectrum.active_curve = static_cast<std::int16_t>(spectrum.curve_count - 1);
    if (s.auto_zoom == 1) {
        zoom_auto(spectrum.view, s.percent_t());
        zoom_data();
    }
    if (s.auto_peak == 1) search_peak();
    if (s.auto_valley == 1) search_valley();
    shared.lambda_now = s.stop_lambda;
    shared.measure_mode = mm_lambda_panel;
    set_track(true);
    describe_plot();
    // Back to the state of holding curves: the toolbar of the function is live again.
    if (main_hooks.toolbar_enable_for) main_hooks.toolbar_enable_for(fid_spectrum);
}

QDialog* frmSpectrum::make_setup_dialog(QWidget* parent) {
    auto* dlg = new dlgSpectrum(parent);
    dlg->setAttribute(Qt::WA_DeleteOnClose);
    connect(dlg, &dlgSpectrum::setup_changed, this, &frmSpectrum::clear_form);
    connect(dlg, &dlgSpectrum::clear_requested, this, &frmSpectrum::clear_form);
    return dlg;
}

void frmSpectrum::run(toolbar_routine routine) {
    function_window::run(routine);
    try {
        switch (routine) {
        case toolbar_routine::read:
            read();
            break;
        case toolbar_routine::read_base_line:
            read_base_line();
            break;
        case toolbar_routine::zoom_auto:
            zoom_auto(spectrum.view, spectrum_setup.percent_t());
            zoom_data();
            break;
        case toolbar_routine::zoom_original:
            init();
            zoom_cursor(spectrum.view, spectrum_setup.percent_t());
            copy_org_data();
            zoom_data();
            spectrum.view.zoomed = false;
            break;
        case toolbar_routine::peak:
            search_peak();
            search_valley();
            break;
        case toolbar_routine::smooth: {
            auto* dlg = new frmPopup([this](int points) { smooth(points); }, window());
            dlg->setAttribute(Qt::WA_DeleteOnClose);
            dlg->setWindowModality(Qt::WindowModal);
            dlg->show();
            break;
        }
        case toolbar_routine::derivative: {
            auto* dlg = new frmDerv([this](int order) { derivative(order); }, window());
            dlg->setAttribute(Qt::WA_DeleteOnClose);
            dlg->setWindowModality(Qt::WindowModal);
            dlg->show();
            break;
        }
        case toolbar_routine::scan_add: {
            auto* dlg = new frmAdvance(
                [this] {
                    zoom_data();
                    zoom_auto(spectrum.view, spectrum_setup.percent_t());
                    zoom_data();
                },
                window());
            dlg->setAttribute(Qt::WA_DeleteOnClose);
            dlg->setWindowModality(Qt::WindowModal);
            dlg->show();
            break;
        }
        case toolbar_routine::zoom_dialog: {
            auto* dlg = new dlgZoom(
                spectrum.view,
                spectrum_zoom_fields(spectrum_setup.percent_t(), spectrum_setup.start_lambda,
                                     spectrum_setup.stop_lambda),
                [this] { zoom_data(); }, window());
            dlg->setAttribute(Qt::WA_DeleteOnClose);
            dlg->setWindowModality(Qt::WindowModal);
            dlg->show();
            break;
        }
        case toolbar_routine::color: {
            color_hooks hooks;
            hooks.zoom_data = [this] { zoom_data(); };
            hooks.clear_array = [] { clear_array(); };
            auto* dlg = new frmColor(spectrum.curve_state, spectrum.curve_count, spectrum.active_curve, hooks,
                                     window());
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

// ---- Peak and valley search ----

namespace {

processing::search_setup search_parameters() {
    processing::search_setup p;
    p.threshold = processing::search_threshold(spectrum_setup.percent_t());
    p.half_width = processing::search_half_width(spectrum_setup.start_lambda, spectrum_setup.stop_lambda);
    p.view_start = spectrum.view.view_start;
    p.view_span = spectrum.view.view_span;
    const double high = spectrum.view.view_high, low = spectrum.view.view_low;
    p.row_of = [high, low](double value) { return y_to_pixel(value, high, low); };
    return p;
}

// Boxes on the plot and rows in the table, as the search found them.
std::int16_t show_finds(plot_surface& surface, grid& table, const processing::search_result& r, int color) {
    table.Clear();
    table.setRows(1);
    table.setTextMatrix(0, 0, QStringLiteral("No."));
    table.setTextMatrix(0, 1, QStringLiteral("Lambda"));
    table.setTextMatrix(0, 2, QStringLiteral("Value"));
    const char* value_format = spectrum_setup.percent_t() ? "#0.000" : "#0.0000";
    for (int k = 0; k < r.boxes; ++k) {
        const auto& f = r.finds[static_cast<std::size_t>(k)];
        const int x = plot_left + f.column;
        surface.box(QRect(QPoint(x - 2, f.row - 2), QPoint(x + 2, f.row + 2)), standard_color(color));
        if (k >= r.count) break;
        table.AddItem(QStringLiteral("  V%1\t%2\t%3")
                          .arg(k + 1)
                          .arg(format_text(f.lambda, "###0.00nm"))
                          .arg(format_text(f.value, value_format)));
    }
    surface.update();
    return r.count;
}

} // namespace

void frmSpectrum::search_peak() {
    const auto r =
        processing::search_peak(spectrum.view.screen_curve, search_parameters(), spectrum.peak_marks);
    spectrum.peak_count = show_finds(*surface_, *tables_[1], r, 9);
}

void frmSpectrum::search_valley() {
    const auto r =
        processing::search_valley(spectrum.view.screen_curve, search_parameters(), spectrum.valley_marks);
    spectrum.valley_count = show_finds(*surface_, *tables_[2], r, 13);
}

void frmSpectrum::table_row_click(int table, int row) {
    processing::mark* marks = nullptr;
    int count = 0;
    switch (table) {
    case 0:
        marks = spectrum.tracks.track_marks.data();
        count = spectrum.tracks.track_count;
        break;
    case 1:
        marks = spectrum.peak_marks.data();
        count = spectrum.peak_count;
        break;
    case 2:
        marks = spectrum.valley_marks.data();
        count = spectrum.valley_count;
        break;
    default:
        return;
    }
    toggle_mark_row(*tables_[static_cast<std::size_t>(table)], marks, count, row, false);
}

// ---- Smoothing and derivatives ----

void frmSpectrum::smooth(int points) {
    const int column = spectrum.active_curve + 1;
    const bool done = points == 9 ? processing::Smooth9Point(shared.baseline_curves, column,
                                                             spectrum.scan_first_nm, spectrum.scan_last_nm)
                                  : processing::Smooth17Point(shared.baseline_curves, column,
                                                              spectrum.scan_first_nm, spectrum.scan_last_nm);
    if (done) zoom_data();
}

void frmSpectrum::derivative(int order) {
    zoom_data();
    spectrum.derivative_order = static_cast<std::int16_t>(order);
    using kernel = bool (*)(const processing::curve_array&, int, int, int, processing::point_array&);
    static constexpr kernel kernels[4] = {processing::Derivate17Point1st, processing::Derivate17Point2nd,
                                          processing::Derivate17Point3rd, processing::Derivate17Point4th};
    if (order < 1 || order > 4) return;
    if (kernels[order - 1](shared.baseline_curves, spectrum.active_curve + 1, spectrum.scan_first_nm,
                           spectrum.scan_last_nm, spectrum.derivative_curve))
        DerivateDrawData();
}

void frmSpectrum::DerivateDrawData() {
    const SpectrumSetup& s = spectrum_setup;
    update_span(spectrum.view);
    grid& track = *tables_[0];
    if (track.Cols() < 4) track.setCols(4);
    track.setColWidth(3, 100);
    track.setTextMatrix(0, 3, QStringLiteral("D-Value"));
    // The range over the setup's wavelengths, each extreme starting from the first of them.
    const int first = cint(s.start_lambda) - first_index_nm, last = cint(s.stop_lambda) - first_index_nm;
    if (first < 0 || last >= wavelength_points || first > last) return;
    double largest = spectrum.derivative_curve[static_cast<std::size_t>(first)], smallest = largest;
    for (int p = first; p <= last; ++p) {
        largest = std::max(largest, spectrum.derivative_curve[static_cast<std::size_t>(p)]);
        smallest = std::min(smallest, spectrum.derivative_curve[static_cast<std::size_t>(p)]);
    }
    const double least = s.percent_t() ? 0.01 : 0.001;
    if (largest - smallest < least) {
        largest += least / 2;
        smallest -= least / 2;
    }
    spectrum.derivative_high = largest + (largest - smallest) / 100;
    spectrum.derivative_low = smallest - (largest - smallest) / 100;

    derivative_axes d;
    d.order = spectrum.derivative_order;
    d.high = spectrum.derivative_high;
    d.low = spectrum.derivative_low;
    d.y_caption = s.percent_t() ? QStringLiteral("(%T)") : QStringLiteral("(ABS)");
    d.y_format = s.percent_t() ? "#0.000" : "#0.0000";
    draw_derivative_window(*surface_, spectrum.view, d, axes());
    curve_data curve;
    curve.value_at = [](int nm) {
        const int p = nm - first_index_nm;
        return p < 0 || p >= wavelength_points ? 0.0 : spectrum.derivative_curve[static_cast<std::size_t>(p)];
    };
    curve.first_valid_x = first_index_nm;
    curve.color = curve_color(spectrum.active_curve + 1);
    draw_derivative_curve(*surface_, spectrum.view, curve, spectrum.screen_derivative,
                          spectrum.derivative_high, spectrum.derivative_low);
    labels_[1]->clear();
    // linTrack(2) goes in where the cross-hair stands; the cross-hair itself stays put.
    tracking_->show_derivative_line();
    derivative_shown_ = spectrum.derivative_order;
    describe_plot();
    surface_->update();
}

} // namespace lumora
