// The physical model behind the detector: the light path, the sample compartment, the emission line and
// the detector noise, seeded. Every reading the instrument sends comes from here.
#pragma once

#include "sim/compartment.h"
#include "sim/emission_line.h"
#include "sim/optics.h"

#include <cstdint>
#include <random>
#include <string>

namespace lumora::sim {

class Model {
public:
    // Throws std::invalid_argument for negative noise or a bad sample name.
    Model(std::uint64_t seed, double noise_counts, const std::string& sample);

    // [counts] a detector reading of the sample in the beam at a grating position and time.
    std::uint32_t sample_counts(double nm, double t);
    // [counts] a reading of the emission line at a grating position.
    std::uint32_t line_counts(double nm);
    // [counts] a reading of the dark offset of a gain.
    std::uint32_t dark_counts(int gain);

    double absorbance(double nm, double t) const { return compartment_.absorbance(nm, t); }

    // The optics faults: where the grating really stands against the drive's wavelength, the share of
    // the open beam that reaches the detector as stray light, and a baseline drift from time t on.
    void set_wavelength_offset(double nm) { offset_nm_ = nm; }
    void set_stray(double fraction) { stray_ = fraction; }
    void set_drift(double a_per_hour, double t);
    // [A] the drift accumulated by time t.
    double drift(double t) const { return drift_base_ + drift_rate_ * (t - drift_since_) / 3600.0; }

    const Optics& optics() const { return optics_; }
    Compartment& compartment() { return compartment_; }
    const Compartment& compartment() const { return compartment_; }
    EmissionLine& line() { return line_; }
    const EmissionLine& line() const { return line_; }

private:
    std::uint32_t measure(double mean_counts); // adds the detector noise, clamps to 24 bits

    Optics optics_;
    Compartment compartment_;
    EmissionLine line_;
    double noise_counts_; // standard deviation [counts]
    double offset_nm_ = 0.0;
    double stray_ = 0.0;
    double drift_rate_ = 0.0; // [A/h]
    double drift_base_ = 0.0; // [A] when the rate was last set
    double drift_since_ = 0.0;
    std::mt19937_64 rng_;
    std::normal_distribution<double> gauss_{0.0, 1.0};
};

} // namespace lumora::sim
