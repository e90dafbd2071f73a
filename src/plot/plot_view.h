#pragma once
// The view of a curve window: what range is shown and the active curve at each of the 281
// columns of the plot square (columns 60..340, rows 20..300).
#include <QRect>
#include <QString>
#include <array>
#include <cstdint>

class QWidget;

namespace lumora {

constexpr int plot_columns = 281;
constexpr int plot_left = 60, plot_right = 340, plot_top = 20, plot_bottom = 300;

struct plot_view {
    std::int16_t view_start = 0, view_stop = 0; // X range shown [nm, or the window's X unit]
    std::int16_t view_span = 0;                 // view_stop - view_start
    double view_nm_per_pixel = 0;               // view_span / 280
    double view_high = 0, view_low = 0;         // Y range shown
    bool zoomed = false;
    std::int16_t plot_column = 0;                      // next column to paint during a scan
    double draw_position = 0;                          // the running nanometre of the narrow-span way
    std::array<double, plot_columns> screen_curve{};   // the active curve at each column, data units
    QRect zoom_rect{QPoint(60, 20), QPoint(340, 300)}; // left, top, right, bottom (inclusive corners)
};

// view_span and view_nm_per_pixel from view_start and view_stop.
void update_span(plot_view& view);

// The view of the setup, as a window's `init` sets it: X range start..stop taken as integers,
// Y range low..high, the zoom rectangle back to the whole square, painting from column 0.
void init_view(plot_view& view, double start, double stop, double high, double low);

// What a plot square shows, for those who cannot see it.
struct plot_legend {
    QString function;          // the window's function, "Spectrum"
    QString x_unit;            // "nm"
    QString y_unit;            // "ABS" or "%T"
    const char* y_format = ""; // the Y labels' format
    int curves = 0;            // curves held by the window
    int shown = 0;             // of them, drawn
    int active = 0;            // the active curve's number; 0 for none
    int derivative_order = 0;  // what the derivative window shows; 0 for nothing
};

// The plot's accessible name ("Spectrum plot") and a description of the view and its curves,
// e.g. "400 to 700 nm, 0.0000 to 1.5000 ABS. 2 curves, curve 2 active. 2nd derivative below.";
// a screen reader hears it on reaching the plot. The window calls this whenever the picture changes.
void describe_plot(QWidget& plot, const plot_view& view, const plot_legend& legend);

} // namespace lumora
