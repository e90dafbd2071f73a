#include "verification_print.h"

#include <QFile>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <algorithm>
#include <cmath>

namespace lumora {
namespace {

const QColor pass_color(0, 128, 0);
const QColor fail_color(192, 0, 0);
const QColor warn_color(200, 120, 0);

QColor verdict_color(const QString& verdict) {
    if (verdict == QLatin1String("Pass")) return pass_color;
    if (verdict == QLatin1String("Warn")) return warn_color;
    return fail_color;
}

} // namespace

processing::verdict overall_verdict(const std::vector<check_result>& results) {
    std::vector<processing::verdict> v;
    for (const check_result& r : results)
        v.push_back(r.verdict);
    return results.empty() ? processing::verdict::fail : processing::worst(v);
}

QString write_certificate(const QString& path, const certificate& c) {
    {
        QFile probe(path);
        if (!probe.open(QIODevice::WriteOnly)) return probe.errorString();
    }
    QPdfWriter pdf(path);
    pdf.setPageSize(QPageSize(QPageSize::A4));
    pdf.setResolution(150);
    pdf.setTitle(QStringLiteral("Performance verification certificate"));
    QPainter p(&pdf);
    if (!p.isActive()) return QStringLiteral("The PDF could not be started.");
    const int width = pdf.width();
    const int margin = 40;
    int y = 60;
    QFont title = p.font();
    title.setPointSize(16);
    title.setBold(true);
    QFont body = p.font();
    body.setPointSize(9);
    QFont bold = body;
    bold.setBold(true);

    p.setFont(title);
    p.drawText(margin, y, QStringLiteral("Performance Verification Certificate"));
    y += 50;
    p.setFont(body);
    const std::pair<QString, QString> header[] = {
        {QStringLiteral("Instrument:"), c.instrument},
        {QStringLiteral("Date:"), c.date.toString(QStringLiteral("yyyy-MM-dd HH:mm"))},
        {QStringLiteral("Operator:"), c.operator_name}};
    for (const auto& [label, value] : header) {
        p.drawText(margin, y, label);
        p.drawText(margin + 160, y, value);
        y += 24;
    }
    y += 16;

    // Columns: reference, tolerance, value, verdict; a check's name heads its items across the page.
    const int cols[] = {margin + 24, margin + 560, margin + 790, width - margin - 90};
    const auto cell = [&](int x, int right, const QString& text, const QColor& colour) {
        const int w = right - x - 10;
        p.setPen(colour);
        p.drawText(QRect(x, y - 16, w, 22), Qt::AlignLeft | Qt::AlignVCenter,
                   p.fontMetrics().elidedText(text, Qt::ElideRight, w));
        p.setPen(Qt::black);
    };
    const auto row = [&](const QString& reference, const QString& tolerance, const QString& value,
                         const QString& verdict) {
        cell(cols[0], cols[1], reference, Qt::black);
        cell(cols[1], cols[2], tolerance, Qt::black);
        cell(cols[2], cols[3], value, Qt::black);
        cell(cols[3], width - margin + 10, verdict, verdict_color(verdict));
        y += 22;
    };
    p.setFont(bold);
    row(QStringLiteral("Check and reference"), QStringLiteral("Tolerance"), QStringLiteral("Value"),
        QStringLiteral("Verdict"));
    p.drawLine(margin, y - 14, width - margin, y - 14);
    for (const check_result& r : c.results) {
        y += 4;
        p.setFont(bold);
        cell(margin, cols[3],
             check_name(r.check) + (r.why.isEmpty() ? QString() : QStringLiteral(": ") + r.why), Qt::black);
        cell(cols[3], width - margin + 10, verdict_text(r.verdict), verdict_color(verdict_text(r.verdict)));
        y += 22;
        p.setFont(body);
        for (const check_item& i : r.items) {
            row(i.reference, i.tolerance, i.value, verdict_text(i.verdict));
            if (y > pdf.height() - 60) {
                pdf.newPage();
                y = 60;
            }
        }
    }
    if (y > pdf.height() - 220) {
        pdf.newPage();
        y = 60;
    }
    y += 20;
    const processing::verdict overall = overall_verdict(c.results);
    p.setFont(title);
    p.setPen(verdict_color(verdict_text(overall)));
    p.drawText(margin, y, QStringLiteral("Overall verdict: ") + verdict_text(overall));
    p.setPen(Qt::black);
    p.setFont(body);
    y += 90;
    p.drawLine(margin, y, margin + 400, y);
    p.drawLine(margin + 520, y, margin + 820, y);
    y += 20;
    p.drawText(margin, y, QStringLiteral("Signature"));
    p.drawText(margin + 520, y, QStringLiteral("Date"));
    if (!p.end()) return QStringLiteral("The PDF could not be finished.");
    return {};
}

void draw_trend(QPainter& p, const QRect& area, const QString& title,
                const std::vector<verification_row>& rows, double band_low, double band_high) {
    p.save();
    p.fillRect(area, Qt::white);
    p.setPen(Qt::black);
    p.drawText(area.adjusted(8, 4, -8, 0), Qt::AlignTop | Qt::AlignLeft, title);
    const QRect plot = area.adjusted(70, 30, -20, -40);
    p.drawRect(plot);
    if (rows.empty()) {
        p.drawText(plot, Qt::AlignCenter, QStringLiteral("No runs yet."));
        p.restore();
        return;
    }
    double lo = std::min(band_low, band_high), hi = std::max(band_low, band_high);
    for (const verification_row& r : rows) {
        lo = std::min(lo, r.value);
        hi = std::max(hi, r.value);
    }
    const double pad = (hi - lo) * 0.15 + 1e-9;
    lo -= pad;
    hi += pad;
    const auto y_of = [&](double v) { return plot.bottom() - (v - lo) / (hi - lo) * plot.height(); };
    const int n = static_cast<int>(rows.size());
    const auto x_of = [&](int i) {
        return n == 1 ? plot.center().x() : plot.left() + 20 + i * (plot.width() - 40) / (n - 1);
    };

    // The tolerance band, shaded, with its edges.
    const QRectF band(plot.left(), y_of(std::max(band_low, band_high)), plot.width(),
                      y_of(std::min(band_low, band_high)) - y_of(std::max(band_low, band_high)));
    p.fillRect(band, QColor(220, 240, 220));
    p.setPen(QPen(pass_color, 1, Qt::DashLine));
    p.drawLine(QPointF(plot.left(), band.top()), QPointF(plot.right(), band.top()));
    p.drawLine(QPointF(plot.left(), band.bottom()), QPointF(plot.right(), band.bottom()));
    p.setPen(Qt::black);
    for (double v : {lo, (lo + hi) / 2, hi})
        p.drawText(QRectF(area.left(), y_of(v) - 8, 64, 16), Qt::AlignRight | Qt::AlignVCenter,
                   QString::number(v, 'g', 4));

    p.setRenderHint(QPainter::Antialiasing, true);
    p.setPen(QPen(Qt::darkBlue, 1.5));
    for (int i = 1; i < n; ++i)
        p.drawLine(QPointF(x_of(i - 1), y_of(rows[static_cast<std::size_t>(i - 1)].value)),
                   QPointF(x_of(i), y_of(rows[static_cast<std::size_t>(i)].value)));
    for (int i = 0; i < n; ++i) {
        const verification_row& r = rows[static_cast<std::size_t>(i)];
        p.setBrush(verdict_color(r.verdict));
        p.setPen(Qt::NoPen);
        p.drawEllipse(QPointF(x_of(i), y_of(r.value)), 4, 4);
        p.setPen(Qt::black);
        if (n <= 8 || i == 0 || i == n - 1)
            p.drawText(QRectF(x_of(i) - 40, plot.bottom() + 4, 80, 16), Qt::AlignCenter,
                       r.time.toString(QStringLiteral("yyyy-MM-dd")));
    }
    p.restore();
}

} // namespace lumora
