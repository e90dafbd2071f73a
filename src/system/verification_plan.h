#pragma once
// The performance verification's checks: what each measures, against which reference values and
// tolerances (the lab's own, from its filters' certificates), and when the next full run is due.
#include "processing/verification_checks.h"

#include <QDateTime>
#include <QString>
#include <map>
#include <optional>
#include <vector>

namespace lumora {

enum class verification_check {
    wavelength,
    absorbance,
    linearity,
    stray_light,
    resolution,
    noise_flatness,
    drift,
};
constexpr int verification_check_count = 7;

// The check's name as the list, the history and the certificate show it.
QString check_name(verification_check c);

// A reference with its certified value at one wavelength.
struct certified_point {
    double nm = 0;
    double value = 0; // [A]
};

// A material the user puts in the beam, with its certified absorbances.
struct reference_material {
    QString name; // "Neutral density filter 0.5 A", "Potassium dichromate 60 mg/L"
    std::vector<certified_point> points;
};

struct verification_settings {
    std::vector<double> holmium_nm{361.3, 416.3, 451.4, 467.8, 485.2, 536.6, 640.5};
    double line_nm = 656.1;
    int replicate_scans = 6;
    double wavelength_tol_below_400 = 1.0; // [nm]
    double wavelength_tol_from_400 = 3.0;  // [nm]

    std::vector<reference_material> absorbance_materials{
        {QStringLiteral("Neutral density filter 0.5 A"),
         {{440, 0.500}, {465, 0.500}, {546.1, 0.500}, {590, 0.500}, {635, 0.500}}},
        {QStringLiteral("Neutral density filter 1.0 A"),
         {{440, 1.000}, {465, 1.000}, {546.1, 1.000}, {590, 1.000}, {635, 1.000}}},
        {QStringLiteral("Potassium dichromate 60 mg/L"), {{350, 0.640}, {430, 0.096}}}};
    double absorbance_tol = 0.01;     // [A]
    double absorbance_tol_rel = 0.01; // a fraction of the certified value

    // The dichromate series at 350 nm: concentration [mg/L] and certified absorbance.
    double linearity_nm = 350;
    // Concentration [mg/L] in the nm place, and its certified absorbance.
    std::vector<certified_point> linearity_series{
        {20, 0.213}, {40, 0.427}, {60, 0.640}, {80, 0.853}, {100, 1.067}};
    double linearity_min_r = 0.999;
    double linearity_warn_above = 2.0; // [A]

    std::vector<double> stray_nm{340, 370};
    double stray_min_a = 3.0;

    double bandwidth_nominal = 2.0; // [nm]
    double bandwidth_tol = 0.4;     // [nm]

    double noise_nm = 500;
    int noise_readings = 60;
    double noise_max_rms = 0.001; // [A]
    int flatness_first = 330, flatness_last = 1100;
    double flatness_tol = 0.002; // [A]

    double drift_nm = 500;
    double drift_minutes = 10;
    double drift_max = 0.002; // [A/h]

    int interval_days = 90;
};

// The settings as "name" -> text, the form they are stored and edited in, and back. Reading keeps
// the default of every name that is missing; a value that is no valid number (or list), or out of
// range, is named in `error` and the defaults come back whole, so the caller keeps what it had.
std::map<QString, QString> settings_to_text(const verification_settings& s);
verification_settings settings_from_text(const std::map<QString, QString>& text, QString* error = nullptr);

// One judged item of a check: a band, a wavelength of a filter, the fit.
struct check_item {
    QString reference; // "361.3 nm", "0.500 A at 440 nm"
    QString tolerance; // "+-1.0 nm", ">= 3.0 A"
    QString value;     // "361.3 nm (sd 0.02)", "0.498 A"
    double number = 0; // what the trend draws for the check: the item's signed deviation or value
    processing::verdict verdict = processing::verdict::fail;
};

struct check_result {
    verification_check check{};
    std::vector<check_item> items;
    processing::verdict verdict = processing::verdict::fail;
    double trend = 0;     // the check's one number across runs
    double trend_low = 0; // the tolerance band drawn around it
    double trend_high = 0;
    QString raw; // the points measured, space separated
    QString why; // a check that could not be judged says why; its verdict is a fail
};

QString verdict_text(processing::verdict v);

// The reminder after start-up: due when the last full run is older than the interval; never when
// there has been no full run yet.
bool verification_due(const std::optional<QDateTime>& last_full_run, const QDateTime& now, int interval_days);
QString verification_due_text(const std::optional<QDateTime>& last_full_run);

} // namespace lumora
