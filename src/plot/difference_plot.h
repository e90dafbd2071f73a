#pragma once
// The difference plot under the calibration square: each standard reading's Diff (Cal-Conc. minus
// Conc.) against its Conc., with a zero line across. Columns 60 to 340 as the square above, rows
// 540 (diff_min) up to 400 (diff_max).
#include <QColor>
#include <QString>

namespace lumora {

class plot_surface;

constexpr int difference_top = 400;
constexpr int difference_bottom = 540;
constexpr int difference_zero_row = 470;

// The frame, the zero line, the ticks and the labels: "(Diff)", the limits with "###0.000" and
// the Conc. axis from conc_min to conc_max captioned "Conc(unit)".
void draw_difference_frame(plot_surface& surface, double diff_min, double diff_max, double conc_min,
                           double conc_max, const QString& unit);

// The row of a Diff, clamped into the plot.
int difference_row(double diff, double diff_min, double diff_max);

// A cross of 2 units each way.
void mark_cross(plot_surface& surface, int x, int y, const QColor& color);

} // namespace lumora
