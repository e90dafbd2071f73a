#include "plot_surface.h"

#include <QMouseEvent>
#include <QPainter>
#include <cmath>

namespace lumora {
namespace {

constexpr qreal device_ratio = 2.0;

QFont make_plot_font() {
    // Small sans text: the label offsets of the plot assume a line of about 13 pixels, and a
    // label such as "100.000" must fit the 45 pixels left of the ticks.
    QFont f;
    f.setFamilies({QStringLiteral("DejaVu Sans Condensed"), QStringLiteral("DejaVu Sans")});
    f.setStyleHint(QFont::SansSerif);
    f.setPixelSize(11);
    return f;
}

// A line through the centres of two logical pixels, one logical pixel wide, both end pixels
// included (square caps reach half a pixel beyond each centre).
void draw_pixel_line(QPainter& p, int x1, int y1, int x2, int y2, const QColor& color, Qt::PenStyle style) {
    if (x1 == x2 && y1 == y2) {
        p.fillRect(QRectF(x1, y1, 1, 1), color);
        return;
    }
    QPen pen(color);
    pen.setWidthF(1.0);
    pen.setCapStyle(Qt::SquareCap);
    pen.setJoinStyle(Qt::MiterJoin);
    pen.setStyle(style);
    p.setPen(pen);
    p.drawLine(QPointF(x1 + 0.5, y1 + 0.5), QPointF(x2 + 0.5, y2 + 0.5));
}

void setup_painter(QPainter& p, const QFont& font) {
    p.setRenderHint(QPainter::Antialiasing, false);
    p.setRenderHint(QPainter::TextAntialiasing, true);
    p.setFont(font);
}

} // namespace

plot_surface::plot_surface(QSize logical_size, QWidget* parent)
    : QWidget(parent), logical_(logical_size),
      image_(logical_size * static_cast<int>(device_ratio), QImage::Format_ARGB32_Premultiplied),
      font_(make_plot_font()), metrics_(font_) {
    image_.setDevicePixelRatio(device_ratio);
    image_.fill(Qt::white);
    setFixedSize(logical_);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
}

plot_surface::~plot_surface() = default;

// ---- Painting on the image ------------------------------------------------------------------

QPainter& plot_surface::painter() {
    if (!painter_) {
        painter_ = std::make_unique<QPainter>(&image_);
        setup_painter(*painter_, font_);
    }
    return *painter_;
}

void plot_surface::done_painting(const QRect& touched) {
    dirty_ |= touched.adjusted(-1, -1, 1, 1);
    if (batch_depth_ > 0) return;
    painter_.reset();
    update(dirty_);
    dirty_ = QRect();
}

void plot_surface::begin_batch() {
    ++batch_depth_;
}

void plot_surface::end_batch() {
    if (batch_depth_ > 0 && --batch_depth_ == 0) {
        painter_.reset();
        if (!dirty_.isEmpty()) update(dirty_);
        dirty_ = QRect();
    }
}

void plot_surface::clear(const QColor& background) {
    if (painter_) {
        painter_->fillRect(QRectF(QPointF(0, 0), QSizeF(logical_)), background);
    } else {
        image_.fill(background);
    }
    done_painting(rect());
}

void plot_surface::line(int x1, int y1, int x2, int y2, const QColor& color, Qt::PenStyle style) {
    draw_pixel_line(painter(), x1, y1, x2, y2, color, style);
    done_painting(QRect(QPoint(x1, y1), QPoint(x2, y2)).normalized());
}

void plot_surface::box(const QRect& rect, const QColor& color) {
    QPainter& p = painter();
    const int l = rect.left(), t = rect.top(), r = rect.right(), b = rect.bottom();
    draw_pixel_line(p, l, t, r, t, color, Qt::SolidLine);
    draw_pixel_line(p, r, t, r, b, color, Qt::SolidLine);
    draw_pixel_line(p, r, b, l, b, color, Qt::SolidLine);
    draw_pixel_line(p, l, b, l, t, color, Qt::SolidLine);
    done_painting(rect);
}

void plot_surface::filled_box(const QRect& rect, const QColor& color) {
    painter().fillRect(QRectF(rect.left(), rect.top(), rect.width(), rect.height()), color);
    done_painting(rect);
}

void plot_surface::polygon(const QPolygon& points, const QColor& color) {
    QPainter& p = painter();
    for (qsizetype i = 0; i < points.size(); ++i) {
        const QPoint a = points[i];
        const QPoint b = points[(i + 1) % points.size()];
        draw_pixel_line(p, a.x(), a.y(), b.x(), b.y(), color, Qt::SolidLine);
    }
    done_painting(points.boundingRect());
}

void plot_surface::text(int x, int y, const QString& text, text_align align, const QColor& color) {
    const int w = text_width(text);
    int left = x;
    if (align == text_align::right) left = x - w;
    if (align == text_align::center) left = x - w / 2;
    QPainter& p = painter();
    p.setPen(color);
    p.drawText(QPointF(left, y + metrics_.ascent()), text);
    done_painting(QRect(left - 2, y, w + 4, metrics_.height()));
}

int plot_surface::text_width(const QString& text) const {
    return metrics_.horizontalAdvance(text);
}

int plot_surface::text_height() const {
    return metrics_.height();
}

// ---- Overlays ---------------------------------------------------------------------------------

void plot_surface::set_overlay_line(int id, const QLine& line, bool visible, const QColor& color) {
    if (id < 0 || id >= static_cast<int>(overlays_.size())) return;
    overlay& o = overlays_[static_cast<std::size_t>(id)];
    if (o.line == line && o.visible == visible && o.color == color) return;
    const auto area = [](const QLine& l) {
        return QRect(l.p1(), l.p2()).normalized().adjusted(-1, -1, 1, 1);
    };
    update(area(o.line) | area(line));
    o.line = line;
    o.visible = visible;
    o.color = color;
}

bool plot_surface::overlay_visible(int id) const {
    if (id < 0 || id >= static_cast<int>(overlays_.size())) return false;
    return overlays_[static_cast<std::size_t>(id)].visible;
}

QLine plot_surface::overlay_line(int id) const {
    if (id < 0 || id >= static_cast<int>(overlays_.size())) return {};
    return overlays_[static_cast<std::size_t>(id)].line;
}

void plot_surface::set_rubber_band(const QRect& rect, bool visible) {
    update(band_.adjusted(-1, -1, 1, 1) | rect.adjusted(-1, -1, 1, 1));
    band_ = rect;
    band_visible_ = visible;
}

void plot_surface::paint_overlays(QPainter& p) const {
    setup_painter(p, font_);
    for (const overlay& o : overlays_)
        if (o.visible)
            draw_pixel_line(p, o.line.x1(), o.line.y1(), o.line.x2(), o.line.y2(), o.color, Qt::SolidLine);
    if (band_visible_) {
        const int l = band_.left(), t = band_.top(), r = band_.right(), b = band_.bottom();
        const QColor c(Qt::black);
        draw_pixel_line(p, l, t, r, t, c, Qt::DotLine);
        draw_pixel_line(p, r, t, r, b, c, Qt::DotLine);
        draw_pixel_line(p, r, b, l, b, c, Qt::DotLine);
        draw_pixel_line(p, l, b, l, t, c, Qt::DotLine);
    }
}

QImage plot_surface::grab_view() const {
    QImage view = image_.copy();
    view.setDevicePixelRatio(device_ratio);
    QPainter p(&view);
    paint_overlays(p);
    return view;
}

QColor plot_surface::logical_pixel(int x, int y) const {
    const int dx = static_cast<int>(x * device_ratio), dy = static_cast<int>(y * device_ratio);
    if (dx < 0 || dy < 0 || dx >= image_.width() || dy >= image_.height()) return {};
    return image_.pixelColor(dx, dy);
}

void plot_surface::paintEvent(QPaintEvent* event) {
    QPainter p(this);
    p.setRenderHint(QPainter::SmoothPixmapTransform, true);
    p.drawImage(
        event->rect(), image_,
        QRectF(QPointF(event->rect().topLeft()) * device_ratio, QSizeF(event->rect().size()) * device_ratio));
    paint_overlays(p);
}

// ---- Mouse ------------------------------------------------------------------------------------

namespace {
QPoint logical_point(const QMouseEvent* event) {
    const QPointF p = event->position();
    return QPoint(static_cast<int>(std::floor(p.x())), static_cast<int>(std::floor(p.y())));
}
} // namespace

void plot_surface::mousePressEvent(QMouseEvent* event) {
    emit mouse_pressed(logical_point(event), event->button());
}

void plot_surface::mouseMoveEvent(QMouseEvent* event) {
    emit mouse_moved(logical_point(event), event->buttons());
}

void plot_surface::mouseReleaseEvent(QMouseEvent* event) {
    emit mouse_released(logical_point(event), event->button());
}

} // namespace lumora
