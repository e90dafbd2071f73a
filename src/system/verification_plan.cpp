#include "verification_plan.h"

#include <QStringList>
#include <cmath>

namespace lumora {
namespace {

QString number_text(double v) {
    return QString::number(v, 'g', 10);
}

QString list_text(const std::vector<double>& values) {
    QStringList parts;
    for (double v : values)
        parts << number_text(v);
    return parts.join(QLatin1Char(' '));
}

// "nm:value nm:value ..."
QString points_text(const std::vector<certified_point>& points) {
    QStringList parts;
    for (const certified_point& p : points)
        parts << number_text(p.nm) + QLatin1Char(':') + number_text(p.value);
    return parts.join(QLatin1Char(' '));
}

bool parse_number(const QString& text, double& out) {
    bool ok = false;
    const double v = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(v)) return false;
    out = v;
    return true;
}

bool parse_list(const QString& text, std::vector<double>& out) {
    std::vector<double> values;
    for (const QString& part : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        double v = 0;
        if (!parse_number(part, v)) return false;
        values.push_back(v);
    }
    if (values.empty()) return false;
    out = std::move(values);
    return true;
}

bool parse_points(const QString& text, std::vector<certified_point>& out) {
    std::vector<certified_point> points;
    for (const QString& part : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QStringList pair = part.split(QLatin1Char(':'));
        certified_point p;
        if (pair.size() != 2 || !parse_number(pair[0], p.nm) || !parse_number(pair[1], p.value)) return false;
        points.push_back(p);
    }
    if (points.empty()) return false;
    out = std::move(points);
    return true;
}

// Each setting once: its stored name, how it is written and how it is read back.
template <class F> void for_each_setting(verification_settings& s, F&& f) {
    f(QStringLiteral("Holmium bands"), s.holmium_nm);
    f(QStringLiteral("Line"), s.line_nm);
    f(QStringLiteral("Replicate scans"), s.replicate_scans);
    f(QStringLiteral("Wavelength tolerance below 400"), s.wavelength_tol_below_400);
    f(QStringLiteral("Wavelength tolerance from 400"), s.wavelength_tol_from_400);
    for (std::size_t i = 0; i < s.absorbance_materials.size(); ++i)
        f(QStringLiteral("Absorbance ") + s.absorbance_materials[i].name, s.absorbance_materials[i].points);
    f(QStringLiteral("Absorbance tolerance"), s.absorbance_tol);
    f(QStringLiteral("Absorbance tolerance relative"), s.absorbance_tol_rel);
    f(QStringLiteral("Linearity wavelength"), s.linearity_nm);
    f(QStringLiteral("Linearity series"), s.linearity_series);
    f(QStringLiteral("Linearity minimum r"), s.linearity_min_r);
    f(QStringLiteral("Linearity warn above"), s.linearity_warn_above);
    f(QStringLiteral("Stray light wavelengths"), s.stray_nm);
    f(QStringLiteral("Stray light minimum"), s.stray_min_a);
    f(QStringLiteral("Bandwidth nominal"), s.bandwidth_nominal);
    f(QStringLiteral("Bandwidth tolerance"), s.bandwidth_tol);
    f(QStringLiteral("Noise wavelength"), s.noise_nm);
    f(QStringLiteral("Noise readings"), s.noise_readings);
    f(QStringLiteral("Noise maximum"), s.noise_max_rms);
    f(QStringLiteral("Flatness first"), s.flatness_first);
    f(QStringLiteral("Flatness last"), s.flatness_last);
    f(QStringLiteral("Flatness tolerance"), s.flatness_tol);
    f(QStringLiteral("Drift wavelength"), s.drift_nm);
    f(QStringLiteral("Drift minutes"), s.drift_minutes);
    f(QStringLiteral("Drift maximum"), s.drift_max);
    f(QStringLiteral("Interval days"), s.interval_days);
}

struct writer {
    std::map<QString, QString>& out;
    void operator()(const QString& name, double v) { out[name] = number_text(v); }
    void operator()(const QString& name, int v) { out[name] = QString::number(v); }
    void operator()(const QString& name, const std::vector<double>& v) { out[name] = list_text(v); }
    void operator()(const QString& name, const std::vector<certified_point>& v) {
        out[name] = points_text(v);
    }
};

struct reader {
    const std::map<QString, QString>& in;
    QStringList& bad;
    const QString* text(const QString& name) const {
        const auto it = in.find(name);
        return it == in.end() ? nullptr : &it->second;
    }
    void operator()(const QString& name, double& v) {
        if (const QString* t = text(name); t && !parse_number(*t, v)) bad << name;
    }
    void operator()(const QString& name, int& v) {
        double d = 0;
        if (const QString* t = text(name); t) {
            if (!parse_number(*t, d) || d != std::floor(d) || d < 1 || d > 100000)
                bad << name;
            else
                v = static_cast<int>(d);
        }
    }
    void operator()(const QString& name, std::vector<double>& v) {
        if (const QString* t = text(name); t && !parse_list(*t, v)) bad << name;
    }
    void operator()(const QString& name, std::vector<certified_point>& v) {
        if (const QString* t = text(name); t && !parse_points(*t, v)) bad << name;
    }
};

QString check_ranges(const verification_settings& s) {
    for (double nm : s.holmium_nm)
        if (nm < 330 || nm > 1100) return QStringLiteral("Holmium bands must lie within 330 to 1100 nm.");
    if (s.wavelength_tol_below_400 <= 0 || s.wavelength_tol_from_400 <= 0 || s.absorbance_tol < 0 ||
        s.absorbance_tol_rel < 0 || s.flatness_tol <= 0 || s.noise_max_rms <= 0 || s.drift_max <= 0 ||
        s.bandwidth_tol <= 0)
        return QStringLiteral("Tolerances must be greater than 0.");
    if (s.linearity_min_r <= 0 || s.linearity_min_r > 1)
        return QStringLiteral("The minimum r must be above 0 and at most 1.");
    if (s.flatness_first < 320 || s.flatness_last > 1110 || s.flatness_first >= s.flatness_last)
        return QStringLiteral("The flatness range must lie within 320 to 1110 nm, first below last.");
    if (s.drift_minutes <= 0 || s.drift_minutes > 600)
        return QStringLiteral("The drift time must be 0 to 600 minutes.");
    if (s.noise_readings < 2) return QStringLiteral("The noise check needs at least 2 readings.");
    return {};
}

} // namespace

QString check_name(verification_check c) {
    switch (c) {
    case verification_check::wavelength:
        return QStringLiteral("Wavelength accuracy");
    case verification_check::absorbance:
        return QStringLiteral("Absorbance accuracy");
    case verification_check::linearity:
        return QStringLiteral("Photometric linearity");
    case verification_check::stray_light:
        return QStringLiteral("Stray light");
    case verification_check::resolution:
        return QStringLiteral("Resolution");
    case verification_check::noise_flatness:
        return QStringLiteral("Noise and flatness");
    case verification_check::drift:
        return QStringLiteral("Drift");
    }
    return {};
}

std::map<QString, QString> settings_to_text(const verification_settings& s) {
    std::map<QString, QString> out;
    verification_settings copy = s;
    for_each_setting(copy, writer{out});
    return out;
}

verification_settings settings_from_text(const std::map<QString, QString>& text, QString* error) {
    verification_settings s;
    QStringList bad;
    for_each_setting(s, reader{text, bad});
    QString why;
    if (!bad.isEmpty())
        why = QStringLiteral("Not a valid value: ") + bad.join(QStringLiteral(", ")) + QLatin1Char('.');
    else
        why = check_ranges(s);
    if (error) *error = why;
    return why.isEmpty() ? s : verification_settings{};
}

QString verdict_text(processing::verdict v) {
    switch (v) {
    case processing::verdict::pass:
        return QStringLiteral("Pass");
    case processing::verdict::warn:
        return QStringLiteral("Warn");
    case processing::verdict::fail:
        break;
    }
    return QStringLiteral("Fail");
}

bool verification_due(const std::optional<QDateTime>& last_full_run, const QDateTime& now,
                      int interval_days) {
    // An instrument never verified in this program has no date to be overdue from: the first run is the
    // lab's own decision, and a fresh installation does not greet every start with a box.
    if (!last_full_run || !last_full_run->isValid()) return false;
    return last_full_run->addDays(interval_days) < now;
}

QString verification_due_text(const std::optional<QDateTime>& last_full_run) {
    const QString when = last_full_run && last_full_run->isValid()
                             ? last_full_run->toString(QStringLiteral("yyyy-MM-dd"))
                             : QStringLiteral("never");
    return QStringLiteral("Performance verification is due (last run: %1).").arg(when);
}

} // namespace lumora
