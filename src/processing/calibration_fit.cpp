#include "calibration_fit.h"

#include <cstddef>

namespace lumora {
namespace {

// The sums of the normal equations over N points (C for Conc., A for ABS).
struct fit_sums {
    double n = 0;
    double s1 = 0, s2 = 0, s3 = 0, s4 = 0; // A, A^2, A^3, A^4
    double t0 = 0, t1 = 0, t2 = 0;         // C, C A, C A^2
    double q = 0;                          // C^2
    double ss = 0;                         // the spread of C about its mean
};

fit_sums sums_of(std::span<const double> conc, std::span<const double> abs) {
    fit_sums s;
    const std::size_t n = conc.size() < abs.size() ? conc.size() : abs.size();
    s.n = static_cast<double>(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double c = conc[i], a = abs[i], a2 = a * a;
        s.s1 += a;
        s.s2 += a2;
        s.s3 += a2 * a;
        s.s4 += a2 * a2;
        s.t0 += c;
        s.t1 += c * a;
        s.t2 += c * a2;
        s.q += c * c;
    }
    if (n == 0) return s;
    const double mean = s.t0 / s.n;
    for (std::size_t i = 0; i < n; ++i) {
        const double d = conc[i] - mean;
        s.ss += d * d;
    }
    return s;
}

// The first n standards with the origin behind them.
std::size_t append_origin(calibration_set& s) {
    const int n = s.std_count < 0 ? 0 : (s.std_count > max_standards ? max_standards : s.std_count);
    s.std_conc[static_cast<std::size_t>(n)] = 0;
    s.std_abs[static_cast<std::size_t>(n)] = 0;
    return static_cast<std::size_t>(n) + 1;
}

std::size_t standards(const calibration_set& s) {
    const int n = s.std_count < 0 ? 0 : (s.std_count > max_standards ? max_standards : s.std_count);
    return static_cast<std::size_t>(n);
}

bool take(calibration_set& s, bool ok, const fit_coefficients& f) {
    if (!ok) return false;
    s.fit_ka = f.ka;
    s.fit_kb = f.kb;
    s.fit_kc = f.kc;
    s.fit_r2 = f.r2;
    return true;
}

using kernel = bool (*)(std::span<const double>, std::span<const double>, fit_coefficients&);

bool run(calibration_set& s, kernel k, std::size_t points) {
    fit_coefficients f;
    const bool ok = k(std::span(s.std_conc.data(), points), std::span(s.std_abs.data(), points), f);
    return take(s, ok, f);
}

} // namespace

bool fit_1optz(std::span<const double> conc, std::span<const double> abs, fit_coefficients& out) {
    const fit_sums s = sums_of(conc, abs);
    if (s.s2 == 0) return false; // all ABS 0: tested before the spread
    if (s.ss == 0) return false;
    const double ka = s.t1 / s.s2;
    out = {ka, 0, 0, 1 - (s.q - ka * s.t1) / s.ss};
    return true;
}

bool fit_1opnz(std::span<const double> conc, std::span<const double> abs, fit_coefficients& out) {
    const fit_sums s = sums_of(conc, abs);
    if (s.ss == 0) return false;
    const double d = s.n * s.s2 - s.s1 * s.s1;
    if (d == 0) return false;
    const double ka = (s.n * s.t1 - s.s1 * s.t0) / d;
    const double kb = (s.t0 * s.s2 - s.t1 * s.s1) / d;
    out = {ka, kb, 0, 1 - (s.q - kb * s.t0 - ka * s.t1) / s.ss};
    return true;
}

bool fit_2optz(std::span<const double> conc, std::span<const double> abs, fit_coefficients& out) {
    const fit_sums s = sums_of(conc, abs);
    if (s.ss == 0) return false;
    const double d = s.s4 * s.s2 - s.s3 * s.s3;
    if (d == 0) return false;
    const double ka = (s.t2 * s.s2 - s.t1 * s.s3) / d;
    const double kb = (s.s4 * s.t1 - s.s3 * s.t2) / d;
    out = {ka, kb, 0, 1 - (s.q - kb * s.t1 - ka * s.t2) / s.ss};
    return true;
}

bool fit_2opnz(std::span<const double> conc, std::span<const double> abs, fit_coefficients& out) {
    const fit_sums s = sums_of(conc, abs);
    if (s.ss == 0) return false;
    const double n = s.n, s1 = s.s1, s2 = s.s2, s3 = s.s3, s4 = s.s4, t0 = s.t0, t1 = s.t1, t2 = s.t2;
    // Cramer's rule on the 3 x 3 normal equations, in one step.
    const double d = n * s2 * s4 + 2 * s1 * s2 * s3 - s2 * s2 * s2 - s1 * s1 * s4 - n * s3 * s3;
    if (d == 0) return false;
    const double ka =
        (n * s2 * t2 + s1 * s2 * t1 + s1 * s3 * t0 - s2 * s2 * t0 - s1 * s1 * t2 - n * s3 * t1) / d;
    const double kb =
        (n * s4 * t1 + s2 * s3 * t0 + s1 * s2 * t2 - s2 * s2 * t1 - s1 * s4 * t0 - n * s3 * t2) / d;
    const double kc =
        (s2 * s4 * t0 + s1 * s3 * t2 + s2 * s3 * t1 - s2 * s2 * t2 - s1 * s4 * t1 - s3 * s3 * t0) / d;
    out = {ka, kb, kc, 1 - (s.q - kc * t0 - kb * t1 - ka * t2) / s.ss};
    return true;
}

bool calcu_1optz(calibration_set& s) {
    return run(s, fit_1optz, append_origin(s));
}
bool calcu_1opnz(calibration_set& s) {
    return run(s, fit_1opnz, standards(s));
}
bool calcu_2optz(calibration_set& s) {
    return run(s, fit_2optz, append_origin(s));
}
bool calcu_2opnz(calibration_set& s) {
    return run(s, fit_2opnz, standards(s));
}

bool calcu_fit(calibration_set& s, int fit_type) {
    switch (fit_type) {
    case 1:
        return calcu_1optz(s);
    case 2:
        return calcu_1opnz(s);
    case 3:
        return calcu_2optz(s);
    case 4:
        return calcu_2opnz(s);
    default:
        return false;
    }
}

double conc_from_abs(int fit_type, double ka, double kb, double kc, double a) {
    switch (fit_type) {
    case 1:
        return ka * a;
    case 2:
        return ka * a + kb;
    case 3:
        return ka * a * a + kb * a;
    case 4:
        return ka * a * a + kb * a + kc;
    default:
        return 0;
    }
}

namespace {
void widen_conc(calibration_set& s) {
    if (s.conc_max - s.conc_min <= 0.1) s.conc_max += 0.1;
}
} // namespace

void calcu_conc_limite(calibration_set& s, std::span<const double> conc, std::span<const double> abs) {
    s.conc_max = s.conc_min = s.abs_max = s.abs_min = 0;
    const std::size_t n = conc.size() < abs.size() ? conc.size() : abs.size();
    for (std::size_t i = 0; i < n; ++i) {
        if (conc[i] > s.conc_max) s.conc_max = conc[i];
        if (conc[i] < s.conc_min) s.conc_min = conc[i];
        if (abs[i] > s.abs_max) s.abs_max = abs[i];
        if (abs[i] < s.abs_min) s.abs_min = abs[i];
    }
    s.abs_max = s.abs_max + s.abs_max * 0.1;
    s.abs_min = s.abs_min + s.abs_min * 0.1;
    s.conc_max = s.conc_max + s.conc_max * 0.1; // conc_min stays where the data put it
    widen_conc(s);
}

void calcu_conc_limite_factor(calibration_set& s) {
    const double step = (s.abs_max - s.abs_min) / 280;
    const bool second_order = s.fit_type == 3 || s.fit_type == 4;
    s.conc_max = s.conc_min = second_order ? s.fit_kc : s.fit_kb;
    for (int i = 1; i <= 280; ++i) {
        const double a = s.abs_min + i * step;
        // Types 1 and 3 take the full formula; their Kb or Kc is 0.
        const double c = second_order ? s.fit_ka * a * a + s.fit_kb * a + s.fit_kc : s.fit_ka * a + s.fit_kb;
        if (c > s.conc_max) s.conc_max = c;
        if (c < s.conc_min) s.conc_min = c;
    }
    widen_conc(s);
}

const char* fit_equation(int fit_type) {
    switch (fit_type) {
    case 1:
        return "Conc. = Ka * ABS";
    case 2:
        return "Conc. = Ka * ABS + Kb";
    case 3:
        return "Conc. = Ka * ABS    + Kb * ABS";
    case 4:
        return "Conc. = Ka * ABS    + Kb * ABS + Kc";
    default:
        return "";
    }
}

const char* fit_equation_setup(int fit_type) {
    switch (fit_type) {
    case 1:
        return "Conc.=Ka*ABS";
    case 2:
        return "Conc.=Ka*ABS + Kb";
    case 3:
        return "Conc.=Ka*ABS^2 + Kb*ABS";
    case 4:
        return "Conc.=Ka*ABS^2 + Kb*ABS + Kc";
    default:
        return "";
    }
}

int fit_least_standards(int fit_type) {
    return fit_type == 1 ? 1 : (fit_type == 4 ? 3 : 2);
}

} // namespace lumora
