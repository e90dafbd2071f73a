#pragma once
// The two judgements of the instrument's upkeep, on plain numbers: whether the lamp gives enough
// light, and the width of the 656.1 nm emission line at half height.
#include <array>
#include <cstdint>
#include <optional>

namespace lumora {

// The signal in volts: a 24-bit reading above the dark, full scale 4.8 V.
double light_volts(std::int32_t intensity, std::int32_t dark);
// Enough light means more than 0.1 V; exactly 0.1 V is too low.
bool light_level_ok(double volts);

// The bandwidth scan: 79 points, 0.36 nm apart, point 39 on the line's nominal centre. The
// array holds two spare places past the last point, which stay 0 unless more points come.
constexpr int verify_last_point = 78;
constexpr int verify_raw_size = 81;
constexpr double verify_step_nm = 0.36;
using verify_points_array = std::array<double, verify_raw_size>;

struct bandwidth_result {
    double width = 0;    // [nm] at half height
    double left_nm = 0;  // the left crossing on the plot's own scale, nm from point 0
    double right_nm = 0; // the right crossing, likewise
};

// The width of the line at half height over points 0..78: the base level is the mean of points
// 13 and 65 (the shoulders, 26 points either side of the centre), the peak the first largest
// point, and each flank is crossed where a point lies strictly above half height, interpolated
// linearly to the neighbour outside. Empty when the evaluation cannot be done: a flat stretch at a
// crossing (a step of no height) or a crossing with no neighbour outside the array.
std::optional<bandwidth_result> evaluate_bandwidth(const verify_points_array& p);

} // namespace lumora
