#include "distributions.h"

#include <cmath>
#include <limits>

namespace lumora {
namespace {

constexpr double nan_value = std::numeric_limits<double>::quiet_NaN();

// The continued fraction of I_x(a, b) by the modified Lentz method; it converges fast for
// x < (a + 1) / (a + b + 2), the caller swaps the arguments otherwise.
double beta_fraction(double a, double b, double x) {
    constexpr double tiny = 1e-300;
    const double qab = a + b, qap = a + 1, qam = a - 1;
    double c = 1, d = 1 - qab * x / qap;
    if (std::abs(d) < tiny) d = tiny;
    d = 1 / d;
    double h = d;
    for (int m = 1; m <= 300; ++m) {
        const double m2 = 2.0 * m;
        double aa = m * (b - m) * x / ((qam + m2) * (a + m2));
        d = 1 + aa * d;
        if (std::abs(d) < tiny) d = tiny;
        c = 1 + aa / c;
        if (std::abs(c) < tiny) c = tiny;
        d = 1 / d;
        h *= d * c;
        aa = -(a + m) * (qab + m) * x / ((a + m2) * (qap + m2));
        d = 1 + aa * d;
        if (std::abs(d) < tiny) d = tiny;
        c = 1 + aa / c;
        if (std::abs(c) < tiny) c = tiny;
        d = 1 / d;
        const double del = d * c;
        h *= del;
        if (std::abs(del - 1) < 1e-15) break;
    }
    return h;
}

// The smallest x in [lo, hi] with cdf(x) >= p, for an increasing cdf, by bisection to the last
// bit: slower than Newton's method but it cannot wander off in the far tails.
template <class Cdf> double invert(Cdf cdf, double p, double lo, double hi) {
    while (cdf(hi) < p && hi < 1e300)
        hi *= 2;
    for (int i = 0; i < 200; ++i) {
        const double mid = 0.5 * (lo + hi);
        if (mid == lo || mid == hi) break;
        (cdf(mid) < p ? lo : hi) = mid;
    }
    return 0.5 * (lo + hi);
}

} // namespace

double incomplete_beta(double a, double b, double x) {
    if (!(a > 0) || !(b > 0) || !(x >= 0) || !(x <= 1)) return nan_value;
    if (x == 0 || x == 1) return x;
    const double front =
        std::exp(std::lgamma(a + b) - std::lgamma(a) - std::lgamma(b) + a * std::log(x) + b * std::log1p(-x));
    if (x < (a + 1) / (a + b + 2)) return front * beta_fraction(a, b, x) / a;
    return 1 - front * beta_fraction(b, a, 1 - x) / b;
}

double student_t_cdf(double t, double df) {
    if (!(df > 0) || std::isnan(t)) return nan_value;
    const double tail = 0.5 * incomplete_beta(df / 2, 0.5, df / (df + t * t));
    return t > 0 ? 1 - tail : tail;
}

double student_t_quantile(double p, double df) {
    if (!(df > 0) || !(p > 0) || !(p < 1)) return nan_value;
    if (p == 0.5) return 0;
    if (p < 0.5) return -student_t_quantile(1 - p, df);
    return invert([df](double t) { return student_t_cdf(t, df); }, p, 0, 16);
}

double f_upper_tail(double f, double d1, double d2) {
    if (!(d1 > 0) || !(d2 > 0) || std::isnan(f)) return nan_value;
    if (f <= 0) return 1;
    // P(F > f) = I_{d2 / (d2 + d1 f)}(d2 / 2, d1 / 2)
    return incomplete_beta(d2 / 2, d1 / 2, d2 / (d2 + d1 * f));
}

double f_quantile(double p, double d1, double d2) {
    if (!(d1 > 0) || !(d2 > 0) || !(p > 0) || !(p < 1)) return nan_value;
    return invert([d1, d2](double f) { return 1 - f_upper_tail(f, d1, d2); }, p, 0, 16);
}

} // namespace lumora
