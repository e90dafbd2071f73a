#include "frmVerify.h"

#include "link/command_ring.h"
#include "link/link_context.h"
#include "link/photometric.h"
#include "link/protocol.h"
#include "link/shared_state.h"
#include "platform/numeric_text.h"
#include "plot/curve_drawing.h"
#include "plot/palette.h"
#include "plot/plot_surface.h"

#include <QCloseEvent>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>

namespace lumora {
namespace {

// Plot limits: x is the point index 0..78, y the signal in volts, 2^23 counts being 2.5 V.
constexpr double verify_high_volts = 2.5;
constexpr double counts_per_full_scale = 8388608.0;
// Panel 2 reads the signal in %I: 2.5 V is 100 %I.
constexpr double percent_per_volt = 40;
// The dashed markers: 10 pixels per nanometre from the left edge of the plot square.
constexpr int pixels_per_nm = 10;
constexpr int marker_top = 25;
constexpr int text_rows[3] = {340, 355, 370};

// The window the decoder's hook reaches: one closed late must not unhook its successor.
const frmVerify* hooked = nullptr;

axes_text verify_axes() {
    axes_text t;
    t.y_caption = QStringLiteral("(V)");
    t.x_caption = QStringLiteral("Point");
    t.y_format = "#0.00";
    t.x_format = "###0.0";
    t.round_x_labels = false;
    return t;
}

double offset_nm(int point) {
    return point * verify_step_nm - 14.04;
}

// A dashed vertical line of 5-pixel dashes and 5-pixel gaps.
void dashed_line(plot_surface& s, int x, int top, int bottom, const QColor& color) {
    for (int y = top; y <= bottom; y += 10)
        s.line(x, y, x, std::min(y + 4, bottom), color);
}

} // namespace

frmVerify::frmVerify(const function_entry& entry, QWidget* parent) : function_window(entry, parent) {
    surface_ = new plot_surface(QSize(400, 390));
    surface_->setObjectName(QStringLiteral("picVerify"));
    surface_->setAccessibleName(QStringLiteral("Bandwidth plot"));
    scroll_ = new QScrollArea(this);
    scroll_->setObjectName(QStringLiteral("picScroll"));
    scroll_->setWidget(surface_);
    scroll_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(scroll_);

    link_ctx.hooks.verify_show_data = [this](std::int32_t raw) { show_data(raw); };
    hooked = this;

    // Form load (the main window puts the toolbar in its 656 state)
    lambda_before_ = shared.lambda_now;
    set_form_visible(true);
    set_plot_limits();
    init_verify();
    setWindowTitle(QStringLiteral("Verify Bandwidth"));
}

frmVerify::~frmVerify() {
    if (hooked != this) return;
    link_ctx.hooks.verify_show_data = nullptr;
    hooked = nullptr;
}

void frmVerify::set_plot_limits() {
    init_view(view_, 0, verify_last_point, verify_high_volts, 0);
}

void frmVerify::init_verify() {
    verify_points_ = 0;
    verify_raw_.fill(0);
    verify_curve_.fill(0);
    result_.reset();
    draw_axes(*surface_, view_, verify_axes());
    view_.plot_column = 0;
    view_.draw_position = 0;
    surface_->setAccessibleDescription(QStringLiteral("Points 0 to 78, 0.00 to 2.50 V. No scan."));
}

void frmVerify::run(toolbar_routine routine) {
    function_window::run(routine);
    if (routine == toolbar_routine::read_656) read_656();
}

void frmVerify::read_656() {
    if (main_hooks.toolbar_disable_function) main_hooks.toolbar_disable_function();
    set_plot_limits();
    init_verify();
    begin_exchange();
    send_message(cmd_scan_bandwidth);
    set_panel(6, QStringLiteral("Measuring bandwidth..."));
}

void frmVerify::show_data(std::int32_t intensity) {
    const int n = verify_points_;
    if (n >= 0 && n < verify_curve_size) {
        verify_curve_[static_cast<std::size_t>(n)] = intensity * verify_high_volts / counts_per_full_scale;
        if (n >= verify_raw_size) throw run_fault{"index out of range"};
        verify_raw_[static_cast<std::size_t>(n)] = intensity;
    }
    draw_data();
    verify_points_ = static_cast<std::int16_t>(n + 1);
    set_panel(1, format_text(offset_nm(n), "0.0nm"));
    const double volts = n >= 0 && n < verify_curve_size ? verify_curve_[static_cast<std::size_t>(n)] : 0.0;
    set_panel(2, format_text(volts * percent_per_volt, "##0.000") + QStringLiteral("%I"));
    if (verify_points_ > verify_last_point) {
        // The instrument stands at the end of the scan; closing the window puts the wavelength back.
        shared.lambda_now = verify_last_point;
        show_bandwidth();
        if (!result_) throw run_fault{"division by zero"};
        if (main_hooks.toolbar_enable_for) main_hooks.toolbar_enable_for(fid_verify);
        set_panel(6, QStringLiteral("OK..."));
    }
}

void frmVerify::draw_data() {
    curve_data curve;
    curve.value_at = [this](int x) {
        return x >= 0 && x < verify_curve_size ? verify_curve_[static_cast<std::size_t>(x)] : 0.0;
    };
    curve.first_valid_x = 0;
    // During the scan the curve waits for the points to its right; the last point ends the scan,
    // so the stretches up to it are painted then.
    curve.last_stored_x = verify_points_ >= verify_last_point ? verify_last_point + 2 : verify_points_;
    curve.color = curve_color(1);
    lumora::draw_data(*surface_, view_, curve);
}

void frmVerify::show_bandwidth() {
    result_ = evaluate_bandwidth(verify_raw_);
    if (!result_) return; // the evaluation fault: no markers, no texts
    const bandwidth_result& r = *result_;
    plot_surface::batch batch(*surface_);
    for (double x : {r.left_nm, r.right_nm})
        dashed_line(*surface_, plot_left + cint(pixels_per_nm * x), marker_top, plot_bottom, Qt::black);
    const QString texts[3] = {
        QStringLiteral("Lambda(1)=") + format_text(-r.width / 2, "0.00") + QStringLiteral(" nm"),
        QStringLiteral("Lambda(2)=") + format_text(r.width / 2, "0.00") + QStringLiteral(" nm"),
        QStringLiteral("Bandwidth=") + format_text(r.width, "0.00") + QStringLiteral(" nm")};
    for (int i = 0; i < 3; ++i)
        surface_->text(plot_left, text_rows[i], texts[i]);
    surface_->setAccessibleDescription(texts[0] + QStringLiteral(". ") + texts[1] + QStringLiteral(". ") +
                                       texts[2] + QStringLiteral("."));
}

void frmVerify::closeEvent(QCloseEvent* event) {
    Form_Unload();
    function_window::closeEvent(event);
}

void frmVerify::Form_Unload() {
    shared.function_id = fid_no_function;
    set_panel(6, QStringLiteral("Running to previous position..."));
    shared.lambda_now = lambda_before_;
    shared.lambda_now_int = static_cast<std::int16_t>(fits_int16(lambda_before_) ? cint(lambda_before_) : 0);
    begin_exchange();
    shared.measure_mode = mm_lambda_panel;
    send_message(cmd_goto_lambda);
    if (main_hooks.toolbar_enable_function) main_hooks.toolbar_enable_function();
    if (link_ctx.hooks.enable_menus) link_ctx.hooks.enable_menus(true);
}

} // namespace lumora
