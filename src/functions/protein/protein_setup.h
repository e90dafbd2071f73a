#pragma once
// The Protein record, one instance for the program: the assay and its wavelength, the replicate
// counts, the calibration on the averages of the standards' replicates, and where the reading of
// standards and samples stands. The readings themselves live in the window's two grids.
#include "processing/calibration_fit.h"

#include <QString>
#include <array>
#include <cstdint>

namespace lumora {

constexpr int max_replicates = 5;

struct ProteinSetup {
    std::int16_t assay = 0; // index into protein_assays()
    // As Quantitative's: set on changes and never cleared, so every OK starts afresh.
    bool changed = true;
    QString lambda = QStringLiteral("500"); // [nm], as text
    std::int16_t std_reps = 1;              // replicates per standard, 1..5
    std::int16_t sample_reps = 1;           // replicates per sample, 1..5
    std::int16_t delay = 0;                 // "Delay time(sec)=", 0..50: kept and printed, times nothing
    QString unit = QStringLiteral("None");
    // std_count, std_conc, std_abs (the average per standard), fit_type, coefficients, R squared
    // and the plot limits; abs_min and abs_max are the Low and High value of the setup.
    calibration_set cal;
    fit_coefficients inverse;               // ABS on Conc., kept beside the calibration
    double diff_max = 1.0, diff_min = -1.0; // the difference plot's limits
    bool reading_std = false;               // "Read" reads standards (true) or samples
    std::int16_t data_rows = 0;             // rows of fgdData filled, average rows included
    std::int16_t std_read = 0;              // standard readings, average rows not counted
    std::int16_t sample_rows = 0;           // rows of fgdSample filled, average rows included
    bool zero_done = true;
    bool loading = false;
    QString report_laboratory = QStringLiteral("My laboratory");
    QString report_subject = QStringLiteral("Sample");
    QString report_operator = QStringLiteral("Operator");
    QString report_remark;
    std::array<std::int16_t, 4> print_flags{1, 1, 1, 1};
};

extern ProteinSetup protein;

struct protein_assay {
    const char* name;
    const char* lambda; // [nm]; the last, "General", leaves the field to the user
};
const std::array<protein_assay, 7>& protein_assays();

} // namespace lumora
