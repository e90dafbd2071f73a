#pragma once
// The fixed-span Timescan's curves and run counters, and the arithmetic of a sample, apart from
// any window. A run takes 281 samples, one per column of the plot square; up to 20 runs overlay.
#include "link/shared_state.h"
#include "plot/plot_tracking.h"
#include "plot/plot_view.h"

#include <array>
#include <cstdint>

namespace lumora {

constexpr int ts_samples = 281;   // samples of a fixed-span run: 280 steps
constexpr int ts_max_curves = 20; // curves in columns 1..20; column 0 stays empty

using ts_curve_array = std::array<std::array<double, curve_columns>, ts_samples>; // [sample][curve]

struct timescan_data {
    bool ts_dirty = true;
    std::int16_t ts_zero_done = 1; // 0 from a Zero press to the first frame after it
    std::int32_t ts_ticks = 0;     // frames since the Zero or Read
    std::int16_t ts_sample_index = 0;
    ts_curve_array ts_curves{};
    ts_curve_array ts_org_curves{};
    std::array<double, ts_samples> ts_current{};
    std::int16_t ts_curve_count = 0;
    std::array<std::int16_t, curve_columns> ts_curve_state{}; // [1..20]: 0 empty, 1 drawn, 2 current
    std::int16_t ts_selected_curve = 0;
    double ts_abs = 0, ts_percent_t = 0; // the last sample
    double last_trans = 0;               // T of the last sample: kept below 320 nm

    plot_view view;
    track_state tracks;
    std::int16_t peak_count = 0, valley_count = 0;
    processing::mark_array peak_marks{}, valley_marks{};
};

extern timescan_data timescan;

void reset_timescan_data();

void clear_tscan_array();
void copy_org_data_ts();
void load_org_data_ts(int curve, int sample, double value);

// ABS (-0.3..4.5) and %T (0..120) of a raw frame against the reference at `nm` (an integer nm):
// below 320 nm T keeps `last_trans`. A reference equal to its dark is a division by zero.
struct sample_value {
    double abs = 0, percent_t = 0, trans = 0;
};
sample_value timed_sample(std::int32_t raw, int nm, double last_trans);

// The view span of a Read (280 / m): 1 for spans of 60 s and more, 4 from 30, 10 from 15, 14 from 5.
int read_view_span(double span);

// One pass of the 5-point filter over samples 0..280 of a column (ends by their own weights).
void smooth5(ts_curve_array& curves, int column);

} // namespace lumora
