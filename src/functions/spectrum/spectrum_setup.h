#pragma once
// The Spectrum parameter record, one instance for the program.
#include <QString>
#include <array>
#include <cstdint>

namespace lumora {

struct SpectrumSetup {
    double start_lambda = 400;      // [nm]
    double stop_lambda = 800;       // [nm]
    std::int16_t spectrum_mode = 0; // 0 ABS, 1 %T
    double low_value = 0;           // Y axis low
    double high_value = 3.0;        // Y axis high
    std::int16_t scan_speed = 1;    // 0 High, 1 Normal, 2 Low
    std::int16_t overlay_screen = 1;
    std::int16_t auto_zoom = 0;
    std::int16_t auto_peak = 0;
    std::int16_t auto_valley = 0;
    QString report_laboratory = QStringLiteral("My laboratory");
    QString report_subject = QStringLiteral("Sample");
    QString report_operator = QStringLiteral("Operator");
    QString report_remark;
    // "Print present date.", "Print page number.", "Print parameter setup.", "Print track data.",
    // "Print peak data.", "Print valley data.", "Print read data."
    std::array<std::int16_t, 7> print_flags{1, 1, 1, 1, 1, 1, 1};

    bool percent_t() const { return spectrum_mode == 1; }
};

extern SpectrumSetup spectrum_setup;

// "High", "Normal", "Low" for 0, 1, 2; "" otherwise.
QString speed_name(int speed);

} // namespace lumora
