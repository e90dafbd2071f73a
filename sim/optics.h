// The light path without a sample: a halogen lamp, a silicon photodiode, an amplifier with four gains,
// and the dark offset of each gain. Everything here is noise-free; the instrument adds the noise.
#pragma once

#include <array>

namespace lumora::sim {

inline constexpr int kBandCount = 5;
inline constexpr int kGainCount = 4;
inline constexpr double kRangeLow = 320.0;   // [nm] first point of a full scan
inline constexpr double kRangeHigh = 1110.0; // [nm] last point of a full scan

// The amplifier band of a grating position: 320-379, 380-459, 460-559, 560-759, 760-1100 nm. The drive
// keeps the last band's gain above 1100 nm and the first band's below 320 nm.
int band_of(double nm);

class Optics {
public:
    Optics();

    // Gain index (0..3) that the amplifier uses in a band.
    int gain_of_band(int band) const { return band_gain_[band]; }
    // Gain index used at a grating position.
    int gain_at(double nm) const { return band_gain_[band_of(nm)]; }
    // [counts] dark offset of a gain.
    double dark(int gain) const { return dark_[gain]; }
    // [counts] dark offset at a grating position.
    double dark_at(double nm) const { return dark_[gain_at(nm)]; }
    // [counts] light signal above dark with nothing in the beam.
    double open_beam(double nm) const;
    // [counts] what the detector reads through a transmittance T (0..1), dark included, unclamped.
    double counts(double nm, double transmittance) const {
        return dark_at(nm) + open_beam(nm) * transmittance;
    }

    // Relative spectral radiance of the lamp filament, a black body.
    static double lamp(double nm);
    // Relative responsivity of the photodiode [A/W scale].
    static double detector(double nm);

private:
    double scale_ = 1.0; // [counts] per unit of lamp x detector at gain factor 1
    std::array<int, kBandCount> band_gain_{};
    std::array<double, kGainCount> gain_factor_{};
    std::array<double, kGainCount> dark_{};
};

} // namespace lumora::sim
