#include "photometry_setup.h"

namespace lumora {

PhotometrySetup photometry_setup;
PhotometryRun photometry_run;

void reset_photometry() {
    photometry_setup = PhotometrySetup{};
    photometry_run = PhotometryRun{};
}

} // namespace lumora
