#pragma once
// The difference plot under the calibration square: each standard reading's Diff (Cal-Conc. minus
// Conc.) against its Conc., with a zero line across. Columns 60 to 340 as the square above, rows
// 540 (diff_min) up to 400 (diff_max).
#include <QColor>
#include <QString>
#include <span>

namespace lumora {

class plot_surface;

constexpr int difference_top = 400;
constexpr int difference_bottom = 540;
constexpr int difference_zero_row = 470;

// The frame, the zero line, the ticks and the labels: `caption` ("(Diff)"), the limits with
// "###0.000" and the Conc. axis from conc_min to conc_max captioned "Conc(unit)". The plot is 140
// rows high from `top`; Protein's sits at difference_top under its calibration square.
void draw_difference_frame(plot_surface& surface, double diff_min, double diff_max, double conc_min,
                           double conc_max, const QString& unit, int top = difference_top,
                           const QString& caption = QStringLiteral("(Diff)"));

// The row of a Diff, clamped into the plot.
int difference_row(double diff, double diff_min, double diff_max, int top = difference_top);

// The residual plot of a calibration on a surface of its own (400 x 200): each standard
// reading's residual [A] against its Conc., the zero line and the band of +/- 2 s(y/x) dashed.
// An empty frame when there are no statistics to show.
constexpr int residual_top = 20;
void draw_residual_plot(plot_surface& surface, std::span<const double> conc,
                        std::span<const double> residuals, double s_yx, double conc_min, double conc_max,
                        const QString& unit);

// A cross of 2 units each way.
void mark_cross(plot_surface& surface, int x, int y, const QColor& color);

} // namespace lumora
