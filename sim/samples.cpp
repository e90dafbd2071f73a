#include "sim/samples.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <stdexcept>
#include <string>

namespace lumora::sim {

namespace {

double gaussian(double x, double centre, double fwhm) {
    const double u = (x - centre) / fwhm;
    return std::exp(-4.0 * std::log(2.0) * u * u);
}

class Blank : public Sample {
public:
    double absorbance(double, double) const override { return 0.0; }
};

class NeutralFilter : public Sample {
public:
    explicit NeutralFilter(double a) : a_(a) {}
    double absorbance(double, double) const override { return a_; }

private:
    double a_;
};

// A colour developing evenly at every wavelength: A = start + rate x t, held between 0 and 4.
class Reaction : public Sample {
public:
    explicit Reaction(double rate) : rate_(rate) {}
    double absorbance(double, double seconds) const override {
        return std::clamp(kStart + rate_ * seconds, 0.0, 4.0);
    }

private:
    static constexpr double kStart = 0.05; // [A] when the cuvette goes in
    double rate_;                          // [A/s]
};

const std::vector<Band> kHolmiumBands{
    {333.5, 4.0, 0.35}, {345.4, 5.0, 0.50}, {361.3, 5.0, 0.55}, {385.6, 6.0, 0.40}, {416.3, 5.0, 0.45},
    {451.4, 6.0, 0.95}, {467.8, 5.0, 0.40}, {485.2, 6.0, 0.35}, {536.6, 6.0, 0.60}, {640.5, 7.0, 0.45},
};

// Potassium dichromate in dilute perchloric acid, per mg/L in a 10 mm cell: the band with its maximum
// at 350 nm and the weaker shoulder that carries 430 nm (about 0.0107 and 0.0016 A per mg/L there).
const std::vector<Band> kDichromateBands{{350.0, 75.0, 0.0107}, {445.0, 60.0, 0.0013}, {257.0, 50.0, 0.0145}};

// Sodium nitrite, 50 g/L in a 10 mm cell: the n-pi* band near 355 nm is so strong that nothing
// passes from the near ultraviolet edge to about 390 nm, and the glass clears above 400 nm.
const std::vector<Band> kNitriteBands{{356.0, 42.0, 16.5}};

double number_after_colon(std::string_view name, std::string_view what) {
    double value = 0.0;
    if (!parse_number(name.substr(name.find(':') + 1), value))
        throw std::invalid_argument("sample " + std::string(name) + ": " + std::string(what) +
                                    " is not a number");
    return value;
}

} // namespace

BandSpectrum::BandSpectrum(std::vector<Band> bands, double background, double scale)
    : bands_(std::move(bands)), background_(background), scale_(scale) {}

double BandSpectrum::absorbance(double nm, double) const {
    double a = background_ * std::pow(500.0 / nm, 2.0);
    for (const Band& b : bands_)
        a += b.peak * gaussian(nm, b.centre_nm, b.fwhm_nm);
    return scale_ * a;
}

const std::vector<double>& holmium_band_positions() {
    static const std::vector<double> positions = [] {
        std::vector<double> p;
        for (const Band& b : kHolmiumBands)
            p.push_back(b.centre_nm);
        return p;
    }();
    return positions;
}

bool parse_number(std::string_view text, double& value) {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    if (text.empty()) return false;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return ec == std::errc() && end == text.data() + text.size() && std::isfinite(value);
}

std::unique_ptr<Sample> make_sample(std::string_view name) {
    const std::string_view kind = name.substr(0, name.find(':'));
    const bool has_arg = name.find(':') != std::string_view::npos;
    const auto no_arg = [&] {
        if (has_arg) throw std::invalid_argument("sample " + std::string(kind) + " takes no value");
    };
    if (kind == "blank" || kind == "line656") {
        // The emission line is a lamp property, scanned by the bandwidth command; in the beam it is a blank.
        no_arg();
        return std::make_unique<Blank>();
    }
    if (kind == "dye") {
        no_arg();
        return std::make_unique<BandSpectrum>(std::vector<Band>{{520.0, 80.0, 1.0}}, 0.02);
    }
    if (kind == "holmium") {
        no_arg();
        return std::make_unique<BandSpectrum>(kHolmiumBands, 0.04);
    }
    if (kind == "nitrite") {
        no_arg();
        return std::make_unique<BandSpectrum>(kNitriteBands, 0.0);
    }
    if (!has_arg && (kind == "neutral" || kind == "standard" || kind == "reaction" || kind == "dichromate"))
        throw std::invalid_argument("sample " + std::string(kind) + " needs a value, as in " +
                                    std::string(kind) + ":0.5");
    if (kind == "neutral") {
        const double a = number_after_colon(name, "the absorbance");
        if (a < 0.0 || a > 6.0) throw std::invalid_argument("neutral filter absorbance must be 0 to 6");
        return std::make_unique<NeutralFilter>(a);
    }
    if (kind == "standard") {
        // Beer-Lambert: A = epsilon b c, with epsilon b = 0.5 A per unit concentration at the 540 nm peak,
        // so the whole band scales with c and a blank cuvette (c = 0) absorbs nothing.
        const double c = number_after_colon(name, "the concentration");
        if (c < 0.0 || c > 20.0) throw std::invalid_argument("standard concentration must be 0 to 20");
        return std::make_unique<BandSpectrum>(std::vector<Band>{{540.0, 100.0, 0.5}}, 0.0, c);
    }
    if (kind == "reaction") {
        const double rate = number_after_colon(name, "the rate");
        if (std::abs(rate) > 10.0)
            throw std::invalid_argument("reaction rate must be -10 to 10 A per second");
        return std::make_unique<Reaction>(rate);
    }
    if (kind == "dichromate") {
        const double mg_per_l = number_after_colon(name, "the concentration");
        if (mg_per_l < 0.0 || mg_per_l > 400.0)
            throw std::invalid_argument("dichromate concentration must be 0 to 400 mg/L");
        return std::make_unique<BandSpectrum>(kDichromateBands, 0.0, mg_per_l);
    }
    throw std::invalid_argument(
        "unknown sample '" + std::string(name) +
        "' (blank, neutral:<A>, dye, holmium, standard:<c>, reaction:<rate>, line656, dichromate:<mg/L>, "
        "nitrite, "
        "changer:<s1>,<s2>,...)");
}

} // namespace lumora::sim
