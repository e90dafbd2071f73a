#pragma once
// Running the checks: each asks for a material in the beam, measures through the instrument and
// judges what came back. The instrument is reached through `verification_instrument`, which the
// window implements on the link; the checks never see how the readings arrive.
#include "system_rules.h"
#include "verification_plan.h"

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace lumora {

// What the user is asked to put in the beam.
struct beam_material {
    enum kind { blank, holmium, neutral, dichromate, nitrite } what = blank;
    double amount = 0; // neutral: the nominal absorbance; dichromate: mg/L
    QString name;      // "holmium oxide filter"
};

class verification_instrument {
public:
    virtual ~verification_instrument() = default;
    // Asks for the material ("Put the holmium oxide filter in the sample position, then press OK.");
    // false when the user cancels.
    virtual bool put_in_beam(const beam_material& m) = 0;
    // A reference scan over first..last nm with what is in the beam, 1 nm points at the lowest speed.
    virtual bool reference_scan(int first_nm, int last_nm) = 0;
    // A sample scan over the same kind of range: absorbance per nm against the reference; empty on failure.
    virtual std::vector<double> sample_scan(int first_nm, int last_nm) = 0;
    // Goes to a wavelength and takes what is in the beam as 0 A there.
    virtual bool zero_at(double nm) = 0;
    // `count` readings in absorbance at the wavelength of the last zero_at; empty on failure.
    virtual std::vector<double> readings(int count) = 0;
    // Readings for `seconds`, as (seconds from the first, absorbance); `tick` is told the seconds left
    // and returns false to stop early.
    virtual std::vector<std::pair<double, double>> readings_for(double seconds,
                                                                const std::function<bool(double)>& tick) = 0;
    // The 656.1 nm line scan: 79 raw points 0.36 nm apart; empty on failure.
    virtual std::optional<verify_points_array> bandwidth_scan() = 0;
};

// The band a check's trend is drawn against, from the settings.
std::pair<double, double> trend_band(verification_check c, const verification_settings& s);

// The text of the prompt for a material.
QString beam_prompt(const beam_material& m);

// Runs one check. A cancelled prompt or a measurement that failed gives a fail with `why` said.
check_result run_check(verification_check c, const verification_settings& s, verification_instrument& inst,
                       const std::function<bool(double)>& drift_tick = {});

// The judgements on what was measured, apart from measuring, so each can be checked on known numbers.
// centres[i] holds the replicate centres found for band i of s.holmium_nm (empty when none was found).
check_result judge_wavelength(const verification_settings& s, const std::vector<std::vector<double>>& centres,
                              std::optional<double> line_centre);
// measured[i][j]: material i of s.absorbance_materials at its point j.
check_result judge_absorbance(const verification_settings& s,
                              const std::vector<std::vector<double>>& measured);
check_result judge_linearity(const verification_settings& s, const std::vector<double>& measured);
check_result judge_stray(const verification_settings& s, const std::vector<double>& measured);
check_result judge_resolution(const verification_settings& s, std::optional<double> width);
check_result judge_noise(const verification_settings& s, const std::vector<double>& readings,
                         const std::vector<double>& blank_scan);
check_result judge_drift(const verification_settings& s,
                         const std::vector<std::pair<double, double>>& readings);

} // namespace lumora
