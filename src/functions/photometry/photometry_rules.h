#pragma once
// The arithmetic of Photometry apart from the window: where a reading stands in the grid, the
// conversion of an intensity with this function's limits, the texts of cells and headers, and
// the equation of column R over a row's cell texts.
#include "photometry_setup.h"

#include <QString>
#include <cstdint>

namespace lumora {

// The grid cell of reading number `index` (from 0) with n wavelengths: row index / n + 1,
// column index mod n + 1 (row 0 and column 0 are the headers).
struct ph_cell {
    int row = 0;
    int col = 0;
};
ph_cell ph_cell_of(int index, int n);

// Absorbance of a transmittance: -0.3..3.0, and 3.0 for no light at all.
double ph_absorbance(double now_trans);
// Percent transmittance, 0..120.
double ph_percent(double now_trans);

// One intensity to net_signal, now_trans, ph_abs and ph_percent_t at lambda_now_int; in a Zero
// pass the intensity first becomes that wavelength's reference. Throws run_fault when the
// reference equals the dark. Always true.
bool ph_show_now_abs(std::int32_t value);

// The text of a reading in the grid by ph_mode, and in `c` the value shown (Factor*ABS: the
// factor times the absorbance as rounded to three places).
QString ph_cell_text(int mode, double abs, double percent_t, float factor, double* c = nullptr);
// The unit letter that follows the cell text in panel 2: "A", "%T", "C".
QString ph_panel_unit(int mode);
// R's text: "#0.000" in ABS, "#0.00" in %T; in Factor*ABS "#0.00" when c (the row's last
// reading, not R) is 10000 or more or -1000 or less, "#0.000" otherwise.
QString ph_r_text(int mode, double r, double c);

// R = K1 * (WL1 +/- WL2) +/- K2 * (WL3 +/- WL4); `cell(k)` gives the text of column k of the
// row, and a pick below 1 counts 0.
template <class CellText> double ph_equation(const PhotometrySetup& s, CellText&& cell);
double ph_term_value(const QString& text);

// Header of column 0 by mode and unit, of a wavelength column, and of column R.
QString ph_unit_header(int mode, const QString& unit);
QString ph_lambda_header(double nm);
QString ph_r_header();
// Column 0 of a reading row: "3  V", "3  X", "1  V Zero".
QString ph_row_label(int row, bool selected, bool zero);

template <class CellText> double ph_equation(const PhotometrySetup& s, CellText&& cell) {
    double wl[4];
    for (int i = 0; i < 4; ++i) {
        const int pick = s.ph_wl_pick[static_cast<std::size_t>(i)];
        wl[i] = pick < 1 ? 0.0 : ph_term_value(cell(pick));
    }
    const double a = s.ph_sign[0] == 0 ? wl[0] + wl[1] : wl[0] - wl[1];
    const double b = s.ph_sign[2] == 0 ? wl[2] + wl[3] : wl[2] - wl[3];
    return s.ph_sign[1] == 0 ? s.ph_k1 * a + s.ph_k2 * b : s.ph_k1 * a - s.ph_k2 * b;
}

} // namespace lumora
