#pragma once
// The report's page model, one for the screen and the paper. A report is drawn in page units
// times k = Fix(scale * 16) onto one tall picture measured in twips (1/1440 inch): a page is 720
// by 975 units, the text area 50 to 680 across. The drawing is kept as a list of operations, so
// the preview paints it onto an image and the printer onto its pages, both from the same list.
// Text is measured with the very font it is drawn with.
#include <QColor>
#include <QDateTime>
#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QRect>
#include <QString>
#include <vector>

class QPagedPaintDevice;
class QPainter;

namespace lumora {

constexpr int report_page_width = 720, report_page_height = 975;

// What a page carries beside the body: the date and the footer.
struct report_flags {
    bool print_date = true;        // the date on the header line and in the footer
    bool print_page_number = true; // the footer
};

class report_page {
public:
    // `scale` 0.25..1.0; the date and time are the system's short forms of `now`.
    explicit report_page(double scale, report_flags flags = {}, QDateTime now = QDateTime::currentDateTime());

    double scale() const { return scale_; }
    int k() const { return k_; }
    const report_flags& flags() const { return flags_; }
    QString date_time() const { return date_time_; }

    // Font size in points before scaling; the picture's size is Fix(points * scale).
    void set_font_size(int points);
    int font_points() const { return font_points_; }
    double text_width(const QString& text) const;
    double text_height() const;

    // Drawing in picture units (twips), the top-left of a text at (x, y).
    void text(double x, double y, const QString& text);
    void line(double x1, double y1, double x2, double y2, const QColor& color = Qt::black);
    void box(const QRectF& rect, const QColor& color = Qt::black);
    void filled_box(const QRectF& rect, const QColor& color);
    // A text laid on a box of grey 208 of its own size, as titles and section heads are.
    void head(double x, double y, const QString& text);

    // The print position: the top of the next line.
    double y = 0;
    // Text at `x` on the print position, which then moves down one text height.
    void print_line(double x, const QString& text);

    int page_number() const { return page_number_; }
    double page_bottom() const { return page_bottom_; }
    // The test before each section and row: when the print position plus 100 units reaches the
    // bottom of the page, the page ends (its footer first), and the print position moves to 100
    // units plus one text height under the old bottom. True when a page ended.
    bool break_test();
    // The footer of the last page, when the page number is printed.
    void finish();

    // ---- The result ----
    double height() const { return page_bottom_; }
    int pages() const { return page_number_; }
    // Footer texts in page order (tests read them back).
    const std::vector<QString>& footers() const { return footers_; }
    // Every text drawn, with its top-left, in drawing order.
    struct placed_text {
        QPointF at;
        QString text;
    };
    std::vector<placed_text> texts() const;

    // The picture as the preview shows it, at `dpi` (96 on a screen), grey bands included.
    QImage render(double dpi = 96) const;
    // Page by page onto a paged device (printer or PDF); bands are not drawn, a new page each.
    // The painter must be open on `device`.
    void print(QPainter& painter, QPagedPaintDevice& device) const;

private:
    struct op {
        enum kind_t { text_op, line_op, box_op, filled_op, band_op } kind;
        QRectF rect; // line: from topLeft to bottomRight
        QColor color;
        QString text;
        int font_pixels = 0; // twips
    };
    void end_page();
    void paint_ops(QPainter& painter, double top, double bottom, bool bands) const;
    QString footer_text(int page) const;

    double scale_;
    int k_;
    report_flags flags_;
    QString date_time_;
    int font_points_ = 12;
    QFont font_;
    QFontMetricsF metrics_;
    int page_number_ = 1;
    double page_bottom_;
    std::vector<op> ops_;
    std::vector<QString> footers_;
};

// The report's face: Times New Roman, or the metric-compatible serif that stands in for it.
QFont report_font(int pixel_size);

} // namespace lumora
