#include "sim/emission_line.h"

#include <cmath>
#include <stdexcept>

namespace lumora::sim {

void EmissionLine::set_fwhm(double nm) {
    if (!(nm >= 0.05 && nm <= 20.0)) throw std::invalid_argument("bandwidth must be 0.05 to 20 nm");
    fwhm_ = nm;
}

double EmissionLine::signal(double nm) const {
    const double u = (nm - kCentre) / fwhm_;
    return kContinuum + kPeak * std::exp(-4.0 * std::log(2.0) * u * u);
}

} // namespace lumora::sim
