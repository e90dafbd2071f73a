#pragma once
// What both Timescan windows draw alike: the axes over time, one stretch of a curve under the
// frame rule, the read-out formats and the text of a value in panel 2.
#include "plot/curve_drawing.h"
#include "plot/plot_tracking.h"

#include <QColor>
#include <QString>

namespace lumora {

class plot_surface;

axes_text timescan_axes(bool percent_t);
tracking_config timescan_tracking(bool percent_t);

// The stretch from column c - 1 (row y0) to column c (row y1), c = 1..280: wholly on the top row
// black, wholly on the bottom row white, so the frame lines stay; otherwise in `color`.
void draw_stretch(plot_surface& surface, int c, int y0, int y1, const QColor& color);

// Panel 2: "#0.000" and "A", or "##0.00" and "%T"; written into `out` in place.
void timed_value_text(QString& out, double value, bool percent_t);

// The high/low check of the setup: the message, or empty when the range is wide enough.
QString range_problem(double low, double high, bool percent_t);

} // namespace lumora
