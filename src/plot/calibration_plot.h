#pragma once
// The calibration plot of Quantitative and Protein: the frame, the curve of the fit with a cross
// at each standard, and the equation block below. The plot square maps Conc. across (columns 60
// to 340) and ABS up (rows 300 to 20), each on the calibration's own limits.
#include "processing/calibration_fit.h"

#include <QString>
#include <span>

namespace lumora {

class plot_surface;

// The frame, ticks and labels of the square: ABS abs_min..abs_max up, Conc. conc_min..conc_max
// across, "Conc.(unit)" under it. The whole surface is cleared first.
void draw_calibration_frame(plot_surface& surface, const calibration_set& s, const QString& unit);

// The curve of the fit, drawn from 281 steps of ABS from 0 up (abs_min is not added) and
// clipped to the square's columns; where it runs along column 59 or 340 it takes the colour of
// what lies beyond, so it vanishes there. Then, with `crosses`, a light blue cross at each of the
// `count` standards. draw_1op serves types 1 and 2, draw_2op types 3 and 4.
void draw_1op(plot_surface& surface, const calibration_set& s, int count, bool crosses);
void draw_2op(plot_surface& surface, const calibration_set& s, int count, bool crosses);

// The equation block at (60, 340): the equation, Ka, Kb and Kc as the fit has them, and R with
// its superscript 2, every number with "0.0000".
void show_equation(plot_surface& surface, const calibration_set& s);

// The column of a Conc. and the row of an ABS on the square, unclamped.
int calibration_column(double conc, const calibration_set& s);
int calibration_row(double abs, const calibration_set& s);

} // namespace lumora
