// What can stand in the beam: absorbance spectra of the simulated samples.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

namespace lumora::sim {

class Sample {
public:
    virtual ~Sample() = default;
    // Decadic absorbance at a wavelength, `seconds` after the sample was put in.
    virtual double absorbance(double nm, double seconds) const = 0;
};

// A Gaussian absorption band.
struct Band {
    double centre_nm;
    double fwhm_nm;
    double peak; // [A] above the background
};

// Gaussian bands over a background that rises slowly toward the ultraviolet.
class BandSpectrum : public Sample {
public:
    BandSpectrum(std::vector<Band> bands, double background, double scale = 1.0);
    double absorbance(double nm, double seconds) const override;

private:
    std::vector<Band> bands_;
    double background_; // [A] at 500 nm
    double scale_;      // multiplies bands and background alike
};

// The samples by name: blank, neutral:<A>, dye, holmium, standard:<c>, reaction:<rate per second>, line656,
// dichromate:<mg/L>, nitrite.
// A bad name throws std::invalid_argument with a message for the user.
std::unique_ptr<Sample> make_sample(std::string_view name);

// Band positions of a holmium oxide glass filter [nm].
const std::vector<double>& holmium_band_positions();

// Parses a whole text as a finite number; false for anything else.
bool parse_number(std::string_view text, double& value);

} // namespace lumora::sim
