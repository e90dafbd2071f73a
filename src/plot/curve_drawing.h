#pragma once
// Painting curves on the plot square: the axes and frame, the incremental painting of a scan as
// its points arrive, and the whole redraw after a change of view. One set of routines for every
// curve window; the data come in through a column accessor so that Spectrum (X in nm) and the
// time-based windows (X in sample units) share them.
#include "plot_view.h"

#include <QColor>
#include <QString>
#include <functional>
#include <vector>

namespace lumora {

class plot_surface;

struct axes_text {
    QString y_caption;    // "(ABS)" or "(%T)"
    QString x_caption;    // "Wavelength(nm)"
    const char* y_format; // "#0.0000" in ABS, "#0.000" in %T
    const char* x_format; // "###0.0"
    // Spectrum labels whole nanometres (round(view_start + 56 i * view_nm_per_pixel)); a window
    // whose X labels carry fractions clears this.
    bool round_x_labels = true;
};

// The axes of Spectrum in ABS or %T.
axes_text spectrum_axes(bool percent_t);

// The plot frame (interior filled, top and left black, bottom and right white), the 41 + 41
// sunken ticks, six Y labels right-aligned to column 45 at rows 56 i + 14, six X labels centred on
// columns 56 i + 60 at row 310, and the two captions. The whole surface is cleared first.
// The read-out labels that go back to their idle text with the axes belong to the window
// (plot_tracking::reset_readout).
void draw_axes(plot_surface& surface, const plot_view& view, const axes_text& text);

// One curve of a window: the stored value at an X position (nm for Spectrum), and where the data
// end. `value_at` is only asked for positions at or above `first_valid_x` (320 for Spectrum).
struct curve_data {
    std::function<double(int x)> value_at;
    int first_valid_x = 320;
    int last_stored_x = 0; // the last X with data: (scan_count - 1) * scan_step + scan_first_nm
    QColor color;
    int x_step = 1; // scan_step: the narrow way holds back up to (scan_count - 3) * scan_step
};

// Column `column` (1..20) of shared.baseline_curves, in the colour of that column, with data up
// to `last_stored_nm`. Points outside 320..1110 nm read as 0.
curve_data baseline_curve(int column, int last_stored_nm = 1110);

// Paints the newly reached stretch of the curve being scanned, resuming at view.plot_column
// (span >= 280: a column per step) or view.draw_position (span < 280: a nanometre per step),
// and fills view.screen_curve. A line with both ends on row 20 is black and one with both ends on
// row 300 white, so clipped stretches melt into the frame. A view of no span paints nothing.
void draw_data(plot_surface& surface, plot_view& view, const curve_data& curve);

// The whole redraw: view_span anew, axes, then every curve of `curves` (the caller passes the
// visible ones, in column order) laid out as draw_data does without waiting for data; a line
// from a column whose value is exactly 0 is skipped (a gap). screen_curve ends up holding the
// active curve (`active_index` into `curves`), or zeros when there is none (-1).
// A redraw also empties the window's track, peak and valley tables (init_data_area); the tables
// belong to the window, so the caller runs that after this.
void zoom_data(plot_surface& surface, plot_view& view, const axes_text& text,
               const std::vector<curve_data>& curves, int active_index);

// ---- The derivative window below the plot (rows 350..490, the same columns) ----

constexpr int derivative_top = 350, derivative_bottom = 490;

struct derivative_axes {
    int order = 1;            // 1..4: the title "1st Derivative" .. "4th Derivative"
    double high = 0, low = 0; // its Y range
    QString y_caption;        // "(ABS)" or "(%T)"
    const char* y_format;     // "#0.0000" in ABS, "#0.000" in %T
};

// The lower plot's frame (top and left black, bottom and right white), 41 ticks at the bottom and
// 21 on the left at 7 pixel pitch, the title at (60, 335), the Y caption at row 360, six Y labels at
// rows 28 i + 344 and six X labels at row 500 as in the upper plot.
void draw_derivative_window(plot_surface& surface, const plot_view& view, const derivative_axes& axes,
                            const axes_text& x_text);
// The derivative laid out over the columns by the two ways of draw_data (without waiting for data)
// into `screen_derivative`, drawn with DerivateGetPixelY: black along row 350, white along row 490.
void draw_derivative_curve(plot_surface& surface, const plot_view& view, const curve_data& curve,
                           std::array<double, plot_columns>& screen_derivative, double high, double low);

} // namespace lumora
