#pragma once
// How straight a kinetic rate is: the standard error of the rate and R^2 over the points of its
// window, and the search for the longest stretch of a run over which the absorbance rises (or
// falls) in a straight line within the noise of the readings.
#include "kinetic_fit.h"

#include <span>
#include <string>

namespace lumora::processing {

constexpr double rate_r2_limit = 0.998; // below it the window is flagged as not straight

struct rate_stats {
    bool ok = false;
    int n = 0;
    double rate_se = 0; // [A/min], the standard error of dabs_dt
    double r2 = 0;
    bool curved = false; // R^2 below rate_r2_limit
};

// Over the points the fit took (their samples and nominal times, as kinetic_fit has them). Not ok
// with fewer than 3 points or when every point reads the same, where R^2 has no meaning.
rate_stats rate_statistics(std::span<const double> samples, const kinetic_result& r, const kinetic_input& in);

// The longest run of samples [first, last] whose straight line leaves residuals no larger than
// the noise of the record: the residual standard deviation at most 1.5 times the noise, which
// is estimated from the second differences of all samples (a smooth curve hardly moves them).
// `min_samples` is the shortest stretch worth offering. Not found when no stretch qualifies.
struct straight_stretch {
    bool found = false;
    int first = 0, last = 0;
    double noise = 0; // [A], the estimate the stretch was held to
};
straight_stretch longest_straight(std::span<const double> samples, int min_samples);

} // namespace lumora::processing
