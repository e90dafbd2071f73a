#pragma once
// The Quantitative record, one instance for the program: the setup, the calibration and the
// readings of samples at one wavelength.
#include "processing/calibration_fit.h"

#include <QString>
#include <array>
#include <cstdint>

namespace lumora {

constexpr int max_samples = 100;

struct QuantSetup {
    // Set when a setting that invalidates the calibration changes. Nothing clears it: every OK of
    // the setup starts the calibration afresh.
    bool changed = true;
    QString lambda = QStringLiteral("500"); // [nm], as text
    double low_abs = 0;                     // the plot's ABS range: shown by the dialog, set by nobody
    double high_abs = 3.0;
    QString unit = QStringLiteral("None");
    std::int16_t std_type = 0; // 0 read ABS, 1 keyed ABS, 2 Known factor
    // std_count, std_conc, std_abs, fit_type, coefficients, R squared and the plot limits
    calibration_set cal;
    bool reading_std = false; // "Read" reads standards (true) or samples
    std::int16_t std_read = 0;
    std::int16_t sample_count = 0;
    std::array<double, max_samples + 1> sample_abs{};
    std::array<double, max_samples + 1> sample_conc{};
    std::array<bool, max_samples + 2> sample_valid{};
    bool zero_done = true; // set by show_zero, cleared by zero
    bool loading = false;  // a result batch is being loaded
    QString report_laboratory = QStringLiteral("My laboratory");
    QString report_subject = QStringLiteral("Sample");
    QString report_operator = QStringLiteral("Operator");
    QString report_remark;
    // "Print present date.", "Print page number.", "Print parameter setup.", "Print standard data."
    std::array<std::int16_t, 4> print_flags{1, 1, 1, 1};

    QuantSetup() { cal.abs_max = high_abs; }
};

extern QuantSetup quant;

// The units of the setup's list, "None" first.
const std::array<const char*, 15>& quant_units();

} // namespace lumora
