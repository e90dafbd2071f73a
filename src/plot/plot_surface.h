#pragma once
// A drawing surface in logical pixels, backed by an image painted at device pixel ratio 2, so
// lines and text stay crisp on a high-DPI screen. It never rescales with the window: the widget
// sits in a scroll area at its logical size. Overlays (cross-hair lines, rubber band) are drawn
// over the image and do not disturb it. Mouse events come out in logical coordinates.
//
// A line runs between the centres of logical pixels and is one logical pixel (two device
// pixels) wide, with both end pixels painted: a horizontal line on row 20 covers device rows 40
// and 41 and nothing else, so a clipped curve lies exactly on the frame line of that row.
#include <QFont>
#include <QFontMetrics>
#include <QImage>
#include <QLine>
#include <QWidget>
#include <array>
#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

class QPainter;

namespace lumora {

enum class text_align { left, right, center };

class plot_surface : public QWidget {
    Q_OBJECT
public:
    explicit plot_surface(QSize logical_size, QWidget* parent = nullptr);
    ~plot_surface() override;

    void clear(const QColor& background);
    void line(int x1, int y1, int x2, int y2, const QColor& color, Qt::PenStyle style = Qt::SolidLine);
    // Solid lines of one colour, painted in order with exactly the pixels that many line() calls
    // would paint: a curve's stretch of one colour goes in a single call. A line whose shape the
    // painter has drawn once before is copied from that drawing (see set_line_shapes).
    void lines(std::span<const QLine> segments, const QColor& color);
    // On (the default), lines() copies known shapes; off, it hands every line to line() on its
    // own, the plain way the copies are checked against.
    void set_line_shapes(bool enabled);
    void box(const QRect& rect, const QColor& color);          // outline
    void filled_box(const QRect& rect, const QColor& color);   // outline and inside
    void polygon(const QPolygon& points, const QColor& color); // outline, closed
    // Text whose anchor is (x, y): its top edge at y, aligned left, right or centred on x.
    void text(int x, int y, const QString& text, text_align align = text_align::left,
              const QColor& color = Qt::black);
    int text_width(const QString& text) const;
    int text_height() const;

    // Many operations in a row share one painter: the batch holds it open and schedules one
    // repaint at its end. Batches nest; operations outside a batch open a painter of their own.
    class batch {
    public:
        explicit batch(plot_surface& surface) : surface_(surface) { surface_.begin_batch(); }
        ~batch() { surface_.end_batch(); }
        batch(const batch&) = delete;
        batch& operator=(const batch&) = delete;

    private:
        plot_surface& surface_;
    };
    void begin_batch();
    void end_batch();

    // Overlay lines by id (0..3) and the rubber band rectangle; white lines by default.
    void set_overlay_line(int id, const QLine& line, bool visible, const QColor& color = Qt::white);
    bool overlay_visible(int id) const;
    QLine overlay_line(int id) const;
    void set_rubber_band(const QRect& rect, bool visible);
    bool rubber_band_visible() const { return band_visible_; }
    QRect rubber_band() const { return band_; }

    const QImage& image() const { return image_; }
    // The image with the overlays, as the user sees it (screenshots, tests).
    QImage grab_view() const;
    // The colour of a logical pixel of the image (its top-left device pixel).
    QColor logical_pixel(int x, int y) const;
    QSize logical_size() const { return logical_; }
    QSize sizeHint() const override { return logical_; }
    QFont plot_font() const { return font_; }

signals:
    void mouse_pressed(QPoint logical, Qt::MouseButton button);
    void mouse_moved(QPoint logical, Qt::MouseButtons buttons);
    void mouse_released(QPoint logical, Qt::MouseButton button);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void paint_overlays(QPainter& p) const;
    QPainter& painter();
    // Ends an operation: the area it touched is repainted on screen once no batch is open.
    void done_painting(const QRect& touched);

    // The device pixels of a line's shape, relative to the top-left device pixel of its start:
    // spans of `length` pixels from column x on row `row`.
    struct shape_span {
        int row, x, length;
    };
    struct line_shape {
        std::vector<shape_span> spans;
        QRect bounds;
    };
    // The shape of l, drawn by the painter the first time; null for a shape too large to keep.
    const line_shape* shape_of(const QLine& l);
    // The pixel value the painter wrote for an opaque colour, once it has drawn a line of it.
    std::optional<QRgb> known_pixel(const QColor& color) const;

    QSize logical_;
    QImage image_;
    QFont font_;
    QFontMetrics metrics_;
    std::unique_ptr<QPainter> painter_; // open while a batch or a single operation runs
    int batch_depth_ = 0;
    QRect dirty_; // logical area painted since the last repaint was asked for
    struct overlay {
        QLine line;
        QColor color = Qt::white;
        bool visible = false;
    };
    std::array<overlay, 4> overlays_{};
    QRect band_;
    bool band_visible_ = false;
    std::unordered_map<int, line_shape> shapes_; // by run and rise
    struct recent_shape {
        int key = 0;
        const line_shape* shape = nullptr;
    };
    std::array<recent_shape, 1024> recent_shapes_{};
    std::array<std::pair<QColor, QRgb>, 32> known_pixels_{}; // the colours met last
    std::size_t next_known_ = 0;
    bool shapes_enabled_ = true;
};

} // namespace lumora
