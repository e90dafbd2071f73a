#pragma once
// The statistics of a calibration that an analyst validates a method with: the calibration line
// with its standard errors, the residuals, a lack-of-fit or Mandel test, LOD and LOQ, and the
// concentration of a sample with its 95 % prediction interval.
//
// The noise of the instrument is in the absorbance, not in the concentrations the user keys in,
// so the statistics model ABS as the dependent variable: ABS = a + b Conc. (+ c Conc.^2), with
// the terms of the fit type (through zero for types 1 and 3, second order for 3 and 4). A sample's
// concentration is the inverse prediction from its mean reading. The calibration the function
// works with, Conc. on ABS, is left as it is; this is a second view of the same standards.
#include <array>
#include <span>
#include <string>
#include <vector>

namespace lumora {

// The weight of a standard reading: 1, 1/x or 1/x^2, x its Conc. Only the straight lines (fit
// types 1 and 2) are weighted; the weights are scaled to add up to n.
enum class stats_weighting { none = 0, inverse_x = 1, inverse_x2 = 2 };

// What a linearity test found, when one applies.
struct linearity_test {
    enum class kind { none, lack_of_fit, mandel } test = kind::none;
    double f = 0, p = 1;
    int df1 = 0, df2 = 0;
    bool significant = false; // at the 5 % level
};

struct calibration_stats {
    bool ok = false;
    std::string why; // when not ok: which data are missing, in words
    int fit_type = 2;
    stats_weighting weighting = stats_weighting::none;
    int n = 0, levels = 0, params = 0, df = 0;
    // ABS = beta[0] + beta[1] Conc. + beta[2] Conc.^2; a term the fit type lacks is 0, as is its
    // standard error. cov is the covariance of beta (s^2 included).
    std::array<double, 3> beta{}, beta_se{};
    std::array<std::array<double, 3>, 3> cov{};
    double s_yx = 0; // residual standard deviation [A] (weighted: at weight 1)
    double r2 = 0, adj_r2 = 0;
    double t95 = 0;                      // t(0.975, df)
    std::vector<double> conc, residuals; // every standard reading, residual = ABS - fitted [A]
    double conc_min = 0, conc_max = 0;   // the standards' range
    linearity_test test;
    // LOD = 3.3 s / b and LOQ = 10 s / b, b the slope at Conc. 0, s the spread of the blank
    // readings (two or more standard readings at Conc. 0) or else the residual standard deviation.
    bool lod_ok = false;
    double lod = 0, loq = 0;
    int blank_readings = 0; // 0 when s is the residual standard deviation
    // The curve turns inside the standards' range: there, one reading has two concentrations.
    bool turns = false;
    double turn_conc = 0;
    double weight_scale = 1; // raw weight to scaled weight
};

// The statistics of the fit of `fit_type` (1..4) over every standard reading (replicates as
// points of their own). Types 3 and 4 ignore the weighting.
calibration_stats calibration_statistics(int fit_type, stats_weighting weighting,
                                         std::span<const double> conc, std::span<const double> abs);

// A sample read m times with mean absorbance `abs`: its concentration by inverse prediction and
// the 95 % prediction interval. Where the curve gives two concentrations, the one nearest `near`
// (the function's own Conc. of the sample) is taken.
struct sample_prediction {
    bool ok = false;
    double conc = 0, se = 0, low = 0, high = 0;
    bool above_range = false, below_range = false, below_loq = false, not_unique = false;
};
sample_prediction predict_sample(const calibration_stats& s, double abs, int m, double near);

// The flags of a sample in words, joined by ", ": "above range", "below range", "below LOQ",
// "not unique"; "not enough data" when there is no prediction.
std::string sample_flags(const sample_prediction& p);

// The statistics as rows of label, value and standard error (empty when none), for the tab, the
// report and the exports. `unit` is the function's concentration unit.
struct stats_line {
    std::string label, value, se;
};
std::vector<stats_line> stats_lines(const calibration_stats& s, const std::string& unit);

const char* weighting_name(stats_weighting w); // "1", "1/x", "1/x^2"
// The model in words: "ABS = a + b * Conc." and so on.
const char* stats_model(int fit_type);
// A figure with `digits` significant digits, as the rows show it.
std::string stats_number(double v, int digits = 5);
constexpr const char* not_enough_data = "not enough data";

} // namespace lumora
