#include "plot_tracking.h"

#include "palette.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "plot_scaling.h"
#include "plot_surface.h"
#include "zoom.h"

#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <algorithm>

namespace lumora {
namespace {

// Overlay ids of the cross-hair: linTrack(0), linTrack(1), linTrack(2).
constexpr int vertical_line = 0, horizontal_line = 1, derivative_line = 2;

QLine vertical_at(int x) {
    return QLine(x, plot_top, x, plot_bottom + 1);
}
QLine horizontal_at(int y) {
    return QLine(plot_left, y, plot_right + 1, y);
}
QLine derivative_at(int x) {
    return QLine(x, 350, x, 491);
}

// The band's corner may not come closer than 5 pixels to the right and bottom edges: room for the
// smallest rectangle.
QPoint clamp_to_band_start(QPoint p) {
    return QPoint(std::clamp(p.x(), plot_left, plot_right - 5), std::clamp(p.y(), plot_top, plot_bottom - 5));
}

bool inside_plot(QPoint p) {
    return p.x() >= plot_left && p.x() <= plot_right && p.y() >= plot_top && p.y() <= plot_bottom;
}

QPolygon track_triangle(int x, int y) {
    return QPolygon({QPoint(x, y), QPoint(x + 3, y - 7), QPoint(x - 3, y - 7)});
}

} // namespace

tracking_config spectrum_tracking(bool percent_t) {
    tracking_config c;
    if (percent_t) {
        c.idle_data = QStringLiteral("Data=100.000");
        c.band_value = "#0.000";
        c.data_value = "##0.000";
        c.cell_value = "#0.000";
    }
    return c;
}

plot_tracking::plot_tracking(plot_surface& surface, plot_view& view, grid& fgdTrack, QLabel& value0,
                             QLabel& value1, track_state& tracks, tracking_config config, QObject* parent)
    : QObject(parent), surface_(surface), view_(view), table_(fgdTrack), value0_(value0), value1_(value1),
      tracks_(tracks), config_(std::move(config)) {
    connect(&surface_, &plot_surface::mouse_pressed, this, &plot_tracking::mouse_down);
    connect(&surface_, &plot_surface::mouse_moved, this,
            [this](QPoint p, Qt::MouseButtons) { mouse_move(p); });
    connect(&surface_, &plot_surface::mouse_released, this, &plot_tracking::mouse_up);
    value0_.installEventFilter(this);
    value0_.setCursor(Qt::PointingHandCursor);
    // The read-out opens the input box from the keyboard too; a dotted frame shows the focus.
    value0_.setFocusPolicy(Qt::StrongFocus);
    value0_.setStyleSheet(QStringLiteral("QLabel { border: 1px solid transparent; }"
                                         "QLabel:focus { border: 1px dotted palette(text); }"));
    value0_.setAccessibleDescription(
        QStringLiteral("Cross-hair read-out. Press Enter to track a wavelength typed in."));
}

derivative_display plot_tracking::derivative() const {
    if (!hooks.derivative) return {};
    derivative_display d = hooks.derivative();
    if (!d.screen_derivative) d.order = 0;
    return d;
}

// ---- Cross-hair ---------------------------------------------------------------------------------

void plot_tracking::set_track(bool visible) {
    surface_.set_overlay_line(vertical_line, vertical_at(200), visible);
    surface_.set_overlay_line(horizontal_line, horizontal_at(160), visible);
    surface_.set_overlay_line(derivative_line, derivative_at(200), visible && derivative().order >= 1);
}

void plot_tracking::show_derivative_line() {
    int x = surface_.overlay_line(vertical_line).x1();
    if (x < plot_left || x > plot_right) x = 200;
    surface_.set_overlay_line(derivative_line, derivative_at(x), true);
}

void plot_tracking::reset_readout(double start_x) {
    value0_.setText(config_.idle_x_name + format_text(start_x, config_.x_readout) + config_.idle_data);
    value1_.clear();
}

// The cross-hair at column x (60..340): the vertical lines follow x, the horizontal line runs on
// the curve at that column, not at the mouse.
void plot_tracking::move_cross_hair(int x) {
    const std::size_t c = static_cast<std::size_t>(x - plot_left);
    const double value = view_.screen_curve[c];
    const int y = y_to_pixel(value, view_.view_high, view_.view_low);
    surface_.set_overlay_line(vertical_line, vertical_at(x), surface_.overlay_visible(vertical_line));
    surface_.set_overlay_line(horizontal_line, horizontal_at(y), surface_.overlay_visible(horizontal_line));
    surface_.set_overlay_line(derivative_line, derivative_at(x), surface_.overlay_visible(derivative_line));
    value0_.setText(config_.x_name + format_text(column_to_x(view_, x), config_.x_readout) +
                    QStringLiteral("Data= ") + format_text(value, config_.data_value));
    const derivative_display d = derivative();
    if (d.order >= 1)
        value1_.setText(QStringLiteral("Derivative Data= ") +
                        format_text((*d.screen_derivative)[c], config_.data_value));
}

// ---- Track rows ---------------------------------------------------------------------------------

void plot_tracking::add_track_row(int x, bool ask_at_limit) {
    if (tracks_.track_count >= track_limit && ask_at_limit) {
        const box_answer answer =
            prompts::message_box(QStringLiteral("Data number >100, restart from 1 ?"), box_icon::critical,
                                 QStringLiteral("Warning"), box_buttons::ok_cancel);
        if (answer == box_answer::cancel) {
            tracks_.track_count = track_limit;
            return;
        }
        tracks_.track_count = 0;
        table_.Clear();
        for (int i = 0; i < config_.heads.size(); ++i)
            table_.setTextMatrix(0, i, config_.heads[i]);
        if (hooks.track_restart) hooks.track_restart();
    }
    const int number = tracks_.track_count + 1;
    const std::size_t c = static_cast<std::size_t>(x - plot_left);
    const derivative_display d = derivative();
    const double value = view_.screen_curve[c];

    if (table_.Rows() < number + 1) table_.setRows(number + 1);
    if (d.order >= 1 && table_.Cols() < 4) {
        table_.setCols(4);
        table_.setTextMatrix(0, 3, config_.derivative_head);
    }
    const QString n = QString::number(number);
    table_.setTextMatrix(number, 0,
                         config_.number_first ? n + QStringLiteral("  V") : QStringLiteral("  V") + n);
    table_.setTextMatrix(number, 1, format_text(column_to_x(view_, x), config_.x_cell));
    table_.setTextMatrix(number, 2, format_text(value, config_.cell_value) + config_.cell_suffix);
    if (d.order >= 1)
        table_.setTextMatrix(
            number, 3, format_text((*d.screen_derivative)[c], config_.cell_value) + config_.cell_suffix);

    const int y = y_to_pixel(value, view_.view_high, view_.view_low);
    surface_.polygon(track_triangle(x, y), standard_color(8));
    const std::size_t k = static_cast<std::size_t>(tracks_.track_count);
    tracks_.track_marks[k] = {-1, static_cast<std::int16_t>(c), static_cast<std::int16_t>(y)};
    if (d.order >= 1) {
        const int dy = DerivateGetPixelY((*d.screen_derivative)[c], d.high, d.low);
        surface_.polygon(track_triangle(x, dy), standard_color(8));
        tracks_.derivative_track_marks[k] = {-1, static_cast<std::int16_t>(c), static_cast<std::int16_t>(dy)};
    }
    tracks_.track_count = static_cast<std::int16_t>(std::min(tracks_.track_count + 1, track_limit));
}

// ---- Mouse --------------------------------------------------------------------------------------

void plot_tracking::band_readout(QLabel& label, const char* x_name, const char* y_name, QPoint pos) {
    label.setText(QString::fromLatin1(x_name) + format_text(column_to_x(view_, pos.x()), config_.x_readout) +
                  QString::fromLatin1(y_name) +
                  format_text(row_to_value(view_, pos.y()), config_.band_value));
}

void plot_tracking::mouse_down(QPoint pos, Qt::MouseButton button) {
    if (is_locked()) return;
    if (button == Qt::LeftButton) {
        const QPoint p = clamp_to_band_start(pos);
        surface_.set_overlay_line(vertical_line, surface_.overlay_line(vertical_line), false);
        surface_.set_overlay_line(horizontal_line, surface_.overlay_line(horizontal_line), false);
        view_.zoom_rect.setLeft(p.x());
        view_.zoom_rect.setTop(p.y());
        surface_.set_rubber_band(QRect(p, QSize(6, 6)), true); // the smallest zoom rectangle
        band_readout(value0_, "X1=", "Y1=", p);
    } else if (button == Qt::RightButton) {
        add_track_row(clamp_to_band_start(pos).x(), true);
    }
}

void plot_tracking::mouse_move(QPoint pos) {
    if (is_locked() || !inside_plot(pos)) return;
    if (surface_.rubber_band_visible()) {
        band_readout(value1_, "X2=", "Y2=", pos);
        const QRect band = surface_.rubber_band();
        if (pos.x() >= band.left() + 5 && pos.y() >= band.top() + 5)
            surface_.set_rubber_band(
                QRect(band.topLeft(), QSize(pos.x() - band.left() + 1, pos.y() - band.top() + 1)), true);
        return;
    }
    move_cross_hair(pos.x());
}

void plot_tracking::mouse_up(QPoint pos, Qt::MouseButton button) {
    // Only the end of a drag that began on the plot makes a zoom.
    if (is_locked() || button != Qt::LeftButton || !surface_.rubber_band_visible()) return;
    const int x = std::clamp(pos.x(), plot_left, plot_right);
    const int y = std::clamp(pos.y(), plot_top, plot_bottom);
    value1_.clear();
    surface_.set_rubber_band(surface_.rubber_band(), false);
    QRect& r = view_.zoom_rect;
    r.setRight(x);
    r.setBottom(y);
    if (r.right() - r.left() < 5) r.setRight(r.left() + 5);
    if (r.bottom() - r.top() < 5) r.setBottom(r.top() + 5);
    if (hooks.zoom) hooks.zoom();
    surface_.set_overlay_line(vertical_line, surface_.overlay_line(vertical_line), true);
    surface_.set_overlay_line(horizontal_line, surface_.overlay_line(horizontal_line), true);
}

// ---- Typed wavelength ---------------------------------------------------------------------------

void plot_tracking::lblValue_Click() {
    if (is_locked()) return;
    const QString answer = prompts::input_box(config_.input_prompt, config_.input_title);
    if (answer.isEmpty()) return;
    const auto invalid = [] {
        prompts::message_box(QStringLiteral("Invalid input!"), box_icon::critical, QStringLiteral("Warning"));
    };
    bool ok = false;
    const double x_value = answer.trimmed().toDouble(&ok);
    if (!ok) return invalid();
    // The range test looks at the rounded number: 460.4 on a view that ends at 460 is inside.
    const int whole = cint(x_value);
    if (whole < view_.view_start || whole > view_.view_stop) return invalid();
    if (view_.view_nm_per_pixel <= 0) return;
    // A number inside by its rounding may lie a fraction beyond the view: it takes the edge column.
    const int x = std::clamp(cint((x_value - view_.view_start) / view_.view_nm_per_pixel + plot_left),
                             plot_left, plot_right);
    move_cross_hair(x);
    add_track_row(x, false);
}

bool plot_tracking::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &value0_ && event->type() == QEvent::MouseButtonRelease) {
        const auto* e = static_cast<QMouseEvent*>(event);
        if (e->button() == Qt::LeftButton && value0_.rect().contains(e->position().toPoint())) {
            lblValue_Click();
            return true;
        }
    }
    if (watched == &value0_ && event->type() == QEvent::KeyPress) {
        const auto* e = static_cast<QKeyEvent*>(event);
        if (e->modifiers() == Qt::NoModifier || e->modifiers() == Qt::KeypadModifier) {
            if (e->key() == Qt::Key_Return || e->key() == Qt::Key_Enter || e->key() == Qt::Key_Space) {
                lblValue_Click();
                return true;
            }
        }
    }
    return QObject::eventFilter(watched, event);
}

} // namespace lumora
