#include "timescan_data.h"

#include "link/photometric.h"
#include "timescan_setup.h"

#include <cmath>

namespace lumora {

TimescanSetup timescan_setup;
TimescanIntervalSetup timescan_interval_setup;
timescan_data timescan;

void reset_timescan_data() {
    timescan = timescan_data{};
}

void clear_tscan_array() {
    for (auto& row : timescan.ts_curves)
        row.fill(0);
    for (auto& row : timescan.ts_org_curves)
        row.fill(0);
    timescan.ts_current.fill(0);
}

void copy_org_data_ts() {
    timescan.ts_curves = timescan.ts_org_curves;
}

void load_org_data_ts(int curve, int sample, double value) {
    if (curve < 0 || curve >= curve_columns || sample < 0 || sample >= ts_samples)
        throw run_fault{"index out of range"};
    timescan.ts_org_curves[static_cast<std::size_t>(sample)][static_cast<std::size_t>(curve)] = value;
}

sample_value timed_sample(std::int32_t raw, int nm, double last_trans) {
    sample_value v;
    const std::int32_t dark = get_dark();
    shared.net_signal = raw - dark;
    v.trans = last_trans;
    if (nm >= first_index_nm) {
        const int p = nm - first_index_nm;
        if (p >= wavelength_points) throw run_fault{"index out of range"};
        const double denominator = shared.reference_intensity[static_cast<std::size_t>(p)] - dark;
        if (denominator == 0) throw run_fault{"division by zero"};
        v.trans = shared.net_signal / denominator;
    }
    if (v.trans <= 0) {
        v.abs = 4.5;
    } else {
        v.abs = std::log10(1 / v.trans);
        if (v.abs < -0.3) v.abs = -0.3;
        if (v.abs >= 4.5) v.abs = 4.5;
    }
    v.percent_t = v.trans * 100;
    if (v.percent_t < 0) v.percent_t = 0;
    if (v.percent_t >= 120) v.percent_t = 120;
    return v;
}

int read_view_span(double span) {
    int m = 20;
    if (span >= 60)
        m = 280;
    else if (span >= 30)
        m = 70;
    else if (span >= 15)
        m = 28;
    return 280 / m;
}

void smooth5(ts_curve_array& c, int column) {
    if (column < 1 || column >= curve_columns) return;
    const auto col = static_cast<std::size_t>(column);
    std::array<double, ts_samples> y{};
    for (std::size_t i = 0; i < y.size(); ++i)
        y[i] = c[i][col];
    std::array<double, ts_samples> s{};
    for (std::size_t i = 2; i <= 278; ++i)
        s[i] = (17 * y[i] + 12 * (y[i - 1] + y[i + 1]) - 3 * (y[i - 2] + y[i + 2])) / 35;
    s[0] = (69 * y[0] + 4 * (y[1] + y[3]) - 6 * y[2] - y[4]) / 70;
    s[1] = (2 * (y[0] + y[4]) + 27 * y[1] + 12 * y[2] - 8 * y[3]) / 35;
    s[280] = (69 * y[280] + 4 * (y[279] + y[277]) - 6 * y[278] - y[276]) / 70;
    s[279] = (2 * (y[280] + y[276]) + 27 * y[279] + 12 * y[278] - 8 * y[277]) / 35;
    for (std::size_t i = 0; i < y.size(); ++i)
        c[i][col] = s[i];
}

} // namespace lumora
