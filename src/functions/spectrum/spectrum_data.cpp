#include "spectrum_data.h"

#include "functions/spectrum/spectrum_setup.h"
#include "link/protocol.h"
#include "platform/numeric_text.h"

#include <cmath>

namespace lumora {

spectrum_data spectrum;

void reset_spectrum_data() {
    spectrum = spectrum_data{};
}

void spectrum_init() {
    const SpectrumSetup& s = spectrum_setup;
    spectrum.scan_first_nm = static_cast<std::int16_t>(cint(s.start_lambda - 10));
    spectrum.scan_last_nm = static_cast<std::int16_t>(cint(s.stop_lambda + 10));
    spectrum.scan_total = static_cast<std::int16_t>(spectrum.scan_last_nm - spectrum.scan_first_nm);
    spectrum.scan_step = 1;
    spectrum.scan_count = 0;
    init_view(spectrum.view, s.start_lambda, s.stop_lambda, s.high_value, s.low_value);
}

double convert_sample(double raw, double dark, double blank, bool percent_t) {
    const double denominator = blank - dark;
    const double t = denominator == 0 ? 0.0 : (raw - dark) / denominator;
    if (percent_t) {
        double p = t * 100;
        if (p <= 0) p = 0;
        if (p >= 120) p = 120;
        return p;
    }
    if (t <= 0) return 4.5;
    double a = std::log(1.0 / t) / std::log(10.0);
    if (a <= -0.3) a = -0.3;
    if (a >= 4.5) a = 4.5;
    return a;
}

std::int32_t dark_for_nm(int nm) {
    const int band = band_of(nm);
    return band < 0 ? 0 : shared.dark_by_band[static_cast<std::size_t>(band)];
}

void clear_array() {
    for (int p = 0; p < wavelength_points; ++p)
        for (int c = 1; c < curve_columns; ++c) {
            shared.baseline_curves[static_cast<std::size_t>(p)][static_cast<std::size_t>(c)] = 0;
            spectrum.org_curves[static_cast<std::size_t>(p)][static_cast<std::size_t>(c)] = 0;
        }
    spectrum.view.screen_curve.fill(0);
}

void copy_org_data() {
    for (std::size_t p = 0; p < wavelength_points; ++p)
        for (std::size_t c = 1; c < curve_columns; ++c)
            shared.baseline_curves[p][c] = spectrum.org_curves[p][c];
}

void save_org_data(int column) {
    if (column < 1 || column >= curve_columns) return;
    for (std::size_t p = 0; p < wavelength_points; ++p)
        spectrum.org_curves[p][static_cast<std::size_t>(column)] =
            shared.baseline_curves[p][static_cast<std::size_t>(column)];
}

void load_org_data(int column, int point, double value) {
    if (column < 1 || column >= curve_columns || point < 0 || point >= wavelength_points) return;
    spectrum.org_curves[static_cast<std::size_t>(point)][static_cast<std::size_t>(column)] = value;
}

int last_stored_nm() {
    return (spectrum.scan_count - 1) * spectrum.scan_step + spectrum.scan_first_nm;
}

} // namespace lumora
