#pragma once
// Spectrum's curves and scan counters, and the arithmetic of a scan point, apart from any window.
// Curve columns 1..20 of baseline_curves hold the sample curves in the unit of the scan (ABS or
// %T); org_curves keeps each as scanned, before any smoothing.
#include "link/shared_state.h"
#include "plot/plot_tracking.h"
#include "plot/plot_view.h"

#include <array>
#include <cstdint>

namespace lumora {

constexpr int max_curves = 20;

struct spectrum_data {
    std::array<std::array<double, curve_columns>, wavelength_points> org_curves{};
    std::int16_t curve_count = 0;                          // sample columns in use, 0..20
    std::int16_t active_curve = 0;                         // column of the active curve less one
    std::array<std::int16_t, curve_columns> curve_state{}; // [1..20]: 0 hidden/empty, 1 visible, 2 active

    std::int16_t scan_first_nm = 0, scan_last_nm = 0, scan_total = 0;
    std::int16_t scan_step = 1;
    std::int16_t scan_count = 0;
    std::int16_t scan_kind = 0; // 0 baseline pass, -1 sample pass

    plot_view view;
    track_state tracks; // track_count and the track marks
    std::int16_t peak_count = 0, valley_count = 0;
    processing::mark_array peak_marks{}, valley_marks{};

    // The last derivative: by point (wavelength p + 320), by plot column, and its window's range.
    std::array<double, wavelength_points> derivative_curve{};
    std::array<double, plot_columns> screen_derivative{};
    std::int16_t derivative_order = 0; // 0 none, 1..4 on show; once set it stays set
    double derivative_high = 0, derivative_low = 0;
};

extern spectrum_data spectrum;

// Restores the program-start state of the Spectrum data.
void reset_spectrum_data();

// Scan counters and view from the setup: the scan runs 10 nm beyond both ends of the range.
void spectrum_init();

// One sample reading to the stored value: T = (raw - dark) / (blank - dark); T at or below 0
// (a blank equal to its dark included) gives 4.5 ABS and 0 %T; ABS held to -0.3..4.5, %T to 0..120.
double convert_sample(double raw, double dark, double blank, bool percent_t);

// The dark of a scan point's band (0 outside the bands, as for 1101..1110 nm).
std::int32_t dark_for_nm(int nm);

void clear_array();             // columns 1..20 of both arrays and the screen curve to 0
void copy_org_data();           // org_curves columns 1..20 back into baseline_curves
void save_org_data(int column); // a column of baseline_curves into org_curves
void load_org_data(int column, int point, double value);

// The last X that has data during a scan: (scan_count - 1) * scan_step + scan_first_nm.
int last_stored_nm();

} // namespace lumora
