#pragma once
// The spread of replicate readings and the residual figures of a calibration that reads every
// standard several times: %CV of a group, the limits of the difference plot, and the inverse fit
// of ABS on Conc. that is kept beside the calibration.
#include "calibration_fit.h"

#include <optional>
#include <span>

namespace lumora {

// 100 sd / centre, sd = sqrt(sum (x - centre)^2 / (n - 1)); 0 when the centre is 0. Samples use
// the group's own (rounded) mean as the centre. Fewer than 2 values give 0.
double replicate_cv(std::span<const double> x, double centre);
// The same around a standard's nominal Conc.; nothing when the nominal Conc. is 0, where the
// division has no answer.
std::optional<double> standard_cv(std::span<const double> x, double nominal);

// The difference plot's upper limit: the largest |Diff| widened by 10 %, 0.001 when every Diff
// is 0. The lower limit is its negative.
double diff_limit(std::span<const double> diffs);

// ABS on Conc. over the same points as the forward fit of `fit_type` (the through-zero types with
// the origin already appended by the caller): order 1 for types 1 and 2, order 2 for 3 and 4,
// through zero for 1 and 3. False when its determinant is 0, a division that has no answer.
bool inverse_fit(int fit_type, std::span<const double> conc, std::span<const double> abs,
                 fit_coefficients& out);

} // namespace lumora
