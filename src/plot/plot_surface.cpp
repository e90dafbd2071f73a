#include "plot_surface.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <cstdlib>

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

QPen line_pen(const QColor& color, Qt::PenStyle style) {
    QPen pen(color);
    pen.setWidthF(1.0);
    pen.setCapStyle(Qt::SquareCap);
    pen.setJoinStyle(Qt::MiterJoin);
    pen.setStyle(style);
    return pen;
}

// The line through the centres of two logical pixels.
QLineF centre_line(int x1, int y1, int x2, int y2) {
    return QLineF(QPointF(x1 + 0.5, y1 + 0.5), QPointF(x2 + 0.5, y2 + 0.5));
}

// A line through the centres of two logical pixels, one logical pixel wide, both end pixels
// included (square caps reach half a pixel beyond each centre). A line of no length is its pixel.
void draw_pixel_line(QPainter& p, int x1, int y1, int x2, int y2, const QColor& color, Qt::PenStyle style) {
    if (x1 == x2 && y1 == y2) {
        p.fillRect(QRectF(x1, y1, 1, 1), color);
        return;
    }
    p.setPen(line_pen(color, style));
    p.drawLine(centre_line(x1, y1, x2, y2));
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

// ---- Lines by their shape ----------------------------------------------------------------------
//
// The painter rasterises a line from its end points in device coordinates; moved by whole device
// pixels, a line keeps exactly the same pixels. So each shape (the run and rise between the two
// end pixels) is drawn by the painter once, on a scratch image, and its pixels are kept as spans
// relative to the start pixel. A line of that shape anywhere on the image is then those spans
// filled with the colour's pixel value, which the painter itself produced on the line before.

namespace {

constexpr int shape_limit = 1024; // shapes wider or taller than this go to the painter

int shape_key(int dx, int dy) {
    return (dx + shape_limit) * (2 * shape_limit + 1) + (dy + shape_limit);
}

} // namespace

const plot_surface::line_shape* plot_surface::shape_of(const QLine& l) {
    const int dx = l.dx(), dy = l.dy();
    if (std::abs(dx) >= shape_limit || std::abs(dy) >= shape_limit) return nullptr;
    const int key = shape_key(dx, dy);
    // A curve asks for a shape per column: the last shapes stand in a small table by key first.
    recent_shape& recent = recent_shapes_[static_cast<std::size_t>(key) % recent_shapes_.size()];
    if (recent.shape && recent.key == key) return recent.shape;
    const auto [it, fresh] = shapes_.try_emplace(key);
    line_shape& shape = it->second;
    recent = {key, &shape};
    if (!fresh) return &shape;
    // A margin of two logical pixels keeps the line and its caps off the scratch image's edges.
    constexpr int margin = 2;
    const int sx = margin + std::max(0, -dx), sy = margin + std::max(0, -dy);
    QImage scratch(QSize(std::abs(dx) + 2 * margin + 1, std::abs(dy) + 2 * margin + 1) *
                       static_cast<int>(device_ratio),
                   QImage::Format_ARGB32_Premultiplied);
    scratch.setDevicePixelRatio(device_ratio);
    scratch.fill(Qt::transparent);
    {
        QPainter p(&scratch);
        setup_painter(p, font_);
        draw_pixel_line(p, sx, sy, sx + dx, sy + dy, Qt::black, Qt::SolidLine);
    }
    const int ox = sx * static_cast<int>(device_ratio), oy = sy * static_cast<int>(device_ratio);
    for (int y = 0; y < scratch.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(scratch.constScanLine(y));
        for (int x = 0; x < scratch.width();) {
            if (row[x] == 0) {
                ++x;
                continue;
            }
            const int from = x;
            while (x < scratch.width() && row[x] != 0)
                ++x;
            shape.spans.push_back({y - oy, from - ox, x - from});
            shape.bounds |= QRect(from - ox, y - oy, x - from, 1);
        }
    }
    return &shape;
}

std::optional<QRgb> plot_surface::known_pixel(const QColor& color) const {
    for (const auto& [known, value] : known_pixels_)
        if (known == color && known.isValid()) return value;
    return std::nullopt;
}

void plot_surface::set_line_shapes(bool enabled) {
    shapes_enabled_ = enabled;
}

void plot_surface::lines(std::span<const QLine> segments, const QColor& color) {
    if (segments.empty()) return;
    if (!shapes_enabled_) {
        for (const QLine& l : segments)
            line(l.x1(), l.y1(), l.x2(), l.y2(), color);
        return;
    }
    QPainter& p = painter();
    // Lines the painter draws itself wait here, so that all lines still land in their order.
    constexpr int chunk = 64;
    std::array<QLineF, chunk> pending;
    int n = 0;
    bool pen_set = false;
    const auto flush = [&] {
        if (n == 0) return;
        if (!pen_set) p.setPen(line_pen(color, Qt::SolidLine));
        pen_set = true;
        p.drawLines(pending.data(), n);
        n = 0;
    };
    // Only an opaque colour paints the same pixel value whatever lies beneath.
    const bool copy_shapes = color.alpha() == 255;
    std::optional<QRgb> value = known_pixel(color); // the colour's pixel, as the painter wrote it
    constexpr int ratio = static_cast<int>(device_ratio);
    // A copied shape stays two device pixels inside the image, where the painter never clips.
    const int inside_right = image_.width() - 3, inside_bottom = image_.height() - 3;
    uchar* const bits = image_.bits();
    const qsizetype stride = image_.bytesPerLine();
    const auto pixel = [&](int x, int y) -> QRgb& { return reinterpret_cast<QRgb*>(bits + y * stride)[x]; };
    int left = segments[0].x1(), right = left, top = segments[0].y1(), bottom = top;
    for (const QLine& l : segments) {
        left = std::min({left, l.x1(), l.x2()});
        right = std::max({right, l.x1(), l.x2()});
        top = std::min({top, l.y1(), l.y2()});
        bottom = std::max({bottom, l.y1(), l.y2()});
        if (l.p1() == l.p2()) {
            flush();
            p.fillRect(QRectF(l.x1(), l.y1(), 1, 1), color);
            continue;
        }
        const line_shape* shape = copy_shapes ? shape_of(l) : nullptr;
        const int ox = l.x1() * ratio, oy = l.y1() * ratio;
        if (shape && shape->spans.empty()) shape = nullptr; // nothing to copy a pixel value from
        if (shape) {
            const QRect& b = shape->bounds;
            if (ox + b.left() < 2 || oy + b.top() < 2 || ox + b.right() > inside_right ||
                oy + b.bottom() > inside_bottom)
                shape = nullptr;
        }
        if (shape && value) {
            flush();
            for (const shape_span& s : shape->spans)
                std::fill_n(&pixel(ox + s.x, oy + s.row), s.length, *value);
            continue;
        }
        pending[static_cast<std::size_t>(n++)] = centre_line(l.x1(), l.y1(), l.x2(), l.y2());
        if (shape) {
            // The first line of the colour: the painter draws it and shows its pixel value.
            flush();
            const shape_span& s = shape->spans.front();
            value = pixel(ox + s.x, oy + s.row);
            known_pixels_[next_known_++ % known_pixels_.size()] = {color, *value};
        }
        if (n == chunk) flush();
    }
    flush();
    done_painting(QRect(QPoint(left, top), QPoint(right, bottom)));
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
