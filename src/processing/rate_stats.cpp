#include "rate_stats.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace lumora::processing {

rate_stats rate_statistics(std::span<const double> samples, const kinetic_result& r,
                           const kinetic_input& in) {
    rate_stats out;
    const int n = std::clamp(r.points, 0, kinetic_max_points - 1);
    out.n = n;
    if (n < 3) return out;
    const double dt = static_cast<double>(in.rate) / (n - 1);
    double sx = 0, sy = 0;
    std::vector<double> x(static_cast<std::size_t>(n)), y(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        const auto k = static_cast<std::size_t>(r.sample[static_cast<std::size_t>(i)]);
        x[static_cast<std::size_t>(i)] = i * dt;
        y[static_cast<std::size_t>(i)] = k < samples.size() ? samples[k] : 0.0;
        sx += x[static_cast<std::size_t>(i)];
        sy += y[static_cast<std::size_t>(i)];
    }
    const double mx = sx / n, my = sy / n;
    double sxx = 0, sxy = 0, syy = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        sxx += (x[i] - mx) * (x[i] - mx);
        sxy += (x[i] - mx) * (y[i] - my);
        syy += (y[i] - my) * (y[i] - my);
    }
    if (syy == 0 || sxx == 0) return out;
    const double slope = sxy / sxx;
    const double ss_res = std::max(0.0, syy - slope * sxy);
    out.r2 = 1 - ss_res / syy;
    out.rate_se = std::sqrt(ss_res / (n - 2) / sxx) * 60; // per second to per minute
    out.curved = out.r2 < rate_r2_limit;
    out.ok = true;
    return out;
}

straight_stretch longest_straight(std::span<const double> samples, int min_samples) {
    straight_stretch out;
    const int n = static_cast<int>(samples.size());
    min_samples = std::max(min_samples, 4);
    if (n < min_samples) return out;
    // Var(y[i-1] - 2 y[i] + y[i+1]) = 6 sigma^2 for independent noise. Readings come to three
    // decimals, so the noise is never taken below their rounding.
    double sum = 0;
    for (int i = 1; i + 1 < n; ++i) {
        const double d = samples[static_cast<std::size_t>(i - 1)] - 2 * samples[static_cast<std::size_t>(i)] +
                         samples[static_cast<std::size_t>(i + 1)];
        sum += d * d;
    }
    out.noise = std::max(std::sqrt(sum / (6.0 * (n - 2))), 0.001 / std::sqrt(12.0));
    const double limit = 1.5 * 1.5 * out.noise * out.noise;
    // Prefix sums of i, i^2, y, y^2 and i y: every window's line in constant time.
    std::vector<double> s1(static_cast<std::size_t>(n) + 1), s2(s1), t1(s1), t2(s1), c(s1);
    for (int i = 0; i < n; ++i) {
        const auto k = static_cast<std::size_t>(i);
        const double x = i, y = samples[k];
        s1[k + 1] = s1[k] + x;
        s2[k + 1] = s2[k] + x * x;
        t1[k + 1] = t1[k] + y;
        t2[k + 1] = t2[k] + y * y;
        c[k + 1] = c[k] + x * y;
    }
    double best_ratio = 0;
    for (int len = n; len >= min_samples && !out.found; --len) {
        for (int a = 0; a + len <= n; ++a) {
            const auto lo = static_cast<std::size_t>(a), hi = static_cast<std::size_t>(a + len);
            const double m = len;
            const double sx = s1[hi] - s1[lo], sy = t1[hi] - t1[lo];
            const double sxx = (s2[hi] - s2[lo]) - sx * sx / m;
            const double sxy = (c[hi] - c[lo]) - sx * sy / m;
            const double syy = (t2[hi] - t2[lo]) - sy * sy / m;
            const double ss_res = std::max(0.0, syy - sxy * sxy / sxx);
            const double ratio = ss_res / (m - 2);
            if (ratio <= limit && (!out.found || ratio < best_ratio)) {
                out.found = true;
                out.first = a;
                out.last = a + len - 1;
                best_ratio = ratio;
            }
        }
    }
    return out;
}

} // namespace lumora::processing
