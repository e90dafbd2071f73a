#pragma once
// The two Timescan parameter records (fixed span and fixed interval), one instance each.
#include <QString>
#include <array>
#include <cstdint>

namespace lumora {

struct TimescanSetup {
    QString ts_wavelength = QStringLiteral("500"); // [nm] kept as typed: a fraction survives
    std::int16_t ts_mode = 0;                      // 0 ABS, 1 %T
    double ts_low = 0;
    double ts_high = 3.0;
    double ts_span = 30; // [s] the 280 steps of a run
    double ts_delay = 0; // [s] before the first sample
    std::int16_t ts_auto_zoom = 0;
    std::int16_t ts_overlay = 1;
    std::array<QString, 4> ts_report_text{QStringLiteral("My laboratory"), QStringLiteral("Sample"),
                                          QStringLiteral("Operator"), QString()};
    // date, page number, parameter setup, track data, peak data, valley data
    std::array<std::int16_t, 6> ts_print_flag{1, 1, 1, 1, 1, 1};

    bool percent_t() const { return ts_mode == 1; }
};

struct TimescanIntervalSetup {
    QString ti_wavelength = QStringLiteral("500");
    std::int16_t ti_mode = 0;
    double ti_low = 0;
    double ti_high = 3.0;
    double ti_stop_time = 60; // [s] after the delay
    double ti_interval = 1.0; // [s] between samples
    double ti_delay = 0;      // [s]
    std::int16_t ti_auto_zoom = 0;
    std::int16_t ti_overlay = 1;
    std::array<QString, 4> ti_report_text{QStringLiteral("My laboratory"), QStringLiteral("Sample"),
                                          QStringLiteral("Operator"), QString()};
    // date, page number, parameter setup, read data (two more kept unused)
    std::array<std::int16_t, 6> ti_print_flag{1, 1, 1, 1, 1, 1};

    bool percent_t() const { return ti_mode == 1; }
};

extern TimescanSetup timescan_setup;
extern TimescanIntervalSetup timescan_interval_setup;

} // namespace lumora
