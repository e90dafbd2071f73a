#include "replicate_stats.h"

#include <algorithm>
#include <cmath>

namespace lumora {

double replicate_cv(std::span<const double> x, double centre) {
    if (x.size() < 2 || centre == 0) return 0;
    double sum = 0;
    for (double v : x)
        sum += (v - centre) * (v - centre);
    return 100 * std::sqrt(sum / static_cast<double>(x.size() - 1)) / centre;
}

std::optional<double> standard_cv(std::span<const double> x, double nominal) {
    if (nominal == 0) return std::nullopt;
    return replicate_cv(x, nominal);
}

double diff_limit(std::span<const double> diffs) {
    double largest = 0;
    for (double d : diffs)
        largest = std::max(largest, std::abs(d));
    largest += largest * 0.1;
    return largest == 0 ? 0.001 : largest;
}

bool inverse_fit(int fit_type, std::span<const double> conc, std::span<const double> abs,
                 fit_coefficients& out) {
    // Here Conc. is the independent variable: x = Conc., y = ABS.
    const std::size_t n = std::min(conc.size(), abs.size());
    double s1 = 0, s2 = 0, s3 = 0, s4 = 0, t0 = 0, t1 = 0, t2 = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const double x = conc[i], y = abs[i], x2 = x * x;
        s1 += x;
        s2 += x2;
        s3 += x2 * x;
        s4 += x2 * x2;
        t0 += y;
        t1 += y * x;
        t2 += y * x2;
    }
    const double N = static_cast<double>(n);
    fit_coefficients f;
    switch (fit_type) {
    case 1:
        if (s2 == 0) return false;
        f.ka = t1 / s2;
        break;
    case 2: {
        const double d = N * s2 - s1 * s1;
        if (d == 0) return false;
        f.ka = (N * t1 - s1 * t0) / d;
        f.kb = (t0 * s2 - t1 * s1) / d;
        break;
    }
    case 3: {
        const double d = s4 * s2 - s3 * s3;
        if (d == 0) return false;
        f.ka = (t2 * s2 - t1 * s3) / d;
        f.kb = (s4 * t1 - s3 * t2) / d;
        break;
    }
    case 4: {
        const double d = N * s2 * s4 + 2 * s1 * s2 * s3 - s2 * s2 * s2 - s1 * s1 * s4 - N * s3 * s3;
        if (d == 0) return false;
        f.ka = (N * s2 * t2 + s1 * s2 * t1 + s1 * s3 * t0 - s2 * s2 * t0 - s1 * s1 * t2 - N * s3 * t1) / d;
        f.kb = (N * s4 * t1 + s2 * s3 * t0 + s1 * s2 * t2 - s2 * s2 * t1 - s1 * s4 * t0 - N * s3 * t2) / d;
        f.kc = (s2 * s4 * t0 + s1 * s3 * t2 + s2 * s3 * t1 - s2 * s2 * t2 - s1 * s4 * t1 - s3 * s3 * t0) / d;
        break;
    }
    default:
        return false;
    }
    out = f;
    return true;
}

} // namespace lumora
