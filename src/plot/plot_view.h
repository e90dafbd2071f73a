#pragma once
// The view of a curve window: what range is shown and the active curve at each of the 281
// columns of the plot square (columns 60..340, rows 20..300).
#include <QRect>
#include <array>
#include <cstdint>

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

} // namespace lumora
