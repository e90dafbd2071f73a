#pragma once
// The arithmetic of the instrument's performance verification, on plain numbers: where an
// absorption band's centre lies, what tolerance a value is held to, and the statistics each check
// judges (replicate spread, a straight-line fit, noise, flatness, drift).
#include <optional>
#include <vector>

namespace lumora::processing {

enum class verdict { pass, warn, fail };

// The centre of an absorption band on a scan: `nm` and `transmittance` hold the points in
// wavelength order. The lowest transmittance within `window_nm` of `expected_nm` is taken with its
// two neighbours, and the parabola through the three gives the centre. Empty when the window holds
// no point with a neighbour on either side, when the lowest point lies on the window's edge (no
// band there), or when the three points make no minimum.
std::optional<double> band_centre(const std::vector<double>& nm, const std::vector<double>& transmittance,
                                  double expected_nm, double window_nm);

// The same on the 656.1 nm line scan, whose signal has a maximum: points `step_nm` apart, the first
// at `first_nm`. Empty for a line with no interior maximum.
std::optional<double> line_centre(const std::vector<double>& signal, double first_nm, double step_nm);

struct spread {
    double mean = 0;
    double sd = 0; // sample standard deviation, 0 for a single value
    int n = 0;
};
spread mean_and_sd(const std::vector<double>& values);

// How far a wavelength may lie from its reference: `below_400` under 400 nm, `from_400` from 400 nm on.
double wavelength_tolerance(double reference_nm, double below_400, double from_400);
// How far an absorbance may lie from its certified value: `absolute` [A] or `relative` (a fraction)
// of the certified value, whichever is larger.
double absorbance_tolerance(double certified, double absolute, double relative);
// Pass when |value - reference| <= tolerance (a rounding hair over the bound still passes).
verdict within(double value, double reference, double tolerance);

struct line_fit {
    double slope = 0;
    double intercept = 0;
    double r = 0; // correlation coefficient
};
// Least squares y on x; empty with fewer than two points or when all x or all y are equal.
std::optional<line_fit> fit_line(const std::vector<double>& x, const std::vector<double>& y);

// Linearity: fail with r below `min_r`, warn when any measured value lies above `warn_above` [A].
verdict linearity_verdict(const line_fit& fit, const std::vector<double>& measured, double min_r,
                          double warn_above);

// The root mean square of the readings about their mean; 0 for fewer than two.
double rms_noise(const std::vector<double>& readings);
// The largest departure from zero of a blank scan [A].
double largest_departure(const std::vector<double>& absorbance);
// The slope of the readings against time [A per hour]; times in seconds. Empty with fewer than two
// distinct times.
std::optional<double> drift_per_hour(const std::vector<double>& seconds,
                                     const std::vector<double>& absorbance);

// The worst of a set of verdicts: any fail fails, otherwise any warn warns.
verdict worst(const std::vector<verdict>& verdicts);

} // namespace lumora::processing
