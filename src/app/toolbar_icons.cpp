#include "toolbar_icons.h"

#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <cmath>

namespace lumora {
namespace {

// Draws one icon on a 24 by 24 design grid.
void draw_icon(QPainter& p, const QString& key, bool enabled) {
    const QColor ink = enabled ? QColor(30, 50, 90) : QColor(150, 150, 150);
    const QColor accent = enabled ? QColor(200, 60, 40) : QColor(170, 170, 170);
    const QColor green = enabled ? QColor(30, 140, 60) : QColor(165, 165, 165);
    QPen pen(ink, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    p.setPen(pen);
    p.setBrush(Qt::NoBrush);
    auto axes = [&] {
        p.drawLine(QPointF(4, 3), QPointF(4, 20));
        p.drawLine(QPointF(4, 20), QPointF(21, 20));
    };
    auto curve = [&](QColor c, double amp, double phase) {
        QPainterPath path;
        for (int i = 0; i <= 32; ++i) {
            const double x = 5 + i * 15.0 / 32;
            const double y = 13 - amp * std::exp(-std::pow((x - 12.5 - phase) / 3.0, 2));
            i == 0 ? path.moveTo(x, y) : path.lineTo(x, y);
        }
        p.setPen(QPen(c, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        p.drawPath(path);
        p.setPen(pen);
    };
    if (key == "Setup") {
        p.drawRoundedRect(QRectF(4, 3, 16, 18), 2, 2);
        for (int i = 0; i < 3; ++i)
            p.drawLine(QPointF(7, 8 + 4.5 * i), QPointF(17, 8 + 4.5 * i));
    } else if (key == "Zero") {
        p.drawEllipse(QPointF(12, 12), 5.5, 7.5);
    } else if (key == "Read") {
        p.setBrush(green);
        p.setPen(Qt::NoPen);
        p.drawPolygon(QPolygonF{QPointF(7, 4), QPointF(19, 12), QPointF(7, 20)});
    } else if (key == "Stop") {
        p.setBrush(accent);
        p.setPen(Qt::NoPen);
        p.drawRoundedRect(QRectF(5, 5, 14, 14), 2, 2);
    } else if (key == "Auto") {
        axes();
        curve(accent, 7, 0);
        p.drawLine(QPointF(16, 3), QPointF(21, 3));
        p.drawLine(QPointF(21, 3), QPointF(21, 8));
    } else if (key == "Zoom") {
        p.drawEllipse(QPointF(10, 10), 6, 6);
        p.drawLine(QPointF(14.5, 14.5), QPointF(20.5, 20.5));
        p.drawLine(QPointF(7, 10), QPointF(13, 10));
        p.drawLine(QPointF(10, 7), QPointF(10, 13));
    } else if (key == "Original") {
        axes();
        p.drawRect(QRectF(8, 6, 11, 10));
    } else if (key == "Peak") {
        axes();
        curve(accent, 8, 0);
        p.drawLine(QPointF(12.5, 2), QPointF(12.5, 4));
    } else if (key == "Smooth") {
        QPainterPath path;
        path.moveTo(3, 14);
        path.cubicTo(8, 4, 14, 20, 21, 9);
        p.drawPath(path);
    } else if (key == "Derivative") {
        axes();
        curve(accent, 6, -3);
        curve(green, -6, 3);
    } else if (key == "Scan add") {
        p.drawLine(QPointF(6, 8), QPointF(12, 8));
        p.drawLine(QPointF(9, 5), QPointF(9, 11));
        p.drawLine(QPointF(13, 17), QPointF(19, 17));
        p.drawLine(QPointF(14, 5), QPointF(20, 11));
        p.drawLine(QPointF(20, 5), QPointF(14, 11));
    } else if (key == "Color") {
        const QColor c[3] = {QColor(220, 40, 40), QColor(40, 160, 60), QColor(40, 80, 220)};
        for (int i = 0; i < 3; ++i) {
            p.setBrush(enabled ? c[i] : QColor(170, 170, 170));
            p.drawEllipse(QPointF(9 + 6 * (i % 2) + (i == 2 ? 3 : 0), 9 + (i == 2 ? 6 : 0)), 4.5, 4.5);
        }
    } else if (key == "Report") {
        p.drawRect(QRectF(5, 3, 14, 18));
        p.drawEllipse(QPointF(13, 12), 3.5, 3.5);
        p.drawLine(QPointF(15.5, 14.5), QPointF(19, 18));
    } else if (key == "Print") {
        p.drawRect(QRectF(7, 3, 10, 6));
        p.drawRoundedRect(QRectF(3, 9, 18, 8), 1.5, 1.5);
        p.drawRect(QRectF(7, 14, 10, 7));
    }
}

class drawn_icon : public QIconEngine {
public:
    explicit drawn_icon(QString key) : key_(std::move(key)) {}
    void paint(QPainter* p, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        p->save();
        p->setRenderHint(QPainter::Antialiasing);
        p->translate(rect.topLeft());
        p->scale(rect.width() / 24.0, rect.height() / 24.0);
        draw_icon(*p, key_, mode != QIcon::Disabled);
        p->restore();
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pm(size);
        pm.fill(Qt::transparent);
        QPainter p(&pm);
        paint(&p, QRect(QPoint(0, 0), size), mode, state);
        return pm;
    }
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state, qreal scale) override {
        QPixmap pm = pixmap(size * scale, mode, state);
        pm.setDevicePixelRatio(scale);
        return pm;
    }
    QIconEngine* clone() const override { return new drawn_icon(key_); }

private:
    QString key_;
};

} // namespace

QIcon toolbar_icon(const QString& key) {
    return QIcon(new drawn_icon(key));
}

} // namespace lumora
