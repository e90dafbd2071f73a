#include "function_catalog.h"

namespace lumora {
namespace {

constexpr function_entry entries[] = {
    {1, "frmPhotometry", "Photometry", "dlgPhotometry", "Setup Photometry", "PHOTOMETRY"},
    {2, "frmSpectrum", "Spectrum", "dlgSpectrum", "Setup Spectrum", "SPECTRUM"},
    {3, "frmTimescan", "Timescan-Fixed span", "dlgTimescan", "Setup Timescan-Fixed span", "TIMESCAN"},
    {13, "frmTimescan2", "Timescan-Fixed interval", "dlgTimescan", "Setup Timescan-Fixed span", "TIMESCAN2"},
    {4, "frmKinetic", "Kinetic", "dlgKinetic", "Setup Kinetic", "KINETIC"},
    {5, "frmQuant", "Quantitative", "dlgQuant", "Setup Quantitative", "QUANTITATIVE"},
    {11, "frmProtein", "Protein Analysis", "dlgProtein", "Setup Protein Analysis", "PROTEIN"},
    {6, "frmVerify", "Verify Bandwidth", nullptr, nullptr, nullptr},
};

} // namespace

const function_entry* function_by_id(int function_id) {
    for (const auto& e : entries)
        if (e.function_id == function_id) return &e;
    return nullptr;
}

const function_entry* function_entries(int& count) {
    count = static_cast<int>(sizeof entries / sizeof entries[0]);
    return entries;
}

} // namespace lumora
