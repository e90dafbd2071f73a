#include "verification_run.h"

#include <algorithm>
#include <cmath>

namespace lumora {
namespace {

using processing::verdict;

// Scans reach this far either side of a band so that its minimum lies inside with room to spare.
constexpr int band_margin_nm = 6;
// The centre is looked for this close to the band's reference value.
constexpr double band_window_nm = 5;
// The line scan's point 39 sits on the nominal centre.
constexpr int line_centre_point = 39;

QString fixed(double v, int decimals) {
    return QString::number(v, 'f', decimals);
}

QString pm(double tol, int decimals, const char* unit) {
    return QStringLiteral("+-") + fixed(tol, decimals) + QLatin1String(unit);
}

QString raw_text(const std::vector<double>& values, int decimals) {
    QStringList parts;
    for (double v : values)
        parts << fixed(v, decimals);
    return parts.join(QLatin1Char(' '));
}

// The item with the largest |number| decides the check's trend value.
void settle(check_result& r) {
    std::vector<verdict> verdicts;
    for (const check_item& i : r.items)
        verdicts.push_back(i.verdict);
    r.verdict = r.items.empty() ? verdict::fail : processing::worst(verdicts);
}

check_result failed(verification_check c, const QString& why) {
    check_result r;
    r.check = c;
    r.why = why;
    r.verdict = verdict::fail;
    return r;
}

double worst_deviation(double current, double candidate) {
    return std::abs(candidate) > std::abs(current) ? candidate : current;
}

} // namespace

std::pair<double, double> trend_band(verification_check c, const verification_settings& s) {
    switch (c) {
    case verification_check::wavelength:
        return {-s.wavelength_tol_below_400, s.wavelength_tol_below_400};
    case verification_check::absorbance:
        return {-s.absorbance_tol, s.absorbance_tol};
    case verification_check::linearity:
        return {s.linearity_min_r, 1.0};
    case verification_check::stray_light:
        return {s.stray_min_a, 5.0};
    case verification_check::resolution:
        return {s.bandwidth_nominal - s.bandwidth_tol, s.bandwidth_nominal + s.bandwidth_tol};
    case verification_check::noise_flatness:
        return {0, s.flatness_tol};
    case verification_check::drift:
        return {-s.drift_max, s.drift_max};
    }
    return {0, 0};
}

QString beam_prompt(const beam_material& m) {
    return QStringLiteral("Put the ") + m.name + QStringLiteral(" in the sample position, then press OK.");
}

// ---- Judgements --------------------------------------------------------------------------------------

check_result judge_wavelength(const verification_settings& s, const std::vector<std::vector<double>>& centres,
                              std::optional<double> line_centre) {
    check_result r;
    r.check = verification_check::wavelength;
    r.trend_low = -s.wavelength_tol_below_400;
    r.trend_high = s.wavelength_tol_below_400;
    QStringList raw;
    const auto add = [&](double reference, const std::vector<double>& found) {
        check_item item;
        const double tol = processing::wavelength_tolerance(reference, s.wavelength_tol_below_400,
                                                            s.wavelength_tol_from_400);
        item.reference = fixed(reference, 1) + QStringLiteral(" nm");
        item.tolerance = pm(tol, 1, " nm");
        if (found.empty()) {
            item.value = QStringLiteral("not found");
            item.verdict = verdict::fail;
            item.number = tol * 2;
        } else {
            const processing::spread sp = processing::mean_and_sd(found);
            item.value = fixed(sp.mean, 1) + QStringLiteral(" nm");
            if (sp.n > 1) item.value += QStringLiteral(" (sd ") + fixed(sp.sd, 2) + QLatin1Char(')');
            item.number = sp.mean - reference;
            item.verdict = processing::within(sp.mean, reference, tol);
            raw << raw_text(found, 2);
        }
        // The trend is drawn against the tighter band, so a deviation is scaled to it.
        r.trend = worst_deviation(r.trend, item.number * s.wavelength_tol_below_400 / tol);
        r.items.push_back(item);
    };
    for (std::size_t i = 0; i < s.holmium_nm.size(); ++i)
        add(s.holmium_nm[i], i < centres.size() ? centres[i] : std::vector<double>{});
    add(s.line_nm, line_centre ? std::vector<double>{*line_centre} : std::vector<double>{});
    r.raw = raw.join(QStringLiteral(" | "));
    settle(r);
    return r;
}

check_result judge_absorbance(const verification_settings& s,
                              const std::vector<std::vector<double>>& measured) {
    check_result r;
    r.check = verification_check::absorbance;
    r.trend_low = -s.absorbance_tol;
    r.trend_high = s.absorbance_tol;
    QStringList raw;
    for (std::size_t i = 0; i < s.absorbance_materials.size(); ++i) {
        const reference_material& m = s.absorbance_materials[i];
        for (std::size_t j = 0; j < m.points.size(); ++j) {
            const certified_point& p = m.points[j];
            check_item item;
            const double tol =
                processing::absorbance_tolerance(p.value, s.absorbance_tol, s.absorbance_tol_rel);
            item.reference = m.name + QStringLiteral(": ") + fixed(p.value, 3) + QStringLiteral(" A at ") +
                             QString::number(p.nm) + QStringLiteral(" nm");
            item.tolerance = pm(tol, 3, " A");
            const bool have = i < measured.size() && j < measured[i].size() && std::isfinite(measured[i][j]);
            if (!have) {
                item.value = QStringLiteral("not measured");
                item.verdict = verdict::fail;
                item.number = tol * 2;
            } else {
                const double a = measured[i][j];
                item.value = fixed(a, 4) + QStringLiteral(" A");
                item.number = a - p.value;
                item.verdict = processing::within(a, p.value, tol);
                raw << fixed(a, 4);
            }
            r.trend = worst_deviation(r.trend, item.number * s.absorbance_tol / tol);
            r.items.push_back(item);
        }
    }
    r.raw = raw.join(QLatin1Char(' '));
    settle(r);
    return r;
}

check_result judge_linearity(const verification_settings& s, const std::vector<double>& measured) {
    check_result r;
    r.check = verification_check::linearity;
    std::vector<double> certified;
    for (const certified_point& p : s.linearity_series)
        certified.push_back(p.value);
    r.raw = raw_text(measured, 4);
    r.trend_low = s.linearity_min_r;
    r.trend_high = 1.0;
    const auto fit = processing::fit_line(certified, measured);
    if (!fit || measured.size() != certified.size())
        return failed(verification_check::linearity, QStringLiteral("Too few distinct readings for a fit."));
    check_item item;
    item.reference = QStringLiteral("%1 standards at %2 nm").arg(certified.size()).arg(s.linearity_nm);
    item.tolerance = QStringLiteral("r >= ") + fixed(s.linearity_min_r, 4);
    item.value = QStringLiteral("slope %1, intercept %2, r %3")
                     .arg(fixed(fit->slope, 4), fixed(fit->intercept, 4), fixed(fit->r, 5));
    item.number = fit->r;
    item.verdict = processing::linearity_verdict(*fit, measured, s.linearity_min_r, s.linearity_warn_above);
    if (item.verdict == verdict::warn)
        item.value += QStringLiteral("; above ") + fixed(s.linearity_warn_above, 1) + QStringLiteral(" A");
    r.trend = fit->r;
    r.items.push_back(item);
    settle(r);
    return r;
}

check_result judge_stray(const verification_settings& s, const std::vector<double>& measured) {
    check_result r;
    r.check = verification_check::stray_light;
    r.trend_low = s.stray_min_a;
    r.trend_high = 5.0;
    r.trend = 5.0;
    for (std::size_t i = 0; i < s.stray_nm.size(); ++i) {
        check_item item;
        item.reference = QStringLiteral("Sodium nitrite 50 g/L at ") + QString::number(s.stray_nm[i]) +
                         QStringLiteral(" nm");
        item.tolerance = QStringLiteral(">= ") + fixed(s.stray_min_a, 1) + QStringLiteral(" A");
        const bool have = i < measured.size() && std::isfinite(measured[i]);
        item.number = have ? measured[i] : 0;
        item.value = have ? fixed(measured[i], 3) + QStringLiteral(" A") : QStringLiteral("not measured");
        item.verdict = have && measured[i] >= s.stray_min_a ? verdict::pass : verdict::fail;
        r.trend = std::min(r.trend, item.number);
        r.items.push_back(item);
    }
    r.raw = raw_text(measured, 4);
    settle(r);
    return r;
}

check_result judge_resolution(const verification_settings& s, std::optional<double> width) {
    if (!width)
        return failed(verification_check::resolution,
                      QStringLiteral("The line scan could not be evaluated."));
    check_result r;
    r.check = verification_check::resolution;
    check_item item;
    item.reference = QStringLiteral("Bandwidth ") + fixed(s.bandwidth_nominal, 2) +
                     QStringLiteral(" nm at ") + fixed(s.line_nm, 1) + QStringLiteral(" nm");
    item.tolerance = pm(s.bandwidth_tol, 2, " nm");
    item.value = fixed(*width, 2) + QStringLiteral(" nm");
    item.number = *width;
    item.verdict = processing::within(*width, s.bandwidth_nominal, s.bandwidth_tol);
    r.trend = *width;
    r.trend_low = s.bandwidth_nominal - s.bandwidth_tol;
    r.trend_high = s.bandwidth_nominal + s.bandwidth_tol;
    r.items.push_back(item);
    settle(r);
    return r;
}

check_result judge_noise(const verification_settings& s, const std::vector<double>& readings,
                         const std::vector<double>& blank_scan) {
    check_result r;
    r.check = verification_check::noise_flatness;
    if (readings.size() < 2 || blank_scan.empty())
        return failed(verification_check::noise_flatness, QStringLiteral("No readings came."));
    check_item noise;
    noise.reference = QStringLiteral("0 A at ") + QString::number(s.noise_nm) + QStringLiteral(" nm, ") +
                      QString::number(readings.size()) + QStringLiteral(" readings");
    noise.tolerance = QStringLiteral("RMS <= ") + fixed(s.noise_max_rms, 4) + QStringLiteral(" A");
    noise.number = processing::rms_noise(readings);
    noise.value = QStringLiteral("RMS ") + fixed(noise.number, 5) + QStringLiteral(" A");
    noise.verdict = noise.number <= s.noise_max_rms ? verdict::pass : verdict::fail;
    check_item flat;
    flat.reference = QStringLiteral("Blank scan %1-%2 nm").arg(s.flatness_first).arg(s.flatness_last);
    flat.tolerance = pm(s.flatness_tol, 3, " A");
    flat.number = processing::largest_departure(blank_scan);
    flat.value = QStringLiteral("largest ") + fixed(flat.number, 4) + QStringLiteral(" A");
    flat.verdict = flat.number <= s.flatness_tol ? verdict::pass : verdict::fail;
    r.items = {noise, flat};
    // One number for the trend: the larger share of its tolerance, in units of the flatness.
    r.trend = std::max(noise.number / s.noise_max_rms, flat.number / s.flatness_tol) * s.flatness_tol;
    r.trend_low = 0;
    r.trend_high = s.flatness_tol;
    r.raw = raw_text(readings, 5);
    settle(r);
    return r;
}

check_result judge_drift(const verification_settings& s,
                         const std::vector<std::pair<double, double>>& readings) {
    std::vector<double> t, a;
    for (const auto& [seconds, abs] : readings) {
        t.push_back(seconds);
        a.push_back(abs);
    }
    const auto slope = processing::drift_per_hour(t, a);
    if (!slope) return failed(verification_check::drift, QStringLiteral("Too few readings for a slope."));
    check_result r;
    r.check = verification_check::drift;
    check_item item;
    item.reference = QStringLiteral("0 A at ") + QString::number(s.drift_nm) + QStringLiteral(" nm over ") +
                     fixed(t.back() / 60, 1) + QStringLiteral(" min");
    item.tolerance = QStringLiteral("<= ") + fixed(s.drift_max, 4) + QStringLiteral(" A/h");
    item.number = *slope;
    item.value = fixed(*slope, 4) + QStringLiteral(" A/h");
    item.verdict = std::abs(*slope) <= s.drift_max ? verdict::pass : verdict::fail;
    r.trend = *slope;
    r.trend_low = -s.drift_max;
    r.trend_high = s.drift_max;
    r.items.push_back(item);
    settle(r);
    return r;
}

// ---- Measuring ---------------------------------------------------------------------------------------

namespace {

const beam_material blank_material{beam_material::blank, 0, QStringLiteral("blank (empty cell holder)")};

check_result measure_wavelength(const verification_settings& s, verification_instrument& inst) {
    const auto [lo, hi] = std::minmax_element(s.holmium_nm.begin(), s.holmium_nm.end());
    const int first = std::max(320, static_cast<int>(std::floor(*lo)) - band_margin_nm);
    const int last = std::min(1110, static_cast<int>(std::ceil(*hi)) + band_margin_nm);
    const auto cancelled = [] {
        return failed(verification_check::wavelength, QStringLiteral("Cancelled."));
    };
    if (!inst.put_in_beam(blank_material)) return cancelled();
    if (!inst.reference_scan(first, last))
        return failed(verification_check::wavelength, QStringLiteral("The reference scan failed."));
    if (!inst.put_in_beam({beam_material::holmium, 0, QStringLiteral("holmium oxide filter")}))
        return cancelled();
    std::vector<std::vector<double>> centres(s.holmium_nm.size());
    std::vector<double> nm;
    for (int w = first; w <= last; ++w)
        nm.push_back(w);
    for (int k = 0; k < s.replicate_scans; ++k) {
        const std::vector<double> a = inst.sample_scan(first, last);
        if (a.size() != nm.size())
            return failed(verification_check::wavelength, QStringLiteral("A holmium scan failed."));
        std::vector<double> t;
        for (double v : a)
            t.push_back(std::pow(10.0, -v));
        for (std::size_t i = 0; i < s.holmium_nm.size(); ++i)
            if (const auto c = processing::band_centre(nm, t, s.holmium_nm[i], band_window_nm))
                centres[i].push_back(*c);
    }
    std::optional<double> line;
    if (const auto points = inst.bandwidth_scan()) {
        std::vector<double> signal(points->begin(), points->begin() + verify_last_point + 1);
        line =
            processing::line_centre(signal, s.line_nm - line_centre_point * verify_step_nm, verify_step_nm);
    }
    return judge_wavelength(s, centres, line);
}

// A reading at a wavelength: the mean of a few, against the blank zeroed there before.
std::optional<double> mean_reading(verification_instrument& inst, int count) {
    const std::vector<double> r = inst.readings(count);
    if (r.empty()) return std::nullopt;
    return processing::mean_and_sd(r).mean;
}

// Zeroes the blank at every wavelength, then reads each material at them all.
std::optional<std::vector<std::vector<double>>> read_materials(const std::vector<beam_material>& materials,
                                                               const std::vector<std::vector<double>>& nms,
                                                               verification_instrument& inst) {
    std::vector<std::vector<double>> out(materials.size());
    for (std::size_t i = 0; i < materials.size(); ++i) {
        for (double nm : nms[i]) {
            if (!inst.put_in_beam(blank_material) || !inst.zero_at(nm)) return std::nullopt;
            if (!inst.put_in_beam(materials[i])) return std::nullopt;
            const auto a = mean_reading(inst, 10);
            if (!a) return std::nullopt;
            out[i].push_back(*a);
        }
    }
    return out;
}

beam_material material_of(const reference_material& m) {
    beam_material b;
    b.name = m.name.left(1).toLower() + m.name.mid(1);
    if (m.name.contains(QStringLiteral("dichromate"), Qt::CaseInsensitive)) {
        b.what = beam_material::dichromate;
        b.amount = m.name.section(QLatin1Char(' '), 2, 2).toDouble();
    } else {
        b.what = beam_material::neutral;
        b.amount = m.points.empty() ? 0 : m.points.front().value;
    }
    return b;
}

check_result measure_absorbance(const verification_settings& s, verification_instrument& inst) {
    std::vector<beam_material> materials;
    std::vector<std::vector<double>> nms;
    for (const reference_material& m : s.absorbance_materials) {
        materials.push_back(material_of(m));
        std::vector<double> w;
        for (const certified_point& p : m.points)
            w.push_back(p.nm);
        nms.push_back(w);
    }
    const auto measured = read_materials(materials, nms, inst);
    if (!measured) return failed(verification_check::absorbance, QStringLiteral("Cancelled or no reading."));
    return judge_absorbance(s, *measured);
}

check_result measure_linearity(const verification_settings& s, verification_instrument& inst) {
    std::vector<beam_material> materials;
    std::vector<std::vector<double>> nms;
    for (const certified_point& p : s.linearity_series) {
        materials.push_back(
            {beam_material::dichromate, p.nm,
             QStringLiteral("potassium dichromate ") + QString::number(p.nm) + QStringLiteral(" mg/L")});
        nms.push_back({s.linearity_nm});
    }
    const auto measured = read_materials(materials, nms, inst);
    if (!measured) return failed(verification_check::linearity, QStringLiteral("Cancelled or no reading."));
    std::vector<double> a;
    for (const auto& m : *measured)
        a.push_back(m.front());
    return judge_linearity(s, a);
}

check_result measure_stray(const verification_settings& s, verification_instrument& inst) {
    const beam_material nitrite{beam_material::nitrite, 50, QStringLiteral("sodium nitrite 50 g/L")};
    const auto measured = read_materials({nitrite}, {s.stray_nm}, inst);
    if (!measured) return failed(verification_check::stray_light, QStringLiteral("Cancelled or no reading."));
    return judge_stray(s, measured->front());
}

check_result measure_resolution(const verification_settings& s, verification_instrument& inst) {
    const auto points = inst.bandwidth_scan();
    if (!points) return failed(verification_check::resolution, QStringLiteral("The line scan failed."));
    const auto bw = evaluate_bandwidth(*points);
    return judge_resolution(s, bw ? std::optional<double>(bw->width) : std::nullopt);
}

check_result measure_noise(const verification_settings& s, verification_instrument& inst) {
    if (!inst.put_in_beam(blank_material) || !inst.zero_at(s.noise_nm))
        return failed(verification_check::noise_flatness, QStringLiteral("Cancelled or no zero."));
    const std::vector<double> readings = inst.readings(s.noise_readings);
    if (!inst.reference_scan(s.flatness_first, s.flatness_last))
        return failed(verification_check::noise_flatness, QStringLiteral("The reference scan failed."));
    const std::vector<double> blank = inst.sample_scan(s.flatness_first, s.flatness_last);
    return judge_noise(s, readings, blank);
}

check_result measure_drift(const verification_settings& s, verification_instrument& inst,
                           const std::function<bool(double)>& tick) {
    if (!inst.put_in_beam(blank_material) || !inst.zero_at(s.drift_nm))
        return failed(verification_check::drift, QStringLiteral("Cancelled or no zero."));
    const auto readings = inst.readings_for(
        s.drift_minutes * 60, tick ? tick : [](double) { return true; });
    return judge_drift(s, readings);
}

} // namespace

check_result run_check(verification_check c, const verification_settings& s, verification_instrument& inst,
                       const std::function<bool(double)>& drift_tick) {
    switch (c) {
    case verification_check::wavelength:
        return measure_wavelength(s, inst);
    case verification_check::absorbance:
        return measure_absorbance(s, inst);
    case verification_check::linearity:
        return measure_linearity(s, inst);
    case verification_check::stray_light:
        return measure_stray(s, inst);
    case verification_check::resolution:
        return measure_resolution(s, inst);
    case verification_check::noise_flatness:
        return measure_noise(s, inst);
    case verification_check::drift:
        return measure_drift(s, inst, drift_tick);
    }
    return failed(c, QStringLiteral("Unknown check."));
}

} // namespace lumora
