#include "report_page.h"

#include "platform/numeric_text.h"
#include "plot/palette.h"

#include <QLocale>
#include <QPagedPaintDevice>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace lumora {

namespace {

constexpr double twips_per_point = 20;
const QColor head_grey(208, 208, 208);

} // namespace

QFont report_font(int pixel_size) {
    QFont font;
    font.setFamilies({QStringLiteral("Times New Roman"), QStringLiteral("Liberation Serif"),
                      QStringLiteral("Tinos"), QStringLiteral("DejaVu Serif")});
    font.setStyleHint(QFont::Serif);
    // Positions come from the font's own design metrics, not from the pixel grid of one device.
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setPixelSize(std::max(1, pixel_size));
    return font;
}

report_page::report_page(double scale, report_flags flags, QDateTime now)
    : scale_(scale), k_(fix(scale * 16)), flags_(flags),
      date_time_(QLocale::system().toString(now.date(), QLocale::ShortFormat) + QLatin1Char(' ') +
                 QLocale::system().toString(now.time(), QLocale::ShortFormat)),
      font_(report_font(1)), metrics_(font_), page_bottom_(static_cast<double>(report_page_height) * k_) {
    ops_.reserve(4096);
    set_font_size(12);
}

void report_page::set_font_size(int points) {
    font_points_ = points;
    const int scaled = fix(points * scale_);
    font_ = report_font(static_cast<int>(scaled * twips_per_point));
    metrics_ = QFontMetricsF(font_);
}

double report_page::text_width(const QString& text) const {
    return metrics_.horizontalAdvance(text);
}

double report_page::text_height() const {
    return metrics_.height();
}

void report_page::text(double x, double y_top, const QString& text) {
    ops_.push_back(
        {op::text_op, QRectF(x, y_top, text_width(text), text_height()), Qt::black, text, font_.pixelSize()});
}

void report_page::line(double x1, double y1, double x2, double y2, const QColor& color) {
    ops_.push_back({op::line_op, QRectF(QPointF(x1, y1), QPointF(x2, y2)), color, {}, 0});
}

void report_page::box(const QRectF& rect, const QColor& color) {
    ops_.push_back({op::box_op, rect, color, {}, 0});
}

void report_page::filled_box(const QRectF& rect, const QColor& color) {
    ops_.push_back({op::filled_op, rect, color, {}, 0});
}

void report_page::head(double x, double y_top, const QString& text) {
    filled_box(QRectF(x, y_top, text_width(text), text_height()), head_grey);
    this->text(x, y_top, text);
}

void report_page::print_line(double x, const QString& text) {
    this->text(x, y, text);
    y += text_height();
}

QString report_page::footer_text(int page) const {
    QString t = QString::number(page);
    if (flags_.print_date) t += QString(55, QLatin1Char(' ')) + date_time_;
    return t;
}

void report_page::end_page() {
    const double old_bottom = page_bottom_;
    const int ended = page_number_;
    ++page_number_;
    page_bottom_ = static_cast<double>(page_number_) * report_page_height * k_;
    if (flags_.print_page_number) {
        const QString t = footer_text(ended);
        footers_.push_back(t);
        const double left = (680.0 * k_ - text_width(QStringLiteral("Page 1"))) / 2;
        text(left, old_bottom - 50.0 * k_, t);
    }
    ops_.push_back({op::band_op, QRectF(0, old_bottom, 720.0 * k_, 50.0 * k_), standard_color(8), {}, 0});
    y = old_bottom + 100.0 * k_ + text_height();
}

bool report_page::break_test() {
    if (y + 100.0 * k_ < page_bottom_) return false;
    end_page();
    return true;
}

void report_page::finish() {
    if (!flags_.print_page_number) return;
    const QString t = footer_text(page_number_);
    footers_.push_back(t);
    const double left = (680.0 * k_ - text_width(QStringLiteral("Page 1"))) / 2;
    text(left, page_bottom_ - 50.0 * k_, t);
}

std::vector<report_page::placed_text> report_page::texts() const {
    std::vector<placed_text> out;
    for (const op& o : ops_)
        if (o.kind == op::text_op) out.push_back({o.rect.topLeft(), o.text});
    return out;
}

void report_page::paint_ops(QPainter& painter, double top, double bottom, bool bands) const {
    QFont font = font_;
    int font_pixels = -1;
    for (const op& o : ops_) {
        const double o_top = std::min(o.rect.top(), o.rect.bottom());
        const double o_bottom = std::max(o.rect.top(), o.rect.bottom());
        if (o_bottom < top || o_top >= bottom) continue;
        switch (o.kind) {
        case op::text_op:
            if (o.font_pixels != font_pixels) {
                font_pixels = o.font_pixels;
                font = report_font(font_pixels);
                painter.setFont(font);
            }
            painter.setPen(o.color);
            painter.drawText(QPointF(o.rect.left(), o.rect.top() + QFontMetricsF(font).ascent()), o.text);
            break;
        case op::line_op:
            painter.setPen(QPen(o.color, 0));
            painter.drawLine(o.rect.topLeft(), o.rect.bottomRight());
            break;
        case op::box_op:
            painter.setPen(QPen(o.color, 0));
            painter.setBrush(Qt::NoBrush);
            painter.drawRect(o.rect);
            break;
        case op::filled_op:
            painter.fillRect(o.rect, o.color);
            break;
        case op::band_op:
            if (bands) painter.fillRect(o.rect, o.color);
            break;
        }
    }
}

QImage report_page::render(double dpi) const {
    const double px = dpi / 1440.0;
    QImage image(static_cast<int>(std::ceil(720.0 * k_ * px)), static_cast<int>(std::ceil(height() * px)),
                 QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    painter.scale(px, px);
    paint_ops(painter, 0, height(), true);
    return image;
}

void report_page::print(QPainter& painter, QPagedPaintDevice& device) const {
    const double px = device.logicalDpiX() / 1440.0;
    const double page = static_cast<double>(report_page_height) * k_;
    for (int p = 0; p < page_number_; ++p) {
        if (p > 0) device.newPage();
        painter.save();
        painter.scale(px, px);
        painter.translate(0, -p * page);
        painter.setClipRect(QRectF(0, p * page, 720.0 * k_, page));
        paint_ops(painter, p * page, (p + 1) * page, false);
        painter.restore();
    }
}

} // namespace lumora
