#include "sim/optics.h"

#include <algorithm>
#include <cmath>

namespace lumora::sim {

namespace {

constexpr double kFilamentTemperature = 2900.0; // [K]
constexpr double kSecondRadiation = 1.4388e-2;  // [m K] h c / k
constexpr double kBlankPeak = 6.0e6;            // [counts] open beam at the brightest point of the range

// Amplifier gain factors by index, and the gain each band uses: the blue end of a halogen lamp on
// silicon is about a thousand times weaker than the near infrared, so the short bands amplify most.
constexpr std::array<double, kGainCount> kGainFactor{1.0, 3.5, 12.0, 60.0};
constexpr std::array<int, kBandCount> kBandGain{3, 2, 1, 0, 0};
// [counts] dark offset grows with the amplifier gain.
constexpr std::array<double, kGainCount> kDark{4200.0, 6800.0, 14500.0, 38000.0};

} // namespace

int band_of(double nm) {
    if (nm < 380.0) return 0;
    if (nm < 460.0) return 1;
    if (nm < 560.0) return 2;
    if (nm < 760.0) return 3;
    return 4;
}

double Optics::lamp(double nm) {
    const double m = nm * 1e-9;
    return std::pow(m * 1e6, -5.0) / std::expm1(kSecondRadiation / (m * kFilamentTemperature));
}

double Optics::detector(double nm) {
    // Quantum efficiency falls off toward the silicon band gap in the infrared and toward the surface
    // recombination losses in the ultraviolet; responsivity is QE times photon energy per watt.
    if (nm >= 1150.0) return 0.0;
    const double ir_edge = 1.0 - std::exp(-(1150.0 - nm) / 70.0);
    const double uv_edge = 1.0 / (1.0 + std::exp(-(nm - 360.0) / 45.0));
    return 0.9 * ir_edge * uv_edge * nm / 1240.0;
}

Optics::Optics() : band_gain_(kBandGain), gain_factor_(kGainFactor), dark_(kDark) {
    double peak = 0.0;
    for (double nm = kRangeLow; nm <= kRangeHigh; nm += 1.0)
        peak = std::max(peak, lamp(nm) * detector(nm) * gain_factor_[gain_at(nm)]);
    scale_ = kBlankPeak / peak;
}

double Optics::open_beam(double nm) const {
    return scale_ * lamp(nm) * detector(nm) * gain_factor_[gain_at(nm)];
}

} // namespace lumora::sim
