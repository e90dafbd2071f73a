#include "report_parts.h"

#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "plot/palette.h"

#include <array>

namespace lumora {

void report_title_block(report_page& page, const QString& laboratory, const QString& subject,
                        const QString& op, const QString& remark) {
    const int k = page.k();
    page.set_font_size(16);
    page.head((680.0 * k - page.text_width(laboratory)) / 2, 50.0 * k, laboratory);
    page.set_font_size(14);
    page.y = 50.0 * k + page.text_height() * 16 / 14;
    page.print_line(100.0 * k, QStringLiteral("Subject:") + subject);
    page.print_line(100.0 * k, QStringLiteral("Operator:") + op);
    page.print_line(100.0 * k, page.flags().print_date ? QStringLiteral("Date:") + page.date_time()
                                                       : QStringLiteral("Date:"));
    page.print_line(100.0 * k, QStringLiteral("Remark:") + remark);
    page.filled_box(QRectF(QPointF(50.0 * k, 170.0 * k), QPointF(680.0 * k, 171.0 * k)), Qt::black);
}

report_curve lay_out_curve(const plot_view& v, const curve_data& curve) {
    report_curve out;
    out.color = curve.color;
    auto& values = out.values;
    if (v.view_span <= 0) return out;
    auto at = [&curve](int x) { return x >= curve.first_valid_x ? curve.value_at(x) : 0.0; };
    if (v.view_span >= 280) {
        const double per_column = v.view_span / 280.0;
        for (int c = 0; c <= 280; ++c)
            values[static_cast<std::size_t>(c)] = at(cint(per_column * c) + v.view_start);
        return out;
    }
    const double f = 280.0 / v.view_span;
    for (int n = 0;; ++n) {
        const int p1 = cint(n * f), p2 = cint((n + 1) * f);
        if (p1 > 280) break;
        const double a = at(n + v.view_start), b = at(n + 1 + v.view_start);
        const int width = p2 - p1;
        for (int j = 0; j <= width && p1 + j <= 280; ++j)
            values[static_cast<std::size_t>(p1 + j)] = j * (b - a) / width + a;
    }
    return out;
}

void report_draw_graph(report_page& page, const plot_view& view, const axes_text& axes, const report_graph& g,
                       const std::vector<report_curve>& curves, const std::vector<report_marks>& marks) {
    const double k = page.k();
    const int height = g.bottom - g.top;
    page.set_font_size(8);
    if (!g.title.isEmpty()) page.text(100 * k, g.top * k - 2 * page.text_height(), g.title);
    page.box(QRectF(QPointF(100 * k, g.top * k), QPointF(380 * k, g.bottom * k)), Qt::black);
    const int ticks = height / 7;
    for (int i = 0; i <= 40; ++i) {
        const double len = i % 8 == 0 ? 90 : 95;
        if (i <= ticks) page.line(len * k, (g.top + 7 * i) * k, 99 * k, (g.top + 7 * i) * k);
        page.line((100 + 7 * i) * k, (g.bottom + 1) * k, (100 + 7 * i) * k, (g.bottom + 100 - len) * k);
    }
    const double th = page.text_height();
    for (int i = 0; i <= 5; ++i) {
        const double yv = g.high - i * (g.high - g.low) / 5;
        const QString yl = format_text(yv, axes.y_format);
        page.text(85 * k - page.text_width(yl), (g.top + height * i / 5.0) * k - th / 2, yl);
        double xv = view.view_start + 56 * i * view.view_nm_per_pixel;
        if (axes.round_x_labels) xv = cint(xv);
        if (g.x_high != g.x_low) xv = g.x_low + i * (g.x_high - g.x_low) / 5;
        const QString xl = format_text(xv, axes.x_format);
        page.text((100 + 56 * i) * k - page.text_width(xl) / 2, (g.bottom + 10) * k, xl);
    }
    page.text(85 * k - page.text_width(axes.y_caption), (g.top + 10) * k, axes.y_caption);
    page.text(380 * k - page.text_width(axes.x_caption), (g.bottom + 25) * k, axes.x_caption);

    {
        for (const report_curve& curve : curves) {
            const auto& values = curve.values;
            int y1 = g.row_of(values[0], g.high, g.low);
            for (int c = 1; c <= 280; ++c) {
                const int y2 = g.row_of(values[static_cast<std::size_t>(c)], g.high, g.low);
                QColor pen = curve.color;
                if (y1 == g.top && y2 == g.top) pen = Qt::black;
                if (y1 == g.bottom && y2 == g.bottom) pen = Qt::white;
                if (!curve.gap_after_zero || values[static_cast<std::size_t>(c - 1)] != 0)
                    page.line((c + 99) * k, y1 * k, (c + 100) * k, y2 * k, pen);
                y1 = y2;
            }
        }
    }
    for (const report_marks& kind : marks) {
        int number = 0;
        const QColor color = standard_color(kind.color);
        for (int i = 0; i < kind.count; ++i) {
            const processing::mark& m = kind.marks[i];
            if (!m.flag) continue;
            const double x = (m.column + 100) * k, y = (g.bottom - (300 - m.row)) * k;
            const QString n = QString::number(++number);
            page.text(x - page.text_width(n) / 2, y - 2 * k - th, n);
            page.box(QRectF(QPointF(x - 2 * k, y - 2 * k), QPointF(x + 2 * k, y + 2 * k)), color);
        }
    }
}

void report_section(report_page& page, const QString& head) {
    page.set_font_size(12);
    page.break_test();
    page.head(50.0 * page.k(), page.y, head);
    page.y += page.text_height();
}

report_columns::report_columns(report_page& page, std::vector<int> offsets)
    : page_(page), offsets_(std::move(offsets)) {}

void report_columns::row(const QStringList& cells) {
    const bool right = n_ % 2 == 1;
    if (!right) page_.break_test();
    const double left = (right ? 360.0 : 50.0) * page_.k();
    for (int i = 0; i < cells.size() && i < static_cast<int>(offsets_.size()); ++i)
        page_.text(left + offsets_[static_cast<std::size_t>(i)] * page_.k(), page_.y, cells[i]);
    if (right) page_.y += page_.text_height();
    ++n_;
}

void report_columns::close() {
    if (n_ % 2 == 1) page_.y += page_.text_height();
    n_ = 0;
}

void report_marked_rows(report_columns& out, const grid& table, const processing::mark* marks, int count,
                        int cols) {
    int number = 0;
    for (int i = 0; i < count; ++i) {
        if (!marks[i].flag) continue;
        QStringList cells{QString::number(++number)};
        for (int c = 1; c < cols; ++c)
            cells << table.TextMatrix(i + 1, c);
        out.row(cells);
    }
}

void report_parameters(report_page& page, int left, const QStringList& lines) {
    page.set_font_size(12);
    const double k = page.k();
    page.head(left * k, 200 * k, QStringLiteral("Parameter settings"));
    page.y = 200 * k + page.text_height();
    const double width = (report_page_width - report_right_margin - left) * k;
    const auto measure = [&page](const QString& t) { return page.text_width(t); };
    for (const QString& l : lines)
        for (const QString& piece : wrap_line(l, width, measure))
            page.print_line(left * k, piece);
}

QStringList wrap_line(const QString& text, double width,
                      const std::function<double(const QString&)>& measure) {
    QStringList pieces;
    QString rest = text;
    const QString indent = QStringLiteral("  ");
    while (!rest.isEmpty()) {
        const QString lead = pieces.isEmpty() ? QString() : indent;
        if (measure(lead + rest) <= width) {
            pieces << lead + rest;
            break;
        }
        // The longest head that fits, at least one character so that every pass moves on.
        qsizetype fit = 1;
        while (fit < rest.size() && measure(lead + rest.left(fit + 1)) <= width)
            ++fit;
        qsizetype cut = fit;
        for (qsizetype i = fit; i > 0; --i)
            if (rest[i - 1] == QLatin1Char(' ') || rest[i - 1] == QLatin1Char(',')) {
                cut = i;
                break;
            }
        pieces << lead + rest.left(cut).trimmed();
        rest = rest.mid(cut).trimmed();
    }
    return pieces;
}

} // namespace lumora
