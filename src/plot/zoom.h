#pragma once
// Changing the view: the rubber band's rectangle and "Auto". The mouse itself is plot_tracking's.
#include "plot_view.h"

namespace lumora {

// zoom_rect into a view. Nothing unless view_high > view_low; a rectangle under 12 X units wide
// is ignored as a whole. The Y range keeps at least 0.01 (%T) or 0.001 (ABS), measured down from
// its top.
void zoom_cursor(plot_view& view, bool percent_t);
// Fits Y to screen_curve[0..280] with one percent margin each side (columns without data count
// as 0). At least 0.01 (%T) or 0.001 (ABS) wide.
void zoom_auto(plot_view& view, bool percent_t);

// The X value of a plot column (60..340): view_start + (x - 60) * view_nm_per_pixel.
double column_to_x(const plot_view& view, int x);
// The Y value of a plot row: (300 - y) * (high - low) / 280 + low.
double row_to_value(const plot_view& view, int y);

} // namespace lumora
