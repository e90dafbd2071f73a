#pragma once
// The Photometry parameter record and its run state, one instance each for the program. The
// readings themselves live only in the window's grid: its cell texts are the store.
#include <QString>
#include <array>
#include <cstdint>

namespace lumora {

constexpr int ph_max_lambdas = 10;
constexpr int ph_max_readings = 1000;

struct PhotometrySetup {
    std::int16_t ph_lambda_count = 3;                                      // "Number of lambda=", 1..10
    std::array<double, ph_max_lambdas> ph_lambda{500, 500, 500, 500, 500}; // [nm], 330..1100
    std::int16_t ph_mode = 0;                                              // 0 ABS, 1 %T, 2 Factor*ABS
    QString ph_unit = QStringLiteral("None");
    float ph_factor = 1.0f;                             // 0..10000
    std::int16_t ph_cycle_number = 1;                   // 1..99
    std::int16_t ph_cycle_interval = 0;                 // [s], 0..9999
    std::int16_t ph_advanced = 0;                       // the equation's column R
    double ph_k1 = 1.0, ph_k2 = 1.0;                    // 0..10000
    std::array<std::int16_t, 4> ph_wl_pick{1, 1, 1, 1}; // WL1..WL4: 0 "None", k the k-th wavelength
    std::array<std::int16_t, 3> ph_sign{1, 1, 1};       // 0 "+", 1 "-": first bracket, between, second
    // Laboratory, subject, operator, remark
    std::array<QString, 4> ph_report_text{QStringLiteral("My laboratory"), QStringLiteral("Sample"),
                                          QStringLiteral("Operator"), QString()};
    // Date, page number, parameter setup, selected data
    std::array<std::int16_t, 4> ph_print_flag{1, 1, 1, 1};
};

struct ph_mark {
    std::int16_t selected = 0;
    std::int16_t zero = 0;
};

struct PhotometryRun {
    bool ph_dirty = true;           // the first OK always clears the grid
    std::int16_t ph_data_count = 0; // readings held, never above 1000
    std::int16_t ph_run_count = 0;  // readings of the present run
    bool ph_zeroing = false;        // the present run is a Zero pass
    std::array<ph_mark, ph_max_readings + 1> ph_marks{};
    double ph_abs = 0, ph_percent_t = 0; // the last reading
};

extern PhotometrySetup photometry_setup;
extern PhotometryRun photometry_run;

// Restores both records to their program-start values.
void reset_photometry();

} // namespace lumora
