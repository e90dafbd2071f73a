#pragma once
// The array shapes that the processing routines work on. A wavelength array has one point per
// nanometre from 320 to 1110 nm (point p is p + 320 nm); a curve array has 21 columns at each point
// (column 0 the baseline, 1..20 the sample curves); a screen array has one value per plot column.
#include <array>
#include <cstdint>

namespace lumora::processing {

constexpr int spectrum_points = 791;   // 320..1110 nm
constexpr int spectrum_columns = 21;   // baseline and 20 curves
constexpr int spectrum_first_nm = 320; // the wavelength of point 0
constexpr int screen_columns = 281;    // plot columns 0..280

using curve_array = std::array<std::array<double, spectrum_columns>, spectrum_points>;
using point_array = std::array<double, spectrum_points>;
using screen_array = std::array<double, screen_columns>;

} // namespace lumora::processing
