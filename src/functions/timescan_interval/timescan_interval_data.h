#pragma once
// The fixed-interval Timescan's run state. Its samples live only in the window's grid: sample k
// is row k + 1, in cell texts, and the plot shows them by pages of 280 steps.
#include "link/shared_state.h"
#include "plot/plot_view.h"

#include <array>
#include <cstdint>

namespace lumora {

constexpr int page_steps = 280;

struct timescan_interval_data {
    bool ti_dirty = true;
    std::int16_t ti_zero_done = 1;
    std::int32_t ti_ticks = 0;
    std::int16_t ti_sample_index = 0;
    std::int16_t ti_page_count = 0;
    std::int16_t ti_curve_count = 0;
    std::array<std::int16_t, curve_columns> ti_curve_state{};
    double last_trans = 0;
    plot_view view;
};

extern timescan_interval_data timescan_interval;

void reset_timescan_interval_data();

} // namespace lumora
