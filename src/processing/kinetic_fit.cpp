#include "kinetic_fit.h"

#include <algorithm>
#include <cmath>

namespace lumora::processing {

kinetic_result kinetic_fit(std::span<const double> samples, const kinetic_input& in) {
    kinetic_result r;
    const int n = std::clamp(in.points, 2, kinetic_max_points - 1);
    r.points = n;
    const auto rate = static_cast<float>(in.rate);
    // A sixth of the rate time either side of the stretch; K samples a second.
    const float m = rate / 6.0f;
    const float k = 280.0f / (m + m + rate);
    const float dt = rate / static_cast<float>(n - 1);
    std::array<double, kinetic_max_points> y{};
    for (int i = 0; i < n; ++i) {
        const float t = static_cast<float>(i) * dt + m;
        // nearbyint rounds a half to the even neighbour in the default rounding mode.
        const int s = std::clamp(static_cast<int>(std::nearbyint(k * t)), 0, kinetic_samples - 1);
        r.sample[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(s);
        y[static_cast<std::size_t>(i)] =
            static_cast<std::size_t>(s) < samples.size() ? samples[static_cast<std::size_t>(s)] : 0.0;
    }
    r.abs0 = static_cast<float>(y[0]);

    // Least squares of y on the nominal time of each point, not the time of its sample.
    const auto lag = static_cast<float>(in.lag);
    float sx = 0, sxx = 0;
    double sy = 0, sxy = 0;
    for (int i = 0; i < n; ++i) {
        const float x = static_cast<float>(i) * dt + lag;
        sx += x;
        sxx += x * x;
        sy += y[static_cast<std::size_t>(i)];
        sxy += y[static_cast<std::size_t>(i)] * x;
    }
    const auto nn = static_cast<double>(n);
    const float d = static_cast<float>(n) * sxx - sx * sx; // single throughout
    r.ka = static_cast<float>((nn * sxy - sx * sy) / d);
    r.kb = static_cast<float>((sy * sxx - sxy * sx) / d);

    // The change of the line over the rate time, then per minute.
    const float da = (r.ka * (lag + rate) + r.kb) - (r.ka * lag + r.kb);
    r.dabs_dt = static_cast<float>(static_cast<double>(da) * 60 / in.rate);
    r.dc_dt = static_cast<float>(in.factor * static_cast<double>(r.dabs_dt));
    return r;
}

double kinetic_start_time(int lag, int delay, int rate) {
    return lag + delay - rate / 6.0;
}

double kinetic_window(int rate) {
    return rate / 3.0 + rate;
}

} // namespace lumora::processing
