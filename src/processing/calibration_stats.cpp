#include "calibration_stats.h"

#include "distributions.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace lumora {
namespace {

// The powers of Conc. a fit type uses: type 1 {1}, 2 {0, 1}, 3 {1, 2}, 4 {0, 1, 2}.
struct model_terms {
    std::array<int, 3> power{};
    int count = 0;
};

model_terms terms_of(int fit_type) {
    switch (fit_type) {
    case 1:
        return {{1, 0, 0}, 1};
    case 2:
        return {{0, 1, 0}, 2};
    case 3:
        return {{1, 2, 0}, 2};
    default:
        return {{0, 1, 2}, 3};
    }
}

double raw_weight(stats_weighting w, double c) {
    switch (w) {
    case stats_weighting::inverse_x:
        return 1 / c;
    case stats_weighting::inverse_x2:
        return 1 / (c * c);
    default:
        return 1;
    }
}

using matrix = std::array<std::array<double, 3>, 3>;

// Gauss-Jordan inverse of the leading k x k block with partial pivoting; false when a pivot
// vanishes against the size of the matrix, i.e. the standards cannot carry the fit.
bool invert(matrix m, int k, matrix& inv) {
    double largest = 0;
    for (int i = 0; i < k; ++i)
        largest = std::max(largest, std::abs(m[i][i]));
    inv = {};
    for (int i = 0; i < k; ++i)
        inv[i][i] = 1;
    for (int col = 0; col < k; ++col) {
        int pivot = col;
        for (int r = col + 1; r < k; ++r)
            if (std::abs(m[r][col]) > std::abs(m[pivot][col])) pivot = r;
        if (!(std::abs(m[pivot][col]) > 1e-12 * largest)) return false;
        std::swap(m[pivot], m[col]);
        std::swap(inv[pivot], inv[col]);
        const double d = m[col][col];
        for (int j = 0; j < k; ++j) {
            m[col][j] /= d;
            inv[col][j] /= d;
        }
        for (int r = 0; r < k; ++r) {
            if (r == col) continue;
            const double f = m[r][col];
            for (int j = 0; j < k; ++j) {
                m[r][j] -= f * m[col][j];
                inv[r][j] -= f * inv[col][j];
            }
        }
    }
    return true;
}

// A weighted least-squares fit of ABS on the powers of Conc. in `t`. Conc. is scaled by its
// largest magnitude first so that the normal equations of a second-order fit stay well
// conditioned whatever the unit.
struct ls_fit {
    bool ok = false;
    std::array<double, 3> beta{}; // by power 0, 1, 2
    matrix inv{};                 // (X' W X)^-1 by power, unscaled
    double ss_res = 0;
};

ls_fit least_squares(const model_terms& t, std::span<const double> x, std::span<const double> y,
                     std::span<const double> w, double scale) {
    ls_fit out;
    matrix a{};
    std::array<double, 3> rhs{};
    const std::size_t n = x.size();
    for (std::size_t i = 0; i < n; ++i) {
        std::array<double, 3> g{};
        const double u = x[i] / scale;
        for (int j = 0; j < t.count; ++j)
            g[j] = std::pow(u, t.power[j]);
        for (int j = 0; j < t.count; ++j) {
            rhs[j] += w[i] * g[j] * y[i];
            for (int k = 0; k < t.count; ++k)
                a[j][k] += w[i] * g[j] * g[k];
        }
    }
    matrix inv;
    if (!invert(a, t.count, inv)) return out;
    std::array<double, 3> gamma{};
    for (int j = 0; j < t.count; ++j)
        for (int k = 0; k < t.count; ++k)
            gamma[j] += inv[j][k] * rhs[k];
    for (int j = 0; j < t.count; ++j) {
        const int pj = t.power[j];
        out.beta[pj] = gamma[j] / std::pow(scale, pj);
        for (int k = 0; k < t.count; ++k) {
            const int pk = t.power[k];
            out.inv[pj][pk] = inv[j][k] / (std::pow(scale, pj) * std::pow(scale, pk));
        }
    }
    for (std::size_t i = 0; i < n; ++i) {
        const double r = y[i] - (out.beta[0] + out.beta[1] * x[i] + out.beta[2] * x[i] * x[i]);
        out.ss_res += w[i] * r * r;
    }
    out.ok = true;
    return out;
}

double fitted(const calibration_stats& s, double c) {
    return s.beta[0] + s.beta[1] * c + s.beta[2] * c * c;
}

calibration_stats refuse(calibration_stats s, const char* why) {
    s.ok = false;
    s.why = why;
    return s;
}

} // namespace

calibration_stats calibration_statistics(int fit_type, stats_weighting weighting,
                                         std::span<const double> conc, std::span<const double> abs) {
    calibration_stats s;
    s.fit_type = std::clamp(fit_type, 1, 4);
    s.weighting = s.fit_type <= 2 ? weighting : stats_weighting::none;
    const model_terms t = terms_of(s.fit_type);
    s.params = t.count;
    const std::size_t n = std::min(conc.size(), abs.size());
    s.n = static_cast<int>(n);
    s.df = s.n - s.params;
    s.conc.assign(conc.begin(), conc.begin() + static_cast<std::ptrdiff_t>(n));
    if (n == 0) return refuse(s, "no standards");
    for (std::size_t i = 0; i < n; ++i)
        if (!std::isfinite(conc[i]) || !std::isfinite(abs[i])) return refuse(s, "a standard is not a number");

    std::vector<double> levels(s.conc);
    std::sort(levels.begin(), levels.end());
    levels.erase(std::unique(levels.begin(), levels.end()), levels.end());
    s.levels = static_cast<int>(levels.size());
    s.conc_min = levels.front();
    s.conc_max = levels.back();
    if (s.levels < 2) return refuse(s, "one standard");
    if (s.levels < s.params) return refuse(s, "fewer standards than the fit has coefficients");
    if (s.df < 1) return refuse(s, "no degrees of freedom left");
    if (std::all_of(abs.begin(), abs.begin() + static_cast<std::ptrdiff_t>(n),
                    [&](double a) { return a == abs[0]; }))
        return refuse(s, "all absorbances equal");

    std::vector<double> w(n, 1.0);
    if (s.weighting != stats_weighting::none) {
        if (s.conc_min <= 0) return refuse(s, "a weighting by 1/x needs every standard above 0");
        double sum = 0;
        for (std::size_t i = 0; i < n; ++i)
            sum += w[i] = raw_weight(s.weighting, conc[i]);
        s.weight_scale = static_cast<double>(n) / sum;
        for (double& v : w)
            v *= s.weight_scale;
    }
    const double scale = std::max(std::abs(s.conc_min), std::abs(s.conc_max));
    const std::span<const double> y = abs.first(n);
    const ls_fit f = least_squares(t, s.conc, y, w, scale);
    if (!f.ok) return refuse(s, "the standards cannot carry this fit");
    s.beta = f.beta;

    double sw = 0, swy = 0;
    for (std::size_t i = 0; i < n; ++i) {
        sw += w[i];
        swy += w[i] * y[i];
    }
    const double mean = swy / sw;
    double ss_tot = 0;
    for (std::size_t i = 0; i < n; ++i)
        ss_tot += w[i] * (y[i] - mean) * (y[i] - mean);
    // The slope at the low end: 0 there means the standards show no response to measure.
    double spread = 0;
    for (std::size_t i = 0; i < n; ++i)
        spread = std::max(spread, std::abs(y[i] - mean));
    if (!(std::abs(s.beta[1]) * scale > 1e-12 * spread)) return refuse(s, "the slope is zero");

    const double s2 = f.ss_res / s.df;
    s.s_yx = std::sqrt(s2);
    s.r2 = 1 - f.ss_res / ss_tot;
    s.adj_r2 = 1 - (1 - s.r2) * (s.n - 1) / s.df;
    s.t95 = student_t_quantile(0.975, s.df);
    for (int j = 0; j < 3; ++j)
        for (int k = 0; k < 3; ++k)
            s.cov[j][k] = s2 * f.inv[j][k];
    for (int j = 0; j < 3; ++j)
        s.beta_se[j] = std::sqrt(std::max(0.0, s.cov[j][j]));
    s.residuals.resize(n);
    for (std::size_t i = 0; i < n; ++i)
        s.residuals[i] = y[i] - fitted(s, conc[i]);

    // Lack of fit against the replicates' own spread; without replicates Mandel's test of the
    // straight line against the second-order curve, which needs five standards to mean anything.
    if (s.n > s.levels && s.levels > s.params) {
        double ss_pe = 0;
        for (double level : levels) {
            double lw = 0, lwy = 0;
            for (std::size_t i = 0; i < n; ++i)
                if (conc[i] == level) lw += w[i], lwy += w[i] * y[i];
            for (std::size_t i = 0; i < n; ++i)
                if (conc[i] == level) ss_pe += w[i] * (y[i] - lwy / lw) * (y[i] - lwy / lw);
        }
        s.test.df1 = s.levels - s.params;
        s.test.df2 = s.n - s.levels;
        if (ss_pe > 0) {
            s.test.test = linearity_test::kind::lack_of_fit;
            s.test.f = (std::max(0.0, f.ss_res - ss_pe) / s.test.df1) / (ss_pe / s.test.df2);
            s.test.p = f_upper_tail(s.test.f, s.test.df1, s.test.df2);
            s.test.significant = s.test.p < 0.05;
        }
    } else if (s.n == s.levels && s.fit_type <= 2 && s.n >= 5) {
        model_terms q = t;
        q.power[static_cast<std::size_t>(q.count++)] = 2;
        const ls_fit g = least_squares(q, s.conc, y, w, scale);
        if (g.ok) {
            s.test.test = linearity_test::kind::mandel;
            s.test.df1 = 1;
            s.test.df2 = s.n - q.count;
            const double gain = std::max(0.0, f.ss_res - g.ss_res);
            const double rest = g.ss_res / s.test.df2;
            s.test.f = rest > 0 ? gain / rest : (gain > 0 ? HUGE_VAL : 0);
            s.test.p = f_upper_tail(s.test.f, 1, s.test.df2);
            s.test.significant = s.test.p < 0.05;
        }
    }

    // The turning point of a second-order curve inside the standards' range.
    if (s.beta[2] != 0) {
        s.turn_conc = -s.beta[1] / (2 * s.beta[2]);
        s.turns = s.turn_conc > s.conc_min && s.turn_conc < s.conc_max;
    }

    // LOD and LOQ: the blanks' spread when two or more blanks were read and they scatter at all.
    double noise = s.s_yx;
    std::vector<double> blanks;
    for (std::size_t i = 0; i < n; ++i)
        if (conc[i] == 0) blanks.push_back(y[i]);
    if (blanks.size() >= 2) {
        double bm = 0, bs = 0;
        for (double b : blanks)
            bm += b;
        bm /= static_cast<double>(blanks.size());
        for (double b : blanks)
            bs += (b - bm) * (b - bm);
        bs = std::sqrt(bs / static_cast<double>(blanks.size() - 1));
        if (bs > 0) {
            noise = bs;
            s.blank_readings = static_cast<int>(blanks.size());
        }
    }
    // A weighted fit's s is the spread at weight 1: at the lowest standard it is s / sqrt(w).
    if (s.blank_readings == 0 && s.weighting != stats_weighting::none)
        noise /= std::sqrt(raw_weight(s.weighting, s.conc_min) * s.weight_scale);
    s.lod = 3.3 * noise / std::abs(s.beta[1]);
    s.loq = 10 * noise / std::abs(s.beta[1]);
    s.lod_ok = std::isfinite(s.lod);
    s.ok = true;
    return s;
}

sample_prediction predict_sample(const calibration_stats& s, double abs, int m, double near) {
    sample_prediction p;
    if (!s.ok || m < 1 || !std::isfinite(abs)) return p;
    // The roots of beta2 x^2 + beta1 x + (beta0 - abs) = 0.
    std::array<double, 2> roots{};
    int count = 0;
    const double a = s.beta[2], b = s.beta[1], c = s.beta[0] - abs;
    if (a == 0) {
        roots[0] = -c / b;
        count = 1;
    } else {
        const double disc = b * b - 4 * a * c;
        if (disc < 0) return p; // no concentration gives this reading
        // The stable pair: no difference of nearly equal numbers.
        const double q = -0.5 * (b + std::copysign(std::sqrt(disc), b));
        roots = {q / a, q != 0 ? c / q : q / a};
        count = 2;
    }
    int inside = 0;
    for (int i = 0; i < count; ++i)
        if (roots[i] >= s.conc_min && roots[i] <= s.conc_max) ++inside;
    p.not_unique = inside >= 2;
    double x0 = roots[0];
    if (count == 2) {
        const auto score = [&](double r) {
            const bool in = r >= s.conc_min && r <= s.conc_max;
            return (in || inside == 0 ? 0.0 : 1e300) + std::abs(r - near);
        };
        if (score(roots[1]) < score(roots[0])) x0 = roots[1];
    }
    const double slope = b + 2 * a * x0;
    if (slope == 0 || !std::isfinite(x0)) return p;
    double w0 = 1;
    if (s.weighting != stats_weighting::none)
        w0 = raw_weight(s.weighting, std::max(x0, s.conc_min)) * s.weight_scale;
    const std::array<double, 3> g{1, x0, x0 * x0};
    double var_fit = 0;
    for (int j = 0; j < 3; ++j)
        for (int k = 0; k < 3; ++k)
            var_fit += g[j] * s.cov[j][k] * g[k];
    const double var = (s.s_yx * s.s_yx / (w0 * m) + var_fit) / (slope * slope);
    p.conc = x0;
    p.se = std::sqrt(var);
    p.low = x0 - s.t95 * p.se;
    p.high = x0 + s.t95 * p.se;
    p.above_range = x0 > s.conc_max;
    p.below_range = x0 < s.conc_min;
    p.below_loq = s.lod_ok && x0 < s.loq;
    p.ok = true;
    return p;
}

std::string sample_flags(const sample_prediction& p) {
    if (!p.ok) return not_enough_data;
    std::string out;
    const auto add = [&out](bool on, const char* text) {
        if (!on) return;
        if (!out.empty()) out += ", ";
        out += text;
    };
    add(p.above_range, "above range");
    add(p.below_range, "below range");
    add(p.below_loq, "below LOQ");
    add(p.not_unique, "not unique");
    return out;
}

const char* weighting_name(stats_weighting w) {
    switch (w) {
    case stats_weighting::inverse_x:
        return "1/x";
    case stats_weighting::inverse_x2:
        return "1/x^2";
    default:
        return "1";
    }
}

const char* stats_model(int fit_type) {
    switch (fit_type) {
    case 1:
        return "ABS = b * Conc.";
    case 2:
        return "ABS = a + b * Conc.";
    case 3:
        return "ABS = b * Conc. + c * Conc.^2";
    default:
        return "ABS = a + b * Conc. + c * Conc.^2";
    }
}

std::string stats_number(double v, int digits) {
    if (!std::isfinite(v)) return not_enough_data;
    char text[32];
    std::snprintf(text, sizeof text, "%.*g", digits, v);
    return text;
}

std::vector<stats_line> stats_lines(const calibration_stats& s, const std::string& unit) {
    std::vector<stats_line> out;
    const std::string in_unit = " (" + unit + ")";
    out.push_back({"Model", stats_model(s.fit_type), ""});
    out.push_back({"Weighting", weighting_name(s.weighting), ""});
    out.push_back({"n", std::to_string(s.n), ""});
    if (!s.ok) {
        out.push_back({"Result", std::string(not_enough_data) + ": " + s.why, ""});
        return out;
    }
    out.push_back({"Degrees of freedom", std::to_string(s.df), ""});
    const model_terms t = terms_of(s.fit_type);
    static const char* const names[3] = {"a (intercept) [A]", "b (slope) [A per unit]", "c [A per unit^2]"};
    for (int j = 0; j < t.count; ++j) {
        const auto k = static_cast<std::size_t>(t.power[static_cast<std::size_t>(j)]);
        out.push_back({names[k], stats_number(s.beta[k]), stats_number(s.beta_se[k], 3)});
    }
    out.push_back({"s(y/x) [A]", stats_number(s.s_yx, 4), ""});
    out.push_back({"R^2", stats_number(s.r2, 6), ""});
    out.push_back({"Adjusted R^2", stats_number(s.adj_r2, 6), ""});
    std::string verdict;
    char figures[96];
    std::snprintf(figures, sizeof figures, "F = %.3g, F(0.95; %d, %d) = %.3g, p = %.3g", s.test.f, s.test.df1,
                  s.test.df2, f_quantile(0.95, s.test.df1, s.test.df2), s.test.p);
    switch (s.test.test) {
    case linearity_test::kind::lack_of_fit:
        verdict = s.test.significant ? "Lack of fit is significant: the curve does not follow the standards "
                                       "within their replicates' spread"
                                     : "No significant lack of fit: the curve follows the standards";
        out.push_back({"Lack-of-fit test", verdict, figures});
        break;
    case linearity_test::kind::mandel:
        verdict = s.test.significant
                      ? "A second-order curve fits significantly better: the response is not linear"
                      : "The straight line is adequate";
        out.push_back({"Mandel's test", verdict, figures});
        break;
    default:
        out.push_back({"Linearity test",
                       std::string(not_enough_data) +
                           ": it needs replicate readings or five standards for a straight line",
                       ""});
        break;
    }
    const std::string source =
        s.blank_readings > 0 ? "from the spread of " + std::to_string(s.blank_readings) + " blank readings"
                             : "from s(y/x)";
    out.push_back({"LOD" + in_unit, s.lod_ok ? stats_number(s.lod, 4) : not_enough_data, source});
    out.push_back({"LOQ" + in_unit, s.lod_ok ? stats_number(s.loq, 4) : not_enough_data, source});
    out.push_back({"Calibrated range" + in_unit,
                   stats_number(s.conc_min, 5) + " to " + stats_number(s.conc_max, 5), ""});
    if (s.turns)
        out.push_back({"Warning",
                       "The curve turns at Conc. " + stats_number(s.turn_conc, 4) +
                           ": a reading near there has two concentrations",
                       ""});
    return out;
}

} // namespace lumora
