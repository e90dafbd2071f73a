#include "sim/model.h"

#include "sim/wire.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace lumora::sim {

Model::Model(std::uint64_t seed, double noise_counts, const std::string& sample)
    : noise_counts_(noise_counts), rng_(seed) {
    if (!(noise_counts >= 0.0) || !std::isfinite(noise_counts))
        throw std::invalid_argument("noise must be zero or a positive number of counts");
    compartment_.load(sample, 0.0);
}

std::uint32_t Model::measure(double mean_counts) {
    double c = mean_counts;
    if (noise_counts_ > 0.0) c += noise_counts_ * gauss_(rng_);
    return static_cast<std::uint32_t>(std::clamp(std::round(c), 0.0, static_cast<double>(kMaxCount)));
}

namespace {
// Stray light is broad-band light from the bright red and near infrared, where the lamp and the
// photodiode peak; it passes through the sample as the sample passes that light.
constexpr double kStrayNm = 800.0;
} // namespace

void Model::set_drift(double a_per_hour, double t) {
    drift_base_ = drift(t);
    drift_since_ = t;
    drift_rate_ = a_per_hour;
}

std::uint32_t Model::sample_counts(double nm, double t) {
    const double at = nm + offset_nm_;
    double transmittance = std::pow(10.0, -compartment_.absorbance(at, t));
    if (stray_ > 0.0)
        transmittance =
            (transmittance + stray_ * std::pow(10.0, -compartment_.absorbance(kStrayNm, t))) / (1.0 + stray_);
    if (drift_rate_ != 0.0 || drift_base_ != 0.0) transmittance *= std::pow(10.0, -drift(t));
    return measure(optics_.counts(nm, transmittance));
}

std::uint32_t Model::line_counts(double nm) {
    return measure(optics_.dark_at(nm) + line_.signal(nm + offset_nm_));
}

std::uint32_t Model::dark_counts(int gain) {
    return measure(optics_.dark(gain));
}

} // namespace lumora::sim
