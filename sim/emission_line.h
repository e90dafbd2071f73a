// The lamp's emission line used to check the spectral bandwidth. Seen through the monochromator, the
// line takes the shape of the slit function: a Gaussian whose width is the instrument's bandwidth.
#pragma once

namespace lumora::sim {

class EmissionLine {
public:
    static constexpr double kCentre = 656.1;    // [nm]
    static constexpr double kStep = 0.36;       // [nm] between points of the bandwidth scan
    static constexpr int kPoints = 79;          // point 39 sits on the centre
    static constexpr double kDefaultFwhm = 2.0; // [nm]
    static constexpr double kPeak = 5.5e6;      // [counts] above the continuum, below 2^23 with dark
    static constexpr double kContinuum = 1.2e5; // [counts] lamp continuum under the line

    double fwhm() const { return fwhm_; }
    // Throws std::invalid_argument outside 0.05 to 20 nm.
    void set_fwhm(double nm);
    // [counts] above dark at a grating position.
    double signal(double nm) const;
    // Grating position of point i of the bandwidth scan.
    static double point_nm(int i) { return kCentre + (i - kPoints / 2) * kStep; }

private:
    double fwhm_ = kDefaultFwhm;
};

} // namespace lumora::sim
