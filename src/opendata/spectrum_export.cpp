// Spectrum's export: the curves in use over the setup's range, one point per nm, in the unit of
// the scan. JCAMP-DX writes %T as the fraction the format wants; CSV keeps the program's unit.
#include "csv.h"
#include "exporters.h"
#include "functions/spectrum/spectrum_data.h"
#include "functions/spectrum/spectrum_setup.h"
#include "jcamp.h"
#include "number_text.h"
#include "platform/numeric_text.h"

namespace lumora::opendata {
namespace {

struct curve {
    int number; // counts the exported curves from 1, as a stored batch does
    int column; // of baseline_curves
};

std::vector<curve> curves_in_use() {
    std::vector<curve> out;
    for (int column = 1; column <= spectrum.curve_count && column <= max_curves; ++column) {
        const int state = spectrum.curve_state[static_cast<std::size_t>(column)];
        if (state == 1 || state == 2) out.push_back({static_cast<int>(out.size()) + 1, column});
    }
    return out;
}

// The stored range clipped to the points the program holds.
std::pair<int, int> range_nm() {
    const int last_held = first_index_nm + wavelength_points - 1;
    const int first = std::clamp(cint(spectrum_setup.start_lambda), first_index_nm, last_held);
    const int last = std::clamp(cint(spectrum_setup.stop_lambda), first_index_nm, last_held);
    return {first, last};
}

double value_at(int nm, int column) {
    return shared
        .baseline_curves[static_cast<std::size_t>(nm - first_index_nm)][static_cast<std::size_t>(column)];
}

// A curve differs from its scan once smoothing has run on it.
bool smoothed(int column, int first, int last) {
    for (int nm = first; nm <= last; ++nm)
        if (value_at(nm, column) != spectrum.org_curves[static_cast<std::size_t>(nm - first_index_nm)]
                                                       [static_cast<std::size_t>(column)])
            return true;
    return false;
}

QString when(const export_source& source) {
    const QDateTime t = source.saved_at.isValid() ? source.saved_at : QDateTime::currentDateTime();
    return iso_time(t);
}

label_list header_labels(const export_source& source) {
    const SpectrumSetup& s = spectrum_setup;
    const auto [first, last] = range_nm();
    label_list l{
        {QStringLiteral("ORIGIN"), s.report_laboratory},
        {QStringLiteral("OWNER"), s.report_operator},
        {QStringLiteral("LONGDATE"), when(source)},
        {QStringLiteral("SPECTROMETER/DATA SYSTEM"),
         QStringLiteral("UV/Vis spectrophotometer, Lumora " LUMORA_VERSION)},
        {QStringLiteral("$SUBJECT"), s.report_subject},
        {QStringLiteral("$SCAN SPEED"), speed_name(s.scan_speed)},
        {QStringLiteral("$RANGE"), QStringLiteral("%1-%2 NANOMETERS").arg(first).arg(last)},
        {QStringLiteral("$BASELINE DATE"), QStringLiteral("not recorded")},
    };
    if (!source.batch.isEmpty()) l.emplace_back(QStringLiteral("$BATCH"), source.batch);
    if (!s.report_remark.isEmpty()) l.emplace_back(QStringLiteral("$REMARK"), s.report_remark);
    return l;
}

jcamp_spectrum curve_spectrum(const curve& c, const export_source& source, const label_list& labels) {
    const auto [first, last] = range_nm();
    const bool percent_t = spectrum_setup.percent_t();
    jcamp_spectrum j;
    j.title = source.name + QStringLiteral(" curve %1").arg(c.number);
    j.labels = labels;
    j.labels.emplace_back(QStringLiteral("$SMOOTHING"), smoothed(c.column, first, last)
                                                            ? QStringLiteral("applied after the scan")
                                                            : QStringLiteral("none"));
    j.yunits = percent_t ? QStringLiteral("TRANSMITTANCE") : QStringLiteral("ABSORBANCE");
    j.firstx = first;
    j.deltax = 1;
    j.y.reserve(static_cast<std::size_t>(last - first + 1));
    for (int nm = first; nm <= last; ++nm)
        j.y.push_back(percent_t ? value_at(nm, c.column) / 100 : value_at(nm, c.column));
    return j;
}

csv_table curve_table(const std::vector<curve>& curves, const export_source& source) {
    const SpectrumSetup& s = spectrum_setup;
    const auto [first, last] = range_nm();
    csv_table t;
    t.context = common_context(QStringLiteral("Spectrum"), source, s.report_laboratory, s.report_subject,
                               s.report_operator, s.report_remark);
    t.context.emplace_back(QStringLiteral("scan speed"), speed_name(s.scan_speed));
    t.context.emplace_back(QStringLiteral("range"), QStringLiteral("%1-%2 nm").arg(first).arg(last));
    t.context.emplace_back(QStringLiteral("baseline date"), QStringLiteral("not recorded"));
    QStringList smoothing;
    for (const curve& c : curves)
        if (smoothed(c.column, first, last)) smoothing << QString::number(c.number);
    t.context.emplace_back(QStringLiteral("smoothing"),
                           smoothing.isEmpty() ? QStringLiteral("none")
                                               : QStringLiteral("curves ") + smoothing.join(' '));
    const QString unit = s.percent_t() ? QStringLiteral("%T") : QStringLiteral("Absorbance");
    t.header << QStringLiteral("Wavelength (nm)");
    for (const curve& c : curves)
        t.header << QStringLiteral("Curve %1 %2").arg(c.number).arg(unit);
    t.rows.reserve(static_cast<std::size_t>(last - first + 1));
    for (int nm = first; nm <= last; ++nm) {
        QStringList row{QString::number(nm)};
        for (const curve& c : curves)
            row << exact_text(value_at(nm, c.column));
        t.rows.push_back(std::move(row));
    }
    return t;
}

} // namespace

std::vector<out_file> spectrum_export(const function_window&, export_format format,
                                      const export_source& source) {
    const std::vector<curve> curves = curves_in_use();
    if (curves.empty()) return {};
    if (format == export_format::csv)
        return {{source.name + QStringLiteral(".csv"), csv_text(curve_table(curves, source))}};
    const label_list labels = header_labels(source);
    std::vector<jcamp_spectrum> spectra;
    for (const curve& c : curves)
        spectra.push_back(curve_spectrum(c, source, labels));
    if (format == export_format::jcamp_compound)
        return {{source.name + QStringLiteral(".jdx"), jcamp_compound_text(source.name, labels, spectra)}};
    std::vector<out_file> files;
    for (std::size_t i = 0; i < spectra.size(); ++i)
        files.push_back(
            {source.name + QStringLiteral("-%1.jdx").arg(curves[i].number), jcamp_text(spectra[i])});
    return files;
}

} // namespace lumora::opendata
