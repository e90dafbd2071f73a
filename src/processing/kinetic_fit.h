#pragma once
// The straight-line rate of a kinetic run: a line through N points spread evenly over the rate
// stretch of the 281 samples, its slope turned into a rate per minute. The picking of the points
// runs in single precision, as do the time sums, so the printed digits come out the same on every
// build.
#include <array>
#include <cstdint>
#include <span>

namespace lumora::processing {

constexpr int kinetic_samples = 281;
constexpr int kinetic_max_points = 100; // the working arrays; N is at most 99

struct kinetic_input {
    int points = 5;      // N, 2..99
    int rate = 15;       // R [s], the rate stretch
    int lag = 2;         // L [s], its start counted from the end of the delay
    double factor = 1.0; // concentration per absorbance
};

struct kinetic_result {
    float ka = 0, kb = 0; // ABS = ka * T + kb, T in seconds
    float abs0 = 0;       // the first point's absorbance
    float dabs_dt = 0;    // absorbance per minute
    float dc_dt = 0;      // factor times that
    int points = 0;
    std::array<std::int16_t, kinetic_max_points> sample{}; // the points' sample indices, 35..245
};

// The fit through `samples` (281 values). Points below 2 or above 99 are held to that range.
kinetic_result kinetic_fit(std::span<const double> samples, const kinetic_input& in);

// Where the run stands: sample 0 at start_time [s] after Read, sample 280 window [s] later.
double kinetic_start_time(int lag, int delay, int rate);
double kinetic_window(int rate);

} // namespace lumora::processing
