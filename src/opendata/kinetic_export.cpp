// Kinetic's export: the 281 samples of the last run against their time from the end of the delay,
// with the line fitted over the rate stretch in the context lines, and the output table, a row per
// finished run, as a second file.
#include "csv.h"
#include "exporters.h"
#include "functions/kinetic/frmKinetic.h"
#include "functions/kinetic/kinetic_data.h"
#include "functions/stats_panel.h"
#include "number_text.h"

namespace lumora::opendata {

namespace {

context_lines kinetic_context(const export_source& source) {
    const KineticSetup& s = kinetic_setup;
    const auto& r = s.kn_report_text;
    context_lines c = common_context(QStringLiteral("Kinetic"), source, r[0], r[1], r[2], r[3]);
    c.emplace_back(QStringLiteral("wavelength"), s.kn_wavelength + QStringLiteral(" nm"));
    c.emplace_back(QStringLiteral("lag"), QString::number(s.kn_lag) + QStringLiteral(" s"));
    c.emplace_back(QStringLiteral("rate time"), QString::number(s.kn_rate) + QStringLiteral(" s"));
    c.emplace_back(QStringLiteral("delay"), QString::number(s.kn_delay) + QStringLiteral(" s"));
    c.emplace_back(QStringLiteral("fit points"), QString::number(s.kn_sampling_number));
    return c;
}

QString unit_of(const KineticSetup& s) {
    return s.kn_unit.isEmpty() || s.kn_unit == QLatin1String("None") ? QString() : s.kn_unit;
}

} // namespace

std::vector<out_file> kinetic_export(const function_window& window, export_format format,
                                     const export_source& source) {
    if (format != export_format::csv || kinetic.kn_run_count == 0) return {};
    const KineticSetup& s = kinetic_setup;
    const processing::kinetic_result& f = kinetic.fit;
    std::vector<out_file> files;

    csv_table run;
    run.context = kinetic_context(source);
    run.context.emplace_back(QStringLiteral("rate"), exact_text(f.dabs_dt) + QStringLiteral(" ABS/min"));
    run.context.emplace_back(QStringLiteral("ABS0"), exact_text(f.abs0));
    run.context.emplace_back(QStringLiteral("Ka"), exact_text(f.ka) + QStringLiteral(" ABS/s"));
    run.context.emplace_back(QStringLiteral("Kb"), exact_text(f.kb));
    run.context.emplace_back(QStringLiteral("factor"), exact_text(s.kn_factor));
    run.context.emplace_back(QStringLiteral("unit"), s.kn_unit);
    if (const auto* w = qobject_cast<const frmKinetic*>(&window))
        add_statistics(run.context, rate_rows(w->rate_statistics()));
    run.header << QStringLiteral("Time (s)") << QStringLiteral("Absorbance");
    run.rows.reserve(kn_samples_count);
    for (int k = 0; k < kn_samples_count; ++k)
        run.rows.push_back(
            {seconds_text(s.sample_time(k)), exact_text(kinetic.kn_samples[static_cast<std::size_t>(k)])});
    files.push_back({source.name + QStringLiteral(".csv"), csv_text(run)});

    if (kinetic.outputs.empty()) return files;
    csv_table out;
    out.context = kinetic_context(source);
    out.context.emplace_back(QStringLiteral("factor"), exact_text(s.kn_factor));
    out.context.emplace_back(QStringLiteral("unit"), s.kn_unit);
    const QString unit = unit_of(s);
    out.header << QStringLiteral("No.") << QStringLiteral("Mark") << QStringLiteral("Wavelength (nm)")
               << QStringLiteral("ABS0") << QStringLiteral("dABS/dT (1/min)")
               << (unit.isEmpty() ? QStringLiteral("dC/dT (1/min)")
                                  : QStringLiteral("dC/dT (%1/min)").arg(unit));
    int number = 0;
    for (const kn_output& o : kinetic.outputs)
        out.rows.push_back({QString::number(++number), o.flag ? QStringLiteral("V") : QStringLiteral("X"),
                            exact_text(o.lambda), exact_text(o.abs0), exact_text(o.dabs_dt),
                            exact_text(o.dc_dt)});
    files.push_back({source.name + QStringLiteral("-output.csv"), csv_text(out)});
    return files;
}

} // namespace lumora::opendata
