#include "system_rules.h"

namespace lumora {

double light_volts(std::int32_t intensity, std::int32_t dark) {
    return (static_cast<double>(intensity) - dark) * 4.8 / 16777215.0;
}

bool light_level_ok(double volts) {
    return volts > 0.1;
}

std::optional<bandwidth_result> evaluate_bandwidth(const verify_points_array& p) {
    const double base = (p[65] + p[13]) / 2;
    int peak_at = 0;
    double peak = p[0];
    for (int i = 1; i <= verify_last_point; ++i)
        if (p[static_cast<std::size_t>(i)] > peak) {
            peak = p[static_cast<std::size_t>(i)];
            peak_at = i;
        }
    const double half = (peak + base) / 2;

    // A search that finds no point above half height runs one place past its end, and the
    // interpolation then works on the points there.
    int i = 0;
    while (i <= peak_at && !(p[static_cast<std::size_t>(i)] > half))
        ++i;
    if (i < 1) return std::nullopt; // the crossing's left neighbour would lie before point 0
    const double left_step = p[static_cast<std::size_t>(i)] - p[static_cast<std::size_t>(i - 1)];
    if (left_step == 0) return std::nullopt;
    const int i1 = i - 1;
    const double f1 = (half - p[static_cast<std::size_t>(i1)]) * 100 / left_step;

    int j = verify_last_point;
    while (j >= peak_at && !(p[static_cast<std::size_t>(j)] > half))
        --j;
    if (j < 0 || j + 1 >= verify_raw_size) return std::nullopt;
    const double right_step = p[static_cast<std::size_t>(j)] - p[static_cast<std::size_t>(j + 1)];
    if (right_step == 0) return std::nullopt;
    const int i2 = j + 1;
    const double f2 = (half - p[static_cast<std::size_t>(i2)]) * 100 / right_step;

    bandwidth_result r;
    r.width = (i2 - i1) * verify_step_nm - (f1 + f2) * (verify_step_nm / 100);
    r.left_nm = i1 * verify_step_nm + f1 * (verify_step_nm / 100);
    r.right_nm = i2 * verify_step_nm - f2 * (verify_step_nm / 100);
    return r;
}

} // namespace lumora
