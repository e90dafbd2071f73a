#include "verification_checks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace lumora::processing {
namespace {

// The vertex of the parabola through (-1, y0), (0, y1), (1, y2), as an offset from the middle point;
// empty when the three points lie on a line.
std::optional<double> vertex_offset(double y0, double y1, double y2) {
    const double curvature = y0 - 2 * y1 + y2;
    if (curvature == 0) return std::nullopt;
    return 0.5 * (y0 - y2) / curvature;
}

} // namespace

std::optional<double> band_centre(const std::vector<double>& nm, const std::vector<double>& transmittance,
                                  double expected_nm, double window_nm) {
    const std::size_t n = std::min(nm.size(), transmittance.size());
    std::size_t lowest = n;
    std::size_t first = n, last = 0;
    for (std::size_t i = 0; i < n; ++i) {
        if (std::abs(nm[i] - expected_nm) > window_nm) continue;
        first = std::min(first, i);
        last = i;
        if (lowest == n || transmittance[i] < transmittance[lowest]) lowest = i;
    }
    // A minimum on the window's edge is the flank of something else, not this band.
    if (lowest == n || lowest == first || lowest == last || lowest == 0 || lowest + 1 >= n)
        return std::nullopt;
    const double y0 = transmittance[lowest - 1], y1 = transmittance[lowest], y2 = transmittance[lowest + 1];
    if (!(y0 > y1 || y2 > y1)) return std::nullopt;
    const auto d = vertex_offset(y0, y1, y2);
    if (!d || std::abs(*d) > 1) return std::nullopt;
    // Points are 1 nm apart on a scan; the step between the neighbours keeps this right for any spacing.
    const double step = (nm[lowest + 1] - nm[lowest - 1]) / 2;
    return nm[lowest] + *d * step;
}

std::optional<double> line_centre(const std::vector<double>& signal, double first_nm, double step_nm) {
    if (signal.size() < 3) return std::nullopt;
    const auto peak =
        static_cast<std::size_t>(std::max_element(signal.begin(), signal.end()) - signal.begin());
    if (peak == 0 || peak + 1 >= signal.size()) return std::nullopt;
    const auto d = vertex_offset(signal[peak - 1], signal[peak], signal[peak + 1]);
    if (!d || std::abs(*d) > 1) return std::nullopt;
    return first_nm + (static_cast<double>(peak) + *d) * step_nm;
}

spread mean_and_sd(const std::vector<double>& values) {
    spread s;
    s.n = static_cast<int>(values.size());
    if (values.empty()) return s;
    double sum = 0;
    for (double v : values)
        sum += v;
    s.mean = sum / s.n;
    if (s.n < 2) return s;
    double squares = 0;
    for (double v : values)
        squares += (v - s.mean) * (v - s.mean);
    s.sd = std::sqrt(squares / (s.n - 1));
    return s;
}

double wavelength_tolerance(double reference_nm, double below_400, double from_400) {
    return reference_nm < 400 ? below_400 : from_400;
}

double absorbance_tolerance(double certified, double absolute, double relative) {
    return std::max(absolute, relative * std::abs(certified));
}

verdict within(double value, double reference, double tolerance) {
    if (!std::isfinite(value)) return verdict::fail;
    // The values are shown rounded; a difference that equals the bound to within rounding passes.
    const double hair = 1e-9 * std::max(1.0, std::abs(reference));
    return std::abs(value - reference) <= tolerance + hair ? verdict::pass : verdict::fail;
}

std::optional<line_fit> fit_line(const std::vector<double>& x, const std::vector<double>& y) {
    const std::size_t n = std::min(x.size(), y.size());
    if (n < 2) return std::nullopt;
    double mx = 0, my = 0;
    for (std::size_t i = 0; i < n; ++i) {
        mx += x[i];
        my += y[i];
    }
    mx /= static_cast<double>(n);
    my /= static_cast<double>(n);
    double sxx = 0, syy = 0, sxy = 0;
    for (std::size_t i = 0; i < n; ++i) {
        sxx += (x[i] - mx) * (x[i] - mx);
        syy += (y[i] - my) * (y[i] - my);
        sxy += (x[i] - mx) * (y[i] - my);
    }
    if (sxx == 0 || syy == 0) return std::nullopt;
    line_fit f;
    f.slope = sxy / sxx;
    f.intercept = my - f.slope * mx;
    f.r = sxy / std::sqrt(sxx * syy);
    return f;
}

verdict linearity_verdict(const line_fit& fit, const std::vector<double>& measured, double min_r,
                          double warn_above) {
    if (!(fit.r >= min_r)) return verdict::fail;
    for (double a : measured)
        if (a > warn_above) return verdict::warn;
    return verdict::pass;
}

double rms_noise(const std::vector<double>& readings) {
    if (readings.size() < 2) return 0;
    const double m = mean_and_sd(readings).mean;
    double squares = 0;
    for (double r : readings)
        squares += (r - m) * (r - m);
    return std::sqrt(squares / static_cast<double>(readings.size()));
}

double largest_departure(const std::vector<double>& absorbance) {
    double worst = 0;
    for (double a : absorbance)
        worst = std::max(worst, std::abs(a));
    return worst;
}

std::optional<double> drift_per_hour(const std::vector<double>& seconds,
                                     const std::vector<double>& absorbance) {
    const std::size_t n = std::min(seconds.size(), absorbance.size());
    if (n < 2) return std::nullopt;
    double mt = 0, ma = 0;
    for (std::size_t i = 0; i < n; ++i) {
        mt += seconds[i];
        ma += absorbance[i];
    }
    mt /= static_cast<double>(n);
    ma /= static_cast<double>(n);
    double stt = 0, sta = 0;
    for (std::size_t i = 0; i < n; ++i) {
        stt += (seconds[i] - mt) * (seconds[i] - mt);
        sta += (seconds[i] - mt) * (absorbance[i] - ma);
    }
    if (stt == 0) return std::nullopt;
    return sta / stt * 3600;
}

verdict worst(const std::vector<verdict>& verdicts) {
    verdict w = verdict::pass;
    for (verdict v : verdicts) {
        if (v == verdict::fail) return verdict::fail;
        if (v == verdict::warn) w = verdict::warn;
    }
    return w;
}

} // namespace lumora::processing
