#pragma once
// Calibrations of concentration on absorbance: the four least-squares fits, their goodness
// figure, the concentration of a sample and the axis limits of the calibration plot. Conc. is
// always the dependent variable. Plain functions on arrays, shared by Quantitative and Protein.
#include <array>
#include <cstdint>
#include <span>

namespace lumora {

constexpr int max_standards = 20;

// One function's calibration set. Index n of std_conc and std_abs takes the origin that the
// through-zero fits append behind n standards, so there are 21 entries.
struct calibration_set {
    std::int16_t std_count = 1;           // n, 1..20
    std::array<double, 21> std_conc{1.0}; // [unit of the function]
    std::array<double, 21> std_abs{1.0};  // [A]
    std::int16_t fit_type = 1;            // 1..4, see fit_equation
    double fit_ka = 1.0, fit_kb = 1.0, fit_kc = 1.0;
    double fit_r2 = 0; // coefficient of determination, unbounded: negative for a poor fit
    double conc_max = 1.0, conc_min = 0;
    double abs_max = 3.0, abs_min = 0;
};

struct fit_coefficients {
    double ka = 0, kb = 0, kc = 0, r2 = 0;
};

// The kernels: each fits Conc. on ABS over all the points given (a through-zero fit's caller has
// already appended the origin). False, and `out` untouched, when the points allow no fit.
//   1: Conc. = Ka A              2: Conc. = Ka A + Kb
//   3: Conc. = Ka A^2 + Kb A     4: Conc. = Ka A^2 + Kb A + Kc
bool fit_1optz(std::span<const double> conc, std::span<const double> abs, fit_coefficients& out);
bool fit_1opnz(std::span<const double> conc, std::span<const double> abs, fit_coefficients& out);
bool fit_2optz(std::span<const double> conc, std::span<const double> abs, fit_coefficients& out);
bool fit_2opnz(std::span<const double> conc, std::span<const double> abs, fit_coefficients& out);

// The fits on a calibration set. The through-zero ones (1 and 3) write the origin at index n
// first, and leave it there even when they fail. On success fit_ka, fit_kb, fit_kc (0 where the
// fit has no use for it) and fit_r2 are set; on failure the set's coefficients stand.
bool calcu_1optz(calibration_set& s);
bool calcu_1opnz(calibration_set& s);
bool calcu_2optz(calibration_set& s);
bool calcu_2opnz(calibration_set& s);
// The fit of `fit_type` (1..4); false for any other type.
bool calcu_fit(calibration_set& s, int fit_type);

// Conc. of absorbance `a` by the fit of `fit_type`; 0 for an unknown type.
double conc_from_abs(int fit_type, double ka, double kb, double kc, double a);

// Axis limits from the standards as the table shows them (Conc. and ABS read back from the
// cells): both axes contain 0, ABS widened by 10 % both ways, Conc. upwards only.
void calcu_conc_limite(calibration_set& s, std::span<const double> conc, std::span<const double> abs);
// Axis limits for a keyed-in factor: the ABS range is the user's, the Conc. range follows the
// curve over it.
void calcu_conc_limite_factor(calibration_set& s);

// The equation beside the plot ("Conc. = Ka * ABS + Kb"; types 3 and 4 leave a gap of four
// blanks for the superscript 2) and as the setup dialog shows it ("Conc.=Ka*ABS + Kb").
const char* fit_equation(int fit_type);
const char* fit_equation_setup(int fit_type);
// The least number of standards a fit needs: 1, 2, 2, 3.
int fit_least_standards(int fit_type);

} // namespace lumora
